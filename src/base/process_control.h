#pragma once
// The process operations the server manager needs (the live form is in src/platform): spawning a
// child, signalling any process by ID, and two questions about the machine: who listens on a TCP
// port, and what a process is called. Everything here blocks briefly (a system call or a /proc
// scan) and runs on the caller's thread; the objects are safe to use from several threads.
//
// On Linux the two questions are answered from /proc. The macOS form answers them with
// "/usr/sbin/lsof -nP -iTCP:<port> -sTCP:LISTEN -t" and "/bin/ps -p <pid> -o comm=" behind
// the same two functions.

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace nuvrel::base {

enum class Signal {
    probe,      // 0: only asks whether the process exists
    terminate,  // SIGTERM
    kill,       // SIGKILL
};

enum class SignalResult {
    delivered,
    noSuchProcess,  // ESRCH: the process is certainly gone
    failed,         // anything else, e.g. EPERM: it may well exist
};

// A child this process spawned. Its ID stays ours until it is reaped, so signals sent through
// the handle can never reach a process that reused the ID.
class ChildProcess {
public:
    virtual ~ChildProcess() = default;
    virtual std::int32_t pid() const = 0;
    // False once the child has exited; the call that notices the exit reaps it.
    virtual bool isRunning() = 0;
    // False when the child has already exited or the signal could not be sent.
    virtual bool signal(Signal signal) = 0;
};

struct SpawnRequest {
    std::filesystem::path executable;
    // The arguments after the program name.
    std::vector<std::string> arguments;
    // Standard output and standard error both go here, appended; standard input is the null
    // device. Environment and working directory are inherited.
    std::filesystem::path outputFile;
};

class ProcessControl {
public:
    virtual ~ProcessControl() = default;
    // Throws std::system_error when the child cannot be started.
    virtual std::shared_ptr<ChildProcess> spawn(const SpawnRequest& request) = 0;
    // A negative ID names a process group, as kill(2) has it: a spawned child leads its own.
    virtual SignalResult signal(std::int32_t pid, Signal signal) = 0;
    // The IDs of processes holding a socket that listens on the TCP port (IPv4 or IPv6),
    // each once, ascending. Empty when nothing listens or the table cannot be read.
    virtual std::vector<std::int32_t> listeningPIDs(int port) = 0;
    // The process's short name ("llama-server"); nothing when it is gone or unreadable.
    virtual std::optional<std::string> processName(std::int32_t pid) = 0;
    virtual std::int32_t ownPID() = 0;
};

}  // namespace nuvrel::base
