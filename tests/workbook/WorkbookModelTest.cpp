// Random operations on a workbook and, beside it, on a plain map of cells: both must agree after each, after undoing
// each, and after redoing each.

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <map>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "workbook/Workbook.h"

namespace tellurix {
namespace {

using Place = std::pair<int, int>;  // row and column; row 0 and column 0 are the headings, row -1 the widths

struct ModelSheet {
  std::string name;
  std::map<Place, std::string> cells;
  bool operator==(const ModelSheet&) const = default;

  // Every cell goes where `target` says, or away.
  void Move(const std::function<std::optional<Place>(Place)>& target) {
    std::map<Place, std::string> moved;
    for (auto& [place, cell] : cells) {
      if (const auto to = target(place)) moved[*to] = cell;
    }
    cells = std::move(moved);
  }
};

using Model = std::vector<ModelSheet>;

std::string Described(int type, const std::string& shown, const std::string& formula = {}) {
  return std::to_string(type) + "|" + shown + "|" + formula;
}

Model Dump(Workbook& book) {
  Model model;
  const int active = book.Sheet();
  for (int sheet = 1; sheet <= book.SheetCount(); ++sheet) {
    book.Sheet(sheet);
    ModelSheet dumped;
    dumped.name = book.SheetName(sheet);
    const int lastRow = book.LastRow();
    const int lastColumn = book.LastCol();
    int realLastRow = 0;
    int realLastColumn = 0;
    for (int row = 1; row <= lastRow + 2; ++row) {
      for (int column = 1; column <= lastColumn + 2; ++column) {
        if (book.ReadRC(row, column).type == EmptyCell) continue;
        realLastRow = row;
        realLastColumn = std::max(realLastColumn, column);
        dumped.cells[{row, column}] =
            Described(book.TypeRC(row, column), book.TextRC(row, column), book.FormulaText(row, column));
      }
    }
    EXPECT_EQ(lastRow, realLastRow);
    EXPECT_EQ(lastColumn, realLastColumn);
    for (int column = 1; column <= 100; ++column) {
      if (!book.ColText(column).empty()) dumped.cells[{0, column}] = book.ColText(column);
      const double width = book.ColumnWidth(column);
      if (width != Workbook::DefaultColumnWidth) dumped.cells[{-1, column}] = std::to_string(width);
    }
    for (int row = 1; row <= lastRow + 300; ++row) {
      if (!book.RowText(row).empty()) dumped.cells[{row, 0}] = book.RowText(row);
    }
    model.push_back(std::move(dumped));
  }
  book.Sheet(active);
  return model;
}

class Player {
 public:
  explicit Player(unsigned seed) : random_(seed), model_(Dump(book)) {}

  Workbook book;

  const Model& Expected() const { return model_; }

