#include "app/diagnostics_report.h"

#include <ctime>

#include "base/cancellation.h"

namespace nuvrel::app::DiagnosticsReport {

namespace {

constexpr int routerPort = 8765;
constexpr int summaryPort = 8766;
constexpr std::size_t networkEntries = 10;

std::string joined(const std::vector<std::string>& parts, const std::string& separator) {
    std::string text;
    for (const auto& part : parts) text += (text.empty() ? "" : separator) + part;
    return text;
}

// The probe's value, or the failure in its place.
template <class Probe, class Format>
std::string value(const core::LocalizedStrings& strings, Probe&& probe, Format&& format) {
    try {
        return format(probe());
    } catch (const DiagnosticsProbeError& error) {
        return strings.diagnosticsCheckFailedMessage(error.what());
    } catch (const std::exception& error) {
        base::rethrowIfCancelled();
        return strings.diagnosticsCheckFailedMessage(error.what());
    } catch (...) {
        base::rethrowIfCancelled();
        return strings.diagnosticsCheckFailedMessage("unavailable");
    }
}

std::string isoMoment(std::chrono::system_clock::time_point at) {
    const std::time_t seconds = std::chrono::system_clock::to_time_t(at);
    std::tm utc{};
    gmtime_r(&seconds, &utc);
    char text[32];
    std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &utc);
    return text;
}

std::string serverBinaryKind(const core::LocalizedStrings& strings, const std::string& path) {
    if (path.find(".app/Contents/Resources/") != std::string::npos)
        return strings.diagnosticsServerBinaryKindBundled;
    if (path.starts_with("/opt/homebrew/") || path.starts_with("/usr/local/"))
        return strings.diagnosticsServerBinaryKindHomebrew;
    return strings.diagnosticsServerBinaryKindPath;
}

}  // namespace

std::string byteCountText(std::uint64_t bytes) {
    if (bytes < 1000) return std::to_string(bytes) + (bytes == 1 ? " byte" : " bytes");
    static constexpr const char* units[] = {"KB", "MB", "GB", "TB", "PB"};
    double amount = static_cast<double>(bytes) / 1000;
    std::size_t unit = 0;
    while (amount >= 999.5 && unit + 1 < std::size(units)) {
        amount /= 1000;
        ++unit;
    }
    // Kilobytes whole, megabytes to one place, larger units to two; no trailing zeros.
    char text[32];
    std::snprintf(text, sizeof text, "%.*f", unit == 0 ? 0 : unit == 1 ? 1 : 2, amount);
    std::string number(text);
    if (number.find('.') != std::string::npos) {
        while (number.back() == '0') number.pop_back();
        if (number.back() == '.') number.pop_back();
    }
    return number + " " + units[unit];
}

std::string assemble(const core::LocalizedStrings& strings,
                     const std::string& selectedModelFileName, const Probes& probes,
                     std::chrono::system_clock::time_point at) {
    std::vector<std::string> lines;
    const auto section = [&](const std::string& title) { lines.push_back("[" + title + "]"); };
    const auto line = [&](const std::string& label, const std::string& text) {
        lines.push_back(label + ": " + text);
    };
    const auto same = [](std::string text) { return text; };
    const auto yesNo = [&](bool available) {
        return std::string(available ? strings.diagnosticsPermissionAvailableValue
                                     : strings.diagnosticsPermissionUnavailableValue);
    };

    lines.push_back(strings.diagnosticsReportTitle);
    lines.push_back(strings.diagnosticsPrivacyNotice);
    line(strings.diagnosticsGeneratedAtLabel, isoMoment(at));

    section(strings.diagnosticsSectionSystem);
    line(strings.diagnosticsAppVersionLabel, value(strings, probes.appVersion, same));
    line(strings.diagnosticsOSVersionLabel, value(strings, probes.osVersion, same));
    line(strings.diagnosticsChipLabel, value(strings, probes.isAppleSilicon, [&](bool arm) {
             return std::string(arm ? strings.diagnosticsChipAppleSiliconValue
                                    : strings.diagnosticsChipNotAppleSiliconValue);
         }));
    line(strings.diagnosticsRAMLabel, value(strings, probes.totalRAMBytes, byteCountText));

    section(strings.diagnosticsSectionModel);
    line(strings.diagnosticsInstalledModelsLabel,
         value(strings, probes.installedModelFileNames, [&](std::vector<std::string> names) {
             if (names.empty()) return std::string(strings.diagnosticsNoModelsInstalledValue);
             std::vector<std::string> parts;
             for (const auto& name : names) {
                 // A size that cannot be read shows as the failure, beside the other models.
                 parts.push_back(name + " (" +
                                 value(
                                     strings, [&] { return probes.modelFileSizeBytes(name); },
                                     [](std::int64_t size) {
                                         return byteCountText(static_cast<std::uint64_t>(
                                             std::max<std::int64_t>(size, 0)));
                                     }) +
                                 ")");
             }
             return joined(parts, ", ");
         }));
    line(strings.diagnosticsSelectedModelLabel, selectedModelFileName);
    line(strings.diagnosticsModelsDirectoryLabel, value(strings, probes.modelsDirectoryPath, same));

    section(strings.diagnosticsSectionServer);
    line(strings.diagnosticsServerBinaryLabel,
         value(strings, probes.serverBinaryPath, [&](std::optional<std::string> path) {
             if (!path) return std::string(strings.diagnosticsServerBinaryNotFoundValue);
             return strings.diagnosticsServerBinaryFoundMessage(serverBinaryKind(strings, *path),
                                                                *path);
         }));
    const auto health = [&](int port) {
        return value(
            strings, [&] { return probes.portIsHealthy(port); },
            [&](bool healthy) {
                return std::string(healthy ? strings.diagnosticsPortHealthyValue
                                           : strings.diagnosticsPortUnhealthyValue);
            });
    };
    line(strings.diagnosticsPortRouterLabel, health(routerPort));
    line(strings.diagnosticsPortSummaryLabel, health(summaryPort));
    line(strings.diagnosticsRunningServerPIDsLabel,
         value(
             strings,
             [&] {
                 std::vector<std::string> pids;
                 for (int port : {routerPort, summaryPort, 8767}) {
                     for (auto pid : probes.listeningServerPIDs(port))
                         pids.push_back(std::to_string(pid));
                 }
                 return pids;
             },
             [&](std::vector<std::string> pids) {
                 return pids.empty() ? std::string(strings.diagnosticsNoServerRunningValue)
                                     : joined(pids, ", ");
             }));

    section(strings.diagnosticsSectionNetwork);
    lines.push_back(value(strings, probes.recentNetworkActivity, [&](auto entries) {
        if (entries.empty()) return std::string(strings.diagnosticsNoNetworkActivityValue);
        std::vector<std::string> parts;
        for (const auto& [host, purpose] : entries) {
            if (parts.size() == networkEntries) break;
            parts.push_back(host + " — " +
                            strings.networkActivityPurposeLabel(static_cast<std::size_t>(purpose)));
        }
        return joined(parts, "; ");
    }));

    section(strings.diagnosticsSectionPermissions);
    line(strings.diagnosticsAccessibilityLabel,
         value(strings, probes.isAccessibilityTrusted, yesNo));
    line(strings.diagnosticsNotificationsLabel,
         value(strings, probes.isNotificationsAuthorized, yesNo));
    return joined(lines, "\n");
}

}  // namespace nuvrel::app::DiagnosticsReport
