// File search: the predicate text, its evaluation, the fast path and the capability's cleaning
// of what a search gives.
#include <gtest/gtest.h>

#include "core/localized_strings.h"
#include "core/user_facing_error.h"
#include "desktop/finder_query_builder.h"
#include "desktop/finder_search_capability.h"
#include "desktop/finder_search_fast_path.h"
#include "desktop/metadata_predicate.h"

namespace nuvrel::desktop {
namespace {

using namespace std::chrono;
using core::FinderQuery;

const personal::GregorianCalendar utc("UTC", "en_US");
// Wednesday 18 November 2026, 15:00 UTC; the week begins on Sunday the 15th.
const system_clock::time_point now = sys_days{2026y / 11 / 18} + 15h;

TEST(FinderQueryBuilder, BuildsThePredicateOfEachSlot) {
    const auto cast = [](const char* date) {
        return std::string("CAST(\"") + date + " +0000\", \"NSDate\")";
    };
    const std::string pdf = "kMDItemFSName ENDSWITH[cd] 'pdf'";
    const struct {
        FinderQuery query;
        std::string predicate;
    } cases[] = {
        {{.keyword = "   "}, "kMDItemFSName LIKE[cd] '*'"},
        {{.keyword = "Tom's \\ report\n  draft"},
         R"((kMDItemFSName CONTAINS[cd] 'Tom\'s \\ report draft'))"},
        {{.fileType = "pdf", .dateRange = "yesterday"},
         "(" + pdf + ") && (kMDItemContentModificationDate >= " + cast("2026-11-17 00:00:00") +
             " && kMDItemContentModificationDate < " + cast("2026-11-18 00:00:00") + ")"},
        {{.keyword = "q", .fileType = "presentation", .dateRange = "last_week"},
         "(kMDItemFSName CONTAINS[cd] 'q') && (kMDItemFSName ENDSWITH[cd] 'ppt' || "
         "kMDItemFSName ENDSWITH[cd] 'pptx' || kMDItemFSName ENDSWITH[cd] 'key') && "
         "(kMDItemContentModificationDate >= " +
             cast("2026-11-08 00:00:00") + " && kMDItemContentModificationDate < " +
             cast("2026-11-15 00:00:00") + ")"},
        {{.fileType = "folder", .dateRange = "last_year"},
         "(kMDItemContentType == 'public.folder') && (kMDItemContentModificationDate >= " +
             cast("2025-01-01 00:00:00") + " && kMDItemContentModificationDate < " +
             cast("2026-01-01 00:00:00") + ")"},
        {{.dateRange = "last_month"},
         "(kMDItemContentModificationDate >= " + cast("2026-10-01 00:00:00") +
             " && kMDItemContentModificationDate < " + cast("2026-11-01 00:00:00") + ")"},
        {{.dateRange = "recent_7_days"},
         "(kMDItemContentModificationDate >= " + cast("2026-11-11 00:00:00") + ")"},
        {{.keyword = "x", .dateRange = "next_week"}, "(kMDItemFSName CONTAINS[cd] 'x')"},
    };
    for (const auto& c : cases) {
        const auto built = FinderQueryBuilder::build(c.query, now, utc, "/home/u");
        EXPECT_EQ(built.predicateFormat, c.predicate);
        EXPECT_TRUE(built.scopeDirectories.empty());
    }
    EXPECT_EQ(FinderQueryBuilder::build({.fileType = "app", .location = "Applications"}, now, utc,
                                        "/home/u")
                  .scopeDirectories,
              std::vector<std::string>{"/Applications"});
    EXPECT_EQ(FinderQueryBuilder::scopeDirectory("trash", "/home/u"), "/home/u/.Trash");
    EXPECT_FALSE(FinderQueryBuilder::expectedExtensions("app"));
    EXPECT_EQ(FinderQueryBuilder::expectedExtensions("PDF")->size(), 1u);
}

TEST(FinderQueryBuilder, NoisyPathsAreHiddenBuildAndToolFolders) {
    for (const char* path : {"/h/node_modules/a.js", "/h/.config/x", "/h/p/build-debug/a.o",
                             "/h/p/DerivedData/x", "/h/.Trash/report.pdf"})
        EXPECT_TRUE(FinderQueryBuilder::isNoisyPath(path)) << path;
    for (const char* path : {"/h/Documents/builder/a.pdf", "/h/my.build.notes", "/h/a.git"})
        EXPECT_FALSE(FinderQueryBuilder::isNoisyPath(path)) << path;
}

TEST(MetadataPredicate, EvaluatesTheWrittenSubset) {
    const auto date = [](int day) { return system_clock::time_point(sys_days{2026y / 11 / day}); };
    const MetadataAttributes invoice{"Invoice-Café.PDF", "/h/Invoice-Café.PDF", "public.data",
                                     date(17)};
    const MetadataAttributes folder{"보고서", "/h/보고서", "public.folder", std::nullopt};
    const MetadataAttributes kana{"がっこう.txt", "/h/がっこう.txt", "public.data", date(1)};
    const struct {
        const char* predicate;
        bool invoice, folder, kana;
    } cases[] = {
        {"kMDItemFSName CONTAINS[cd] 'cafe'", true, false, false},
        {"kMDItemFSName CONTAINS[cd] '보고'", false, true, false},
        {"kMDItemFSName CONTAINS[cd] 'かっこ'", false, false, true},
        {"kMDItemFSName LIKE[cd] 'inv*.p?f'", true, false, false},
        {"kMDItemFSName LIKE[cd] '*'", true, true, true},
        {"kMDItemFSName ENDSWITH[cd] 'pdf' || kMDItemContentType == 'public.folder'", true, true,
         false},
        {"(kMDItemFSName ENDSWITH[cd] 'txt') && (kMDItemContentModificationDate >= "
         "CAST(\"2026-11-01 00:00:00 +0000\", \"NSDate\"))",
         false, false, true},
        {"kMDItemContentModificationDate >= CAST(\"2026-11-10 00:00:00 +0000\", \"NSDate\") && "
         "kMDItemContentModificationDate < CAST(\"2026-11-18 00:00:00 +0000\", \"NSDate\")",
         true, false, false},
        {"kMDItemFSName CONTAINS[cd] 'it\\'s'", false, false, false},
    };
    for (const auto& c : cases) {
        const auto predicate = MetadataPredicate::parse(c.predicate);
        ASSERT_TRUE(predicate) << c.predicate;
        EXPECT_EQ(predicate->matches(invoice), c.invoice) << c.predicate;
        EXPECT_EQ(predicate->matches(folder), c.folder) << c.predicate;
        EXPECT_EQ(predicate->matches(kana), c.kana) << c.predicate;
    }
    for (const char* broken :
         {"", "kMDItemFSName CONTAINS[cd] 'open", "kMDItemFSName ~ 'a'", "(kMDItemFSName == 'a'",
          "kMDItemPath == 'a' &&", "kMDItemContentModificationDate >= 'a'"})
        EXPECT_FALSE(MetadataPredicate::parse(broken)) << broken;
}

TEST(FinderSearchFastPath, TakesOnlyASingleFileLikeToken) {
    const struct {
        const char* query;
        std::optional<std::string> keyword;
    } cases[] = {
        {"find invoice", "invoice"},
        {"Find my Invoice-March.pdf", "Invoice-March.pdf"},
        {"where is my invoice-march.pdf?", std::nullopt},
        {"where is the report.pdf", "report.pdf"},
        {"where is invoice", std::nullopt},
        {"search for budget.xlsx", "budget.xlsx"},
        {"find two words", std::nullopt},
        {"find pdf", std::nullopt},
        {"find https://example.com", std::nullopt},
        {"find www.example.com", std::nullopt},
        {"find ", std::nullopt},
        {"보고서를 찾아줘", "보고서"},
        {"내 계약서.hwp 어디 있어", "계약서.hwp"},
        {"날씨 검색해줘", std::nullopt},
        {"문서 찾아줘", std::nullopt},
        {"어제 찾아봐", std::nullopt},
        {"open the door", std::nullopt},
    };
    for (const auto& c : cases)
        EXPECT_EQ(FinderSearchFastPath::match(c.query), c.keyword) << c.query;
}

struct FakeDisk {
    std::vector<MetadataItem> items;
    bool foldersReadable = true;
    std::vector<std::string> predicates;
    std::vector<std::vector<std::string>> scopes;

