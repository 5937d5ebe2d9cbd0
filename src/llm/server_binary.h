#pragma once
// Where the llama-server executable is. First hit wins, and a hit must be an executable file:
//   1. the program's own install: "llama-server" beside the running executable, then the
//      build that scripts/install-llama-server.sh leaves in the user's cache;
//   2. "/opt/homebrew/bin/llama-server", "/usr/local/bin/llama-server";
//   3. each folder of PATH, in order, empty entries skipped.
// LlamaServerManager exposes the live form as its findServerBinary().

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace nuvrel::llm {

inline constexpr std::string_view serverBinaryName = "llama-server";
// The node-llama-cpp release whose llama.cpp source the install script builds.
inline constexpr std::string_view installedServerVersion = "3.22.1";

struct ServerBinary {
    // Where the hit came from; the diagnostics report names it.
    enum class Kind {
        bundled,    // the program's own install
        fixedPath,  // one of the package manager's fixed folders
        path,       // found through PATH
    };
    std::filesystem::path path;
    Kind kind = Kind::bundled;
    friend bool operator==(const ServerBinary&, const ServerBinary&) = default;
};

struct ServerBinarySearch {
    // The folder of the running program, when it is known.
    std::optional<std::filesystem::path> executableDirectory;
    // The executable that the install script builds.
    std::filesystem::path installedServerPath;
    // The value of PATH; nothing when it is unset.
    std::optional<std::string> pathVariable;
    std::function<bool(const std::filesystem::path&)> isExecutable;
};

// A relative PATH entry is taken against the current directory, and the hit is then absolute,
// so that it still names the same file after a change of directory.
std::optional<ServerBinary> findServerBinary(const ServerBinarySearch& search);

// The search on this machine: /proc/self/exe, $XDG_CACHE_HOME (or ~/.cache), PATH, access(2).
std::optional<ServerBinary> findServerBinary();
// The same, without the kind: the form the server manager injects.
std::optional<std::filesystem::path> findServerBinaryPath();
ServerBinarySearch liveServerBinarySearch();

// ${XDG_CACHE_HOME:-$HOME/.cache}/nuvrel/llama-server/<version>/bin/llama-server.
std::filesystem::path installedServerPath();
// A regular file (after following links) that this process may execute.
bool liveIsExecutable(const std::filesystem::path& path);

}  // namespace nuvrel::llm
