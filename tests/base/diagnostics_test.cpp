#include "base/diagnostics.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace nuvrel::base {
namespace {

TEST(Diagnostics, LinesFromManyThreadsStayWholeAndTagged) {
    testing::internal::CaptureStderr();
    std::vector<std::thread> writers;
    for (int t = 0; t < 4; ++t) {
        writers.emplace_back([] {
            for (int i = 0; i < 50; ++i)
                diag::event.line("server started on port 8765 after a long wait");
        });
    }
    for (auto& writer : writers) writer.join();
    diag::latency.line("route 12 ms");
    const std::string output = testing::internal::GetCapturedStderr();

    std::size_t lines = 0, start = 0;
    while (start < output.size()) {
        const std::size_t end = output.find('\n', start);
        ASSERT_NE(end, std::string::npos);
        const std::string line = output.substr(start, end - start);
        if (lines < 200)
            EXPECT_EQ(line, "[Nuvrel] server started on port 8765 after a long wait");
        else
            EXPECT_EQ(line, "[nuvrel-latency] route 12 ms");
        ++lines;
        start = end + 1;
    }
    EXPECT_EQ(lines, 201u);
}

}  // namespace
}  // namespace nuvrel::base
