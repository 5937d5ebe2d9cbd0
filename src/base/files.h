#pragma once
// Whole-file reads and atomic writes: a reader never sees half a file, and a crash in the
// middle of a write leaves the old file in place.

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace nuvrel::base {

// The file's bytes, or nothing when it cannot be read.
std::optional<std::string> readFile(const std::filesystem::path& path);

// Writes through a temporary file in the same folder, flushed and renamed over the target.
// Creates missing parent folders. The file is its owner's alone (mode 0600, as mkstemp makes
// it). Throws std::filesystem::filesystem_error on failure.
void writeFileAtomically(const std::filesystem::path& path, std::string_view bytes);

// Runs `body` holding an exclusive advisory lock (flock) on `lockFile`, created when missing,
// so that processes doing the same on the same file take turns. Where no lock can be had (the
// file cannot be opened), `body` runs without one. Blocks while another process holds it.
void withExclusiveFileLock(const std::filesystem::path& lockFile,
                           const std::function<void()>& body);

// The folder, created with its parents when missing. A failure is left to the first use of the
// folder, which reports it where it matters.
std::filesystem::path createdOnDemand(std::filesystem::path directory);

}  // namespace nuvrel::base
