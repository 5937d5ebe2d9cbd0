#pragma once
// Assembles what the program needs to answer a sentence: the HTTP session, the local model
// backends and the function that makes a pipeline for each run from the current settings.

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/app_state.h"
#include "app/keychain_storing.h"
#include "app/network_activity_log.h"
#include "app/settings_storing.h"
#include "app/web_retrieval.h"
#include "base/diagnostics.h"
#include "base/http.h"
#include "core/current_location_providing.h"
#include "llm/embedding_backend.h"
#include "llm/llama_server_manager.h"
#include "llm/llm_backend.h"

namespace nuvrel::app {

// The local model servers of this process: the router's server on 127.0.0.1:8765, a summary
// server on 8766 when a summary model of its own is installed (else the router's serves),
// an embedding server on 8767 when that model is installed. Each starts on the first call
// that needs it and stops when this value goes (or by stopServers()).
struct LLMRuntime {
    std::shared_ptr<llm::LlamaServerManager> manager;
    bool isInterimModel = false;
    std::shared_ptr<llm::LLMBackend> routingBackend;
    std::shared_ptr<llm::LLMBackend> summaryBackend;
    std::shared_ptr<llm::LlamaServerManager> summaryManager;
    std::shared_ptr<llm::EmbeddingBackend> embeddingBackend;
    std::shared_ptr<llm::LlamaServerManager> embeddingManager;
    // In memory-saving mode, the dedicated summary server stops after this idle time.
    std::optional<double> summaryIdleStopInterval;
    static constexpr double memorySavingIdleStopSeconds = 120;

    // The model is the saved "modelFile" when it is installed, else the resolution's fallback.
    // `routerPort` moves the router's server off its fixed port, for tests only.
    static LLMRuntime make(const SettingsStoring& userDefaults,
                           std::shared_ptr<base::HttpSession> session,
                           const base::Diagnostics& diagnostics,
                           int routerPort = llm::routerServerPort);
    // The same for a given model file, as a model switch needs it.
    static LLMRuntime forModel(const SettingsStoring& userDefaults,
                               const std::filesystem::path& modelPath, bool isInterim,
                               std::shared_ptr<base::HttpSession> session,
                               const base::Diagnostics& diagnostics,
                               int routerPort = llm::routerServerPort);
    // The router, then the summary server, then the embedding server.
    void stopServers() const;
};

class LazyLLMRuntime;

struct LaunchSettings {
    std::shared_ptr<SettingsStoring> userDefaults;
    // Made on the first sentence that needs a model.
    std::shared_ptr<LazyLLMRuntime> runtime;
    // --no-network: off for this process whatever the saved setting says.
    bool networkForbidden = false;
    // The process's one record of outbound requests; without one, web requests are noted in
    // memory only.
    std::shared_ptr<NetworkActivityLog> networkLog{};
    // The key store, for the Firecrawl key; may be null.
    std::shared_ptr<KeychainStoring> keychain{};
    // The shared session of the web transports; without one, the factory makes its own.
    std::shared_ptr<base::HttpSession> session{};
    // NUVREL_DEBUG_WEB_BAD_HOST is set.
    bool debugWebBadHost = false;
    // NUVREL_DEBUG_QUERY is set: every routed intent is logged with its slots.
    bool debugSlotsLogging = false;
    base::Diagnostics diagnostics{};
    std::optional<WebServiceEndpoints> webEndpoints = std::nullopt;
    // The position for weather here; none answers that it cannot be had.
    std::shared_ptr<core::CurrentLocationProviding> locationProvider{};
};

// The launch settings of a program on this desktop: a runtime whose model files are looked for,
// and whose servers are made, on the first sentence that needs them; the network log of the
// user's data folder; the Secret Service for keys; GeoClue for the position; and the debug hooks
// NUVREL_DEBUG_WEB_BAD_HOST and NUVREL_DEBUG_QUERY of the environment.
LaunchSettings liveLaunchSettings(std::shared_ptr<SettingsStoring> userDefaults,
                                  std::shared_ptr<base::HttpSession> session, int routerPort,
                                  bool networkForbidden, const base::Diagnostics& diagnostics);

// A pipeline per run, so that a changed setting needs no restart. The web chain and the page
// fetcher are built once, here.
AppState::MakePipeline makePipelineFactory(const LaunchSettings& settings);

}  // namespace nuvrel::app

namespace nuvrel::app {

// The user's preferred languages as language tags ("ko-KR"), from LANGUAGE, LC_ALL,
// LC_MESSAGES and LANG, most preferred first. "C" and "POSIX" say nothing.
std::vector<std::string> preferredLanguagesFromEnvironment(const char* const* environment);

}  // namespace nuvrel::app
