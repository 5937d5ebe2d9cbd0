#include "core/routed_intent.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "core/decoding_error.h"

namespace nuvrel::core {
namespace {

// Runs the decode and gives the error it threw; fails the test when it did not throw.
DecodingError decodeError(std::string_view text) {
    try {
        RoutedIntent::decode(text);
    } catch (const DecodingError& error) {
        return error;
    }
    ADD_FAILURE() << "decoded without error: " << text;
    return DecodingError(DecodingError::Kind::dataCorrupted, "");
}

TEST(RoutedIntentDecoding, UnknownIntentUsesItsSystemPrefixedWireId) {
    auto routed = RoutedIntent::decode(R"({"intent":"system.unknown","slots":{},"confidence":0})");
    EXPECT_EQ(routed.intent, IntentID::unknown);
    EXPECT_TRUE(routed.slots.empty());
    EXPECT_EQ(routed.confidence, 0.0);

    auto bare = decodeError(R"({"intent":"unknown","slots":{},"confidence":0})");
    EXPECT_EQ(bare.kind, DecodingError::Kind::dataCorrupted);
    EXPECT_EQ(decodeError(R"({"intent":3,"slots":{},"confidence":0})").kind,
              DecodingError::Kind::typeMismatch);
}

TEST(RoutedIntentDecoding, NonScalarSlotFailsTheWholeDecodeWithTheExactText) {
    for (const char* text :
         {R"({"intent":"web.search","slots":{"q":"x","a":{"a":1}},"confidence":1})",
          R"({"intent":"web.search","slots":{"a":[1]},"confidence":1})"}) {
        auto error = decodeError(text);
        EXPECT_EQ(error.kind, DecodingError::Kind::typeMismatch) << text;
        EXPECT_STREQ(error.what(), "SlotValue must be a JSON string, number, bool, or null.");
    }
}

TEST(RoutedIntentDecoding, SlotValuesKeepTheirJsonKind) {
    auto routed = RoutedIntent::decode(R"({"intent":"finder.search","confidence":0.75,
        "slots":{"keyword":"report","want_answer":true,"amount":3,"location":null}})");
    EXPECT_EQ(routed.intent, IntentID::finderSearch);
    EXPECT_EQ(routed.confidence, 0.75);
    ASSERT_EQ(routed.slots.size(), 4u);
    // Null stays a key of its own rather than removing the slot.
    ASSERT_TRUE(routed.slots.contains("location"));
    EXPECT_TRUE(routed.slots.at("location").isNull());
    EXPECT_EQ(routed.slots.at("want_answer"), SlotValue(true));
    EXPECT_EQ(routed.slots.at("amount"), SlotValue(3.0));
    EXPECT_EQ(routed.slots.at("keyword"), SlotValue("report"));
}

TEST(RoutedIntentDecoding, EveryKeyIsRequiredAndTyped) {
    EXPECT_EQ(decodeError(R"({"intent":"web.search","confidence":1})").kind,
              DecodingError::Kind::keyNotFound);
    EXPECT_EQ(decodeError(R"({"slots":{},"confidence":1})").kind, DecodingError::Kind::keyNotFound);
    EXPECT_EQ(decodeError(R"({"intent":"web.search","slots":{}})").kind,
              DecodingError::Kind::keyNotFound);
    EXPECT_EQ(decodeError(R"({"intent":"web.search","slots":null,"confidence":1})").kind,
              DecodingError::Kind::valueNotFound);
    EXPECT_EQ(decodeError(R"({"intent":"web.search","slots":[],"confidence":1})").kind,
              DecodingError::Kind::typeMismatch);
    EXPECT_EQ(decodeError(R"({"intent":"web.search","slots":{},"confidence":"high"})").kind,
              DecodingError::Kind::typeMismatch);
    EXPECT_EQ(decodeError(R"([{"intent":"web.search","slots":{},"confidence":1}])").kind,
              DecodingError::Kind::typeMismatch);
}

TEST(RoutedIntentDecoding, MalformedTextIsADecodingError) {
    for (const char* text : {"", "{", R"({"intent":"web.search",})", "```json\n{}\n```"}) {
        EXPECT_EQ(decodeError(text).kind, DecodingError::Kind::dataCorrupted) << text;
    }
}

TEST(RoutedIntentDecoding, NlohmannGetThrowsAJsonException) {
    auto json = nlohmann::json::parse(R"({"intent":"nope","slots":{},"confidence":1})");
    EXPECT_THROW(json.get<RoutedIntent>(), nlohmann::json::exception);
}

TEST(RoutedIntentCoding, EncodeThenDecodeGivesAnEqualValue) {
    RoutedIntent routed{IntentID::messageSend,
                        {{"recipient", "엄마"}, {"count", 2}, {"urgent", false}, {"body", nullptr}},
                        0.5};
    nlohmann::json json = routed;
    EXPECT_EQ(json.at("intent"), "message.send");
    EXPECT_TRUE(json.at("slots").at("body").is_null());
    EXPECT_TRUE(json.at("slots").at("urgent").is_boolean());
    EXPECT_EQ(RoutedIntent::decode(json.dump()), routed);
}

}  // namespace
}  // namespace nuvrel::core
