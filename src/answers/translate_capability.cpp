#include "answers/translate_capability.h"

#include <nlohmann/json.hpp>

#include "base/cancellation.h"
#include "base/text.h"
#include "core/localized_strings.h"
#include "core/user_facing_error.h"
#include "llm/json_object_extraction.h"
#include "llm/model_catalog.h"

namespace nuvrel::answers::TranslateCapability {
namespace {

std::optional<std::string> decodedTranslation(const std::string& reply) {
    const auto object = llm::extractJSONObject(reply);
    if (!object) return std::nullopt;
    return llm::trimmedStringField(*object, "translation");
}

}  // namespace

std::string fullLanguageName(std::string_view code) {
    if (code == "en") return "English";
    if (code == "ko") return "Korean";
    if (code == "ja") return "Japanese";
    if (code == "zh") return "Chinese";
    return std::string(code);
}

std::string systemPrompt(std::string_view targetLanguage) {
    if (targetLanguage == "ko") {
        return "당신은 번역가입니다. 사용자가 보낸 텍스트를 한국어로 번역하세요. 반드시 한국어로 "
               "쓰세요. 원문을 그대로 돌려주지 마세요. 다음 형식의 JSON 하나로만 응답하세요: "
               "{\"translation\": \"...\"} 예: 입력 \"Good evening\" → {\"translation\": \"좋은 "
               "저녁입니다\"} / 입력 \"See you later\" → {\"translation\": \"나중에 봐요\"}";
    }
    if (targetLanguage == "ja") {
        return "あなたは翻訳者です。ユーザーのテキストを日本語に翻訳してください。必ず日本語で書い"
               "て"
               "ください。原文をそのまま返さないでください。次の形式のJSONのみで応答してください："
               "{\"translation\": \"...\"} 例：入力 \"Good evening\" → {\"translation\": "
               "\"こんばんは\"} / 入力 \"See you later\" → {\"translation\": \"またね\"}";
    }
    if (targetLanguage == "zh") {
        return "你是翻译员。请把用户的文本翻译成中文。必须用中文书写。不要原样返回原文。只以如下格"
               "式"
               "的JSON回应：{\"translation\": \"...\"} 例：输入 \"Good evening\" → "
               "{\"translation\": \"晚上好\"} / 输入 \"See you later\" → {\"translation\": "
               "\"回头见\"}";
    }
    const std::string name = fullLanguageName(targetLanguage);
    return "You are a translator. Translate the user's text into " + name + ". " + "Write it in " +
           name + ". Never return the input unchanged. " +
           "Respond with exactly one JSON object of the form {\"translation\": \"...\"} " +
           "Example: input \"좋은 저녁입니다\" → {\"translation\": \"Good evening\"} / " +
           "input \"나중에 봐요\" → {\"translation\": \"See you later\"}";
}

std::optional<core::CapabilityResult> execute(const TranslateCandidate& candidate,
                                              core::AppLanguage language,
                                              llm::LLMBackend* translator) {
    if (!translator) return std::nullopt;
    const auto& strings = core::LocalizedStrings::strings(language);
    std::optional<std::string> translation;
    try {
        translation = decodedTranslation(
            translator->complete(systemPrompt(candidate.targetLanguage), candidate.text, schema));
    } catch (const base::Cancelled&) {
        throw;
    } catch (...) {
    }
    if (!translation) throw core::UserFacingError(strings.translateFailedMessage);
    std::optional<std::string> modelName;
    if (auto file = translator->modelFileName())
        modelName = llm::ModelCatalog::attributionName(*file);
    return core::CapabilityResult::Translation{.translatedText = std::move(*translation),
                                               .targetLanguage = candidate.targetLanguage,
                                               .modelName = std::move(modelName)};
}

}  // namespace nuvrel::answers::TranslateCapability
