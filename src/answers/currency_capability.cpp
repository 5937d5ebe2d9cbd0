#include "answers/currency_capability.h"

#include <unicode/numberformatter.h>

#include <nlohmann/json.hpp>

#include "answers/calc_number_format.h"
#include "base/cancellation.h"
#include "core/localized_strings.h"
#include "core/user_facing_error.h"

namespace nuvrel::answers::CurrencyCapability {
namespace {

std::string decimalText(double value) {
    return CalculatorFastPath::formatNumber(value, 10);
}

// The rate service has already applied the amount: its rate is the converted value.
std::optional<double> convertedValue(const std::string& body, CurrencyCode to) {
    const auto json = nlohmann::json::parse(body, nullptr, false);
    if (!json.is_object()) return std::nullopt;
    const auto rates = json.find("rates");
    if (rates == json.end() || !rates->is_object()) return std::nullopt;
    const auto rate = rates->find(std::string(rawValue(to)));
    if (rate == rates->end() || !rate->is_number()) return std::nullopt;
    return rate->get<double>();
}

}  // namespace

std::string formattedNumber(double value, CurrencyCode code) {
    namespace number = icu::number;
    UErrorCode status = U_ZERO_ERROR;
    const bool whole = code == CurrencyCode::krw || code == CurrencyCode::jpy;
    const auto formatter = number::NumberFormatter::withLocale(icu::Locale::getUS())
                               .precision(whole ? number::Precision::maxFraction(0)
                                                : number::Precision::fixedFraction(2))
                               .grouping(UNUM_GROUPING_ON_ALIGNED);
    const icu::UnicodeString formatted = formatter.formatDouble(value, status).toString(status);
    if (U_FAILURE(status)) return decimalText(value);
    std::string text;
    formatted.toUTF8String(text);
    return text;
}

core::CapabilityResult execute(const CurrencyConversionRequest& request, core::AppLanguage language,
                               const InformationServices& services) {
    const core::LocalizedStrings& strings = core::LocalizedStrings::strings(language);
    const auto failure = [&] {
        return core::UserFacingError(strings.currencyNetworkFailureMessage);
    };
    const base::Url url = services.frankfurter().withQueryItems({
        {"amount", decimalText(request.amount)},
        {"from", std::string(rawValue(request.from))},
        {"to", std::string(rawValue(request.to))},
    });
    std::optional<double> converted;
    try {
        const base::HttpResponse response =
            services.get(url, InformationServices::Purpose::currency);
        if (response.status < 200 || response.status > 299) throw failure();
        converted = convertedValue(response.body, request.to);
    } catch (const core::UserFacingError&) {
        throw;
    } catch (...) {
        base::rethrowIfCancelled();
        throw failure();
    }
    if (!converted) throw failure();
    return core::CapabilityResult::CurrencyConversion{
        formattedNumber(request.amount, request.from) + " " + std::string(rawValue(request.from)) +
        " = " + formattedNumber(*converted, request.to) + " " + std::string(rawValue(request.to))};
}

}  // namespace nuvrel::answers::CurrencyCapability
