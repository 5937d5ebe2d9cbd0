#pragma once
// Sets or unsets environment variables for one test and puts the old values back.

#include <cstdlib>
#include <ctime>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace nuvrel::test {

class EnvironmentOverride {
public:
    EnvironmentOverride() = default;
    EnvironmentOverride(const char* name, const char* value) { set(name, value); }
    EnvironmentOverride(const EnvironmentOverride&) = delete;
    EnvironmentOverride& operator=(const EnvironmentOverride&) = delete;

    // A null `value` unsets the variable.
    void set(const char* name, const char* value) {
        if (!saved_.contains(name)) {
            const char* old = std::getenv(name);
            saved_[name] = old ? std::optional<std::string>(old) : std::nullopt;
        }
        apply(name, value);
    }
    ~EnvironmentOverride() {
        for (const auto& [name, value] : saved_)
            apply(name.c_str(), value ? value->c_str() : nullptr);
    }

private:
    static void apply(const char* name, const char* value) {
        if (value) {
            ::setenv(name, value, 1);
        } else {
            ::unsetenv(name);
        }
        // The C library reads TZ again only when asked to.
        if (std::string_view(name) == "TZ") ::tzset();
    }

    std::map<std::string, std::optional<std::string>> saved_;
};

}  // namespace nuvrel::test
