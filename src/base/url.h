#pragma once
// Absolute URLs, parsed and normalised by libcurl's URL API. A Url is a plain value: it holds
// its normalised text and the parts read from it, and every operation gives a new Url.
//
// Normalisation: scheme and host lower-case; dot segments removed; an empty path becomes "/";
// a port equal to the scheme's default is dropped; spaces and non-ASCII bytes behind the
// host are percent-encoded; an empty query or fragment is dropped. Numeric IPv4 hosts in any
// notation curl accepts ("127.1", "0x7f.0.0.1", "2130706433") become dotted decimal, so that
// a check on host() sees the address that will be connected to.

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace nuvrel::base {

class Url {
public:
    // The empty URL: no address at all. HttpSession refuses it.
    Url() = default;

    // An absolute URL ("scheme://host/..." or "file:///..."); nothing for a relative
    // reference, a missing or malformed host, a bad port, control characters, or garbage.
    // The first call opens libcurl; throws SharedLibraryError where it is not installed.
    static std::optional<Url> parse(std::string_view text);

    bool empty() const { return text_.empty(); }

    const std::string& scheme() const { return scheme_; }
    // Lower-case, without the root's trailing dot; an IPv6 literal without its brackets and
    // without a zone ("::1", "fe80::1"): the form an address check wants. Empty for
    // "file:///...". The text keeps the host as written, but lower-case.
    const std::string& host() const { return host_; }
    // The port written in the URL, unless it is the scheme's default.
    std::optional<int> port() const { return port_; }
    // The port a connection goes to: the written one, else the scheme's default; nothing
    // for a scheme without a default port.
    std::optional<int> effectivePort() const { return effectivePort_; }
    // As encoded; "/" for an empty path.
    const std::string& path() const { return path_; }
    // As encoded, without the "?"; nothing when absent or empty.
    const std::optional<std::string>& query() const { return query_; }
    // As encoded, without the "#"; nothing when absent or empty.
    const std::optional<std::string>& fragment() const { return fragment_; }
    // The whole normalised URL.
    const std::string& text() const { return text_; }

    // This URL with its query replaced by the items, in order, as "name=value" joined by
    // "&". Names and values are percent-encoded except for RFC 3986 unreserved characters,
    // so a space is "%20" and "+", "&", "=" are encoded too. No items: no query.
    Url withQueryItems(const std::vector<std::pair<std::string, std::string>>& items) const;

    // This URL with one path segment added behind exactly one "/". The segment is
    // percent-encoded whole, "/" included: it is one segment, never several.
    Url appendingPath(std::string_view segment) const;

    // The target of a reference, resolved against this URL as base by RFC 3986 section 5
    // (relative paths, "../", "//host/...", "?query", "#fragment", or an absolute URL), as a
    // redirect's Location needs. Nothing when the result is not a valid absolute URL.
    std::optional<Url> resolve(std::string_view reference) const;

    friend bool operator==(const Url& a, const Url& b) { return a.text_ == b.text_; }

private:
    std::string text_;
    std::string scheme_;
    std::string host_;
    std::optional<int> port_;
    std::optional<int> effectivePort_;
    std::string path_;
    std::optional<std::string> query_;
    std::optional<std::string> fragment_;
};

// Percent-encodes every byte except the RFC 3986 unreserved characters (letters, digits,
// "-", ".", "_", "~"), with upper-case hex digits.
std::string percentEncode(std::string_view text);

// Decodes every "%" followed by two hex digits; anything else, a malformed "%" included, is
// kept as it is. "+" stays "+": this is not form decoding.
std::string percentDecode(std::string_view text);

}  // namespace nuvrel::base
