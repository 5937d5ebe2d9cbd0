#include <gtest/gtest.h>

#include "personal/apple_script.h"
#include "personal/music_play_capability.h"

namespace nuvrel::personal {
namespace {

TEST(ScriptTexts, QuoteUserTextSoThatItNeverRunsAsScript) {
    EXPECT_EQ(escapeLiteral(R"(a"b)"), R"(a\"b)");
    EXPECT_EQ(escapeLiteral(R"(a\b)"), R"(a\\b)");
    EXPECT_EQ(escapeLiteral(R"(\")"), R"(\\\")");
    EXPECT_EQ(MessageScriptBuilder::send(R"(" & (do shell script "x") & ")", "+1 555",
                                         MessageScriptBuilder::ServiceType::SMS),
              "tell application \"Messages\"\n"
              "    set targetService to 1st account whose service type = SMS\n"
              "    set targetBuddy to participant \"+1 555\" of targetService\n"
              "    send \"\\\" & (do shell script \\\"x\\\") & \\\"\" to targetBuddy\n"
              "end tell");
    EXPECT_EQ(NotesScriptBuilder::create("milk\n\"eggs\""),
              "tell application \"Notes\"\n    make new note at folder 1 of default account with "
              "properties {body:\"milk<br>\\\"eggs\\\"\"}\nend tell");
    EXPECT_NE(MessageScriptBuilder::composeMail("a@b.c", "hi").find("{address:\"a@b.c\"}"),
              std::string::npos);
    EXPECT_NE(MusicScriptBuilder::playGenre({"K-Pop", "Pop"})
                  .find("whose genre contains \"K-Pop\" or genre contains \"Pop\")\n"),
              std::string::npos);

    using Error = AppleScriptError;
    EXPECT_EQ(Error::classify(-1743, "anything"),
              (Error{Error::Kind::automationDenied, -1743, "anything"}));
    EXPECT_EQ(Error::classify(-600, std::nullopt),
              (Error{Error::Kind::executionFailed, -600, "AppleScript execution failed"}));
    EXPECT_EQ(Error::classify(std::nullopt, std::nullopt),
              (Error{Error::Kind::executionFailed, 0, "AppleScript execution failed"}));
}

TEST(MusicReadings, GenresAndTrackRecords) {
    using Genres = std::vector<std::string>;
    EXPECT_EQ(MusicGenreMapper::candidateGenres("K-Pop hits"), (Genres{"K-Pop", "Pop"}));
    EXPECT_EQ(MusicGenreMapper::candidateGenres("trap"), (Genres{"Hip-Hop/Rap", "Hip Hop", "Rap"}));
    EXPECT_EQ(MusicGenreMapper::candidateGenres("재즈 틀어줘"), (Genres{"Jazz"}));
    EXPECT_TRUE(MusicGenreMapper::candidateGenres("podcast").empty());

    const auto reading = MusicPlayCapability::parseTrackInfo(
        "So What\x1fMiles\x1f\x1ftrue\x1f"
        "12\x1fmissing value");
    ASSERT_TRUE(reading);
    EXPECT_EQ(reading->track, "So What");
    EXPECT_FALSE(reading->album);
    EXPECT_TRUE(reading->isPlaying);
    EXPECT_EQ(reading->positionSeconds, 12.0);
    EXPECT_EQ(reading->durationSeconds, 0.0);
    EXPECT_FALSE(MusicPlayCapability::parseTrackInfo("none"));
    EXPECT_FALSE(
        MusicPlayCapability::parseTrackInfo("a\x1f"
                                            "b\x1f\x1f\x1f\x1f\x1f"
                                            "c"));
}

}  // namespace
}  // namespace nuvrel::personal
