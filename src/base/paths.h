#pragma once
// Where the program keeps its files: the XDG base directories, each with a "nuvrel" folder.

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

namespace nuvrel::base {

struct XdgPaths {
    std::filesystem::path home;
    std::filesystem::path dataHome;    // $XDG_DATA_HOME or ~/.local/share
    std::filesystem::path configHome;  // $XDG_CONFIG_HOME or ~/.config
    std::filesystem::path stateHome;   // $XDG_STATE_HOME or ~/.local/state
    std::filesystem::path cacheHome;   // $XDG_CACHE_HOME or ~/.cache

    using GetEnv = std::function<std::optional<std::string>(const char* name)>;
    // Relative XDG values are ignored, as the base-directory rules require.
    static XdgPaths fromEnvironment(const GetEnv& getEnv);
    static XdgPaths fromEnvironment();

    std::filesystem::path modelsDirectory() const { return dataHome / "nuvrel" / "models"; }
    std::filesystem::path logsDirectory() const { return stateHome / "nuvrel" / "logs"; }
    std::filesystem::path networkActivityFile() const {
        return dataHome / "nuvrel" / "network-activity.json";
    }
    std::filesystem::path settingsFile() const { return configHome / "nuvrel" / "settings.json"; }
};

}  // namespace nuvrel::base
