#include "core/slot_value.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "core/decoding_error.h"

namespace nuvrel::core {
namespace {

SlotValue decode(const char* text) {
    return nlohmann::json::parse(text).get<SlotValue>();
}

TEST(SlotValueDecoding, TriesNullThenBoolThenNumberThenText) {
    EXPECT_TRUE(decode("null").isNull());
    EXPECT_EQ(decode("true").kind(), SlotValue::Kind::boolean);
    EXPECT_EQ(decode("false").asBool(), false);
    EXPECT_EQ(decode("3").kind(), SlotValue::Kind::number);
    EXPECT_EQ(decode("3").asNumber(), 3.0);
    EXPECT_EQ(decode("-2.5e1").asNumber(), -25.0);
    EXPECT_EQ(decode("18446744073709551615").asNumber(), 18446744073709551615.0);
    // Texts that look like other kinds stay texts.
    ASSERT_TRUE(decode(R"("true")").asString());
    EXPECT_EQ(*decode(R"("true")").asString(), "true");
    EXPECT_EQ(*decode(R"("3")").asString(), "3");
    EXPECT_EQ(*decode(R"("")").asString(), "");
}

TEST(SlotValueDecoding, ArraysAndObjectsAreTypeMismatches) {
    for (const char* text : {"[]", "[1]", "{}", R"({"a":1})"}) {
        try {
            decode(text);
            ADD_FAILURE() << "decoded " << text;
        } catch (const DecodingError& error) {
            EXPECT_EQ(error.kind, DecodingError::Kind::typeMismatch);
            EXPECT_EQ(error.description(),
                      "SlotValue must be a JSON string, number, bool, or null.");
        }
    }
}

TEST(SlotValueEncoding, WritesTheMatchingScalar) {
    EXPECT_EQ(nlohmann::json(SlotValue("a b")).dump(), R"("a b")");
    EXPECT_EQ(nlohmann::json(SlotValue(2.5)).dump(), "2.5");
    EXPECT_EQ(nlohmann::json(SlotValue(true)).dump(), "true");
    EXPECT_EQ(nlohmann::json(SlotValue(nullptr)).dump(), "null");
    EXPECT_EQ(nlohmann::json(SlotValue()).dump(), "null");
}

TEST(SlotValue, AccessorsAnswerOnlyForTheirOwnCase) {
    SlotValue text("1");
    SlotValue number(1);
    SlotValue flag(true);
    EXPECT_TRUE(text.isString());
    EXPECT_FALSE(text.asNumber());
    EXPECT_FALSE(text.asBool());
    // An integer is a number, never a bool.
    EXPECT_TRUE(number.isNumber());
    EXPECT_EQ(number.asNumber(), 1.0);
    EXPECT_EQ(number.asString(), nullptr);
    EXPECT_FALSE(number.asBool());
    EXPECT_TRUE(flag.isBool());
    EXPECT_FALSE(flag.asNumber());
    // Equality needs the same case as well as the same payload.
    EXPECT_NE(SlotValue(1), SlotValue(true));
    EXPECT_NE(SlotValue("1"), SlotValue(1.0));
    EXPECT_EQ(SlotValue(std::string("x")), SlotValue("x"));
}

}  // namespace
}  // namespace nuvrel::core
