#include "wayfen/html_decoding.h"

#include <unicode/ucnv.h>
#include <unicode/unistr.h>

#include <memory>
#include <vector>

#include "base/regex.h"
#include "base/text.h"

namespace wayfen {

namespace text = nuvrel::base::text;
using nuvrel::base::Regex;

namespace {

struct ConverterCloser {
    void operator()(UConverter* converter) const { ucnv_close(converter); }
};
using Converter = std::unique_ptr<UConverter, ConverterCloser>;

// A converter that stops at the first illegal, unmapped or truncated sequence.
Converter strictConverter(const std::string& name) {
    UErrorCode status = U_ZERO_ERROR;
    Converter converter(ucnv_open(name.c_str(), &status));
    if (U_FAILURE(status)) return nullptr;
    ucnv_setToUCallBack(converter.get(), UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr,
                        &status);
    if (U_FAILURE(status)) return nullptr;
    return converter;
}

std::optional<std::u16string> toUtf16(UConverter* converter, std::string_view bytes) {
    const auto length = static_cast<int32_t>(bytes.size());
    // Most encodings give at most one UTF-16 unit per byte; the retry covers the rest.
    std::u16string units(bytes.size() + 16, u'\0');
    for (int attempt = 0; attempt < 2; ++attempt) {
        UErrorCode status = U_ZERO_ERROR;
        const int32_t written =
            ucnv_toUChars(converter, reinterpret_cast<UChar*>(units.data()),
                          static_cast<int32_t>(units.size()), bytes.data(), length, &status);
        if (status == U_BUFFER_OVERFLOW_ERROR) {
            units.assign(static_cast<std::size_t>(written) + 1, u'\0');
            continue;
        }
        if (U_FAILURE(status)) return std::nullopt;
        units.resize(static_cast<std::size_t>(written));
        return units;
    }
    return std::nullopt;
}

std::string_view trimQuotes(std::string_view value) {
    const auto first = value.find_first_not_of("\"'");
    if (first == std::string_view::npos) return {};
    const auto last = value.find_last_not_of("\"'");
    return value.substr(first, last - first + 1);
}

bool startsWithCharsetKey(std::string_view piece) {
    static constexpr std::string_view key = "charset=";
    if (piece.size() < key.size()) return false;
    // No non-ASCII letter lower-cases into this key, so its first eight bytes decide.
    return text::lower(piece.substr(0, key.size())) == key;
}

std::optional<std::string> decodeNamed(const std::optional<std::string>& name,
                                       std::string_view data) {
    if (!name) return std::nullopt;
    const auto encoding = characterEncoding(*name);
    if (!encoding) return std::nullopt;
    return encoding->decode(data);
}

}  // namespace

std::optional<std::string> TextEncoding::decode(std::string_view bytes) const {
    if (bytes.empty()) return std::string();
    // Most pages are UTF-8: validate in place instead of a round trip through UTF-16.
    if (converterName == "UTF-8") {
        if (!text::isValidUtf8(bytes)) return std::nullopt;
        return std::string(bytes);
    }
    const Converter converter = strictConverter(converterName);
    if (!converter) return std::nullopt;
    const auto units = toUtf16(converter.get(), bytes);
    if (!units) return std::nullopt;
    std::string out;
    icu::UnicodeString(false, reinterpret_cast<const UChar*>(units->data()),
                       static_cast<int32_t>(units->size()))
        .toUTF8String(out);
    return out;
}

std::optional<std::string> decodeHTML(std::string_view data,
                                      const std::optional<std::string>& contentType,
                                      std::size_t metaScanByteLimit) {
    if (auto decoded = decodeNamed(charsetParameter(contentType), data)) return decoded;
    if (auto decoded = decodeNamed(charsetFromMetaTag(data, metaScanByteLimit), data)) {
        return decoded;
    }
    // No single-byte fallback: a page that is not UTF-8 and says nothing is no page.
    return TextEncoding{"UTF-8"}.decode(data);
}

std::optional<std::string> charsetParameter(const std::optional<std::string>& contentType) {
    if (!contentType) return std::nullopt;
    std::vector<std::string_view> pieces;
    std::string_view rest = *contentType;
    while (!rest.empty()) {
        const auto semicolon = rest.find(';');
        const auto piece = rest.substr(0, semicolon);
        if (!piece.empty()) pieces.push_back(piece);
        if (semicolon == std::string_view::npos) break;
        rest.remove_prefix(semicolon + 1);
    }
    for (std::size_t i = 1; i < pieces.size(); ++i) {
        const auto piece = text::trimView(pieces[i]);
        if (!startsWithCharsetKey(piece)) continue;
        const auto value = text::trimView(trimQuotes(piece.substr(8)));
        if (!value.empty()) return std::string(value);
    }
    return std::nullopt;
}

std::optional<std::string> charsetFromMetaTag(std::string_view data, std::size_t limit) {
    static const Regex metaTag(R"(<meta\b[^>]*>)", Regex::caseInsensitive);
    static const Regex charset(R"(charset\s*=\s*["']?([A-Za-z0-9_\-]+))", Regex::caseInsensitive);
    const std::string head = text::validUtf8(data.substr(0, limit));
    for (const auto& tag : metaTag.allMatches(head)) {
        if (const auto match = charset.firstMatch(tag.group())) {
            if (!match->group(1).empty()) return std::string(match->group(1));
        }
    }
    return std::nullopt;
}

std::optional<TextEncoding> characterEncoding(std::string_view ianaName) {
    const std::string name = text::trim(ianaName);
    if (name.empty()) return std::nullopt;
    UErrorCode status = U_ZERO_ERROR;
    // Only names ICU files under the IANA registry; an alias may be ambiguous across
    // standards, which is a warning, not a failure.
    const char* canonical = ucnv_getCanonicalName(name.c_str(), "IANA", &status);
    if (U_FAILURE(status) || canonical == nullptr || *canonical == '\0') return std::nullopt;
    return TextEncoding{canonical};
}

}  // namespace wayfen
