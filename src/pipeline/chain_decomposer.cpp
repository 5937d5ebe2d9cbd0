#include "pipeline/chain_decomposer.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "base/cancellation.h"
#include "base/text.h"
#include "pipeline/chain_gate.h"
#include "pipeline/router.h"

namespace nuvrel::pipeline::ChainDecomposer {
namespace {

constexpr std::string_view englishPrompt =
    R"(Determine whether the user's single message contains multiple independent requests. If so, split it into standalone sentences, each fully understandable on its own (repeat any needed context like names/times/subjects in every sentence). If it's really just one request, return an array with that one sentence. Never invent new facts — only rearrange what's already there. Write every sentence in exactly the same language as the original message, reusing its wording — never translate. Respond with ONLY a JSON object: {"steps": ["...", ...]}.)";

constexpr std::string_view koreanPrompt =
    R"(사용자의 메시지 하나에 서로 독립적인 요청이 여러 개 들어 있는지 판단하세요. 그렇다면 각 문장이 그것만으로 완전히 이해되도록 독립된 문장들로 나누세요(이름/시간/대상처럼 필요한 맥락은 모든 문장에 반복해서 넣으세요). 실제로 요청이 하나뿐이라면 그 한 문장만 담은 배열을 반환하세요. 새로운 사실은 절대 지어내지 마세요 — 이미 있는 내용만 재배열하세요. 모든 문장은 원래 메시지와 정확히 같은 언어로, 원래 표현을 그대로 살려 쓰세요 — 절대 번역하지 마세요. 오직 JSON 객체 하나로만 답하세요: {"steps": ["...", ...]})";

constexpr std::string_view chinesePrompt =
    R"(判断用户的这一条消息是否包含多个相互独立的请求。如果是，就把它拆分成若干独立的句子，每一句单独看都能完全理解（在每个句子里重复所需的上下文，如人名/时间/对象）。如果确实只有一个请求，就返回只包含这一句话的数组。绝不要编造新的事实——只重新排列原有的内容。每个句子都要使用与原消息完全相同的语言，并沿用原文的措辞——绝不要翻译。只回复一个 JSON 对象：{"steps": ["...", ...]})";

constexpr std::string_view japanesePrompt =
    R"(ユーザーの1つのメッセージに、互いに独立した複数の依頼が含まれているかどうかを判断してください。含まれている場合は、それぞれが単独で完全に理解できる独立した文に分割してください（名前・時間・対象など必要な文脈は、すべての文で繰り返してください）。本当に依頼が1つだけなら、その1文だけを含む配列を返してください。新しい事実は決して作らず、元からある内容を並べ替えるだけにしてください。すべての文を元のメッセージとまったく同じ言語で書き、元の言い回しをそのまま使ってください。決して翻訳しないでください。JSON オブジェクトだけで応答してください：{"steps": ["...", ...]})";

// "steps" must be an array of strings; other keys are ignored.
std::optional<Response> decodeResponse(std::string_view text) {
    const auto json = nlohmann::json::parse(text, nullptr, /*allow_exceptions=*/false);
    if (!json.is_object()) return std::nullopt;
    const auto steps = json.find("steps");
    if (steps == json.end() || !steps->is_array()) return std::nullopt;
    Response response;
    response.steps.reserve(steps->size());
    for (const auto& step : *steps) {
        if (!step.is_string()) return std::nullopt;
        response.steps.push_back(step.get<std::string>());
    }
    return response;
}

std::string repaired(std::string step) {
    for (const auto& [suffix, replacement] : trailingConnectorRepairs) {
        if (std::string_view(step).ends_with(suffix)) {
            step.resize(step.size() - suffix.size());
            step += replacement;
            break;
        }
    }
    return step;
}

std::string groundingForm(std::string_view text) {
    return base::text::lower(base::text::removeWhiteSpace(text));
}

bool endsInHangulSyllable(std::string_view text) {
    if (text.empty()) return false;
    std::size_t end = text.size();
    const char32_t last = base::text::previousCodePoint(text, end);
    return last >= 0xAC00 && last <= 0xD7A3;
}

// A Korean step may end in a different syllable from the query's ("알려주고" → "알려줘");
// only that one last syllable gets the allowance.
bool isGrounded(std::string_view normalisedQuery, std::string_view step) {
    const std::string form = groundingForm(step);
    if (normalisedQuery.find(form) != std::string_view::npos) return true;
    return base::text::count(form) >= 3 && endsInHangulSyllable(form) &&
           normalisedQuery.find(base::text::dropLast(form)) != std::string_view::npos;
}

}  // namespace

std::string_view systemPrompt(core::AppLanguage language) {
    switch (language) {
        case core::AppLanguage::ko:
            return koreanPrompt;
        case core::AppLanguage::zh:
            return chinesePrompt;
        case core::AppLanguage::ja:
            return japanesePrompt;
        case core::AppLanguage::en:
            break;
    }
    return englishPrompt;
}

std::optional<std::vector<std::string>> decompose(
    std::string_view query, core::AppLanguage language,
    const std::shared_ptr<llm::LLMBackend>& summarizer) {
    if (!ChainGate::mightBeChain(query) || !summarizer) return std::nullopt;

    std::string reply;
    try {
        reply = summarizer->complete(systemPrompt(language), query, jsonSchema);
    } catch (...) {
        base::rethrowIfCancelled();
        return std::nullopt;
    }

    const auto object = Router::extractJSONObject(reply);
    if (!object) return std::nullopt;
    auto response = decodeResponse(*object);
    if (!response) return std::nullopt;

    std::vector<std::string> steps;
    for (const std::string& raw : response->steps) {
        // The query arrives in NFC; a model may spell the same text decomposed, and the step
        // runs as a query of its own.
        std::string step = base::text::nfc(base::text::trim(raw));
        if (step.empty()) continue;
        step = repaired(std::move(step));
        if (!step.empty()) steps.push_back(std::move(step));
    }
    if (steps.size() < minimumSteps || steps.size() > maximumSteps) return std::nullopt;

    const std::string normalisedQuery = groundingForm(query);
    const bool grounded = std::all_of(steps.begin(), steps.end(), [&](const std::string& step) {
        return isGrounded(normalisedQuery, step);
    });
    if (!grounded) return std::nullopt;
    return steps;
}

}  // namespace nuvrel::pipeline::ChainDecomposer
