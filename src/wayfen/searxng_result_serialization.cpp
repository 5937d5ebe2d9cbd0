// Writing any provider's results in the one wire shape that DuckDuckGoLiteParser reads.

#include <unicode/uchar.h>

#include <cstdio>
#include <optional>

#include "base/text.h"
#include "base/url.h"
#include "wayfen/searxng_transport.h"

namespace wayfen {

namespace {

using nuvrel::base::text::replaceAll;

constexpr std::string_view redirectPrefix = "https://duckduckgo.com/l/?uddg=";
constexpr std::string_view redirectSuffix = "&amp;rut=0";

// Letters and digits of every script stay as they are, so that a destination in Korean or
// Japanese reads back unchanged; everything else is percent-encoded byte by byte.
bool isInUddgValueAllowedCharacters(char32_t c) {
    return u_isalnum(static_cast<UChar32>(c)) || c == U'-' || c == U'.' || c == U'_' || c == U'~';
}

// A URL that is no UTF-8 text is escaped byte by byte, so that none of its bytes ("'", "&")
// ends up raw in the attribute: the reader then drops it whole, as it drops any value that
// decodes to no text.
std::string uddgValue(std::string_view url) {
    if (!nuvrel::base::text::isValidUtf8(url)) return nuvrel::base::percentEncode(url);
    std::string out;
    std::size_t pos = 0;
    while (pos < url.size()) {
        const std::size_t start = pos;
        const char32_t c = nuvrel::base::text::nextCodePoint(url, pos);
        if (isInUddgValueAllowedCharacters(c)) {
            out.append(url.substr(start, pos - start));
            continue;
        }
        for (std::size_t i = start; i < pos; ++i) {
            char escaped[4];
            std::snprintf(escaped, sizeof escaped, "%%%02X", static_cast<unsigned char>(url[i]));
            out += escaped;
        }
    }
    return out;
}

std::string escaped(std::string_view text) {
    std::string out = replaceAll(text, "&", "&amp;");
    out = replaceAll(out, "<", "&lt;");
    return replaceAll(out, ">", "&gt;");
}

// The host, with the path behind it unless that is empty or "/"; query and fragment left out.
std::string hostFromURLString(const std::string& text) {
    const auto url = nuvrel::base::Url::parse(text);
    if (!url || url->host().empty()) return {};
    const std::string& path = url->path();
    if (path.empty() || path == "/") return url->host();
    // Shown to the reader, so decoded where the decoding is text.
    std::string decoded = nuvrel::base::percentDecode(path);
    return url->host() + (nuvrel::base::text::isValidUtf8(decoded) ? decoded : path);
}

std::string block(const SearXNGResultItem& item) {
    const std::string destination = uddgValue(item.url);
    std::string out = "<a rel=\"nofollow\" href='";
    out.append(redirectPrefix).append(destination).append(redirectSuffix);
    out += "' class='result-link'>" + escaped(item.title) + "</a>\n";
    out += "<td class='result-snippet'>" + escaped(item.snippet) + "</td>\n";
    out += "<span class='link-text'>" + escaped(hostFromURLString(item.url)) + "</span>";
    return out;
}

}  // namespace

std::string SearXNGTransport::reserialize(const std::vector<SearXNGResultItem>& items) {
    std::string out;
    for (const auto& item : items) {
        if (!out.empty()) out += '\n';
        out += block(item);
    }
    return out;
}

}  // namespace wayfen
