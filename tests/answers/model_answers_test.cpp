// Document summary and translation with a scripted summary model.

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "answers/document_summarize_capability.h"
#include "answers/translate_capability.h"
#include "core/localized_strings.h"
#include "core/user_facing_error.h"
#include "llm/model_catalog.h"
#include "support/error_of.h"

namespace nuvrel::answers {
namespace {

using core::AppLanguage;
using core::CapabilityResult;

class Scripted : public llm::LLMBackend {
public:
    std::function<std::string()> reply;
    std::optional<std::string> fileName;
    std::vector<std::string> systems, users;
    using LLMBackend::complete;
    std::string complete(std::string_view system, std::string_view user,
                         std::string_view) override {
        systems.emplace_back(system);
        users.emplace_back(user);
        return reply();
    }
    std::optional<std::string> modelFileName() const override { return fileName; }
};

std::function<std::string()> says(std::string text) {
    return [text] { return text; };
}

TEST(DocumentSummarizeCapability, SendsTheFirst4000CharactersAndReadsTheSummary) {
    Scripted model;
    model.reply = says(R"(Here: {"summary":"  Three sentences. "})");
    const auto find = [](std::string_view name) -> std::optional<core::FileHit> {
        if (name != "plan.md") return std::nullopt;
        return core::FileHit{"plan.md", "/h/plan.md", ""};
    };
    const std::string body = std::string(3999, 'a') + "한" + std::string(6000, 'b');
    const auto read = [&](const std::string&) { return std::optional<std::string>("\n " + body); };
    namespace capability = DocumentSummarizeCapability;

    const auto result = capability::execute("plan.md", AppLanguage::ko, &model, find, read);
    ASSERT_TRUE(result && result->get<CapabilityResult::DocumentSummary>());
    EXPECT_EQ(*result->get<CapabilityResult::DocumentSummary>(),
              (CapabilityResult::DocumentSummary{"plan.md", "/h/plan.md", "Three sentences."}));
    EXPECT_EQ(model.users[0], "File: plan.md\n\n" + std::string(3999, 'a') + "한");
    EXPECT_EQ(model.systems[0], capability::systemPrompt(AppLanguage::ko));

    EXPECT_EQ(capability::execute("other.md", AppLanguage::en, &model, find, read), std::nullopt);
    EXPECT_EQ(capability::execute("plan.md", AppLanguage::en, nullptr, find, read), std::nullopt);

    const auto& en = core::LocalizedStrings::en();
    const core::UserFacingError unreadable(en.documentSummarizeUnreadableMessage);
    const core::UserFacingError failed(en.documentSummarizeFailedMessage);
    const auto errorWith = [&](capability::ExtractText reader, std::function<std::string()> reply) {
        model.reply = std::move(reply);
        return test::errorOf<core::UserFacingError>(
            [&] { capability::execute("plan.md", AppLanguage::en, &model, find, reader); });
    };
    EXPECT_EQ(
        errorWith([](const std::string&) { return std::optional<std::string>(" \n"); }, says("{}")),
        unreadable);
    EXPECT_EQ(errorWith([](const std::string&)
                            -> std::optional<std::string> { throw std::runtime_error("io"); },
                        says("{}")),
              unreadable);
    for (auto reply : {says(R"({"summary":"  "})"), says("no object"), says(R"({"summary":3})"),
                       std::function<std::string()>(
                           []() -> std::string { throw std::runtime_error("server down"); })})
        EXPECT_EQ(errorWith(read, reply), failed);
}

TEST(TranslateCapability, PromptsForTheTargetAndNamesTheModel) {
    const struct {
        const char* target;
        const char* promptStart;
    } cases[] = {
        {"ko", "당신은 번역가입니다. 사용자가 보낸 텍스트를 한국어로 번역하세요."},
        {"ja", "あなたは翻訳者です。"},
        {"zh", "你是翻译员。"},
        {"en",
         "You are a translator. Translate the user's text into English. Write it in "
         "English. Never return the input unchanged. Respond with exactly one JSON object "
         "of the form {\"translation\": \"...\"} Example: input \"좋은 저녁입니다\""},
    };
    for (const auto& c : cases) {
        Scripted model;
        model.reply = says(R"({"translation":" out "})");
        model.fileName = "Qwen3-1.7B-Q4_K_M.gguf";
        const auto result = TranslateCapability::execute({"in", c.target}, AppLanguage::en, &model);
        ASSERT_TRUE(result && result->get<CapabilityResult::Translation>());
        const auto& translation = *result->get<CapabilityResult::Translation>();
        EXPECT_EQ(translation.translatedText, "out");
        EXPECT_EQ(translation.targetLanguage, c.target);
        EXPECT_EQ(translation.modelName, llm::ModelCatalog::attributionName(*model.fileName));
        EXPECT_EQ(model.systems[0].rfind(c.promptStart, 0), 0u) << model.systems[0];
        EXPECT_EQ(model.users[0], "in");
    }
    Scripted model;
    model.reply = says(R"({"translation":""})");
    EXPECT_EQ(TranslateCapability::execute({"in", "ko"}, AppLanguage::zh, nullptr), std::nullopt);
    EXPECT_EQ(test::errorOf<core::UserFacingError>([&] {
                  TranslateCapability::execute({"in", "ko"}, AppLanguage::zh, &model);
              }),
              core::UserFacingError(core::LocalizedStrings::zh().translateFailedMessage));
}

}  // namespace
}  // namespace nuvrel::answers
