#pragma once
// The error of type E that a call threw; nothing when it returned. Anything else propagates.

#include <optional>
#include <utility>

namespace nuvrel::test {

template <class E, class F>
std::optional<E> errorOf(F&& call) {
    try {
        std::forward<F>(call)();
    } catch (const E& error) {
        return error;
    }
    return std::nullopt;
}

}  // namespace nuvrel::test
