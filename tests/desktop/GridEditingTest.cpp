// Cells as typed, pasted and searched texts, and the places of rows and columns.

#include "desktop/GridEditing.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <random>

#include "desktop/GridGeometry.h"
#include "workbook/TypedText.h"

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

// --- dates and percentages. Serial numbers: 1970-01-01 is 25569, so 2001-03-12, 11393 days later, is 36962. ---

using NumberForm = NumberFormat::Form;

const Regional German{",", ".", "dd.mm.yyyy"};
const Regional British{".", ",", "dd/mm/yyyy"};
const Regional American{".", ",", "mm/dd/yyyy"};
const Regional Slovak{",", "", "dd. mm. yyyy"};  // whose own form is not read

class TypedCell {
 public:
  Workbook book;

  CellView Type(std::string_view text, const Regional& regional) {
    std::string reason;
    EXPECT_TRUE(CommitText(book, 1, 1, text, regional, reason)) << reason;
    return book.ReadRC(1, 1);
  }
  // In a cell that was never used.
  CellView TypeAnew(std::string_view text, const Regional& regional) {
    book.SetLook({1, 1, 1, 1}, {.number = NumberFormat()});
    book.ClearRange({1, 1, 1, 1});
    return Type(text, regional);
  }
  NumberForm Form() const { return book.NumberFormatAt(1, 1).form; }
  std::string Edited(const Regional& regional) const { return EditableText(book, 1, 1, regional); }
};

TEST(TypedDates, AreReadInTheOrderOfTheRegion) {
  TypedCell cell;
  const auto expect = [&](const char* text, const Regional& regional, double serial, NumberForm form) {
    const CellView view = cell.TypeAnew(text, regional);
    EXPECT_EQ(view.type, NumberCell) << text;
    EXPECT_EQ(view.number, serial) << text;
    EXPECT_EQ(cell.Form(), form) << text;
  };
  expect("12.03.2001", German, 36962, NumberForm::Date);
  expect(" 12.3.01 ", German, 36962, NumberForm::Date);
  expect("12/03/2001", British, 36962, NumberForm::Date);
  expect("3/12/2001", American, 36962, NumberForm::Date);
  expect("12 Mar 2001", Plain, 36962, NumberForm::Date);
  expect("March 12, 2001", British, 36962, NumberForm::Date);
  for (const Regional* regional : {&Plain, &German, &British, &American, &Slovak}) {
    expect("2001-03-12", *regional, 36962, NumberForm::Date);
    expect("2001-03-12 18:00", *regional, 36962.75, NumberForm::DateMinutes);
    expect("2001-03-12T06:00:00", *regional, 36962.25, NumberForm::DateSeconds);
    expect("2001-03-12 00:00", *regional, 36962, NumberForm::DateMinutes);
  }
  expect("12/03/2001 6:00 pm", British, 36962.75, NumberForm::DateMinutes);
  expect("9999-12-31", Plain, 2958465, NumberForm::Date);
  expect("0001-01-01", Plain, -693593, NumberForm::Date);
}

TEST(TypedDates, LeaveTextsAsTheyAre) {
  TypedCell cell;
  for (const char* text : {"1:40",
                           "1:40:20",
                           "13:45",
                           "1:40 pm",
                           "12/80",
                           "1-2",
                           "3/4",
                           "120/80",
                           "March1",
                           "MARCH1",
                           "SEPT2",
                           "SEPT2-1",
                           "DEC1",
                           "1-Mar",
                           "2-Sep",
                           "MARC1",
                           "Mar-01",
                           "OCT4",
                           "FEB-2",
                           "JUN 2001",
                           "2001-03",
                           "12.03.",
                           "31/31/2001",
                           "2001-02-29",
                           "12.5 %%",
                           "%",
                           "12%5",
                           "1e1%",
                           "x%",
                           "March 12",
                           "2001-03-12 25:00",
                           "1-2-3",
                           "J1-2-2001",
                           "2001-03-12 mg",
                           "A1-02-2003"}) {
    for (const Regional* regional : {&Plain, &German, &British, &American}) {
      const CellView view = cell.Type(text, *regional);
      EXPECT_EQ(view.type, TextCell) << text << " under " << regional->dateForm;
      EXPECT_EQ(view.text, text);
      EXPECT_EQ(cell.Edited(*regional), text);
    }
  }
  EXPECT_EQ(cell.Type("12/03/2001", Plain).type, TextCell) << "the order is not known";
  EXPECT_EQ(cell.Form(), NumberForm::General);
}

