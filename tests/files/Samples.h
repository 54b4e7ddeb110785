// Workbooks and folders for the tests of files.
#pragma once

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>

#include "workbook/Workbook.h"
#include "workbook/WorkbookContents.h"

namespace tellurix {

// A folder that goes with the test.
class TestFolder {
 public:
  TestFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "tellurix-files-XXXXXX").string();
    path_ = mkdtemp(name.data());
  }
  ~TestFolder() {
    std::error_code error;
    std::filesystem::remove_all(path_, error);
  }
  std::filesystem::path operator/(const std::string& name) const { return path_ / name; }
  const std::filesystem::path& Path() const { return path_; }
  std::size_t FileCount() const {
    return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(path_), {}));
  }

 private:
  std::filesystem::path path_;
};

inline std::string FileBytes(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

// As a new file: some file systems sync one that is cut off and written again.
inline void PutFile(const std::filesystem::path& path, const std::string& bytes) {
  std::filesystem::remove(path);
  std::ofstream(path, std::ios::binary) << bytes;
}

// All that a workbook holds, as a text that two alike workbooks have in common: numbers bit by bit.
inline std::string Dump(const Workbook& workbook) {
  const WorkbookContents book(workbook);
  std::string text = "active " + std::to_string(book.ActiveSheet()) + "\n";
  const auto bits = [](double value) { return std::to_string(std::bit_cast<std::uint64_t>(value)); };
  const auto others = [&](const auto& map) {
    for (const auto& [key, value] : map) text += " " + key + "=" + value;
    text += "\n";
  };
  const WorkbookSettings& all = book.Settings();
  text += all.fontName + " " + bits(all.fontSize) + " " + bits(all.rowHeight) + " " + bits(all.columnWidth);
  for (const int colour : all.palette) text += " " + std::to_string(colour);
  others(all.others);
  for (int sheet = 1; sheet <= book.SheetCount(); ++sheet) {
    const SheetSettings& s = book.Settings(sheet);
    text += "sheet " + book.Name(sheet) + " " + std::to_string(s.frozenRows) + " " + std::to_string(s.frozenColumns);
    for (const bool is : {s.isLocked, s.showsGridlines, s.showsHeadings, s.showsZeros}) text += is ? " 1" : " 0";
    const SheetPrinting& p = s.printing;
    text += " " + p.paper + (p.isLandscape ? " 1" : " 0") + (p.gridlines ? " 1" : " 0") + (p.headings ? " 1" : " 0") +
            (p.area ? " " + RangeText(*p.area) : "");
    for (const double margin : {p.left, p.top, p.right, p.bottom}) text += " " + std::to_string(margin);
    others(s.others);
    for (const CellRange& range : book.Selection(sheet)) text += RangeText(range) + " ";
    text += std::to_string(book.ActiveRow(sheet)) + " " + std::to_string(book.ActiveColumn(sheet)) + "\n";
    for (int slot = Heights; slot <= book.LastColumn(sheet); ++slot) {
      const CellColumn* cells = book.Column(sheet, slot);
      if (!cells) continue;
      for (int row = 1; row <= cells->LastRow(); ++row) {
        const CellView cell = cells->View(row);
        if (cell.type == EmptyCell) continue;
        text += std::to_string(slot) + ":" + std::to_string(row) + " " + std::to_string(cell.type) + " " +
                bits(cell.number) + " " + std::string(cell.text);
        if (const Formula* formula = cells->FormulaAt(row))
          text += " " + formula->text + (formula->isError ? " !" : "");
        text += "\n";
      }
    }
    for (std::size_t column = 0; column < book.Looks(sheet).size(); ++column) {
      if (!book.Looks(sheet)[column]) continue;
      book.Looks(sheet)[column]->EachRun([&](int row, std::uint32_t number) {
        const CellLook& look = book.Looks()[number];
        text += "look " + std::to_string(column) + ":" + std::to_string(row) + " " +
                std::to_string(static_cast<int>(look.number.form)) + " " + std::to_string(look.number.decimals) +
                (look.number.grouping ? " g " : " ") + look.fontName + " " + bits(look.fontSize) +
                (look.bold ? " b" : "") + (look.italic ? " i" : "") + (look.underline ? " u " : " ") +
                std::to_string(look.textColour) + " " + std::to_string(look.fillColour) + " " +
                std::to_string(static_cast<int>(look.alignment)) + "\n";
      });
    }
  }
  return text;
}

// Something of everything.
inline void FillSample(Workbook& book, int rows = 300) {
  std::mt19937_64 random(20);
  const Regional regional;
  book.RenameSheet(1, "Données");
  for (int row = 1; row <= rows; ++row) {
    double value = 0;
    do value = std::bit_cast<double>(random());
    while (!std::isfinite(value));
    book.NumberRC(row, 1, value);
    book.TextRC(row, 2, row % 3 == 0 ? "female" : "male \xE2\x80\x93 " + std::to_string(row));
    if (row % 2 == 0) book.SetLogical(row, 3, row % 4 == 0);
    if (row % 2 == 1) book.NumberRC(row, 3, row);
    book.Enter(row, 5, "=A" + std::to_string(row) + "*0+SUM(C1:C9)", regional);
  }
  book.NumberRC(rows + 1, 4, -0.0);
  book.Enter(1, 6, "=1/0", regional);
  book.Enter(2, 6, "=B1&\"!\"", regional);
  book.Enter(3, 6, "=1<2", regional);
  book.ColText(1, "Dose");
  book.ColText(9, "beyond");
  book.RowText(2, "patient");
  book.SetColumnWidth(2, 22.5);
  book.SetColumnWidth(3, 0);
  book.SetRowHeight(3, 9, 30);
  LookChange date;
  date.number = NumberFormat{NumberFormat::Form::Date};
  book.SetLook({2, 1, 40, 3}, date);
  date.number = NumberFormat{NumberFormat::Form::DateSeconds};
  book.SetLook({41, 1, 50, 3}, date);
  LookChange bold;
  bold.bold = true;
  bold.fontName = "Liberation Serif";
  bold.textColour = 0xFF0000;
  bold.alignment = CellLook::Alignment::Centre;
  book.SetLook({1, 1, GridStore::MaxRows, 2}, bold);
  book.SetSelection({2, 2, 5, 4});
  book.AddSelection({1, 7, GridStore::MaxRows, 7});
  book.SetActiveCell(4, 3);
  SheetSettings settings = book.SettingsOfSheet();
  settings.frozenRows = 1;
  settings.printing = {
      .paper = "Letter", .isLandscape = true, .left = 1.25, .gridlines = false, .area = CellRange{2, 1, 9, 3}};
  settings.showsZeros = false;
  settings.others["zoom"] = "A1:C9";
  book.SetSettingsOfSheet(settings);
  book.LockSheet(true);
  WorkbookSettings all = book.Settings();
  all.fontSize = 11.5;
  all.palette[3] = 0x123456;
  all.others["page"] = "a4";
  book.SetSettings(all);
  book.AddSheet("it's 2");
  book.TextRC(70000, 2, "far");
  book.Enter(1, 1,
             "='Donn\xC3\xA9"
             "es'!C1+1",
             regional);
  book.AddSheet("empty");
  book.Sheet(2);
}

}  // namespace tellurix
