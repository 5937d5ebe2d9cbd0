#pragma once
// The installed applications, indexed once by their comparable names, so that the bare-name
// rule, which consults them for nearly every short query, costs microseconds. Ranks exactly
// as AppLaunchCapability::bestMatch.
//
// Immutable once built: one value may be read from any thread.

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "core/app_language.h"
#include "desktop/app_launch_capability.h"

namespace nuvrel::desktop {

class ApplicationIndex {
public:
    explicit ApplicationIndex(std::vector<InstalledApp> apps);

    const std::vector<InstalledApp>& apps() const { return apps_; }
    std::optional<InstalledApp> bestMatch(std::string_view candidate, bool isExplicitTrigger) const;

private:
    struct NameRef {
        std::size_t app;
        std::size_t name;  // into names_
    };
    struct WordRef {
        std::size_t name;      // into names_
        std::size_t position;  // of the word among the name's words
    };

    std::vector<InstalledApp> apps_;
    std::vector<std::string> names_;  // comparable names
    std::vector<std::vector<std::string>> nameWords_;
    std::vector<std::size_t> nameApp_;
    std::unordered_map<std::string, std::vector<std::size_t>> exact_;  // name → names_
    std::vector<std::pair<std::string, std::size_t>> sorted_;          // for "begins with"
    std::unordered_map<std::string, std::vector<WordRef>> words_;
};

// The installed applications of this machine and how to open one. The live form is in
// src/platform/linux.
class ApplicationCatalog {
public:
    virtual ~ApplicationCatalog() = default;
    // The index as it stands, with names in the language; cheap. Never null.
    virtual std::shared_ptr<const ApplicationIndex> index(core::AppLanguage language) = 0;
    // Starts the application as its entry says; throws when it will not start.
    virtual void open(const InstalledApp& app) = 0;
    // Opens a web address with the user's default handler; throws when none takes it.
    virtual void openURL(const std::string& url) = 0;
};

}  // namespace nuvrel::desktop
