#include "llm/llama_server_installer.h"

#include <chrono>
#include <system_error>
#include <thread>
#include <vector>

#include "base/cancellation.h"
#include "base/sleep.h"
#include "llm/server_binary.h"

namespace nuvrel::llm::LlamaServerInstaller {
namespace {

using namespace std::chrono_literals;

std::optional<std::filesystem::path> executableDirectory() {
    std::error_code error;
    const auto self = std::filesystem::read_symlink("/proc/self/exe", error);
    if (error) return std::nullopt;
    return self.parent_path();
}

bool isReadableFile(const std::filesystem::path& path) {
    std::error_code error;
    return std::filesystem::is_regular_file(path, error);
}

}  // namespace

std::optional<std::filesystem::path> installIfMissing(const Operations& operations) {
    if (auto found = operations.findServerBinary()) return found;
    const auto installer = operations.findInstaller();
    if (!installer) return std::nullopt;
    operations.networkLog(installLogHost, installLogPath);
    operations.runInstall(*installer);
    return operations.findServerBinary();
}

std::optional<std::filesystem::path> findInstallScript() {
    std::vector<std::filesystem::path> candidates;
    if (auto folder = executableDirectory()) {
        candidates.push_back(*folder / "../share/nuvrel/install-llama-server.sh");
    }
    candidates.push_back(std::filesystem::path(NUVREL_SOURCE_DIR) /
                         "scripts/install-llama-server.sh");
    for (const auto& candidate : candidates) {
        if (isReadableFile(candidate)) return candidate.lexically_normal();
    }
    return std::nullopt;
}

void liveRunInstall(const std::filesystem::path& script, const std::filesystem::path& output) {
    const auto processes = platform::liveProcessControl();
    const auto child = processes->spawn({"/bin/bash", {script.string()}, output});
    try {
        while (child->isRunning()) base::liveSleep(200ms);
    } catch (const base::Cancelled&) {
        // The whole process group: the build's compilers as well as the script.
        processes->signal(-child->pid(), platform::Signal::terminate);
        while (child->isRunning()) std::this_thread::sleep_for(50ms);
        throw;
    }
}

Operations liveOperations(std::function<void(std::string_view, std::string_view)> networkLog) {
    return Operations{
        .findServerBinary = findServerBinaryPath,
        .findInstaller = findInstallScript,
        .runInstall = [](const std::filesystem::path& script) { liveRunInstall(script); },
        .networkLog = std::move(networkLog),
    };
}

}  // namespace nuvrel::llm::LlamaServerInstaller
