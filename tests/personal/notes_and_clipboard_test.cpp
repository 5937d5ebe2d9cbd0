#include <gtest/gtest.h>

#include "core/localized_strings.h"
#include "core/user_facing_error.h"
#include "personal/clipboard_history_fast_path.h"
#include "personal/clipboard_history_store.h"
#include "personal/notes_capability.h"
#include "support/recording_sink.h"

namespace nuvrel::personal {
namespace {

TEST(NotesFastPaths, ReadTheContentOrTheKeyword) {
    const std::pair<const char*, const char*> notes[] = {
        {"메모해줘: 우유 사기", "우유 사기"},
        {"Take a note: Buy Milk", "Buy Milk"},
        {"TAKE A NOTE: x", "x"},
        {"メモ：牛乳", "牛乳"},
        {"메모해줘:", ""},
        {"우유 사기 메모해줘", "우유 사기"},
        {"회의 내용을 메모에다가 좀 적어줘", "회의 내용"},
    };
    for (const auto& [query, content] : notes) {
        const auto candidate = NotesFastPath::match(query);
        ASSERT_TRUE(candidate) << query;
        EXPECT_EQ(candidate->content, content) << query;
    }
    for (const char* nothing : {"메모 앱 열어줘", "ＭＥＭＯ: x", "take a note", "  "})
        EXPECT_FALSE(NotesFastPath::match(nothing)) << nothing;

    EXPECT_EQ(NoteDeleteFastPath::match("delete the note about milk")->keyword, "milk");
    EXPECT_EQ(NoteDeleteFastPath::match("우유 메모 삭제해줘")->keyword, "우유");
    for (const char* nothing : {"메모 삭제", "cancel the milk note", "delete milk"})
        EXPECT_FALSE(NoteDeleteFastPath::match(nothing)) << nothing;

    for (const char* phrase : {"clipboard", "Show Clipboard History", "클립보드!", "剪贴板历史"})
        EXPECT_TRUE(ClipboardHistoryFastPath::match(phrase)) << phrase;
    EXPECT_FALSE(ClipboardHistoryFastPath::match("clipboard manager app"));
}

// Notes in memory; `failing` makes every call throw as an unwritable folder would.
class MemoryNotes : public NotesStore {
public:
    std::vector<std::string> created;
    std::vector<core::NoteListItem> notes;
    bool failing = false;
    void create(const std::string& content) override {
        if (failing) throw NotesStoreError("cannot write the notes folder");
        created.push_back(content);
    }
    std::vector<core::NoteListItem> notesMatching(std::string_view) override {
        if (failing) throw NotesStoreError("cannot read the notes folder");
        return notes;
    }
    bool remove(const std::string& identifier) override {
        return std::erase_if(notes,
                             [&](const auto& note) { return note.identifier == identifier; });
    }
};

TEST(NotesCapability, SavesListsAtMostThirtyAndReportsFailuresWithoutTheText) {
    test::RecordedDiagnostics recorded;
    auto store = std::make_shared<MemoryNotes>();
    const NotesCapability notes{core::AppLanguage::en, store, recorded.diagnostics};
    const auto& strings = core::LocalizedStrings::en();

    EXPECT_EQ(notes.execute({"  buy milk\n"}).get<core::CapabilityResult::NoteSaved>()->content,
              "buy milk");
    EXPECT_EQ(store->created, std::vector<std::string>{"buy milk"});
    try {
        notes.execute({" \n"});
        FAIL();
    } catch (const core::UserFacingError& error) {
        EXPECT_EQ(error.message, strings.missingSlotMessage(strings.slotNameContent));
    }

    EXPECT_FALSE(notes.findCandidates("milk"));
    for (int i = 0; i < 31; ++i)
        store->notes.push_back({"milk " + std::to_string(i), std::to_string(i) + ".md"});
    const auto card = notes.findCandidates("milk");
    ASSERT_TRUE(card);
    const auto& rows = card->get<core::CapabilityResult::NoteDeleteConfirmation>()->notes;
    ASSERT_EQ(rows.size(), 30u);
    EXPECT_EQ(rows.front().identifier, "0.md");
    const auto deletedTitle = [&] {
        return notes.confirmDelete("0.md", "milk 0")
            .get<core::CapabilityResult::NoteDeleted>()
            ->title;
    };
    EXPECT_EQ(deletedTitle(), "milk 0");
    EXPECT_EQ(deletedTitle(), "");

    store->failing = true;
    EXPECT_FALSE(notes.findCandidates("milk"));
    try {
        notes.execute({"secret plans"});
        FAIL();
    } catch (const core::UserFacingError& error) {
        EXPECT_EQ(error.message, strings.noteSaveFailedMessage);
        EXPECT_TRUE(error.retryable);
    }
    EXPECT_NE(recorded.sink->text().find("note.create failure"), std::string::npos);
    EXPECT_EQ(recorded.sink->text().find("secret"), std::string::npos);
}

TEST(ClipboardHistoryStore, KeepsThirtyRecentDistinctTextsNewestFirst) {
    auto now = std::chrono::system_clock::time_point(std::chrono::hours(1000));
    std::optional<std::string> file;
    ClipboardHistoryStore store(
        [&] { return now; },
        ClipboardHistoryStore::Persistence{
            [&] { return file; }, [&](std::string_view bytes) { file = std::string(bytes); }});
    const auto copy = [&](const char* text, std::vector<std::string> types = {}) {
        now += std::chrono::seconds(1);
        store.record(text, types);
    };
    copy("A");
    copy("B");
    copy(" A\n");
    copy("A");
    const auto lastCopyOfA = now;
    copy("   ");
    copy("pw", {"public.utf8-plain-text", "org.nspasteboard.ConcealedType"});
    EXPECT_EQ(store.recentEntries(), (std::vector<std::string>{"A", "B"}));
    // A counts from its last copy, B from its only one; exactly 8 hours old still shows.
    now = lastCopyOfA + ClipboardHistoryStore::retentionInterval;
    EXPECT_EQ(store.recentEntries(), (std::vector<std::string>{"A"}));
    now += std::chrono::seconds(1);
    EXPECT_TRUE(store.recentEntries().empty());

    for (int i = 0; i < 31; ++i) copy(std::to_string(i).c_str());
    const auto entries = store.recentEntries();
    ASSERT_EQ(entries.size(), 30u);
    EXPECT_EQ(entries.front(), "30");
    EXPECT_EQ(entries.back(), "1");
    // Another process reads the same file.
    ClipboardHistoryStore reader(
        [&] { return now; },
        ClipboardHistoryStore::Persistence{[&] { return file; }, [](std::string_view) {}});
    EXPECT_EQ(reader.recentEntries(), entries);
    const std::string recent =
        std::to_string(std::chrono::duration<double>(now.time_since_epoch()).count());
    const auto entry = [&](const char* text) {
        return "{\"text\":\"" + std::string(text) + "\",\"copiedAt\":" + recent + "}";
    };
    // An edited file: a blank text is left out, a repeated one shown once.
    file = "{\"entries\":[" + entry("x") + "," + entry(" ") + "," + entry("x") + "]}";
    EXPECT_EQ(reader.recentEntries(), std::vector<std::string>{"x"});
    // A time beyond what the clock holds is damage too, beside a readable entry.
    for (const std::string& corrupt :
         std::vector<std::string>{"", "{\"entries\":[{\"text\":1}]}", "[1,2", "null",
                                  "{\"entries\":[{\"text\":\"x\",\"copiedAt\":" + recent +
                                      "},{\"text\":\"y\",\"copiedAt\":1.8e19}]}"}) {
        file = corrupt;
        EXPECT_TRUE(reader.recentEntries().empty()) << corrupt;
    }
}

}  // namespace
}  // namespace nuvrel::personal
