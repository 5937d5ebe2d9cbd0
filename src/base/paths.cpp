#include "base/paths.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>

namespace nuvrel::base {

namespace {

std::filesystem::path homeDirectory(const XdgPaths::GetEnv& getEnv) {
    if (auto home = getEnv("HOME"); home && !home->empty()) return *home;
    if (const passwd* entry = ::getpwuid(::getuid()); entry && entry->pw_dir) return entry->pw_dir;
    return std::filesystem::temp_directory_path();
}

std::filesystem::path xdgDirectory(const XdgPaths::GetEnv& getEnv, const char* name,
                                   const std::filesystem::path& fallback) {
    if (auto value = getEnv(name); value && !value->empty()) {
        std::filesystem::path path(*value);
        if (path.is_absolute()) return path;
    }
    return fallback;
}

}  // namespace

XdgPaths XdgPaths::fromEnvironment(const GetEnv& getEnv) {
    XdgPaths paths;
    paths.home = homeDirectory(getEnv);
    paths.dataHome = xdgDirectory(getEnv, "XDG_DATA_HOME", paths.home / ".local" / "share");
    paths.configHome = xdgDirectory(getEnv, "XDG_CONFIG_HOME", paths.home / ".config");
    paths.stateHome = xdgDirectory(getEnv, "XDG_STATE_HOME", paths.home / ".local" / "state");
    paths.cacheHome = xdgDirectory(getEnv, "XDG_CACHE_HOME", paths.home / ".cache");
    return paths;
}

XdgPaths XdgPaths::fromEnvironment() {
    return fromEnvironment([](const char* name) -> std::optional<std::string> {
        if (const char* value = std::getenv(name)) return std::string(value);
        return std::nullopt;
    });
}

}  // namespace nuvrel::base
