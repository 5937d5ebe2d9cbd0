#include "app/download_progress_display.h"

#include <cmath>
#include <cstdio>

namespace nuvrel::app {

namespace {

using llm::formatByteCount;

std::string duration(double seconds) {
    const auto total = static_cast<long long>(std::llround(seconds));
    char text[32];
    if (total >= 3600)
        std::snprintf(text, sizeof text, "%lld:%02lld:%02lld", total / 3600, total / 60 % 60,
                      total % 60);
    else
        std::snprintf(text, sizeof text, "%lld:%02lld", total / 60, total % 60);
    return text;
}

}  // namespace

std::string progressLine(const llm::ModelDownloader::Progress& progress,
                         std::optional<double> bytesPerSecond, bool withBar) {
    std::string line;
    if (progress.totalBytes) {
        const double fraction = progress.fraction();
        if (withBar) {
            constexpr int width = 24;
            const int filled = static_cast<int>(fraction * width);
            line = "[" + std::string(filled, '#') + std::string(width - filled, '-') + "] ";
        }
        char percent[8];
        std::snprintf(percent, sizeof percent, "%3d%%", static_cast<int>(fraction * 100));
        line += percent;
        line += "  " + formatByteCount(progress.receivedBytes) + " / " +
                formatByteCount(*progress.totalBytes);
    } else {
        line = formatByteCount(progress.receivedBytes);
    }
    if (bytesPerSecond && *bytesPerSecond > 0) {
        line += "  " + formatByteCount(static_cast<std::uint64_t>(*bytesPerSecond)) + "/s";
        if (progress.totalBytes && *progress.totalBytes > progress.receivedBytes) {
            line += "  " +
                    duration(static_cast<double>(*progress.totalBytes - progress.receivedBytes) /
                             *bytesPerSecond) +
                    " left";
        }
    }
    return line;
}

DownloadProgressDisplay::DownloadProgressDisplay(std::ostream& out, bool terminal, Clock now)
    : out_(out), terminal_(terminal), now_(std::move(now)) {}

void DownloadProgressDisplay::update(const llm::ModelDownloader::Progress& progress) {
    std::lock_guard lock(mutex_);
    const auto now = now_();
    if (!start_) start_ = now;
    last_ = progress;
    if (terminal_) {
        if (lastDraw_ && now - *lastDraw_ < std::chrono::milliseconds(100)) return;
        lastDraw_ = now;
        draw(progress);
    } else {
        const int tenth = static_cast<int>(progress.fraction() * 10);
        if (!progress.totalBytes || tenth == lastTenth_) return;
        lastTenth_ = tenth;
        draw(progress);
    }
}

void DownloadProgressDisplay::finish() {
    std::lock_guard lock(mutex_);
    if (!last_) return;
    if (terminal_ || (last_->totalBytes && static_cast<int>(last_->fraction() * 10) != lastTenth_))
        draw(*last_);
    if (terminal_) out_ << '\n';
    out_ << std::flush;
}

void DownloadProgressDisplay::draw(const llm::ModelDownloader::Progress& progress) {
    std::optional<double> rate;
    const double seconds = std::chrono::duration<double>(now_() - *start_).count();
    if (seconds >= 0.5 && progress.receivedBytes >= progress.resumedFromBytes)
        rate = static_cast<double>(progress.receivedBytes - progress.resumedFromBytes) / seconds;
    if (terminal_)
        out_ << "\r\x1b[2K" << progressLine(progress, rate, true) << std::flush;
    else
        out_ << progressLine(progress, rate, false) << '\n' << std::flush;
}

}  // namespace nuvrel::app
