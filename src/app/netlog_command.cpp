#include "app/netlog_command.h"

#include <algorithm>
#include <ctime>
#include <initializer_list>
#include <nlohmann/json.hpp>

#include "app/interface_language.h"
#include "app/json_settings_store.h"
#include "app/launch.h"
#include "app/network_activity_json.h"
#include "app/terminal_session.h"
#include "base/graphemes.h"
#include "base/paths.h"
#include "base/time_text.h"

namespace nuvrel::app {

namespace {

using Entry = NetworkActivityLog::Entry;

constexpr std::chrono::hours lastDay{24};

std::optional<std::string> variable(const char* const* environment, std::string_view name) {
    for (auto entry = environment; entry && *entry; ++entry) {
        const std::string_view text(*entry);
        if (text.size() > name.size() && text.starts_with(name) && text[name.size()] == '=') {
            return std::string(text.substr(name.size() + 1));
        }
    }
    return std::nullopt;
}

// Each "%@" in turn takes the next value, so that word order stays the template's.
std::string fill(std::string_view templ, std::initializer_list<std::string_view> values) {
    std::string out;
    auto value = values.begin();
    std::size_t i = 0;
    while (i < templ.size()) {
        if (value != values.end() && templ.substr(i).starts_with("%@")) {
            out.append(*value++);
            i += 2;
        } else {
            out.push_back(templ[i++]);
        }
    }
    return out;
}

std::string padded(const std::string& text, std::size_t width) {
    const std::size_t length = base::text::count(text);
    return text + std::string(width > length ? width - length : 0, ' ');
}

std::string summary(const NetlogReport& report, const core::LocalizedStrings& strings) {
    const std::string count = std::to_string(report.countLastDay);
    // A full ring whose whole span lies within the day may have lost older requests of it.
    if (report.isAtCapacity && report.countLastDay >= NetworkActivityLog::capacity) {
        const std::string kept = std::to_string(NetworkActivityLog::capacity);
        return fill(strings.networkActivitySummaryAtCapTemplate, {count, kept});
    }
    return fill(strings.networkActivitySummaryTemplate, {count});
}

std::size_t widest(const std::vector<Entry>& entries, std::string Entry::*field) {
    std::size_t width = 0;
    for (const auto& entry : entries) width = std::max(width, base::text::count(entry.*field));
    return width;
}

}  // namespace

NetlogReport makeNetlogReport(const NetworkActivityLog& log, std::size_t limit,
                              std::filesystem::path file) {
    return {log.recentEntries(limit), log.count(lastDay), log.isAtCapacity(), std::move(file)};
}

std::string netlogText(const NetlogReport& report, const core::LocalizedStrings& strings) {
    std::string out;
    if (report.entries.empty()) {
        out += strings.networkActivityNoEntriesLabel + "\n";
    } else {
        out += strings.networkActivityRecentLabel + "\n";
        const std::size_t hostWidth = widest(report.entries, &Entry::host);
        const std::size_t pathWidth = widest(report.entries, &Entry::path);
        for (const auto& entry : report.entries) {
            const auto purpose = static_cast<std::size_t>(entry.purpose);
            out += base::formatTime(entry.timestamp, "%Y-%m-%d %H:%M:%S", false) + "  " +
                   padded(entry.host, hostWidth) + "  " + padded(entry.path, pathWidth) + "  " +
                   strings.networkActivityPurposeLabel(purpose) + "\n";
        }
    }
    out += "\n" + summary(report, strings) + "\n";
    out += strings.netlogLocalCallsNote + "\n";
    out += fill(strings.netlogLogFileTemplate, {report.file.string()}) + "\n";
    return out;
}

std::string netlogJSON(const NetlogReport& report) {
    nlohmann::ordered_json entries = nlohmann::ordered_json::array();
    for (const auto& entry : report.entries) entries.push_back(networkActivityEntryJSON(entry));
    const nlohmann::ordered_json object{{"entries", std::move(entries)},
                                        {"countLast24Hours", report.countLastDay},
                                        {"isAtCapacity", report.isAtCapacity},
                                        {"file", report.file.string()}};
    return object.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
}

int runNetlogCommand(const NetlogOptions& options, const char* const* environment,
                     std::ostream& out) {
    const auto paths = base::XdgPaths::fromEnvironment(
        [environment](const char* name) { return variable(environment, name); });
    const auto file = paths.networkActivityFile();
    // Read only: nothing here records, so the file is never rewritten by looking at it.
    const NetworkActivityLog log(std::chrono::system_clock::now, file);
    const auto report = makeNetlogReport(log, options.limit, file);
    if (options.json) {
        out << netlogJSON(report);
        return exitResult;
    }
    auto choice = options.language;
    if (!choice) {
        if (const auto debugLanguage = variable(environment, "NUVREL_DEBUG_LANG")) {
            choice = core::appLanguageFromRawValue(*debugLanguage);
        }
    }
    const JsonSettingsStore settings(paths.settingsFile());
    const auto language =
        interfaceLanguage(choice, settings, preferredLanguagesFromEnvironment(environment));
    out << netlogText(report, core::LocalizedStrings::strings(language));
    return exitResult;
}

}  // namespace nuvrel::app
