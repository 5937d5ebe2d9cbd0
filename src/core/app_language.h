#pragma once
// The interface language: one setting that picks every user-visible text.

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace nuvrel::core {

enum class AppLanguage { en, ko, zh, ja };

inline constexpr std::array<AppLanguage, 4> allAppLanguages{AppLanguage::en, AppLanguage::ko,
                                                            AppLanguage::zh, AppLanguage::ja};

std::string_view rawValue(AppLanguage language);
std::optional<AppLanguage> appLanguageFromRawValue(std::string_view raw);

// Looks only at the first preferred tag: "ko…" → ko, "zh…" → zh, "ja…" → ja, else en.
AppLanguage detectFromSystemLocale(const std::vector<std::string>& preferredLanguages);

}  // namespace nuvrel::core
