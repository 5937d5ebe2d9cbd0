#include "llm/curated_models.h"

#include "base/text.h"
#include "llm/model_downloader.h"
#include "llm/model_resolution.h"

namespace nuvrel::llm::ModelCatalog {

const std::vector<CuratedModel>& curatedModels() {
    static const std::vector<CuratedModel> models = {
        {"kestrune-nano-0.8b", Role::router, "Kestrune-nano 0.8B",
         std::string(defaultModelFileName), std::string(ModelDownloader::defaultModelSourceURL),
         std::nullopt, 530'000'000},
        {"kestrune-mini-2.6b", Role::router, "Kestrune-mini 2.6B",
         std::string(ModelDownloader::router2BFileName),
         std::string(ModelDownloader::router2BSourceURL), std::nullopt, 1'600'000'000},
        {"summary-qwen3-1.7b", Role::summary, "요약 모델 (Qwen3 1.7B)",
         std::string(ModelDownloader::summaryModelFileName),
         std::string(ModelDownloader::summaryModelSourceURL), std::nullopt, 1'110'000'000},
    };
    return models;
}

const CuratedModel* curatedModel(std::string_view idOrFileName) {
    for (const auto& model : curatedModels()) {
        if (model.id == idOrFileName || model.fileName == idOrFileName) return &model;
    }
    return nullptr;
}

base::Url applyingMirror(const base::Url& address, const std::optional<std::string>& mirror) {
    if (!mirror) return address;
    const auto base = base::Url::parse(base::text::trim(*mirror));
    if (!base || (base->scheme() != "http" && base->scheme() != "https") || base->host().empty())
        return address;
    std::string text = base->text();
    if (const auto cut = text.find_first_of("?#"); cut != std::string::npos) text.resize(cut);
    while (text.ends_with('/')) text.pop_back();
    text += address.path();
    if (address.query()) text += "?" + *address.query();
    return base::Url::parse(text).value_or(address);
}

}  // namespace nuvrel::llm::ModelCatalog
