#include <unicode/uchar.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <system_error>

#include "app/models_command_support.h"
#include "app/settings_keys.h"
#include "app/terminal_session.h"
#include "base/cancellation.h"
#include "base/diagnostics.h"
#include "base/url.h"
#include "llm/curated_models.h"
#include "llm/model_catalog.h"

namespace nuvrel::app {

namespace {

namespace Checker = llm::ModelUpdateChecker;
using Json = nlohmann::ordered_json;
using Decision = llm::ModelUpdateDecision;

struct Row {
    std::string id;  // empty for a file outside the catalog
    std::string name;
    std::string fileName;
    llm::ModelCatalog::Role role = llm::ModelCatalog::Role::router;
    std::uint64_t sizeBytes = 0;
    bool installed = false;
    bool inUse = false;
    bool recommended = false;
};

std::vector<Row> rows(const ModelsCommandEnvironment& environment) {
    const auto installed = installedFileNames(environment);
    const auto inUse = modelFileInUse(*environment.userDefaults, environment.modelsDirectory);
    const auto recommended =
        llm::ModelDownloader::recommendedModel(environment.physicalMemory.value_or(0)).fileName;
    const auto sizeOf = [&](const std::string& fileName, std::uint64_t otherwise) {
        std::error_code error;
        const auto size = std::filesystem::file_size(environment.modelsDirectory / fileName, error);
        return error ? otherwise : size;
    };
    std::vector<Row> list;
    for (const auto& model : llm::ModelCatalog::curatedModels()) {
        const bool present =
            std::find(installed.begin(), installed.end(), model.fileName) != installed.end();
        list.push_back({model.id, model.displayName, model.fileName, model.role,
                        sizeOf(model.fileName, model.approximateSizeBytes), present,
                        inUse == model.fileName, recommended == model.fileName});
    }
    for (const auto& fileName : installed) {
        if (llm::ModelCatalog::curatedModel(fileName)) continue;
        list.push_back({"", llm::ModelCatalog::displayName(fileName), fileName,
                        llm::ModelCatalog::Role::router, sizeOf(fileName, 0), true,
                        inUse == fileName, false});
    }
    return list;
}

// Columns a terminal gives the text: two for wide and full-width characters (Hangul, Han,
// kana), one for the rest.
std::size_t columns(const std::string& text) {
    std::size_t width = 0;
    for (std::int32_t i = 0, length = static_cast<std::int32_t>(text.size()); i < length;) {
        UChar32 c = 0;
        U8_NEXT(text.data(), i, length, c);
        const auto eastAsian = u_getIntPropertyValue(c, UCHAR_EAST_ASIAN_WIDTH);
        width += eastAsian == U_EA_WIDE || eastAsian == U_EA_FULLWIDTH ? 2 : 1;
    }
    return width;
}

std::string padded(const std::string& text, std::size_t width) {
    const std::size_t length = columns(text);
    return text + std::string(width > length ? width - length : 0, ' ');
}

std::optional<std::chrono::system_clock::time_point> lastCheck(const SettingsStoring& defaults) {
    const auto seconds = defaults.number(settingsKey::modelUpdateLastCheck);
    if (!seconds) return std::nullopt;
    return std::chrono::system_clock::time_point(
        std::chrono::duration_cast<std::chrono::system_clock::duration>(
            std::chrono::duration<double>(*seconds)));
}

// Fetches and decides; keeps the offer of an available update and withdraws it when the
// manifest says the installed files are current. Throws what the fetch throws.
Decision check(const ModelsCommandEnvironment& environment, std::chrono::milliseconds timeout) {
    auto& defaults = *environment.userDefaults;
    const auto url = llm::ModelCatalog::applyingMirror(*base::Url::parse(Checker::manifestURL),
                                                       defaults.string(settingsKey::modelMirror));
    defaults.set(settingsKey::modelUpdateLastCheck,
                 std::chrono::duration<double>(environment.now().time_since_epoch()).count());
    const auto log = [&](std::string_view host, std::string_view path) {
        environment.networkLog->record(std::string(host), base::percentDecode(path),
                                       NetworkActivityLog::Purpose::modelUpdateCheck);
    };
    const auto manifest = Checker::liveFetch(url, *environment.session, log, timeout);
    const auto decision =
        Checker::decide(manifest, installedFileNames(environment), environment.appVersion);
    if (decision.kind == Decision::Kind::available)
        defaults.set(settingsKey::modelUpdateOffer, Checker::encodeEntry(*decision.entry).dump());
    else if (decision.kind == Decision::Kind::upToDate)
        defaults.remove(settingsKey::modelUpdateOffer);
    else if (decision.kind == Decision::Kind::malformed)
        environment.diagnostics.event("model update manifest rejected: " + decision.reason);
    return decision;
}

// The daily check the list makes on its own: quick, and silent when it fails.
void checkAutomatically(const ModelsCommandEnvironment& environment) {
    const auto& defaults = *environment.userDefaults;
    const bool enabled = defaults.string(settingsKey::modelUpdateCheckEnabled).value_or("1") != "0";
    if (!Checker::shouldCheck(base::Url::parse(Checker::manifestURL), enabled, lastCheck(defaults),
                              environment.now()))
        return;
    try {
        check(environment, std::chrono::seconds(5));
    } catch (const base::Cancelled&) {
        throw;
    } catch (const std::exception& error) {
        environment.diagnostics.event("automatic model update check failed: " +
                                      std::string(error.what()));
    }
}

}  // namespace

std::string fill(std::string_view templ, std::initializer_list<std::string_view> values) {
    std::string out(templ);
    std::size_t index = 1;
    for (const auto value : values) {
        for (const std::string& placeholder :
             {"%" + std::to_string(index) + "$@", std::string("%@")}) {
            if (const auto at = out.find(placeholder); at != std::string::npos) {
                out.replace(at, placeholder.size(), value);
                break;
            }
        }
        ++index;
    }
    return out;
}

std::optional<llm::ModelUpdateManifest::Entry> storedOffer(const SettingsStoring& userDefaults) {
    const auto text = userDefaults.string(settingsKey::modelUpdateOffer);
    if (!text) return std::nullopt;
    try {
        return Checker::decodeManifest(R"({"router":)" + *text + "}").router;
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

std::vector<std::string> installedFileNames(const ModelsCommandEnvironment& environment) {
    return llm::ModelCatalog::installedModelFileNames(environment.modelsDirectory,
                                                      llm::liveListContents);
}

int listModels(const ModelsOptions& options, const ModelsCommandEnvironment& environment,
               const core::LocalizedStrings& strings, std::ostream& out) {
    checkAutomatically(environment);
    const auto list = rows(environment);
    const auto offer = storedOffer(*environment.userDefaults);
    const bool anyInstalled =
        std::any_of(list.begin(), list.end(), [](const Row& row) { return row.installed; });
    if (options.json) {
        Json models = Json::array();
        for (const auto& row : list) {
            models.push_back(
                {{"id", row.id.empty() ? Json() : Json(row.id)},
                 {"displayName", row.name},
                 {"fileName", row.fileName},
                 {"role", row.role == llm::ModelCatalog::Role::router ? "router" : "summary"},
                 {"sizeBytes", row.sizeBytes},
                 {"installed", row.installed},
                 {"inUse", row.inUse},
                 {"recommended", row.recommended}});
        }
        out << Json{{"models", models},
                    {"modelsDirectory", environment.modelsDirectory.string()},
                    {"updateOffer", offer ? Json(Checker::encodeEntry(*offer)) : Json()}}
                   .dump()
            << '\n';
        return exitResult;
    }
    std::size_t nameWidth = 0, fileWidth = 0;
    for (const auto& row : list) {
        nameWidth = std::max(nameWidth, columns(row.name));
        fileWidth = std::max(fileWidth, columns(row.fileName));
    }
    for (const auto& row : list) {
        std::string badges;
        const auto badge = [&](bool on, const std::string& label) {
            if (!on) return;
            if (!badges.empty()) badges += " · ";
            badges += label;
        };
        badge(row.installed, strings.modelCuratedInstalledLabel);
        badge(row.inUse, strings.modelInUseBadge);
        badge(row.recommended, strings.modelRecommendedBadge);
        const std::string size = (row.installed ? "" : "~") + llm::formatByteCount(row.sizeBytes);
        const std::string& role = row.role == llm::ModelCatalog::Role::router
                                      ? strings.modelRoleRouterLabel
                                      : strings.modelRoleSummaryLabel;
        std::string line = (row.inUse ? "* " : "  ") + padded(row.name, nameWidth + 2) +
                           padded(row.fileName, fileWidth + 2) + padded(size, 10) +
                           padded(role, 22) + badges;
        line.erase(line.find_last_not_of(' ') + 1);
        out << line << '\n';
    }
    if (!anyInstalled)
        out << strings.modelNotInstalledYetLabel << '\n' << strings.modelInstallHintLine << '\n';
    if (offer) {
        out << fill(strings.modelUpdateAvailableTemplate, {offer->fileName}) << '\n'
            << fill(strings.modelUpdateInstallHintTemplate, {offer->fileName}) << '\n';
    }
    return exitResult;
}

int checkForUpdates(const ModelsOptions& options, const ModelsCommandEnvironment& environment,
                    const core::LocalizedStrings& strings, std::ostream& out, std::ostream& err) {
    Decision decision;
    try {
        decision = check(environment, std::chrono::seconds(30));
    } catch (const base::Cancelled&) {
        throw;
    } catch (const std::exception& error) {
        environment.diagnostics.event("model update check failed: " + std::string(error.what()));
        if (options.json)
            out << Json{{"decision", "failed"}, {"description", error.what()}}.dump() << '\n';
        else
            err << "nuvrel: " << strings.modelUpdateCheckFailedMessage << '\n';
        return exitError;
    }
    static constexpr const char* names[] = {"available", "blockedByAppVersion", "malformed",
                                            "upToDate"};
    if (options.json) {
        Json json = {{"decision", names[static_cast<int>(decision.kind)]}};
        if (decision.entry) json["entry"] = Checker::encodeEntry(*decision.entry);
        if (decision.kind == Decision::Kind::blockedByAppVersion) {
            json["required"] = decision.required;
            json["current"] = decision.current;
        }
        if (decision.kind == Decision::Kind::malformed) json["reason"] = decision.reason;
        out << json.dump() << '\n';
        return decision.kind == Decision::Kind::malformed ? exitError : exitResult;
    }
    switch (decision.kind) {
        case Decision::Kind::available:
            out << fill(strings.modelUpdateAvailableTemplate, {decision.entry->fileName}) << '\n'
                << fill(strings.modelUpdateInstallHintTemplate, {decision.entry->fileName}) << '\n';
            return exitResult;
        case Decision::Kind::upToDate:
            out << strings.modelUpdateUpToDateMessage << '\n';
            return exitResult;
        case Decision::Kind::blockedByAppVersion:
            out << strings.modelUpdateNeedsAppUpdateMessage << '\n';
            return exitResult;
        case Decision::Kind::malformed:
            break;
    }
    err << "nuvrel: " << strings.modelUpdateCheckFailedMessage << '\n';
    return exitError;
}

}  // namespace nuvrel::app
