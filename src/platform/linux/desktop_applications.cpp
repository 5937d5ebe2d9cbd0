#include "platform/linux/desktop_applications.h"

#include <gio/gdesktopappinfo.h>
#include <gio/gio.h>

#include <algorithm>
#include <cstdlib>
#include <set>
#include <stdexcept>

#include "base/text.h"

namespace nuvrel::platform {
namespace {

namespace fs = std::filesystem;

template <class T>
using GPointer = std::unique_ptr<T, void (*)(gpointer)>;

std::vector<std::string> splitColons(const char* text) {
    std::vector<std::string> parts;
    std::string_view rest = text ? text : "";
    while (!rest.empty()) {
        const std::size_t colon = rest.find(':');
        if (colon != 0) parts.emplace_back(rest.substr(0, colon));
        if (colon == std::string_view::npos) break;
        rest = rest.substr(colon + 1);
    }
    return parts;
}

const char* localeOf(core::AppLanguage language) {
    switch (language) {
        case core::AppLanguage::ko:
            return "ko";
        case core::AppLanguage::ja:
            return "ja";
        case core::AppLanguage::zh:
            return "zh_CN";
        case core::AppLanguage::en:
            break;
    }
    return nullptr;
}

std::optional<std::string> keyText(GKeyFile* file, const char* key, const char* locale) {
    gchar* value =
        locale ? g_key_file_get_locale_string(file, G_KEY_FILE_DESKTOP_GROUP, key, locale, nullptr)
               : g_key_file_get_string(file, G_KEY_FILE_DESKTOP_GROUP, key, nullptr);
    if (!value) return std::nullopt;
    std::string text = base::text::nfc(value);
    g_free(value);
    return text;
}

std::optional<desktop::InstalledApp> entryOf(const fs::path& path, core::AppLanguage language,
                                             const base::Diagnostics& diagnostics) {
    GPointer<GKeyFile> file(g_key_file_new(),
                            reinterpret_cast<void (*)(gpointer)>(g_key_file_free));
    GError* error = nullptr;
    if (!g_key_file_load_from_file(file.get(), path.c_str(), G_KEY_FILE_KEEP_TRANSLATIONS,
                                   &error)) {
        g_clear_error(&error);
        diagnostics.event("skipped an application entry that does not parse: " + path.string());
        return std::nullopt;
    }
    // Null for Hidden entries and for those whose TryExec program is missing.
    GPointer<GDesktopAppInfo> info(g_desktop_app_info_new_from_keyfile(file.get()), g_object_unref);
    if (!info || g_desktop_app_info_get_is_hidden(info.get()) ||
        !g_app_info_should_show(G_APP_INFO(info.get())))
        return std::nullopt;
    const auto name = keyText(file.get(), "Name", nullptr);
    if (!name || name->empty()) return std::nullopt;
    std::optional<std::string> localized;
    if (const char* locale = localeOf(language)) {
        localized = keyText(file.get(), "Name", locale);
        if (localized == name) localized.reset();
    }
    return desktop::InstalledApp{*name, path.string(), localized};
}

void collectFolder(const fs::path& folder, std::vector<fs::path>& found) {
    std::error_code error;
    for (fs::recursive_directory_iterator
             walk(folder, fs::directory_options::skip_permission_denied, error),
         end;
         !error && walk != end; walk.increment(error)) {
        if (walk->path().extension() == ".desktop" && !walk->is_directory(error))
            found.push_back(walk->path());
    }
}

}  // namespace

DesktopApplications::DesktopApplications(base::Diagnostics diagnostics,
                                         std::chrono::milliseconds refreshInterval)
    : diagnostics_(std::move(diagnostics)), refreshInterval_(refreshInterval) {}

std::vector<fs::path> DesktopApplications::applicationFolders() {
    std::vector<fs::path> folders;
    const char* dataHome = std::getenv("XDG_DATA_HOME");
    const char* home = std::getenv("HOME");
    if (dataHome && *dataHome)
        folders.push_back(fs::path(dataHome) / "applications");
    else if (home && *home)
        folders.push_back(fs::path(home) / ".local/share/applications");
    const char* dataDirs = std::getenv("XDG_DATA_DIRS");
    std::vector<std::string> dirs =
        splitColons(dataDirs && *dataDirs ? dataDirs : "/usr/local/share:/usr/share");
    for (const std::string& dir : dirs) folders.push_back(fs::path(dir) / "applications");
    return folders;
}

std::vector<desktop::InstalledApp> DesktopApplications::list(core::AppLanguage language,
                                                             const base::Diagnostics& diagnostics) {
    std::vector<desktop::InstalledApp> apps;
    std::set<std::string> ids;
    for (const fs::path& folder : applicationFolders()) {
        std::vector<fs::path> entries;
        collectFolder(folder, entries);
        for (const fs::path& entry : entries) {
            // The desktop id: the path below the folder, "/" as "-".
            std::string id = entry.lexically_relative(folder).string();
            std::replace(id.begin(), id.end(), '/', '-');
            if (!ids.insert(id).second) continue;
            if (auto app = entryOf(entry, language, diagnostics)) apps.push_back(std::move(*app));
        }
    }
    return apps;
}

std::vector<fs::file_time_type> DesktopApplications::folderTimes() {
    std::vector<fs::file_time_type> times;
    for (const fs::path& folder : applicationFolders()) {
        std::error_code error;
        times.push_back(fs::last_write_time(folder, error));
        for (fs::recursive_directory_iterator walk(folder, error), end; !error && walk != end;
             walk.increment(error)) {
            if (walk->is_directory(error))
                times.push_back(fs::last_write_time(walk->path(), error));
        }
    }
    return times;
}

std::shared_ptr<const desktop::ApplicationIndex> DesktopApplications::index(
    core::AppLanguage language) {
    std::lock_guard lock(mutex_);
    const auto now = std::chrono::steady_clock::now();
    if (indexes_.empty() || now - checked_ >= refreshInterval_) {
        checked_ = now;
        auto times = folderTimes();
        if (times != times_) {
            times_ = std::move(times);
            indexes_.clear();
        }
    }
    auto& index = indexes_[language];
    if (!index) index = std::make_shared<desktop::ApplicationIndex>(list(language, diagnostics_));
    return index;
}

void DesktopApplications::open(const desktop::InstalledApp& app) {
    GPointer<GDesktopAppInfo> info(g_desktop_app_info_new_from_filename(app.url.c_str()),
                                   g_object_unref);
    if (!info) throw std::runtime_error("the application entry cannot be read");
    GError* error = nullptr;
    if (g_app_info_launch(G_APP_INFO(info.get()), nullptr, nullptr, &error)) return;
    const std::string reason = error ? error->message : "unknown error";
    g_clear_error(&error);
    throw std::runtime_error("the application did not start: " + reason);
}

void DesktopApplications::openURL(const std::string& url) {
    GError* error = nullptr;
    if (g_app_info_launch_default_for_uri(url.c_str(), nullptr, &error)) return;
    const std::string reason = error ? error->message : "unknown error";
    g_clear_error(&error);
    throw std::runtime_error("no handler opened the address: " + reason);
}

}  // namespace nuvrel::platform
