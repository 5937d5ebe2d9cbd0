#include "support/temporary_home.h"

#include <cstdlib>
#include <stdexcept>

namespace nuvrel::test {

namespace {
constexpr const char* variables[] = {"HOME", "XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_STATE_HOME",
                                     "XDG_CACHE_HOME"};
}

TemporaryHome::TemporaryHome() {
    std::string pattern = (std::filesystem::temp_directory_path() / "nuvrel-home-XXXXXX").string();
    if (!::mkdtemp(pattern.data())) throw std::runtime_error("cannot create a temporary home");
    path_ = pattern;
    for (const char* name : variables) {
        const char* value = std::getenv(name);
        saved_[name] = value ? std::optional<std::string>(value) : std::nullopt;
    }
    ::setenv("HOME", path_.c_str(), 1);
    ::setenv("XDG_DATA_HOME", (path_ / ".local/share").c_str(), 1);
    ::setenv("XDG_CONFIG_HOME", (path_ / ".config").c_str(), 1);
    ::setenv("XDG_STATE_HOME", (path_ / ".local/state").c_str(), 1);
    ::setenv("XDG_CACHE_HOME", (path_ / ".cache").c_str(), 1);
}

TemporaryHome::~TemporaryHome() {
    for (const auto& [name, value] : saved_) {
        if (value)
            ::setenv(name.c_str(), value->c_str(), 1);
        else
            ::unsetenv(name.c_str());
    }
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

}  // namespace nuvrel::test
