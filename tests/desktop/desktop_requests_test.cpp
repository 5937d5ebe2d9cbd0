// Deleting a file and launching an application: what the fast paths take from a request, the
// two steps of a deletion, and the ranking of installed applications.
#include <gtest/gtest.h>

#include <random>

#include "core/localized_strings.h"
#include "core/user_facing_error.h"
#include "desktop/app_launch_fast_path.h"
#include "desktop/application_index.h"
#include "desktop/delete_file_capability.h"
#include "desktop/open_url_fast_path.h"

namespace nuvrel::desktop {
namespace {

using Candidate = DeleteFileFastPath::Candidate;

TEST(DeleteFileFastPath, FindsTheNameAndTheDesktop) {
    const struct {
        const char* query;
        std::optional<Candidate> candidate;
    } cases[] = {
        {"delete report.pdf on the desktop", Candidate{"report.pdf", "desktop"}},
        {"Remove My Notes.txt From My Desktop.", Candidate{"My Notes.txt", "desktop"}},
        {"trash old", Candidate{"old", std::nullopt}},
        {"delete ", std::nullopt},
        {"delete on the desktop", Candidate{"on the desktop", std::nullopt}},
        {"바탕화면의 보고서.pdf를 삭제해줘", Candidate{"보고서.pdf", "desktop"}},
        {"보고서 삭제", std::nullopt},
        {"보고서.pdf 삭제", Candidate{"보고서.pdf", std::nullopt}},
        {"보고서 삭제해줘", Candidate{"보고서", std::nullopt}},
        {"지워줘", std::nullopt},
        {"find report.pdf", std::nullopt},
    };
    for (const auto& c : cases)
        EXPECT_EQ(DeleteFileFastPath::match(c.query), c.candidate) << c.query;
}

// A disk of one file whose identity the test changes.
struct OneFile {
    std::string path = "/h/Desktop/report.pdf";
    std::optional<FileIdentity> identity = FileIdentity{path, 1, 2, 3, 4};
    std::vector<std::string> trashed;
    bool trashFails = false;

