// Dates and percentages as they are typed, edited, pasted, copied and found. Serial numbers: 1970-01-01 is 25569, so
// 2001-03-12, 11393 days later, is 36962.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <random>

#include "desktop/GridEditing.h"
#include "workbook/TypedText.h"

namespace tellurix {
namespace {

const Regional Plain;

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

}  // namespace
}  // namespace tellurix
