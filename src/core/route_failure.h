#pragma once
// Why routing produced no usable intent.

namespace nuvrel::core {

enum class RouteFailure {
    cancelled,
    llmUnavailable,
    invalidOutput,
    inputTooLong,
};

}  // namespace nuvrel::core
