#include "classical/Frequencies.h"

#include "numeric/CategoryOrder.h"
#include "numeric/Text.h"
#include "session/Skeleton.h"

namespace tellurix {

namespace {

constexpr const char* Caption = "FREQUENCY ANALYSIS";
constexpr const char* NotApplicable = "n/a";
constexpr int PercentPlaces = 2;

struct CategoryRow {
  std::string name;
  int frequency;
};

struct FrequencyTable {
  std::vector<CategoryRow> rows;  // in order
  int n = 0;                      // not missing
  int missing = 0;
};

FrequencyTable Tabulate(const ColumnDescriptor& info, const Regional& regional) {
  FrequencyTable table;
  for (const std::size_t i : CategoryOrder(info.CategoryName, regional)) {
    const std::string& name = info.CategoryName[i];
    const int frequency = info.CategoryFreq[i];
    if (EqualNoCase(name, MissingCategory)) {
      table.missing = frequency;
      continue;
    }
    table.rows.push_back({name, frequency});
    table.n += frequency;
  }
  return table;
}

void SetRow(TemplateMerge& merge, const Formatter& format, const CategoryRow& row, int cumulative, int n) {
  const auto percent = [&](int count) { return format.FormatValue(100.0 * count / n, PercentPlaces); };
  merge.SetField("x", row.name);
  merge.SetField("fx", format.FormatValue(row.frequency, 0));
  merge.SetField("%", percent(row.frequency));
  merge.SetField("cm", format.FormatValue(cumulative, 0));
  merge.SetField("%2", percent(cumulative));
}

void SetTable(TemplateMerge& merge, const Formatter& format, const FrequencyTable& table) {
  int cumulative = 0;
  for (std::size_t i = 0; i < table.rows.size(); ++i) {
    const bool isLast = i + 1 == table.rows.size();
    if (isLast) merge.BlockDrop();
    isLast ? merge.BlockKeep() : merge.BlockRepeat();  // the last row has the rule under it
    cumulative += table.rows[i].frequency;
    SetRow(merge, format, table.rows[i], cumulative, table.n);
  }
  if (table.missing == 0) return merge.BlockDrop();
  merge.BlockKeep();
  merge.SetField("x", MissingCategory);
  merge.SetField("fx", format.FormatValue(table.missing, 0));
  for (int i = 0; i < 3; ++i) merge.SetField("na", NotApplicable);
}

}  // namespace

void Frequencies(Session& session) {
  if (!session.data.SelectWorksheetData(ModeCategoricalTrimmed, 1, 1, "Select data for FREQUENCY ANALYSIS")) return;
  const ColumnDescriptor& info = session.data.ColumnInfo.front();
  const FrequencyTable table = Tabulate(info, session.options.regional);
  if (table.n == 0) {
    ShowMessage(session, "Not enough data in this column to analyse.", WarningIcon, Caption);
    return;
  }

  TemplateMerge merge = session.Merge();
  if (!merge.OpenTemplate("freq.rtf")) return;
  const Calculation calculation(session);
  Report* report = EnsureReport(session);
  if (!report) return;

  const Formatter format = session.Format();
  merge.SetField("ti", info.Title);
  merge.SetField("n", format.FormatValue(table.n, 0));
  SetTable(merge, format, table);
  merge.CloseTemplate();
  report->helpContext = session.HelpContext;
  merge.InsertMergedText(*report);
}

}  // namespace tellurix
