#pragma once
// What fetching a model needs of the machine: a staging file to append to, the free space of
// a folder, and the size of the memory (which model suits this machine). Blocking calls on
// the caller's thread.

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string_view>

#include "llm/model_downloader.h"

namespace nuvrel::platform {

// Opens `path` keeping its first `keepBytes` bytes (0: empty), creating it if needed.
std::unique_ptr<llm::ModelDownloader::StagingWriter> liveOpenStaging(
    const std::filesystem::path& path, std::uint64_t keepBytes);

// Bytes an unprivileged file in `directory` can still take; nothing when unknown.
std::optional<std::uint64_t> liveAvailableSpace(const std::filesystem::path& directory);

// MemTotal of a /proc/meminfo text, in bytes.
std::optional<std::uint64_t> physicalMemoryFromMeminfo(std::string_view meminfo);
// The machine's memory, from /proc/meminfo.
std::optional<std::uint64_t> livePhysicalMemory();

}  // namespace nuvrel::platform
