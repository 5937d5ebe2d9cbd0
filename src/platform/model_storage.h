#pragma once
// What fetching a model needs of the machine: a staging file to append to, the free space of
// a folder, and the size of the memory (which model suits this machine). Blocking calls on
// the caller's thread.

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string_view>

namespace nuvrel::platform {

// A file open for appending. append throws std::system_error when a write fails (a full disk,
// a file size limit); what was written before stays.
class AppendFile {
public:
    virtual ~AppendFile() = default;
    virtual void append(std::string_view bytes) = 0;
};

// Opens `path` keeping its first `keepBytes` bytes (0: empty), creating it if needed.
std::unique_ptr<AppendFile> liveOpenForAppend(const std::filesystem::path& path,
                                              std::uint64_t keepBytes);

// Bytes an unprivileged file in `directory` can still take; nothing when unknown.
std::optional<std::uint64_t> liveAvailableSpace(const std::filesystem::path& directory);

// MemTotal of a /proc/meminfo text, in bytes.
std::optional<std::uint64_t> physicalMemoryFromMeminfo(std::string_view meminfo);
// The machine's memory, from /proc/meminfo.
std::optional<std::uint64_t> livePhysicalMemory();

}  // namespace nuvrel::platform