  // One operation on both.
  void Play() {
    ModelSheet& sheet = model_[static_cast<std::size_t>(book.Sheet() - 1)];
    const CellRange at = SomeRange();
    const int rows = at.lastRow - at.firstRow + 1;
    const int columns = at.lastColumn - at.firstColumn + 1;
    const auto inside = [&](Place p) {
      return p.first >= at.firstRow && p.first <= at.lastRow && p.second >= at.firstColumn && p.second <= at.lastColumn;
    };
    switch (Below(18)) {
      case 0:
      case 1:
      case 2:
        SetCell(sheet, at.firstRow, at.firstColumn);
        break;
      case 3: {  // more cells of a column than are logged singly, across the edge of a segment
        const int from = 3900 + Below(200);
        const int count = 200 + Below(200);
        const int stride = 1 + Below(2);
        book.BeginStep("many");
        for (int i = 0; i < count; ++i) SetCell(sheet, from + i * stride, at.firstColumn);
        book.EndStep();
        break;
      }
      case 4: {
        std::vector<double> numbers;
        for (int i = 0; i < rows; ++i) {
          numbers.push_back(Below(1000));
          sheet.cells[{at.firstRow + i, at.firstColumn}] = Described(NumberCell, std::to_string(int(numbers.back())));
        }
        EXPECT_TRUE(book.SetColumnNumbers(at.firstColumn, at.firstRow, numbers));
        break;
      }
      case 5: {
        std::vector<std::string> texts;
        for (int i = 0; i < rows; ++i) {
          texts.push_back(Below(3) ? "t" + std::to_string(Below(4)) : "");
          sheet.cells.erase({at.firstRow + i, at.firstColumn});
          if (!texts.back().empty()) {
            sheet.cells[{at.firstRow + i, at.firstColumn}] = Described(TextCell, texts.back());
          }
        }
        EXPECT_TRUE(book.SetColumnTexts(at.firstColumn, at.firstRow, texts));
        break;
      }
      case 6:
        EXPECT_TRUE(book.ClearRange(at));
        std::erase_if(sheet.cells, [&](const auto& cell) { return inside(cell.first); });
        break;
      case 7:
        EXPECT_TRUE(book.InsertRows(at.firstRow, rows));
        sheet.Move([&](Place p) { return Place{p.first >= at.firstRow ? p.first + rows : p.first, p.second}; });
        break;
      case 8:
        EXPECT_TRUE(book.DeleteRows(at.firstRow, rows));
        sheet.Move([&](Place p) -> std::optional<Place> {
          if (p.first < at.firstRow) return p;
          if (p.first <= at.lastRow) return std::nullopt;
          return Place{p.first - rows, p.second};
        });
        break;
      case 9:
        if (book.LastCol() > 40) break;
        EXPECT_TRUE(book.InsertColumns(at.firstColumn, columns));
        sheet.Move([&](Place p) { return Place{p.first, p.second >= at.firstColumn ? p.second + columns : p.second}; });
        break;
      case 10:
        EXPECT_TRUE(book.DeleteColumns(at.firstColumn, columns));
        sheet.Move([&](Place p) -> std::optional<Place> {
          if (p.second < at.firstColumn) return p;
          if (p.second <= at.lastColumn) return std::nullopt;
          return Place{p.first, p.second - columns};
        });
        break;
      case 11: {
        const Shift shift = Below(2) ? Shift::Rows : Shift::Columns;
        EXPECT_TRUE(book.InsertCells(at, shift));
        sheet.Move([&](Place p) {
          const bool column = p.second >= at.firstColumn && p.second <= at.lastColumn;
          const bool row = p.first >= at.firstRow && p.first <= at.lastRow;
          if (shift == Shift::Rows && column && p.first >= at.firstRow) p.first += rows;
          if (shift == Shift::Columns && row && p.second >= at.firstColumn) p.second += columns;
          return p;
        });
        break;
      }
      case 12: {
        const Shift shift = Below(2) ? Shift::Rows : Shift::Columns;
        EXPECT_TRUE(book.DeleteCells(at, shift));
        sheet.Move([&](Place p) -> std::optional<Place> {
          if (inside(p)) return std::nullopt;
          const bool column = p.second >= at.firstColumn && p.second <= at.lastColumn;
          const bool row = p.first >= at.firstRow && p.first <= at.lastRow;
          if (shift == Shift::Rows && column && p.first > at.lastRow) p.first -= rows;
          if (shift == Shift::Columns && row && p.second > at.lastColumn) p.second -= columns;
          return p;
        });
        break;
      }
      case 13: {
        const int toRow = std::max(1, at.firstRow + Below(9) - 4);
        const int toColumn = 1 + Below(8);
        EXPECT_TRUE(book.CopyBlock(at, toRow, toColumn));
        const auto before = sheet.cells;
        for (int r = 0; r < rows; ++r) {
          for (int c = 0; c < columns; ++c) {
            const auto source = before.find({at.firstRow + r, at.firstColumn + c});
            if (source == before.end()) {
              sheet.cells.erase({toRow + r, toColumn + c});
            } else {
              sheet.cells[{toRow + r, toColumn + c}] = source->second;
            }
          }
        }
        break;
      }
      case 14: {
        const std::string text = Below(3) ? "h" + std::to_string(Below(9)) : "";
        const bool ofColumn = Below(2);
        const Place place = ofColumn ? Place{0, at.firstColumn} : Place{at.firstRow % 40 + 1, 0};
        if (ofColumn) {
          book.ColText(place.second, text);
        } else {
          book.RowText(place.first, text);
        }
        if (text.empty()) {
          sheet.cells.erase(place);
        } else {
          sheet.cells[place] = text;
        }
        break;
      }
      case 15: {
        const double width = Below(3) ? 20 + Below(9) : -1;
        book.SetColumnWidth(at.firstColumn, width);
        if (width < 0) {
          sheet.cells.erase({-1, at.firstColumn});
        } else {
          sheet.cells[{-1, at.firstColumn}] = std::to_string(width);
        }
        break;
      }
      case 16:
        ChangeSheets();
        break;
      default: {  // several of them as one step
        const int inner = Below(5);
        book.BeginStep("several");
        for (int i = 0; i < inner; ++i) Play();
        book.EndStep();
        break;
      }
    }
  }

