#include "wayfen/duckduckgo_lite_parser.h"

#include <optional>

#include "base/regex.h"
#include "base/text.h"
#include "base/url.h"
#include "wayfen/junk_hosts.h"
#include "wayfen/result_page_text.h"

namespace wayfen::DuckDuckGoLiteParser {

namespace {

using nuvrel::base::Regex;
using nuvrel::base::text::replaceAll;

constexpr unsigned blockOptions = Regex::caseInsensitive | Regex::dotMatchesLineSeparators;

const Regex& anchorPattern() {
    static const Regex pattern(R"(<a\b[^>]*class=['"]result-link['"][^>]*>(.*?)</a>)",
                               blockOptions);
    return pattern;
}

const Regex& hrefPattern() {
    static const Regex pattern(R"(href=['"]([^'"]*)['"])", Regex::caseInsensitive);
    return pattern;
}

const Regex& snippetPattern() {
    static const Regex pattern(R"(class=['"]result-snippet['"][^>]*>(.*?)</td>)", blockOptions);
    return pattern;
}

const Regex& hostPattern() {
    static const Regex pattern(R"(class=['"]link-text['"][^>]*>(.*?)</span>)", blockOptions);
    return pattern;
}

// Every "%" followed by two hex digits, as a strict percent decoding requires.
bool isWellFormedPercentEncoding(std::string_view text) {
    auto isHex = [](char c) {
        return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
    };
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') continue;
        if (i + 2 >= text.size()) return false;
        if (!isHex(text[i + 1]) || !isHex(text[i + 2])) return false;
        i += 2;
    }
    return true;
}

// Only the uddg value of the redirect is read; a plain link gives nothing.
std::optional<std::string> destinationURL(std::string_view href) {
    const std::string decoded = decodeEntities(href);
    const auto question = decoded.find('?');
    if (question == std::string::npos) return std::nullopt;
    std::string_view rest = std::string_view(decoded).substr(question + 1);
    while (!rest.empty()) {
        const auto amp = rest.find('&');
        const std::string_view piece = rest.substr(0, amp);
        if (piece.starts_with("uddg=")) {
            const std::string_view encoded = piece.substr(5);
            if (!isWellFormedPercentEncoding(encoded)) return std::nullopt;
            std::string url = nuvrel::base::percentDecode(encoded);
            if (!nuvrel::base::text::isValidUtf8(url)) return std::nullopt;
            return url;
        }
        if (amp == std::string_view::npos) break;
        rest.remove_prefix(amp + 1);
    }
    return std::nullopt;
}

std::string firstCapture(const Regex& pattern, std::string_view block) {
    const auto match = pattern.firstMatch(block);
    return match ? std::string(match->group(1)) : std::string();
}

}  // namespace

std::vector<Result> parse(std::string_view html, int limit) {
    std::vector<Result> results;
    const auto anchors = anchorPattern().allMatches(html);
    for (std::size_t i = 0; i < anchors.size(); ++i) {
        if (static_cast<int>(results.size()) >= limit) break;
        const auto& anchor = anchors[i];
        const auto href = hrefPattern().firstMatch(anchor.group(0));
        if (!href) continue;
        auto url = destinationURL(href->group(1));
        if (!url) continue;
        std::string title = trimmedPageText(anchor.group(1));
        if (title.empty()) continue;

        // The block ends where the next anchor starts, so a result never takes its neighbour's
        // snippet or host.
        const std::size_t blockEnd = i + 1 < anchors.size() ? anchors[i + 1].begin() : html.size();
        const std::string_view block = html.substr(anchor.end(), blockEnd - anchor.end());
        std::string snippet = collapsedPageText(firstCapture(snippetPattern(), block));
        std::string host = trimmedPageText(firstCapture(hostPattern(), block));
        if (isJunkHost(host)) continue;
        results.push_back({std::move(title), std::move(snippet), std::move(host), std::move(*url)});
    }
    return results;
}

bool isBotChallenge(std::string_view html) {
    using nuvrel::base::text::contains;
    return contains(html, R"(id="challenge-form")") &&
           contains(html, R"(data-testid="anomaly-modal")") && contains(html, "anomaly.js");
}

bool isJunkHost(std::string_view host) {
    const std::string lowered = nuvrel::base::text::lower(host);
    const auto& suffixes = junkHostSuffixes();
    if (suffixes.contains(lowered)) return true;
    for (const auto& suffix : suffixes) {
        if (lowered.size() > suffix.size() && lowered.ends_with(suffix) &&
            lowered[lowered.size() - suffix.size() - 1] == '.') {
            return true;
        }
    }
    return false;
}

std::string decodeEntities(std::string_view text) {
    std::string out(text);
    out = replaceAll(out, "&nbsp;", " ");
    out = replaceAll(out, "&quot;", "\"");
    out = replaceAll(out, "&#x27;", "'");
    out = replaceAll(out, "&#39;", "'");
    out = replaceAll(out, "&lt;", "<");
    out = replaceAll(out, "&gt;", ">");
    out = replaceAll(out, "&apos;", "'");
    // Last, so that "&amp;lt;" becomes "&lt;" and not "<".
    return replaceAll(out, "&amp;", "&");
}

}  // namespace wayfen::DuckDuckGoLiteParser
