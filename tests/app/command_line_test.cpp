#include "app/command_line.h"

#include <gtest/gtest.h>

#include "app/launch.h"

namespace nuvrel::app {
namespace {

CommandLine parsed(std::vector<std::string> args) {
    auto result = parseCommandLine(args);
    EXPECT_TRUE(std::holds_alternative<CommandLine>(result));
    return std::get<CommandLine>(result);
}

std::string usageError(std::vector<std::string> args) {
    auto result = parseCommandLine(args);
    EXPECT_TRUE(std::holds_alternative<UsageError>(result));
    return std::holds_alternative<UsageError>(result) ? std::get<UsageError>(result).message : "";
}

TEST(CommandLine, AskJoinsTheWordsAndTakesOptionsAnywhereBeforeTheDoubleDash) {
    auto line = parsed({"ask", "--json", "15%", "of", "80", "--lang", "ko"});
    EXPECT_EQ(line.verb, CommandLine::Verb::ask);
    EXPECT_EQ(line.options.sentence, "15% of 80");
    EXPECT_TRUE(line.options.json);
    EXPECT_EQ(line.options.language, core::AppLanguage::ko);

    auto negative = parsed({"ask", "--", "-2^2"});
    EXPECT_EQ(negative.options.sentence, "-2^2");
    EXPECT_FALSE(negative.options.json);

    auto decomposed = parsed({"ask", "\u1112\u1161\u11AB"});  // 한 typed as jamo
    EXPECT_EQ(decomposed.options.sentence, "\uD55C");
}

TEST(CommandLine, BadUsageIsExplained) {
    EXPECT_NE(usageError({"ask"}).find("needs a sentence"), std::string::npos);
    EXPECT_NE(usageError({"ask", "-2^2"}).find("after --"), std::string::npos);
    EXPECT_NE(usageError({"ask", "--lang", "fr", "x"}).find("unknown language"), std::string::npos);
    EXPECT_NE(usageError({"ask", "x", "--lang"}).find("needs a value"), std::string::npos);
    EXPECT_NE(usageError({"frobnicate"}).find("unknown command"), std::string::npos);
    EXPECT_EQ(parsed({}).verb, CommandLine::Verb::interactive);
    EXPECT_EQ(parsed({"--help"}).verb, CommandLine::Verb::help);
    EXPECT_EQ(parsed({"ask", "x", "--help"}).verb, CommandLine::Verb::help);
    EXPECT_EQ(parsed({"--version"}).verb, CommandLine::Verb::version);
}

TEST(CommandLine, ExplainSettingsKeyAndDiagnosticsTakeTheirOwnWords) {
    const auto explain = parsed({"explain", "--json", "15%", "of", "80"});
    EXPECT_EQ(explain.verb, CommandLine::Verb::explain);
    EXPECT_TRUE(explain.options.json);
    EXPECT_EQ(explain.options.sentence, "15% of 80");
    EXPECT_NE(usageError({"explain"}).find("explain needs a sentence"), std::string::npos);
    const auto set = parsed({"settings", "set", "lang", "ko"});
    EXPECT_EQ(set.settings.action, SettingsOptions::Action::set);
    EXPECT_EQ(set.settings.key + "=" + set.settings.value, "lang=ko");
    EXPECT_EQ(parsed({"settings", "unset", "lang"}).settings.action,
              SettingsOptions::Action::unset);
    EXPECT_EQ(parsed({"key", "remove", "firecrawl"}).key.action, KeyOptions::Action::remove);
    EXPECT_TRUE(parsed({"diagnostics", "--copy"}).copyDiagnostics);
    EXPECT_EQ(parsed({"settings", "--help"}).verb, CommandLine::Verb::help);
    for (std::vector<std::string> bad : {std::vector<std::string>{"settings", "set", "lang"},
                                         {"key", "set", "tavily"},
                                         {"diagnostics", "--all"}})
        EXPECT_FALSE(usageError(bad).empty());
}

TEST(CommandLine, InstallServerTakesNothingButHelp) {
    EXPECT_EQ(parsed({"install-server"}).verb, CommandLine::Verb::installServer);
    EXPECT_EQ(parsed({"install-server", "--help"}).verb, CommandLine::Verb::help);
    EXPECT_NE(usageError({"install-server", "--json"}).find("install-server does not take"),
              std::string::npos);
    EXPECT_NE(usageText().find("nuvrel install-server"), std::string::npos);
}

TEST(CommandLine, NetlogTakesItsOwnOptionsAndRefusesAnythingElse) {
    const auto plain = parsed({"netlog"});
    EXPECT_EQ(plain.verb, CommandLine::Verb::netlog);
    EXPECT_EQ(plain.netlog.limit, 50u);
    EXPECT_FALSE(plain.netlog.json);
    EXPECT_EQ(plain.netlog.language, std::nullopt);

    const auto full = parsed({"netlog", "--limit", "7", "--json", "--lang=zh"});
    EXPECT_EQ(full.verb, CommandLine::Verb::netlog);
    EXPECT_EQ(full.netlog.limit, 7u);
    EXPECT_TRUE(full.netlog.json);
    EXPECT_EQ(full.netlog.language, core::AppLanguage::zh);
    EXPECT_EQ(parsed({"netlog", "--limit=0", "--lang", "ja"}).netlog.limit, 0u);
    EXPECT_EQ(parsed({"netlog", "--help"}).verb, CommandLine::Verb::help);

    EXPECT_NE(usageError({"netlog", "--limit"}).find("needs a number"), std::string::npos);
    for (const char* bad : {"-1", "ten", "5x", ""}) {
        EXPECT_NE(usageError({"netlog", "--limit", bad}).find("whole number"), std::string::npos)
            << bad;
    }
    EXPECT_NE(usageError({"netlog", "--lang", "fr"}).find("unknown language"), std::string::npos);
    EXPECT_NE(usageError({"netlog", "--no-network"}).find("netlog does not take"),
              std::string::npos);
    EXPECT_NE(usageError({"netlog", "recent"}).find("netlog does not take"), std::string::npos);
    EXPECT_NE(usageError({"ask", "x", "--lang=fr"}).find("unknown language"), std::string::npos);
    EXPECT_EQ(parsed({"ask", "x", "--lang=ko"}).options.language, core::AppLanguage::ko);
    EXPECT_NE(usageText().find("nuvrel netlog"), std::string::npos);
}

TEST(PreferredLanguages, ComeFromTheLocaleVariablesInOrder) {
    const char* env[] = {"LANG=ja_JP.UTF-8", "LANGUAGE=ko_KR:en", nullptr};
    EXPECT_EQ(preferredLanguagesFromEnvironment(env),
              (std::vector<std::string>{"ko-KR", "en", "ja-JP"}));
    const char* plain[] = {"LC_ALL=C", "LANG=zh_TW.UTF-8", nullptr};
    EXPECT_TRUE(preferredLanguagesFromEnvironment(plain).empty()) << "LC_ALL wins and says nothing";
    EXPECT_EQ(core::detectFromSystemLocale(preferredLanguagesFromEnvironment(env)),
              core::AppLanguage::ko);
}

}  // namespace
}  // namespace nuvrel::app
