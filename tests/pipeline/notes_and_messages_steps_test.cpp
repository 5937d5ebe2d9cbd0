// The note, clipboard and message steps of the cascade and of routed dispatch, with real note
// files in a temporary home and an address book in memory.
#include <gtest/gtest.h>

#include "personal/message_send_capability.h"
#include "pipeline/pipeline_test_support.h"
#include "platform/linux/markdown_notes_folder.h"
#include "support/temporary_home.h"

namespace nuvrel::pipeline {
namespace {

using core::IntentID;
using testing::reply;
using testing::routerReply;
using Result = core::CapabilityResult;

class AddressBook : public personal::ContactStore, public personal::MessageSending {
public:
    bool hasAccess() override { return true; }
    std::vector<personal::Contact> contacts() override {
        return {{"Jamie Lee", "", "", "", {"+1 555 0100"}, {}},
                {"Jamie Park", "", "", "", {"+1 555 0199"}, {}},
                {"Sam", "", "", "Sammy", {"+1 555 0123"}, {}}};
    }
    void sendText(const std::string& handle, const std::string& body) override {
        sent.push_back(handle + ": " + body);
    }
    void composeMail(const std::string&, const std::string&) override {}
    std::vector<std::string> sent;
};

TEST(NotesAndMessagesSteps, NotesClipboardAndConfirmedMessagesGoThroughThePipeline) {
    test::TemporaryHome home;
    auto book = std::make_shared<AddressBook>();
    const auto pipelineWith = [&](std::vector<testing::ScriptedBackend::Step> script) {
        auto made = testing::pipelineWith(
            std::move(script), {std::make_shared<testing::FakeCapability>(IntentID::webSearch),
                                std::make_shared<personal::MessageSendCapability>(
                                    core::AppLanguage::en, book, book, base::Diagnostics())});
        made.pipeline.notesCapability.store = std::make_shared<platform::MarkdownNotesFolder>(
            home.path() / "notes", base::Diagnostics());
        made.pipeline.clipboardHistoryStore = std::make_shared<personal::ClipboardHistoryStore>();
        made.pipeline.clipboardHistoryStore->record("copied", {});
        return made;
    };
    const auto run = [&](const char* query, IntentID intent = IntentID::unknown,
                         nlohmann::json slots = nlohmann::json::object()) {
        auto made = pipelineWith({reply(routerReply(intent, 0.9, std::move(slots)))});
        return std::pair(made.pipeline.run(query), std::move(made));
    };

    EXPECT_EQ(run("take a note: buy milk").first.asResult()->get<Result::NoteSaved>()->content,
              "buy milk");
    EXPECT_EQ(run("note that down", IntentID::noteCreate, {{"content", "call mom"}})
                  .first.asResult()
                  ->get<Result::NoteSaved>()
                  ->content,
              "call mom");
    EXPECT_EQ(core::caseName(*run("delete the note about eggs").first.asResult()), "webAnswer");
    auto [shown, made] = run("delete the note about milk");
    ASSERT_TRUE(shown.asResult()->get<Result::NoteDeleteConfirmation>());
    const auto deleted = made.pipeline.carryOutConfirmed(shown, 0);
    EXPECT_EQ(deleted->asResult()->get<Result::NoteDeleted>()->title, "buy milk");
    EXPECT_FALSE(std::filesystem::exists(home.path() / "notes" / "buy milk.md"));
    EXPECT_EQ(run("Clipboard!").first.asResult()->get<Result::ClipboardHistory>()->entries,
              std::vector<std::string>{"copied"});

    // A draft is only shown; confirmed, it goes to the one contact the name means.
    const auto confirmSend = [&](const char* recipient) {
        auto [draft, sender] = run("text someone", IntentID::messageSend,
                                   {{"recipient", recipient}, {"body", "I'm running late"}});
        EXPECT_TRUE(draft.asConfirm()) << recipient;
        EXPECT_TRUE(book->sent.empty());
        return sender.pipeline.carryOutConfirmed(draft, 0);
    };
    const auto sent = confirmSend("sammy");
    EXPECT_EQ(sent->asResult()->get<Result::MessageSent>()->draft.resolvedName, "Sam");
    EXPECT_EQ(book->sent, std::vector<std::string>{"+1 555 0123: I'm running late"});
    book->sent.clear();
    EXPECT_EQ(confirmSend("Jamie")->asError()->message,
              "Several contacts match: Jamie Lee, Jamie Park");
    EXPECT_EQ(confirmSend("Nobody")->asError()->message, "Couldn't find this contact");
    EXPECT_TRUE(book->sent.empty());

    // Explained, the same sentences name their steps and leave the notes as they are.
    const auto explained = pipelineWith({}).pipeline;
    for (const auto& [query, step, json] :
         {std::tuple{"take a note: eggs", 13, R"({"content":"eggs"})"},
          {"delete the note about milk", 9, R"({"keyword":"milk"})"},
          {"clipboard", 18, "{}"}}) {
        const CascadeClaim claim = explained.explain(query);
        EXPECT_EQ(claim.step, step) << query;
        EXPECT_EQ(claim.value.dump(), json) << query;
    }
    EXPECT_FALSE(std::filesystem::exists(home.path() / "notes" / "eggs.md"));
}

}  // namespace
}  // namespace nuvrel::pipeline
