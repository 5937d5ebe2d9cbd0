#pragma once
// Why fetching a model file failed. Each kind maps to one message of LocalizedStrings; the
// description is the technical text for standard error and --json.

#include <cstdint>
#include <exception>
#include <string>

#include "core/localized_strings.h"

namespace nuvrel::llm {

class ModelDownloadError : public std::exception {
public:
    enum class Kind { transferFailed, checksumMismatch, notEnoughSpace, notAGGUF };

    static ModelDownloadError transferFailed(std::string description);
    // Both digests in lower case.
    static ModelDownloadError checksumMismatch(std::string expected, std::string actual);
    // Found before a byte is fetched: the disk cannot hold what is still to come.
    static ModelDownloadError notEnoughSpace(std::uint64_t needed, std::uint64_t available);
    // The bytes arrived whole but are no GGUF model (magic or version wrong).
    static ModelDownloadError notAGGUF(std::string fileName, std::string reason);

    Kind kind() const { return kind_; }
    const std::string& expected() const { return first_; }
    const std::string& actual() const { return second_; }
    std::uint64_t needed() const { return needed_; }
    std::uint64_t available() const { return available_; }

    // e.g. "checksumMismatch(expected: 3a…, actual: 9f…)".
    const std::string& description() const { return description_; }
    const char* what() const noexcept override { return description_.c_str(); }
    // The text the user sees, values filled in.
    std::string userMessage(const core::LocalizedStrings& strings) const;

    friend bool operator==(const ModelDownloadError& a, const ModelDownloadError& b) {
        return a.kind_ == b.kind_ && a.first_ == b.first_ && a.second_ == b.second_ &&
               a.needed_ == b.needed_ && a.available_ == b.available_;
    }

private:
    ModelDownloadError(Kind kind, std::string first, std::string second, std::string description);

    Kind kind_;
    std::string first_;
    std::string second_;
    std::uint64_t needed_ = 0;
    std::uint64_t available_ = 0;
    std::string description_;
};

// "1.2 GB", "830 MB", "12 KB": decimal units, as file managers show sizes.
std::string formatByteCount(std::uint64_t bytes);

}  // namespace nuvrel::llm
