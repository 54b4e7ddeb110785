#include "classical/SummaryItems.h"

namespace tellurix {

namespace {

struct ItemRow {
  const char* label;
  double Summary::*figure;
};

// In the order of SummaryItem; a label without words is made from the summary.
constexpr ItemRow Rows[] = {
    {"Valid data (n)", nullptr},
    {"Sum", &Summary::sum},
    {"Mean", &Summary::mean},
    {"Variance", &Summary::variance},
    {"Standard deviation", &Summary::sd},
    {"Standard error of mean", &Summary::sem},
    {"Lower ", &Summary::lowerCL},
    {"Upper ", &Summary::upperCL},
    {"Geometric mean", &Summary::geometricMean},
    {"Skewness", &Summary::skewness},
    {"Kurtosis", &Summary::kurtosis},
    {"Coefficient of variation", &Summary::cv},
    {"Maximum", &Summary::maximum},
    {"Upper quartile", &Summary::upperQuartile},
    {"Median", &Summary::median},
    {"Lower quartile", &Summary::lowerQuartile},
    {"Minimum", &Summary::minimum},
    {"", &Summary::centileA},
    {"", &Summary::centileB},
    {"Range", &Summary::range},
    {"Sum of scaled weights", &Summary::weightTotal},
};

const ItemRow& RowOf(SummaryItem item) { return Rows[static_cast<std::size_t>(item)]; }

// "95th percentile", "2.5th percentile", "1st percentile".
std::string PercentileLabel(const std::string& percent) {
  const char* ending = "th";
  const bool isTeen = percent.size() == 2 && percent.front() == '1';
  if (percent.find('.') == std::string::npos && !isTeen && !percent.empty()) {
    if (percent.back() == '1') ending = "st";
    if (percent.back() == '2') ending = "nd";
    if (percent.back() == '3') ending = "rd";
  }
  return percent + ending + " percentile";
}

}  // namespace

std::string SummaryLabel(SummaryItem item, const Summary& summary) {
  switch (item) {
    case SummaryItem::LowerCL:
    case SummaryItem::UpperCL:
      return RowOf(item).label + summary.confidenceLabel + " of mean";
    case SummaryItem::CentileA:
      return PercentileLabel(summary.centileALabel);
    case SummaryItem::CentileB:
      return PercentileLabel(summary.centileBLabel);
    default:
      return RowOf(item).label;
  }
}

double SummaryFigure(SummaryItem item, const Summary& summary) {
  return item == SummaryItem::Count ? static_cast<double>(summary.n) : summary.*RowOf(item).figure;
}

Value SummaryText(SummaryItem item, const Summary& summary, const Formatter& format) {
  const double figure = SummaryFigure(item, summary);
  return item == SummaryItem::Count ? format.FormatValue(figure, 0) : format.FormatStatistic(figure);
}

}  // namespace tellurix
