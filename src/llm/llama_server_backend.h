#pragma once
// The chat client of one llama-server on the loopback address: one schema-constrained chat
// completion per call. A 503 (the server still loading its model) is retried a few times with
// a flat pause; a 400 about the context size becomes inputTooLong.
//
// An immutable value: calls may run at once from several tasks. Each call blocks on the
// caller's task; cancelling that task aborts the request or the pause with base::Cancelled.

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "base/http.h"
#include "base/sleep.h"
#include "base/url.h"
#include "llm/llm_backend.h"

namespace nuvrel::llm {

class LlamaServerBackend : public LLMBackend {
public:
    // Sent as `model`. The server serves the one model it loaded and ignores the field, so
    // nothing may be read into it; modelFileName of the managed wrapper tells the truth.
    static constexpr std::string_view modelName = "qwen2.5-1.5b-instruct";
    static constexpr std::string_view schemaName = "NuvrelResponse";

    LlamaServerBackend(base::Url baseURL, std::shared_ptr<base::HttpSession> session,
                       std::string model, double temperature, int maxTokens,
                       double requestTimeoutInterval, int coldStart503Retries,
                       std::uint64_t coldStart503BackoffNanoseconds,
                       base::SleepFn sleepFn = base::liveSleep);

    // Port 8765, temperature 0.0, 256 tokens, 30 s, 2 retries 300 ms apart.
    static LlamaServerBackend routing(std::shared_ptr<base::HttpSession> session);
    // Port 8765, temperature 0.1, 768 tokens, 30 s, 2 retries 300 ms apart.
    static LlamaServerBackend summarySharingRouter(std::shared_ptr<base::HttpSession> session);
    // Port 8766, temperature 0.1, 768 tokens, 60 s, 5 retries 500 ms apart.
    static LlamaServerBackend summaryDedicated(std::shared_ptr<base::HttpSession> session);

    // POST <baseURL>/v1/chat/completions. Throws LLMError, base::HttpError (transport
    // failures, the time-out included, never retried) or base::Cancelled.
    std::string complete(std::string_view system, std::string_view user,
                         std::string_view jsonSchema) override;
    std::string complete(std::string_view system, std::string_view user,
                         std::string_view jsonSchema,
                         std::optional<std::string_view> assistantPrefix) override;

    // Sends `request` until it gets an answer other than a 503, or the retries that remain
    // after `attempt` are spent; gives the body of a 2xx reply. `url` names the server in
    // errors.
    std::string performWithColdStart503Retry(const base::HttpRequest& request, const base::Url& url,
                                             int attempt) const;

    base::Url baseURL;
    // The program's one shared session; never null.
    std::shared_ptr<base::HttpSession> session;
    std::string model;
    double temperature;
    int maxTokens;
    // Seconds, for the whole call: a reply that waits in the server's queue counts.
    double requestTimeoutInterval;
    int maxColdStart503Retries;
    std::uint64_t coldStart503BackoffNanoseconds;
    // The pause between 503 retries.
    base::SleepFn sleepFn;
};

}  // namespace nuvrel::llm
