#include "workbook/files/foreign/ImportedBook.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>

#include "numeric/Text.h"

namespace tellurix {

namespace {

constexpr double SecondsInMinute = 60, SecondsInHour = 3600, SecondsInDay = 86400;
constexpr int DaysTo1904 = 1462;  // from 1899-12-30
constexpr double FirstCommonDay = 60;
constexpr double Agreement = 1e-9;  // relative; programs differ in the last digits of their functions

std::string Cut(std::string_view text, std::size_t characters) {
  std::string cut(text);
  while (CharacterCount(cut) > characters) {
    do cut.pop_back();
    while (!IsValidUtf8(cut));
  }
  return cut;
}

bool Agree(const FormulaResult& ours, const FormulaResult& theirs) {
  if (ours.isError || theirs.isError) return ours.isError == theirs.isError && ours.text == theirs.text;
  if (ours.type != theirs.type) return false;
  if (ours.type == TextCell) return ours.text == theirs.text;
  const double scale = std::max(std::abs(ours.number), std::abs(theirs.number));
  return std::abs(ours.number - theirs.number) <= Agreement * scale;
}

}  // namespace

double CharactersOfInches(double inches) {
  constexpr double PixelsInInch = 96, PixelsInCharacter = 7, PixelsBeside = 5;
  return std::max(0.0, (inches * PixelsInInch - PixelsBeside) / PixelsInCharacter);
}

ImportedBook::ImportedBook(Workbook& workbook) : workbook_(workbook), loading_(workbook) { loading_.Clear(); }

int ImportedBook::AddSheet(std::string_view name) {
  ++sheets_;
  settings_.emplace_back();
  lastLooks_ = nullptr;
  std::string base = Cut(ToUtf8(name), Workbook::MaxSheetName);
  if (Trim(base).empty()) base = "Sheet" + std::to_string(sheets_);
  std::string given = base;
  const int own = sheets_ == 1 ? 1 : 0;
  for (int n = 2; workbook_.FindSheet(given) > own; ++n) {
    const std::string mark = " (" + std::to_string(n) + ")";
    given = Cut(base, Workbook::MaxSheetName - mark.size()) + mark;
  }
  if (sheets_ == 1) {
    workbook_.RenameSheet(1, given);
  } else {
    workbook_.AddSheet(given);
  }
  return sheets_;
}

bool ImportedBook::Reach(int sheet, int row, int column) {
  if (!Workbook::Fits(row, column)) isTooLarge_ = true;
  workbook_.Sheet(sheet);
  return Workbook::Fits(row, column);
}

void ImportedBook::Number(int sheet, int row, int column, double value) {
  if (Reach(sheet, row, column)) workbook_.NumberRC(row, column, value);
}

void ImportedBook::Text(int sheet, int row, int column, std::string_view text) {
  if (!text.empty() && Reach(sheet, row, column)) workbook_.TextRC(row, column, ToUtf8(text));
}

void ImportedBook::Logical(int sheet, int row, int column, bool value) {
  if (Reach(sheet, row, column)) workbook_.SetLogical(row, column, value);
}

std::optional<double> ImportedBook::SerialOf(std::string_view date) {
  using namespace std::chrono;
  int year = 0, hour = 0, minute = 0;
  unsigned month = 0, day = 0;
  double second = 0;
  const int read =
      std::sscanf(std::string(date).c_str(), "%d-%u-%uT%d:%d:%lf", &year, &month, &day, &hour, &minute, &second);
  const year_month_day given{std::chrono::year(year), std::chrono::month(month), std::chrono::day(day)};
  if (read < 3 || !given.ok()) return std::nullopt;
  constexpr sys_days Start = std::chrono::year(1899) / 12 / 30;
  return static_cast<double>((sys_days(given) - Start).count()) +
         (hour * SecondsInHour + minute * SecondsInMinute + second) / SecondsInDay;
}

void ImportedBook::Formula(int sheet, int row, int column, std::string_view text,
                           const std::optional<FormulaResult>& result) {
  if (text.size() < 2 || !Reach(sheet, row, column)) return;
  const std::string formula = ToUtf8(text);
  if (!result) {
    workbook_.Enter(row, column, formula, Regional());
    return;
  }
  workbook_.SetFormula(row, column, formula, *result);
  formulas_.push_back({sheet, row, column, *result});
}

void ImportedBook::CopyDown(int sheet, int row, int column, int count) {
  if (count < 1 || !Reach(sheet, row, column) || !Reach(sheet, row + count, column)) return;
  workbook_.FillDown({row, column, row + count, column});
}

std::uint32_t ImportedBook::AddLook(const CellLook& look) {
  const auto found = std::find(looks_.begin(), looks_.end(), look);
  const auto number = static_cast<std::uint32_t>(found - looks_.begin());
  if (found == looks_.end()) looks_.push_back(look);
  return number;
}

void ImportedBook::Look(int sheet, int firstRow, int firstColumn, int lastRow, int lastColumn, std::uint32_t look) {
  lastRow = std::min(lastRow, GridStore::MaxRows);
  lastColumn = std::min(lastColumn, GridStore::MaxColumns);
  for (int column = firstColumn; column <= lastColumn; ++column) {
    if (!lastLooks_ || lastLooked_ != std::pair(sheet, column)) {
      lastLooked_ = {sheet, column};
      lastLooks_ = &columnLooks_[lastLooked_];
    }
    auto& looks = *lastLooks_;
    if (!looks.empty() && looks.back().look == look && looks.back().lastRow + 1 == firstRow) {
      looks.back().lastRow = lastRow;
    } else {
      looks.push_back({firstRow, lastRow, look});
    }
  }
}

void ImportedBook::LookWherePlain(int sheet, int row, int column, std::uint32_t look) {
  const auto looks = columnLooks_.find({sheet, column});
  const auto isOver = [&](const ColumnLook& of) { return of.firstRow <= row && row <= of.lastRow; };
  if (looks != columnLooks_.end() && std::any_of(looks->second.begin(), looks->second.end(), isOver)) return;
  Look(sheet, row, column, row, column, look);
}

void ImportedBook::Width(int sheet, int column, double characters) {
  constexpr double Widest = 255;
  if (!Reach(sheet, 1, column)) return;
  workbook_.SetColumnWidth(column, std::clamp(characters, 0.0, Widest));
}

void ImportedBook::HideRow(int sheet, int row) {
  if (Reach(sheet, row, 1)) workbook_.SetRowHeight(row, 0);
}

bool ImportedBook::Finish(std::string& problem) {
  if (isTooLarge_) {
    problem = "The file has more rows or columns than a worksheet.";
    return false;
  }
  if (sheets_ == 0) {
    problem = "There is no worksheet in the file.";
    return false;
  }
  PutLooks();
  CheckFormulas();
  if (ShiftDates()) RenewFormulas();
  for (int sheet = 1; sheet <= sheets_; ++sheet) {
    workbook_.Sheet(sheet);
    workbook_.SetSelection({});
    workbook_.SetSettingsOfSheet(SettingsOf(sheet));
    workbook_.LockSheet(SettingsOf(sheet).isLocked);
  }
  workbook_.Sheet(active_);
  loading_.Accept();
  return true;
}

// Later looks lie over earlier ones. Mostly they follow each other down the column, over one of the whole column or
// none; only others need more than one pass.
void ImportedBook::PutLooks() {
  for (auto entry = columnLooks_.begin(); entry != columnLooks_.end();) {
    const auto& [place, looks] = *entry;
    const bool hasBase = looks.front().firstRow == 1 && looks.front().lastRow == GridStore::MaxRows;
    const auto first = looks.begin() + (hasBase ? 1 : 0);
    const std::uint32_t base = hasBase ? looks.front().look : 0;
    std::vector<std::pair<int, CellLook>> made;
    const auto overlap = [](const ColumnLook& a, const ColumnLook& b) { return a.lastRow >= b.firstRow; };
    if (std::adjacent_find(first, looks.end(), overlap) == looks.end()) {
      int next = 1;
      for (auto look = first; look != looks.end(); ++look) {
        if (look->firstRow > next) made.emplace_back(next, looks_[base]);
        made.emplace_back(look->firstRow, looks_[look->look]);
        next = look->lastRow + 1;
      }
      if (next <= GridStore::MaxRows) made.emplace_back(next, looks_[base]);
    } else {
      LookRuns runs;
      for (const ColumnLook& look : looks) {
        runs = runs.Changed(look.firstRow, look.lastRow, [&](std::uint32_t) { return look.look; });
      }
      runs.EachRun([&](int row, std::uint32_t look) {
        if (row <= GridStore::MaxRows) made.emplace_back(row, looks_[look]);
      });
    }
    // Columns alike are done together.
    const auto [sheet, firstColumn] = place;
    int lastColumn = firstColumn;
    for (++entry; entry != columnLooks_.end() && entry->first == std::pair(sheet, lastColumn + 1); ++entry) {
      if (entry->second != looks) break;
      ++lastColumn;
    }
    workbook_.Sheet(sheet);
    loading_.SetLooks(firstColumn, lastColumn, made);
  }
}

void ImportedBook::CheckFormulas() {
  std::vector<const PlacedFormula*> others;
  for (const PlacedFormula& formula : formulas_) {
    workbook_.Sheet(formula.sheet);
    const std::string text = workbook_.FormulaText(formula.row, formula.column);
    if (!text.empty() && !Agree(workbook_.Compute(text), formula.result)) others.push_back(&formula);
  }
  for (const PlacedFormula* formula : others) {
    const FormulaResult& result = formula->result;
    if (result.type == NumberCell) {
      Number(formula->sheet, formula->row, formula->column, result.number);
    } else if (result.type == LogicalCell) {
      Logical(formula->sheet, formula->row, formula->column, result.number != 0);
    } else {
      workbook_.Sheet(formula->sheet);
      workbook_.TextRC(formula->row, formula->column, result.text);
    }
  }
}

bool ImportedBook::ShiftDates() {
  if (dates_ == Dates::Plain) return false;
  bool isAnyShifted = false;
  const auto shifted = [&](double value) {
    if (dates_ == Dates::Counted1904) return value + DaysTo1904;
    return value >= 1 && value < FirstCommonDay ? value + 1 : value;
  };
  for (const auto& [place, looks] : columnLooks_) {
    const auto [sheet, column] = place;
    workbook_.Sheet(sheet);
    for (const ColumnLook& look : looks) {
      if (!looks_[look.look].number.IsDate()) continue;
      const int last = std::min(look.lastRow, workbook_.LastRow());
      for (int row = look.firstRow; row <= last; ++row) {
        // Overlapping looks would shift a cell twice.
        if (workbook_.TypeRC(row, column) != NumberCell || workbook_.LookAt(row, column) != looks_[look.look]) continue;
        const double before = workbook_.NumberRC(row, column);
        if (shifted(before) == before) continue;
        workbook_.NumberRC(row, column, shifted(before));
        isAnyShifted = true;
      }
    }
  }
  return isAnyShifted;
}

// Has all formulas computed anew, their cells having changed.
void ImportedBook::RenewFormulas() {
  for (const PlacedFormula& formula : formulas_) {
    workbook_.Sheet(formula.sheet);
    const std::string text = workbook_.FormulaText(formula.row, formula.column);
    if (!text.empty()) workbook_.Enter(formula.row, formula.column, text, Regional());
  }
}

}  // namespace tellurix