    FileServices services() {
        FileServices services;
        services.home = "/h";
        services.runMetadataQuery = [this](const std::string& predicate,
                                           const std::vector<std::string>& scope, double,
                                           core::AppLanguage) {
            predicates.push_back(predicate);
            scopes.push_back(scope);
            return items;
        };
        services.canListDirectory = [this](const std::filesystem::path&) {
            return foldersReadable;
        };
        return services;
    }
};

TEST(FinderSearchCapability, PlansFromVocabularySlotsOrTheWholeQuery) {
    const FinderSearchCapability finder;
    const core::Slots slots{{"keyword", core::SlotValue(" tax ")},
                            {"file_type", core::SlotValue("PDF")},
                            {"location", core::SlotValue("attic")},
                            {"date_range", core::SlotValue(3)}};
    EXPECT_EQ(finder.plan(slots, "q"),
              core::ActionPlan(FinderQuery{.keyword = "tax", .fileType = "pdf"}));
    EXPECT_EQ(finder.plan({{"location", core::SlotValue("moon")}}, "  tax forms \n"),
              core::ActionPlan(FinderQuery{.keyword = "tax forms"}));
}

TEST(FinderSearchCapability, KeepsTheNewestCleanHitsOfTheExpectedType) {
    const auto day = [](int d) { return system_clock::time_point(sys_days{2026y / 11 / d}) + 12h; };
    FakeDisk disk;
    disk.items = {
        {"/h/Documents/old.pdf", "old.pdf", day(1)},
        {"/h/Documents/mypdf", "mypdf", day(17)},
        {"/h/p/node_modules/new.pdf", "new.pdf", day(18)},
        {"/h/Desktop/undated.PDF", "undated.PDF", std::nullopt},
        {"/h/Desktop/newest.pdf", "newest.pdf", day(16)},
        {"/h/Desktop/nameless.pdf", std::nullopt, day(18)},
        {std::nullopt, "pathless.pdf", day(15)},
        {"/h/Documents/notes.txt", "notes.txt", day(18)},
    };
    FinderSearchCapability finder;
    finder.services = disk.services();
    finder.maxResults = 3;
    const auto result = finder.execute(FinderQuery{.fileType = "pdf", .location = "desktop"});
    const auto* files = result.get<core::CapabilityResult::Files>();
    ASSERT_TRUE(files);
    std::vector<std::string> names;
    for (const auto& hit : files->hits) names.push_back(hit.name + "|" + hit.modifiedDate);
    // The pathless item takes one of the three places and is then skipped.
    EXPECT_EQ(names, (std::vector<std::string>{"newest.pdf|Nov 16, 2026", "old.pdf|Nov 1, 2026"}));
    EXPECT_EQ(disk.scopes.back(), std::vector<std::string>{"/h/Desktop"});

    finder.maxResults = 8;
    const auto all = finder.execute(FinderQuery{.fileType = "pdf"});
    ASSERT_EQ(all.get<core::CapabilityResult::Files>()->hits.size(), 3u);
    EXPECT_EQ(all.get<core::CapabilityResult::Files>()->hits.back().name, "undated.PDF");
    EXPECT_EQ(disk.scopes.back(), std::vector<std::string>{"/h"});
}

TEST(FinderSearchCapability, NoHitIsEmptyUnlessNoUserFolderCanBeListed) {
    FakeDisk disk;
    disk.items = {{"/h/.hidden/a.pdf", "a.pdf", std::nullopt}};
    FinderSearchCapability finder;
    finder.services = disk.services();
    EXPECT_EQ(*finder.execute(FinderQuery{.keyword = "a"}).get<core::CapabilityResult::Empty>(),
              (core::CapabilityResult::Empty{core::IntentID::finderSearch, "a"}));
    disk.foldersReadable = false;
    EXPECT_TRUE(finder.execute(FinderQuery{.location = "trash"})
                    .is<core::CapabilityResult::NeedsPermission>());
}

}  // namespace
}  // namespace nuvrel::desktop
