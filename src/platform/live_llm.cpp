#include "platform/live_llm.h"

#include <chrono>
#include <thread>
#include <utility>

#include "base/cancellation.h"
#include "base/files.h"
#include "base/paths.h"
#include "base/sleep.h"
#include "llm/server_binary.h"
#include "platform/live_process_control.h"
#include "platform/posix/crash_child_reaper.h"

namespace nuvrel::platform {

using namespace std::chrono_literals;

llm::LlamaServerManager::Environment liveLlamaServerEnvironment(base::Diagnostics diagnostics) {
    llm::LlamaServerManager::Environment environment;
    environment.processes = liveProcessControl();
    environment.findServerBinary = []() -> std::optional<std::filesystem::path> {
        if (auto found = llm::findServerBinary()) return found->path;
        return std::nullopt;
    };
    environment.logsDirectory =
        base::createdOnDemand(base::XdgPaths::fromEnvironment().logsDirectory());
    environment.registerChild = CrashChildReaper::registerPID;
    environment.unregisterChild = CrashChildReaper::unregisterPID;
    environment.diagnostics = std::move(diagnostics);
    return environment;
}

void liveRunInstall(const std::filesystem::path& script, const std::filesystem::path& output) {
    const auto processes = liveProcessControl();
    const auto child = processes->spawn({"/bin/bash", {script.string()}, output});
    try {
        while (child->isRunning()) base::liveSleep(200ms);
    } catch (const base::Cancelled&) {
        // The whole process group: the build's compilers as well as the script.
        processes->signal(-child->pid(), base::Signal::terminate);
        while (child->isRunning()) std::this_thread::sleep_for(50ms);
        throw;
    }
}

llm::LlamaServerInstaller::Operations liveInstallerOperations(
    std::function<void(std::string_view, std::string_view)> networkLog) {
    return llm::LlamaServerInstaller::Operations{
        .findServerBinary = llm::findServerBinaryPath,
        .findInstaller = llm::LlamaServerInstaller::findInstallScript,
        .runInstall = [](const std::filesystem::path& script) { liveRunInstall(script); },
        .networkLog = std::move(networkLog),
    };
}

}  // namespace nuvrel::platform
