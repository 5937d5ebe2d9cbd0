#include "platform/linux/proc_tables.h"

#include <charconv>

namespace nuvrel::platform {

namespace {

constexpr std::string_view listenState = "0A";

std::vector<std::string_view> words(std::string_view line) {
    std::vector<std::string_view> out;
    std::size_t i = 0;
    while (i < line.size()) {
        while (i < line.size() && (line[i] == ' ' || line[i] == '\t')) ++i;
        const std::size_t start = i;
        while (i < line.size() && line[i] != ' ' && line[i] != '\t') ++i;
        if (i > start) out.push_back(line.substr(start, i - start));
    }
    return out;
}

template <class T>
std::optional<T> number(std::string_view text, int base) {
    T value{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, base);
    if (error != std::errc() || end != text.data() + text.size() || text.empty())
        return std::nullopt;
    return value;
}

}  // namespace

std::vector<std::uint64_t> listeningSocketInodes(std::string_view table, int port) {
    std::vector<std::uint64_t> inodes;
    while (!table.empty()) {
        const std::size_t end = table.find('\n');
        const std::string_view line = table.substr(0, end);
        table.remove_prefix(end == std::string_view::npos ? table.size() : end + 1);

        // "sl local_address rem_address st tx_queue:rx_queue tr:tm->when retrnsmt uid timeout
        // inode"
        const auto fields = words(line);
        if (fields.size() < 10 || fields[3] != listenState) continue;
        const std::string_view local = fields[1];
        const std::size_t colon = local.rfind(':');
        if (colon == std::string_view::npos) continue;
        const auto localPort = number<int>(local.substr(colon + 1), 16);
        const auto inode = number<std::uint64_t>(fields[9], 10);
        if (localPort == port && inode && *inode != 0) inodes.push_back(*inode);
    }
    return inodes;
}

std::optional<std::uint64_t> socketInode(std::string_view linkTarget) {
    constexpr std::string_view prefix = "socket:[";
    if (!linkTarget.starts_with(prefix) || !linkTarget.ends_with(']')) return std::nullopt;
    return number<std::uint64_t>(
        linkTarget.substr(prefix.size(), linkTarget.size() - prefix.size() - 1), 10);
}

std::optional<std::string> processNameFromComm(std::string_view comm) {
    constexpr std::string_view blanks = " \t\r\n";
    const std::size_t first = comm.find_first_not_of(blanks);
    if (first == std::string_view::npos) return std::nullopt;
    comm = comm.substr(first, comm.find_last_not_of(blanks) - first + 1);
    const std::size_t slash = comm.rfind('/');
    if (slash != std::string_view::npos) comm.remove_prefix(slash + 1);
    if (comm.empty()) return std::nullopt;
    return std::string(comm);
}

}  // namespace nuvrel::platform
