// Texts as they are typed into cells, and the texts that a cell's number is edited and copied as.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "numeric/Regional.h"
#include "workbook/CellLook.h"

namespace tellurix {

struct TypedValue {
  int type = EmptyCell;                // NumberCell, TextCell or LogicalCell
  double number = 0;                   // of a number or logical (true -1)
  std::optional<NumberFormat> format;  // for a cell that has none of its own: of a date or percentage
};

// What a text that is no formula says. By the region: a number; a percentage ("12.5%" is 0.125), with the decimals that
// it has; a date with a year, perhaps with a time of day ("12/03/2001 13:45"), as a serial number of days. TRUE and
// FALSE are logicals. All else is a text: so is a time of day alone, which is as often a titre or a ratio, and what
// only a guess makes a date of ("12/80", "SEPT2").
TypedValue ReadTyped(std::string_view text, const Regional& regional);

// A number as it is edited: a date of a date format, a percentage of that of percentages, else with the fewest digits
// that read back exactly. Typed again under the same region it is the same number: that of a date to the nearest
// millisecond.
std::string TypedText(double number, const NumberFormat& format, const Regional& regional);
// The same, where a date that would not read back exactly goes by its digits.
std::string ExactTypedText(double number, const NumberFormat& format, const Regional& regional);

}  // namespace tellurix
