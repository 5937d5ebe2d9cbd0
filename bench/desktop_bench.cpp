#include <benchmark/benchmark.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "desktop/app_launch_fast_path.h"
#include "desktop/application_index.h"
#include "desktop/delete_file_fast_path.h"
#include "desktop/finder_search_fast_path.h"
#include "desktop/open_url_fast_path.h"
#include "desktop/system_command_fast_path.h"
#include "desktop/window_geometry.h"
#include "desktop/window_manage_fast_path.h"
#include "platform/linux/file_walk_search.h"

namespace {

using namespace nuvrel;

// A hit and a miss of each table: every query of the cascade that reaches these steps pays one.
void BM_SystemCommandFastPath(benchmark::State& state, const char* query) {
    for (auto _ : state) benchmark::DoNotOptimize(desktop::SystemCommandFastPath::match(query));
}
BENCHMARK_CAPTURE(BM_SystemCommandFastPath, hit, "Turn the volume up");
BENCHMARK_CAPTURE(BM_SystemCommandFastPath, korean, "스크린샷 찍어줘");
BENCHMARK_CAPTURE(BM_SystemCommandFastPath, miss, "what is the weather like in Seoul tomorrow");

void BM_WindowManageFastPath(benchmark::State& state, const char* query) {
    for (auto _ : state) benchmark::DoNotOptimize(desktop::WindowManageFastPath::match(query));
}
BENCHMARK_CAPTURE(BM_WindowManageFastPath, hit, "top right quarter");
BENCHMARK_CAPTURE(BM_WindowManageFastPath, korean, "창 다음 화면으로");
BENCHMARK_CAPTURE(BM_WindowManageFastPath, miss, "what is the weather like in Seoul tomorrow");

void BM_WindowGeometry(benchmark::State& state) {
    const desktop::Rect frame{0, 0, 2560, 1415};
    for (auto _ : state)
        for (const core::WindowAction action : core::allWindowActions)
            benchmark::DoNotOptimize(desktop::WindowGeometry::targetRect(action, frame));
}
BENCHMARK(BM_WindowGeometry);
namespace fs = std::filesystem;

// 500 applications with names of one to three words, some localised.
const desktop::ApplicationIndex& fiveHundredApps() {
    static const desktop::ApplicationIndex index = [] {
        const char* words[] = {"text",   "editor",   "office",   "mail",  "photo",
                               "music",  "terminal", "calendar", "notes", "studio",
                               "viewer", "manager",  "player"};
        std::vector<desktop::InstalledApp> apps;
        for (int i = 0; i < 500; ++i) {
            std::string name = words[i % 13];
            if (i % 3) name += std::string(" ") + words[(i / 13) % 13];
            name += " " + std::to_string(i);
            apps.push_back({name, "/usr/share/applications/app" + std::to_string(i) + ".desktop",
                            i % 5 ? std::nullopt : std::optional<std::string>("앱 " + name)});
        }
        return desktop::ApplicationIndex(std::move(apps));
    }();
    return index;
}

// The bare-name rule on a short query: the fast path, then the index.
void BM_BareNameLookup(benchmark::State& state, const char* query) {
    const auto& index = fiveHundredApps();
    for (auto _ : state) {
        const auto match = desktop::AppLaunchFastPath::match(query);
        benchmark::DoNotOptimize(index.bestMatch(match->candidateName, match->isExplicitTrigger));
    }
}
BENCHMARK_CAPTURE(BM_BareNameLookup, miss, "hello there");
BENCHMARK_CAPTURE(BM_BareNameLookup, hit, "terminal 7");
BENCHMARK_CAPTURE(BM_BareNameLookup, korean, "카카오톡");

template <class Match>
void BM_FastPath(benchmark::State& state, Match match, const char* query) {
    for (auto _ : state) benchmark::DoNotOptimize(match(query));
}
BENCHMARK_CAPTURE(BM_FastPath, finderSearch, desktop::FinderSearchFastPath::match,
                  "where is my invoice-march.pdf");
BENCHMARK_CAPTURE(BM_FastPath, finderSearchKorean, desktop::FinderSearchFastPath::match,
                  "보고서.pdf 찾아줘");
BENCHMARK_CAPTURE(BM_FastPath, deleteFile, desktop::DeleteFileFastPath::match,
                  "delete report.pdf on the desktop");
BENCHMARK_CAPTURE(BM_FastPath, deleteFileKorean, desktop::DeleteFileFastPath::match,
                  "바탕화면의 보고서.pdf를 삭제해줘");
BENCHMARK_CAPTURE(BM_FastPath, appLaunch, desktop::AppLaunchFastPath::match, "open firefox");
BENCHMARK_CAPTURE(BM_FastPath, appLaunchChinese, desktop::AppLaunchFastPath::match, "打开微信");
BENCHMARK_CAPTURE(BM_FastPath, openURL, desktop::OpenURLFastPath::urlCandidate, "github.com");

// Removes the generated tree when the process ends.
struct GeneratedTree {
    fs::path root;
    ~GeneratedTree() {
        std::error_code ignored;
        fs::remove_all(root, ignored);
    }
};

// 50,000 files in 500 folders, written once per process.
const fs::path& fiftyThousandFiles() {
    static const GeneratedTree tree{[] {
        const fs::path made =
            fs::temp_directory_path() / ("nuvrel-walk-bench-" + std::to_string(::getpid()));
        for (int folder = 0; folder < 500; ++folder) {
            const fs::path dir = made / "Documents" / std::to_string(folder / 50) /
                                 ("project-" + std::to_string(folder));
            fs::create_directories(dir);
            for (int file = 0; file < 100; ++file)
                std::ofstream(dir /
                              ("file-" + std::to_string(file) + (file % 2 ? ".txt" : ".pdf")));
        }
        return made;
    }()};
    return tree.root;
}

void BM_WalkSearch50000Files(benchmark::State& state) {
    const fs::path& home = fiftyThousandFiles();
    for (auto _ : state) {
        benchmark::DoNotOptimize(platform::liveWalkMetadataQuery(
            "(kMDItemFSName CONTAINS[cd] 'file-7') && (kMDItemFSName ENDSWITH[cd] 'pdf')",
            {home.string()}, 10.0, core::AppLanguage::en, home));
    }
    state.counters["files"] = 50'000;
}
BENCHMARK(BM_WalkSearch50000Files)->Unit(benchmark::kMillisecond)->UseRealTime();

// A type alone: every file of another type has its name looked up in shared MIME info.
void BM_WalkTypeSearch50000Files(benchmark::State& state) {
    const fs::path& home = fiftyThousandFiles();
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            platform::liveWalkMetadataQuery("(kMDItemFSName ENDSWITH[cd] 'pdf')", {home.string()},
                                            10.0, core::AppLanguage::en, home));
    }
    state.counters["files"] = 50'000;
}
BENCHMARK(BM_WalkTypeSearch50000Files)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
