#include "classical/UnivariateSummary.h"

#include <algorithm>
#include <optional>
#include <span>

#include "classical/SummaryItems.h"
#include "numeric/Missing.h"
#include "numeric/Summary.h"
#include "session/Skeleton.h"

namespace tellurix {

namespace {

constexpr const char* Caption = "Descriptive Statistics";
constexpr int MaxColumns = 200;
constexpr std::size_t LongWork = 2'000'000;  // values, from which on progress is shown

constexpr SummaryItem Offered[] = {
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
    SummaryItem::UpperQuartile,
    SummaryItem::Median,
    SummaryItem::LowerQuartile,
    SummaryItem::Minimum,
    SummaryItem::Range,
};

// Ticked until the user chooses others.
bool IsUsual(SummaryItem item) {
  constexpr SummaryItem usual[] = {SummaryItem::Count,   SummaryItem::Mean,          SummaryItem::Variance,
                                   SummaryItem::Sd,      SummaryItem::Sem,           SummaryItem::LowerCL,
                                   SummaryItem::UpperCL, SummaryItem::Maximum,       SummaryItem::UpperQuartile,
                                   SummaryItem::Median,  SummaryItem::LowerQuartile, SummaryItem::Minimum};
  return std::ranges::find(usual, item) != std::end(usual);
}

struct Choices {
  double confidence = 0.95;
  std::vector<SummaryItem> items;
  double centileA = 0;  // per cent; none outside (0, 100)
  double centileB = 0;
  int centileType = 1;
};

// A table of the report is as wide as its paper lets it be; more columns go into further tables.
struct TableShape {
  std::size_t columns;
  int columnWidth;  // twips
};
constexpr TableShape Usual{3, 2000}, Wide{2, 3000};
constexpr std::size_t LongestUsual = 16;  // characters of a figure, above which columns are wide
constexpr int LabelEdge = 2800;           // twips

// Selects the data, and their weights into CompanionMatrix.
bool SelectData(Session& session, bool weighted) {
  DataSelection& data = session.data;
  if (session.options.UseGroupID) {
    return weighted ? data.SelectWeightedGroups(1, MaxColumns, "") : data.SelectGroups(0, 1, MaxColumns, "");
  }
  if (!data.SelectWorksheetData(ModeNumericRows, 1, MaxColumns, "Select data to describe")) return false;
  return !weighted || data.SelectCompanions("Select weights");
}

bool HasNumbers(const DataSelection& data) {
  return std::ranges::any_of(data.DataMatrix, [](const auto& column) {
    return std::ranges::any_of(column, [](double x) { return x != MissingValue; });
  });
}

bool HasNegativeWeight(const DataSelection& data) {
  return std::ranges::any_of(data.CompanionMatrix, [](const auto& column) {
    return std::ranges::any_of(column, [](double weight) { return weight < 0; });
  });
}

std::vector<SummaryItem> OfferedItems(bool weighted) {
  std::vector<SummaryItem> items(std::begin(Offered), std::end(Offered));
  if (weighted) items.push_back(SummaryItem::WeightTotal);
  return items;
}

// The labels of check boxes, as ShowOptions takes them.
std::string OptionList(std::span<const SummaryItem> items, const Summary& labels) {
  std::string list;
  for (const SummaryItem item : items) list += (list.empty() ? "" : "|") + SummaryLabel(item, labels);
  return list;
}

std::vector<SummaryItem> ChosenOf(const Prompts& prompts, std::span<const SummaryItem> items) {
  std::vector<SummaryItem> chosen;
  for (std::size_t i = 0; i < items.size(); ++i) {
    if (prompts.OptionOn(static_cast<int>(i))) chosen.push_back(items[i]);
  }
  return chosen;
}

bool IsCentile(double percent) { return percent > 0 && percent < 100; }

std::optional<Choices> AskChoices(Session& session, bool weighted) {
  Prompts& prompts = session.prompts;
  Choices choices;
  const auto confidence = prompts.SelectConfidence();
  if (!confidence) return std::nullopt;
  choices.confidence = *confidence;

  const auto items = OfferedItems(weighted);
  const int count = static_cast<int>(items.size());
  Summary labels;
  labels.FullSummaryFromX(std::span<const double>(), "", choices.confidence, 0, 0);
  for (int i = 0; i < count; ++i) prompts.PresetOption(i, IsUsual(items[static_cast<std::size_t>(i)]));
  prompts.FillEntry(0, "User defined centile a", "0");
  prompts.FillEntry(1, "User defined centile b", "0");
  const std::string types = weighted ? "" : "|^Centile type 1|^Centile type 2";
  if (!prompts.ShowOptions(OptionList(items, labels) + types, "Select the results to include")) return std::nullopt;
  choices.centileA = prompts.ComboReal(0);
  choices.centileB = prompts.ComboReal(1);
  if (!weighted && prompts.OptionOn(count + 1)) choices.centileType = 2;
  choices.items = ChosenOf(prompts, items);

  // A centile that was asked for stands in front of the range.
  auto place = std::ranges::find(choices.items, SummaryItem::Range);
  if (place == choices.items.end()) place = std::ranges::find(choices.items, SummaryItem::WeightTotal);
  if (IsCentile(choices.centileB)) place = choices.items.insert(place, SummaryItem::CentileB);
  if (IsCentile(choices.centileA)) choices.items.insert(place, SummaryItem::CentileA);
  if (!choices.items.empty()) return choices;
  ShowMessage(session, "Error: no results were selected.", WarningIcon, Caption);
  return std::nullopt;
}

// Nothing where the user cancelled.
std::optional<std::vector<Summary>> Summarize(Session& session, const Choices& choices, bool weighted) {
  const DataSelection& data = session.data;
  std::size_t work = 0;
  for (const auto& column : data.DataMatrix) work += column.size();
  std::vector<Summary> summaries(data.ColumnInfo.size());
  for (std::size_t k = 0; k < summaries.size(); ++k) {
    const auto& info = data.ColumnInfo[k];
    if (weighted) {
      summaries[k].WeightedSummaryFromXK(data.DataMatrix[k], data.CompanionMatrix[k], info.Count, info.Title,
                                         data.CompanionInfo[k].Title, choices.confidence, choices.centileA,
                                         choices.centileB);
    } else {
      summaries[k].FullSummaryFromXK(data.DataMatrix[k], info.Count, info.Title, choices.confidence, choices.centileA,
                                     choices.centileB, choices.centileType);
    }
    const double done = static_cast<double>(k + 1) / static_cast<double>(summaries.size());
    if (work > LongWork && done < 1 && !ShowProgress(session, Caption, done)) return std::nullopt;
  }
  return summaries;
}

// ---------------------------------------------------------------------------------------------------------------------
// The report
// ---------------------------------------------------------------------------------------------------------------------

TableShape ShapeFor(const std::vector<SummaryItem>& items, std::span<const Summary> summaries,
                    const Formatter& format) {
  const auto hasLongFigure = [&](const Summary& summary) {
    return std::ranges::any_of(
        items, [&](SummaryItem item) { return SummaryText(item, summary, format).text.size() > LongestUsual; });
  };
  return summaries.size() <= Wide.columns || std::ranges::any_of(summaries, hasLongFigure) ? Wide : Usual;
}

void SetCellEdges(TemplateMerge& merge, std::size_t columns, int columnWidth) {
  for (std::size_t k = 1; k <= columns; ++k) {
    merge.BlockRepeat();
    merge.SetField("edge", std::to_string(LabelEdge + static_cast<int>(k) * columnWidth));
  }
  merge.BlockDrop();
}

// One open copy of a row of results.
void SetResultRow(TemplateMerge& merge, SummaryItem item, std::span<const Summary> columns, int columnWidth,
                  const Formatter& format) {
  SetCellEdges(merge, columns.size(), columnWidth);
  merge.SetField("item", SummaryLabel(item, columns.front()));
  for (const Summary& summary : columns) {
    merge.BlockRepeat();
    merge.SetField("result", SummaryText(item, summary, format));
  }
  merge.BlockDrop();
}

// One open copy of the template's table.
void SetTable(TemplateMerge& merge, const std::vector<SummaryItem>& items, std::span<const Summary> columns,
              int columnWidth, const Formatter& format) {
  SetCellEdges(merge, columns.size(), columnWidth);
  for (const Summary& summary : columns) {
    merge.BlockRepeat();
    merge.SetField("title", summary.title);
  }
  merge.BlockDrop();
  for (std::size_t i = 0; i + 1 < items.size(); ++i) {
    merge.BlockRepeat();
    SetResultRow(merge, items[i], columns, columnWidth, format);
  }
  merge.BlockDrop();
  merge.BlockKeep();  // the last row, with the rule under it
  SetResultRow(merge, items.back(), columns, columnWidth, format);
}

bool ReportSummaries(Session& session, const std::vector<SummaryItem>& items, std::span<const Summary> summaries) {
  TemplateMerge merge = session.Merge();
  if (!merge.OpenTemplate("describe.rtf")) return false;
  Report* report = EnsureReport(session);
  if (!report) return false;
  const Formatter format = session.Format();
  const TableShape shape = ShapeFor(items, summaries, format);
  for (std::size_t first = 0; first < summaries.size(); first += shape.columns) {
    merge.BlockRepeat();
    first == 0 ? merge.BlockDrop() : merge.BlockKeep();  // the gap between two tables
    const auto columns = summaries.subspan(first, std::min(shape.columns, summaries.size() - first));
    SetTable(merge, items, columns, shape.columnWidth, format);
  }
  merge.BlockDrop();
  merge.CloseTemplate();
  report->helpContext = session.HelpContext;
  return merge.InsertMergedText(*report);
}

// ---------------------------------------------------------------------------------------------------------------------
// The worksheet
// ---------------------------------------------------------------------------------------------------------------------

// Those of the items that are to be written, asked with the reported ones ticked.
std::optional<std::vector<SummaryItem>> AskItemsToPaste(Session& session, const Choices& choices, bool weighted,
                                                        const Summary& labels) {
  auto items = OfferedItems(weighted);
  std::string list = OptionList(items, labels);
  if (IsCentile(choices.centileA)) {
    items.push_back(SummaryItem::CentileA);
    list += "|User Centile A";
  }
  if (IsCentile(choices.centileB)) {
    items.push_back(SummaryItem::CentileB);
    list += "|User Centile B";
  }
  for (std::size_t i = 0; i < items.size(); ++i) {
    const bool reported = std::ranges::find(choices.items, items[i]) != choices.items.end();
    session.prompts.PresetOption(static_cast<int>(i), reported);
  }
  if (!session.prompts.ShowOptions(list, "Which results to paste to worksheet")) return std::nullopt;
  return ChosenOf(session.prompts, items);
}

// A column of labels under "Title", then one for each summary.
std::vector<OutputColumn> ColumnsOf(const std::vector<SummaryItem>& items, std::span<const Summary> summaries) {
  std::vector<OutputColumn> block(1, {.title = "Title", .values = {}, .texts = {}});
  for (const SummaryItem item : items) block.front().texts.push_back(SummaryLabel(item, summaries.front()));
  for (const Summary& summary : summaries) {
    OutputColumn column{.title = summary.title, .values = {}, .texts = {}};
    for (const SummaryItem item : items) column.values.push_back(SummaryFigure(item, summary));
    block.push_back(std::move(column));
  }
  return block;
}

void PasteSummaries(Session& session, const Choices& choices, bool weighted, std::span<const Summary> summaries) {
  if (ShowMessage(session, "Save results to a worksheet?", YesNo | QuestionIcon, Caption) != Reply::Yes) return;
  const auto items = AskItemsToPaste(session, choices, weighted, summaries.front());
  if (!items || items->empty()) return;
  const auto block = ColumnsOf(*items, summaries);
  OutputColumns output(session.host, session.documents, session.prompts, session.results);
  int reserved = static_cast<int>(block.size());
  if (output.GetOutputColumns(reserved)) output.Write(block, 1);
}

void Describe(Session& session, bool weighted) {
  if (!SelectData(session, weighted)) return;
  if (!HasNumbers(session.data)) return RefuseNonNumericData(session);
  if (weighted && HasNegativeWeight(session.data)) {
    ShowMessage(session, "Weights must not be negative", WarningIcon, Caption);
    return;
  }
  const auto choices = AskChoices(session, weighted);
  if (!choices) return;
  std::optional<std::vector<Summary>> summaries;
  {
    const Calculation calculation(session);
    summaries = Summarize(session, *choices, weighted);
  }
  if (!summaries) return;
  if (std::ranges::all_of(*summaries, [](const Summary& summary) { return summary.n == 0; })) {
    return RefuseNonNumericData(session);
  }
  if (ReportSummaries(session, choices->items, *summaries)) PasteSummaries(session, *choices, weighted, *summaries);
}

}  // namespace

void UnivariateSummary(Session& session) { Describe(session, false); }
void WeightedUnivariateSummary(Session& session) { Describe(session, true); }

}  // namespace tellurix
