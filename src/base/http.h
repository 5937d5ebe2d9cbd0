#pragma once
// An HTTP client session on libcurl. Calls block and run on the caller's task; a stop request
// of that task aborts the transfer at once and the call throws Cancelled. Redirects are
// followed by the session itself, asking a policy before each hop. No cookies, cache or
// credentials are ever kept. Proxies from the environment apply, but never to loopback hosts.
//
// Thread-safety: one session may be used by several tasks at once. Each call takes a
// transfer of its own from the session's pool; idle transfers keep their connections open
// for reuse. The session must outlive its calls.

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/url.h"

namespace nuvrel::base {

struct HttpRequest {
    // Any token. "HEAD" sends and reads no body; with any other method a non-empty body is
    // sent, and a POST always sends one, if only an empty one.
    std::string method = "GET";
    Url url;
    // Sent in this order, as given; a header given here replaces the one curl would add.
    // Without a Content-Type of its own, a body is sent with none.
    std::vector<std::pair<std::string, std::string>> headers;
    std::string body;
    // For the whole call, redirects included; zero means no limit.
    std::chrono::milliseconds timeout{60'000};
    // Fails with timedOut when no byte arrives for this long, waiting for the reply
    // included: the limit for long downloads, where a whole-call time-out cannot be known.
    std::optional<std::chrono::milliseconds> idleTimeout;
    // Keep at most this many body bytes; once one byte more arrives, reading stops and the
    // response is marked truncated.
    std::optional<std::size_t> maxBodyBytes;
    // "Range: bytes=first-last" (both inclusive), or "bytes=first-" without a last.
    std::optional<std::pair<std::uint64_t, std::optional<std::uint64_t>>> range;
    // Offers every compression curl can decode and decodes the body. The byte cap then
    // counts decoded bytes, while Content-Length counts what travelled. Off by default, so
    // that body and Content-Length agree.
    bool decompress = false;
};

struct HttpResponse {
    int status = 0;
    // Of the final response, in the order they arrived.
    std::vector<std::pair<std::string, std::string>> headers;
    // Empty when the body went to a chunk handler.
    std::string body;
    // More than maxBodyBytes arrived; body holds the first maxBodyBytes.
    bool truncated = false;
    // Where the final response came from, after any redirects.
    Url url;

    // The first header of that name, compared without regard to case.
    std::optional<std::string> header(std::string_view name) const;
    // Content-Length as a decimal number; nothing when absent or malformed.
    std::optional<std::uint64_t> contentLength() const;
};

class HttpError : public std::exception {
public:
    enum class Kind {
        timedOut,
        cannotConnect,
        cannotResolveHost,
        tooManyRedirects,
        badURL,
        transport,
        // The session's connect policy refused every address the host led to.
        refusedAddress
    };

    HttpError(Kind kind, std::string message);

    Kind kind() const { return kind_; }
    const std::string& message() const { return message_; }
    // "<kind>: <message>", for logs.
    std::string description() const;
    const char* what() const noexcept override { return description_.c_str(); }

    friend bool operator==(const HttpError& a, const HttpError& b) {
        return a.kind_ == b.kind_ && a.message_ == b.message_;
    }

private:
    Kind kind_;
    std::string message_;
    std::string description_;
};

// Asked before each redirect hop, with the URL that answered, the resolved Location and the
// status. Returning false refuses the hop: the 3xx response itself is the result.
using RedirectPolicy = std::function<bool(const Url& from, const Url& to, int status)>;

// Gets the final response's status, headers and URL (body empty) before any body is read.
// Returning false ends the call there.
using HttpHeadHandler = std::function<bool(const HttpResponse& head)>;
// Gets the final body piece by piece as it arrives. Returning false stops reading.
using HttpChunkHandler = std::function<bool(std::string_view chunk)>;

// An address a connection is about to be opened to: 4 bytes for IPv4, 16 for IPv6.
struct SocketAddress {
    std::vector<std::uint8_t> bytes;
    // "127.0.0.1", "::1".
    std::string text() const;
};
// Whether a connection to this address may be opened. Asked for every connection the session
// opens, on every hop, after the host's name is resolved: a check on the URL alone cannot see
// where a name leads.
using ConnectPolicy = std::function<bool(const SocketAddress& address)>;

struct HttpSessionOptions {
    // Empty: follow every redirect up to maxRedirects.
    RedirectPolicy redirectPolicy;
    // Hops followed in one call; one more fails with tooManyRedirects.
    int maxRedirects = 10;
    // Sent as User-Agent unless a request names its own; empty sends none.
    std::string userAgent;
    // A PEM file of certificate authorities for HTTPS, used in place of the built-in bundle
    // (curl's CA folder, where it has one, still counts); empty keeps the defaults. Lets tests
    // speak HTTPS to a local server with a certificate of their own.
    std::string caCertificatesFile;
    // Empty: every address may be connected to.
    ConnectPolicy connectPolicy;
    // Names resolved to fixed addresses, as "host:port:address" (curl's --resolve), before any
    // lookup: lets tests give a name any address.
    std::vector<std::string> resolve;
};

class HttpSession {
public:
    explicit HttpSession(HttpSessionOptions options = {});
    ~HttpSession();
    HttpSession(HttpSession&&) noexcept;
    HttpSession& operator=(HttpSession&&) noexcept;
    HttpSession(const HttpSession&) = delete;
    HttpSession& operator=(const HttpSession&) = delete;

    // Sends the request, following redirects, and returns the final response whatever its
    // status. Throws HttpError when no response could be had (a time-out included),
    // Cancelled when the task is asked to stop (before any connection if it already was), and
    // rethrows what the policy or a handler throws.
    HttpResponse send(const HttpRequest& request);
    // As above, with the body delivered to onChunk instead of kept.
    HttpResponse send(const HttpRequest& request, const HttpChunkHandler& onChunk);
    // As above, with a look at the final head first: a download can refuse a wrong status
    // before a byte of its body is read.
    HttpResponse send(const HttpRequest& request, const HttpHeadHandler& onHead,
                      const HttpChunkHandler& onChunk);

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace nuvrel::base
