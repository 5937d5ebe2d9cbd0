#pragma once
// A child process whose standard input and output are pipes to the test: it reads the lines
// the child prints and can close its input to tell it to finish.

#include <sys/types.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace nuvrel::test {

class HelperProcess {
public:
    // Standard error is inherited. Throws std::runtime_error when the child cannot start.
    explicit HelperProcess(std::vector<std::string> argv);
    // Kills and reaps the child if it still runs.
    ~HelperProcess();
    HelperProcess(const HelperProcess&) = delete;
    HelperProcess& operator=(const HelperProcess&) = delete;

    pid_t pid() const { return pid_; }
    // The next line the child prints, without its line end; nothing at the end of its output
    // or after `limit`.
    std::optional<std::string> readLine(std::chrono::milliseconds limit);
    // The line and a line end on the child's input; false when it could not be written.
    bool writeLine(const std::string& line);
    void closeInput();
    // The wait status once the child has ended within `limit`; nothing otherwise.
    std::optional<int> waitForExit(std::chrono::milliseconds limit);

private:
    pid_t pid_ = -1;
    int input_ = -1;
    int output_ = -1;
    std::string buffered_;
    std::optional<int> status_;
};

// What a child printed on its standard output and how it ended.
struct Finished {
    int exitCode = -1;  // -1 when it was killed by a signal or did not end in time
    std::string output;
};

// Runs `argv` to its end: all it prints within `limit`, then its exit code.
Finished runToEnd(std::vector<std::string> argv, std::chrono::milliseconds limit);

// Waits for any process that is this test's child (a subreaper's adopted grandchildren
// included) to end, and reaps it: its wait status, or nothing after `limit`.
std::optional<int> waitForChild(pid_t pid, std::chrono::milliseconds limit);

}  // namespace nuvrel::test
