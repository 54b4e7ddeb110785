// What a formatter answers: the text that goes into a report and the number or numbers behind it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "report/Options.h"

namespace tellurix {

struct Value {
  std::string text;
  std::vector<double> numbers;  // unrounded; MissingValue for a missing one
  bool rich = false;            // the text is rich text already and goes in as it stands

  Value() = default;
  Value(std::string plainText) : text(std::move(plainText)) {}
  Value(std::string_view plainText) : text(plainText) {}
  Value(const char* plainText) : text(plainText) {}
  Value(std::string plainText, double number) : text(std::move(plainText)), numbers{number} {}

  static Value Rich(std::string richText) {
    Value value(std::move(richText));
    value.rich = true;
    return value;
  }
};

// Numbers and P values as texts, by the options in force.
class Formatter {
 public:
  explicit Formatter(const Options& options) : options_(options) {}

  // The general form: at most `places` decimals, half to even, no trailing zeros; below the display in scientific form
  // with two decimals. "*" for MissingValue, "infinity" and "-infinity" for the overflow markers, "error" for what is
  // not a finite number.
  Value FormatValue(double x, int places) const;

  // FormatValue with the decimals of statistics.
  Value FormatStatistic(double x) const { return FormatValue(x, options_.DecimalPlaces); }

  // "*" for MissingValue; from 7 places upward all digits; else FormatValue.
  Value FormatPlaces(double x, int places) const;

  // Fixed decimals, trailing zeros kept, their number chosen from the size of `ref`: 2, below 0.01 3, below 0.001 4.
  Value FormatLike(double x, double ref) const;

  // "P = 0.0312", "P < 0.0001", "P > 0.9999"; "P = *" where |p| is above 10.
  Value FormatP(double p) const;

  // The same for a P that cannot exceed one half: "P = err" out of range, "P > 0.4999" at the upper end.
  Value FormatHalfP(double p) const;

  // The P of a standard normal statistic, folded to the smaller tail, one-sided or two-sided; "*" for MissingValue.
  Value FormatOneSidedP(double z) const;
  Value FormatTwoSidedP(double z) const;

  // A power as "(for 5% significance) = 81.2%", alpha being the significance level as a fraction.
  Value FormatPower(double x, double alpha) const;

 private:
  std::string ValueText(double x, int places) const;
  Value PText(double p, double upper, const char* outOfRange) const;
  std::string Local(std::string numberText) const { return Localized(std::move(numberText), options_.regional); }

  const Options& options_;
};

// The 32-bit integer that a prompt's text states, half to even; 0 when it is not numeric.
int ParseInteger(std::string_view text, const Regional& regional = {});

// The number that a prompt's text states, rounded to 14 decimals; 0 when it is not numeric.
double ParseReal(std::string_view text, const Regional& regional = {});

}  // namespace tellurix
