#pragma once
// Converts an amount with one request to the Frankfurter rate service. Nothing is cached:
// every query asks the service again.
//
// Threading: stateless; execute blocks on the caller's task for at most the services' time-out.

#include <string>

#include "answers/currency_code.h"
#include "answers/information_services.h"
#include "core/app_language.h"
#include "core/capability_result.h"

namespace nuvrel::answers::CurrencyCapability {

// A currencyConversion result: "100.00 USD = 15,565 JPY". Every failure but a stop request
// (bad address, transport error, status outside 2xx, a body without the target's rate) is a
// UserFacingError with currencyNetworkFailureMessage, not retryable.
core::CapabilityResult execute(const CurrencyConversionRequest& request, core::AppLanguage language,
                               const InformationServices& services);

// Always grouped with ","; no decimals for KRW and JPY, exactly two for the others.
std::string formattedNumber(double value, CurrencyCode code);

}  // namespace nuvrel::answers::CurrencyCapability
