// A workbook that is being filled from another program's file. Sheets are numbered from 1, as are rows and columns.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "workbook/CellLook.h"
#include "workbook/Workbook.h"

namespace tellurix {

// A width in characters of the common 11 point font at 96 pixels to the inch, as the spreadsheets count them.
double CharactersOfInches(double inches);

class ImportedBook {
 public:
  explicit ImportedBook(Workbook& workbook);

  // Names that we do not allow are made to fit.
  int AddSheet(std::string_view name);
  int SheetCount() const { return sheets_; }
  int FindSheet(std::string_view name) const { return workbook_.FindSheet(name); }

  void Number(int sheet, int row, int column, double value);
  void Text(int sheet, int row, int column, std::string_view text);
  void Logical(int sheet, int row, int column, bool value);
  // "2020-02-29" or "2020-02-29T18:30:00.5", as a day number of ours.
  static std::optional<double> SerialOf(std::string_view date);
  // With what it came to in the file, if that is known.
  void Formula(int sheet, int row, int column, std::string_view text, const std::optional<FormulaResult>& result);
  void CopyDown(int sheet, int row, int column, int count);  // the cell into those below it

  std::uint32_t AddLook(const CellLook& look);  // its number; 0 is the plain one
  void Look(int sheet, int firstRow, int firstColumn, int lastRow, int lastColumn, std::uint32_t look);
  void LookWherePlain(int sheet, int row, int column, std::uint32_t look);
  void Width(int sheet, int column, double characters);
  void HideRow(int sheet, int row);
  SheetSettings& SettingsOf(int sheet) { return settings_[static_cast<std::size_t>(sheet - 1)]; }
  void Activate(int sheet) { active_ = sheet; }

  enum class Dates {
    Plain,       // days since 1899-12-30, as ours
    Leap1900,    // with a 29 February in 1900, as the first spreadsheets had it: 1 is 1900-01-01
    Counted1904  // days since 1904-01-01
  };
  void CountDates(Dates dates) { dates_ = dates; }

  // Numbers that are shown as dates become ours; formulas that do not come to what they came to in the file give way to
  // that. False with the reason in `problem` when something does not fit a sheet.
  bool Finish(std::string& problem);

 private:
  struct ColumnLook {
    int firstRow, lastRow;
    std::uint32_t look;
    bool operator==(const ColumnLook&) const = default;
  };
  struct PlacedFormula {
    int sheet, row, column;
    FormulaResult result;
  };

  bool Reach(int sheet, int row, int column);  // makes the sheet the active one; false for a cell off the sheet
  void PutLooks();
  void CheckFormulas();
  bool ShiftDates();  // true when one had to be
  void RenewFormulas();

  Workbook& workbook_;
  Workbook::Loading loading_;
  int sheets_ = 0;
  int active_ = 1;
  bool isTooLarge_ = false;
  Dates dates_ = Dates::Plain;
  std::vector<CellLook> looks_{CellLook()};
  std::map<std::pair<int, int>, std::vector<ColumnLook>> columnLooks_;  // by sheet and column
  std::vector<ColumnLook>* lastLooks_ = nullptr;
  std::pair<int, int> lastLooked_;
  std::vector<PlacedFormula> formulas_;
  std::vector<SheetSettings> settings_;
};

}  // namespace tellurix
