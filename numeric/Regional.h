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

// What the system says about the user's locale.
struct SystemSymbols {
  std::string decimal = ".";
  std::string grouping;
  std::string moneyDecimal = ".";
  std::string moneyGrouping;
  std::string dateForm = "yyyy-mm-dd";
  bool measuresInInches = false;

  bool AgreeWithMoney() const { return decimal == moneyDecimal && grouping == moneyGrouping; }
};

// Reads the locale that the environment names (LC_ALL, LC_NUMERIC, LC_MONETARY, LC_TIME, LC_MEASUREMENT, LANG),
// whatever locale the process runs in; that of an unknown name is "C". Symbols of money that a locale leaves empty are
// those of its numbers; a locale without a short date of its own has the ISO one.
SystemSymbols ReadSystemSymbols();

// A date format of strftime in the form used here: "%d.%m.%Y" is "dd.mm.yyyy". Empty when it has other parts than a
// numeric day, month and year.
std::string DateFormOf(std::string_view strftimeFormat);

// The number that the whole text states by the regional rule (sign, grouping, decimal symbol, exponent; blanks at both
// ends), or nothing. Grouping symbols stand between groups of digits only: where they are points, "1.234.567" is a number
// and neither "1.5" nor "28.02.2020" is. "inf", "nan" and hexadecimal are not numbers.
std::optional<double> ReadNumber(std::string_view text, const Regional& regional);

// A number text with "." put into the user's form.
std::string Localized(std::string numberText, const Regional& regional);

}  // namespace tellurix
