#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <mutex>
#include <system_error>

#include "base/files.h"
#include "base/process_control.h"
#include "platform/linux/proc_tables.h"
#include "platform/live_process_control.h"

extern char** environ;

namespace nuvrel::platform {

namespace {

using base::ChildProcess;
using base::ProcessControl;
using base::Signal;
using base::SignalResult;
using base::SpawnRequest;

int signalNumber(Signal signal) {
    switch (signal) {
        case Signal::probe:
            return 0;
        case Signal::terminate:
            return SIGTERM;
        case Signal::kill:
            return SIGKILL;
    }
    return 0;
}

class LinuxChildProcess : public ChildProcess {
public:
    explicit LinuxChildProcess(pid_t pid) : pid_(pid) {}
    ~LinuxChildProcess() override { isRunning(); }

    std::int32_t pid() const override { return pid_; }

    bool isRunning() override {
        std::lock_guard lock(mutex_);
        return runningLocked();
    }

    bool signal(Signal signal) override {
        // Under the same lock as the reap: once reaped, the ID may belong to someone else.
        std::lock_guard lock(mutex_);
        if (!runningLocked()) return false;
        return ::kill(pid_, signalNumber(signal)) == 0;
    }

private:
    bool runningLocked() {
        if (exited_) return false;
        int status = 0;
        pid_t reaped;
        do {
            reaped = ::waitpid(pid_, &status, WNOHANG);
        } while (reaped < 0 && errno == EINTR);
        if (reaped == 0) return true;
        // Reaped now, or ECHILD: reaped elsewhere (SIGCHLD ignored); gone either way.
        exited_ = true;
        return false;
    }

    const pid_t pid_;
    std::mutex mutex_;
    bool exited_ = false;
};

class SpawnResources {
public:
    SpawnResources() {
        posix_spawn_file_actions_init(&actions);
        posix_spawnattr_init(&attributes);
    }
    ~SpawnResources() {
        posix_spawn_file_actions_destroy(&actions);
        posix_spawnattr_destroy(&attributes);
    }
    SpawnResources(const SpawnResources&) = delete;
    SpawnResources& operator=(const SpawnResources&) = delete;

    posix_spawn_file_actions_t actions;
    posix_spawnattr_t attributes;
};

void check(int result, const char* what) {
    if (result != 0) throw std::system_error(result, std::generic_category(), what);
}

class LinuxProcessControl : public ProcessControl {
public:
    std::shared_ptr<ChildProcess> spawn(const SpawnRequest& request) override {
        SpawnResources spawn;
        check(posix_spawn_file_actions_addopen(&spawn.actions, STDIN_FILENO, "/dev/null", O_RDONLY,
                                               0),
              "posix_spawn_file_actions_addopen");
        check(posix_spawn_file_actions_addopen(&spawn.actions, STDOUT_FILENO,
                                               request.outputFile.c_str(),
                                               O_WRONLY | O_CREAT | O_APPEND, 0644),
              "posix_spawn_file_actions_addopen");
        check(posix_spawn_file_actions_adddup2(&spawn.actions, STDOUT_FILENO, STDERR_FILENO),
              "posix_spawn_file_actions_adddup2");
        // Listening sockets of this process must not leak into the server, or the port
        // table would name the server as holding them.
        check(posix_spawn_file_actions_addclosefrom_np(&spawn.actions, STDERR_FILENO + 1),
              "posix_spawn_file_actions_addclosefrom_np");

        // Its own process group: Ctrl-C at the terminal cancels a query of the interactive
        // program and must not kill the server with it. The server ends through stop(), the
        // crash reaper, or the next session's stale-server step.
        // A clean signal state: a program that blocks SIGTERM for a signal-handling thread
        // would otherwise hand the block on, and every stop would need SIGKILL.
        sigset_t empty;
        sigemptyset(&empty);
        sigset_t defaults;
        sigemptyset(&defaults);
        for (int number : {SIGTERM, SIGINT, SIGHUP, SIGQUIT, SIGPIPE, SIGCHLD, SIGUSR1, SIGUSR2}) {
            sigaddset(&defaults, number);
        }
        check(posix_spawnattr_setflags(&spawn.attributes, POSIX_SPAWN_SETPGROUP |
                                                              POSIX_SPAWN_SETSIGMASK |
                                                              POSIX_SPAWN_SETSIGDEF),
              "posix_spawnattr_setflags");
        check(posix_spawnattr_setpgroup(&spawn.attributes, 0), "posix_spawnattr_setpgroup");
        check(posix_spawnattr_setsigmask(&spawn.attributes, &empty), "posix_spawnattr_setsigmask");
        check(posix_spawnattr_setsigdefault(&spawn.attributes, &defaults),
              "posix_spawnattr_setsigdefault");

        std::vector<std::string> words;
        words.push_back(request.executable.string());
        words.insert(words.end(), request.arguments.begin(), request.arguments.end());
        std::vector<char*> argv;
        for (auto& word : words) argv.push_back(word.data());
        argv.push_back(nullptr);

        pid_t pid = 0;
        const int result = ::posix_spawn(&pid, request.executable.c_str(), &spawn.actions,
                                         &spawn.attributes, argv.data(), environ);
        if (result != 0) {
            throw std::system_error(result, std::generic_category(),
                                    "cannot launch " + request.executable.string());
        }
        return std::make_shared<LinuxChildProcess>(pid);
    }

