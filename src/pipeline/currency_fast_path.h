#pragma once
// Recognises an amount with a currency, in English or Korean, with Korean number words behind
// the digits: "$100", "100 dollars to yen", "3만원 달러로". The tables and the slot reader
// are answers::CurrencyFastPath; this is the matcher of the cascade.
//
// Pure; safe from any thread. The patterns are built once per process.

#include <cstddef>
#include <optional>
#include <string_view>

#include "answers/currency_code.h"

namespace nuvrel::pipeline::CurrencyFastPath {

// The amount in the source currency and the target: the next currency named behind the
// amount, else won (dollars when the source is won). Nothing when a downstream fast path
// claims the query.
std::optional<answers::CurrencyConversionRequest> match(std::string_view text);

}  // namespace nuvrel::pipeline::CurrencyFastPath
