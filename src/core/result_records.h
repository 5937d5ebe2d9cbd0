#pragma once
// The records that capability results carry. Texts of dates and times are already formatted
// for display.
// Every field has an initialiser, so that a designated initialiser may leave fields out.

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace nuvrel::core {

struct FileHit {
    std::string name{};
    std::string path{};
    std::string modifiedDate{};

    bool operator==(const FileHit&) const = default;
};

struct EventItem {
    std::string title{};
    std::optional<std::string> location{};
    std::string startTime{};
    std::string endTime{};
    std::optional<std::string> calendarName{};
    std::optional<std::string> colorHex{};
    bool isAllDay = false;
    std::optional<std::string> eventIdentifier{};

    bool operator==(const EventItem&) const = default;
};

struct NowPlaying {
    std::string track{};
    std::string artist{};
    std::optional<std::string> album{};
    bool isPlaying = false;
    double positionSeconds = 0.0;
    double durationSeconds = 0.0;
    std::optional<std::vector<std::uint8_t>> artworkData{};

    bool operator==(const NowPlaying&) const = default;
};

struct WebSource {
    std::string title{};
    std::string host{};
    std::string url{};

    bool operator==(const WebSource&) const = default;
};

struct WebAnswer {
    std::optional<std::string> summary{};
    std::vector<WebSource> sources{};
    std::string query{};
    // This answer stands in for a request that the system could not act on.
    bool fallbackNotice = false;
    bool summaryIsExtractive = false;
    std::optional<std::string> summaryModelName{};

    bool operator==(const WebAnswer&) const = default;
};

struct ReminderListItem {
    std::string title{};
    std::optional<std::string> dueLabel{};
    std::string identifier{};

    bool operator==(const ReminderListItem&) const = default;
};

struct NoteListItem {
    std::string title{};
    std::string identifier{};

    bool operator==(const NoteListItem&) const = default;
};

struct TimerRequest {
    std::int64_t durationSeconds = 0;
    std::string displayText{};

    bool operator==(const TimerRequest&) const = default;
};

}  // namespace nuvrel::core

template <>
struct std::hash<nuvrel::core::WebSource> {
    std::size_t operator()(const nuvrel::core::WebSource& source) const noexcept;
};