    FileServices services() {
        FileServices services;
        services.home = "/h";
        services.proposals = std::make_shared<DeletionProposals>();
        services.runMetadataQuery = [this](const std::string&, const std::vector<std::string>&,
                                           double, core::AppLanguage) {
            return std::vector<MetadataItem>{{path, "report.pdf", std::nullopt}};
        };
        services.canListDirectory = [](const std::filesystem::path&) { return true; };
        services.identify = [this](const std::filesystem::path&) { return identity; };
        services.moveToTrash = [this](const std::filesystem::path& file) {
            if (trashFails) throw std::runtime_error("no Trash");
            trashed.push_back(file);
        };
        return services;
    }
};

TEST(DeleteFileCapability, OnlyTheFileShownGoesToTheTrash) {
    const core::UserFacingError refused(
        core::LocalizedStrings::strings(core::AppLanguage::en).deleteFileFailedMessage);
    const struct {
        const char* what;
        bool propose;
        std::function<void(OneFile&)> change;
        std::optional<std::string> deletedName;  // nothing: refused
        bool trashed;
    } cases[] = {
        {"unchanged", true, [](OneFile&) {}, "report.pdf", true},
        {"never proposed", false, [](OneFile&) {}, std::nullopt, false},
        {"replaced", true, [](OneFile& f) { f.identity->inode = 9; }, std::nullopt, false},
        {"rewritten", true, [](OneFile& f) { f.identity->modifiedNanoseconds = 5; }, std::nullopt,
         false},
        {"gone", true, [](OneFile& f) { f.identity.reset(); }, "", false},
        {"trash refuses", true, [](OneFile& f) { f.trashFails = true; }, std::nullopt, false},
    };
    for (const auto& c : cases) {
        OneFile disk;
        const DeleteFileCapability capability{core::AppLanguage::en, disk.services()};
        if (c.propose) {
            const auto shown = capability.findCandidate({"report", "desktop"}, 3.0);
            ASSERT_EQ(shown.get<core::CapabilityResult::DeleteFileConfirmation>()->file.path,
                      disk.path);
        }
        c.change(disk);
        if (c.deletedName) {
            EXPECT_EQ(
                *capability.confirmDelete(disk.path).get<core::CapabilityResult::FileDeleted>(),
                core::CapabilityResult::FileDeleted{*c.deletedName})
                << c.what;
        } else {
            try {
                capability.confirmDelete(disk.path);
                ADD_FAILURE() << c.what << ": deleted";
            } catch (const core::UserFacingError& error) {
                EXPECT_EQ(error, refused) << c.what;
            }
        }
        EXPECT_EQ(disk.trashed.size(), c.trashed ? 1u : 0u) << c.what;
    }
}

TEST(DeleteFileCapability, RefusesAFileOutsideTheHomeFolder) {
    OneFile disk;
    disk.path = "/h/Desktop/link/passwd";
    disk.identity = FileIdentity{"/etc/passwd", 1, 2, 3, 4};
    const DeleteFileCapability capability{core::AppLanguage::en, disk.services()};
    (void)capability.findCandidate({"passwd", std::nullopt}, 3.0);
    EXPECT_THROW(capability.confirmDelete(disk.path), core::UserFacingError);
    EXPECT_TRUE(disk.trashed.empty());
}

TEST(AppLaunchFastPath, FindsTheNameBehindEachLaunchWord) {
    using Match = AppLaunchFastPath::Match;
    const struct {
        const char* query;
        std::optional<Match> match;
    } cases[] = {
        {"open the chrome app", Match{"chrome", true}},
        {"Launch Visual Studio Code!", Match{"Visual Studio Code", true}},
        {"크롬 켜줘요", Match{"크롬", true}},
        {"카카오톡을 실행해줘", Match{"카카오톡", true}},
        {"한글 앱 켜", Match{"한글", true}},
        {"打开微信", Match{"微信", true}},
        {"LINEを起動して", Match{"LINE", true}},
        {"safari", Match{"safari", false}},
        {"open", std::nullopt},
        {"켜줘", std::nullopt},
        {"open the app", std::nullopt},
        {"hello world again today", std::nullopt},
    };
    for (const auto& c : cases) EXPECT_EQ(AppLaunchFastPath::match(c.query), c.match) << c.query;
}

TEST(OpenURLFastPath, TakesAddressesWithKnownEndingsOrWww) {
    using URL = OpenURLFastPath::URLCandidate;
    const struct {
        const char* text;
        std::optional<URL> url;
    } cases[] = {
        {"github.com", URL{"https://github.com", "github.com"}},
        {"docs.example.io/guide", URL{"https://docs.example.io/guide", "docs.example.io"}},
        {"example.zz", std::nullopt},
        {"www.example.zz", URL{"https://www.example.zz", "www.example.zz"}},
        {"http://a.zz/x", URL{"http://a.zz/x", "a.zz"}},
        {"https://a.com/x y", std::nullopt},
        {"a..com", std::nullopt},
        {"report.pdf", std::nullopt},
    };
    for (const auto& c : cases) EXPECT_EQ(OpenURLFastPath::urlCandidate(c.text), c.url) << c.text;
}

InstalledApp app(std::string name, std::optional<std::string> localized = std::nullopt) {
    return {name, "/apps/" + name + ".desktop", std::move(localized)};
}

TEST(AppLaunchCapability, RanksInstalledApplicationsAndTheIndexAgrees) {
    const std::vector<InstalledApp> apps{
        app("Google Chrome"),
        app("Firefox"),
        app("Firefox Developer Edition"),
        app("Files", "파일"),
        app("hwpmac"),
        app("Visual Studio Code"),
        app("Vi"),
        app("Text Editor", "テキストエディター"),
        app("Editor"),
    };
    const ApplicationIndex index(apps);
    const struct {
        const char* candidate;
        std::optional<std::string> name;
    } cases[] = {
        {"chrome", "Google Chrome"},
        {"크롬", "Google Chrome"},
        {"한글", "hwpmac"},
        {"firefox", "Firefox"},
        {"fire", "Firefox"},
        {"파일", "Files"},
        {"テキストエディター", "Text Editor"},
        {"editor", "Editor"},
        {"studio code", "Visual Studio Code"},
        {"vim-extra", "Vi"},
        {"vi", "Vi"},
        {"fi", std::nullopt},
        {"code", "Visual Studio Code"},
        {"hello", std::nullopt},
    };
    for (const auto& c : cases) {
        const auto found = AppLaunchCapability::bestMatch(c.candidate, apps, false);
        EXPECT_EQ(found ? std::optional(found->displayName) : std::nullopt, c.name) << c.candidate;
        EXPECT_EQ(index.bestMatch(c.candidate, false), found) << c.candidate;
    }
    // Generated names that share words and beginnings: the index ranks as the plain scan.
    std::mt19937 random(7);
    const std::vector<std::string> words{"note", "notes", "no", "tab", "table", "mail", "노트"};
    std::vector<InstalledApp> many;
    for (int i = 0; i < 200; ++i) {
        std::string name;
        for (int w = 0; w <= static_cast<int>(random() % 3); ++w)
            name += (name.empty() ? "" : " ") + words[random() % words.size()];
        many.push_back(app(name));
    }
    const ApplicationIndex manyIndex(many);
    for (const char* candidate : {"note", "notes tab", "no", "table mail", "노트", "tabl"})
        EXPECT_EQ(manyIndex.bestMatch(candidate, true),
                  AppLaunchCapability::bestMatch(candidate, many, true))
            << candidate;
}

TEST(AppLaunchCapability, AnExplicitMissIsEmptyAndABareMissGoesOn) {
    const auto list = [] { return std::vector<InstalledApp>{app("Firefox")}; };
    std::vector<std::string> opened;
    const auto open = [&](const InstalledApp& a) { opened.push_back(a.displayName); };
    EXPECT_TRUE(AppLaunchCapability::execute("firefox", false, list, open)
                    ->is<core::CapabilityResult::AppLaunched>());
    EXPECT_TRUE(AppLaunchCapability::execute("gimp", true, list, open)
                    ->is<core::CapabilityResult::Empty>());
    EXPECT_FALSE(AppLaunchCapability::execute("gimp", false, list, open));
    EXPECT_EQ(opened, std::vector<std::string>{"Firefox"});
}

}  // namespace
}  // namespace nuvrel::desktop
