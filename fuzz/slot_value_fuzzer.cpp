// SlotValue decoding from any JSON: a scalar decodes to the case of its JSON kind and encodes
// back to an equal value; an array or object throws DecodingError and nothing else.

#include <nlohmann/json.hpp>

#include "core/decoding_error.h"
#include "core/slot_value.h"
#include "fuzz_support.h"

using namespace nuvrel;
using core::SlotValue;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto json = nlohmann::json::parse(fuzz::text(data, size), nullptr, false);
    if (json.is_discarded()) return 0;
    try {
        const auto value = json.get<SlotValue>();
        FUZZ_CHECK(!json.is_structured());
        FUZZ_CHECK(value.isNull() == json.is_null());
        FUZZ_CHECK(value.isBool() == json.is_boolean());
        FUZZ_CHECK(value.isNumber() == json.is_number());
        FUZZ_CHECK(value.isString() == json.is_string());
        const nlohmann::json encoded = value;
        FUZZ_CHECK(encoded.get<SlotValue>() == value);
    } catch (const core::DecodingError&) {
        FUZZ_CHECK(json.is_structured());
    }
    return 0;
}
