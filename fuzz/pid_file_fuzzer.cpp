// The PID files of the model server and of the timers: at most three fields, none empty, the
// first two without a colon; a PID reads back from its own decimal text and from nothing else.

#include <charconv>

#include "fuzz_support.h"
#include "llm/pid_file_text.h"

using namespace nuvrel;
using namespace nuvrel::llm;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text = fuzz::text(data, size);
    const auto fields = PIDFileText::fields(text);
    FUZZ_CHECK(fields.size() <= 3);
    for (std::size_t i = 0; i < fields.size(); ++i) {
        FUZZ_CHECK(!fields[i].empty());
        if (i < 2 && fields.size() > i + 1) FUZZ_CHECK(fields[i].find(':') == std::string::npos);
    }
    if (const auto pid = PIDFileText::parsePID(text)) {
        std::int64_t value = 0;
        std::string_view digits = text;
        if (!digits.empty() && digits.front() == '+') digits.remove_prefix(1);
        const auto [end, error] =
            std::from_chars(digits.data(), digits.data() + digits.size(), value);
        FUZZ_CHECK(error == std::errc() && end == digits.data() + digits.size());
        FUZZ_CHECK(value == *pid);
        FUZZ_CHECK(PIDFileText::parsePID(std::to_string(*pid)) == pid);
    }
    return 0;
}
