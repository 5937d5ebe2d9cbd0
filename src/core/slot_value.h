#pragma once
// One loosely typed argument of a routed intent: a JSON scalar.

#include <cstddef>
#include <map>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>

namespace nuvrel::core {

class SlotValue {
public:
    enum class Kind { string, number, boolean, null };
    using Storage = std::variant<std::string, double, bool, std::nullptr_t>;

    SlotValue() : storage_(nullptr) {}
    SlotValue(std::nullptr_t) : storage_(nullptr) {}
    SlotValue(std::string text) : storage_(std::move(text)) {}
    SlotValue(std::string_view text) : storage_(std::string(text)) {}
    SlotValue(const char* text) : storage_(std::string(text)) {}
    SlotValue(double number) : storage_(number) {}
    SlotValue(bool flag) : storage_(flag) {}
    // Whole numbers are numbers, never booleans.
    template <typename Integer>
    requires(std::is_integral_v<Integer> && !std::is_same_v<Integer, bool>)
        SlotValue(Integer number)
        : storage_(static_cast<double>(number)) {}
    // Any other pointer would silently become a bool.
    SlotValue(const void*) = delete;

    Kind kind() const { return static_cast<Kind>(storage_.index()); }
    bool isString() const { return kind() == Kind::string; }
    bool isNumber() const { return kind() == Kind::number; }
    bool isBool() const { return kind() == Kind::boolean; }
    bool isNull() const { return kind() == Kind::null; }

    // The payload when the value is of that case, else null / nothing.
    const std::string* asString() const { return std::get_if<std::string>(&storage_); }
    std::optional<double> asNumber() const;
    std::optional<bool> asBool() const;

    const Storage& storage() const { return storage_; }

    bool operator==(const SlotValue&) const = default;

private:
    Storage storage_;
};

using Slots = std::map<std::string, SlotValue>;

// JSON form: the matching scalar. Decoding tries null, then bool, then number, then text, so
// `true` is a bool and `3` the number 3.0; an array or object throws DecodingError.
void to_json(nlohmann::json& json, const SlotValue& value);
void from_json(const nlohmann::json& json, SlotValue& value);

}  // namespace nuvrel::core
