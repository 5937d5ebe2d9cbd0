#include "base/http.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <algorithm>
#include <atomic>
#include <charconv>
#include <initializer_list>
#include <mutex>
#include <new>
#include <stdexcept>

#include "base/cancellation.h"
#include "base/curl_library.h"

namespace nuvrel::base {

namespace {

bool equalsIgnoringCase(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) {
        const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c; };
        return lower(x) == lower(y);
    });
}

std::string_view trimmed(std::string_view text) {
    const auto isBlank = [](char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; };
    while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
    return text;
}

using HeaderList = std::vector<std::pair<std::string, std::string>>;

std::optional<std::string> findHeader(const HeaderList& headers, std::string_view name) {
    for (const auto& [key, value] : headers) {
        if (equalsIgnoringCase(key, name)) return value;
    }
    return std::nullopt;
}

void dropHeaders(HeaderList& headers, std::initializer_list<std::string_view> names) {
    std::erase_if(headers, [&](const auto& header) {
        return std::any_of(names.begin(), names.end(), [&](std::string_view name) {
            return equalsIgnoringCase(header.first, name);
        });
    });
}

bool isLoopbackHost(const std::string& host) {
    if (host == "localhost" || host.ends_with(".localhost") || host == "::1") return true;
    // Hosts are normalised, so an IPv4 literal is dotted decimal by now.
    return host.starts_with("127.") && host.find_first_not_of("0123456789.") == std::string::npos;
}

bool sameOrigin(const Url& a, const Url& b) {
    return a.scheme() == b.scheme() && a.host() == b.host() &&
           a.effectivePort() == b.effectivePort();
}

HttpError errorFor(CURLcode code, const char* errorText) {
    std::string message = errorText[0] != '\0' ? errorText : detail::curl().easyErrorText(code);
    switch (code) {
        case CURLE_OPERATION_TIMEDOUT:
            return {HttpError::Kind::timedOut, std::move(message)};
        case CURLE_COULDNT_CONNECT:
            return {HttpError::Kind::cannotConnect, std::move(message)};
        case CURLE_COULDNT_RESOLVE_HOST:
            return {HttpError::Kind::cannotResolveHost, std::move(message)};
        case CURLE_URL_MALFORMAT:
        case CURLE_UNSUPPORTED_PROTOCOL:
            return {HttpError::Kind::badURL, std::move(message)};
        default:
            return {HttpError::Kind::transport, std::move(message)};
    }
}

// One multi handle with one easy handle. Kept together and pooled, because the connection
// cache lives in the multi handle: a reused transfer reuses its open connections.
struct Transfer {
    Transfer() : multi(detail::curl().multiInit()), easy(detail::curl().easyInit()) {
        if (multi == nullptr || easy == nullptr) {
            cleanup();
            throw std::bad_alloc();
        }
    }
    ~Transfer() { cleanup(); }
    Transfer(const Transfer&) = delete;
    Transfer& operator=(const Transfer&) = delete;

    void cleanup() {
        if (easy != nullptr) detail::curl().easyCleanup(easy);
        if (multi != nullptr) detail::curl().multiCleanup(multi);
    }

    CURLM* multi;
    CURL* easy;
};

struct SlistDeleter {
    void operator()(curl_slist* list) const { detail::curl().slistFreeAll(list); }
};
using Slist = std::unique_ptr<curl_slist, SlistDeleter>;

// What one hop sends; redirects rewrite it for the next hop.
struct HopRequest {
    std::string method;
    Url url;
    HeaderList headers;
    std::string body;
};

// The state that curl's callbacks fill during one hop.
struct Hop {
    enum class End { complete, redirect, capReached, stoppedByHandler, failed };

    Hop(const HttpSessionOptions& options, const HopRequest& request, int redirectsSoFar,
        std::optional<std::size_t> cap, const HttpHeadHandler* onHead,
        const HttpChunkHandler* onChunk)
        : options(options),
          request(request),
          redirectsSoFar(redirectsSoFar),
          cap(cap),
          onHead(onHead),
          onChunk(onChunk) {}

