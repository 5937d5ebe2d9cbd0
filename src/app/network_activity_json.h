#pragma once
// The network activity log's file form: a JSON array of entries, newest first, each with
// "timestamp" (ISO 8601, UTC), "host", "path", "purpose" (raw value) and "bytes" (left out
// when unknown).

#include <chrono>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "app/network_activity_log.h"

namespace nuvrel::app {

// The form base::iso8601Timestamp writes; also takes a fraction of a second and a "+09:00" style
// offset; nothing for anything else.
std::optional<std::chrono::system_clock::time_point> parseISO8601Timestamp(std::string_view text);

nlohmann::ordered_json networkActivityEntryJSON(const NetworkActivityLog::Entry& entry);

std::string encodeNetworkActivity(const std::vector<NetworkActivityLog::Entry>& entries);
// Nothing when the text is not such an array or any entry in it is malformed: a damaged file
// is dropped whole rather than read in part.
std::optional<std::vector<NetworkActivityLog::Entry>> decodeNetworkActivity(
    const std::string& text);

}  // namespace nuvrel::app
