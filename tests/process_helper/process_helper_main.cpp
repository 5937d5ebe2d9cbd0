// A stand-in for the program in tests that need a second process: one that owns a model
// server and stays alive, or one that crashes with children registered in the crash reaper.
//
//   process_helper own-server <llama-server> <model> <port>
//       starts the server, prints its PID, stops it when standard input closes
//   process_helper crash-server <llama-server> <model> <port>
//       starts the server, prints its PID, then dies of SIGSEGV
//   process_helper crash-sleepers <count>
//       spawns <count> sleeping children, registers each, prints their PIDs, dies of SIGSEGV
//   process_helper crash-unregistered
//       spawns a sleeping child, registers and unregisters it, prints its PID, dies of SIGSEGV
//   process_helper write-settings <file> <count>
//       sets the settings "generation" and "padding" <count> times, printing "ready" after the
//       first; padding is 64 KiB of the letter of the generation
//   process_helper record-netlog <file> <count> <host>
//       records <count> requests to <host> in the network log file, paths "/0", "/1", ...
//   process_helper write-settings-limited <file> <bytes>
//       under a file size limit of <bytes>, sets a padding twice that long; prints the
//       diagnostic lines and "done"
#include <signal.h>
#include <spawn.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <string>
#include <string_view>

#include "app/json_settings_store.h"
#include "app/network_activity_log.h"
#include "base/http.h"
#include "llm/llama_server_manager.h"
#include "platform/live_llm.h"
#include "platform/posix/crash_child_reaper.h"

extern char** environ;

namespace {

using namespace nuvrel;

std::unique_ptr<llm::LlamaServerManager> startServer(char** argv, std::int32_t& childPID) {
    auto environment = platform::liveLlamaServerEnvironment({});
    const std::filesystem::path server = argv[2];
    environment.findServerBinary = [server] { return std::optional(server); };
    const auto registerChild = environment.registerChild;
    environment.registerChild = [&childPID, registerChild](std::int32_t pid) {
        childPID = pid;
        registerChild(pid);
    };
    auto manager = std::make_unique<llm::LlamaServerManager>(
        argv[3], std::atoi(argv[4]), std::make_shared<base::HttpSession>(),
        llm::LlamaServerMode::chat, 2048, environment);
    manager->ensureRunning();
    return manager;
}

std::int32_t spawnSleeper() {
    pid_t pid = 0;
    char sleep[] = "/bin/sleep";
    char seconds[] = "60";
    char* arguments[] = {sleep, seconds, nullptr};
    if (::posix_spawn(&pid, sleep, nullptr, nullptr, arguments, environ) != 0) std::exit(3);
    return pid;
}

[[noreturn]] void crash() {
    std::cout.flush();
    ::raise(SIGSEGV);
    std::abort();
}

class StandardOutputSink final : public base::DiagnosticSink {
public:
    void writeLine(std::string_view line) override { std::cout << line << std::endl; }
};

int writeSettings(const std::filesystem::path& file, int count) {
    app::JsonSettingsStore store(file);
    for (int generation = 0; generation < count; ++generation) {
        store.set("generation", std::int64_t{generation});
        store.set("padding", std::string(64 * 1024, static_cast<char>('a' + generation % 26)));
        if (generation == 0) std::cout << "ready" << std::endl;
    }
    return 0;
}

int recordNetworkLog(const std::filesystem::path& file, int count, const std::string& host) {
    app::NetworkActivityLog log(std::chrono::system_clock::now, file);
    for (int i = 0; i < count; ++i) {
        log.record(host, "/" + std::to_string(i), app::NetworkActivityLog::Purpose::webSearch);
    }
    return 0;
}

int writeSettingsLimited(const std::filesystem::path& file, rlim_t bytes) {
    const rlimit limit{bytes, bytes};
    if (::setrlimit(RLIMIT_FSIZE, &limit) != 0) return 3;
    app::JsonSettingsStore store(file, base::Diagnostics(std::make_shared<StandardOutputSink>()));
    store.set("padding", std::string(2 * bytes, 'x'));
    std::cout << "done" << std::endl;
    // Coverage counters written at exit would pass the limit too and end the helper by signal.
    ::signal(SIGXFSZ, SIG_IGN);
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    const std::string_view mode = argc > 1 ? argv[1] : "";
    if ((mode == "own-server" || mode == "crash-server") && argc == 5) {
        std::int32_t child = 0;
        auto manager = startServer(argv, child);
        std::cout << child << std::endl;
        if (mode == "crash-server") crash();
        std::string ignored;
        while (std::getline(std::cin, ignored)) {
        }
        manager->stop();
        return 0;
    }
    if (mode == "crash-sleepers" && argc == 3) {
        for (int i = 0, count = std::atoi(argv[2]); i < count; ++i) {
            const std::int32_t pid = spawnSleeper();
            platform::CrashChildReaper::registerPID(pid);
            std::cout << pid << "\n";
        }
        crash();
    }
    if (mode == "crash-unregistered" && argc == 2) {
        const std::int32_t pid = spawnSleeper();
        platform::CrashChildReaper::registerPID(pid);
        platform::CrashChildReaper::unregisterPID(pid);
        std::cout << pid << "\n";
        crash();
    }
    if (mode == "write-settings" && argc == 4) return writeSettings(argv[2], std::atoi(argv[3]));
    if (mode == "record-netlog" && argc == 5) {
        return recordNetworkLog(argv[2], std::atoi(argv[3]), argv[4]);
    }
    if (mode == "write-settings-limited" && argc == 4) {
        return writeSettingsLimited(argv[2], std::strtoul(argv[3], nullptr, 10));
    }
    std::cerr << "usage: process_helper own-server|crash-server <llama-server> <model> <port>\n"
                 "       process_helper crash-sleepers <count>\n"
                 "       process_helper crash-unregistered\n"
                 "       process_helper write-settings|record-netlog|write-settings-limited ...\n";
    return 2;
}
