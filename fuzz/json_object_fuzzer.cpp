// extractJSONObject: what it finds is a balanced object that stands in the text, starting at
// the text's first "{"; a text that is one JSON object gives itself back; and the trimmed
// string field reader gives only trimmed, non-blank text.

#include <nlohmann/json.hpp>

#include "base/text.h"
#include "fuzz_support.h"
#include "llm/json_object_extraction.h"

using namespace nuvrel;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text = fuzz::text(data, size);
    const auto object = llm::extractJSONObject(text);
    if (object) {
        FUZZ_CHECK(object->size() >= 2 && object->front() == '{' && object->back() == '}');
        FUZZ_CHECK(text.find(*object) == text.find('{'));
        // The object's own first object is itself.
        FUZZ_CHECK(llm::extractJSONObject(*object) == object);
    }
    // nlohmann's parser ends the text at a NUL byte; the extractor does not.
    if (!text.empty() && text.front() == '{' && text.find('\0') == std::string_view::npos) {
        const auto parsed = nlohmann::json::parse(text, nullptr, false);
        // JSON may trail blanks behind the object; they are not part of it.
        const auto end = text.find_last_not_of(" \t\n\r");
        if (!parsed.is_discarded() && parsed.is_object())
            FUZZ_CHECK(object == std::string(text.substr(0, end + 1)));
    }
    if (object) {
        if (const auto field = llm::trimmedStringField(*object, "summary")) {
            FUZZ_CHECK(!field->empty() && *field == base::text::trim(*field));
        }
    }
    return 0;
}
