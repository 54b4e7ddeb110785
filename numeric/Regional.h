// Regional settings: how numbers and dates are written by the user.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tellurix {

struct Regional {
  std::string decimalSymbol = ".";
  std::string groupingSymbol;           // empty: none
  std::string dateForm = "yyyy-mm-dd";  // the short date
};

// The number that the whole text states by the regional rule (sign, grouping, decimal symbol, exponent; blanks at both
// ends), or nothing. "inf", "nan" and hexadecimal are not numbers.
std::optional<double> ReadNumber(std::string_view text, const Regional& regional);

// A number text with "." put into the user's form.
std::string Localized(std::string numberText, const Regional& regional);

}  // namespace tellurix
