#include "numeric/Rounding.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

#include <fast_float/fast_float.h>
#include <fmt/format.h>

namespace tellurix {

namespace {

constexpr double PlainLimit = 1e15;
constexpr int SignificantDigits = 15;

void StripTrailingZeros(std::string& text) {
  if (text.find('.') == std::string::npos) return;
  text.erase(text.find_last_not_of('0') + 1);
  if (text.back() == '.') text.pop_back();
}

std::string WithoutNegativeZero(std::string text) {
  if (text.find_first_not_of("-0.") == std::string::npos && !text.empty() && text.front() == '-') text.erase(0, 1);
  return text;
}

// "1.5000e+20" to "1.5E+20".
std::string TidyScientific(std::string text) {
  const auto e = text.find('e');
  std::string mantissa = text.substr(0, e);
  StripTrailingZeros(mantissa);
  return mantissa + "E" + text.substr(e + 1);
}

// The range in which the powers of ten that bring a number to 15 digits before the point are doubles themselves.
constexpr double ExactFrom = 1e-7;
constexpr double ExactTo = 1e36;
constexpr double PowersOfTen[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                  1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

// The integer nearest to scaled + rest, ties to even; the rest is less than half a unit in the last place of scaled.
double NearestInteger(double scaled, double rest) {
  const double nearest = std::nearbyint(scaled);
  const double over = nearest - scaled;  // exact, and a multiple of that unit
  if (over == 0.5 && rest < 0) return nearest - 1;
  if (over == -0.5 && rest > 0) return nearest + 1;
  return nearest;
}

// FifteenDigits of x from ExactFrom to ExactTo. The product or quotient with a power of ten is known exactly, as the
// rounded one and the rest that a fused multiply-add gives; the way back is one rounded operation on exact numbers,
// which is what reading the digits would give (W. D. Clinger, How to read floating point numbers accurately, 1990).
double FifteenDigitsExactly(double x) {
  int binary = 0;
  std::frexp(x, &binary);
  // The decimal exponent is floor(log10(2) (binary - 1)) or one more; a power of ten itself may go either way.
  int shift = SignificantDigits - 1 - (((binary - 1) * 1233) >> 12);
  if (x >= (shift > 0 ? PlainLimit / PowersOfTen[shift] : PlainLimit * PowersOfTen[-shift])) --shift;
  if (shift >= 0) {
    const double power = PowersOfTen[shift];
    const double scaled = x * power;
    return NearestInteger(scaled, std::fma(x, power, -scaled)) / power;
  }
  const double power = PowersOfTen[-shift];
  const double scaled = x / power;
  return NearestInteger(scaled, std::fma(-scaled, power, x)) * power;
}

// The power of ten of the first digit of a number from 1e-5 to 1e15 that has 15 significant digits at most. The
// logarithm alone is too coarse beside a power of ten.
int DecimalExponent(double x) {
  const auto power = [](int exponent) { return exponent < 0 ? 1 / PowersOfTen[-exponent] : PowersOfTen[exponent]; };
  const int exponent = static_cast<int>(std::floor(std::log10(x)));
  if (x >= power(exponent + 1)) return exponent + 1;
  return x < power(exponent) ? exponent - 1 : exponent;
}

}  // namespace

double RoundHalfEven(double x, int places) {
  // Every double from 2^53 on is an integer: nothing to round.
  if (!std::isfinite(x) || std::fabs(x) >= 9007199254740992.0) return x;
  if (places <= 0) return std::nearbyint(x);
  // Correctly rounded decimal text: the library rounds the exact binary value, ties to even.
  char text[512];
  const auto end = std::to_chars(text, text + sizeof text, x, std::chars_format::fixed, std::min(places, 300));
  double rounded = x;
  std::from_chars(text, end.ptr, rounded);
  return rounded;
}

std::int32_t ToInteger(double x) {
  if (std::isnan(x)) return 0;
  constexpr double low = std::numeric_limits<std::int32_t>::min();
  constexpr double high = std::numeric_limits<std::int32_t>::max();
  return static_cast<std::int32_t>(std::clamp(std::nearbyint(x), low, high));
}

std::string FixedText(double x, int places) { return WithoutNegativeZero(fmt::format("{:.{}f}", x, places)); }

std::string PlainText(double x, int places) {
  if (!(std::fabs(x) < PlainLimit)) return GeneralText(x);
  const double magnitude = std::fabs(FifteenDigits(x));
  const int integerDigits = magnitude < 1 ? 1 : DecimalExponent(magnitude) + 1;
  std::string text = FixedText(x, std::clamp(places, 0, std::max(0, SignificantDigits - integerDigits)));
  StripTrailingZeros(text);
  return text;
}

std::string GeneralText(double x) {
  if (std::isnan(x)) return "error";
  if (std::isinf(x)) return x > 0 ? "infinity" : "-infinity";
  const double magnitude = std::fabs(FifteenDigits(x));
  if (magnitude == 0) return "0";
  if (magnitude < 1e-4 || magnitude >= PlainLimit) {
    return TidyScientific(fmt::format("{:.{}e}", x, SignificantDigits - 1));
  }
  std::string text = fmt::format("{:.{}f}", x, SignificantDigits - 1 - DecimalExponent(magnitude));
  StripTrailingZeros(text);
  return text;
}

double FifteenDigits(double x) {
  const double magnitude = std::fabs(x);
  if (magnitude < PlainLimit && x == std::trunc(x)) return x + 0.0;
  if (magnitude >= ExactFrom && magnitude < ExactTo) return std::copysign(FifteenDigitsExactly(magnitude), x);
  char text[32];
  const auto end = std::to_chars(text, text + sizeof text, x, std::chars_format::scientific, SignificantDigits - 1);
  double rounded = 0;
  fast_float::from_chars(text, end.ptr, rounded);
  return rounded;
}

std::string ScientificText(double x) {
  std::string text = fmt::format("{:.2e}", x);
  text[text.find('e')] = 'E';
  return text;
}

}  // namespace tellurix
