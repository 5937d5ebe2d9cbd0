#include "panel/search_settings_draft.h"

#include "app/searxng_endpoint_validation.h"
#include "base/text.h"

namespace nuvrel::panel {

void commitSearxngEndpoint(SearchSettingsDraft& draft, app::AppState& state) {
    const bool valid = app::SearXNGEndpointValidation::validate(draft.searxngEndpointDraft);
    draft.searxngEndpointShowsError = !valid;
    if (!valid) return;
    std::string endpoint = base::text::trim(draft.searxngEndpointDraft);
    if (endpoint != state.searxngEndpointRaw()) state.setSearxngEndpointRaw(std::move(endpoint));
}

void commitFirecrawlAPIKey(SearchSettingsDraft& draft, app::KeychainStoring& keychain) {
    if (!draft.firecrawlAPIKeyEdited) return;
    std::string key = base::text::trim(draft.firecrawlAPIKeyDraft);
    keychain.setSecret(app::firecrawlAPIKeyName,
                       key.empty() ? std::nullopt : std::optional<std::string>(std::move(key)));
    draft.firecrawlAPIKeyDraft.clear();
    draft.firecrawlAPIKeyEdited = false;
}

std::string_view firecrawlAPIKeyPlaceholder(const app::KeychainStoring* keychain,
                                            const core::LocalizedStrings& strings) {
    return keychain && keychain->secret(app::firecrawlAPIKeyName)
               ? strings.searchTabFirecrawlPlaceholderSaved
               : strings.searchTabFirecrawlPlaceholderEmpty;
}

}  // namespace nuvrel::panel
