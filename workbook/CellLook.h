// How cells look: number format, font, colours and alignment, and the runs of rows in which a column's looks are kept.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "numeric/Regional.h"
#include "workbook/GridStore.h"

namespace tellurix {

struct NumberFormat {
  // General: up to 15 digits. Date: a serial day number (days since 1899-12-30) as the region's short date; DateMinutes
  // and DateSeconds with the time of day, hh:mm and hh:mm:ss, behind it. Text: as General, but what is typed into the
  // cell stays a text. Files hold these by their number.
  enum class Form : std::uint8_t { General, Fixed, Scientific, Percent, Date, Text, DateMinutes, DateSeconds };
  Form form = Form::General;
  int decimals = 2;       // 0 to 15; of Fixed, Scientific and Percent
  bool grouping = false;  // the region's symbol between thousands; of Fixed

  bool IsDate() const { return form == Form::Date || form == Form::DateMinutes || form == Form::DateSeconds; }
  bool operator==(const NumberFormat&) const = default;
};

// A number as it is displayed, by default with ISO dates and "." as decimal symbol. What a format cannot show (no date,
// 1e15 and more with fixed decimals) is shown as General.
std::string FormatNumber(double value, const NumberFormat& format);
std::string FormatNumber(double value, const NumberFormat& format, const Regional& regional);

inline constexpr int NoColour = -1;  // the text in the window's colour, no fill

struct CellLook {
  enum class Alignment : std::uint8_t { General, Left, Centre, Right };  // General: numbers to the right, texts left

  NumberFormat number;
  std::string fontName;  // empty: that of the workbook
  double fontSize = 0;   // points; 0: that of the workbook
  bool bold = false;
  bool italic = false;
  bool underline = false;
  int textColour = NoColour;  // 0xRRGGBB
  int fillColour = NoColour;
  Alignment alignment = Alignment::General;

  bool operator==(const CellLook&) const = default;
};

// What of a look is to be changed; the rest stays.
struct LookChange {
  std::optional<NumberFormat> number;
  std::optional<std::string> fontName;
  std::optional<double> fontSize;
  std::optional<bool> bold;
  std::optional<bool> italic;
  std::optional<bool> underline;
  std::optional<int> textColour;
  std::optional<int> fillColour;
  std::optional<CellLook::Alignment> alignment;

  CellLook AppliedTo(CellLook look) const;
};

// The looks down one column, as numbers of a list of looks; 0 is the plain one. The last run has no end, so a column
// formatted as a whole is one run.
class LookRuns {
 public:
  LookRuns() = default;
  // Of runs by their first row, ascending.
  explicit LookRuns(const std::vector<std::pair<int, std::uint32_t>>& runs) {
    for (const auto& [firstRow, look] : runs) AppendRun(firstRow, look);
  }

  std::uint32_t At(int row) const;
  bool IsPlain() const { return runs_.empty(); }
  std::size_t RunCount() const { return runs_.size(); }
  bool operator==(const LookRuns&) const = default;
  // Calls visit(firstRow, look) for every run, downwards.
  template <typename Visit>
  void EachRun(Visit visit) const {
    for (const Run& run : runs_) visit(run.firstRow, run.look);
  }

  // These runs with each look from firstRow to lastRow replaced by what `change` answers for it.
  template <typename Change>
  LookRuns Changed(int firstRow, int lastRow, Change change) const {
    if (lastRow >= GridStore::MaxRows) lastRow = EndRow;
    LookRuns made;
    made.Append(*this, 1, firstRow - 1, 1, [](std::uint32_t look) { return look; });
    made.Append(*this, firstRow, lastRow, firstRow, change);
    made.Append(*this, lastRow + 1, EndRow, lastRow + 1, [](std::uint32_t look) { return look; });
    return made;
  }
  // With places made at a row, which take the look of the row above (at the top, of the row that stood there), or taken
  // out.
  LookRuns Shifted(int at, int inserted, int deleted) const;
  // With the looks of `count` rows of others.
  LookRuns With(const LookRuns& source, int fromRow, int count, int toRow) const;

 private:
  static constexpr int EndRow = 1 << 30;  // beyond all rows

  struct Run {
    int firstRow;
    std::uint32_t look;
    bool operator==(const Run&) const = default;
  };

  // Appends source's rows first..last from row `to` on, behind all that is there.
  template <typename Change>
  void Append(const LookRuns& source, int first, int last, int to, Change change) {
    if (first > last) return;
    AppendRun(to, change(source.At(first)));
    for (const Run& run : source.runs_) {
      if (run.firstRow > first && run.firstRow <= last) AppendRun(to + (run.firstRow - first), change(run.look));
    }
  }
  void AppendRun(int firstRow, std::uint32_t look);

  std::vector<Run> runs_;  // ascending, neighbours unlike; before the first one rows are plain
};

// Of a sheet, by column - 1; null: plain. Columns alike may share theirs.
using SheetLooks = std::vector<std::shared_ptr<const LookRuns>>;

}  // namespace tellurix
