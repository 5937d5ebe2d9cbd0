#pragma once
// The error a call throws, for comparing whole error values, and readable failure messages.

#include <optional>
#include <ostream>

#include "base/http.h"
#include "llm/llm_error.h"
#include "support/error_of.h"

namespace nuvrel::llm {

inline void PrintTo(const LLMError& error, std::ostream* out) {
    *out << error.description();
}

namespace test {

using nuvrel::test::errorOf;

}  // namespace test
}  // namespace nuvrel::llm

namespace nuvrel::base {
inline void PrintTo(const HttpError& error, std::ostream* out) {
    *out << error.description();
}
}  // namespace nuvrel::base
