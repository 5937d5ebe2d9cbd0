#include "support/helper_process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <stdexcept>
#include <thread>

extern char** environ;

namespace nuvrel::test {

using Clock = std::chrono::steady_clock;

HelperProcess::HelperProcess(std::vector<std::string> argv) {
    int toChild[2];
    int fromChild[2];
    if (::pipe2(toChild, O_CLOEXEC) != 0 || ::pipe2(fromChild, O_CLOEXEC) != 0) {
        throw std::runtime_error("cannot make pipes");
    }
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, toChild[0], 0);
    posix_spawn_file_actions_adddup2(&actions, fromChild[1], 1);
    std::vector<char*> words;
    for (auto& word : argv) words.push_back(word.data());
    words.push_back(nullptr);
    const int result =
        ::posix_spawn(&pid_, argv[0].c_str(), &actions, nullptr, words.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    ::close(toChild[0]);
    ::close(fromChild[1]);
    input_ = toChild[1];
    output_ = fromChild[0];
    if (result != 0) throw std::runtime_error("cannot spawn " + argv[0]);
}

HelperProcess::~HelperProcess() {
    if (!status_ && pid_ > 0) {
        ::kill(pid_, SIGKILL);
        waitForExit(std::chrono::seconds(5));
    }
    closeInput();
    if (output_ >= 0) ::close(output_);
}

std::optional<std::string> HelperProcess::readLine(std::chrono::milliseconds limit) {
    const auto deadline = Clock::now() + limit;
    while (true) {
        if (const auto end = buffered_.find('\n'); end != std::string::npos) {
            std::string line = buffered_.substr(0, end);
            buffered_.erase(0, end + 1);
            return line;
        }
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
        if (left.count() <= 0) return std::nullopt;
        pollfd ready{output_, POLLIN, 0};
        if (::poll(&ready, 1, static_cast<int>(left.count())) <= 0) continue;
        char chunk[256];
        const ssize_t got = ::read(output_, chunk, sizeof chunk);
        if (got <= 0) return std::nullopt;
        buffered_.append(chunk, static_cast<std::size_t>(got));
    }
}

bool HelperProcess::writeLine(const std::string& line) {
    const std::string bytes = line + "\n";
    return input_ >= 0 &&
           ::write(input_, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size());
}

void HelperProcess::closeInput() {
    if (input_ >= 0) ::close(input_);
    input_ = -1;
}

std::optional<int> HelperProcess::waitForExit(std::chrono::milliseconds limit) {
    if (!status_) status_ = waitForChild(pid_, limit);
    return status_;
}

std::optional<int> waitForChild(pid_t pid, std::chrono::milliseconds limit) {
    const auto deadline = Clock::now() + limit;
    while (true) {
        int status = 0;
        const pid_t reaped = ::waitpid(pid, &status, WNOHANG);
        if (reaped == pid) return status;
        if (reaped < 0 || Clock::now() >= deadline) return std::nullopt;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
}

Finished runToEnd(std::vector<std::string> argv, std::chrono::milliseconds limit) {
    HelperProcess process(std::move(argv));
    Finished finished;
    while (auto line = process.readLine(limit)) finished.output += *line + "\n";
    if (const auto status = process.waitForExit(limit); status && WIFEXITED(*status))
        finished.exitCode = WEXITSTATUS(*status);
    return finished;
}

}  // namespace nuvrel::test
