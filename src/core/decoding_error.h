#pragma once
// The one error of turning JSON into core values. It is a json exception too, so that a
// caller of nlohmann's get<T>() that catches json::exception sees every failure in one place.

#include <nlohmann/json.hpp>
#include <string>

namespace nuvrel::core {

class DecodingError : public nlohmann::json::exception {
public:
    enum class Kind {
        typeMismatch,   // a value of the wrong JSON type
        valueNotFound,  // null where a value is required
        keyNotFound,    // a required key is absent
        dataCorrupted,  // not JSON at all, or a text outside a closed vocabulary
    };

    DecodingError(Kind kind, const std::string& message)
        : nlohmann::json::exception(0, message.c_str()), kind(kind) {}

    std::string description() const { return what(); }

    Kind kind;
};

}  // namespace nuvrel::core