    SignalResult signal(std::int32_t pid, Signal signal) override {
        if (::kill(pid, signalNumber(signal)) == 0) return SignalResult::delivered;
        return errno == ESRCH ? SignalResult::noSuchProcess : SignalResult::failed;
    }

    std::vector<std::int32_t> listeningPIDs(int port) override {
        std::vector<std::uint64_t> inodes;
        for (const char* table : {"/proc/net/tcp", "/proc/net/tcp6"}) {
            if (auto text = base::readFile(table)) {
                auto found = listeningSocketInodes(*text, port);
                inodes.insert(inodes.end(), found.begin(), found.end());
            }
        }
        std::vector<std::int32_t> pids;
        if (inodes.empty()) return pids;

        std::error_code error;
        for (std::filesystem::directory_iterator process("/proc", error), end;
             !error && process != end; process.increment(error)) {
            const std::string name = process->path().filename().string();
            if (name.empty() || !std::all_of(name.begin(), name.end(), ::isdigit)) continue;
            if (holdsAny(process->path() / "fd", inodes)) pids.push_back(std::stoi(name));
        }
        std::sort(pids.begin(), pids.end());
        pids.erase(std::unique(pids.begin(), pids.end()), pids.end());
        return pids;
    }

    std::optional<std::string> processName(std::int32_t pid) override {
        if (pid < 1) return std::nullopt;
        const auto comm = base::readFile("/proc/" + std::to_string(pid) + "/comm");
        if (!comm) return std::nullopt;
        return processNameFromComm(*comm);
    }

    std::int32_t ownPID() override { return ::getpid(); }

private:
    // Processes come and go during the scan, and others' fd folders are unreadable: both are
    // simply not listeners we can name.
    static bool holdsAny(const std::filesystem::path& fdFolder,
                         const std::vector<std::uint64_t>& inodes) {
        std::error_code error;
        for (std::filesystem::directory_iterator fd(fdFolder, error), end; !error && fd != end;
             fd.increment(error)) {
            std::error_code linkError;
            const auto target = std::filesystem::read_symlink(fd->path(), linkError);
            if (linkError) continue;
            const auto inode = socketInode(target.native());
            if (inode && std::find(inodes.begin(), inodes.end(), *inode) != inodes.end())
                return true;
        }
        return false;
    }
};

}  // namespace

std::shared_ptr<ProcessControl> liveProcessControl() {
    static const auto live = std::make_shared<LinuxProcessControl>();
    return live;
}

}  // namespace nuvrel::platform
