#pragma once
// The defaults store: small typed values by key. Every reader gives nothing when the key is
// absent or holds a value of another type, so a hand-edited or damaged store never crashes a
// reader; the caller falls back to its default. Implementations are safe to call from any
// thread.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace nuvrel::app {

// What a key can hold. A string literal converts to the string case, an int to the integer.
using SettingValue = std::variant<std::string, std::int64_t, double, bool>;

class SettingsStoring {
public:
    virtual ~SettingsStoring() = default;

    virtual std::optional<std::string> string(std::string_view key) const = 0;
    // Only a whole number within 64 bits.
    virtual std::optional<std::int64_t> integer(std::string_view key) const = 0;
    // Any number, whole or not.
    virtual std::optional<double> number(std::string_view key) const = 0;
    virtual std::optional<bool> boolean(std::string_view key) const = 0;
    // True when the key holds anything, of whatever type.
    virtual bool contains(std::string_view key) const = 0;

    virtual void set(std::string_view key, SettingValue value) = 0;
    virtual void remove(std::string_view key) = 0;
};

}  // namespace nuvrel::app
