// One whole web answer with every outside party instant: a results page of eight, three ready
// pages of realistic size and a model that answers at once. What is left is the capability's
// own work: parsing, ranking, extraction, chunk selection, the prompt and the reply.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "answers/web_search_capability.h"
#include "llm/llm_backend.h"
#include "wayfen/searxng_transport.h"

namespace {

using namespace nuvrel;

class InstantSummarizer : public llm::LLMBackend {
public:
    using LLMBackend::complete;
    std::string complete(std::string_view, std::string_view, std::string_view) override {
        return " France won the 2018 World Cup, beating Croatia 4-2 in the final.\"}";
    }
};

class ReadyResults : public wayfen::WebSearchTransport {
public:
    ReadyResults() {
        std::vector<wayfen::SearXNGResultItem> items;
        for (int i = 0; i < 8; ++i) {
            items.push_back(
                {.title = "2018 FIFA World Cup final, part " + std::to_string(i),
                 .url = "https://site" + std::to_string(i) + ".example/world-cup-2018",
                 .snippet = "The 2018 World Cup final was played in Moscow; France won the "
                            "cup against Croatia. Coverage number " +
                            std::to_string(i) + "."});
        }
        page_ = wayfen::SearXNGTransport::reserialize(items);
    }
    std::string fetchResultsHTML(const std::string&) const override { return page_; }

private:
    std::string page_;
};

// A news article of about 60 KB: navigation, forty paragraphs, a footer.
std::string articlePage(int site) {
    std::string html = "<html><head><title>World Cup</title></head><body><nav><ul>";
    for (int i = 0; i < 40; ++i)
        html += "<li><a href='/s" + std::to_string(i) + "'>Section</a></li>";
    html += "</ul></nav><article class='content'>";
    for (int i = 0; i < 40; ++i) {
        html += "<p>Paragraph " + std::to_string(i) + " of site " + std::to_string(site) +
                ": the 2018 World Cup final in Moscow saw France beat Croatia four goals to two, "
                "with goals from Mandzukic (own goal), Griezmann, Pogba and Mbappe for France and "
                "Perisic and Mandzukic for Croatia, before a crowd of 78,011 at the Luzhniki.</p>";
    }
    html += "</article><footer>";
    for (int i = 0; i < 20; ++i) html += "<p class='footer'>Copyright and links</p>";
    return html + "</footer></body></html>";
}

class ReadyPages : public wayfen::PageTransport {
public:
    wayfen::RawPageResponse fetchPage(const base::Url& url) const override {
        const int site = url.host().size() > 4 ? url.host()[4] - '0' : 0;
        return {.statusCode = 200,
                .contentType = "text/html; charset=utf-8",
                .data = articlePage(site)};
    }
};

void BM_WebAnswerExecute(benchmark::State& state) {
    answers::WebSearchCapability capability;
    capability.transport = std::make_shared<ReadyResults>();
    capability.summarizer = std::make_shared<InstantSummarizer>();
    capability.pageFetcher = wayfen::PageFetcher{.transport = std::make_shared<ReadyPages>(),
                                                 .timeout = 3.5,
                                                 .maxBytes = 1'572'864,
                                                 .concurrencyLimit = 3,
                                                 .sleepFn = base::liveSleep};
    const core::ActionPlan plan =
        core::WebQuery{.query = "who won the 2018 world cup", .wantAnswer = true};
    // The latency line of every run would drown the report: standard error goes nowhere
    // while the runs last.
    const int savedStderr = ::dup(STDERR_FILENO);
    const int nowhere = ::open("/dev/null", O_WRONLY);
    ::dup2(nowhere, STDERR_FILENO);
    for (auto _ : state) {
        const core::CapabilityResult result = capability.execute(plan);
        benchmark::DoNotOptimize(&result);
    }
    ::dup2(savedStderr, STDERR_FILENO);
    ::close(savedStderr);
    ::close(nowhere);
}
BENCHMARK(BM_WebAnswerExecute)->Unit(benchmark::kMillisecond);

}  // namespace
