#include "workbook/data/DateIntervals.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>

#include "host/Form.h"
#include "numeric/DateTime.h"
#include "numeric/Missing.h"
#include "numeric/Text.h"
#include "session/Skeleton.h"
#include "workbook/CellReading.h"

namespace tellurix {

namespace {

constexpr const char* Caption = "Date & Time Intervals";
constexpr std::string_view Units[] = {"Years", "Months", "Weeks", "Days", "Hours", "Minutes", "Seconds"};
constexpr int TitleRows = 2;  // above the data, in which a title is looked for

// ---------------------------------------------------------------------------------------------------------------------
// Reading columns of dates
// ---------------------------------------------------------------------------------------------------------------------

struct DateColumn {
  std::string title;
  int firstRow = 1;                            // in the worksheet
  std::vector<std::optional<Moment>> moments;  // row by row; nothing where there is no date
};

// Numbers are dates where they are shown as such.
std::optional<Moment> MomentOfCell(const Workbook& workbook, int row, int column, const Regional& regional) {
  const CellView cell = workbook.ReadRC(row, column);
  if (std::abs(cell.type) == TextCell) return ReadMoment(cell.text, regional);
  if (std::abs(cell.type) != NumberCell) return std::nullopt;
  if (!workbook.NumberFormatAt(row, column).IsDate()) return std::nullopt;
  return MomentOfSerial(cell.number);
}

// The title, as columns of numbers are given theirs: the top cell when it is a text of another kind, which then is no
// data; else what stands above; else the column's heading or letters.
std::string TakeTitle(const Workbook& workbook, RawColumn& raw, const Regional& regional) {
  const auto titleIn = [&](int row) -> std::string {
    if (MomentOfCell(workbook, row, raw.column, regional)) return {};
    std::string label = GetCellLabel(workbook, row, raw.column);
    return label == "*" ? std::string() : label;
  };
  std::string title = titleIn(raw.firstRow);
  if (!title.empty()) {
    ++raw.firstRow;
    --raw.rowCount;
    return title;
  }
  for (int above = 1; above <= TitleRows && raw.firstRow - above >= 1 && title.empty(); ++above) {
    title = titleIn(raw.firstRow - above);
  }
  return title.empty() ? GetCellLabel(workbook, 0, raw.column) : title;
}

// The marked column; nothing when cancelled or, after a message, without dates.
std::optional<DateColumn> SelectDates(Session& session, std::string_view prompt) {
  std::vector<RawColumn> columns;
  if (!session.data.SelectRange(1, 1, prompt, columns)) return std::nullopt;
  BusyPointer(session);
  const Workbook& workbook = *session.documents.ActiveWorkbook();
  const Regional& regional = session.options.regional;
  RawColumn& raw = columns.front();
  DateColumn dates{.title = TakeTitle(workbook, raw, regional), .moments = {}};
  dates.firstRow = raw.firstRow;
  int last = raw.firstRow + raw.rowCount - 1;
  while (last >= raw.firstRow && workbook.TypeRC(last, raw.column) == EmptyCell) --last;
  bool anyDate = false;
  for (int row = raw.firstRow; row <= last; ++row) {
    dates.moments.push_back(MomentOfCell(workbook, row, raw.column, regional));
    anyDate = anyDate || dates.moments.back();
  }
  NormalPointer(session);
  if (!anyDate) {
    ShowMessage(session, "No date data was found.", WarningIcon, "Date Conversion");
    return std::nullopt;
  }
  session.results.Current().selection.push_back(
      {dates.title, RangeText({raw.firstRow, raw.column, last, raw.column}), static_cast<int>(dates.moments.size())});
  return dates;
}

// ---------------------------------------------------------------------------------------------------------------------
// The dialog
// ---------------------------------------------------------------------------------------------------------------------

struct Choice {
  IntervalUnit unit = IntervalUnit::Days;
  std::optional<Moment> reference;  // nothing: a second column
};

// The latest date of a column, as a first proposal; empty where there are only times of day.
std::string LatestDate(const DateColumn& column, const Regional& regional) {
  std::optional<Moment> latest;
  for (const auto& moment : column.moments) {
    if (moment && moment->hasDate && (!latest || moment->milliseconds > latest->milliseconds)) latest = moment;
  }
  return latest ? DateText(*latest, regional) : "";
}

// The dialog `Dates`; nothing when cancelled.
std::optional<Choice> AskInterval(Session& session, const DateColumn& from) {
  const Regional& regional = session.options.regional;
  Form form("Dates", Caption);
  form.helpContext = session.HelpContext;
  form.AddCombo("unit", "&Unit of the interval:", {std::begin(Units), std::end(Units)},
                static_cast<int>(IntervalUnit::Days));
  constexpr const char* group = "To";
  form.AddLabel("from", ReplaceAll(fmt::format("Interval from each date of {} to", from.title), "&", "&&"));
  form.AddRadio("date", "&The date below", group, true);
  form.AddRadio("column", "A &second column of dates", group, false);
  form.AddText("reference", fmt::format("&Date ({}):", regional.dateForm), LatestDate(from, regional));
  form.AddButton("OK", "&OK", ButtonRole::Default);
  form.AddButton("Cancel", "&Cancel", ButtonRole::Cancel);
  form.onChange = [&](const Control&) {
    form.Update("reference", [&](Control& entry) { entry.enabled = form.IsChecked("date"); });
  };
  Choice choice;
  form.onPress = [&](const Control&) {
    choice.unit = static_cast<IntervalUnit>(form.IndexOf("unit"));
    choice.reference.reset();
    if (form.IsChecked("date")) {
      choice.reference = ReadMoment(form.ValueOf("reference"), regional);
      if (!choice.reference) return session.data.ShowInvalidData();
    }
    form.Finish(true);
  };
  NormalPointer(session);
  if (!session.host.RunForm(form)) return std::nullopt;
  return choice;
}

double Interval(const std::optional<Moment>& from, const std::optional<Moment>& to, IntervalUnit unit) {
  // A time of day alone has no place among dates.
  if (!from || !to || from->hasDate != to->hasDate) return MissingValue;
  return static_cast<double>(IntervalBetween(*from, *to, unit));
}

}  // namespace

void DateIntervals(Session& session) {
  const auto from = SelectDates(session, "Select a column of dates");
  if (!from) return;
  const auto choice = AskInterval(session, *from);
  if (!choice) return;
  std::vector<std::optional<Moment>> to(from->moments.size(), choice->reference);
  if (!choice->reference) {
    session.data.ClearGridSelection();
    const auto second = SelectDates(session, "Select a second column of dates");
    if (!second) return;
    to = second->moments;
    to.resize(from->moments.size());
  }

  BusyPointer(session);
  OutputColumn column{.title = fmt::format("{} from {}", Units[static_cast<std::size_t>(choice->unit)], from->title)};
  for (std::size_t i = 0; i < to.size(); ++i) column.values.push_back(Interval(from->moments[i], to[i], choice->unit));
  WriteColumns(session, {&column, 1}, {}, from->firstRow - 1);
}

}  // namespace tellurix
