#pragma once
// The models the program offers by name, and where their files come from. A mirror setting
// (a base URL) replaces the scheme, host and port of every such address, for users behind a
// mirror; the path stays, under the mirror's own path.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/url.h"

namespace nuvrel::llm::ModelCatalog {

enum class Role { router, summary };

struct CuratedModel {
    std::string id;
    Role role = Role::router;
    std::string displayName;
    std::string fileName;
    std::string sourceURL;
    // 64 hexadecimal digits; nothing where no digest has been published.
    std::optional<std::string> sha256;
    // For the list before anything is downloaded; the real size comes from the server.
    std::uint64_t approximateSizeBytes = 0;
    friend bool operator==(const CuratedModel&, const CuratedModel&) = default;
};

// The three curated models, routers first.
const std::vector<CuratedModel>& curatedModels();
// By id or by file name.
const CuratedModel* curatedModel(std::string_view idOrFileName);

// `address` with the mirror's scheme, host and port, and the mirror's path before its own
// path. An empty or absent mirror, or one that is no http(s) URL, leaves it unchanged.
base::Url applyingMirror(const base::Url& address, const std::optional<std::string>& mirror);

}  // namespace nuvrel::llm::ModelCatalog
