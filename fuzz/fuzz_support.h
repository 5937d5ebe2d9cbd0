#pragma once
// What every fuzz target shares: a check that aborts with the broken invariant, so that
// libFuzzer keeps the input as a finding, and the input as text.

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#define FUZZ_CHECK(condition)                                                                      \
    do {                                                                                           \
        if (!(condition)) {                                                                        \
            std::fprintf(stderr, "%s:%d: invariant broken: %s\n", __FILE__, __LINE__, #condition); \
            std::abort();                                                                          \
        }                                                                                          \
    } while (false)

namespace nuvrel::fuzz {

inline std::string_view text(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

// The input cut at its first NUL: a query or page in front, a second text behind.
inline std::pair<std::string_view, std::string_view> split(std::string_view input) {
    const auto nul = input.find('\0');
    if (nul == std::string_view::npos) return {input, {}};
    return {input.substr(0, nul), input.substr(nul + 1)};
}

}  // namespace nuvrel::fuzz
