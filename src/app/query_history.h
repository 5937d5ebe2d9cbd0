#pragma once
// The sentences typed in the interactive mode, kept across runs so that Up and Ctrl-R find
// them. They are personal text: the file is the owner's alone (0600), stays on this machine,
// and no line of it ever goes into a diagnostic.

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "base/diagnostics.h"

namespace nuvrel::app {

class QueryHistory {
public:
    // Older lines beyond this many are dropped, so the file cannot grow without end.
    static constexpr std::size_t capacity = 500;

    // Reads the file, keeping its newest `capacity` lines; a missing or unreadable file is an
    // empty history.
    QueryHistory(std::filesystem::path file, base::Diagnostics diagnostics);

    // `$XDG_STATE_HOME/nuvrel/history`.
    static std::filesystem::path fileIn(const std::filesystem::path& stateHome);

    // Oldest first.
    const std::vector<std::string>& entries() const { return entries_; }
    // Keeps the line (trimmed; blank lines and a repeat of the newest are not kept) and writes
    // the file at once, so that a killed program loses nothing. A failed write costs one
    // diagnostic line, never the session.
    void add(std::string_view line);

private:
    std::filesystem::path file_;
    base::Diagnostics diagnostics_;
    std::vector<std::string> entries_;
};

}  // namespace nuvrel::app
