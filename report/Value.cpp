#include "report/Value.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "numeric/Missing.h"
#include "numeric/Probability.h"
#include "numeric/Rounding.h"

namespace tellurix {

namespace {

// The texts that stand for no ordinary number.
std::optional<std::string> SpecialText(double x) {
  if (x == MissingValue || x == -MissingValue) return "*";
  if (x == OverflowMarker) return "infinity";
  if (x == NegativeOverflowMarker) return "-infinity";
  if (!std::isfinite(x)) return "error";
  return std::nullopt;
}

bool ShowsAtPlaces(double x, int places) { return x == 0 || std::fabs(x) >= std::pow(10.0, -places); }

}  // namespace

std::string Formatter::ValueText(double x, int places) const {
  if (const auto special = SpecialText(x)) return *special;
  return Local(ShowsAtPlaces(x, places) ? PlainText(x, places) : ScientificText(x));
}

Value Formatter::FormatValue(double x, int places) const { return {ValueText(x, places), x}; }

Value Formatter::FormatPlaces(double x, int places) const {
  if (places < 7 || SpecialText(x)) return FormatValue(x, places);
  return {Local(GeneralText(x)), x};
}

Value Formatter::FormatLike(double x, double ref) const {
  const double size = std::fabs(ref);
  int places = 2;
  if (size < 0.01 && ref != 0) places = size < 0.001 ? 4 : 3;
  if (const auto special = SpecialText(x)) return {*special, x};
  return {Local(ShowsAtPlaces(x, places) ? FixedText(x, places) : ScientificText(x)), x};
}

Value Formatter::PText(double p, double upper, const char* outOfRange) const {
  if (!(std::fabs(p) <= 10)) return {std::string("P = ") + outOfRange, p};
  const int places = options_.PDecimalPlaces;
  const double threshold = std::pow(10.0, -places);
  if (p < threshold) return {"P < " + Local(FixedText(threshold, places)), p};
  if (p > upper - threshold) return {"P > " + Local(FixedText(upper - threshold, places)), p};
  return {"P = " + Local(PlainText(p, places)), p};
}

Value Formatter::FormatP(double p) const { return PText(p, 1.0, "*"); }

Value Formatter::FormatHalfP(double p) const { return PText(p, 0.5, "err"); }

Value Formatter::FormatOneSidedP(double z) const {
  return z == MissingValue ? Value("*", MissingValue) : FormatP(OneSidedP(z));
}

Value Formatter::FormatTwoSidedP(double z) const {
  return z == MissingValue ? Value("*", MissingValue) : FormatP(TwoSidedP(z));
}

Value Formatter::FormatPower(double x, double alpha) const {
  std::string text;
  if (x == MissingValue) {
    text = "*";
  } else if (x > 0.9999) {
    text = "> " + Local("99.99") + "%";
  } else if (x < 0.0001) {
    text = "< " + Local("0.01") + "%";
  } else {
    text = "= " + ValueText(100 * x, 2) + "%";
  }
  return {"(for " + ValueText(100 * alpha, 1) + "% significance) " + text, x};
}

int ParseInteger(std::string_view text, const Regional& regional) {
  const auto number = ReadNumber(text, regional);
  return number ? ToInteger(*number) : 0;
}

double ParseReal(std::string_view text, const Regional& regional) {
  const auto number = ReadNumber(text, regional);
  return number ? RoundHalfEven(*number, 14) : 0;
}

}  // namespace tellurix
