#include "llm/managed_llama_backend.h"

#include <charconv>
#include <chrono>
#include <exception>
#include <utility>

#include "base/diagnostics.h"
#include "base/http.h"
#include "llm/llm_error.h"

namespace nuvrel::llm {

namespace {

std::string printed(const std::exception_ptr& error) {
    try {
        std::rethrow_exception(error);
    } catch (const LLMError& e) {
        return e.description();
    } catch (const base::HttpError& e) {
        return e.description();
    } catch (const std::exception& e) {
        return e.what();
    } catch (...) {
        // Only describes: a cancellation is a std::exception and was named above.
        return "unknown error";
    }
}

void logLatency(const base::Diagnostics& diagnostics, const std::string& label,
                const std::string& outcome, std::chrono::steady_clock::time_point start) {
    const auto elapsed = std::chrono::steady_clock::now() - start;
    const double milliseconds =
        static_cast<double>(std::chrono::nanoseconds(elapsed).count()) / 1'000'000.0;
    // to_chars rather than printf: the decimal point must not follow the process's locale.
    char number[32];
    const auto end =
        std::to_chars(number, number + sizeof number, milliseconds, std::chars_format::fixed, 1)
            .ptr;
    diagnostics.latency(label + " call " + outcome + " in " + std::string(number, end) + "ms");
}

}  // namespace

ManagedLlamaBackend::ManagedLlamaBackend(std::shared_ptr<ServerEnsuring> manager,
                                         LlamaServerBackend backend, std::string label,
                                         base::Diagnostics diagnostics)
    : manager(std::move(manager)),
      backend(std::move(backend)),
      label(std::move(label)),
      diagnostics(std::move(diagnostics)) {}

std::string ManagedLlamaBackend::complete(std::string_view system, std::string_view user,
                                          std::string_view jsonSchema) {
    return complete(system, user, jsonSchema, std::nullopt);
}

std::string ManagedLlamaBackend::complete(std::string_view system, std::string_view user,
                                          std::string_view jsonSchema,
                                          std::optional<std::string_view> assistantPrefix) {
    manager->ensureRunning();
    const auto start = std::chrono::steady_clock::now();
    try {
        std::string content = backend.complete(system, user, jsonSchema, assistantPrefix);
        logLatency(diagnostics, label, "ok", start);
        return content;
    } catch (...) {
        // A cancelled call is logged too ("error(cancelled)"): how long it ran before the
        // stop is worth seeing. Cancelled itself still leaves unchanged.
        logLatency(diagnostics, label, "error(" + printed(std::current_exception()) + ")", start);
        throw;
    }
}

std::optional<std::string> ManagedLlamaBackend::modelFileName() const {
    std::filesystem::path path = manager->modelPath();
    if (!path.has_filename()) path = path.parent_path();  // ".../model.gguf/" names the same file
    return path.filename().string();
}

}  // namespace nuvrel::llm
