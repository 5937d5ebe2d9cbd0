#pragma once
// The backend the rest of the program is handed: makes sure its server runs, then asks it,
// and writes the call's latency as a "[nuvrel-latency] " line.

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "base/diagnostics.h"
#include "llm/llama_server_backend.h"
#include "llm/llm_backend.h"
#include "llm/server_ensuring.h"

namespace nuvrel::llm {

class ManagedLlamaBackend : public LLMBackend {
public:
    ManagedLlamaBackend(std::shared_ptr<ServerEnsuring> manager, LlamaServerBackend backend,
                        std::string label, base::Diagnostics diagnostics = {});

    // A failure of ensureRunning passes through unlogged. Once the server runs, every call,
    // cancelled ones included, writes "<label> call ok in 12.3ms" or
    // "<label> call error(<error>) in 12.3ms"; the error is then rethrown unchanged.
    std::string complete(std::string_view system, std::string_view user,
                         std::string_view jsonSchema) override;
    std::string complete(std::string_view system, std::string_view user,
                         std::string_view jsonSchema,
                         std::optional<std::string_view> assistantPrefix) override;

    // The last path component of the manager's model path.
    std::optional<std::string> modelFileName() const override;

    std::shared_ptr<ServerEnsuring> manager;
    LlamaServerBackend backend;
    // "routing" or "summary".
    std::string label;
    base::Diagnostics diagnostics;
};

}  // namespace nuvrel::llm