    const HttpSessionOptions& options;
    const HopRequest& request;
    int redirectsSoFar;
    std::optional<std::size_t> cap;
    const HttpHeadHandler* onHead;
    const HttpChunkHandler* onChunk;

    int status = 0;
    HeaderList headers;
    bool headComplete = false;
    std::string body;
    std::size_t received = 0;
    bool truncated = false;
    End end = End::complete;
    std::optional<Url> redirectTarget;
    std::exception_ptr error;
    // The last address the connect policy refused.
    std::optional<std::string> refusedAddress;
    std::chrono::steady_clock::time_point lastActivity = std::chrono::steady_clock::now();

    HttpResponse head() const { return HttpResponse{status, headers, {}, false, request.url}; }

    // Decides at the end of the final head whether this hop redirects; false aborts the
    // transfer, which is how a followed redirect skips its body.
    bool finishHead() {
        if (status == 301 || status == 302 || status == 303 || status == 307 || status == 308) {
            if (const auto location = findHeader(headers, "Location")) {
                // A Location that does not resolve is no redirect: the 3xx is the answer.
                if (auto target = request.url.resolve(*location)) {
                    const auto& policy = options.redirectPolicy;
                    if (!policy || policy(request.url, *target, status)) {
                        if (redirectsSoFar >= options.maxRedirects) {
                            fail(HttpError(HttpError::Kind::tooManyRedirects,
                                           "more than " + std::to_string(options.maxRedirects) +
                                               " redirects, last to " + target->text()));
                            return false;
                        }
                        redirectTarget = std::move(target);
                        end = End::redirect;
                        return false;
                    }
                }
            }
        }
        if (onHead != nullptr && !(*onHead)(head())) {
            end = End::stoppedByHandler;
            return false;
        }
        return true;
    }

    void fail(const HttpError& error) {
        this->error = std::make_exception_ptr(error);
        end = End::failed;
    }

    void headerLine(std::string_view line) {
        while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) line.remove_suffix(1);
        if (line.starts_with("HTTP/")) {
            // A new status line: an interim 1xx head, or the final one, begins.
            const auto space = line.find(' ');
            status = 0;
            if (space != std::string_view::npos) {
                const auto code = line.substr(space + 1, 3);
                std::from_chars(code.data(), code.data() + code.size(), status);
            }
            headers.clear();
            headComplete = false;
        } else if (headComplete) {
            // Trailers of a chunked body: not part of the head.
        } else if (line.empty()) {
            if (status >= 200 || status < 100) headComplete = true;
        } else if (line.front() == ' ' || line.front() == '\t') {
            if (!headers.empty()) {
                headers.back().second += ' ';
                headers.back().second += trimmed(line);
            }
        } else if (const auto colon = line.find(':'); colon != std::string_view::npos) {
            headers.emplace_back(std::string(trimmed(line.substr(0, colon))),
                                 std::string(trimmed(line.substr(colon + 1))));
        }
    }

    static std::size_t onHeader(char* data, std::size_t size, std::size_t count, void* user) {
        auto& hop = *static_cast<Hop*>(user);
        const std::size_t length = size * count;
        hop.lastActivity = std::chrono::steady_clock::now();
        try {
            const bool wasComplete = hop.headComplete;
            hop.headerLine(std::string_view(data, length));
            if (!wasComplete && hop.headComplete && !hop.finishHead()) return 0;
        } catch (...) {
            hop.error = std::current_exception();
            hop.end = End::failed;
            return 0;
        }
        return length;
    }

    static std::size_t onBody(char* data, std::size_t size, std::size_t count, void* user) {
        auto& hop = *static_cast<Hop*>(user);
        const std::size_t length = size * count;
        hop.lastActivity = std::chrono::steady_clock::now();
        try {
            std::string_view piece(data, length);
            bool overCap = false;
            if (hop.cap && piece.size() > *hop.cap - hop.received) {
                piece = piece.substr(0, *hop.cap - hop.received);
                overCap = true;
            }
            if (!piece.empty()) {
                if (hop.onChunk != nullptr) {
                    if (!(*hop.onChunk)(piece)) {
                        hop.end = End::stoppedByHandler;
                        return 0;
                    }
                } else {
                    hop.body.append(piece);
                }
                hop.received += piece.size();
            }
            if (overCap) {
                hop.truncated = true;
                hop.end = End::capReached;
                return 0;
            }
        } catch (...) {
            hop.error = std::current_exception();
            hop.end = End::failed;
            return 0;
        }
        return length;
    }
};