TEST(TypedDates, PercentagesKeepTheirDecimals) {
  TypedCell cell;
  const auto expect = [&](const char* text, const Regional& regional, double number, int decimals) {
    const CellView view = cell.TypeAnew(text, regional);
    EXPECT_EQ(view.type, NumberCell) << text;
    EXPECT_EQ(view.number, number) << text;
    EXPECT_EQ(cell.book.NumberFormatAt(1, 1), (NumberFormat{NumberForm::Percent, decimals})) << text;
  };
  expect("12.5%", Plain, 0.125, 1);
  expect("12,50 %", German, 0.125, 2);
  expect("-7%", Plain, -0.07, 0);
  expect("0.29%", Plain, 0.0029, 2);
  expect("1,250%", British, 12.5, 0);
  expect("1.250%", German, 12.5, 0);
  EXPECT_EQ(cell.Type("12,5%", British).type, TextCell);
}

TEST(TypedDates, ComeWithTheirFormatInOneStep) {
  TypedCell cell;
  cell.book.TextRC(1, 1, "before");
  cell.book.ClearHistory();
  cell.Type("12/03/2001 13:45", British);
  EXPECT_EQ(cell.book.FormattedTextRC(1, 1, British), "12/03/2001 13:45");
  EXPECT_EQ(cell.book.FormattedTextRC(1, 1), "2001-03-12 13:45");
  EXPECT_GE(cell.book.ColumnWidth(1), 16);
  ASSERT_TRUE(cell.book.Undo());
  EXPECT_EQ(cell.book.TextRC(1, 1), "before");
  EXPECT_EQ(cell.Form(), NumberForm::General);
  EXPECT_EQ(cell.book.ColumnWidth(1), Workbook::DefaultColumnWidth);
  EXPECT_FALSE(cell.book.CanUndo());
  ASSERT_TRUE(cell.book.Redo());
  EXPECT_EQ(cell.Form(), NumberForm::DateMinutes);
  EXPECT_EQ(cell.book.LookAt(2, 1), CellLook());
  cell.book.Enter(2, 1, "12/03/2001 13:45:10", British);
  EXPECT_GE(cell.book.ColumnWidth(1), 19);
  cell.book.SetColumnWidth(1, 12);
  cell.book.Enter(3, 1, "12/03/2001 13:45:10", British);
  EXPECT_EQ(cell.book.ColumnWidth(1), 12) << "a width that someone chose stays";
}

TEST(TypedDates, HeedFormatsAndApostrophes) {
  TypedCell cell;
  const NumberFormat fixed{NumberForm::Fixed, 3};
  cell.book.SetLook({1, 1, 1, 1}, {.number = fixed, .bold = true});
  EXPECT_EQ(cell.Type("2001-03-12", Plain).number, 36962);
  EXPECT_EQ(cell.Type("12.5%", Plain).number, 0.125);
  EXPECT_EQ(cell.book.NumberFormatAt(1, 1), fixed);
  cell.book.SetLook({1, 1, 1, 1}, {.number = NumberFormat()});
  cell.Type("12.5%", Plain);
  EXPECT_EQ(cell.Form(), NumberForm::Percent);
  EXPECT_TRUE(cell.book.LookAt(1, 1).bold);

  cell.book.SetLook({1, 1, 1, 1}, {.number = NumberFormat{NumberForm::Text}});
  for (const char* text : {"2001-03-12", "12.5%"}) {
    EXPECT_EQ(cell.Type(text, Plain).type, TextCell);
    EXPECT_EQ(cell.Edited(Plain), text);
  }
  PasteBlock(cell.book, TextBlock("2001-03-12"), {1, 1, 1, 1}, Plain, {});
  EXPECT_EQ(cell.book.TypeRC(1, 1), TextCell);
  EXPECT_EQ(cell.Form(), NumberForm::Text);

  // A text that was imported as such stays one when it is edited and not changed.
  cell.book.SetLook({1, 1, 1, 1}, {.number = NumberFormat()});
  for (const char* text : {"12/03/2001", "2001-03-12", "12%"}) {
    cell.book.TextRC(1, 1, text);
    EXPECT_EQ(cell.Edited(British), std::string("'") + text);
    EXPECT_EQ(cell.Type(cell.Edited(British), British).type, TextCell);
    EXPECT_EQ(cell.book.TextRC(1, 1), text);
  }
  EXPECT_EQ(cell.Form(), NumberForm::General);
  cell.book.TextRC(1, 1, "12/03/2001");
  EXPECT_EQ(cell.Edited(German), "'12/03/2001") << "any separator is read";
  EXPECT_EQ(cell.Edited(Plain), "12/03/2001");
}

