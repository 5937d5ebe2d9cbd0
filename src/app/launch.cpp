#include "app/launch.h"

#include <optional>
#include <string_view>

#include "app/settings_keys.h"
#include "llm/llama_server_backend.h"
#include "pipeline/pipeline.h"

namespace nuvrel::app {

AppState::MakePipeline makePipelineFactory(const LaunchSettings& settings) {
    auto routing = std::make_shared<llm::LlamaServerBackend>(llm::LlamaServerBackend::routing(settings.session));
    auto summary =
        std::make_shared<llm::LlamaServerBackend>(llm::LlamaServerBackend::summarySharingRouter(settings.session));
    return [routing, summary, defaults = settings.userDefaults,
            forbidden = settings.networkForbidden](core::AppLanguage language) {
        auto pipeline = std::make_shared<pipeline::Pipeline>();
        pipeline->router.backend = routing;
        pipeline->language = language;
        pipeline->summarizer = summary;
        // Only an explicit "0" turns the network features off.
        pipeline->networkFeaturesEnabled =
            !forbidden && defaults->string(settingsKey::networkFeaturesEnabled).value_or("1") != "0";
        return std::shared_ptr<const pipeline::PipelineRunning>(std::move(pipeline));
    };
}

namespace {

std::optional<std::string> variable(const char* const* environment, std::string_view name) {
    for (auto entry = environment; entry && *entry; ++entry) {
        std::string_view text(*entry);
        if (text.size() > name.size() && text.substr(0, name.size()) == name && text[name.size()] == '=') {
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
