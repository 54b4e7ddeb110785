// Columns of numbers in, new columns of numbers out: what the commands of the Data menu share.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "session/Session.h"

namespace tellurix {

struct NumberColumn {
  std::string title;
  int firstRow = 1;            // worksheet row of the first value
  std::vector<double> values;  // MissingValue where there is none
};

inline constexpr int MaxSelectedColumns = 200;

// The columns that the user selects, row by row down to the last one that is not blank. Nothing when cancelled or,
// after a message, when one of them holds no number.
std::optional<std::vector<NumberColumn>> SelectNumbers(Session& session, std::string_view prompt, int maxColumns);

// WriteColumns with each value in the worksheet row that it belongs to; the titles stand above the first of these rows.
bool WriteNewColumns(Session& session, std::vector<NumberColumn> columns);

// The first of the options 0 to options - 1 that was on when ShowOptions was answered; 0 for none.
int ChosenOption(const Session& session, int options);

// A number in a title or a prompt: up to 15 digits, with the user's decimal symbol.
std::string NumberText(const Session& session, double x);

}  // namespace tellurix
