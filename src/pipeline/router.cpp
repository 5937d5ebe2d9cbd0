#include "pipeline/router.h"

#include <nlohmann/json.hpp>
#include <variant>

#include "base/cancellation.h"
#include "llm/json_object_extraction.h"
#include "llm/llm_error.h"
#include "pipeline/router_prompt.h"

namespace nuvrel::pipeline {
namespace {

struct TransportFailure {};
struct InvalidOutput {};
struct InputTooLong {};
using Attempt = std::variant<core::RoutedIntent, TransportFailure, InvalidOutput, InputTooLong>;

Attempt attempt(llm::LLMBackend* backend, std::string_view system, std::string_view query,
                std::string_view schema) {
    if (backend == nullptr) return TransportFailure{};
    std::string reply;
    try {
        reply = backend->complete(system, query, schema);
    } catch (const llm::LLMError& error) {
        if (error.kind() == llm::LLMError::Kind::inputTooLong) return InputTooLong{};
        return TransportFailure{};
    } catch (...) {
        // A cancelled call included: the caller looks at the task's state before retrying,
        // so the cancellation still ends the route as `cancelled`.
        return TransportFailure{};
    }

    const auto object = Router::extractJSONObject(reply);
    if (!object) return InvalidOutput{};
    try {
        return core::RoutedIntent::decode(*object);
    } catch (const nlohmann::json::exception&) {
        // DecodingError is one of these; so is anything nlohmann itself rejects.
        return InvalidOutput{};
    }
}

Router::Detailed failed(core::RouteFailure failure) {
    return {core::RoutedIntent{}, failure};
}

}  // namespace

Router::Detailed Router::routeDetailed(std::string_view query) const {
    if (base::isCancelled()) return failed(core::RouteFailure::cancelled);
    const PromptFlags flags =
        promptFlags ? promptFlags() : PromptFlags{interimPrompt, appLaunchIntent};
    const std::string& system = RouterPrompt::system(flags.interimPrompt, flags.appLaunchIntent);
    const std::string_view schema = RouterPrompt::schema(flags.appLaunchIntent);

    Attempt first = attempt(backend.get(), system, query, schema);
    if (auto* routed = std::get_if<core::RoutedIntent>(&first)) return {std::move(*routed), {}};
    if (std::holds_alternative<InputTooLong>(first))
        return failed(core::RouteFailure::inputTooLong);
    if (base::isCancelled()) return failed(core::RouteFailure::cancelled);

    Attempt second = attempt(backend.get(), system, query, schema);
    if (auto* routed = std::get_if<core::RoutedIntent>(&second)) return {std::move(*routed), {}};
    if (std::holds_alternative<InputTooLong>(second))
        return failed(core::RouteFailure::inputTooLong);
    if (base::isCancelled()) return failed(core::RouteFailure::cancelled);
    return failed(std::holds_alternative<TransportFailure>(second)
                      ? core::RouteFailure::llmUnavailable
                      : core::RouteFailure::invalidOutput);
}

core::RoutedIntent Router::route(std::string_view query) const {
    return routeDetailed(query).routed;
}

std::optional<std::string> Router::extractJSONObject(std::string_view text) {
    return llm::extractJSONObject(text);
}

}  // namespace nuvrel::pipeline
