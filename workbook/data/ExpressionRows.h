// Expressions in V1, V2 ... over the rows of selected columns.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "workbook/data/NewColumns.h"

namespace tellurix {

// "V1: title" for each column.
std::vector<std::string> VariableList(const std::vector<NumberColumn>& columns);

// The value of the expression for each worksheet row from the first row of any column to the last; V1 is the first
// column. A row is MissingValue where a column that the expression names is, without evaluation. Nothing when the user
// cancelled the progress.
struct RowValues {
  int firstRow = 1;
  std::vector<double> values;

  bool AreMissing() const;  // throughout, as those of an expression that is wrong
};
std::optional<RowValues> EvaluateRows(Session& session, const std::vector<NumberColumn>& columns,
                                      std::string_view expression);

}  // namespace tellurix