Slist buildHeaderList(const HopRequest& request, bool sendsBody) {
    Slist list;
    const auto append = [&](const std::string& line) {
        curl_slist* grown = detail::curl().slistAppend(list.get(), line.c_str());
        if (grown == nullptr) throw std::bad_alloc();
        list.release();
        list.reset(grown);
    };
    for (const auto& [name, value] : request.headers) {
        const auto hasLineBreak = [](const std::string& s) {
            return s.find_first_of("\r\n") != std::string::npos;
        };
        if (name.empty() || hasLineBreak(name) || hasLineBreak(value)) {
            throw std::invalid_argument("HTTP header with an empty name or a line break");
        }
        // curl's syntax for a header sent with an empty value.
        append(value.empty() ? name + ";" : name + ": " + value);
    }
    // A bare "Name:" removes a header curl would add by itself.
    if (!findHeader(request.headers, "Expect")) append("Expect:");
    if (sendsBody && !findHeader(request.headers, "Content-Type")) append("Content-Type:");
    return list;
}

// Asks the session's connect policy before curl opens a socket to an address.
curl_socket_t openCheckedSocket(void* data, curlsocktype purpose, curl_sockaddr* address) {
    auto& hop = *static_cast<Hop*>(data);
    if (purpose == CURLSOCKTYPE_IPCXN) {
        SocketAddress target;
        if (address->family == AF_INET) {
            const auto& in = reinterpret_cast<const sockaddr_in&>(address->addr);
            const auto* bytes = reinterpret_cast<const std::uint8_t*>(&in.sin_addr);
            target.bytes.assign(bytes, bytes + 4);
        } else if (address->family == AF_INET6) {
            const auto& in6 = reinterpret_cast<const sockaddr_in6&>(address->addr);
            const auto* bytes = reinterpret_cast<const std::uint8_t*>(&in6.sin6_addr);
            target.bytes.assign(bytes, bytes + 16);
        }
        if (!hop.options.connectPolicy(target)) {
            hop.refusedAddress = target.text();
            return CURL_SOCKET_BAD;
        }
    }
    return ::socket(address->family, address->socktype, address->protocol);
}

}  // namespace

std::string SocketAddress::text() const {
    char buffer[INET6_ADDRSTRLEN] = {};
    if (bytes.size() == 4) {
        ::inet_ntop(AF_INET, bytes.data(), buffer, sizeof buffer);
    } else if (bytes.size() == 16) {
        ::inet_ntop(AF_INET6, bytes.data(), buffer, sizeof buffer);
    }
    return buffer;
}

HttpError::HttpError(Kind kind, std::string message) : kind_(kind), message_(std::move(message)) {
    static constexpr const char* names[] = {
        "timed out", "cannot connect",    "cannot resolve host", "too many redirects",
        "bad URL",   "transport failure", "refused address"};
    description_ = std::string(names[static_cast<int>(kind_)]) + ": " + message_;
}

std::string HttpError::description() const {
    return description_;
}

std::optional<std::string> HttpResponse::header(std::string_view name) const {
    return findHeader(headers, name);
}

std::optional<std::uint64_t> HttpResponse::contentLength() const {
    const auto value = header("Content-Length");
    if (!value || value->empty()) return std::nullopt;
    std::uint64_t length = 0;
    const auto [end, error] = std::from_chars(value->data(), value->data() + value->size(), length);
    if (error != std::errc() || end != value->data() + value->size()) return std::nullopt;
    return length;
}

