#include "wayfen/searxng_transport.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <ostream>
#include <string>
#include <thread>
#include <vector>

#include "base/cancellation.h"
#include "base/task.h"
#include "support/loopback_server.h"
#include "wayfen/duckduckgo_lite_parser.h"

namespace wayfen {

void PrintTo(const SearXNGTransportError& error, std::ostream* out) {
    *out << error.description();
}

namespace {

using namespace std::chrono_literals;
using nuvrel::base::Url;
using nuvrel::test::LoopbackServer;
using Kind = SearXNGTransportError::Kind;

struct Reply {
    int status = 200;
    std::string body;
};

struct SeenRequest {
    std::string instance;
    std::string query;
    std::string format;
    std::string accept;
    std::string userAgent;
};

// Several SearXNG instances on one loopback server, each below a path of its own
// ("/one/search"), with a scripted JSON and HTML reply each.
class Instances {
public:
    Instances()
        : server_([this](httplib::Server& routes) {
              routes.Get(R"(/(\w+)/search)", [this](const httplib::Request& req,
                                                    httplib::Response& res) { answer(req, res); });
          }) {}

    void script(const std::string& name, Reply json, Reply html = {404, ""}) {
        std::lock_guard lock(mutex_);
        json_[name] = std::move(json);
        html_[name] = std::move(html);
    }
    void pauseIn(const std::string& name) {
        std::lock_guard lock(mutex_);
        pausing_ = name;
    }
    Url url(const std::string& name) const { return *Url::parse(server_.url("/" + name + "/")); }
    std::vector<SeenRequest> seen() {
        std::lock_guard lock(mutex_);
        return seen_;
    }
    // "name:json" or "name:html", in arrival order.
    std::vector<std::string> trail() {
        std::vector<std::string> out;
        for (const auto& request : seen()) {
            out.push_back(request.instance +
                          (request.format.empty() ? ":html" : ":" + request.format));
        }
        return out;
    }
    std::atomic<bool> pausedOnce{false};

private:
    void answer(const httplib::Request& req, httplib::Response& res) {
        const std::string name = req.matches[1];
        Reply reply;
        bool pause = false;
        {
            std::lock_guard lock(mutex_);
            seen_.push_back({name, req.get_param_value("q"), req.get_param_value("format"),
                             req.get_header_value("Accept"), req.get_header_value("User-Agent")});
            const auto& table = req.has_param("format") ? json_ : html_;
            const auto found = table.find(name);
            reply = found == table.end() ? Reply{404, ""} : found->second;
            pause = name == pausing_;
        }
        if (pause) {
            pausedOnce = true;
            server_.pause(30s);
        }
        res.status = reply.status;
        res.set_content(reply.body, "text/plain");
    }

    std::mutex mutex_;
    std::map<std::string, Reply> json_;
    std::map<std::string, Reply> html_;
    std::string pausing_;
    std::vector<SeenRequest> seen_;
    LoopbackServer server_;
};

SearXNGTransport transportOver(std::vector<Url> instances) {
    return SearXNGTransport(std::move(instances), std::nullopt,
                            std::make_shared<nuvrel::base::HttpSession>(), 5.0, nullptr, false);
}

std::optional<SearXNGTransportError> errorOf(const SearXNGTransport& transport) {
    try {
        transport.fetchResultsHTML("q");
    } catch (const SearXNGTransportError& error) {
        return error;
    }
    return std::nullopt;
}

const std::string jsonResults = R"({"results":[
    {"url":"https://a.example/x?y=1","title":"  Alpha  ","content":"  first\n"},
    {"url":"https://b.example/","title":"Beta","content":null,"engine":"x"},
    {"url":"https://c.example/","title":"   "},
    {"url":"","title":"No URL"}]})";

const std::string htmlResults = R"(
<article class="result result-default category-general">
  <a href="https://h.example/p?a=1&amp;b=2" class="url_header"></a>
  <h3> <a href="https://h.example/p?a=1&amp;b=2"><span class="highlight">Html</span> &amp; title</a> </h3>
  <p class="content">  A <b>long</b>
     snippet &quot;here&quot;  </p>
</article>
<article class="result"><h3><a>No href</a></h3></article>
<article class="result"><a href="https://n.example/">x</a><h3><a href="https://n.example/"> </a></h3></article>
<ARTICLE CLASS='result'><A HREF='https://bare.example/'>t</A><h3><a href='https://bare.example/'>Bare</a></h3></ARTICLE>)";

TEST(SearXNGTransport, AsksTheJSONAPIAndReserializesUsableItems) {
    Instances servers;
    servers.script("one", {200, jsonResults});

    const std::string page = transportOver({servers.url("one")}).fetchResultsHTML("서울 & weather");

    EXPECT_EQ(page, SearXNGTransport::reserialize({{"Alpha", "https://a.example/x?y=1", "first"},
                                                   {"Beta", "https://b.example/", ""}}));
    const auto seen = servers.seen();
    ASSERT_EQ(seen.size(), 1u);
    EXPECT_EQ(seen[0].query, "서울 & weather");
    EXPECT_EQ(seen[0].format, "json");
    EXPECT_EQ(seen[0].accept, "application/json");
    EXPECT_EQ(seen[0].userAgent,
              "Mozilla/5.0 (Macintosh; Intel Mac OS X 10_15_7) AppleWebKit/605.1.15 (KHTML, like "
              "Gecko) Version/17.4 Safari/605.1.15");
}

