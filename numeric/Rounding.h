// Rounding half to even, as every conversion and every printed number of the system rounds.
#pragma once

#include <cstdint>
#include <string>

namespace tellurix {

// x rounded to `places` decimals (0 to 300), ties to even, judged on the exact binary value of x.
double RoundHalfEven(double x, int places);

// The nearest 32-bit integer, ties to even. Out of range values saturate; NaN gives 0.
std::int32_t ToInteger(double x);

// x as plain text with at most `places` decimals and at most 15 significant digits, "." as decimal symbol, no
// trailing zeros, no "-0". From 1e15 on the scientific form ("1.5E+20").
std::string PlainText(double x, int places);

// x as plain text with exactly `places` decimals, "." as decimal symbol.
std::string FixedText(double x, int places);

// The general number-to-text form: up to 15 significant digits, scientific below 1e-4 and from 1e15 on.
std::string GeneralText(double x);

// The number that the 15 significant digits of x in general form stand for: what is left of x when it is written down and
// read again. Infinite when they are beyond the range; 0 for -0.
double FifteenDigits(double x);

// x in scientific form with two decimals and an exponent of at least two digits: "1.23E-05".
std::string ScientificText(double x);

}  // namespace tellurix
