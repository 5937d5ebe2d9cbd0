#include "core/localized_strings.h"

#include <array>
#include <cstdlib>
#include <initializer_list>
#include <string>
#include <string_view>

namespace nuvrel::core {
namespace {

struct Substitution {
    std::string_view placeholder;
    std::string_view value;
};

// One pass from left to right: a value is copied, never scanned again, so a label that itself
// holds "%@" comes out as written. A "%" that starts no given placeholder stays as it is.
std::string fill(std::string_view text, std::initializer_list<Substitution> substitutions) {
    std::string out;
    out.reserve(text.size() + 32);
    std::size_t i = 0;
    while (i < text.size()) {
        if (text[i] == '%') {
            const Substitution* hit = nullptr;
            for (const Substitution& substitution : substitutions) {
                if (text.substr(i).starts_with(substitution.placeholder)) {
                    hit = &substitution;
                    break;
                }
            }
            if (hit != nullptr) {
                out.append(hit->value);
                i += hit->placeholder.size();
                continue;
            }
        }
        out.push_back(text[i]);
        ++i;
    }
    return out;
}

}  // namespace

const LocalizedStrings& LocalizedStrings::strings(AppLanguage language) {
    switch (language) {
        case AppLanguage::en:
            return en();
        case AppLanguage::ko:
            return ko();
        case AppLanguage::zh:
            return zh();
        case AppLanguage::ja:
            return ja();
    }
    // Every language has its record; a value outside the enumeration is a programming error.
    std::abort();
}

std::string LocalizedStrings::missingSlotMessage(std::string_view label) const {
    return fill(missingSlotTemplate, {{"%@", label}});
}

std::string LocalizedStrings::timerNotificationBody(std::string_view displayText) const {
    return fill(timerNotificationBodyTemplate, {{"%@", displayText}});
}

std::string LocalizedStrings::diagnosticsServerBinaryFoundMessage(std::string_view kind,
                                                                  std::string_view path) const {
    return fill(diagnosticsServerBinaryFoundTemplate, {{"%1$@", kind}, {"%2$@", path}});
}

const std::string& LocalizedStrings::networkActivityPurposeLabel(std::size_t purposeIndex) const {
    const std::array<const LocalizedText*, 5> labels{
        &networkActivityPurposeWebSearchLabel, &networkActivityPurposeWeatherLabel,
        &networkActivityPurposeCurrencyLabel, &networkActivityPurposeModelDownloadLabel,
        &networkActivityPurposeModelUpdateCheckLabel};
    return purposeIndex < labels.size() ? *labels[purposeIndex] : *labels[0];
}

std::string LocalizedStrings::systemToolMissingMessage(std::string_view tool) const {
    return fill(systemToolMissingTemplate, {{"%@", tool}});
}

std::string LocalizedStrings::diagnosticsCheckFailedMessage(std::string_view reason) const {
    return fill(diagnosticsCheckFailedTemplate, {{"%@", reason}});
}

std::string LocalizedStrings::llmUnavailableDownloadingMessage(int percent) const {
    const std::string number = std::to_string(percent);
    return fill(llmUnavailableDownloadingTemplate, {{"%@", number}});
}

std::string LocalizedStrings::chainProgressSubtitle(int done, int total) const {
    const std::string doneText = std::to_string(done);
    const std::string totalText = std::to_string(total);
    return fill(chainRunningProgressTemplate, {{"%1$d", doneText}, {"%2$d", totalText}});
}

// The help menu item's own label, as a query: the help matcher lower-cases and drops blanks, and
// only Latin letters have case among the four languages, so ASCII lowering is all it takes.
std::string LocalizedStrings::helpQuery() const {
    std::string query = helpMenuItemLabel;
    for (char& c : query) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return query;
}

}  // namespace nuvrel::core
