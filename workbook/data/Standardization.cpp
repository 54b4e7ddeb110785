#include "workbook/data/Standardization.h"

#include <fmt/format.h>

#include <cmath>

#include "numeric/ColumnStats.h"
#include "numeric/Missing.h"
#include "session/Skeleton.h"
#include "workbook/data/NewColumns.h"

namespace tellurix {

namespace {

struct Method {
  const char* name;
  bool subtractsMean;
  bool dividesBySd;
};

constexpr Method Methods[] = {{"(x-mean)/SD", true, true}, {"x/SD", false, true}, {"x-mean", true, false}};

// Missing where there is no spread to divide by.
void Standardize(std::vector<double>& values, const Method& method) {
  const ColumnStats stats = ComputeColumnStats(values);
  const bool isPossible = !method.dividesBySd || (stats.sd != MissingValue && stats.sd > 0);
  for (double& x : values) {
    if (x == MissingValue) continue;
    double result = isPossible ? x : MissingValue;
    if (isPossible && method.subtractsMean) result -= stats.mean;
    if (isPossible && method.dividesBySd) result /= stats.sd;
    x = std::isfinite(result) ? result : MissingValue;
  }
}

}  // namespace

void Standardization(Session& session) {
  auto columns = SelectNumbers(session, "Select data for STANDARDIZATION", 1);
  if (!columns) return;
  if (!session.prompts.ShowOptions("^subtract mean and divide by SD|^divide by SD only|^subtract mean only",
                                   "Select standardization method")) {
    return;
  }
  const Method& method = Methods[ChosenOption(session, 3)];
  BusyPointer(session);
  NumberColumn& column = columns->front();
  Standardize(column.values, method);
  column.title = fmt::format("Std ({}): {}", method.name, column.title);
  WriteNewColumns(session, std::move(*columns));
}

}  // namespace tellurix
