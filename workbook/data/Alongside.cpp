#include "workbook/data/Alongside.h"

#include <fmt/format.h>

#include <algorithm>

#include "numeric/Missing.h"
#include "session/Skeleton.h"

namespace tellurix {

namespace {

// Whether each column selected holds a number; a message when one does not.
bool HoldNumbers(Session& session) {
  const auto isMissing = [](double x) { return x == MissingValue; };
  for (const auto& column : session.data.DataMatrix) {
    if (!std::ranges::all_of(column, isMissing)) continue;
    RefuseNonNumericData(session);
    return false;
  }
  return true;
}

}  // namespace

bool SelectAlongside(Session& session, const ColumnDescriptor& first, SelectionMode mode, int maxColumns,
                     std::string_view prompt) {
  const ColumnDescriptor reference = first;  // which may be of the selection that is overwritten
  DataSelection& data = session.data;
  const auto logged = session.results.Current().selection.size();
  for (;;) {
    data.ClearGridSelection();
    if (!data.SelectWorksheetData(mode, 1, maxColumns, prompt)) return false;
    const auto goesWith = [&](const ColumnDescriptor& info) {
      return info.Count == reference.Count || info.StartRow == reference.StartRow;
    };
    const bool fits = std::ranges::all_of(data.ColumnInfo, goesWith);
    if (fits && (mode >= ModeCategorical || HoldNumbers(session))) return true;
    session.results.Current().selection.resize(logged);
    if (fits) continue;
    std::string text = fmt::format("Error: all columns selected must be {} rows long.", reference.Count);
    if (mode < ModeCategorical) text += "\n\nThe rows must contain numeric data not text.";
    ShowMessage(session, text, WarningIcon, "Worksheet Data Selection");
  }
}

double ValueAt(const DataSelection& data, std::size_t column, std::size_t position) {
  if (position >= static_cast<std::size_t>(data.ColumnInfo[column].Count)) return MissingValue;
  return data.DataMatrix[column][position];
}

}  // namespace tellurix
