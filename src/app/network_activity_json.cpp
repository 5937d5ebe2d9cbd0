#include "app/network_activity_json.h"

#include <charconv>
#include <ctime>

#include "base/regex.h"
#include "base/time_text.h"

namespace nuvrel::app {

using nlohmann::json;
using nlohmann::ordered_json;

namespace {

int number(std::string_view digits) {
    int value = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), value);
    return value;
}

std::optional<NetworkActivityLog::Entry> decodeEntry(const json& object) {
    if (!object.is_object()) return std::nullopt;
    const auto text = [&](const char* key) -> std::optional<std::string> {
        const auto found = object.find(key);
        if (found == object.end() || !found->is_string()) return std::nullopt;
        return found->get<std::string>();
    };
    const auto timestampText = text("timestamp");
    const auto host = text("host");
    const auto path = text("path");
    const auto purposeText = text("purpose");
    if (!timestampText || !host || !path || !purposeText) return std::nullopt;
    const auto timestamp = parseISO8601Timestamp(*timestampText);
    const auto purpose = purposeFromRawValue(*purposeText);
    if (!timestamp || !purpose) return std::nullopt;

    std::optional<std::int64_t> bytes;
    if (const auto found = object.find("bytes"); found != object.end() && !found->is_null()) {
        if (!found->is_number_integer()) return std::nullopt;
        bytes = found->get<std::int64_t>();
    }
    return NetworkActivityLog::Entry{*timestamp, *host, *path, *purpose, bytes};
}

}  // namespace

std::optional<std::chrono::system_clock::time_point> parseISO8601Timestamp(std::string_view text) {
    static const base::Regex pattern(
        R"(^([0-9]{4})-([0-9]{2})-([0-9]{2})T([0-9]{2}):([0-9]{2}):([0-9]{2})(\.([0-9]{1,9}))?(Z|([+-])([0-9]{2}):?([0-9]{2}))$)");
    const auto match = pattern.firstMatch(text);
    if (!match) return std::nullopt;
    using namespace std::chrono;
    const year_month_day date{year(number(match->group(1))), month(number(match->group(2))),
                              day(number(match->group(3)))};
    const int hour = number(match->group(4));
    const int minute = number(match->group(5));
    const int second = number(match->group(6));
    if (!date.ok() || hour > 23 || minute > 59 || second > 60) return std::nullopt;

    auto time = sys_days(date) + hours(hour) + minutes(minute) + seconds(second);
    // The clock counts nanoseconds in 64 bits, about 292 years either side of 1970: a year
    // beyond that is no instant it can hold. A day of margin leaves room for the offset.
    if (time < time_point_cast<seconds>(system_clock::time_point::min()) + days(1) ||
        time > time_point_cast<seconds>(system_clock::time_point::max()) - days(1)) {
        return std::nullopt;
    }
    auto result = time_point_cast<system_clock::duration>(time);
    if (match->matched(8)) {
        std::string fraction(match->group(8));
        fraction.resize(9, '0');
        result += duration_cast<system_clock::duration>(nanoseconds(number(fraction)));
    }
    if (match->matched(10)) {
        const auto offset = hours(number(match->group(11))) + minutes(number(match->group(12)));
        // "+09:00" is ahead of UTC: the same instant is earlier in UTC.
        result += match->group(10) == "+" ? -offset : offset;
    }
    return result;
}

ordered_json networkActivityEntryJSON(const NetworkActivityLog::Entry& entry) {
    ordered_json object{{"timestamp", base::iso8601Timestamp(entry.timestamp)},
                        {"host", entry.host},
                        {"path", entry.path},
                        {"purpose", purposeRawValue(entry.purpose)}};
    if (entry.bytes) object["bytes"] = *entry.bytes;
    return object;
}

std::string encodeNetworkActivity(const std::vector<NetworkActivityLog::Entry>& entries) {
    ordered_json array = ordered_json::array();
    for (const auto& entry : entries) array.push_back(networkActivityEntryJSON(entry));
    // A host or path that is not valid UTF-8 must not cost the whole file.
    return array.dump(2, ' ', false, json::error_handler_t::replace) + "\n";
}

std::optional<std::vector<NetworkActivityLog::Entry>> decodeNetworkActivity(
    const std::string& text) {
    const json parsed = json::parse(text, nullptr, false);
    if (!parsed.is_array()) return std::nullopt;
    std::vector<NetworkActivityLog::Entry> entries;
    entries.reserve(parsed.size());
    for (const auto& object : parsed) {
        auto entry = decodeEntry(object);
        if (!entry) return std::nullopt;
        entries.push_back(std::move(*entry));
    }
    return entries;
}

}  // namespace nuvrel::app
