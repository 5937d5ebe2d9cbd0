#pragma once
// The applications of this desktop: the .desktop entries of XDG_DATA_HOME and XDG_DATA_DIRS
// through GIO, hidden and NoDisplay entries left out, names in the interface language
// (Name[ko], Name[ja], Name[zh_CN]). The index is built once and rebuilt when an applications
// folder changes, looked at no more than once a second by default, so that a lookup stays in
// memory. Applications start as their entry's Exec line says; web addresses go to the default
// handler.
//
// Threading: safe from any thread; index() may block while the index is (re)built.

#include <chrono>
#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <vector>

#include "base/diagnostics.h"
#include "desktop/application_index.h"

namespace nuvrel::platform {

class DesktopApplications final : public desktop::ApplicationCatalog {
public:
    // The folders are looked at again once `refreshInterval` has passed since the last look.
    explicit DesktopApplications(
        base::Diagnostics diagnostics,
        std::chrono::milliseconds refreshInterval = std::chrono::seconds(1));

    std::shared_ptr<const desktop::ApplicationIndex> index(core::AppLanguage language) override;
    void open(const desktop::InstalledApp& app) override;
    void openURL(const std::string& url) override;

    // The applications folders, most important first: XDG_DATA_HOME's, then XDG_DATA_DIRS'.
    static std::vector<std::filesystem::path> applicationFolders();
    // Every shown application of the folders, the first entry of a desktop id winning.
    static std::vector<desktop::InstalledApp> list(core::AppLanguage language,
                                                   const base::Diagnostics& diagnostics);

private:
    // The modification times of the folders and their subfolders: a new, removed or renamed
    // entry changes one.
    static std::vector<std::filesystem::file_time_type> folderTimes();

    base::Diagnostics diagnostics_;
    std::chrono::milliseconds refreshInterval_;
    std::mutex mutex_;
    std::map<core::AppLanguage, std::shared_ptr<const desktop::ApplicationIndex>> indexes_;
    std::vector<std::filesystem::file_time_type> times_;
    std::chrono::steady_clock::time_point checked_{};
};

}  // namespace nuvrel::platform
