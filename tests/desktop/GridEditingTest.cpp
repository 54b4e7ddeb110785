// Cells as typed, pasted and searched texts, and the places of rows and columns.

#include "desktop/GridEditing.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <random>

#include "desktop/GridGeometry.h"

namespace tellurix {
namespace {

const Regional Plain;

// --- geometry, against an array of all sizes ---

TEST(GridGeometry, AgreesWithPlainArray) {
  const char* set = std::getenv("TELLURIX_FUZZ_ROUNDS");
  const int rounds = set ? std::atoi(set) : 200;
  std::mt19937 random(20260);
  const auto upTo = [&](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
  for (int round = 0; round < rounds; ++round) {
    constexpr int Count = 60;
    GridAxis axis(Count, 10);
    std::vector<int> sizes(Count + 1, 10);
    for (int i = 0; i < 12; ++i) {
      const int first = 1 + upTo(Count);
      const int last = std::min(Count, first + upTo(10));
      const bool reset = upTo(4) == 0;
      const int size = reset ? 10 : upTo(3) * 7;
      if (reset) {
        axis.Reset(first, last);
      } else {
        axis.SetSize(first, last, size);
      }
      for (int k = first; k <= last; ++k) sizes[static_cast<std::size_t>(k)] = size;
    }
    qint64 start = 0;
    for (int k = 1; k <= Count; ++k) {
      const int size = sizes[static_cast<std::size_t>(k)];
      ASSERT_EQ(axis.Size(k), size);
      ASSERT_EQ(axis.Start(k), start);
      for (int pixel = 0; pixel < size; ++pixel) ASSERT_EQ(axis.At(start + pixel), k);
      start += size;
      int next = k + 1;
      while (next <= Count && sizes[static_cast<std::size_t>(next)] == 0) ++next;
      ASSERT_EQ(axis.Next(k, 1), next > Count ? 0 : next);
      int before = k - 1;
      while (before >= 1 && sizes[static_cast<std::size_t>(before)] == 0) --before;
      ASSERT_EQ(axis.Next(k, -1), before);
    }
    ASSERT_EQ(axis.Start(Count + 1), start);
  }
}

TEST(GridGeometry, LaysOutFrozenRowsBeforeScrolledOnes) {
  GridAxis rows(GridStore::MaxRows, 20);
  rows.SetSize(2, 2, 0);
  rows.SetSize(102, 1000000, 0);
  const auto spans = LayOut(rows, 3, 100, 15, 110);
  std::vector<std::pair<int, int>> places;
  for (const GridSpan& span : spans) places.emplace_back(span.index, span.start);
  const std::vector<std::pair<int, int>> expected{{1, 15}, {3, 35}, {100, 55}, {101, 75}, {1000001, 95}};
  EXPECT_EQ(places, expected);
}

// --- typed texts ---

TEST(GridEditing, ReadsTypedTexts) {
  Regional comma;
  comma.decimalSymbol = ",";
  comma.groupingSymbol = ".";
  Workbook book;
  std::string reason;
  const auto typed = [&](const char* text, const Regional& regional) {
    EXPECT_TRUE(CommitText(book, 1, 1, text, regional, reason));
    return book.ReadRC(1, 1);
  };
  EXPECT_EQ(typed("1.5e3", Plain).number, 1500);
  EXPECT_EQ(typed("1.234,5", comma).number, 1234.5);
  EXPECT_EQ(EditableText(book, 1, 1, comma), "1234,5");
  EXPECT_EQ(typed("1,5", Plain).type, TextCell);
  EXPECT_EQ(typed("true", Plain).type, LogicalCell);
  EXPECT_EQ(book.NumberRC(1, 1), -1);
  EXPECT_EQ(typed("*", Plain).type, TextCell);
  EXPECT_EQ(typed("", Plain).type, EmptyCell);
  typed("0.1", Plain);
  EXPECT_EQ(EditableText(book, 1, 1, Plain), "0.1");
  book.NumberRC(1, 1, 1.0 / 3);
  EXPECT_EQ(std::stod(EditableText(book, 1, 1, Plain)), 1.0 / 3);
  EXPECT_FALSE(CommitText(book, 1, 1, std::string(40000, 'x'), Plain, reason));
  EXPECT_FALSE(reason.empty());
  EXPECT_EQ(book.NumberRC(1, 1), 1.0 / 3);
}

// --- blocks ---

std::vector<std::vector<std::string>> Fields(const std::string& text) {
  const TextBlock block(text);
  std::vector<std::vector<std::string>> lines;
  for (int row = 0; row < block.Rows(); ++row) {
    lines.emplace_back();
    for (int column = 0; column < block.Columns(); ++column) lines.back().emplace_back(block.At(row, column).text);
  }
  return lines;
}

TEST(GridEditing, TakesBlocksApart) {
  using Lines = std::vector<std::vector<std::string>>;
  EXPECT_EQ(Fields(""), Lines{});
  EXPECT_EQ(Fields("a\tb\r\nc\rd\te\n"), (Lines{{"a", "b"}, {"c", ""}, {"d", "e"}}));
  EXPECT_EQ(Fields("a\n\nb"), (Lines{{"a"}, {""}, {"b"}}));
  EXPECT_EQ(Fields("\"x\ty\"\t\"1\n2\"\t\"say \"\"hi\"\"\"\n"), (Lines{{"x\ty", "1\n2", "say \"hi\""}}));
  EXPECT_EQ(Fields("\"quoted\" word\tb"), (Lines{{"\"quoted\" word", "b"}}));
  EXPECT_EQ(Fields("\"never closed\tb\nc"), (Lines{{"\"never closed", "b"}, {"c", ""}}));
  EXPECT_EQ(Fields("\"\"\ta"), (Lines{{"", "a"}}));
  EXPECT_EQ(Fields("a\t"), (Lines{{"a", ""}}));
}

TEST(GridEditing, BlocksComeBackAsTheyWere) {
  Workbook book;
  book.TextRC(1, 1, "007");
  book.TextRC(1, 2, "two\nlines\twith \"tab\"");
  book.TextRC(2, 1, "\"opening quote");
  book.NumberRC(2, 2, 0.1 + 0.2);
  book.SetLogical(3, 1, true);
  book.TextRC(3, 2, "TRUE");
  book.TextRC(4, 2, "<b>&");
  book.SetSelection({1, 1, 4, 2});
  const auto range = BlockOf(book);
  const TextBlock block(BlockText(book, range, Plain, true));
  ASSERT_EQ(block.Rows(), 4);
  ASSERT_EQ(block.Columns(), 2);
  book.TextRC(8, 5, "in the way");  // where an empty cell goes
  PasteBlock(book, block, {5, 4, 8, 5}, Plain, {.quotedAreTexts = true});
  book.TextRC(8, 4, "");
  for (int row = 1; row <= 4; ++row) {
    for (int column = 1; column <= 2; ++column) {
      const CellView from = book.ReadRC(row, column);
      const CellView to = book.ReadRC(row + 4, column + 3);
      EXPECT_EQ(from.type, to.type) << row << ' ' << column;
      EXPECT_EQ(from.number, to.number);
      EXPECT_EQ(from.text, to.text);
    }
  }
  // To other programs texts go unquoted where they can.
  EXPECT_TRUE(BlockText(book, range, Plain, false).starts_with("007\t\"two\nlines\twith \"\"tab\"\"\"\n"));
  const std::string html = BlockHtml(book, range, Plain);
  EXPECT_NE(html.find("<td>&lt;b&gt;&amp;</td></tr>\n</table>"), std::string::npos) << html;
}

TEST(GridEditing, JoinsRangesToBlocks) {
  Workbook book;
  book.NumberRC(5, 1, 1);
  book.SetSelection({1, 3, GridStore::MaxRows, 3});
  book.AddSelection({1, 1, GridStore::MaxRows, 1});
  EXPECT_EQ(BlockOf(book), (std::vector<CellRange>{{1, 1, 5, 1}, {1, 3, 5, 3}}));
  book.SetSelection({4, 1, 4, 2});
  book.AddSelection({1, 1, 2, 2});
  EXPECT_EQ(BlockOf(book), (std::vector<CellRange>{{1, 1, 2, 2}, {4, 1, 4, 2}}));
  book.AddSelection({1, 2, 2, 3});
  EXPECT_TRUE(BlockOf(book).empty());
}

// --- find and replace ---

TEST(GridEditing, FindsInEitherOrderAndDirection) {
  Workbook book;
  book.TextRC(1, 2, "Ärzte");
  book.TextRC(2, 1, "ärzte und so");
  book.TextRC(3, 3, "ÄRZTE");
  book.NumberRC(2, 3, 12.5);
  Regional region;
  using Place = std::pair<int, int>;
  const auto next = [&](const char* text, FindOptions options, int row, int column) {
    return FindNext(book, text, options, region, row, column) ? Place{row, column} : Place{0, 0};
  };
  EXPECT_EQ(next("ärzte", {}, 1, 1), Place(1, 2));
  EXPECT_EQ(next("ärzte", {}, 1, 2), Place(2, 1));
  EXPECT_EQ(next("ärzte", {}, 3, 3), Place(1, 2));
  EXPECT_EQ(next("ärzte", {.wholeCell = true}, 1, 2), Place(3, 3));
  EXPECT_EQ(next("ärzte", {.matchCase = true}, 1, 1), Place(2, 1));
  EXPECT_EQ(next("ärzte", {.byColumns = true}, 1, 1), Place(2, 1));
  EXPECT_EQ(next("ärzte", {.backwards = true}, 1, 1), Place(3, 3));
  EXPECT_EQ(next("ärzte", {.backwards = true}, 3, 3), Place(2, 1));
  EXPECT_EQ(next("2.5", {}, 1, 1), Place(2, 3));
  EXPECT_EQ(next("none", {}, 1, 1), Place(0, 0));
  region.decimalSymbol = ",";
  EXPECT_EQ(next("2.5", {}, 1, 1), Place(0, 0));
  EXPECT_EQ(next("2,5", {}, 1, 1), Place(2, 3));
  EXPECT_EQ(next("12,5", {.wholeCell = true}, 1, 1), Place(2, 3));
  // From beside and below the used part.
  EXPECT_EQ(next("ärzte", {}, 1, 9), Place(2, 1));
  EXPECT_EQ(next("ärzte", {.backwards = true}, 1, 9), Place(1, 2));
  EXPECT_EQ(next("ärzte", {}, 90, 2), Place(1, 2));
  EXPECT_EQ(next("ärzte", {.backwards = true}, 90, 2), Place(3, 3));
  // Empty columns cost nothing, however far the sheet is used.
  const Place corner(GridStore::MaxRows, GridStore::MaxColumns);
  book.TextRC(corner.first, corner.second, "last");
  for (const bool byColumns : {false, true}) {
    EXPECT_EQ(next("last", {.byColumns = byColumns}, 1, 1), corner);
    EXPECT_EQ(next("last", {.byColumns = byColumns, .backwards = true}, 1, 1), corner);
    EXPECT_EQ(next("none", {.byColumns = byColumns}, 1, 1), Place(0, 0));
  }
}

TEST(GridEditing, ReplacesInOneStep) {
  Workbook book;
  book.TextRC(1, 1, "male");
  book.TextRC(2, 1, "Female, MALE");
  book.NumberRC(3, 1, 1.25);
  book.SetFormula(4, 1, "=\"male\"", FormulaResult::Text("male"));
  book.TextRC(5, 1, "group 1");
  EXPECT_EQ(ReplaceAll(book, "male", "M", {}, Plain), 2);
  EXPECT_EQ(book.TextRC(1, 1), "M");
  EXPECT_EQ(book.TextRC(2, 1), "FeM, M");
  EXPECT_EQ(book.FormulaText(4, 1), "=\"male\"");
  ASSERT_TRUE(book.Undo());
  EXPECT_EQ(book.TextRC(2, 1), "Female, MALE");
  EXPECT_EQ(ReplaceAll(book, "1", "2", {}, Plain), 2);
  EXPECT_EQ(book.NumberRC(3, 1), 2.25);
  EXPECT_EQ(ReplaceAll(book, "group ", "", {}, Plain), 1);
  EXPECT_EQ(book.TypeRC(5, 1), NumberCell);
}

}  // namespace
}  // namespace tellurix
