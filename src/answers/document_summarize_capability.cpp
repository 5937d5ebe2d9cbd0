#include "answers/document_summarize_capability.h"

#include <nlohmann/json.hpp>

#include "base/cancellation.h"
#include "base/text.h"
#include "core/localized_strings.h"
#include "core/user_facing_error.h"
#include "llm/json_object_extraction.h"

namespace nuvrel::answers::DocumentSummarizeCapability {
namespace {

std::optional<std::string> decodedSummary(const std::string& reply) {
    const auto object = llm::extractJSONObject(reply);
    if (!object) return std::nullopt;
    return llm::trimmedStringField(*object, "summary");
}

}  // namespace

std::string_view systemPrompt(core::AppLanguage language) {
    switch (language) {
        case core::AppLanguage::ko:
            return "당신은 문서를 3~5문장으로 요약하는 도우미입니다. 반드시 {\"summary\": \"...\"} "
                   "형식의 JSON 객체 하나만 응답하세요.";
        case core::AppLanguage::zh:
            return "你是一个用3到5句话总结文档的助手。只回复一个 JSON 对象，格式为 {\"summary\": "
                   "\"...\"}。";
        case core::AppLanguage::ja:
            return "あなたは文書を3〜5文で要約するアシスタントです。必ず {\"summary\": \"...\"} "
                   "という形式のJSONオブジェクトを1つだけ返してください。";
        case core::AppLanguage::en:
            break;
    }
    return "You summarize documents in 3-5 sentences. Respond with exactly one JSON object of "
           "the form {\"summary\": \"...\"}.";
}

std::optional<core::CapabilityResult> execute(std::string_view candidateName,
                                              core::AppLanguage language,
                                              llm::LLMBackend* summarizer, const FindFile& findFile,
                                              const ExtractText& extractText) {
    if (!summarizer || !findFile) return std::nullopt;
    const std::optional<core::FileHit> hit = findFile(candidateName);
    if (!hit) return std::nullopt;
    const auto& strings = core::LocalizedStrings::strings(language);

    std::string text;
    try {
        if (extractText) text = base::text::trim(extractText(hit->path).value_or(""));
    } catch (const base::Cancelled&) {
        throw;
    } catch (...) {
        text.clear();
    }
    if (text.empty()) throw core::UserFacingError(strings.documentSummarizeUnreadableMessage);

    const std::string user = "File: " + hit->name + "\n\n" + base::text::prefix(text, textLimit);
    std::optional<std::string> summary;
    try {
        summary = decodedSummary(summarizer->complete(systemPrompt(language), user, schema));
    } catch (const base::Cancelled&) {
        throw;
    } catch (...) {
    }
    if (!summary) throw core::UserFacingError(strings.documentSummarizeFailedMessage);
    return core::CapabilityResult::DocumentSummary{
        .fileName = hit->name, .filePath = hit->path, .summary = std::move(*summary)};
}

}  // namespace nuvrel::answers::DocumentSummarizeCapability
