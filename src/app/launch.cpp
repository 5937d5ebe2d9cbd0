#include "app/launch.h"

#include <optional>
#include <string_view>

#include "answers/web_search_capability.h"
#include "app/settings_keys.h"
#include "llm/llama_server_backend.h"
#include "llm/managed_llama_backend.h"
#include "llm/model_resolution.h"
#include "pipeline/pipeline.h"
#include "pipeline/router_prompt.h"
#include "platform/live_llm.h"

namespace nuvrel::app {

LLMRuntime LLMRuntime::make(const SettingsStoring& userDefaults,
                            std::shared_ptr<base::HttpSession> session,
                            const base::Diagnostics& diagnostics, int routerPort) {
    const auto resolved =
        llm::resolveModelPath(userDefaults.string(settingsKey::modelFile), llm::modelsDirectory(),
                              llm::liveFileExists, diagnostics);
    const std::string fileName = resolved.path.filename().string();
    auto manager = std::make_shared<llm::LlamaServerManager>(
        resolved.path, routerPort, session, llm::LlamaServerMode::chat,
        llm::LlamaServerManager::routerContextSize(fileName),
        platform::liveLlamaServerEnvironment(diagnostics));
    LLMRuntime runtime;
    runtime.manager = manager;
    runtime.isInterimModel = resolved.isInterim;
    // Both roles talk to the router's server, wherever it listens.
    const auto onRouterPort = [routerPort](llm::LlamaServerBackend backend) {
        backend.baseURL = *base::Url::parse("http://127.0.0.1:" + std::to_string(routerPort));
        return backend;
    };
    runtime.routingBackend = std::make_shared<llm::ManagedLlamaBackend>(
        manager, onRouterPort(llm::LlamaServerBackend::routing(session)), "routing", diagnostics);
    runtime.summaryBackend = std::make_shared<llm::ManagedLlamaBackend>(
        manager, onRouterPort(llm::LlamaServerBackend::summarySharingRouter(session)), "summary",
        diagnostics);
    return runtime;
}

void LLMRuntime::stopServers() const {
    if (manager) manager->stop();
}

namespace {

WebRetrieval makeWebRetrieval(const LaunchSettings& settings) {
    return WebRetrieval::make(WebRetrievalSettings{
        .session = settings.session ? settings.session : std::make_shared<base::HttpSession>(),
        .log = settings.networkLog ? settings.networkLog : std::make_shared<NetworkActivityLog>(),
        .userDefaults = settings.userDefaults,
        .keychain = settings.keychain,
        .debugBadHost = settings.debugWebBadHost,
        .endpoints = settings.webEndpoints});
}

}  // namespace

AppState::MakePipeline makePipelineFactory(const LaunchSettings& settings) {
    return [runtime = settings.runtime, defaults = settings.userDefaults,
            forbidden = settings.networkForbidden, diagnostics = settings.diagnostics,
            debugSlots = settings.debugSlotsLogging,
            web = makeWebRetrieval(settings)](core::AppLanguage language) {
        auto pipeline = std::make_shared<pipeline::Pipeline>();
        pipeline->router.backend = runtime->routingBackend;
        pipeline->router.interimPrompt = runtime->isInterimModel;
        pipeline->router.appLaunchIntent = pipeline::RouterPrompt::supportsAppLaunch(
            runtime->manager->modelPath().filename().string());
        pipeline->language = language;
        pipeline->summarizer = runtime->summaryBackend;
        pipeline->diagnostics = diagnostics;
        pipeline->debugSlotsLogging = debugSlots;
        auto webSearch = std::make_shared<answers::WebSearchCapability>();
        webSearch->language = language;
        webSearch->transport = web.transport;
        webSearch->summarizer = runtime->summaryBackend;
        webSearch->pageFetcher = web.pageFetcher;
        webSearch->diagnostics = diagnostics;
        pipeline->registry = core::CapabilityRegistry({webSearch});
        // Only an explicit "0" turns the network features off.
        pipeline->networkFeaturesEnabled =
            !forbidden &&
            defaults->string(settingsKey::networkFeaturesEnabled).value_or("1") != "0";
        return std::shared_ptr<const pipeline::PipelineRunning>(std::move(pipeline));
    };
}

namespace {

std::optional<std::string> variable(const char* const* environment, std::string_view name) {
    for (auto entry = environment; entry && *entry; ++entry) {
        std::string_view text(*entry);
        if (text.size() > name.size() && text.substr(0, name.size()) == name &&
            text[name.size()] == '=') {
            return std::string(text.substr(name.size() + 1));
        }
    }
    return std::nullopt;
}

// "ko_KR.UTF-8@euro" → "ko-KR"; nothing for "C", "POSIX" and empty values.
std::optional<std::string> languageTag(std::string_view locale) {
    locale = locale.substr(0, locale.find_first_of(".@"));
    if (locale.empty() || locale == "C" || locale == "POSIX") return std::nullopt;
    std::string tag(locale);
    for (char& c : tag) {
        if (c == '_') c = '-';
    }
    return tag;
}

}  // namespace

std::vector<std::string> preferredLanguagesFromEnvironment(const char* const* environment) {
    std::vector<std::string> tags;
    if (auto list = variable(environment, "LANGUAGE")) {
        std::string_view rest(*list);
        while (!rest.empty()) {
            const auto colon = rest.find(':');
            if (auto tag = languageTag(rest.substr(0, colon))) tags.push_back(*tag);
            rest = colon == std::string_view::npos ? std::string_view() : rest.substr(colon + 1);
        }
    }
    for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        if (auto value = variable(environment, name); value && !value->empty()) {
            if (auto tag = languageTag(*value)) tags.push_back(*tag);
            break;
        }
    }
    return tags;
}

}  // namespace nuvrel::app
