// The vCard reader: any bytes give cards whose texts are valid UTF-8 (they reach the card and
// its JSON), with no blank phone number or address, and a BEGIN and an END line for each card.

#include <algorithm>

#include "base/text.h"
#include "fuzz_support.h"
#include "platform/linux/vcard_folder.h"

using namespace nuvrel;

namespace {

std::size_t lines(std::string_view text) {
    return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')) + 1;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text = fuzz::text(data, size);
    const auto cards = platform::parseVCards(text);
    FUZZ_CHECK(cards.size() * 2 <= lines(text));
    for (const auto& card : cards) {
        for (const auto* field :
             {&card.formattedName, &card.givenName, &card.familyName, &card.nickname})
            FUZZ_CHECK(base::text::isValidUtf8(*field));
        for (const auto* list : {&card.phoneNumbers, &card.emailAddresses}) {
            for (const auto& value : *list) {
                FUZZ_CHECK(!value.empty());
                FUZZ_CHECK(base::text::isValidUtf8(value));
            }
        }
    }
    return 0;
}
