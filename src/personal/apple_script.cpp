#include "personal/apple_script.h"

#include "base/text.h"

namespace nuvrel::personal {
namespace {

std::string joinedLines(std::initializer_list<std::string_view> lines) {
    std::string out;
    for (std::string_view line : lines) {
        if (!out.empty()) out += '\n';
        out += line;
    }
    return out;
}

// The three scripts that pick tracks differ only in how they find the hits.
std::string playHits(std::string_view hitsLine) {
    return joinedLines({"tell application \"Music\"", hitsLine,
                        "    if (count of theHits) > 0 then", "        play (some item of theHits)",
                        "        return \"played\"", "    else", "        return \"empty\"",
                        "    end if", "end tell"});
}

}  // namespace

AppleScriptError AppleScriptError::classify(std::optional<int> number,
                                            std::optional<std::string> message) {
    if (number == -1743) return {Kind::automationDenied, -1743, message.value_or("")};
    return {Kind::executionFailed, number.value_or(0),
            message.value_or("AppleScript execution failed")};
}

std::string escapeLiteral(std::string_view text) {
    return base::text::replaceAll(base::text::replaceAll(text, "\\", "\\\\"), "\"", "\\\"");
}

std::string NotesScriptBuilder::create(std::string_view content) {
    const std::string body = base::text::replaceAll(escapeLiteral(content), "\n", "<br>");
    return joinedLines(
        {"tell application \"Notes\"",
         "    make new note at folder 1 of default account with properties {body:\"" + body + "\"}",
         "end tell"});
}

std::string NotesScriptBuilder::listMatching(std::string_view keyword) {
    return joinedLines({"tell application \"Notes\"", "    set out to \"\"",
                        "    repeat with n in (notes of default account whose name contains \"" +
                            escapeLiteral(keyword) + "\")",
                        "        set out to out & (id of n) & tab & (name of n) & linefeed",
                        "    end repeat", "    return out", "end tell"});
}

std::string NotesScriptBuilder::deleteNote(std::string_view noteID) {
    return joinedLines({"tell application \"Notes\"",
                        "    delete note id \"" + escapeLiteral(noteID) + "\"", "end tell"});
}

std::string MessageScriptBuilder::send(std::string_view body, std::string_view handle,
                                       ServiceType serviceType) {
    const std::string service = serviceType == ServiceType::iMessage ? "iMessage" : "SMS";
    return joinedLines(
        {"tell application \"Messages\"",
         "    set targetService to 1st account whose service type = " + service,
         "    set targetBuddy to participant \"" + escapeLiteral(handle) + "\" of targetService",
         "    send \"" + escapeLiteral(body) + "\" to targetBuddy", "end tell"});
}

std::string MessageScriptBuilder::composeMail(std::string_view to, std::string_view body) {
    return joinedLines(
        {"tell application \"Mail\"",
         "    set newMessage to make new outgoing message with properties {content:\"" +
             escapeLiteral(body) + "\", visible:true}",
         "    tell newMessage",
         "        make new to recipient at end of to recipients with properties {address:\"" +
             escapeLiteral(to) + "\"}",
         "    end tell", "    activate", "end tell"});
}

std::string MusicScriptBuilder::playCurrent() {
    return "tell application \"Music\" to play";
}
std::string MusicScriptBuilder::pause() {
    return "tell application \"Music\" to pause";
}
std::string MusicScriptBuilder::next() {
    return "tell application \"Music\" to next track";
}
std::string MusicScriptBuilder::previous() {
    return "tell application \"Music\" to back track";
}
std::string MusicScriptBuilder::readinessProbe() {
    return "tell application \"Music\" to name";
}

std::string MusicScriptBuilder::searchAndPlay(std::string_view query) {
    return playHits("    set theHits to (search playlist 1 for \"" + escapeLiteral(query) + "\")");
}

std::string MusicScriptBuilder::playGenre(const std::vector<std::string>& genres) {
    std::string condition;
    for (const std::string& genre : genres) {
        if (!condition.empty()) condition += " or ";
        condition += "genre contains \"" + escapeLiteral(genre) + "\"";
    }
    return playHits("    set theHits to (every track of playlist 1 whose " + condition + ")");
}

std::string MusicScriptBuilder::playRandomFromLibrary() {
    return playHits("    set theHits to (every track of playlist 1)");
}

const std::string& MusicScriptBuilder::currentTrackInfo() {
    static const std::string script = joinedLines(
        {"tell application \"Music\"", "    try", "        set trackName to name of current track",
         "    on error", "        return \"none\"", "    end try",
         "    set trackArtist to artist of current track",
         "    set trackAlbum to album of current track",
         "    set isPlayingNow to (player state is playing)", "    set posRaw to player position",
         "    set posSeconds to round posRaw", "    set durRaw to duration of current track",
         "    set durSeconds to round durRaw",
         "    return trackName & \"\x1f\" & trackArtist & \"\x1f\" & trackAlbum & \"\x1f\" & "
         "(isPlayingNow as string) & \"\x1f\" & (posSeconds as string) & \"\x1f\" & "
         "(durSeconds as string)",
         "end tell"});
    return script;
}

std::string MusicScriptBuilder::currentArtworkData() {
    return joinedLines({"tell application \"Music\"", "    try",
                        "        return data of artwork 1 of current track", "    on error",
                        "        return", "    end try", "end tell"});
}

}  // namespace nuvrel::personal
