#include "wayfen/page_fetcher.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <vector>

#include "base/cancellation.h"
#include "base/task.h"
#include "wayfen/with_deadline.h"

namespace wayfen {
namespace {

namespace base = nuvrel::base;
using namespace std::chrono_literals;

base::Url url(const std::string& text) {
    auto parsed = base::Url::parse(text);
    if (!parsed) throw std::invalid_argument("test URL does not parse: " + text);
    return *parsed;
}

RawPageResponse htmlPage(std::string body, std::string type = "text/html; charset=utf-8",
                         int status = 200) {
    return RawPageResponse{status, std::move(type), std::move(body)};
}

// A sleep that never ends by itself: the deadline passes only when a test says so.
void neverExpires(std::chrono::nanoseconds) {
    base::liveSleep(24h);
}

// A one-shot signal between a test's threads.
class Flag {
public:
    void raise() {
        std::lock_guard lock(mutex_);
        raised_ = true;
        changed_.notify_all();
    }
    bool waitFor(std::chrono::milliseconds limit) {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, limit, [&] { return raised_; });
    }
    bool isRaised() {
        std::lock_guard lock(mutex_);
        return raised_;
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    bool raised_ = false;
};

// Answers from a table by URL text; a URL marked as hanging blocks until its task is
// cancelled. Records what was asked and what was cancelled.
class ScriptedTransport : public PageTransport {
public:
    void answer(const std::string& address, RawPageResponse response) {
        responses_[url(address).text()] = std::move(response);
    }
    void hang(const std::string& address) { hanging_[url(address).text()] = true; }

    RawPageResponse fetchPage(const base::Url& target) const override {
        {
            std::lock_guard lock(mutex_);
            requested_.push_back(target.text());
        }
        if (hanging_.contains(target.text())) {
            hangStarted.raise();
            try {
                base::liveSleep(24h);
            } catch (const base::Cancelled&) {
                hangCancelled.raise();
                throw;
            }
        }
        const auto found = responses_.find(target.text());
        if (found == responses_.end()) throw PageFetchError::badStatus(-1);
        return found->second;
    }

    std::vector<std::string> requested() const {
        std::lock_guard lock(mutex_);
        return requested_;
    }

