#include "workbook/data/Pairwise.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "numeric/MedianSlope.h"
#include "numeric/Missing.h"
#include "session/Skeleton.h"
#include "workbook/data/NewColumns.h"

namespace tellurix {

namespace {

constexpr const char* Caption = "Pairwise";
constexpr int TitleRow = 1;

std::size_t PresentIn(const NumberColumn& column) {
  return column.values.size() - static_cast<std::size_t>(std::ranges::count(column.values, MissingValue));
}

std::optional<NumberColumn> SelectOne(Session& session, std::string_view prompt) {
  auto columns = SelectNumbers(session, prompt, 1);
  if (!columns) return std::nullopt;
  return std::move(columns->front());
}

// Whether n rows have pairs and the sheet takes them; the user is told when not.
bool PairsFit(Session& session, std::size_t n) {
  if (n >= 2 && n * (n - 1) / 2 <= GridStore::MaxRows - TitleRow) return true;
  ShowMessage(session, n < 2 ? "Too few observations." : "Error: too many data.", WarningIcon, Caption);
  return false;
}

struct YAndX {
  NumberColumn y;
  NumberColumn x;  // both of one length and without missing values
};

std::optional<YAndX> SelectYAndX(Session& session) {
  auto y = SelectOne(session, "Select Y");
  if (!y) return std::nullopt;
  session.data.ClearGridSelection();
  auto x = SelectOne(session, "Select X");
  if (!x) return std::nullopt;
  if (PresentIn(*y) != PresentIn(*x)) {
    ShowMessage(session, "Error: unequal number of observations in X and Y.", WarningIcon, Caption);
    return std::nullopt;
  }
  YAndX pairs{{.title = std::move(y->title)}, {.title = std::move(x->title)}};
  for (std::size_t i = 0; i < std::min(y->values.size(), x->values.size()); ++i) {
    if (y->values[i] == MissingValue || x->values[i] == MissingValue) continue;
    pairs.y.values.push_back(y->values[i]);
    pairs.x.values.push_back(x->values[i]);
  }
  if (!PairsFit(session, pairs.x.values.size())) return std::nullopt;
  return pairs;
}

template <typename Function>
std::vector<double> OverPairs(std::size_t n, Function function) {
  std::vector<double> results;
  results.reserve(n * (n - 1) / 2);
  for (std::size_t i = 0; i < n; ++i) {
    for (std::size_t j = i + 1; j < n; ++j) {
      const double result = function(i, j);
      results.push_back(std::isfinite(result) ? result : MissingValue);
    }
  }
  return results;
}

void WritePairs(Session& session, std::string title, std::vector<double> values) {
  const OutputColumn column{.title = std::move(title), .values = std::move(values)};
  WriteColumns(session, {&column, 1}, {}, TitleRow);
}

std::string MedianNote(Session& session, const MedianSlope& median, double confidence) {
  const Formatter format = session.Format();
  return fmt::format(" [Median slope ({}% CI)= {} ({} to {})]", format.FormatValue(confidence * 100, 2).text,
                     format.FormatStatistic(median.slope).text, format.FormatStatistic(median.lower).text,
                     format.FormatStatistic(median.upper).text);
}

}  // namespace

void PairwiseDifferences(Session& session) {
  const auto pairs = SelectYAndX(session);
  if (!pairs) return;
  BusyPointer(session);
  const auto& [y, x] = *pairs;
  WritePairs(session, fmt::format("Differences ({} - {})", y.title, x.title),
             OverPairs(x.values.size(), [&](std::size_t i, std::size_t j) { return y.values[j] - x.values[i]; }));
}

void PairwiseMeans(Session& session) {
  auto column = SelectOne(session, "Select Y");
  if (!column) return;
  auto& values = column->values;
  std::erase(values, MissingValue);
  if (!PairsFit(session, values.size())) return;
  BusyPointer(session);
  WritePairs(session, "Means within " + column->title,
             OverPairs(values.size(), [&](std::size_t i, std::size_t j) { return values[i] / 2 + values[j] / 2; }));
}

void PairwiseSlopes(Session& session) {
  const auto pairs = SelectYAndX(session);
  if (!pairs) return;
  const auto& [y, x] = *pairs;
  std::vector<double> slopes = PairwiseSlopes(y.values, x.values);
  std::string title = fmt::format("Slopes({}, {})", y.title, x.title);
  const Reply reply =
      ShowMessage(session, "Calculate median slope with confidence interval?", YesNo | QuestionIcon, Caption);
  if (reply == Reply::Yes) {
    const auto confidence = session.prompts.SelectConfidence();
    if (!confidence) return;
    title += MedianNote(session, MedianSlopeWithLimits(slopes, x.values, *confidence), *confidence);
  }
  BusyPointer(session);
  WritePairs(session, std::move(title), std::move(slopes));
}

}  // namespace tellurix
