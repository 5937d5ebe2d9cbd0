#include <benchmark/benchmark.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "personal/clipboard_history_fast_path.h"
#include "personal/message_send_capability.h"
#include "personal/notes_fast_path.h"
#include "platform/linux/vcard_folder.h"

namespace {

using namespace nuvrel;
namespace fs = std::filesystem;

void BM_NotesFastPath(benchmark::State& state, const char* text) {
    for (auto _ : state) benchmark::DoNotOptimize(personal::NotesFastPath::match(text));
}
BENCHMARK_CAPTURE(BM_NotesFastPath, colon, "take a note: buy milk");
BENCHMARK_CAPTURE(BM_NotesFastPath, korean, "회의 내용을 메모에다가 좀 적어줘");
BENCHMARK_CAPTURE(BM_NotesFastPath, miss, "what's the weather in Seoul tomorrow");

void BM_NoteDeleteFastPath(benchmark::State& state, const char* text) {
    for (auto _ : state) benchmark::DoNotOptimize(personal::NoteDeleteFastPath::match(text));
}
BENCHMARK_CAPTURE(BM_NoteDeleteFastPath, english, "delete the note about milk");
BENCHMARK_CAPTURE(BM_NoteDeleteFastPath, miss, "what's the weather in Seoul tomorrow");

void BM_ClipboardHistoryFastPath(benchmark::State& state, const char* text) {
    for (auto _ : state) benchmark::DoNotOptimize(personal::ClipboardHistoryFastPath::match(text));
}
BENCHMARK_CAPTURE(BM_ClipboardHistoryFastPath, hit, "클립보드 기록 보여줘");
BENCHMARK_CAPTURE(BM_ClipboardHistoryFastPath, miss, "what's the weather in Seoul tomorrow");

// 2,000 vCards in khard's layout, one file each, written once per process.
const fs::path& generatedContacts() {
    static const fs::path folder = [] {
        const fs::path made =
            fs::temp_directory_path() / ("nuvrel-bench-contacts-" + std::to_string(::getpid()));
        fs::create_directories(made);
        for (int i = 0; i < 2000; ++i) {
            std::ofstream(made / ("c" + std::to_string(i) + ".vcf"))
                << "BEGIN:VCARD\nVERSION:3.0\nFN:Person " << i << "\nN:" << i
                << ";Person;;;\nNICKNAME:p" << i << "\nTEL;TYPE=cell:+82-10-0000-" << i
                << "\nEMAIL:person" << i << "@example.org\nEND:VCARD\n";
        }
        return made;
    }();
    return folder;
}

personal::MessageSendCapability messagesOver(std::shared_ptr<platform::VCardFolder> folder) {
    return personal::MessageSendCapability(core::AppLanguage::en, std::move(folder), nullptr,
                                           base::Diagnostics());
}

void BM_ResolveRecipientCold(benchmark::State& state) {
    const fs::path& folder = generatedContacts();
    for (auto _ : state) {
        auto messages =
            messagesOver(std::make_shared<platform::VCardFolder>(folder, base::Diagnostics()));
        benchmark::DoNotOptimize(
            messages.resolveRecipient("Person 1234", core::MessageDraft::Channel::sms));
    }
}
BENCHMARK(BM_ResolveRecipientCold)->Unit(benchmark::kMillisecond);

void BM_ResolveRecipientCached(benchmark::State& state) {
    auto messages = messagesOver(
        std::make_shared<platform::VCardFolder>(generatedContacts(), base::Diagnostics()));
    messages.resolveRecipient("warm", core::MessageDraft::Channel::sms);
    for (auto _ : state)
        benchmark::DoNotOptimize(
            messages.resolveRecipient("Person 1234", core::MessageDraft::Channel::sms));
}
BENCHMARK(BM_ResolveRecipientCached)->Unit(benchmark::kMicrosecond);

}  // namespace
