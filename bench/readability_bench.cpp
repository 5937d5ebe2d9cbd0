#include <benchmark/benchmark.h>

#include <string>

#include "wayfen/readability_extractor.h"

namespace {

// One block of a news site: chrome around an article, comments with links, a script in a
// paragraph, entities. About 2.3 KB.
std::string newsBlock(int n) {
    const std::string id = std::to_string(n);
    return "<div class=\"site-header\"><nav class=\"main-nav\"><ul><li><a href=\"/a" + id +
           "\">Home</a></li><li><a href=\"/b\">World</a></li><li><a href=\"/c\">Sport</a></li>"
           "</ul></nav></div>"
           "<div class=\"layout\"><article class=\"story\" id=\"story-" +
           id +
           "\">"
           "<h2>Harbour pier " +
           id +
           " to close for repairs</h2>"
           "<p class=\"byline\">By A. Reporter &middot; 3 March 2026</p>"
           "<div class=\"body\"><p>The harbour authority confirmed on Tuesday that the northern "
           "pier will close for repairs until the end of March, after engineers found corrosion "
           "in three of the steel piles during a routine inspection.</p>"
           "<p>Ferry services will move to the <a href=\"/south\">south quay</a> while the work "
           "goes on, and the caf&eacute; at the pier head stays open &mdash; for now."
           "<script>track('p" +
           id +
           "');</script></p>"
           "<p>Residents said they had warned about the state of the pier for years; the council "
           "said a full survey would be published <em>before the summer</em>.<p>Unclosed "
           "paragraphs like this one are common in older templates and must keep their text."
           "</div></article>"
           "<aside class=\"sidebar related\"><p>Most read: <a href=\"/1\">one story</a> "
           "<a href=\"/2\">another story</a> <a href=\"/3\">a third story</a></p></aside></div>"
           "<section id=\"comments\"><div class=\"comment\"><p>I walk on that pier every morning "
           "with my dog and had no idea it was this bad.</p></div></section>"
           "<div class=\"cookie-banner\"><p>We use cookies to improve your experience on this "
           "site. <a href=\"/privacy\">Learn more</a></p></div>"
           "<footer class=\"site-footer\"><p>&copy; 2026 The Harbour Gazette</p></footer>\n";
}

std::string pageOf(std::size_t bytes) {
    std::string html =
        "<!DOCTYPE html><html><head><meta charset=\"utf-8\"><title>Gazette</title>"
        "<style>p{margin:0}</style></head><body>";
    for (int n = 0; html.size() < bytes; ++n) html += newsBlock(n);
    return html + "</body></html>";
}

// A typical long article: about 100 KB of markup, most of it chrome and scripts.
std::string articleOf100KB() {
    std::string html = "<!DOCTYPE html><html><head><title>Article</title>";
    for (int i = 0; i < 40; ++i) {
        html += "<script>window.__data" + std::to_string(i) + " = {\"k\": \"" +
                std::string(900, 'v') + "\"};</script>";
    }
    html +=
        "</head><body><header class=\"masthead\"><nav><a href=\"/\">Home</a></nav></header>"
        "<main><article class=\"post\">";
    while (html.size() < 95 * 1024) {
        html +=
            "<p>Tidal flats store carbon in thick mud that builds up slowly over the "
            "centuries, and the <a href=\"/x\">new survey</a> shows how fast it is lost when "
            "sea walls cut them off from the tide.</p>";
    }
    html += "</article></main><footer class=\"footer\"><p>Contact us</p></footer></body></html>";
    return html;
}

void BM_ReadabilityExtractGenerated1_5MiB(benchmark::State& state) {
    const std::string html = pageOf(1'572'864);
    for (auto _ : state) benchmark::DoNotOptimize(wayfen::ReadabilityExtractor::extract(html));
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * html.size()));
}
BENCHMARK(BM_ReadabilityExtractGenerated1_5MiB)->Unit(benchmark::kMillisecond);

void BM_ReadabilityExtractArticle100KB(benchmark::State& state) {
    const std::string html = articleOf100KB();
    for (auto _ : state) benchmark::DoNotOptimize(wayfen::ReadabilityExtractor::extract(html));
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * html.size()));
}
BENCHMARK(BM_ReadabilityExtractArticle100KB)->Unit(benchmark::kMillisecond);

}  // namespace
