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

int IntegerDigits(double magnitude) {
  return magnitude < 1 ? 1 : static_cast<int>(std::floor(std::log10(magnitude))) + 1;
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
  const double magnitude = std::fabs(x);
  if (!(magnitude < PlainLimit)) return GeneralText(x);
  std::string text = FixedText(x, std::clamp(places, 0, std::max(0, SignificantDigits - IntegerDigits(magnitude))));
  StripTrailingZeros(text);
  return text;
}

std::string GeneralText(double x) {
  if (std::isnan(x)) return "error";
  if (std::isinf(x)) return x > 0 ? "infinity" : "-infinity";
  const double magnitude = std::fabs(x);
  if (magnitude != 0 && (magnitude < 1e-4 || magnitude >= PlainLimit)) {
    return TidyScientific(fmt::format("{:.{}e}", x, SignificantDigits - 1));
  }
  std::string text = fmt::format(
      "{:.{}f}", x,
      std::max(0, SignificantDigits - (magnitude == 0 ? 1 : static_cast<int>(std::floor(std::log10(magnitude))) + 1)));
  StripTrailingZeros(text);
  return WithoutNegativeZero(text);
}

double FifteenDigits(double x) {
  if (std::fabs(x) < PlainLimit && x == std::trunc(x)) return x + 0.0;
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
