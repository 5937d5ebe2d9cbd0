#pragma once
// The router's system prompts and output schema, and the choice between their variants.
// Every text here reaches the model byte for byte; the app-launch variants are derived once
// from the canonical texts so that the two can never drift apart.

#include <string>
#include <string_view>

namespace nuvrel::pipeline::RouterPrompt {

// The one-line system prompt every router model was trained with. Do not reformat.
inline constexpr std::string_view canonicalSystem =
    R"prompt(You are the intent router for Nuvrel, a macOS natural-language launcher. Read the user's single query and output ONLY one single-line JSON object: {"intent":"<id>","confidence":<0..1>,"slots":{...}}. Intent ids: finder.search, calendar.query, calendar.add, message.send, music.play, timer.set, reminder.set, note.create, web.search, weather.query, currency.convert, window.manage, system.command, system.unknown. Never add keys, text, or explanations outside the JSON.)prompt";

// Appended to the system prompt for interim models. Begins with two line ends. It describes
// only the five plan-driven intents and sends everything else to "system.unknown".
inline constexpr std::string_view interimGuidance =
    R"prompt(

Additional guidance for slot extraction:
- finder.search slots (all optional): keyword (string), file_type (extension or category token), location (downloads/desktop/documents/home/icloud/trash/pictures/movies/music/applications), date_range (today/yesterday/this_week/last_week/this_month/last_month/recent_7_days/recent_30_days/this_year/last_year).
- calendar.query slots: date_range (required; default "today" if unstated), keyword (optional filter).
- message.send slots: recipient (required, keep as spoken), body (required, use only what the user actually said — never invent details), channel (imessage/sms/mail — only if explicit, otherwise omit).
- music.play slots: action (required: play/pause/next/prev, default play), query (optional genre/mood/artist/track).
- web.search slots: query (required, refined search phrase), want_answer (optional bool, default true).
- system.unknown: slots must be the empty object {}. Use it for anything outside these five capabilities (chit-chat, creating/editing/deleting calendar events, phone calls, reading or searching messages/mail, opening apps, system controls, reminders, screenshots, multi-step requests, unclear fragments).

Examples:
User: 한글파일을 찾아줄래?
Assistant: {"intent":"finder.search","confidence":0.92,"slots":{"file_type":"hwp"}}
User: What's on my schedule today?
Assistant: {"intent":"calendar.query","confidence":0.95,"slots":{"date_range":"today"}}
User: 친구에게 조금 늦을거같다고 문자 보내줘
Assistant: {"intent":"message.send","confidence":0.93,"slots":{"recipient":"친구","body":"조금 늦을 것 같아","channel":"sms"}}
User: Play some upbeat EDM
Assistant: {"intent":"music.play","confidence":0.9,"slots":{"action":"play","query":"upbeat EDM"}}
User: 최신 맥북에 들어가는 칩셋을 알려줘
Assistant: {"intent":"web.search","confidence":0.94,"slots":{"query":"최신 맥북 칩셋"}}
User: 아 오늘 진짜 피곤하다
Assistant: {"intent":"system.unknown","confidence":0.88,"slots":{}})prompt";

// The schema for constrained decoding. All slots of all intents share one flat object; the
// validator ties slots to intents. Amounts are strings on purpose.
inline constexpr std::string_view jsonSchema = R"json({
  "type": "object",
  "properties": {
    "intent": {
      "type": "string",
      "enum": ["finder.search", "calendar.query", "calendar.add", "message.send", "music.play", "timer.set", "reminder.set", "note.create", "web.search", "weather.query", "currency.convert", "window.manage", "system.command", "system.unknown"]
    },
    "confidence": {
      "type": "number",
      "minimum": 0,
      "maximum": 1
    },
    "slots": {
      "type": "object",
      "properties": {
        "keyword": {"type": "string"},
        "file_type": {"type": "string"},
        "location": {"type": "string"},
        "date_range": {"type": "string"},
        "recipient": {"type": "string"},
        "body": {"type": "string"},
        "channel": {"type": "string", "enum": ["imessage", "sms", "mail"]},
        "action": {"type": "string", "enum": ["play", "pause", "next", "prev", "leftHalf", "rightHalf", "topHalf", "bottomHalf", "topLeft", "topRight", "bottomLeft", "bottomRight", "maximize", "center", "nextDisplay"]},
        "query": {"type": "string"},
        "want_answer": {"type": "boolean"},
        "time": {"type": "string"},
        "condition": {"type": "string"},
        "amount": {"type": "string"},
        "from_currency": {"type": "string"},
        "to_currency": {"type": "string"},
        "duration": {"type": "string"},
        "title": {"type": "string"},
        "date": {"type": "string"},
        "content": {"type": "string"}
      },
      "additionalProperties": false
    }
  },
  "required": ["intent", "confidence", "slots"],
  "additionalProperties": false
})json";

// canonicalSystem with "app.launch" listed before "system.unknown".
const std::string& canonicalSystemWithAppLaunch();
// jsonSchema with "app.launch" in the intent enumeration before "system.unknown".
std::string_view jsonSchemaWithAppLaunch();

// The system prompt for the two switches: the canonical line (with or without "app.launch"),
// followed by the guidance when `interim`. The reference stays valid for the process.
const std::string& system(bool interim, bool appLaunch);
// The schema offered to the model; the guidance never changes it.
std::string_view schema(bool appLaunch);

// Whether a router model file was trained on "app.launch": "kestrune-mini-router-ep<N>..."
// with an epoch N greater than 3.
bool supportsAppLaunch(std::string_view fileName);

}  // namespace nuvrel::pipeline::RouterPrompt
