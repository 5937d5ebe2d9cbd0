#pragma once
// Real processes for the server manager's tests: a foreign process that the test owns and
// reaps the moment it dies (so that a kill by the manager shows at once), and a process
// control that counts the manager's spawns while doing them for real.

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "base/http.h"
#include "base/process_control.h"
#include "platform/live_process_control.h"

namespace nuvrel::llm::test {

inline const std::filesystem::path fakeServerPath = FAKE_LLAMA_SERVER_PATH;

class ForeignProcess {
public:
    explicit ForeignProcess(std::vector<std::string> argv) {
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
        posix_spawn_file_actions_adddup2(&actions, 1, 2);
        std::vector<char*> words;
        for (auto& word : argv) words.push_back(word.data());
        words.push_back(nullptr);
        pid_t pid = 0;
        const int result =
            ::posix_spawn(&pid, argv[0].c_str(), &actions, nullptr, words.data(), environ);
        posix_spawn_file_actions_destroy(&actions);
        if (result != 0) throw std::runtime_error("cannot spawn " + argv[0]);
        pid_ = pid;
        waiter_ = std::thread([this] {
            int status = 0;
            while (::waitpid(pid_, &status, 0) < 0 && errno == EINTR) {
            }
            signal_ = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
            exited_ = true;
        });
    }
    ~ForeignProcess() {
        if (!exited_) ::kill(pid_, SIGKILL);
        waiter_.join();
    }
    ForeignProcess(const ForeignProcess&) = delete;
    ForeignProcess& operator=(const ForeignProcess&) = delete;

    std::int32_t pid() const { return pid_; }
    bool exited() const { return exited_; }
    // The signal that ended it; 0 for a normal exit or while it runs.
    int signal() const { return signal_; }
    bool waitForExit(std::chrono::milliseconds limit) const {
        const auto deadline = std::chrono::steady_clock::now() + limit;
        while (!exited_ && std::chrono::steady_clock::now() < deadline) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        return exited_;
    }

private:
    std::int32_t pid_ = 0;
    std::atomic<bool> exited_{false};
    std::atomic<int> signal_{0};
    std::thread waiter_;
};

// True when a server on the loopback port answers /health with 200 within a second.
inline bool answersHealth(base::HttpSession& session, int port) {
    base::HttpRequest request;
    request.url = *base::Url::parse("http://127.0.0.1:" + std::to_string(port) + "/health");
    request.timeout = std::chrono::seconds(1);
    try {
        return session.send(request).status == 200;
    } catch (const std::exception&) {
        return false;
    }
}

class CountingProcesses : public base::ProcessControl {
public:
    std::shared_ptr<base::ChildProcess> spawn(const base::SpawnRequest& request) override {
        auto child = live_->spawn(request);
        std::lock_guard guard(mutex_);
        spawned_.push_back(child->pid());
        return child;
    }
    base::SignalResult signal(std::int32_t pid, base::Signal signal) override {
        return live_->signal(pid, signal);
    }
    std::vector<std::int32_t> listeningPIDs(int port) override {
        return live_->listeningPIDs(port);
    }
    std::optional<std::string> processName(std::int32_t pid) override {
        return live_->processName(pid);
    }
    std::int32_t ownPID() override { return live_->ownPID(); }

    std::vector<std::int32_t> spawned() const {
        std::lock_guard guard(mutex_);
        return spawned_;
    }

private:
    std::shared_ptr<base::ProcessControl> live_ = platform::liveProcessControl();
    mutable std::mutex mutex_;
    std::vector<std::int32_t> spawned_;
};

}  // namespace nuvrel::llm::test
