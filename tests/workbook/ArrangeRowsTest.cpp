// Rows of a block in another order, against the cells read one by one before.
#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>

#include "workbook/Workbook.h"

namespace tellurix {
namespace {

constexpr int First = 5;
constexpr int Rows = 9000;  // over several segments of a column

struct Cell {
  std::string text;
  std::string formula;
  int type;
  bool bold;
  bool operator==(const Cell&) const = default;
};

std::vector<Cell> CellsDown(const Workbook& book, int column) {
  std::vector<Cell> cells;
  for (int row = 1; row <= First + Rows + 5; ++row) {
    cells.push_back({book.TextRC(row, column), book.FormulaText(row, column), book.TypeRC(row, column),
                     book.LookAt(row, column).bold});
  }
  return cells;
}

TEST(ArrangeRows, MovesEveryCellWithItsLook) {
  std::mt19937 random(3);
  Workbook book;
  LookChange bold;
  bold.bold = true;
  for (int row = 1; row <= First + Rows + 5; ++row) {
    book.NumberRC(row, 1, row * 0.5);  // all numbers
    switch (random() % 5) {            // all kinds of cells
      case 0:
        book.NumberRC(row, 2, row);
        break;
      case 1:
        book.TextRC(row, 2, "text " + std::to_string(row));
        break;
      case 2:
        book.SetLogical(row, 2, row % 2 == 0);
        break;
      case 3:
        book.Enter(row, 2, "=$A$1+1", {});
        break;
      default:
        break;
    }
    if (row % 7 == 0) book.SetLook({row, 2, row, 2}, bold);
  }
  std::vector<std::uint32_t> order(Rows);
  std::iota(order.begin(), order.end(), 0u);
  std::shuffle(order.begin(), order.end(), random);

  const CellRange block{First, 1, First + Rows - 1, 4};  // two columns of it are empty
  for (const int column : {1, 2}) {
    SCOPED_TRACE(column);
    const std::vector<Cell> before = CellsDown(book, column);
    ASSERT_TRUE(book.ArrangeRows(block, order));
    std::vector<Cell> expected = before;
    for (std::size_t i = 0; i < order.size(); ++i) expected[First - 1 + i] = before[First - 1 + order[i]];
    EXPECT_EQ(CellsDown(book, column), expected);
    ASSERT_TRUE(book.Undo());
    EXPECT_EQ(CellsDown(book, column), before);
  }
  EXPECT_FALSE(book.ArrangeRows({First, 1, First + Rows, 4}, order));
}

TEST(ArrangeRows, FormulasReferToTheirNewRows) {
  Workbook book;
  for (int row = 1; row <= 3; ++row) {
    book.NumberRC(row, 1, row * 10);
    book.Enter(row, 2, "=A" + std::to_string(row) + "*2", {});
  }
  book.Enter(1, 3, "=B1", {});  // not in the block
  ASSERT_TRUE(book.ArrangeRows({1, 1, 3, 2}, std::vector<std::uint32_t>{2, 0, 1}));
  EXPECT_EQ(book.FormulaText(1, 2), "=A1*2");
  EXPECT_EQ(book.NumberRC(1, 2), 60);
  EXPECT_EQ(book.NumberRC(3, 2), 40);
  EXPECT_EQ(book.FormulaText(1, 3), "=B1");
  EXPECT_EQ(book.NumberRC(1, 3), 60);
}

}  // namespace
}  // namespace tellurix
