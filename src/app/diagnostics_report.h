#pragma once
// The plain-text report that a user pastes into a problem report: versions, models, the
// model servers, recent network hosts and the desktop services the program uses. It never
// holds a query, a message, a note, a contact, clipboard text, a file name of the user's
// documents or a key: every fact comes from a probe below, and none of them reads such text.

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "app/network_activity_log.h"
#include "core/localized_strings.h"

namespace nuvrel::app {

// A probe that has nothing to say on this platform; written "unavailable".
class DiagnosticsProbeError : public std::runtime_error {
public:
    DiagnosticsProbeError() : std::runtime_error("unavailable") {}
};

namespace DiagnosticsReport {

// Each may throw; a failing probe costs its own line's value, never the report. They are
// called one after the other on the caller's thread, and the ones that talk to a server may
// block for a second or so.
struct Probes {
    std::function<std::string()> appVersion;
    std::function<std::string()> osVersion;
    std::function<bool()> isAppleSilicon;
    std::function<std::uint64_t()> totalRAMBytes;
    std::function<std::vector<std::string>()> installedModelFileNames;
    std::function<std::int64_t(const std::string& fileName)> modelFileSizeBytes;
    std::function<std::string()> modelsDirectoryPath;
    std::function<std::optional<std::string>()> serverBinaryPath;
    std::function<bool(int port)> portIsHealthy;
    std::function<std::vector<std::int32_t>(int port)> listeningServerPIDs;
    std::function<std::vector<std::pair<std::string, NetworkActivityLog::Purpose>>()>
        recentNetworkActivity;
    // On Linux: whether windows can be moved (an X11 session).
    std::function<bool()> isAccessibilityTrusted;
    // On Linux: whether a notification service answers on the session bus.
    std::function<bool()> isNotificationsAuthorized;
};

std::string assemble(const core::LocalizedStrings& strings,
                     const std::string& selectedModelFileName, const Probes& probes,
                     std::chrono::system_clock::time_point at);

// As a file manager writes sizes, in powers of 1000: "512 bytes", "986 KB", "1.1 GB".
std::string byteCountText(std::uint64_t bytes);

}  // namespace DiagnosticsReport

}  // namespace nuvrel::app
