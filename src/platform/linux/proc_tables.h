#pragma once
// Readers of the Linux process tables: which socket inodes listen on a TCP port
// (/proc/net/tcp, /proc/net/tcp6), which socket an fd link names ("socket:[inode]"), and the
// short name of a process (/proc/<pid>/comm).

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace nuvrel::platform {

// The inodes of sockets in LISTEN state on `port`, from the text of /proc/net/tcp or tcp6.
// Malformed lines are skipped.
std::vector<std::uint64_t> listeningSocketInodes(std::string_view table, int port);

// The inode of a "socket:[12345]" link target; nothing for any other target.
std::optional<std::uint64_t> socketInode(std::string_view linkTarget);

// The name in a comm file's text: trimmed, then its last path component; nothing when empty.
std::optional<std::string> processNameFromComm(std::string_view comm);

}  // namespace nuvrel::platform
