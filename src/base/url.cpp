#include "base/url.h"

#include <algorithm>
#include <cctype>
#include <memory>
#include <stdexcept>

#include "base/curl_library.h"

namespace nuvrel::base {

namespace {

struct CurlUrlDeleter {
    void operator()(CURLU* handle) const { detail::curl().urlCleanup(handle); }
};
using CurlUrlHandle = std::unique_ptr<CURLU, CurlUrlDeleter>;

std::optional<std::string> getPart(CURLU* handle, CURLUPart part, unsigned flags = 0) {
    char* value = nullptr;
    if (detail::curl().urlGet(handle, part, &value, flags) != CURLUE_OK || value == nullptr) {
        return std::nullopt;
    }
    std::string out(value);
    detail::curl().free(value);
    return out;
}

std::optional<std::string> nonEmpty(std::optional<std::string> value) {
    if (value && value->empty()) return std::nullopt;
    return value;
}

std::optional<int> portNumber(const std::optional<std::string>& text) {
    if (!text || text->empty()) return std::nullopt;
    const int value = std::stoi(*text);
    return value > 0 ? std::optional<int>(value) : std::nullopt;
}

std::string asciiLower(std::string text) {
    for (char& c : text) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return text;
}

bool isUnreserved(unsigned char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-' ||
           c == '.' || c == '_' || c == '~';
}

constexpr char hexDigits[] = "0123456789ABCDEF";

void appendEscaped(std::string& out, unsigned char c) {
    out += '%';
    out += hexDigits[c >> 4];
    out += hexDigits[c & 0xF];
}

int hexValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

// The five components of a URI reference, split as in RFC 3986 appendix B.
struct Parts {
    std::optional<std::string> scheme;
    std::optional<std::string> authority;
    std::string path;
    std::optional<std::string> query;
    std::optional<std::string> fragment;
};

Parts split(std::string_view text) {
    Parts parts;
    const auto schemeEnd = text.find_first_of(":/?#");
    if (schemeEnd != std::string_view::npos && schemeEnd > 0 && text[schemeEnd] == ':') {
        parts.scheme = std::string(text.substr(0, schemeEnd));
        text.remove_prefix(schemeEnd + 1);
    }
    if (text.starts_with("//")) {
        text.remove_prefix(2);
        const auto end = std::min(text.find_first_of("/?#"), text.size());
        parts.authority = std::string(text.substr(0, end));
        text.remove_prefix(end);
    }
    const auto hash = text.find('#');
    if (hash != std::string_view::npos) {
        parts.fragment = std::string(text.substr(hash + 1));
        text = text.substr(0, hash);
    }
    const auto question = text.find('?');
    if (question != std::string_view::npos) {
        parts.query = std::string(text.substr(question + 1));
        text = text.substr(0, question);
    }
    parts.path = std::string(text);
    return parts;
}

std::string join(const Parts& parts) {
    std::string out;
    if (parts.scheme) out += *parts.scheme + ":";
    if (parts.authority) out += "//" + *parts.authority;
    out += parts.path;
    if (parts.query) out += "?" + *parts.query;
    if (parts.fragment) out += "#" + *parts.fragment;
    return out;
}

// curl refuses a raw space and keeps raw UTF-8; browsers send both percent-encoded, and so do
// we. Only behind the authority: a space in a host stays, and is refused.
std::string encodeLooseBytes(std::string_view text, std::size_t restStart) {
    std::string out(text.substr(0, restStart));
    for (std::size_t i = restStart; i < text.size(); ++i) {
        const auto c = static_cast<unsigned char>(text[i]);
        if (c == ' ' || c >= 0x80) {
            appendEscaped(out, c);
        } else {
            out += static_cast<char>(c);
        }
    }
    return out;
}

struct UrlFields {
    std::string text, scheme, host;
    std::optional<int> port, effectivePort;
    std::string path;
    std::optional<std::string> query, fragment;
};

// One pass of libcurl's parser and our checks; nothing for what is no absolute URL.
std::optional<UrlFields> readOnce(std::string_view text) {
    // libcurl reads the text up to its first NUL, which would make a different URL of it.
    if (text.find('\0') != std::string_view::npos) return std::nullopt;
    const auto separator = text.find("://");
    if (separator == std::string_view::npos || separator == 0) return std::nullopt;
    // A scheme is a letter and then letters, digits, "+", "-" or ".": "file:https:///" would
    // otherwise be read as a file URL whose path does not start with "/".
    const std::string_view scheme = text.substr(0, separator);
    if (std::isalpha(static_cast<unsigned char>(scheme.front())) == 0 ||
        scheme.find_first_not_of("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ"
                                 "0123456789+-.") != std::string_view::npos) {
        return std::nullopt;
    }
    const auto authorityStart = separator + 3;
    const auto restStart = std::min(text.find_first_of("/?#", authorityStart), text.size());
    const std::string encoded = encodeLooseBytes(text, restStart);

    CurlUrlHandle handle(detail::curl().urlNew());
    if (!handle) throw std::bad_alloc();
    if (detail::curl().urlSet(handle.get(), CURLUPART_URL, encoded.c_str(),
                              CURLU_NON_SUPPORT_SCHEME) != CURLUE_OK) {
        return std::nullopt;
    }

    auto rawHost = getPart(handle.get(), CURLUPART_HOST).value_or("");
    // libcurl decodes "%7f" in a host into the byte itself, which no URL text may hold.
    if (std::any_of(rawHost.begin(), rawHost.end(),
                    [](unsigned char c) { return c <= 0x20 || c == 0x7f; }))
        return std::nullopt;
    const std::string lowerHost = asciiLower(rawHost);
    if (lowerHost != rawHost) {
        // Setting the host drops the zone of an IPv6 literal, so it is put back.
        const auto zone = getPart(handle.get(), CURLUPART_ZONEID);
        if (detail::curl().urlSet(handle.get(), CURLUPART_HOST, lowerHost.c_str(), 0) !=
            CURLUE_OK) {
            return std::nullopt;
        }
        if (zone) detail::curl().urlSet(handle.get(), CURLUPART_ZONEID, zone->c_str(), 0);
    }

    // libcurl keeps no path for "file:///" and writes the missing one into the URL as "(nil)".
    if (getPart(handle.get(), CURLUPART_PATH).value_or("").empty() &&
        detail::curl().urlSet(handle.get(), CURLUPART_PATH, "/", 0) != CURLUE_OK) {
        return std::nullopt;
    }

    UrlFields url;
    url.text = getPart(handle.get(), CURLUPART_URL, CURLU_NO_DEFAULT_PORT).value_or("");
    url.scheme = getPart(handle.get(), CURLUPART_SCHEME).value_or("");
    url.host = lowerHost;
    if (url.host.size() >= 2 && url.host.front() == '[' && url.host.back() == ']') {
        url.host = url.host.substr(1, url.host.size() - 2);
    } else if (url.host.size() > 1 && url.host.back() == '.') {
        // "localhost." is localhost: the root dot names the same host.
        url.host.pop_back();
    }
    const auto writtenPort = getPart(handle.get(), CURLUPART_PORT);
    if (writtenPort && portNumber(writtenPort) == std::nullopt) return std::nullopt;  // port 0
    url.port = portNumber(getPart(handle.get(), CURLUPART_PORT, CURLU_NO_DEFAULT_PORT));
    url.effectivePort = portNumber(getPart(handle.get(), CURLUPART_PORT, CURLU_DEFAULT_PORT));
    std::string path = getPart(handle.get(), CURLUPART_PATH).value_or("");
    url.path = path.empty() ? std::string(1, '/') : std::move(path);
    // libcurl reads "/c:" or "/c|" at the start of a file path as a drive letter, and takes
    // or refuses it depending on what follows; no path of ours starts that way, so none parses.
    if (url.scheme == "file" && url.path.size() >= 3 &&
        std::isalpha(static_cast<unsigned char>(url.path[1])) != 0 &&
        (url.path[2] == ':' || url.path[2] == '|'))
        return std::nullopt;
    url.query = nonEmpty(getPart(handle.get(), CURLUPART_QUERY));
    url.fragment = nonEmpty(getPart(handle.get(), CURLUPART_FRAGMENT));
    if (url.text.empty() || url.scheme.empty()) return std::nullopt;
    return url;
}

Url mustParse(const std::string& text) {
    auto url = Url::parse(text);
    // Built from a valid URL and fully encoded parts, so this cannot fail.
    if (!url) throw std::logic_error("URL assembled from valid parts did not parse");
    return *url;
}

}  // namespace

std::optional<Url> Url::parse(std::string_view text) {
    auto fields = readOnce(text);
    // libcurl's normal form is not always its own fixed point: a percent-encoded numeric host
    // is decoded but not yet read as an address. A second pass gives the form that parses to
    // itself, or shows there is none.
    if (fields && fields->text != text) {
        auto again = readOnce(fields->text);
        if (!again) return std::nullopt;
        fields = std::move(again);
    }
    if (!fields) return std::nullopt;
    Url url;
    url.text_ = std::move(fields->text);
    url.scheme_ = std::move(fields->scheme);
    url.host_ = std::move(fields->host);
    url.port_ = fields->port;
    url.effectivePort_ = fields->effectivePort;
    url.path_ = std::move(fields->path);
    url.query_ = std::move(fields->query);
    url.fragment_ = std::move(fields->fragment);
    return url;
}

Url Url::withQueryItems(const std::vector<std::pair<std::string, std::string>>& items) const {
    Parts parts = split(text_);
    parts.query.reset();
    if (!items.empty()) {
        std::string query;
        for (const auto& [name, value] : items) {
            if (!query.empty()) query += '&';
            query += percentEncode(name);
            query += '=';
            query += percentEncode(value);
        }
        parts.query = std::move(query);
    }
    return mustParse(join(parts));
}

Url Url::appendingPath(std::string_view segment) const {
    Parts parts = split(text_);
    if (!parts.path.ends_with('/')) parts.path += '/';
    parts.path += percentEncode(segment);
    return mustParse(join(parts));
}

std::optional<Url> Url::resolve(std::string_view reference) const {
    if (empty()) return std::nullopt;
    const Parts base = split(text_);
    const Parts ref = split(reference);
    Parts target;
    // RFC 3986 section 5.2.2; parse() then removes the dot segments.
    if (ref.scheme) {
        target = ref;
    } else {
        if (ref.authority) {
            target.authority = ref.authority;
            target.path = ref.path;
            target.query = ref.query;
        } else {
            if (ref.path.empty()) {
                target.path = base.path;
                target.query = ref.query ? ref.query : base.query;
            } else {
                if (ref.path.starts_with('/')) {
                    target.path = ref.path;
                } else if (base.authority && base.path.empty()) {
                    target.path = "/" + ref.path;
                } else {
                    const auto slash = base.path.rfind('/');
                    target.path = (slash == std::string::npos ? std::string()
                                                              : base.path.substr(0, slash + 1)) +
                                  ref.path;
                }
                target.query = ref.query;
            }
            target.authority = base.authority;
        }
        target.scheme = base.scheme;
    }
    target.fragment = ref.fragment;
    return parse(join(target));
}

std::string percentEncode(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (const char ch : text) {
        const auto c = static_cast<unsigned char>(ch);
        if (isUnreserved(c)) {
            out += ch;
        } else {
            appendEscaped(out, c);
        }
    }
    return out;
}

std::string percentDecode(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '%' && i + 2 < text.size()) {
            const int high = hexValue(text[i + 1]);
            const int low = hexValue(text[i + 2]);
            if (high >= 0 && low >= 0) {
                out += static_cast<char>(high * 16 + low);
                i += 2;
                continue;
            }
        }
        out += text[i];
    }
    return out;
}

}  // namespace nuvrel::base
