#include "panel/card_model.h"

#include <gtest/gtest.h>

namespace nuvrel::panel {
namespace {

using Result = core::CapabilityResult;
using Kind = CardAction::Kind;
const core::LocalizedStrings& en = core::LocalizedStrings::en();

core::PipelineOutcome outcome(Result result) {
    return core::PipelineOutcome::result(std::move(result));
}

std::vector<Kind> activations(const Card& card) {
    std::vector<Kind> kinds;
    for (const auto& row : card.rows) kinds.push_back(row.activate.kind);
    return kinds;
}

TEST(CardModel, RowsCarryTheActionsTheirPayloadAllows) {
    const Card files = buildCard(
        outcome(Result::Files{{{"a.pdf", "/h/a.pdf", "today"}, {"b.txt", "/h/b.txt", ""}}}), en);
    EXPECT_EQ(files.subtitle, "2 documents found");
    ASSERT_EQ(files.rows.size(), 2u);
    EXPECT_EQ(files.rows[0].activate, (CardAction{Kind::openFile, "/h/a.pdf"}));
    EXPECT_EQ(files.rows[0].alternate, (CardAction{Kind::revealFile, "/h/a.pdf"}));
    EXPECT_EQ(files.rows[0].elide, CardRow::Elide::middle);
    EXPECT_EQ(buildCard(outcome(Result::Files{{{"a.pdf", "/h/a.pdf", ""}}}), en).subtitle,
              en.finderDocumentsFoundSingular);

    core::WebAnswer answer{.summary = "Paris.",
                           .sources = {{"Paris - Wikipedia", "en.wikipedia.org",
                                        "https://en.wikipedia.org/wiki/Paris"}},
                           .fallbackNotice = true,
                           .summaryModelName = "qwen"};
    const Card web = buildCard(outcome(Result::WebAnswer{answer}), en);
    EXPECT_EQ(web.subtitle, "Summarized by qwen");
    EXPECT_EQ(web.paragraphs, (std::vector<std::string>{en.webAnswerFallbackNotice, "Paris."}));
    EXPECT_EQ(web.rows.at(0).activate,
              (CardAction{Kind::openURL, "https://en.wikipedia.org/wiki/Paris"}));

    // The answer is the row: Return copies it.
    const Card calc = buildCard(outcome(Result::Calculation{"4"}), en);
    EXPECT_EQ(calc.rows.at(0).activate, (CardAction{Kind::copyText, "4"}));
    const Card clipboard = buildCard(outcome(Result::ClipboardHistory{{"two\nlines"}}), en);
    EXPECT_EQ(clipboard.rows.at(0).title, "two lines");
    EXPECT_EQ(clipboard.rows.at(0).activate.target, "two\nlines");
}

TEST(CardModel, DeletionCardsConfirmEachRowByItsIndex) {
    const Card reminders = buildCard(outcome(Result::ReminderDeleteConfirmation{
                                         {{"milk", "tomorrow", "r1"}, {"eggs", {}, "r2"}}}),
                                     en);
    ASSERT_EQ(reminders.rows.size(), 2u);
    EXPECT_EQ(reminders.rows[1].activate, (CardAction{Kind::confirm, "", 1}));
    EXPECT_EQ(reminders.rows[0].detail, "tomorrow");
    const Card notes =
        buildCard(outcome(Result::NoteDeleteConfirmation{{{"a", "1"}, {"b", "2"}}}), en);
    EXPECT_EQ(activations(notes), (std::vector<Kind>{Kind::confirm, Kind::confirm}));
    const Card file =
        buildCard(outcome(Result::DeleteFileConfirmation{{"r.pdf", "/h/r.pdf", ""}}), en);
    EXPECT_EQ(file.paragraphs.at(0), "Delete “r.pdf”? It will be moved to the Trash.");
    EXPECT_EQ(file.rows.at(0).alternate.kind, Kind::revealFile);

    // A message is sent by its button, never by a row.
    const Card draft = buildCard(
        core::PipelineOutcome::confirm(core::MessageDraft{.recipientQuery = "mom", .body = "hi"}),
        en);
    EXPECT_TRUE(draft.rows.empty());
    ASSERT_EQ(draft.buttons.size(), 1u);
    EXPECT_EQ(draft.buttons[0].action, (CardAction{Kind::confirm, "", 0}));
    EXPECT_EQ(draft.paragraphs.back(), "hi");
}

TEST(CardModel, ErrorsOfferARetryOnlyWhenRetryable) {
    for (const bool retryable : {false, true}) {
        const Card card = buildCard(
            core::PipelineOutcome::error(core::UserFacingError("Oops", "Try later", retryable)),
            en);
        EXPECT_EQ(card.tone, Card::Tone::error);
        EXPECT_EQ(card.title, "Oops");
        EXPECT_EQ(card.buttons.size(), retryable ? 1u : 0u);
        if (retryable) {
            EXPECT_EQ(card.buttons[0].action.kind, Kind::retry);
        }
    }
}

TEST(CardModel, TheChainCardShowsEachStepAndTheProgress) {
    std::vector<app::ChainStepState> steps{
        {0, "2+2", core::PipelineOutcome::result(Result::Calculation{"4"})},
        {1, "open x", core::PipelineOutcome::error(core::UserFacingError("No such app"))},
        {2, "weather", std::nullopt}};
    Card card = buildChainCard(steps, en);
    EXPECT_EQ(card.subtitle, en.chainProgressSubtitle(2, 3));
    ASSERT_EQ(card.rows.size(), 3u);
    EXPECT_EQ(card.rows[0].title, "1. 2+2");
    EXPECT_EQ(card.rows[0].detail, "4");
    EXPECT_EQ(card.rows[1].detail, "No such app");
    EXPECT_EQ(card.rows[2].detail, en.chainStepRunningLabel);
    steps[2].outcome = core::PipelineOutcome::result(Result::NeedsPermission{});
    card = buildChainCard(steps, en);
    EXPECT_EQ(card.subtitle, "3 actions done");
    EXPECT_EQ(card.rows[2].detail, en.chainStepNeedsPermissionLabel);
}

TEST(CardModel, ThinkingAndConfirmedRowsSayWhatHappened) {
    EXPECT_EQ(buildThinkingCard(std::nullopt, en).title, en.thinkingLabel);
    EXPECT_EQ(buildThinkingCard(0.426, en).subtitle, "43%");
    EXPECT_EQ(buildThinkingCard(0.426, en).title, en.modelDownloadingLabel);

    const struct {
        core::PipelineOutcome done;
        ConfirmedRow expected;
    } cases[] = {
        {core::PipelineOutcome::result(Result::FileDeleted{"r.pdf"}),
         {ConfirmedRow::State::done, "Moved “r.pdf” to the Trash"}},
        {core::PipelineOutcome::result(Result::NeedsPermission{core::PermissionKind::reminders}),
         {ConfirmedRow::State::needsPermission, en.chainStepNeedsPermissionLabel}},
        {core::PipelineOutcome::error(core::UserFacingError("Couldn't")),
         {ConfirmedRow::State::failed, "Couldn't"}},
        {core::PipelineOutcome::result(Result::MessageSent{{.recipientQuery = "Mom"}}),
         {ConfirmedRow::State::done, "✓ Delivered to Mom"}},
    };
    for (const auto& c : cases) EXPECT_EQ(describeConfirmed(c.done, en), c.expected);
}

}  // namespace
}  // namespace nuvrel::panel