TEST(SearXNGTransport, RefusedJSONFallsToTheSameInstancesHTMLPage) {
    Instances servers;
    servers.script("refusing", {403, "forbidden"}, {200, htmlResults});
    servers.script("next", {200, jsonResults});

    const std::string page =
        transportOver({servers.url("refusing"), servers.url("next")}).fetchResultsHTML("q");

    const auto results = DuckDuckGoLiteParser::parse(page, 10);
    ASSERT_EQ(results.size(), 2u);
    EXPECT_EQ(results[0].title, "Html & title");
    EXPECT_EQ(results[0].url, "https://h.example/p?a=1&b=2");
    EXPECT_EQ(results[0].snippet, "A long snippet \"here\"");
    EXPECT_EQ(servers.trail(), (std::vector<std::string>{"refusing:json", "refusing:html"}));
    const auto seen = servers.seen();
    EXPECT_NE(seen[1].accept, "application/json");
    EXPECT_EQ(seen[1].userAgent, seen[0].userAgent);

    // 400 falls to HTML as well; an HTML page with nothing in it walks on.
    Instances others;
    others.script("bad", {400, ""}, {200, "<html>no results</html>"});
    others.script("good", {200, jsonResults});
    transportOver({others.url("bad"), others.url("good")}).fetchResultsHTML("q");
    EXPECT_EQ(others.trail(), (std::vector<std::string>{"bad:json", "bad:html", "good:json"}));
}

TEST(SearXNGTransport, OtherFailuresWalkOnAndTheLastErrorIsThrown) {
    Instances servers;
    servers.script("broken", {500, "oops"}, {200, htmlResults});
    servers.script("malformed", {200, "{not json"});
    servers.script("missingURL", {200, R"({"results":[{"title":"t"}]})"});
    servers.script("noResults", {200, R"({"answers":[]})"});
    servers.script("empty", {200, R"({"results":[{"url":"https://x/","title":" "}]})"});
    servers.script("last", {502, ""});

    auto all = [&](std::vector<std::string> names) {
        std::vector<Url> urls;
        for (const auto& name : names) urls.push_back(servers.url(name));
        return transportOver(urls);
    };
    EXPECT_EQ(errorOf(all({"broken", "malformed", "missingURL", "noResults", "last"})),
              SearXNGTransportError(Kind::badHTTPStatus, 502));
    EXPECT_EQ(servers.trail(),
              (std::vector<std::string>{"broken:json", "malformed:json", "missingURL:json",
                                        "noResults:json", "last:json"}));
    EXPECT_EQ(errorOf(all({"last", "malformed"})), SearXNGTransportError(Kind::undecodableBody));
    EXPECT_EQ(errorOf(all({"missingURL"})), SearXNGTransportError(Kind::undecodableBody));
    EXPECT_EQ(errorOf(all({"empty"})), SearXNGTransportError(Kind::emptyResults));
    EXPECT_EQ(errorOf(transportOver({})), SearXNGTransportError(Kind::noInstancesConfigured));

    servers.script("good", {200, jsonResults});
    EXPECT_NE(all({"malformed", "good"}).fetchResultsHTML("q"), "");
}

TEST(SearXNGTransport, CancellationStopsTheWalkAtOnce) {
    Instances servers;
    servers.script("slow", {200, jsonResults});
    servers.script("next", {200, jsonResults});
    servers.pauseIn("slow");
    const auto transport = std::make_shared<SearXNGTransport>(
        transportOver({servers.url("slow"), servers.url("next")}));

    nuvrel::base::Task<std::string> query([transport] { return transport->fetchResultsHTML("q"); });
    while (!servers.pausedOnce) std::this_thread::sleep_for(1ms);
    query.cancel();

    EXPECT_THROW(query.value(), nuvrel::base::Cancelled);
    EXPECT_EQ(servers.trail(), (std::vector<std::string>{"slow:json"}));
}

TEST(SearXNGTransport, EveryRequestTakesAPacerTurn) {
    Instances servers;
    servers.script("refusing", {403, ""}, {200, htmlResults});
    auto sleeps = std::make_shared<std::vector<std::chrono::nanoseconds>>();
    const auto standing = std::chrono::steady_clock::now();
    auto pacer = std::make_shared<DuckDuckGoRequestPacer>(
        std::chrono::duration<double>(2.0), [standing] { return standing; },
        [sleeps](std::chrono::nanoseconds d) { sleeps->push_back(d); });
    SearXNGTransport transport({servers.url("refusing")}, std::nullopt,
                               std::make_shared<nuvrel::base::HttpSession>(), 5.0, pacer, false);

    transport.fetchResultsHTML("q");

    EXPECT_EQ(*sleeps, (std::vector<std::chrono::nanoseconds>{2s}));
}

TEST(SearXNGTransport, InstancesComeFromTheOverrideOrTheList) {
    const auto session = std::make_shared<nuvrel::base::HttpSession>();
    const std::vector<Url> curated{*Url::parse("https://a.example/"),
                                   *Url::parse("https://b.example/")};
    const Url own = *Url::parse("http://127.0.0.1:1/searx/");
    EXPECT_EQ(SearXNGTransport(curated, own, session, 8, nullptr, true).effectiveInstances(),
              std::vector<Url>{own});
    EXPECT_EQ(
        SearXNGTransport(curated, std::nullopt, session, 8, nullptr, false).effectiveInstances(),
        curated);
}

TEST(SearXNGTransport, ParsesArticlesOfTheHTMLPage) {
    const auto items = SearXNGTransport::parseSearXNGHTML(htmlResults);

    EXPECT_EQ(items, (std::vector<SearXNGResultItem>{
                         {"Html & title", "https://h.example/p?a=1&b=2", "A long snippet \"here\""},
                         {"Bare", "https://bare.example/", ""}}));
    EXPECT_TRUE(SearXNGTransport::parseSearXNGHTML(
                    "<article class='post'><h3><a href='x'>t</a></h3></article>")
                    .empty());
}

}  // namespace
}  // namespace wayfen
