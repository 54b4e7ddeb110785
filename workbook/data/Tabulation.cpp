#include "workbook/data/Tabulation.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <optional>

#include "numeric/CategoryOrder.h"
#include "numeric/Missing.h"
#include "numeric/Regional.h"
#include "numeric/Rounding.h"
#include "numeric/Text.h"
#include "session/Skeleton.h"
#include "workbook/CellReading.h"
#include "workbook/data/Alongside.h"
#include "workbook/data/NewColumns.h"

namespace tellurix {

namespace {

constexpr const char* TabulateCaption = "Tabulate";
constexpr const char* DetabulateCaption = "Detabulate";

// ---------------------------------------------------------------------------------------------------------------------
// Tabulate
// ---------------------------------------------------------------------------------------------------------------------

// One column of codes, with its categories in the order in which a table lists them.
struct Classifier {
  std::string title;
  std::vector<double> codes;
  std::vector<std::string> names;        // in the table's order
  std::vector<std::size_t> placeOfCode;  // of code - 1, in `names`
};

Classifier ReadClassifier(DataSelection& data, std::size_t column) {
  Classifier classifier{.title = data.ColumnInfo[column].Title, .codes = std::move(data.DataMatrix[column])};
  classifier.codes.resize(static_cast<std::size_t>(data.ColumnInfo[column].Count));
  classifier.names = data.ColumnInfo[column].CategoryName;
  return classifier;
}

// Settles the order of the categories and leaves the missing one out.
void Arrange(Classifier& classifier, bool isSorted, const Regional& regional) {
  std::vector<std::size_t> order(classifier.names.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  if (isSorted) order = CategoryOrder(classifier.names, regional);
  std::erase_if(order, [&](std::size_t k) { return EqualNoCase(classifier.names[k], MissingCategory); });
  classifier.placeOfCode.assign(classifier.names.size(), 0);
  std::vector<std::string> names;
  for (const std::size_t k : order) {
    classifier.placeOfCode[k] = names.size();
    names.push_back(std::move(classifier.names[k]));
  }
  classifier.names = std::move(names);
}

// Appends the table of rows by columns: the names of the rows, then a column of counts for each category.
void AppendTable(const Classifier& rows, const Classifier& columns, std::vector<OutputColumn>& block) {
  const std::size_t first = block.size() + 1;
  block.push_back({.title = {}, .values = {}, .texts = rows.names});
  for (const std::string& name : columns.names) {
    block.push_back({.title = name, .values = std::vector<double>(rows.names.size()), .texts = {}});
  }
  std::size_t total = 0;
  for (std::size_t i = 0; i < std::min(rows.codes.size(), columns.codes.size()); ++i) {
    if (rows.codes[i] == MissingValue || columns.codes[i] == MissingValue) continue;
    const std::size_t row = rows.placeOfCode[static_cast<std::size_t>(rows.codes[i]) - 1];
    const std::size_t column = columns.placeOfCode[static_cast<std::size_t>(columns.codes[i]) - 1];
    ++block[first + column].values[row];
    ++total;
  }
  block[first - 1].title = fmt::format("{} by {} (n = {})", rows.title, columns.title, total);
}

// ---------------------------------------------------------------------------------------------------------------------
// Detabulate
// ---------------------------------------------------------------------------------------------------------------------

// A table of whole counts, with the names of its rows and columns.
struct CountTable {
  std::vector<std::string> rows;
  std::vector<std::string> columns;
  std::vector<std::vector<double>> counts;  // by column; MissingValue counts nothing
};

bool HasNumbers(const std::vector<double>& column) {
  return std::ranges::any_of(column, [](double x) { return x != MissingValue; });
}

// The worksheet column in which a selection begins.
int FirstMarkedColumn(const Workbook& workbook) {
  for (int i = 0; i < workbook.SelectionCount(); ++i) {
    const CellRange range = workbook.GetSelection(i);
    if (range.lastRow > range.firstRow) return range.firstColumn;
  }
  return workbook.GetSelection(0).firstColumn;
}

// The texts in a worksheet column beside the table, or 1, 2, 3 ... where they are not texts throughout.
std::vector<std::string> RowNames(const Workbook& workbook, int column, int firstRow, std::size_t count) {
  std::vector<std::string> names;
  bool areTexts = column > 0;
  for (std::size_t i = 0; i < count && areTexts; ++i) {
    const int row = firstRow + static_cast<int>(i);
    names.push_back(GetCellLabel(workbook, row, column));
    areTexts = std::abs(workbook.TypeRC(row, column)) == TextCell && !names.back().empty();
  }
  if (areTexts) return names;
  names.clear();
  for (std::size_t i = 0; i < count; ++i) names.push_back(std::to_string(i + 1));
  return names;
}

// The marked table; its row names may be marked with it, as its first column, or stand to the left of it.
std::optional<CountTable> SelectTable(Session& session) {
  DataSelection& data = session.data;
  if (!data.SelectWorksheetData(ModeNumericRows, 2, MaxSelectedColumns,
                                "select TABLE to expand into row and column variables")) {
    return std::nullopt;
  }
  const Workbook& workbook = *session.documents.ActiveWorkbook();
  int nameColumn = FirstMarkedColumn(workbook) - 1;
  if (!HasNumbers(data.DataMatrix.front())) {
    ++nameColumn;
    data.DataMatrix.erase(data.DataMatrix.begin());
    data.ColumnInfo.erase(data.ColumnInfo.begin());
  }
  if (!std::ranges::all_of(data.DataMatrix, HasNumbers)) {
    RefuseNonNumericData(session);
    return std::nullopt;
  }
  data.PadJaggedColumns();
  CountTable table{.counts = std::move(data.DataMatrix)};
  for (const ColumnDescriptor& info : data.ColumnInfo) table.columns.push_back(info.Title);
  const ColumnDescriptor& info = data.ColumnInfo.front();
  table.rows = RowNames(workbook, nameColumn, info.StartRow, static_cast<std::size_t>(info.Count));
  const auto isCount = [](double x) { return x == MissingValue || (x >= 0 && x == std::floor(x)); };
  for (const auto& column : table.counts) {
    if (std::ranges::all_of(column, isCount)) continue;
    session.data.ShowInvalidData();
    return std::nullopt;
  }
  return table;
}

double TotalOf(const CountTable& table) {
  double total = 0;
  for (const auto& column : table.counts) {
    for (const double count : column) total += count == MissingValue ? 0 : count;
  }
  return total;
}

// A column of categories: numbers where all the names are numbers as they are written, else texts.
OutputColumn CategoryColumn(std::string title, const std::vector<std::string>& names,
                            const std::vector<std::size_t>& places, const Regional& regional) {
  OutputColumn column{.title = std::move(title)};
  std::vector<double> numbers;
  for (const std::string& name : names) {
    const auto number = CategoryNumber(name, regional);
    if (!number || (GeneralText(*number) != name && Localized(GeneralText(*number), regional) != name)) break;
    numbers.push_back(*number);
  }
  const bool areNumbers = numbers.size() == names.size();
  for (const std::size_t place : places) {
    if (areNumbers) {
      column.values.push_back(numbers[place]);
    } else {
      column.texts.push_back(names[place]);
    }
  }
  return column;
}

}  // namespace

void Tabulate(Session& session) {
  DataSelection& data = session.data;
  if (!data.SelectWorksheetData(ModeCategoricalTrimmed, 1, 1, "select data for FIRST CLASSIFIER (ROWS)")) return;
  const ColumnDescriptor first = data.ColumnInfo.front();
  Classifier rows = ReadClassifier(data, 0);
  if (!SelectAlongside(session, first, ModeCategoricalTrimmed, MaxSelectedColumns,
                       "select data for SECOND CLASSIFIER(S) (COLUMNS)")) {
    return;
  }
  std::vector<Classifier> others;
  for (std::size_t k = 0; k < data.ColumnInfo.size(); ++k) others.push_back(ReadClassifier(data, k));
  const Reply sorts = ShowMessage(session, "Sort row and column categories in alphanumeric order?",
                                  YesNoCancel | QuestionIcon, TabulateCaption);
  if (sorts == Reply::Cancel) return;
  const Regional& regional = session.options.regional;
  Arrange(rows, sorts == Reply::Yes, regional);
  std::size_t width = others.size();
  for (Classifier& columns : others) {
    Arrange(columns, sorts == Reply::Yes, regional);
    width += columns.names.size();
  }
  if (rows.names.empty() || width == others.size()) return data.ShowInvalidData();
  if (!FitEmptySheet(session.host, width)) return;

  BusyPointer(session);
  std::vector<OutputColumn> block;
  for (const Classifier& columns : others) AppendTable(rows, columns, block);
  WriteColumns(session, block);
}

void Detabulate(Session& session) {
  const auto table = SelectTable(session);
  if (!table) return;
  const double total = TotalOf(*table);
  if (total == 0) return session.data.ShowInvalidData();
  if (total > GridStore::MaxRows - 1) {
    return static_cast<void>(
        ShowMessage(session, "Number of observations exceeds row limit of worksheet.", WarningIcon, DetabulateCaption));
  }
  BusyPointer(session);
  std::vector<std::size_t> rows, columns;
  for (std::size_t row = 0; row < table->rows.size(); ++row) {
    for (std::size_t column = 0; column < table->columns.size(); ++column) {
      const double count = table->counts[column][row];
      if (count == MissingValue) continue;
      rows.insert(rows.end(), static_cast<std::size_t>(count), row);
      columns.insert(columns.end(), static_cast<std::size_t>(count), column);
    }
  }
  const Regional& regional = session.options.regional;
  const OutputColumn block[] = {CategoryColumn("Row Category", table->rows, rows, regional),
                                CategoryColumn("Column Category", table->columns, columns, regional)};
  WriteColumns(session, block);
}

}  // namespace tellurix
