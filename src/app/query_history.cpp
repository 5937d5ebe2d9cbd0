#include "app/query_history.h"

#include <exception>

#include "base/text.h"
#include "platform/linux/private_state_file.h"

namespace nuvrel::app {

QueryHistory::QueryHistory(std::filesystem::path file, base::Diagnostics diagnostics)
    : file_(std::move(file)), diagnostics_(std::move(diagnostics)) {
    const auto bytes = platform::readPrivateFile(file_);
    if (!bytes) return;
    std::string_view rest(*bytes);
    while (!rest.empty()) {
        const auto end = rest.find('\n');
        const std::string_view line = rest.substr(0, end);
        if (!line.empty()) entries_.emplace_back(line);
        rest = end == std::string_view::npos ? std::string_view() : rest.substr(end + 1);
    }
    if (entries_.size() > capacity)
        entries_.erase(entries_.begin(),
                       entries_.begin() + static_cast<std::ptrdiff_t>(entries_.size() - capacity));
}

std::filesystem::path QueryHistory::fileIn(const std::filesystem::path& stateHome) {
    return stateHome / "nuvrel" / "history";
}

void QueryHistory::add(std::string_view line) {
    // One entry is one line of the file: a pasted line end would split it in two.
    std::string entry = base::text::trim(line);
    for (char& c : entry) {
        if (c == '\n' || c == '\r') c = ' ';
    }
    if (entry.empty() || (!entries_.empty() && entries_.back() == entry)) return;
    entries_.push_back(std::move(entry));
    if (entries_.size() > capacity) entries_.erase(entries_.begin());
    std::string bytes;
    for (const auto& kept : entries_) bytes += kept + '\n';
    try {
        platform::writePrivateFile(file_, bytes);
    } catch (const std::exception& error) {
        diagnostics_.event(std::string("query history not saved: ") + error.what());
    }
}

}  // namespace nuvrel::app
