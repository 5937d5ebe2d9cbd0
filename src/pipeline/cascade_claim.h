#pragma once
// What the pipeline would do with a sentence, told without doing it: the cascade step that
// claims it, or the router.

#include <nlohmann/json.hpp>
#include <string>

namespace nuvrel::pipeline {

struct CascadeClaim {
    // The router's place, after the twenty fast paths.
    static constexpr int routerStep = 21;

    // 1-based place in the cascade, or routerStep.
    int step = routerStep;
    // The fast path's name as in the code, or "router".
    std::string matcher = "router";
    // What the fast path gave (a timer's seconds, a currency request...); null for the router.
    nlohmann::json value{};

    // {"step":N,"matcher":"<name>","value":{...}}, without "value" for the router.
    nlohmann::ordered_json toJson() const;
    bool operator==(const CascadeClaim&) const = default;
};

}  // namespace nuvrel::pipeline
