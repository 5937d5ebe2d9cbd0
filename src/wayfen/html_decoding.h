#pragma once
// Turns a page's raw bytes into UTF-8 text by its declared character set: the Content-Type's
// charset parameter first, then a <meta> tag near the top, then strict UTF-8. Decoding is
// strict throughout: bytes that do not decode give no text, never a guess or a repair.
//
// All functions are pure and safe to call from any thread.

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace wayfen {

// A character set of the IANA registry that ICU can convert, by its ICU converter name.
struct TextEncoding {
    std::string converterName;

    // The bytes as UTF-8; nothing when any byte sequence is malformed or unmapped.
    std::optional<std::string> decode(std::string_view bytes) const;

    friend bool operator==(const TextEncoding&, const TextEncoding&) = default;
};

std::optional<std::string> decodeHTML(std::string_view data,
                                      const std::optional<std::string>& contentType,
                                      std::size_t metaScanByteLimit);

// The charset parameter of a Content-Type header, without quotes; nothing when absent.
std::optional<std::string> charsetParameter(const std::optional<std::string>& contentType);

// The charset named by the first <meta> tag that names one in the first `limit` bytes.
std::optional<std::string> charsetFromMetaTag(std::string_view data, std::size_t limit);

// Nothing for an empty or unknown name.
std::optional<TextEncoding> characterEncoding(std::string_view ianaName);

}  // namespace wayfen