TEST(TypedDates, AreEditedAsTheyWereTyped) {
  TypedCell cell;
  const auto expect = [&](double number, const NumberFormat& format, const Regional& regional, const char* text) {
    cell.book.NumberRC(1, 1, number);
    cell.book.SetLook({1, 1, 1, 1}, {.number = format});
    EXPECT_EQ(cell.Edited(regional), text);
    EXPECT_EQ(PlainText(cell.book, 1, 1, regional), text);
  };
  const NumberFormat date{NumberForm::Date}, minutes{NumberForm::DateMinutes}, seconds{NumberForm::DateSeconds};
  expect(36962, date, German, "12.03.2001");
  expect(36962, date, American, "03/12/2001");
  expect(36962, date, Slovak, "2001-03-12");
  expect(36962, minutes, British, "12/03/2001 00:00");
  expect(36962, seconds, British, "12/03/2001 00:00:00");
  expect(36962.75, date, British, "12/03/2001 18:00");
  expect(36962 + 1.0 / 86400, minutes, Plain, "2001-03-12 00:00:01");
  expect(36962 + 0.0625 / 86400, date, German, "12.03.2001 00:00:00,063");  // to the millisecond
  expect(-0.5, date, Plain, "1899-12-29 12:00");
  expect(1e7, date, Plain, "10000000");
  expect(2958465.9999999995, date, Plain, "2958465.9999999995");
  expect(36962, {}, Plain, "36962");
  const NumberFormat percent{NumberForm::Percent, 0};
  expect(0.125, percent, German, "12,5%");
  expect(0.1, percent, Plain, "10%");
  expect(0, percent, Plain, "0%");
  expect(-0.0007, percent, Plain, "-0.07%");
  expect(12, percent, British, "1200%");
  expect(1.0 / 3, percent, Plain, "33.33333333333333%");
  expect(1e-9, percent, Plain, "1e-09");
}

// What is shown for editing leaves the cell as it is, to the last bit.
TEST(TypedDates, EditingUnchangedChangesNothing) {
  const char* set = std::getenv("TELLURIX_FUZZ_ROUNDS");
  const int rounds = set ? std::atoi(set) : 5000;
  std::mt19937_64 random(36962);
  std::uniform_real_distribution<double> unit;
  const Regional* regions[] = {&Plain, &German, &British, &American, &Slovak};
  const NumberForm forms[] = {NumberForm::General, NumberForm::Fixed,       NumberForm::Percent,
                              NumberForm::Date,    NumberForm::DateMinutes, NumberForm::DateSeconds};
  TypedCell cell, typedAnew;
  for (int round = 0; round < rounds; ++round) {
    double number = std::floor(unit(random) * 3000000);
    switch (random() % 5) {
      case 0:
        number += unit(random);
        break;
      case 1:
        number += std::floor(unit(random) * 86400) / 86400;
        break;
      case 2:
        number = (unit(random) - 0.5) * std::pow(10, static_cast<int>(random() % 40) - 20);
        break;
      case 3:
        number = -number;
        break;
      default:
        break;
    }
    const NumberFormat format{forms[random() % std::size(forms)], static_cast<int>(random() % 4)};
    const Regional& regional = *regions[random() % std::size(regions)];
    cell.book.NumberRC(1, 1, number);
    cell.book.SetLook({1, 1, 1, 1}, {.number = format});
    const std::string text = cell.Edited(regional);
    const CellView same = cell.Type(text, regional);
    ASSERT_EQ(same.type, NumberCell) << text;
    ASSERT_EQ(same.number, number) << text;
    ASSERT_EQ(cell.book.NumberFormatAt(1, 1), format);
    // Typed elsewhere it says the same, a time of day to the millisecond.
    const double error = format.IsDate() ? 0.00051 / 86400 + std::abs(number) * 1e-15 : 0;
    ASSERT_NEAR(typedAnew.TypeAnew(text, regional).number, number, error) << text;
    ASSERT_EQ(typedAnew.TypeAnew(ExactTypedText(number, format, regional), regional).number, number) << text;
  }
}

