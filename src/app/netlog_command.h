#pragma once
// `nuvrel netlog`: the recent outbound requests of the network activity log and the number
// of the past 24 hours, as text in the interface language or as JSON for scripts.
// Blocking: reads the settings and the log file on the calling thread.

#include <cstddef>
#include <filesystem>
#include <ostream>
#include <string>
#include <vector>

#include "app/command_line.h"
#include "app/network_activity_log.h"
#include "core/localized_strings.h"

namespace nuvrel::app {

// What the command shows, read from the log once.
struct NetlogReport {
    std::vector<NetworkActivityLog::Entry> entries;  // newest first
    std::size_t countLastDay = 0;
    bool isAtCapacity = false;
    std::filesystem::path file;
};

NetlogReport makeNetlogReport(const NetworkActivityLog& log, std::size_t limit,
                              std::filesystem::path file);

// One line per entry (local time, host, path, purpose), then the 24-hour summary.
std::string netlogText(const NetlogReport& report, const core::LocalizedStrings& strings);
// One JSON object: "entries" as in the log file, "countLast24Hours", "isAtCapacity", "file".
std::string netlogJSON(const NetlogReport& report);

// Runs the command with the files and language that `environment` (a null-terminated
// "NAME=value" list such as environ) points to. Returns the exit status.
int runNetlogCommand(const NetlogOptions& options, const char* const* environment,
                     std::ostream& out);

}  // namespace nuvrel::app
