#include "pipeline/validator.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>

#include "base/text.h"
#include "core/slot_enums.h"
#include "pipeline/validator_detail.h"
#include "pipeline/validator_test_support.h"

namespace nuvrel::pipeline {
namespace {

using namespace Validator;
using core::IntentID;
using core::ValidationOutcome;
using testing::describeOutcome;

std::string validated(IntentID intent, core::Slots slots, std::string_view query,
                      double confidence = 0.9) {
    return describeOutcome(validate(core::RoutedIntent{intent, std::move(slots), confidence}, query,
                                    testing::fullRegistry()));
}

std::string plan(core::ActionPlan plan) {
    return describeOutcome(plan);
}

// --- Tables ---

TEST(ValidatorTables, CuesAreNormalisedWholeWordExactlyWhenLatinAndGroupedByType) {
    std::vector<std::string_view> groupOrder;
    for (const FinderFileTypeCue& cue : finderFileTypeCues) {
        EXPECT_EQ(normalizedForFinderMatching(cue.phrase), cue.phrase);
        EXPECT_EQ(cue.matchKind == FinderFileTypeCueMatchKind::wholeWord,
                  base::text::isAscii(cue.phrase))
            << cue.phrase;
        EXPECT_TRUE(core::SlotEnums::finderFileType().contains(cue.fileType)) << cue.fileType;
        if (groupOrder.empty() || groupOrder.back() != cue.fileType)
            groupOrder.push_back(cue.fileType);
    }
    const std::vector<std::string_view> expectedOrder{
        "hwp", "pdf", "docx", "xlsx", "pptx",  "image", "c",   "md",  "key",     "psd",
        "ai",  "py",  "js",   "java", "swift", "ipynb", "txt", "zip", "archive", "document"};
    EXPECT_EQ(groupOrder, expectedOrder);  // each type's rows stand together, in this order

    for (const FinderFileTypeCue& safe : safeFileTypeOverrideCues) {
        const bool inMainTable =
            std::any_of(finderFileTypeCues.begin(), finderFileTypeCues.end(), [&](const auto& cue) {
                return cue.phrase == safe.phrase && cue.matchKind == safe.matchKind &&
                       cue.fileType == safe.fileType;
            });
        EXPECT_TRUE(inMainTable) << safe.phrase;
    }
    for (const std::string_view name : installerSensitiveAppNameCues) {
        EXPECT_TRUE(exactCueFinderFileType(name, "파일").has_value()) << name;
    }
    for (const std::string_view word : finderDateCueWords)
        EXPECT_EQ(normalizedForFinderMatching(word), word);
}

// --- Gate and dispatch ---

TEST(Validator, LowConfidenceOrUnknownIntentFallsBackToTheTrimmedQuery) {
    const core::Slots perfect{{"keyword", "보고서"}, {"file_type", "pdf"}};
    const std::string query = "  보고서 pdf 찾아줘\n";
    const std::string fallback =
        describeOutcome(ValidationOutcome::fallbackWeb("보고서 pdf 찾아줘"));
    const std::string search = plan(core::FinderQuery{.keyword = "보고서", .fileType = "pdf"});

    EXPECT_EQ(validated(IntentID::finderSearch, perfect, query, 0.49), fallback);
    EXPECT_EQ(validated(IntentID::finderSearch, perfect, query, 0.5), search);
    EXPECT_EQ(validated(IntentID::finderSearch, perfect, query, std::nan("")), search);
    EXPECT_EQ(validated(IntentID::finderSearch, perfect, query, -1.0), fallback);
    EXPECT_EQ(validated(IntentID::unknown, perfect, query, 1.0), fallback);
}

TEST(Validator, IntentWithoutCapabilityOrWithoutPlanFallsBack) {
    const core::RoutedIntent web{IntentID::webSearch, {{"query", "날씨"}}, 0.9};
    EXPECT_EQ(describeOutcome(validate(web, "날씨 알려줘", core::CapabilityRegistry())),
              describeOutcome(ValidationOutcome::fallbackWeb("날씨 알려줘")));
    const core::RoutedIntent files{IntentID::finderSearch, {{"keyword", "보고서"}}, 0.9};
    EXPECT_EQ(
        describeOutcome(validate(files, "보고서", testing::registryServing({IntentID::webSearch}))),
        describeOutcome(ValidationOutcome::fallbackWeb("보고서")));
    EXPECT_EQ(describeOutcome(
                  validate(files, "보고서", testing::registryServing({IntentID::finderSearch}))),
              plan(core::FinderQuery{.keyword = "보고서"}));
    // Intents served elsewhere than through a plan never get one here.
    for (IntentID intent : {IntentID::weatherQuery, IntentID::timerSet, IntentID::appLaunch}) {
        EXPECT_EQ(validated(intent, {{"query", "x"}}, " 서울 날씨 "),
                  describeOutcome(ValidationOutcome::fallbackWeb("서울 날씨")));
    }
}

TEST(Validator, WebSearchAlwaysWantsAnAnswerAndFallsBackToTheQueryText) {
    EXPECT_EQ(validated(IntentID::webSearch, {{"query", " swift actors "}, {"want_answer", false}},
                        "what are actors"),
              plan(core::WebQuery{"swift actors", true}));
    EXPECT_EQ(validated(IntentID::webSearch, {{"want_answer", "false"}}, " what are actors? "),
              plan(core::WebQuery{"what are actors?", true}));
    EXPECT_EQ(validated(IntentID::webSearch, {{"query", 12}}, "twelve"),
              plan(core::WebQuery{"twelve", true}));
    EXPECT_EQ(validated(IntentID::webSearch, {{"query", " \n"}}, "blank"),
              plan(core::WebQuery{"blank", true}));
}

TEST(Validator, StringSlotReadsOnlyNonEmptyTrimmedText) {
    const core::Slots slots{{"text", " \u3000보고서\n"}, {"number", 3.5},     {"flag", true},
                            {"none", nullptr},           {"blank", " \t\n "}, {"inner", "a  b"}};
    EXPECT_EQ(stringSlot(slots, "text"), "보고서");
    EXPECT_EQ(stringSlot(slots, "inner"), "a  b");
    for (const char* key : {"number", "flag", "none", "blank", "absent"}) {
        EXPECT_EQ(stringSlot(slots, key), std::nullopt) << key;
    }
}

// --- Calendar ---

TEST(CalendarDateRangeToken, WeekdayIsNextOnlyWithANextMarker) {
    EXPECT_EQ(calendarDateRangeToken("다음주 금요일 일정"), "next_friday");
    EXPECT_EQ(calendarDateRangeToken("금요일 일정"), "this_friday");
    EXPECT_EQ(calendarDateRangeToken("  Next MONDAY "), "next_monday");
    EXPECT_EQ(calendarDateRangeToken("담주 수요일"), "next_wednesday");
    EXPECT_EQ(calendarDateRangeToken("sunday brunch"), "this_sunday");
    // Days are tried in the order of the week, not of the text.
    EXPECT_EQ(calendarDateRangeToken("금요일이랑 월요일"), "this_monday");
}

TEST(CalendarDateRangeToken, LongerRangesAreTriedBeforeTheirParts) {
    EXPECT_EQ(calendarDateRangeToken("내일 모레"), "day_after_tomorrow");
    EXPECT_EQ(calendarDateRangeToken("the day after tomorrow"), "day_after_tomorrow");
    EXPECT_EQ(calendarDateRangeToken("Tomorrow"), "tomorrow");
    EXPECT_EQ(calendarDateRangeToken("이번 주말 약속"), "this_weekend");
    EXPECT_EQ(calendarDateRangeToken("next weekend"), "next_weekend");
    EXPECT_EQ(calendarDateRangeToken("다음 주 회의"), "next_week");
    EXPECT_EQ(calendarDateRangeToken("this month"), "this_month");
    EXPECT_EQ(calendarDateRangeToken("어제 뭐 했지"), "yesterday");
    EXPECT_EQ(calendarDateRangeToken("today"), "today");
    EXPECT_EQ(calendarDateRangeToken("회의"), std::nullopt);
    EXPECT_EQ(calendarDateRangeToken(" \n"), std::nullopt);
}

TEST(Validator, CalendarQueryKeepsAKnownTokenReadsAnyOtherTextAndDefaultsToToday) {
    auto calendar = [](core::Slots slots) {
        return validated(IntentID::calendarQuery, std::move(slots), "일정");
    };
    EXPECT_EQ(calendar({{"date_range", " Next_Week "}, {"keyword", "회의"}}),
              plan(core::CalendarRange{"next_week", "회의"}));
    EXPECT_EQ(calendar({{"date_range", "다음주 금요일"}}),
              plan(core::CalendarRange{"next_friday"}));
    EXPECT_EQ(calendar({{"date_range", "someday"}}), plan(core::CalendarRange{"today"}));
    EXPECT_EQ(calendar({{"date_range", 7}}), plan(core::CalendarRange{"today"}));
    EXPECT_EQ(calendar({}), plan(core::CalendarRange{"today"}));
    // The keyword is not held against the query.
    EXPECT_EQ(calendar({{"keyword", "dentist"}}), plan(core::CalendarRange{"today", "dentist"}));
}

// --- Messages ---

TEST(Validator, DativeParticleIsStrippedUnlessNothingWouldRemain) {
    EXPECT_EQ(strippingDativeParticle("엄마한테"), "엄마");
    EXPECT_EQ(strippingDativeParticle(" 엄마 한테 "), "엄마");
    EXPECT_EQ(strippingDativeParticle("친구한테로"), "친구");
    EXPECT_EQ(strippingDativeParticle("선생님께서"), "선생님");
    EXPECT_EQ(strippingDativeParticle("팀장님께"), "팀장님");
    EXPECT_EQ(strippingDativeParticle("께"), "께");
    EXPECT_EQ(strippingDativeParticle(" 에게 "), "에게");
    EXPECT_EQ(strippingDativeParticle("Sam"), "Sam");
}

TEST(Validator, MessageSendNeedsRecipientThenBody) {
    EXPECT_EQ(validated(IntentID::messageSend, {}, "메시지 보내줘"),
              describeOutcome(ValidationOutcome::missingSlot(IntentID::messageSend, "recipient")));
    EXPECT_EQ(validated(IntentID::messageSend, {{"recipient", 5}, {"body", "hi"}}, "send hi"),
              describeOutcome(ValidationOutcome::missingSlot(IntentID::messageSend, "recipient")));
    EXPECT_EQ(validated(IntentID::messageSend, {{"recipient", "엄마한테"}, {"body", "  "}},
                        "엄마한테 보내줘"),
              describeOutcome(ValidationOutcome::missingSlot(IntentID::messageSend, "body")));
    EXPECT_EQ(validated(IntentID::messageSend,
                        {{"recipient", "엄마한테"}, {"body", " 늦어요 "}, {"channel", "SMS"}},
                        "엄마한테 늦는다고 문자 보내줘"),
              plan(core::MessageDraft{.recipientQuery = "엄마",
                                      .channel = core::MessageDraft::Channel::sms,
                                      .body = "늦어요"}));
    EXPECT_EQ(validated(IntentID::messageSend,
                        {{"recipient", "Sam"}, {"body", "hi"}, {"channel", "fax"}}, "text Sam hi"),
              plan(core::MessageDraft{.recipientQuery = "Sam", .body = "hi"}));
}

TEST(Validator, MailInTheQueryOverridesTheChannelButAShortMailDoesNot) {
    const core::Slots sms{{"recipient", "Sam"}, {"body", "hi"}, {"channel", "sms"}};
    EXPECT_EQ(
        validated(IntentID::messageSend, sms, "Send a mail to Sam saying hi"),
        plan(core::MessageDraft{
            .recipientQuery = "Sam", .channel = core::MessageDraft::Channel::mail, .body = "hi"}));
    EXPECT_EQ(
        validated(IntentID::messageSend, sms, "ショートメールを送って"),
        plan(core::MessageDraft{
            .recipientQuery = "Sam", .channel = core::MessageDraft::Channel::sms, .body = "hi"}));
    for (const char* query : {"EMAIL Sam", "e-mail Sam", "샘에게 메일", "メールで送って", "发邮件",
                              "邮箱", "ショートメールじゃなくてメール"}) {
        EXPECT_EQ(deterministicMailChannel(query), core::MessageDraft::Channel::mail) << query;
    }
    for (const char* query : {"gmail Sam", "send emails", "mailbox", "문자 보내줘", ""}) {
        EXPECT_EQ(deterministicMailChannel(query), std::nullopt) << query;
    }
}

// --- Music ---

TEST(Validator, MusicQueryLosesTrailingRequestVerbsParticlesAndGenericNouns) {
    EXPECT_EQ(musicQueryStrippingTrailingRequestVerb("jazz 틀어줘"), "jazz");
    EXPECT_EQ(musicQueryStrippingTrailingRequestVerb("Jazz PLAY playing"), "Jazz");
    EXPECT_EQ(musicQueryStrippingTrailingRequestVerb("아이유 노래를 틀어줘"), "아이유 노래");
    EXPECT_EQ(musicQueryStrippingTrailingRequestVerb("신나는 노래 좀 틀어줘"), "신나는 노래");
    EXPECT_EQ(musicQueryStrippingTrailingRequestVerb("재생해줘 틀어"), std::nullopt);
    EXPECT_EQ(musicQueryStrippingTrailingRequestVerb("좀"), std::nullopt);
    EXPECT_EQ(musicQueryStrippingTrailingGenericNoun("lofi songs tracks"), "lofi");
    EXPECT_EQ(musicQueryStrippingTrailingGenericNoun("노래 모음"),
              "노래 모음");  // only trailing ones go
    EXPECT_EQ(musicQueryStrippingTrailingGenericNoun("음악\u3000노래"), std::nullopt);

    auto music = [](core::Slots slots) {
        return validated(IntentID::musicPlay, std::move(slots), "음악");
    };
    using Action = core::MusicCommand::Action;
    EXPECT_EQ(music({{"query", "아이유 노래를 틀어줘"}}),
              plan(core::MusicCommand{"아이유", Action::play}));
    EXPECT_EQ(music({{"query", "노래를 틀어줘"}}),
              plan(core::MusicCommand{std::nullopt, Action::play}));
    EXPECT_EQ(music({{"query", "music"}}), plan(core::MusicCommand{std::nullopt, Action::play}));
    // Only the last word loses a particle, so a filler after it shields it.
    EXPECT_EQ(music({{"query", "노래를 좀"}}), plan(core::MusicCommand{"노래를", Action::play}));
    EXPECT_EQ(music({{"action", "PAUSE"}}), plan(core::MusicCommand{std::nullopt, Action::pause}));
    EXPECT_EQ(music({{"action", "stop"}, {"query", 3}}),
              plan(core::MusicCommand{std::nullopt, Action::play}));
}

}  // namespace
}  // namespace nuvrel::pipeline
