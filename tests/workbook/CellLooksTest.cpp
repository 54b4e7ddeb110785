#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "workbook/CellLook.h"
#include "workbook/Workbook.h"

namespace tellurix {
namespace {

using Form = NumberFormat::Form;

LookChange Bold(bool bold = true) {
  LookChange change;
  change.bold = bold;
  return change;
}

LookChange Numbers(Form form, int decimals = 2, bool grouping = false) {
  LookChange change;
  change.number = NumberFormat{form, decimals, grouping};
  return change;
}

TEST(CellLooks, NumbersAreFormatted) {
  const std::tuple<double, NumberFormat, const char*> table[] = {
      {1234.5, {}, "1234.5"},
      {1234.565, {Form::Fixed, 1}, "1234.6"},
      {-0.001, {Form::Fixed, 2}, "0.00"},
      {-1.5, {Form::Fixed, 0}, "-2"},
      {1e15, {Form::Fixed, 2}, "1E+15"},
      {1234567.891, {Form::Fixed, 2, true}, "1,234,567.89"},
      {-123456, {Form::Fixed, 0, true}, "-123,456"},
      {-123, {Form::Fixed, 0, true}, "-123"},
      {999999.999, {Form::Fixed, 2, true}, "1,000,000.00"},
      {12345.678, {Form::Scientific, 3}, "1.235E+04"},
      {0, {Form::Scientific, 1}, "0.0E+00"},
      {1e-300, {Form::Scientific, 0}, "1E-300"},
      {0.1234, {Form::Percent, 1}, "12.3%"},
      {-2, {Form::Percent, 0}, "-200%"},
      // Day numbers: 1900-03-01 is 61 and 2000-01-01 is 36526 in every spreadsheet.
      {61, {Form::Date}, "1900-03-01"},
      {36526.75, {Form::Date}, "2000-01-01"},
      {0, {Form::Date}, "1899-12-30"},
      {-0.5, {Form::Date}, "1899-12-29"},
      {45351, {Form::Date}, "2024-02-29"},
      {2958465.9, {Form::Date}, "9999-12-31"},
      {2958466, {Form::Date}, "2958466"},
      {36526.75, {Form::DateMinutes}, "2000-01-01 18:00"},
      {36526 + 59.9 / 86400, {Form::DateSeconds}, "2000-01-01 00:00:59"},
      {-0.25, {Form::DateSeconds}, "1899-12-29 18:00:00"},
      {1e9, {Form::DateMinutes}, "1000000000"},
      {-1e300, {Form::Date}, "-1E+300"},
      {0.5, {Form::Text}, "0.5"}};
  for (const auto& [value, format, shown] : table) {
    EXPECT_EQ(FormatNumber(value, format), shown) << value << " " << static_cast<int>(format.form);
  }
  const NumberFormat thousands{Form::Fixed, 1, true};
  EXPECT_EQ(FormatNumber(-1234567.89, thousands, {",", ".", "dd.mm.yyyy"}), "-1.234.567,9");
  EXPECT_EQ(FormatNumber(1234567.89, thousands, {",", "\u202F", "dd/mm/yyyy"}), "1\u202F234\u202F567,9");
  EXPECT_EQ(FormatNumber(1234.5, thousands, {",", "", "dd.mm.yyyy"}), "1.234,5");
}

TEST(CellLooks, ShowInTheGridAndAreUndone) {
  Workbook book;
  book.NumberRC(1, 1, 0.256);
  book.Enter(2, 1, "=A1*2", Regional());
  book.TextRC(3, 1, "text");
  book.MarkSaved();
  std::vector<WorkbookChange> heard;
  book.AddListener([&](const WorkbookChange& change) { heard.push_back(change); });
  EXPECT_TRUE(book.SetLook({1, 1, 3, 1}, Numbers(Form::Percent, 1)));
  ASSERT_EQ(heard.size(), 1u);
  EXPECT_EQ(heard[0].kind, WorkbookChange::Kind::Looks);
  EXPECT_EQ(heard[0].range, (CellRange{1, 1, 3, 1}));
  EXPECT_TRUE(book.document.changed);
  EXPECT_EQ(book.FormattedTextRC(1, 1), "25.6%");
  EXPECT_EQ(book.FormattedTextRC(2, 1), "51.2%");
  EXPECT_EQ(book.FormattedTextRC(3, 1), "text");
  EXPECT_EQ(book.TextRC(1, 1), "0.256");
  LookChange colours;
  colours.textColour = 0xFF0000;
  colours.fillColour = 0x00FF00;
  colours.fontName = "Times";
  colours.fontSize = 12;
  colours.italic = true;
  colours.underline = true;
  colours.alignment = CellLook::Alignment::Centre;
  EXPECT_TRUE(book.SetLook({1, 1, 1, 1}, colours));
  const CellLook look = book.LookAt(1, 1);
  EXPECT_EQ(look.number, (NumberFormat{Form::Percent, 1}));  // as it was
  EXPECT_EQ(look, colours.AppliedTo(Numbers(Form::Percent, 1).AppliedTo({})));
  EXPECT_EQ(look.fontName, "Times");
  EXPECT_EQ(book.LookAt(2, 1).textColour, NoColour);
  // The same again is no step.
  book.SetLook({1, 1, 1, 1}, colours);
  EXPECT_TRUE(book.Undo());
  EXPECT_EQ(book.LookAt(1, 1), Numbers(Form::Percent, 1).AppliedTo({}));
  EXPECT_TRUE(book.Undo());
  EXPECT_EQ(book.FormattedTextRC(1, 1), "0.256");
  EXPECT_FALSE(book.document.changed);
  EXPECT_TRUE(book.Redo());
  EXPECT_TRUE(book.Redo());
  EXPECT_EQ(book.LookAt(1, 1), look);
  EXPECT_FALSE(book.SetLook({0, 1, 1, 1}, Bold()));
  EXPECT_EQ(book.LookAt(0, 0), CellLook());
  // What is typed into a text cell is a text.
  book.SetLook({1, 2, GridStore::MaxRows, 2}, Numbers(Form::Text));
  book.Enter(1, 2, "=A1", Regional());
  book.Enter(2, 2, "12", Regional());
  EXPECT_EQ(book.TypeRC(1, 2), TextCell);
  EXPECT_EQ(book.TypeRC(2, 2), TextCell);
}

TEST(CellLooks, AWholeColumnIsOneRun) {
  LookRuns runs;
  const auto put = [](std::uint32_t look) { return [look](std::uint32_t) { return look; }; };
  runs = runs.Changed(1, GridStore::MaxRows, put(1));
  EXPECT_EQ(runs.RunCount(), 1u);
  EXPECT_EQ(runs.At(GridStore::MaxRows), 1u);
  runs = runs.Shifted(500, 1000, 0).Shifted(7, 0, 100).With(runs, 1, GridStore::MaxRows, 1);
  EXPECT_EQ(runs.RunCount(), 1u);
  runs = runs.Changed(10, 20, put(2));
  EXPECT_EQ(runs.RunCount(), 3u);
  runs = runs.Changed(10, 20, put(1));
  EXPECT_EQ(runs.RunCount(), 1u);
  EXPECT_TRUE(runs.Changed(1, GridStore::MaxRows, put(0)).IsPlain());
}

// Looks by cell, as a plain map, beside the workbook.
TEST(CellLooks, MoveWithTheirCells) {
  constexpr int Extent = 16;  // of the sheet that is compared; edits stay within the upper left of it
  const char* rounds = std::getenv("TELLURIX_FUZZ_ROUNDS");
  const int games = std::max(1, (rounds ? std::atoi(rounds) : 300) / 10);
  using Grid = std::vector<std::vector<int>>;  // the font size; 0: plain
  for (int game = 0; game < games; ++game) {
    std::mt19937 random(static_cast<unsigned>(game));
    const auto below = [&](int end) { return std::uniform_int_distribution<int>(0, end - 1)(random); };
    Workbook book;
    const std::size_t big = 200;
    Grid grid(big, std::vector<int>(big));
    const auto at = [](Grid& g, int row, int column) -> int& {
      return g[static_cast<std::size_t>(row)][static_cast<std::size_t>(column)];
    };
    std::vector<Grid> states{grid};
    const auto compare = [&](Grid& expected, const std::string& when) {
      for (int row = 1; row <= Extent; ++row) {
        for (int column = 1; column <= Extent; ++column) {
          ASSERT_EQ(book.LookAt(row, column).fontSize, at(expected, row, column))
              << "game " << game << ", " << when << ": " << row << ", " << column;
        }
      }
    };
    for (int move = 0; move < 30; ++move) {
      const int row = 1 + below(8);
      const int column = 1 + below(8);
      const CellRange range{row, column, row + below(3), column + below(3)};
      const int rows = range.lastRow - row + 1;
      const int columns = range.lastColumn - column + 1;
      const Grid before = grid;
      const auto old = [&](int r, int c) {
        return before[static_cast<std::size_t>(std::min(r, 199))][static_cast<std::size_t>(std::min(c, 199))];
      };
      // Each cell of the grid from what `source` says.
      const auto remake = [&](auto source) {
        for (int r = 1; r < 200; ++r) {
          for (int c = 1; c < 200; ++c) at(grid, r, c) = source(r, c);
        }
      };
      book.BeginStep("move");
      book.NumberRC(1000 + move, 100, move);  // so that no step is empty
      const int choice = below(11);
      if (choice < 4) {
        LookChange change;
        change.fontSize = below(3);
        book.SetLook(range, change);
        for (int r = row; r <= range.lastRow; ++r) {
          for (int c = column; c <= range.lastColumn; ++c) at(grid, r, c) = static_cast<int>(*change.fontSize);
        }
      } else if (choice == 4) {
        book.InsertRows(row, rows);
        remake([&](int r, int c) {
          if (r < row) return old(r, c);
          return r < row + rows ? old(std::max(row - 1, 1), c) : old(r - rows, c);
        });
      } else if (choice == 5) {
        book.DeleteRows(row, rows);
        remake([&](int r, int c) { return old(r < row ? r : r + rows, c); });
      } else if (choice == 6) {
        book.InsertColumns(column, columns);
        remake([&](int r, int c) {
          if (c < column) return old(r, c);
          return c < column + columns ? old(r, std::max(column - 1, 1)) : old(r, c - columns);
        });
      } else if (choice == 7) {
        book.DeleteColumns(column, columns);
        remake([&](int r, int c) { return old(r, c < column ? c : c + columns); });
      } else if (choice == 8) {
        const bool inserts = below(2);
        if (inserts) {
          book.InsertCells(range, Shift::Columns);
        } else {
          book.DeleteCells(range, Shift::Columns);
        }
        remake([&](int r, int c) {
          if (r < row || r > range.lastRow || c < column) return old(r, c);
          if (!inserts) return old(r, c + columns);
          return c <= range.lastColumn ? old(r, std::max(column - 1, 1)) : old(r, c - columns);
        });
      } else if (choice == 9) {
        const int toRow = 1 + below(8);
        const int toColumn = 1 + below(8);
        book.CopyBlock(range, toRow, toColumn);
        for (int r = 0; r < rows; ++r) {
          for (int c = 0; c < columns; ++c) at(grid, toRow + r, toColumn + c) = old(row + r, column + c);
        }
      } else {
        const bool down = below(2);
        if (down) {
          book.FillDown(range);
        } else {
          book.FillRight(range);
        }
        for (int r = row; r <= range.lastRow; ++r) {
          for (int c = column; c <= range.lastColumn; ++c) at(grid, r, c) = down ? old(row, c) : old(r, column);
        }
      }
      book.EndStep();
      states.push_back(grid);
      ASSERT_NO_FATAL_FAILURE(compare(grid, "choice " + std::to_string(choice)));
    }
    for (std::size_t state = states.size() - 1; state > 0; --state) {
      ASSERT_TRUE(book.Undo());
      ASSERT_NO_FATAL_FAILURE(compare(states[state - 1], "undone"));
    }
  }
}

TEST(SheetLooks, HeightsHideAndMove) {
  Workbook book;
  EXPECT_EQ(book.RowHeight(5), 15);
  book.SetRowHeight(5, 30);
  book.SetRowHeight(7, 9, 0);
  book.ColText(3, "heading");
  book.SetColumnWidth(3, 0);
  EXPECT_TRUE(book.IsRowHidden(8));
  EXPECT_FALSE(book.IsRowHidden(10));
  EXPECT_TRUE(book.IsColumnHidden(3));
  book.InsertRows(5, 2);
  EXPECT_EQ(book.RowHeight(7), 30);
  EXPECT_TRUE(book.IsRowHidden(11));
  book.SetRowHeight(1, GridStore::MaxRows, 20);
  book.InsertRows(1, 1);  // heights alone are never in the way
  EXPECT_EQ(book.RowHeight(1), 15);
  EXPECT_EQ(book.RowHeight(GridStore::MaxRows), 20);
  book.SetRowHeight(1, GridStore::MaxRows, -1);
  EXPECT_EQ(book.RowHeight(2), 15);
  for (int i = 0; i < 4; ++i) book.Undo();
  EXPECT_TRUE(book.IsRowHidden(8));
  EXPECT_EQ(book.RowHeight(5), 30);
}

TEST(SheetLooks, SettingsAreUndone) {
  Workbook book;
  SheetSettings settings = book.SettingsOfSheet();
  settings.frozenRows = 1;
  settings.frozenColumns = 2;
  settings.showsGridlines = false;
  settings.isLocked = true;  // not in this way
  book.SetSettingsOfSheet(settings);
  EXPECT_EQ(book.SettingsOfSheet().frozenColumns, 2);
  EXPECT_FALSE(book.SheetLocked());
  book.AddSheet();
  EXPECT_EQ(book.SettingsOfSheet(), SheetSettings());
  WorkbookSettings all = book.Settings();
  all.columnWidth = 12;
  all.rowHeight = 18;
  all.palette[3] = 0x123456;
  book.SetSettings(all);
  EXPECT_EQ(book.ColumnWidth(4), 12);
  EXPECT_EQ(book.RowHeight(4), 18);
  book.Undo();
  EXPECT_EQ(book.ColumnWidth(4), Workbook::DefaultColumnWidth);
  EXPECT_EQ(book.Settings(), WorkbookSettings());
  book.Undo();
  book.Undo();
  EXPECT_TRUE(book.SettingsOfSheet().showsGridlines);
  EXPECT_FALSE(book.document.changed);
}

TEST(SheetLooks, ALockedSheetStaysAsItIs) {
  Workbook book;
  book.NumberRC(1, 1, 1);
  book.ColText(1, "x");
  book.Enter(2, 1, "=Sheet2!A1", Regional());
  book.AddSheet();
  book.NumberRC(1, 1, 5);
  book.Sheet(1);
  book.LockSheet(true);
  EXPECT_TRUE(book.SheetLocked());
  const std::string caption = book.UndoCaption();
  book.NumberRC(1, 1, 2);
  book.TextRC(1, 1, "");
  book.SetLogical(1, 1, true);
  book.Enter(1, 1, "=2", Regional());
  book.ColText(1, "y");
  book.RowText(1, "y");
  EXPECT_FALSE(book.SetColumnNumbers(1, 1, std::vector<double>{9}));
  EXPECT_FALSE(book.SetColumnTexts(1, 1, std::vector<std::string>{"q"}));
  EXPECT_FALSE(book.ClearRange({1, 1, 1, 1}));
  EXPECT_FALSE(book.InsertRows(1, 1));
  EXPECT_FALSE(book.DeleteRows(1, 1));
  EXPECT_FALSE(book.InsertColumns(1, 1));
  EXPECT_FALSE(book.DeleteColumns(1, 1));
  EXPECT_FALSE(book.InsertCells({1, 1, 1, 1}, Shift::Rows));
  EXPECT_FALSE(book.DeleteCells({1, 1, 1, 1}, Shift::Columns));
  EXPECT_FALSE(book.CopyBlock({1, 1, 1, 1}, 2, 2));
  EXPECT_FALSE(book.FillDown({1, 1, 2, 1}));
  EXPECT_FALSE(book.FillRight({1, 1, 1, 2}));
  EXPECT_FALSE(book.SetLook({1, 1, 1, 1}, Bold()));
  EXPECT_FALSE(book.DeleteSheet(1));
  EXPECT_EQ(book.UndoCaption(), caption);
  EXPECT_EQ(book.NumberRC(1, 1), 1);
  EXPECT_EQ(book.ColText(1), "x");
  // Its formulas live on.
  book.Sheet(2);
  book.InsertRows(1, 1);
  book.NumberRC(2, 1, 6);
  book.Sheet(1);
  EXPECT_EQ(book.FormulaText(2, 1), "=Sheet2!A2");
  EXPECT_EQ(book.NumberRC(2, 1), 6);
  book.LockSheet(false);
  book.NumberRC(1, 1, 3);
  EXPECT_EQ(book.NumberRC(1, 1), 3);
  for (int i = 0; i < 4; ++i) EXPECT_TRUE(book.Undo());
  EXPECT_TRUE(book.SheetLocked());
  EXPECT_TRUE(book.Undo());
  EXPECT_FALSE(book.SheetLocked());
}

}  // namespace
}  // namespace tellurix