struct HttpSession::Impl {
    explicit Impl(HttpSessionOptions options) : options(std::move(options)) {
        for (const std::string& entry : this->options.resolve) {
            if (curl_slist* list = detail::curl().slistAppend(resolveList.get(), entry.c_str())) {
                static_cast<void>(resolveList.release());
                resolveList.reset(list);
            }
        }
    }

    HttpSessionOptions options;
    // The session's fixed name-to-address entries, handed to every transfer.
    Slist resolveList;
    std::mutex mutex;
    std::vector<std::unique_ptr<Transfer>> idle;

    static constexpr std::size_t maxIdle = 4;

    std::unique_ptr<Transfer> acquire() {
        {
            std::lock_guard lock(mutex);
            if (!idle.empty()) {
                auto transfer = std::move(idle.back());
                idle.pop_back();
                return transfer;
            }
        }
        return std::make_unique<Transfer>();
    }

    void release(std::unique_ptr<Transfer> transfer) {
        // Reset now, so that no idle handle points at buffers of a finished call.
        detail::curl().easyReset(transfer->easy);
        std::lock_guard lock(mutex);
        if (idle.size() < maxIdle) idle.push_back(std::move(transfer));
    }

    HttpResponse send(const HttpRequest& request, const HttpHeadHandler* onHead,
                      const HttpChunkHandler* onChunk);
    void configure(CURL* easy, const HopRequest& hop, const HttpRequest& request, Hop& state,
                   curl_slist* headers, std::chrono::milliseconds timeout, char* errorBuffer) const;
};

namespace {

template <class T>
void setOption(CURL* easy, CURLoption option, T value) {
    if (detail::curl().easySetOption(easy, option, value) != CURLE_OK) {
        throw HttpError(HttpError::Kind::transport, "libcurl refused an option");
    }
}

// Runs one transfer to its end; throws Cancelled, at once, when the task is asked to stop,
// and timedOut when nothing arrived for `idleLimit`. curl's own low-speed check averages
// over several seconds, so a stall behind a burst of data would go unseen for too long.
CURLcode perform(Transfer& transfer, const std::atomic<bool>& cancelled, const Hop& hop,
                 std::optional<std::chrono::milliseconds> idleLimit) {
    if (detail::curl().multiAdd(transfer.multi, transfer.easy) != CURLM_OK) {
        throw HttpError(HttpError::Kind::transport, "could not start the transfer");
    }
    struct Detach {
        Transfer& transfer;
        ~Detach() { detail::curl().multiRemove(transfer.multi, transfer.easy); }
    } detach{transfer};

    while (true) {
        if (cancelled.load()) throw Cancelled();
        int running = 0;
        CURLMcode code = detail::curl().multiPerform(transfer.multi, &running);
        if (code != CURLM_OK)
            throw HttpError(HttpError::Kind::transport, detail::curl().multiErrorText(code));
        if (running == 0) break;
        std::chrono::milliseconds wait{1000};
        if (idleLimit) {
            const auto idle = std::chrono::duration_cast<std::chrono::milliseconds>(
                std::chrono::steady_clock::now() - hop.lastActivity);
            if (idle >= *idleLimit) {
                throw HttpError(HttpError::Kind::timedOut,
                                "no data for " + std::to_string(idle.count()) + " ms");
            }
            wait = std::min(wait, *idleLimit - idle + std::chrono::milliseconds(1));
        }
        // Wakes for socket activity, curl's own timers, or curl_multi_wakeup from a cancel.
        code = detail::curl().multiPoll(transfer.multi, nullptr, 0, static_cast<int>(wait.count()),
                                        nullptr);
        if (code != CURLM_OK)
            throw HttpError(HttpError::Kind::transport, detail::curl().multiErrorText(code));
    }
    int queued = 0;
    while (CURLMsg* message = detail::curl().multiInfoRead(transfer.multi, &queued)) {
        if (message->msg == CURLMSG_DONE) return message->data.result;
    }
    throw HttpError(HttpError::Kind::transport, "transfer ended without a result");
}

}  // namespace

