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
#include <signal.h>
#include <spawn.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <string>
#include <string_view>

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
    std::cerr << "usage: process_helper own-server|crash-server <llama-server> <model> <port>\n"
                 "       process_helper crash-sleepers <count>\n"
                 "       process_helper crash-unregistered\n";
    return 2;
}
