#include "llm/llama_server_installer.h"

#include <system_error>
#include <vector>

namespace nuvrel::llm::LlamaServerInstaller {
namespace {

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

}  // namespace nuvrel::llm::LlamaServerInstaller
