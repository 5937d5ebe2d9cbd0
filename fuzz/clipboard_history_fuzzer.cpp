// The clipboard history file, however damaged or old: reading never throws, the history holds at
// most 30 texts, none blank, none twice, and after a copy the file reads back as the same
// history with the new text on top.

#include <chrono>

#include "fuzz_support.h"
#include "personal/clipboard_history_store.h"

using namespace nuvrel;
using Store = personal::ClipboardHistoryStore;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto now = Store::TimePoint(std::chrono::seconds(1'790'000'000));
    std::optional<std::string> file = std::string(fuzz::text(data, size));
    const Store::Persistence persistence{[&] { return file; },
                                         [&](std::string_view bytes) { file = bytes; }};
    Store store([&] { return now; }, persistence);

    const auto before = store.recentEntries();
    FUZZ_CHECK(before.size() <= Store::maxEntries);
    for (std::size_t i = 0; i < before.size(); ++i) {
        for (std::size_t j = i + 1; j < before.size(); ++j) FUZZ_CHECK(before[i] != before[j]);
    }

    store.record("fuzz copy", {});
    const auto after = Store([&] { return now; }, persistence).recentEntries();
    std::vector<std::string> expected{"fuzz copy"};
    for (const auto& text : before) {
        FUZZ_CHECK(!text.empty());
        if (text != "fuzz copy" && expected.size() < Store::maxEntries) expected.push_back(text);
    }
    FUZZ_CHECK(after == expected);
    return 0;
}
