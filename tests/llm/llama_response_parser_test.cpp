#include "llm/llama_response_parser.h"

#include <gtest/gtest.h>

#include <string>

#include "llm/error_capture.h"
#include "llm/llm_error.h"
#include "llm/scripted_llama_server.h"

namespace nuvrel::llm {
namespace {

using LlamaResponseParser::extractContent;

TEST(LlamaResponseParser, GivesTheFirstContentAsItStands) {
    EXPECT_EQ(extractContent(test::chatReply(R"({"intent":"web.search","confidence":0.9})")),
              R"({"intent":"web.search","confidence":0.9})");
    // White space alone is content; so is text that is not JSON at all.
    EXPECT_EQ(extractContent(test::chatReply(" \n\t")), " \n\t");
    EXPECT_EQ(extractContent(test::chatReply("Sure! 한국어 {")), "Sure! 한국어 {");
    EXPECT_EQ(extractContent(R"({"choices":[{"message":{"content":"first","role":"assistant"}},)"
                             R"({"message":{"content":"second"}}],"extra":[null]})"),
              "first");
}

TEST(LlamaResponseParser, NoChoiceOrAnEmptyFirstContentIsAnEmptyResponse) {
    for (const std::string reply :
         {R"({"choices":[]})", R"({"choices":[],"usage":{}})",
          R"({"choices":[{"message":{"content":""}},{"message":{"content":"later"}}]})"}) {
        EXPECT_EQ(test::errorOf<LLMError>([&] { extractContent(reply); }),
                  LLMError::emptyResponse())
            << reply;
    }
}

TEST(LlamaResponseParser, AReplyOfAnotherShapeIsAnInvalidResponse) {
    const std::string prefix = "failed to decode chat completion response: ";
    for (const std::string reply : {
             "",
             "not json",
             R"({"choices":[{"message":{"content":null}}]})",
             R"({"choices":[{"message":{"content":"ok"}},{"message":{"content":null}}]})",
             R"({"choices":[{"message":{}}]})",
             R"({"choices":[{"message":{"content":42}}]})",
             R"({"choices":[{"text":"legacy completion"}]})",
             R"({"choices":[null]})",
             R"({"choices":{"message":{"content":"x"}}})",
             R"({"error":{"code":500,"message":"oops"}})",
             R"([{"choices":[]}])",
             R"({"choices":[{"message":{"content":"cut off)",
             R"({"choices":[],"n":1e999})",
         }) {
        const auto error = test::errorOf<LLMError>([&] { extractContent(reply); });
        ASSERT_TRUE(error) << reply;
        EXPECT_EQ(error->kind(), LLMError::Kind::invalidResponse) << reply;
        EXPECT_TRUE(error->text().starts_with(prefix)) << error->text();
        EXPECT_GT(error->text().size(), prefix.size()) << reply;
    }
}

TEST(LlamaResponseParser, ADecodingMessageDoesNotRepeatTheModelsWords) {
    // The model's text may echo the user's query, and the message reaches diagnostic lines.
    for (const std::string reply : {R"({"choices":[{"message":{"content":"meet Jisoo at 5 \q"}}]})",
                                    R"({"choices":[{"message":{"content":"meet Jisoo)",
                                    R"({"choices":[{"message":{"content":["meet Jisoo"]}}]})"}) {
        const auto error = test::errorOf<LLMError>([&] { extractContent(reply); });
        ASSERT_TRUE(error) << reply;
        EXPECT_EQ(error->kind(), LLMError::Kind::invalidResponse);
        EXPECT_EQ(error->text().find("Jisoo"), std::string::npos) << error->text();
    }
}

}  // namespace
}  // namespace nuvrel::llm
