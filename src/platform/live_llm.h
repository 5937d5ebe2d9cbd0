#pragma once
// The live forms of what the local-model code does to the machine: the server manager's
// environment and the server installer's operations.

#include <filesystem>
#include <functional>
#include <string_view>

#include "base/diagnostics.h"
#include "llm/llama_server_installer.h"
#include "llm/llama_server_manager.h"

namespace nuvrel::platform {

// /proc and posix_spawn, the server binary search, the XDG logs folder (created on demand),
// the crash reaper's table of children.
llm::LlamaServerManager::Environment liveLlamaServerEnvironment(base::Diagnostics diagnostics);

// Runs the install script with bash and waits for it, on the caller's task; a stop request
// ends the whole build (the script's process group) and throws base::Cancelled. Its output goes
// to `output` (the null device by default: the panel shows no build log).
void liveRunInstall(const std::filesystem::path& script,
                    const std::filesystem::path& output = "/dev/null");

// The installer's live operations; `networkLog` is the launcher's.
llm::LlamaServerInstaller::Operations liveInstallerOperations(
    std::function<void(std::string_view host, std::string_view path)> networkLog);

}  // namespace nuvrel::platform
