#include "app/json_settings_store.h"

#include <limits>
#include <system_error>
#include <utility>

#include "base/diagnostics.h"
#include "base/files.h"

namespace nuvrel::app {

namespace {

nlohmann::json readObject(const std::filesystem::path& file, const base::Diagnostics& diagnostics) {
    std::error_code error;
    const auto status = std::filesystem::status(file, error);
    if (status.type() == std::filesystem::file_type::not_found) return nlohmann::json::object();
    const auto bytes =
        status.type() == std::filesystem::file_type::regular ? base::readFile(file) : std::nullopt;
    if (!bytes) {
        diagnostics.event("settings file " + file.string() + " cannot be read; starting empty");
        return nlohmann::json::object();
    }
    auto parsed = nlohmann::json::parse(*bytes, nullptr, /*allow_exceptions=*/false);
    if (!parsed.is_object()) {
        if (!bytes->empty())
            diagnostics.event("settings file is not a JSON object; starting empty");
        return nlohmann::json::object();
    }
    return parsed;
}

}  // namespace

JsonSettingsStore::JsonSettingsStore(std::filesystem::path file, base::Diagnostics diagnostics)
    : file_(std::move(file)),
      diagnostics_(std::move(diagnostics)),
      values_(readObject(file_, diagnostics_)) {}

nlohmann::json JsonSettingsStore::lookup(std::string_view key) const {
    std::lock_guard lock(mutex_);
    const auto found = values_.find(key);
    return found == values_.end() ? nlohmann::json() : *found;
}

std::optional<std::string> JsonSettingsStore::string(std::string_view key) const {
    const auto value = lookup(key);
    if (!value.is_string()) return std::nullopt;
    return value.get<std::string>();
}

std::optional<std::int64_t> JsonSettingsStore::integer(std::string_view key) const {
    const auto value = lookup(key);
    if (value.is_number_unsigned()) {
        const auto unsignedValue = value.get<std::uint64_t>();
        if (unsignedValue > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())) {
            return std::nullopt;
        }
        return static_cast<std::int64_t>(unsignedValue);
    }
    if (value.is_number_integer()) return value.get<std::int64_t>();
    return std::nullopt;
}

std::optional<double> JsonSettingsStore::number(std::string_view key) const {
    const auto value = lookup(key);
    if (!value.is_number()) return std::nullopt;
    return value.get<double>();
}

std::optional<bool> JsonSettingsStore::boolean(std::string_view key) const {
    const auto value = lookup(key);
    if (!value.is_boolean()) return std::nullopt;
    return value.get<bool>();
}

bool JsonSettingsStore::contains(std::string_view key) const {
    std::lock_guard lock(mutex_);
    return values_.contains(key);
}

void JsonSettingsStore::set(std::string_view key, SettingValue value) {
    std::string bytes;
    std::uint64_t version = 0;
    {
        std::lock_guard lock(mutex_);
        nlohmann::json held;
        std::visit([&held](auto&& kept) { held = std::forward<decltype(kept)>(kept); },
                   std::move(value));
        // Every start sets some keys again to what they hold: no write, no fsync for those.
        if (const auto found = values_.find(key); found != values_.end() && *found == held) return;
        values_[std::string(key)] = std::move(held);
        // Ill-formed UTF-8 from a caller must not make the whole file unwritable.
        bytes = values_.dump(2, ' ', false, nlohmann::json::error_handler_t::replace);
        version = ++version_;
    }
    persist(std::move(bytes), version);
}

void JsonSettingsStore::remove(std::string_view key) {
    std::string bytes;
    std::uint64_t version = 0;
    {
        std::lock_guard lock(mutex_);
        const auto found = values_.find(key);
        if (found == values_.end()) return;
        values_.erase(found);
        bytes = values_.dump(2, ' ', false, nlohmann::json::error_handler_t::replace);
        version = ++version_;
    }
    persist(std::move(bytes), version);
}

void JsonSettingsStore::persist(std::string bytes, std::uint64_t version) {
    std::lock_guard lock(writeMutex_);
    if (version <= writtenVersion_) return;
    writtenVersion_ = version;
    bytes.push_back('\n');
    try {
        base::writeFileAtomically(file_, bytes);
    } catch (const std::filesystem::filesystem_error& error) {
        diagnostics_.event("settings could not be written (" + error.code().message() + ")");
    }
}

}  // namespace nuvrel::app
