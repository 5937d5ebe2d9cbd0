#pragma once
// Assembles what the program needs to answer a sentence: the HTTP session, the local model
// backends and the function that makes a pipeline for each run from the current settings.

#include <memory>
#include <string>
#include <vector>

#include "app/app_state.h"
#include "app/keychain_storing.h"
#include "app/network_activity_log.h"
#include "app/settings_storing.h"
#include "app/web_retrieval.h"
#include "base/diagnostics.h"
#include "base/http.h"
#include "llm/llama_server_manager.h"
#include "llm/llm_backend.h"

namespace nuvrel::app {

// The local model servers of this process: the router's server on 127.0.0.1:8765, started on
// the first call that needs it and stopped when this value goes (or by stopServers()). The
// summary role shares the router's server.
struct LLMRuntime {
    std::shared_ptr<llm::LlamaServerManager> manager;
    bool isInterimModel = false;
    std::shared_ptr<llm::LLMBackend> routingBackend;
    std::shared_ptr<llm::LLMBackend> summaryBackend;

    // The model is the saved "modelFile" when it is installed, else the resolution's fallback.
    // `routerPort` moves the router's server off its fixed port, for tests only.
    static LLMRuntime make(const SettingsStoring& userDefaults,
                           std::shared_ptr<base::HttpSession> session,
                           const base::Diagnostics& diagnostics,
                           int routerPort = llm::routerServerPort);
    void stopServers() const;
};

struct LaunchSettings {
    std::shared_ptr<SettingsStoring> userDefaults;
    std::shared_ptr<LLMRuntime> runtime;
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
    WebServiceEndpoints webEndpoints = WebServiceEndpoints::publicServices();
};

// A pipeline per run, so that a changed setting needs no restart. The web chain and the page
// fetcher are built once, here.
AppState::MakePipeline makePipelineFactory(const LaunchSettings& settings);

}  // namespace nuvrel::app

namespace nuvrel::app {

// The user's preferred languages as language tags ("ko-KR"), from LANGUAGE, LC_ALL,
// LC_MESSAGES and LANG, most preferred first. "C" and "POSIX" say nothing.
std::vector<std::string> preferredLanguagesFromEnvironment(const char* const* environment);

}  // namespace nuvrel::app
