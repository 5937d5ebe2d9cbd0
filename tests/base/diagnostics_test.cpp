#include "base/diagnostics.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <string>
#include <thread>
#include <vector>

#include "base/files.h"

namespace nuvrel::base {
namespace {

// Standard error goes into a file while the object lives.
class RedirectedStandardError {
public:
    explicit RedirectedStandardError(const std::string& path)
        : saved_(::dup(STDERR_FILENO)),
          file_(::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600)) {
        ::dup2(file_, STDERR_FILENO);
    }
    ~RedirectedStandardError() {
        ::dup2(saved_, STDERR_FILENO);
        ::close(saved_);
        ::close(file_);
    }

private:
    int saved_;
    int file_;
};

TEST(Diagnostics, LinesFromManyThreadsReachStandardErrorWholeAndTagged) {
    const std::string path = ::testing::TempDir() + "diagnostics-" + std::to_string(::getpid());
    {
        RedirectedStandardError redirected(path);
        const Diagnostics diagnostics;
        std::vector<std::thread> writers;
        for (int t = 0; t < 4; ++t) {
            writers.emplace_back([&] {
                for (int i = 0; i < 50; ++i)
                    diagnostics.event("server started on port 8765 after a long wait");
            });
        }
        for (auto& writer : writers) writer.join();
        diagnostics.latency("route 12 ms");
    }
    const std::string output = readFile(path).value_or("");
    std::remove(path.c_str());

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