void HttpSession::Impl::configure(CURL* easy, const HopRequest& hop, const HttpRequest& request,
                                  Hop& state, curl_slist* headers,
                                  std::chrono::milliseconds timeout, char* errorBuffer) const {
    setOption(easy, CURLOPT_URL, hop.url.text().c_str());
    setOption(easy, CURLOPT_PROTOCOLS_STR, "http,https");
    setOption(easy, CURLOPT_NOSIGNAL, 1L);
    setOption(easy, CURLOPT_ERRORBUFFER, errorBuffer);
    setOption(easy, CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
    setOption(easy, CURLOPT_HEADERFUNCTION, &Hop::onHeader);
    setOption(easy, CURLOPT_HEADERDATA, &state);
    setOption(easy, CURLOPT_WRITEFUNCTION, &Hop::onBody);
    setOption(easy, CURLOPT_WRITEDATA, &state);
    setOption(easy, CURLOPT_HTTPHEADER, headers);
    if (timeout.count() > 0)
        setOption(easy, CURLOPT_TIMEOUT_MS, static_cast<long>(timeout.count()));
    // An empty proxy string overrides http_proxy and friends from the environment.
    if (isLoopbackHost(hop.url.host())) setOption(easy, CURLOPT_PROXY, "");
    if (!options.userAgent.empty() && !findHeader(hop.headers, "User-Agent")) {
        setOption(easy, CURLOPT_USERAGENT, options.userAgent.c_str());
    }
    if (!options.caCertificatesFile.empty()) {
        setOption(easy, CURLOPT_CAINFO, options.caCertificatesFile.c_str());
    }

    const bool isHead = hop.method == "HEAD";
    if (isHead) {
        setOption(easy, CURLOPT_NOBODY, 1L);
    } else if (hop.body.empty() && hop.method != "POST") {
        setOption(easy, CURLOPT_HTTPGET, 1L);
        if (hop.method != "GET") setOption(easy, CURLOPT_CUSTOMREQUEST, hop.method.c_str());
    } else {
        setOption(easy, CURLOPT_POSTFIELDS, hop.body.data());
        setOption(easy, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(hop.body.size()));
        if (hop.method != "POST") setOption(easy, CURLOPT_CUSTOMREQUEST, hop.method.c_str());
    }
    if (request.range) {
        std::string range = std::to_string(request.range->first) + "-";
        if (request.range->second) range += std::to_string(*request.range->second);
        setOption(easy, CURLOPT_RANGE, range.c_str());  // curl copies strings it is given
    }
    if (request.decompress) setOption(easy, CURLOPT_ACCEPT_ENCODING, "");
    if (options.connectPolicy) {
        setOption(easy, CURLOPT_OPENSOCKETFUNCTION, &openCheckedSocket);
        setOption(easy, CURLOPT_OPENSOCKETDATA, &state);
    }
    if (resolveList) setOption(easy, CURLOPT_RESOLVE, resolveList.get());
}

HttpResponse HttpSession::Impl::send(const HttpRequest& request, const HttpHeadHandler* onHead,
                                     const HttpChunkHandler* onChunk) {
    try {
        detail::curl();
    } catch (const SharedLibraryError& error) {
        // A broken installation fails this request like a network that is down, not the program.
        throw HttpError(HttpError::Kind::transport, error.description());
    }
    checkCancellation();

    using Clock = std::chrono::steady_clock;
    // A zero time-out sets no deadline.
    const bool hasDeadline = request.timeout.count() > 0;
    const Clock::time_point deadline = Clock::now() + request.timeout;

    struct Lease {
        Impl& session;
        std::unique_ptr<Transfer> transfer;
        ~Lease() { session.release(std::move(transfer)); }
    } lease{*this, acquire()};
    Transfer& transfer = *lease.transfer;

    std::atomic<bool> cancelled{false};
    // Declared after the lease: it is removed, and any running callback finished, before the
    // transfer goes back to the pool.
    CancelCallback onCancel([&cancelled, multi = transfer.multi] {
        cancelled.store(true);
        detail::curl().multiWakeup(multi);
    });

    HopRequest hop{request.method, request.url, request.headers, request.body};
    for (int redirects = 0;; ++redirects) {
        if (cancelled.load()) throw Cancelled();
        const auto& scheme = hop.url.scheme();
        if (hop.url.empty() || (scheme != "http" && scheme != "https")) {
            throw HttpError(HttpError::Kind::badURL,
                            hop.url.empty() ? "empty URL" : "not an HTTP URL: " + hop.url.text());
        }
        std::chrono::milliseconds timeout{0};
        if (hasDeadline) {
            timeout =
                std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
            if (timeout.count() <= 0) {
                throw HttpError(HttpError::Kind::timedOut, "time-out before " + hop.url.text());
            }
        }

        Hop state(options, hop, redirects, request.maxBodyBytes, onHead, onChunk);
        const bool sendsBody = hop.method != "HEAD" && (!hop.body.empty() || hop.method == "POST");
        const Slist headers = buildHeaderList(hop, sendsBody);
        char errorBuffer[CURL_ERROR_SIZE] = {};
        configure(transfer.easy, hop, request, state, headers.get(), timeout, errorBuffer);

        const CURLcode result = perform(transfer, cancelled, state, request.idleTimeout);
        if (result != CURLE_OK && state.refusedAddress) {
            detail::curl().easyReset(transfer.easy);
            throw HttpError(HttpError::Kind::refusedAddress,
                            hop.url.host() + " leads to " + *state.refusedAddress);
        }
        // Clear the handle's pointers to this hop's buffers before they go; the next hop
        // starts from a clean handle too.
        detail::curl().easyReset(transfer.easy);

        switch (state.end) {
            case Hop::End::failed:
                std::rethrow_exception(state.error);
            case Hop::End::redirect:
                break;
            case Hop::End::capReached:
            case Hop::End::stoppedByHandler:
            case Hop::End::complete:
                if (state.end == Hop::End::complete && result != CURLE_OK) {
                    throw errorFor(result, errorBuffer);
                }
                return HttpResponse{state.status, std::move(state.headers), std::move(state.body),
                                    state.truncated, hop.url};
        }

        // Browsers turn a redirected POST into a GET for 301 and 302, and anything but HEAD
        // into a GET for 303; 307 and 308 repeat the request as it was.
        const int status = state.status;
        if ((status == 303 && hop.method != "HEAD") ||
            ((status == 301 || status == 302) && hop.method == "POST")) {
            hop.method = "GET";
            hop.body.clear();
            dropHeaders(hop.headers, {"Content-Type", "Content-Length"});
        }
        // Credentials meant for one origin never travel to another.
        if (!sameOrigin(hop.url, *state.redirectTarget)) {
            dropHeaders(hop.headers, {"Authorization", "Proxy-Authorization", "Cookie"});
        }
        hop.url = std::move(*state.redirectTarget);
    }
}

HttpSession::HttpSession(HttpSessionOptions options)
    : impl_(std::make_unique<Impl>(std::move(options))) {}

HttpSession::~HttpSession() = default;
HttpSession::HttpSession(HttpSession&&) noexcept = default;
HttpSession& HttpSession::operator=(HttpSession&&) noexcept = default;

HttpResponse HttpSession::send(const HttpRequest& request) {
    return impl_->send(request, nullptr, nullptr);
}

HttpResponse HttpSession::send(const HttpRequest& request, const HttpChunkHandler& onChunk) {
    return impl_->send(request, nullptr, &onChunk);
}

HttpResponse HttpSession::send(const HttpRequest& request, const HttpHeadHandler& onHead,
                               const HttpChunkHandler& onChunk) {
    return impl_->send(request, &onHead, &onChunk);
}

}  // namespace nuvrel::base
