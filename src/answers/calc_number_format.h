#pragma once
// How the calculator prints a number: whole values below 1e15 as integers, everything else
// with a fixed number of decimals and no trailing zeros. Independent of the process locale.

#include <string>

namespace nuvrel::answers::CalculatorFastPath {

// A whole value with magnitude below 1e15 prints as a signed integer ("-0" prints "0").
// Otherwise "%.Nf" with N = decimals, then trailing "0"s and a trailing "." are dropped:
// formatNumber(8.04672, 2) == "8.05", formatNumber(1e15, 6) == "1000000000000000".
std::string formatNumber(double value, int decimals);

}  // namespace nuvrel::answers::CalculatorFastPath
