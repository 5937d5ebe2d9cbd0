#pragma once
// What the calculator hands back: the one line its card shows ("2 + 3 = 5"). The pipeline
// wraps it into a calculation result.

#include <string>

namespace nuvrel::answers {

struct CalcResult {
    std::string display;
    bool operator==(const CalcResult&) const = default;
};

}  // namespace nuvrel::answers
