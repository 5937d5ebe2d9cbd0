#include "llm/llama_server_backend.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <limits>
#include <utility>

#include "base/text.h"
#include "llm/llama_request_builder.h"
#include "llm/llama_response_parser.h"
#include "llm/llm_error.h"

namespace nuvrel::llm {

namespace {

base::Url loopbackServer(int port) {
    return *base::Url::parse("http://127.0.0.1:" + std::to_string(port));
}

std::chrono::milliseconds timeoutOf(double seconds) {
    if (!(seconds > 0)) return std::chrono::milliseconds(0);
    // A positive interval never rounds down to zero, which would mean no limit at all.
    return std::chrono::milliseconds(std::max<long long>(1, std::llround(seconds * 1000.0)));
}

}  // namespace

LlamaServerBackend::LlamaServerBackend(base::Url baseURL,
                                       std::shared_ptr<base::HttpSession> session,
                                       std::string model, double temperature, int maxTokens,
                                       double requestTimeoutInterval, int coldStart503Retries,
                                       std::uint64_t coldStart503BackoffNanoseconds,
                                       base::SleepFn sleepFn)
    : baseURL(std::move(baseURL)),
      session(std::move(session)),
      model(std::move(model)),
      temperature(temperature),
      maxTokens(maxTokens),
      requestTimeoutInterval(requestTimeoutInterval),
      maxColdStart503Retries(coldStart503Retries),
      coldStart503BackoffNanoseconds(coldStart503BackoffNanoseconds),
      sleepFn(std::move(sleepFn)) {}

LlamaServerBackend LlamaServerBackend::routing(std::shared_ptr<base::HttpSession> session) {
    return {loopbackServer(8765), std::move(session), std::string(modelName), 0.0, 256, 30.0, 2,
            300'000'000};
}

LlamaServerBackend LlamaServerBackend::summarySharingRouter(
    std::shared_ptr<base::HttpSession> session) {
    return {loopbackServer(8765), std::move(session), std::string(modelName), 0.1, 768, 30.0, 2,
            300'000'000};
}

LlamaServerBackend LlamaServerBackend::summaryDedicated(
    std::shared_ptr<base::HttpSession> session) {
    return {loopbackServer(8766), std::move(session), std::string(modelName), 0.1, 768, 60.0, 5,
            500'000'000};
}

std::string LlamaServerBackend::complete(std::string_view system, std::string_view user,
                                         std::string_view jsonSchema) {
    return complete(system, user, jsonSchema, std::nullopt);
}

std::string LlamaServerBackend::complete(std::string_view system, std::string_view user,
                                         std::string_view jsonSchema,
                                         std::optional<std::string_view> assistantPrefix) {
    const base::Url url =
        baseURL.appendingPath("v1").appendingPath("chat").appendingPath("completions");
    base::HttpRequest request;
    request.method = "POST";
    request.url = url;
    request.headers = {{"Content-Type", "application/json"}};
    request.timeout = timeoutOf(requestTimeoutInterval);
    request.body = LlamaRequestBuilder::body(system, user, jsonSchema, model, temperature,
                                             maxTokens, schemaName, assistantPrefix);
    const std::string bytes = performWithColdStart503Retry(request, url, 0);
    return LlamaResponseParser::extractContent(bytes);
}

std::string LlamaServerBackend::performWithColdStart503Retry(const base::HttpRequest& request,
                                                             const base::Url& url,
                                                             int attempt) const {
    const auto backoff = std::chrono::nanoseconds(static_cast<std::int64_t>(std::min<std::uint64_t>(
        coldStart503BackoffNanoseconds, std::numeric_limits<std::int64_t>::max())));
    while (true) {
        // Transport failures and cancellation leave here as they are: only a 503 is retried.
        base::HttpResponse response = session->send(request);
        const int status = response.status;
        if (status < 100) throw LLMError::invalidResponse("non-HTTP response from " + url.text());
        if (status == 503 && attempt < maxColdStart503Retries) {
            sleepFn(backoff);
            ++attempt;
            continue;
        }
        if (status >= 200 && status <= 299) return std::move(response.body);
        if (status == 400 && base::text::isValidUtf8(response.body) &&
            response.body.find("exceed_context_size_error") != std::string::npos) {
            throw LLMError::inputTooLong();
        }
        throw LLMError::http(status);
    }
}

}  // namespace nuvrel::llm
