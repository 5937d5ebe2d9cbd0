#include "core/localized_strings.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace nuvrel::core {
namespace {

std::string nameOf(AppLanguage language) {
    return std::string(rawValue(language));
}

// Every placeholder in the text ("%@", "%d", "%1$@", "%2$d", ...), sorted.
std::vector<std::string> placeholdersIn(std::string_view text) {
    std::vector<std::string> found;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') continue;
        std::size_t j = i + 1;
        if (j + 1 < text.size() && std::isdigit(static_cast<unsigned char>(text[j])) &&
            text[j + 1] == '$') {
            j += 2;
        }
        if (j < text.size() && (text[j] == '@' || text[j] == 'd')) {
            found.emplace_back(text.substr(i, j + 1 - i));
            i = j;
        }
    }
    std::sort(found.begin(), found.end());
    return found;
}

bool isTemplateName(std::string_view name) {
    return name.ends_with("Template");
}

// The only template whose English text, as the product words it, inserts nothing.
bool mayLackPlaceholder(std::string_view name) {
    return name == "reminderSetNoTimeTemplate";
}

TEST(LocalizedStrings, EveryLanguageFillsEveryTextAndList) {
    for (AppLanguage language : allAppLanguages) {
        SCOPED_TRACE(nameOf(language));
        LocalizedStrings::strings(language).forEachField(
            [&](std::string_view name, const std::string& text) {
                EXPECT_FALSE(text.empty()) << name;
            },
            [&](std::string_view name, const std::vector<std::string>& list) {
                EXPECT_FALSE(list.empty()) << name;
                for (const std::string& item : list) EXPECT_FALSE(item.empty()) << name;
            });
    }
}

TEST(LocalizedStrings, TemplatesCarryTheSamePlaceholdersInEveryLanguageAndOtherTextsNone) {
    std::map<std::string, std::vector<std::string>, std::less<>> englishTemplates;
    LocalizedStrings::en().forEachField(
        [&](std::string_view name, const std::string& text) {
            if (!isTemplateName(name)) return;
            englishTemplates[std::string(name)] = placeholdersIn(text);
            if (!mayLackPlaceholder(name)) {
                EXPECT_FALSE(placeholdersIn(text).empty()) << name;
            }
        },
        [](std::string_view, const std::vector<std::string>&) {});
    ASSERT_FALSE(englishTemplates.empty());

    for (AppLanguage language : allAppLanguages) {
        SCOPED_TRACE(nameOf(language));
        LocalizedStrings::strings(language).forEachField(
            [&](std::string_view name, const std::string& text) {
                if (isTemplateName(name)) {
                    EXPECT_EQ(placeholdersIn(text), englishTemplates.find(name)->second) << name;
                } else {
                    EXPECT_EQ(placeholdersIn(text), std::vector<std::string>{}) << name;
                }
            },
            [&](std::string_view name, const std::vector<std::string>& list) {
                for (const std::string& item : list) {
                    EXPECT_EQ(placeholdersIn(item), std::vector<std::string>{})
                        << name << ": " << item;
                }
            });
    }
}

TEST(LocalizedStrings, TwoValuesLandInTheirOwnPlacesInEveryLanguage) {
    EXPECT_EQ(LocalizedStrings::en().diagnosticsServerBinaryFoundMessage(
                  "Homebrew", "/opt/homebrew/bin/llama-server"),
              "Homebrew: /opt/homebrew/bin/llama-server");
    EXPECT_EQ(LocalizedStrings::en().chainProgressSubtitle(2, 5), "Running \u2014 2 of 5 done");

    for (AppLanguage language : allAppLanguages) {
        SCOPED_TRACE(nameOf(language));
        const LocalizedStrings& strings = LocalizedStrings::strings(language);

        // Each value must sit where its numbered placeholder stood, whatever the word order.
        const std::string& binaryTemplate = strings.diagnosticsServerBinaryFoundTemplate;
        const bool kindFirst = binaryTemplate.find("%1$@") < binaryTemplate.find("%2$@");
        const std::string binary = strings.diagnosticsServerBinaryFoundMessage("KIND", "/PATH");
        ASSERT_NE(binary.find("KIND"), std::string::npos) << binary;
        ASSERT_NE(binary.find("/PATH"), std::string::npos) << binary;
        EXPECT_EQ(binary.find("KIND") < binary.find("/PATH"), kindFirst) << binary;
        EXPECT_EQ(placeholdersIn(binary), std::vector<std::string>{}) << binary;

        const std::string& progressTemplate = strings.chainRunningProgressTemplate;
        const bool doneFirst = progressTemplate.find("%1$d") < progressTemplate.find("%2$d");
        const std::string progress = strings.chainProgressSubtitle(31, 58);
        ASSERT_NE(progress.find("31"), std::string::npos) << progress;
        ASSERT_NE(progress.find("58"), std::string::npos) << progress;
        EXPECT_EQ(progress.find("31") < progress.find("58"), doneFirst) << progress;
        EXPECT_EQ(placeholdersIn(progress), std::vector<std::string>{}) << progress;
    }
}

TEST(LocalizedStrings, InsertedTextIsNeverFilledAgain) {
    const LocalizedStrings& en = LocalizedStrings::en();
    EXPECT_EQ(en.missingSlotMessage("%@"), "Missing required detail: %@");
    EXPECT_EQ(en.diagnosticsServerBinaryFoundMessage("%2$@", "%1$@"), "%2$@: %1$@");
    EXPECT_EQ(en.timerNotificationBody("%d min"), "Your %d min timer is up");
    EXPECT_EQ(en.diagnosticsCheckFailedMessage("unavailable"), "check failed - unavailable");
    EXPECT_EQ(en.missingSlotMessage(en.slotNameRecipient),
              "Missing required detail: who to send it to");
}

TEST(LocalizedStrings, DownloadPercentKeepsItsLiteralPercentSign) {
    EXPECT_EQ(LocalizedStrings::en().llmUnavailableDownloadingMessage(42),
              "Still downloading the model (42%) \u2014 this will work automatically once it "
              "finishes.");
    for (AppLanguage language : allAppLanguages) {
        const std::string message =
            LocalizedStrings::strings(language).llmUnavailableDownloadingMessage(7);
        EXPECT_NE(message.find("7%"), std::string::npos) << nameOf(language) << ": " << message;
        EXPECT_EQ(message.find("%@"), std::string::npos) << nameOf(language) << ": " << message;
    }
}

// The help matcher's phrases after its normal form (lower case, no white space, no trailing
// punctuation): the help menu item's query must be one of them in every language.
TEST(LocalizedStrings, HelpQueryIsAPhraseTheHelpMatcherAccepts) {
    const std::set<std::string> accepted{
        "도움말",         "사용법",       "기능",        "기능목록",
        "help",           "whatcanyoudo", "whatdoyoudo", "whatcanyouhelpwith",
        "commands",       "features",     "howtouse",    "何ができる",
        "何ができますか", "何ができるの", "使い方",      "ヘルプ",
        "你能做什么",     "你会做什么",   "帮助",        "怎么用"};
    EXPECT_EQ(LocalizedStrings::en().helpQuery(), "help");
    for (AppLanguage language : allAppLanguages) {
        std::string query = LocalizedStrings::strings(language).helpQuery();
        std::erase_if(query, [](char c) { return std::isspace(static_cast<unsigned char>(c)); });
        EXPECT_TRUE(accepted.contains(query)) << nameOf(language) << ": " << query;
    }
}

}  // namespace
}  // namespace nuvrel::core