    mutable Flag hangStarted;
    mutable Flag hangCancelled;

private:
    std::map<std::string, RawPageResponse> responses_;
    std::map<std::string, bool> hanging_;
    mutable std::mutex mutex_;
    mutable std::vector<std::string> requested_;
};

PageFetcher fetcherOver(std::shared_ptr<ScriptedTransport> transport) {
    return PageFetcher{transport, 3.5, 1'572'864, 3, neverExpires};
}

std::vector<std::string> urlsOf(const std::vector<FetchedPage>& pages) {
    std::vector<std::string> out;
    for (const auto& page : pages) out.push_back(page.url.text());
    std::sort(out.begin(), out.end());
    return out;
}

TEST(PageFetcherSafety, RefusesLocalAndPrivateHostsOverEitherScheme) {
    const std::vector<std::string> unsafeHosts = {
        "localhost",  "printer.local",  "127.0.0.1",  "10.1.2.3",  "192.168.0.1", "169.254.169.254",
        "172.16.0.1", "172.31.255.255", "0.0.0.0",    "[::1]",     "[fe80::1]",   "[fd12:3456::1]",
        "[fc00::1]",  "[febf::1]",      "localhost.", "2130706433"};
    for (const auto& host : unsafeHosts) {
        for (const std::string scheme : {"http", "https"}) {
            EXPECT_FALSE(PageFetcher::isSafeToFetch(url(scheme + "://" + host + "/page")))
                << scheme << "://" << host;
        }
    }
    EXPECT_FALSE(PageFetcher::isSafeToFetch(url("ftp://example.com/file")));
    EXPECT_FALSE(PageFetcher::isSafeToFetch(url("file:///etc/passwd")));
    EXPECT_FALSE(PageFetcher::isSafeToFetch(base::Url()));
}

TEST(PageFetcherSafety, AtConnectTimeOnlyPublicAddressesPass) {
    const auto address = [](const std::string& text) {
        base::SocketAddress parsed;
        parsed.bytes.resize(text.find(':') == std::string::npos ? 4 : 16);
        EXPECT_EQ(::inet_pton(parsed.bytes.size() == 4 ? AF_INET : AF_INET6, text.c_str(),
                              parsed.bytes.data()),
                  1)
            << text;
        return parsed;
    };
    for (const std::string inside :
         {"127.0.0.1", "127.9.9.9", "10.0.0.1", "172.16.0.1", "172.31.255.255", "192.168.1.1",
          "169.254.169.254", "100.64.0.1", "100.127.255.255", "0.0.0.0", "::1", "::", "fe80::1",
          "febf::1", "fc00::1", "fd12:3456::1", "::ffff:127.0.0.1", "::ffff:10.1.2.3",
          "64:ff9b::a9fe:a9fe"}) {
        EXPECT_FALSE(PageFetcher::isPublicAddress(address(inside))) << inside;
    }
    for (const std::string outside :
         {"8.8.8.8", "100.63.255.255", "100.128.0.1", "172.32.0.1", "11.0.0.1", "2001:db8::1",
          "fec0::1", "::ffff:93.184.216.34", "64:ff9b::808:808", "::2"}) {
        EXPECT_TRUE(PageFetcher::isPublicAddress(address(outside))) << outside;
    }
    EXPECT_FALSE(PageFetcher::isPublicAddress(base::SocketAddress{}));
}

TEST(PageFetcherSafety, AllowsPublicHostsAndLookalikesOfPrivateOnes) {
    const std::vector<std::string> safe = {
        "https://example.com/",     "http://172.32.0.1/",
        "http://100.64.0.1/",       "http://172.15.0.1/",
        "http://169.253.1.1/",      "http://192.169.0.1/",
        "http://11.0.0.1/",         "http://10.example.com/",
        "http://notlocal/",         "http://local.example/",
        "http://[2001:db8::1]/",    "http://[fec0::1]/",
        "http://[fe7f::1]/",        "HTTPS://EXAMPLE.COM/Page",
        "HtTp://Example.Org:8080/", "http://10.0.0.1.nip.example/",
        "http://8.10.127.192/",     "https://fda.gov/",
        "https://www.fdic.gov/",    "http://fc2.com/",
        "https://febreze.com/"};
    for (const auto& address : safe) {
        EXPECT_TRUE(PageFetcher::isSafeToFetch(url(address))) << address;
    }
    EXPECT_FALSE(PageFetcher::isSafeToFetch(url("HTTP://LOCALHOST/")));
    EXPECT_FALSE(PageFetcher::isSafeToFetch(url("HTTPS://Printer.LOCAL/")));
}

TEST(PageFetcherFetchAll, FetchesOnlyUpToTheLimitAndKeepsTheAskedAddress) {
    auto transport = std::make_shared<ScriptedTransport>();
    for (const std::string name : {"a", "b", "c", "d"}) {
        transport->answer("https://" + name + ".example/", htmlPage("<p>" + name + "</p>"));
    }
    const auto pages =
        fetcherOver(transport).fetchAll({url("https://a.example/"), url("https://b.example/"),
                                         url("https://c.example/"), url("https://d.example/")});

    EXPECT_EQ(urlsOf(pages), (std::vector<std::string>{"https://a.example/", "https://b.example/",
                                                       "https://c.example/"}));
    for (const auto& page : pages) {
        EXPECT_EQ(page.html, "<p>" + page.url.host().substr(0, 1) + "</p>");
    }
    const auto requested = transport->requested();
    EXPECT_EQ(requested.size(), 3u);
    EXPECT_EQ(std::count(requested.begin(), requested.end(), "https://d.example/"), 0);

    PageFetcher none = fetcherOver(transport);
    none.concurrencyLimit = 0;
    EXPECT_TRUE(none.fetchAll({url("https://a.example/")}).empty());
    EXPECT_TRUE(fetcherOver(transport).fetchAll({}).empty());
}

TEST(PageFetcherFetchAll, KeepsOnly2xxHtmlPages) {
    auto transport = std::make_shared<ScriptedTransport>();
    transport->answer("https://ok.example/", htmlPage("ok"));
    transport->answer("https://edge.example/", htmlPage("edge", "text/html", 299));
    transport->answer("https://upper.example/", htmlPage("upper", "TEXT/HTML; Charset=UTF-8"));
    transport->answer("https://missing.example/", htmlPage("gone", "text/html", 404));
    transport->answer("https://redirect.example/", htmlPage("moved", "text/html", 302));
    transport->answer("https://early.example/", htmlPage("early", "text/html", 199));
    transport->answer("https://xhtml.example/", htmlPage("x", "application/xhtml+xml"));
    transport->answer("https://pdf.example/", htmlPage("%PDF", "application/pdf"));
    transport->answer("https://untyped.example/", RawPageResponse{200, std::nullopt, "<p>"});

    PageFetcher fetcher = fetcherOver(transport);
    fetcher.concurrencyLimit = 20;
    const auto pages = fetcher.fetchAll(
        {url("https://ok.example/"), url("https://edge.example/"), url("https://upper.example/"),
         url("https://missing.example/"), url("https://redirect.example/"),
         url("https://early.example/"), url("https://xhtml.example/"), url("https://pdf.example/"),
         url("https://untyped.example/"), url("https://unknown.example/")});

    EXPECT_EQ(urlsOf(pages),
              (std::vector<std::string>{"https://edge.example/", "https://ok.example/",
                                        "https://upper.example/"}));
    EXPECT_EQ(transport->requested().size(), 10u);
}

TEST(PageFetcherFetchOne, DropsABodyLongerThanTheCapWhole) {
    auto transport = std::make_shared<ScriptedTransport>();
    transport->answer("https://exact.example/", htmlPage(std::string(64, 'x')));
    transport->answer("https://over.example/", htmlPage(std::string(65, 'x')));
    PageFetcher fetcher = fetcherOver(transport);
    fetcher.maxBytes = 64;

    const auto exact = fetcher.fetchOne(url("https://exact.example/"));
    ASSERT_TRUE(exact.has_value());
    EXPECT_EQ(exact->html.size(), 64u);
    EXPECT_FALSE(fetcher.fetchOne(url("https://over.example/")).has_value());
}

TEST(PageFetcherFetchOne, DecodesByDeclaredCharsetAndDropsUndecodableBytes) {
    auto transport = std::make_shared<ScriptedTransport>();
    transport->answer("https://kr.example/",
                      htmlPage("\xC7\xD1\xB1\xB9\xBE\xEE", "text/html; charset=\"EUC-KR\""));
    transport->answer("https://latin.example/", htmlPage("caf\xE9", "text/html"));
    const PageFetcher fetcher = fetcherOver(transport);

    const auto korean = fetcher.fetchOne(url("https://kr.example/"));
    ASSERT_TRUE(korean.has_value());
    EXPECT_EQ(korean->html, "한국어");
    EXPECT_FALSE(fetcher.fetchOne(url("https://latin.example/")).has_value());
}

TEST(PageFetcherDeadline, AHangingTransportYieldsNoPageAndIsCancelled) {
    auto transport = std::make_shared<ScriptedTransport>();
    transport->hang("https://slow.example/");
    std::vector<std::chrono::nanoseconds> slept;
    std::mutex sleptMutex;
    PageFetcher fetcher = fetcherOver(transport);
    // The deadline passes the moment the fetch is under way.
    fetcher.sleepFn = [&](std::chrono::nanoseconds duration) {
        {
            std::lock_guard lock(sleptMutex);
            slept.push_back(duration);
        }
        transport->hangStarted.waitFor(10s);
    };

    const auto pages = fetcher.fetchAll({url("https://slow.example/")});

    EXPECT_TRUE(pages.empty());
    EXPECT_EQ(slept, std::vector<std::chrono::nanoseconds>{3'500'000'000ns});
    // fetchAll waits for the cancelled fetch, so the flag is already up.
    EXPECT_TRUE(transport->hangCancelled.isRaised());
}

TEST(PageFetcherDeadline, WithDeadlinePassesOnTheFirstToFinish) {
    EXPECT_EQ(withDeadline(1.0, neverExpires, [] { return 42; }), 42);
    try {
        withDeadline(1.0, neverExpires, []() -> int { throw PageFetchError::badStatus(500); });
        ADD_FAILURE() << "the operation's error was lost";
    } catch (const PageFetchError& error) {
        EXPECT_EQ(error, PageFetchError::badStatus(500));
    }

    std::chrono::nanoseconds slept{-1};
    Flag operationCancelled;
    try {
        withDeadline(
            2.6e-9, [&](std::chrono::nanoseconds duration) { slept = duration; },
            [&] {
                try {
                    base::liveSleep(24h);
                } catch (const base::Cancelled&) {
                    operationCancelled.raise();
                    throw;
                }
                return 0;
            });
        ADD_FAILURE() << "no time-out";
    } catch (const PageFetchError& error) {
        EXPECT_EQ(error, PageFetchError::timedOut());
    }
    EXPECT_EQ(slept, 3ns);
    EXPECT_TRUE(operationCancelled.isRaised());
    EXPECT_EQ(deadlineDuration(-1.0), 0ns);
}

TEST(PageFetcherCancellation, CancellingTheCallerEndsFetchAllWithCancelled) {
    auto transport = std::make_shared<ScriptedTransport>();
    transport->hang("https://slow.example/");
    transport->answer("https://fast.example/", htmlPage("fast"));
    const PageFetcher fetcher = fetcherOver(transport);

    base::Task<std::vector<FetchedPage>> caller([&] {
        return fetcher.fetchAll({url("https://fast.example/"), url("https://slow.example/")});
    });
    ASSERT_TRUE(transport->hangStarted.waitFor(10s));
    caller.cancel();

    EXPECT_THROW(caller.value(), base::Cancelled);
    EXPECT_TRUE(transport->hangCancelled.isRaised());
}

}  // namespace
}  // namespace wayfen