TEST(TypedDates, ArePastedAndCopied) {
  Workbook book;
  PasteBlock(book, TextBlock("Admitted\tShare\n12/03/2001\t12.5%\n13/03/2001\t7%\n*\t1\n14/03/2001 13:45\t2%\n"),
             {1, 1, 5, 2}, British, {});
  EXPECT_EQ(book.TypeRC(1, 1), TextCell);
  EXPECT_EQ(book.NumberRC(2, 1), 36962);
  EXPECT_EQ(book.FormattedTextRC(3, 1, British), "13/03/2001");
  EXPECT_EQ(book.LookAt(1, 1), CellLook());
  EXPECT_EQ(book.LookAt(4, 1), CellLook());
  EXPECT_EQ(book.LookAt(6, 1), CellLook());
  EXPECT_EQ(book.FormattedTextRC(5, 1, British), "14/03/2001 13:45");
  EXPECT_EQ(book.FormattedTextRC(2, 2), "12.5%");
  EXPECT_EQ(book.FormattedTextRC(3, 2), "7%");
  EXPECT_EQ(book.FormattedTextRC(4, 2), "1");

  book.SetSelection({1, 1, 5, 2});
  const auto range = BlockOf(book);
  const std::string copied = BlockText(book, range, British, false);
  EXPECT_EQ(copied, "Admitted\tShare\n12/03/2001\t12.5%\n13/03/2001\t7%\n*\t1\n14/03/2001 13:45\t2%\n");
  EXPECT_NE(BlockHtml(book, range, German).find("12.03.2001"), std::string::npos);
  book.NumberRC(3, 1, 36963.123456789);  // finer than a millisecond: the text for others is a date, our own exact
  EXPECT_NE(BlockText(book, range, British, false).find("13/03/2001 02:57:46.667"), std::string::npos);
  for (const bool isOwn : {false, true}) {
    Workbook other;
    PasteBlock(other, TextBlock(BlockText(book, range, British, isOwn)), {1, 1, 5, 2}, British,
               {.quotedAreTexts = isOwn});
    for (int row = 1; row <= 5; ++row) {
      for (int column = 1; column <= 2; ++column) {
        EXPECT_EQ(other.TypeRC(row, column), book.TypeRC(row, column));
        if (row == 3 && column == 1) continue;
        EXPECT_EQ(other.NumberRC(row, column), book.NumberRC(row, column));
        EXPECT_EQ(other.LookAt(row, column), book.LookAt(row, column)) << row << ' ' << column;
      }
    }
    EXPECT_NEAR(other.NumberRC(3, 1), book.NumberRC(3, 1), isOwn ? 0 : 1e-8);
  }
  while (book.CanUndo()) book.Undo();
  EXPECT_EQ(book.LastLookColumn(), 0);
}

// Many runs, between looks that are there: against one cell at a time.
TEST(TypedDates, FormatsGivenAtOnceAreThoseGivenOneByOne) {
  std::mt19937 random(5);
  const auto upTo = [&](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
  for (int round = 0; round < 100; ++round) {
    Workbook atOnce, single;
    for (int i = upTo(6); i > 0; --i) {
      const int first = 1 + upTo(30), last = upTo(9) ? first + upTo(10) : Workbook::MaxRows;
      LookChange change;
      if (upTo(2)) change.bold = upTo(2) == 1;
      if (upTo(2)) change.number = NumberFormat{static_cast<NumberForm>(upTo(5))};
      for (Workbook* book : {&atOnce, &single}) book->SetLook({first, 2, last, 2}, change);
    }
    std::vector<Workbook::FormatRun> runs;
    for (int row = 1 + upTo(5); row < 40; row += 1 + upTo(4)) {
      const int last = row + upTo(4);
      runs.push_back({row, last, {upTo(2) ? NumberForm::Date : NumberForm::Percent, 1}});
      row = last;
    }
    ASSERT_TRUE(atOnce.GiveNumberFormats(2, runs));
    for (const auto& run : runs) {
      for (int row = run.firstRow; row <= run.lastRow; ++row) {
        if (single.NumberFormatAt(row, 2).form == NumberForm::General)
          single.SetLook({row, 2, row, 2}, {.number = run.format});
      }
    }
    for (int row = 1; row <= 60; ++row) ASSERT_EQ(atOnce.LookAt(row, 2), single.LookAt(row, 2)) << round << ' ' << row;
    ASSERT_EQ(atOnce.LooksDown(2).size(), single.LooksDown(2).size());
    ASSERT_TRUE(atOnce.Undo());
  }
}

TEST(TypedDates, AreFoundAndReplacedAsShown) {
  Workbook book;
  std::string reason;
  ASSERT_TRUE(CommitText(book, 1, 1, "12.03.2001", German, reason));
  ASSERT_TRUE(CommitText(book, 2, 1, "12,5%", German, reason));
  const auto row = [&](const char* text, const Regional& regional) {
    int at = 3, column = 1;
    return FindNext(book, text, {}, regional, at, column) ? at : 0;
  };
  EXPECT_EQ(row("12.03", German), 1);
  EXPECT_EQ(row("12/03/2001", British), 1);
  EXPECT_EQ(row("12/03/2001", German), 0);
  EXPECT_EQ(row("36962", German), 0);
  EXPECT_EQ(row("2,5%", German), 2);
  EXPECT_EQ(ReplaceAll(book, ".2001", ".2002", {}, German), 1);
  EXPECT_EQ(book.NumberRC(1, 1), 36962 + 365);
  EXPECT_EQ(book.FormattedTextRC(1, 1), "2002-03-12");
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
