#include "classical/QuickSummary.h"

#include <algorithm>

#include "classical/SummaryItems.h"
#include "numeric/Summary.h"
#include "numeric/Text.h"
#include "report/PlainBlock.h"
#include "session/Skeleton.h"

namespace tellurix {

namespace {

constexpr double LowCentile = 5, HighCentile = 95;
constexpr std::size_t LabelWidth = 26;

constexpr SummaryItem Items[] = {
    SummaryItem::Count,
    SummaryItem::Sum,
    SummaryItem::Mean,
    SummaryItem::Variance,
    SummaryItem::Sd,
    SummaryItem::Sem,
    SummaryItem::LowerCL,
    SummaryItem::UpperCL,
    SummaryItem::GeometricMean,
    SummaryItem::Skewness,
    SummaryItem::Kurtosis,
    SummaryItem::Cv,
    SummaryItem::Maximum,
    SummaryItem::CentileB,
    SummaryItem::UpperQuartile,
    SummaryItem::Median,
    SummaryItem::LowerQuartile,
    SummaryItem::CentileA,
    SummaryItem::Minimum,
    SummaryItem::Range,
};

// Padded on the left with blanks, or cut when longer.
std::string RightJustified(const std::string& text, std::size_t width) {
  return text.size() > width ? text.substr(0, width) : std::string(width - text.size(), ' ') + text;
}

// The title, then the values in one column, each with its label behind it.
TextResult SummaryBlock(const Summary& summary, const Formatter& format) {
  TextResult block{.text = "Title: " + summary.title, .numbers = {}, .name = "quick", .fields = {}};
  std::size_t width = 0;
  for (const SummaryItem item : Items) {
    Value value = SummaryText(item, summary, format);
    const std::string label = SummaryLabel(item, summary);
    width = std::max(width, value.text.size());
    block.numbers.insert(block.numbers.end(), value.numbers.begin(), value.numbers.end());
    block.fields.push_back({.name = label, .mark = label, .text = value.text, .numbers = value.numbers});
  }
  for (const FieldResult& field : block.fields) {
    block.text += "\n" + RightJustified(field.text, width) + RightJustified(field.name, LabelWidth);
  }
  return block;
}

}  // namespace

void QuickSummary(Session& session) {
  if (!session.data.SelectWorksheetData(ModeNumericRows, 1, 1, "Select data for quick summary")) return;
  const auto confidence = session.prompts.SelectConfidence();
  if (!confidence) return;

  Summary summary;
  {
    const Calculation calculation(session);
    if (!summary.FullSummaryFromX(session.data.DataMatrix.front(), session.data.ColumnInfo.front().Title, *confidence,
                                  LowCentile, HighCentile)) {
      ShowMessage(session, "Not enough numeric data in this column to analyse.", WarningIcon, "Summary Statistics");
      return;
    }
  }
  Report* report = EnsureReport(session);
  if (!report) return;
  TextResult block = SummaryBlock(summary, session.Format());
  report->helpContext = session.HelpContext;
  InsertPlainBlock(*report, block.text);
  session.results.Current().texts.push_back(std::move(block));
  session.results.Current().delivered = true;
}

}  // namespace tellurix