 private:
  int Below(int end) { return std::uniform_int_distribution<int>(0, end - 1)(random_); }

  CellRange SomeRange() {
    const int row = Below(4) ? 1 + Below(12) : 4090 + Below(12);
    const int column = 1 + Below(8);
    return {row, column, row + Below(5), column + Below(3)};
  }

  void SetCell(ModelSheet& sheet, int row, int column) {
    const Place place{row, column};
    const int n = Below(6);
    switch (Below(6)) {
      case 0:
        book.TextRC(row, column, "");
        sheet.cells.erase(place);
        break;
      case 1:
        book.TextRC(row, column, "text " + std::to_string(n));
        sheet.cells[place] = Described(TextCell, "text " + std::to_string(n));
        break;
      case 2:
        book.SetLogical(row, column, n % 2);
        sheet.cells[place] = Described(LogicalCell, n % 2 ? "TRUE" : "FALSE");
        break;
      case 3:
        book.SetFormula(row, column, "=" + std::to_string(n), FormulaResult::Number(n));
        sheet.cells[place] = Described(-NumberCell, std::to_string(n), "=" + std::to_string(n));
        break;
      default:
        book.NumberRC(row, column, n);
        sheet.cells[place] = Described(NumberCell, std::to_string(n));
        break;
    }
  }

  void ChangeSheets() {
    const int count = book.SheetCount();
    const int at = Below(count);
    switch (Below(5)) {
      case 0:
        book.Sheet(at + 1);
        break;
      case 1:
        if (count == 4) break;
        book.AddSheet("S" + std::to_string(++named_));
        model_.push_back({"S" + std::to_string(named_), {}});
        break;
      case 2:
        EXPECT_EQ(book.DeleteSheet(at + 1), count > 1);
        if (count > 1) model_.erase(model_.begin() + at);
        break;
      case 3: {
        const int to = Below(count);
        EXPECT_TRUE(book.MoveSheet(at + 1, to + 1));
        ModelSheet moved = std::move(model_[static_cast<std::size_t>(at)]);
        model_.erase(model_.begin() + at);
        model_.insert(model_.begin() + to, std::move(moved));
        break;
      }
      default:
        EXPECT_TRUE(book.RenameSheet(at + 1, "R" + std::to_string(++named_)));
        model_[static_cast<std::size_t>(at)].name = "R" + std::to_string(named_);
        break;
    }
  }

  std::mt19937 random_;
  Model model_;
  int named_ = 0;
};

TEST(WorkbookModel, OperationsUndoAndRedoAgreeWithAPlainMap) {
  const char* rounds = std::getenv("TELLURIX_FUZZ_ROUNDS");
  const int games = std::max(1, (rounds ? std::atoi(rounds) : 300) / 30);
  for (int game = 0; game < games; ++game) {
    Player player(static_cast<unsigned>(game));
    Workbook& book = player.book;
    std::vector<Model> states{player.Expected()};
    while (states.size() <= 100) {
      const bool could = book.CanRedo();
      book.BeginStep("play");
      player.Play();
      book.EndStep();
      ASSERT_FALSE(could);
      const Model now = Dump(book);
      ASSERT_EQ(now, player.Expected()) << "game " << game << ", operation " << states.size();
      if (now != states.back()) states.push_back(now);
    }
    // Steps that wrote what was there already stand between equal states.
    std::size_t state = states.size() - 1;
    while (book.Undo()) {
      const Model now = Dump(book);
      if (now != states[state]) {
        ASSERT_GT(state, 0u);
        --state;
      }
      ASSERT_EQ(now, states[state]) << "game " << game << ", undone to " << state;
    }
    ASSERT_EQ(state, 0u);
    ASSERT_FALSE(book.document.changed);
    while (book.Redo()) {
      const Model now = Dump(book);
      if (now != states[state]) ++state;
      ASSERT_LT(state, states.size());
      ASSERT_EQ(now, states[state]) << "game " << game << ", redone to " << state;
    }
    ASSERT_EQ(state, states.size() - 1);
  }
}

}  // namespace
}  // namespace tellurix
