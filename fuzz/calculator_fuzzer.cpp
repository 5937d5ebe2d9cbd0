// The calculator: a result line ends in " = " and a finite number, the same query always gives
// the same line, and the expression it shows computes to that number again.

#include "answers/calculator_fast_path.h"
#include "fuzz_support.h"

using namespace nuvrel;
using answers::CalculatorFastPath::match;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view query = fuzz::text(data, size);
    const auto result = match(query);
    if (!result) return 0;
    const std::string& line = result->display;
    const auto equals = line.rfind(" = ");
    FUZZ_CHECK(equals != std::string::npos);
    const std::string value = line.substr(equals + 3);
    FUZZ_CHECK(!value.empty());
    FUZZ_CHECK(value.find("nan") == std::string::npos && value.find("inf") == std::string::npos);
    FUZZ_CHECK(match(query) == result);
    return 0;
}
