#pragma once
// Shows a model download's progress: on a terminal one bar redrawn in place (percentage,
// bytes, rate, time left) at most ten times a second; otherwise a plain line at each tenth of
// the way, for logs and pipes. Safe to update from any thread.

#include <chrono>
#include <functional>
#include <mutex>
#include <optional>
#include <ostream>
#include <string>

#include "llm/model_downloader.h"

namespace nuvrel::app {

// "[########------------]  42%  1.2 GB / 2.8 GB  34 MB/s  0:47 left"; the rate and the time
// left only once a rate is known, the bar only with a known size.
std::string progressLine(const llm::ModelDownloader::Progress& progress,
                         std::optional<double> bytesPerSecond, bool withBar);

class DownloadProgressDisplay {
public:
    using Clock = std::function<std::chrono::steady_clock::time_point()>;
    DownloadProgressDisplay(std::ostream& out, bool terminal,
                            Clock now = std::chrono::steady_clock::now);

    void update(const llm::ModelDownloader::Progress& progress);
    // Draws the last state once more and ends the line.
    void finish();

private:
    void draw(const llm::ModelDownloader::Progress& progress);

    std::mutex mutex_;
    std::ostream& out_;
    const bool terminal_;
    const Clock now_;
    std::optional<std::chrono::steady_clock::time_point> start_;
    std::optional<std::chrono::steady_clock::time_point> lastDraw_;
    std::optional<llm::ModelDownloader::Progress> last_;
    int lastTenth_ = -1;
};

}  // namespace nuvrel::app
