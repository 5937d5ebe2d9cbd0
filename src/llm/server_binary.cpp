#include "llm/server_binary.h"

#include <unistd.h>

#include <array>
#include <cstdlib>
#include <system_error>

#include "base/paths.h"

namespace nuvrel::llm {

namespace {

constexpr std::array<std::string_view, 2> fixedServerPaths = {
    "/opt/homebrew/bin/llama-server",
    "/usr/local/bin/llama-server",
};

std::optional<std::filesystem::path> liveExecutableDirectory() {
    std::error_code error;
    const std::filesystem::path executable = std::filesystem::read_symlink("/proc/self/exe", error);
    if (error || executable.empty()) return std::nullopt;
    return executable.parent_path();
}

}  // namespace

std::optional<ServerBinary> findServerBinary(const ServerBinarySearch& search) {
    const auto hit = [&](const std::filesystem::path& path,
                         ServerBinary::Kind kind) -> std::optional<ServerBinary> {
        if (search.isExecutable(path)) return ServerBinary{path, kind};
        return std::nullopt;
    };

    if (search.executableDirectory) {
        if (auto found =
                hit(*search.executableDirectory / serverBinaryName, ServerBinary::Kind::bundled)) {
            return found;
        }
    }
    if (!search.installedServerPath.empty()) {
        if (auto found = hit(search.installedServerPath, ServerBinary::Kind::bundled)) return found;
    }
    for (std::string_view fixed : fixedServerPaths) {
        if (auto found = hit(std::filesystem::path(fixed), ServerBinary::Kind::fixedPath))
            return found;
    }
    if (!search.pathVariable) return std::nullopt;

    std::string_view rest = *search.pathVariable;
    while (!rest.empty()) {
        const std::size_t colon = rest.find(':');
        const std::string_view entry = rest.substr(0, colon);
        rest = colon == std::string_view::npos ? std::string_view() : rest.substr(colon + 1);
        if (entry.empty()) continue;
        std::error_code error;
        const std::filesystem::path directory = std::filesystem::absolute(entry, error);
        if (error) continue;
        if (auto found = hit(directory / serverBinaryName, ServerBinary::Kind::path)) return found;
    }
    return std::nullopt;
}

std::filesystem::path installedServerPath() {
    return base::XdgPaths::fromEnvironment().cacheHome / "nuvrel" / "llama-server" /
           installedServerVersion / "bin" / serverBinaryName;
}

bool liveIsExecutable(const std::filesystem::path& path) {
    std::error_code error;
    return std::filesystem::is_regular_file(path, error) && ::access(path.c_str(), X_OK) == 0;
}

ServerBinarySearch liveServerBinarySearch() {
    std::optional<std::string> pathVariable;
    if (const char* value = std::getenv("PATH")) pathVariable = value;
    return ServerBinarySearch{
        .executableDirectory = liveExecutableDirectory(),
        .installedServerPath = installedServerPath(),
        .pathVariable = std::move(pathVariable),
        .isExecutable = liveIsExecutable,
    };
}

std::optional<ServerBinary> findServerBinary() {
    return findServerBinary(liveServerBinarySearch());
}

std::optional<std::filesystem::path> findServerBinaryPath() {
    if (auto found = findServerBinary()) return std::move(found->path);
    return std::nullopt;
}

}  // namespace nuvrel::llm
