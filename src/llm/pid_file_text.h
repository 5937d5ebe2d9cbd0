#pragma once
// The text of a server's PID file, "<owner PID>:<child PID>:<epoch>", read back however a
// crash or another program left it. Pure.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace nuvrel::llm::PIDFileText {

// Trimmed, split at ":" into at most three fields; empty fields are dropped and do not count
// toward the three, so the third field is the whole rest.
std::vector<std::string> fields(std::string_view text);

// A decimal 32-bit integer with an optional sign, and nothing else.
std::optional<std::int32_t> parsePID(std::string_view text);

}  // namespace nuvrel::llm::PIDFileText
