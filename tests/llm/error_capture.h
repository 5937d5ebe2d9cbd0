#pragma once
// The error a call throws, for comparing whole error values, and readable failure messages.

#include <optional>
#include <ostream>

#include "base/http.h"
#include "llm/llm_error.h"

namespace nuvrel::llm {

inline void PrintTo(const LLMError& error, std::ostream* out) {
    *out << error.description();
}

namespace test {

// The E the call threw; nothing when it returned. Anything else propagates.
template <class E, class F>
std::optional<E> errorOf(F&& call) {
    try {
        call();
    } catch (const E& error) {
        return error;
    }
    return std::nullopt;
}

}  // namespace test
}  // namespace nuvrel::llm

namespace nuvrel::base {
inline void PrintTo(const HttpError& error, std::ostream* out) {
    *out << error.description();
}
}  // namespace nuvrel::base
