#include "pipeline/router_prompt.h"

#include <unicode/uchar.h>

#include <charconv>
#include <cstdint>

#include "base/text.h"

namespace nuvrel::pipeline::RouterPrompt {
namespace {

constexpr std::string_view systemAnchor = "system.command, system.unknown. ";
constexpr std::string_view schemaAnchor = R"("system.command", "system.unknown")";

constexpr bool occursOnce(std::string_view text, std::string_view part) {
    const auto at = text.find(part);
    return at != std::string_view::npos && text.find(part, at + 1) == std::string_view::npos;
}

// An edit that loses or doubles an anchor would silently offer the model the wrong vocabulary.
static_assert(occursOnce(canonicalSystem, systemAnchor));
static_assert(occursOnce(jsonSchema, schemaAnchor));

std::string replaceOnce(std::string_view text, std::string_view from, std::string_view to) {
    const auto at = text.find(from);
    std::string result(text.substr(0, at));
    result += to;
    result += text.substr(at + from.size());
    return result;
}

}  // namespace

const std::string& canonicalSystemWithAppLaunch() {
    static const std::string text =
        replaceOnce(canonicalSystem, systemAnchor, "system.command, app.launch, system.unknown. ");
    return text;
}

std::string_view jsonSchemaWithAppLaunch() {
    static const std::string text = replaceOnce(
        jsonSchema, schemaAnchor, R"("system.command", "app.launch", "system.unknown")");
    return text;
}

const std::string& system(bool interim, bool appLaunch) {
    static const std::string plain(canonicalSystem);
    static const std::string plainInterim = plain + std::string(interimGuidance);
    static const std::string withAppLaunchInterim =
        canonicalSystemWithAppLaunch() + std::string(interimGuidance);
    if (appLaunch) return interim ? withAppLaunchInterim : canonicalSystemWithAppLaunch();
    return interim ? plainInterim : plain;
}

std::string_view schema(bool appLaunch) {
    return appLaunch ? jsonSchemaWithAppLaunch() : jsonSchema;
}

bool supportsAppLaunch(std::string_view fileName) {
    static constexpr std::string_view family = "kestrune-mini-router-ep";
    if (!fileName.starts_with(family)) return false;

    // The run takes every number character; only ASCII digits read as a decimal integer, so
    // "ep٥" or "ep4½" names no epoch, and neither does one beyond 64 bits.
    const std::string_view rest = fileName.substr(family.size());
    std::size_t end = 0;
    while (end < rest.size()) {
        std::size_t next = end;
        const char32_t c = base::text::nextCodePoint(rest, next);
        if (u_getIntPropertyValue(static_cast<UChar32>(c), UCHAR_NUMERIC_TYPE) == U_NT_NONE) break;
        end = next;
    }
    const std::string_view run = rest.substr(0, end);
    if (run.empty()) return false;

    std::int64_t epoch = 0;
    const auto [last, error] = std::from_chars(run.data(), run.data() + run.size(), epoch);
    if (error != std::errc() || last != run.data() + run.size()) return false;
    return epoch > 3;
}

}  // namespace nuvrel::pipeline::RouterPrompt
