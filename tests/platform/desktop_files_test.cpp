// The live file search, deletion checks and applications of a Linux desktop, on real files in
// a temporary home.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <condition_variable>
#include <fstream>
#include <mutex>
#include <thread>

#include "base/files.h"
#include "core/localized_strings.h"
#include "core/user_facing_error.h"
#include "desktop/delete_file_capability.h"
#include "desktop/finder_search_capability.h"
#include "platform/linux/desktop_applications.h"
#include "platform/linux/file_walk_search.h"
#include "platform/linux/tracker_file_search.h"
#include "support/bus_stand_in.h"
#include "support/environment_override.h"
#include "support/pdf_writer.h"
#include "support/private_bus.h"
#include "support/recording_sink.h"
#include "support/temporary_home.h"

namespace nuvrel::platform {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

void touch(const fs::path& file, std::string_view text = "x") {
    fs::create_directories(file.parent_path());
    std::ofstream(file) << text;
}

// A multiset, so that a file found twice (through a link) shows.
std::multiset<std::string> names(const core::CapabilityResult& result) {
    std::multiset<std::string> found;
    if (const auto* files = result.get<core::CapabilityResult::Files>()) {
        for (const auto& hit : files->hits) found.insert(hit.name);
    }
    return found;
}

TEST(FileWalkSearch, FindsFilesOfEveryScriptOnceAndSkipsWhatItMust) {
    test::TemporaryHome home;
    const fs::path& h = home.path();
    for (const char* file :
         {"Documents/invoice-march.pdf", "Documents/보고서.pdf", "Desktop/报告.txt",
          "Downloads/レポート.PDF", "Documents/deep/a/b/c/-dash.pdf", "Documents/line\nbreak.pdf",
          "Documents/mypdf", ".cache/hidden.pdf", "code/node_modules/lib.pdf",
          "Documents/.secret/s.pdf"})
        touch(h / file);
    touch(h / "Documents" / "bad\xff.pdf");
    // Typed by content where the name tells no type, and only there.
    test::writePdf(h / "Documents/scan-0042", {{{.text = "invoice"}}});
    test::writePdf(h / "Documents/pdf-as-notes.txt", {{{.text = "notes"}}});
    touch(h / "Documents/invoice-draft", "plain words, no pdf");
    // Generated bulk, and a loop back to the home folder.
    for (int i = 0; i < 300; ++i)
        touch(h / "Documents/bulk" / std::to_string(i % 7) /
              ("note-" + std::to_string(i) + ".txt"));
    fs::create_directory_symlink(h, h / "Documents/loop");
    const fs::path old = h / "Documents/old-report.pdf";
    touch(old);
    const timespec times[2] = {{1'500'000'000, 0}, {1'500'000'000, 0}};
    ASSERT_EQ(::utimensat(AT_FDCWD, old.c_str(), times, 0), 0);

    desktop::FinderSearchCapability finder;
    finder.services = liveFileServices(h);
    finder.maxResults = 100;
    EXPECT_EQ(
        names(finder.execute(core::FinderQuery{.fileType = "pdf"})),
        (std::multiset<std::string>{"invoice-march.pdf", "보고서.pdf", "レポート.PDF", "-dash.pdf",
                                    "line\nbreak.pdf", "old-report.pdf", "scan-0042"}));
    EXPECT_EQ(names(finder.execute(core::FinderQuery{.keyword = "报告"})),
              std::multiset<std::string>{"报告.txt"});
    EXPECT_EQ(names(finder.execute(
                  core::FinderQuery{.keyword = "REPORT", .dateRange = "recent_30_days"})),
              std::multiset<std::string>{});
    EXPECT_EQ(names(finder.execute(core::FinderQuery{.keyword = "report"})),
              std::multiset<std::string>{"old-report.pdf"});
    const auto notes =
        finder.execute(core::FinderQuery{.keyword = "note-", .location = "documents"});
    EXPECT_EQ(names(notes).size(), 100u);

    // Nothing gathered before the budget is spent is the time-out card.
    try {
        liveWalkMetadataQuery("kMDItemFSName CONTAINS[cd] 'zzz'", {h.string()}, 0,
                              core::AppLanguage::en, h);
        ADD_FAILURE() << "no time-out";
    } catch (const core::UserFacingError& error) {
        EXPECT_EQ(
            error.message,
            core::LocalizedStrings::strings(core::AppLanguage::en).finderSearchTimedOutMessage);
    }
}

TEST(FileIndexSearch, AnAbsentOrSilentIndexLeavesTheSearchToTheWalk) {
    test::TemporaryHome home;
    const fs::path& h = home.path();
    for (const char* file : {"Documents/invoice-march.pdf", "Documents/invoice-notes.txt",
                             "Desktop/invoice.pdf", "Documents/.old/invoice-2019.pdf"})
        touch(h / file);
    test::PrivateBus bus;
    const auto session = SessionBus::connect();
    ASSERT_TRUE(session);
    const std::string predicate =
        "(kMDItemFSName CONTAINS[cd] 'invoice') && (kMDItemFSName ENDSWITH[cd] 'pdf')";
    const std::vector<std::string> scope{h.string()};
    const auto walked = liveWalkMetadataQuery(predicate, scope, 3, core::AppLanguage::en, h);
    std::multiset<std::string> walkedNames;
    for (const auto& item : walked) walkedNames.insert(*item.fsName);
    EXPECT_EQ(walkedNames, (std::multiset<std::string>{"invoice-march.pdf", "invoice.pdf"}));
    const auto search = liveFileServices(h, [session] { return session; }).runMetadataQuery;

    EXPECT_FALSE(trackerMetadataQuery(session->connection(), predicate, scope, 1));
    EXPECT_EQ(search(predicate, scope, 3, core::AppLanguage::en), walked);

    // A miner that takes the query and never answers is given up at the time-out.
    std::mutex mutex;
    std::condition_variable released;
    bool done = false;
    std::vector<std::string> calls;
    {
        const test::BusStandIn silent(
            bus.address, "org.freedesktop.Tracker3.Miner.Files",
            {{"/org/freedesktop/Tracker3/Endpoint",
              "<node><interface name='org.freedesktop.Tracker3.Endpoint'><method name='Query'>"
              "<arg type='s' direction='in'/><arg type='h' direction='in'/>"
              "<arg type='a{sv}' direction='in'/><arg type='as' direction='out'/>"
              "</method></interface></node>"}},
            [&](const std::string&, const std::string& method, GVariant*) -> GVariant* {
                std::unique_lock lock(mutex);
                calls.push_back(method);
                released.wait_for(lock, 20s, [&] { return done; });
                throw std::runtime_error("late");
            });
        const auto start = std::chrono::steady_clock::now();
        EXPECT_FALSE(trackerMetadataQuery(session->connection(), predicate, scope, 0.3));
        EXPECT_LT(std::chrono::steady_clock::now() - start, 10s);
        EXPECT_EQ(search(predicate, scope, 3, core::AppLanguage::en), walked);
        const std::lock_guard lock(mutex);
        done = true;
        released.notify_all();
    }
    // The index was asked (the second query may still be queued when the miner goes).
    ASSERT_FALSE(calls.empty());
    EXPECT_EQ(calls.front(), "Query");
}

TEST(FileWalkSearch, DeletionRefusesAReplacedFileAndALinkOutOfHome) {
    test::TemporaryHome home;
    const fs::path& h = home.path();
    const fs::path outside = h.parent_path() / (h.filename().string() + "-outside");
    fs::create_directories(outside);
    touch(outside / "kept.txt");
    fs::create_directories(h / "Desktop");
    fs::create_directory_symlink(outside, h / "Desktop/elsewhere");
    touch(h / "Desktop/report.pdf");

    std::vector<fs::path> trashed;
    desktop::FileServices services = liveFileServices(h);
    services.proposals = std::make_shared<desktop::DeletionProposals>();
    services.moveToTrash = [&](const fs::path& file) { trashed.push_back(file); };
    const desktop::DeleteFileCapability capability{core::AppLanguage::en, services};

    const auto shown = capability.findCandidate({"report.pdf", "desktop"}, 3.0);
    const std::string path = shown.get<core::CapabilityResult::DeleteFileConfirmation>()->file.path;
    // Replaced after the user saw it: another file under the same name.
    base::writeFileAtomically(h / "Desktop/report.pdf", "other");
    EXPECT_THROW(capability.confirmDelete(path), core::UserFacingError);
    EXPECT_TRUE(trashed.empty());

    const auto again = capability.findCandidate({"report.pdf", "desktop"}, 3.0);
    EXPECT_TRUE(capability.confirmDelete(path).is<core::CapabilityResult::FileDeleted>());
    EXPECT_EQ(trashed, std::vector<fs::path>{fs::canonical(path)});

    // A name shown through a link to a folder outside the home folder.
    const std::string linked = (h / "Desktop/elsewhere/kept.txt").string();
    services.proposals->remember(linked, *services.identify(linked));
    EXPECT_THROW(capability.confirmDelete(linked), core::UserFacingError);
    EXPECT_EQ(trashed.size(), 1u);
    fs::remove_all(outside);
}

void entry(const fs::path& file, const std::string& body) {
    base::writeFileAtomically(file, "[Desktop Entry]\nType=Application\n" + body);
}

TEST(DesktopApplications, IndexesShownEntriesWithLocalNamesAndLaunchesThem) {
    test::TemporaryHome home;
    const fs::path system = home.path() / "system";
    test::EnvironmentOverride dataDirs("XDG_DATA_DIRS", system.c_str());
    const fs::path marker = home.path() / "launched";
    entry(system / "applications/marker.desktop",
          "Name=Marker Tool\nName[ko]=마커 도구\nName[ja]=マーカー\nExec=sh -c \"echo ok > " +
              marker.string() + "\"\n");
    entry(system / "applications/vendor/nested.desktop", "Name=Nested\nExec=true\n");
    entry(system / "applications/hidden.desktop", "Name=Hidden\nHidden=true\nExec=true\n");
    entry(system / "applications/quiet.desktop", "Name=Quiet\nNoDisplay=true\nExec=true\n");
    base::writeFileAtomically(system / "applications/broken.desktop", "[Desktop Entry\nName=");
    // The user's own entry of the same id wins.
    entry(home.path() / ".local/share/applications/vendor-nested.desktop",
          "Name=Nested Mine\nExec=true\n");

    test::RecordedDiagnostics recorded;
    DesktopApplications catalog(recorded.diagnostics, 0ms);
    const auto index = catalog.index(core::AppLanguage::ko);
    std::set<std::string> shown;
    for (const auto& app : index->apps())
        shown.insert(app.displayName + "/" + app.localizedDisplayName.value_or("-"));
    EXPECT_EQ(shown, (std::set<std::string>{"Marker Tool/마커 도구", "Nested Mine/-"}));
    EXPECT_NE(recorded.sink->text().find("broken.desktop"), std::string::npos);
    EXPECT_EQ(catalog.index(core::AppLanguage::ja)->bestMatch("マーカー", true)->displayName,
              "Marker Tool");

    catalog.open(*index->bestMatch("마커 도구", true));
    for (int i = 0; i < 100 && base::readFile(marker) != "ok\n"; ++i)
        std::this_thread::sleep_for(50ms);
    EXPECT_EQ(base::readFile(marker), "ok\n");

    entry(system / "applications/later.desktop", "Name=Later\nExec=true\n");
    EXPECT_TRUE(catalog.index(core::AppLanguage::en)->bestMatch("later", false));
}

}  // namespace
}  // namespace nuvrel::platform
