#pragma once
// The defaults store as one JSON object in a file (XdgPaths::settingsFile() in production).
// The file is read once, at construction; a missing, unreadable or damaged file starts an
// empty store, and a key holding the wrong type reads as absent. Every change rewrites the
// whole file atomically, so a reader or a crash never meets half a file. A failed write is
// logged and the value is kept in memory for the rest of the session.

#include <cstdint>
#include <filesystem>
#include <mutex>
#include <nlohmann/json.hpp>

#include "app/settings_storing.h"
#include "base/diagnostics.h"

namespace nuvrel::app {

class JsonSettingsStore final : public SettingsStoring {
public:
    explicit JsonSettingsStore(std::filesystem::path file, base::Diagnostics diagnostics = {});

    std::optional<std::string> string(std::string_view key) const override;
    std::optional<std::int64_t> integer(std::string_view key) const override;
    std::optional<double> number(std::string_view key) const override;
    std::optional<bool> boolean(std::string_view key) const override;
    bool contains(std::string_view key) const override;

    void set(std::string_view key, SettingValue value) override;
    void remove(std::string_view key) override;

    const std::filesystem::path& file() const { return file_; }

private:
    // Copies the value of `key`, or null when absent.
    nlohmann::json lookup(std::string_view key) const;
    // Writes the latest snapshot; an older snapshot that loses the race is skipped.
    void persist(std::string bytes, std::uint64_t version);

    const std::filesystem::path file_;
    const base::Diagnostics diagnostics_;
    mutable std::mutex mutex_;
    nlohmann::json values_;
    std::uint64_t version_ = 0;

    // Held across the file write only, never together with mutex_ around a read.
    std::mutex writeMutex_;
    std::uint64_t writtenVersion_ = 0;
};

}  // namespace nuvrel::app
