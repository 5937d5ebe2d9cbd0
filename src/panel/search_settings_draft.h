#pragma once
// The edit state of the search tab and what leaving one of its fields does. The SearXNG
// address is stored only when it is usable; the Firecrawl key only when the user typed in its
// field, so that passing through an untouched field never erases a saved key.
//
// Threading: the GUI thread (the AppState's main thread).

#include <string>
#include <string_view>

#include "app/app_state.h"
#include "app/keychain_storing.h"
#include "core/localized_strings.h"

namespace nuvrel::panel {

struct SearchSettingsDraft {
    std::string searxngEndpointDraft;
    bool searxngEndpointShowsError = false;
    std::string firecrawlAPIKeyDraft;
    bool firecrawlAPIKeyEdited = false;
};

// Stores a valid draft as the SearXNG address; an invalid one leaves the stored address and
// sets the error flag.
void commitSearxngEndpoint(SearchSettingsDraft& draft, app::AppState& state);

// Stores the trimmed key (blanks only delete it), then empties the draft. Nothing happens
// unless the field was edited. Throws app::KeychainError when the key store does not answer;
// the draft is then kept.
void commitFirecrawlAPIKey(SearchSettingsDraft& draft, app::KeychainStoring& keychain);

// What the empty key field shows: that a key is saved, or an invitation to paste one.
std::string_view firecrawlAPIKeyPlaceholder(const app::KeychainStoring* keychain,
                                            const core::LocalizedStrings& strings);

}  // namespace nuvrel::panel
