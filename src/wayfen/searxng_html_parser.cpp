// Reading a SearXNG HTML results page, for instances that refuse their JSON API.

#include "base/regex.h"
#include "wayfen/duckduckgo_lite_parser.h"
#include "wayfen/result_page_text.h"
#include "wayfen/searxng_transport.h"

namespace wayfen {

namespace {

using nuvrel::base::Regex;

constexpr unsigned blockOptions = Regex::caseInsensitive | Regex::dotMatchesLineSeparators;

std::string firstCapture(const Regex& pattern, std::string_view text) {
    const auto match = pattern.firstMatch(text);
    return match ? std::string(match->group(1)) : std::string();
}

}  // namespace

std::vector<SearXNGResultItem> SearXNGTransport::parseSearXNGHTML(std::string_view html) {
    static const Regex articlePattern(
        R"(<article\b[^>]*class=['"]result[^'"]*['"][^>]*>(.*?)</article>)", blockOptions);
    static const Regex h3TitlePattern(R"(<h3>\s*<a\b[^>]*>(.*?)</a>\s*</h3>)", blockOptions);
    static const Regex firstHrefPattern(R"(<a\b[^>]*\shref=['"]([^'"]*)['"])",
                                        Regex::caseInsensitive);
    static const Regex contentPattern(R"(<p\b[^>]*class=['"]content['"][^>]*>(.*?)</p>)",
                                      blockOptions);

    std::vector<SearXNGResultItem> items;
    for (const auto& article : articlePattern.allMatches(html)) {
        const std::string_view body = article.group(1);
        const std::string href = firstCapture(firstHrefPattern, body);
        if (href.empty()) continue;
        std::string title = trimmedPageText(firstCapture(h3TitlePattern, body));
        if (title.empty()) continue;
        items.push_back({std::move(title), DuckDuckGoLiteParser::decodeEntities(href),
                         collapsedPageText(firstCapture(contentPattern, body))});
    }
    return items;
}

}  // namespace wayfen
