#include "app/download_progress_display.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

namespace nuvrel::app {
namespace {

using Progress = llm::ModelDownloader::Progress;
using namespace std::chrono_literals;

TEST(DownloadProgressDisplay, LineAndRedrawRate) {
    EXPECT_EQ(progressLine(Progress{500'000'000, 1'000'000'000, 0}, 10e6, true),
              "[############------------]  50%  500 MB / 1.0 GB  10 MB/s  0:50 left");
    EXPECT_EQ(progressLine(Progress{2'500, std::nullopt, 0}, std::nullopt, false), "2.5 KB");

    std::chrono::steady_clock::time_point now{};
    const auto clock = [&] { return now; };
    std::ostringstream bar;
    DownloadProgressDisplay terminal(bar, true, clock);
    for (const auto at : {0ms, 50ms, 99ms, 100ms, 250ms}) {
        now = std::chrono::steady_clock::time_point(at);
        terminal.update(Progress{1, 100, 0});
    }
    const std::string drawn = bar.str();
    EXPECT_EQ(std::count(drawn.begin(), drawn.end(), '\r'), 3);  // at most 10 a second

    std::ostringstream lines;
    DownloadProgressDisplay plain(lines, false, clock);
    for (const std::uint64_t received : {5, 7, 15, 99, 100})
        plain.update(Progress{received, 100, 0});
    plain.finish();
    const std::string printed = lines.str();
    EXPECT_EQ(std::count(printed.begin(), printed.end(), '\n'), 4);  // one per tenth
}

}  // namespace
}  // namespace nuvrel::app
