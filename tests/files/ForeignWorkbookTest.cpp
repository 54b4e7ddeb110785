// Workbooks of other programs: what is read of them, and what damaged ones do.

#include "workbook/files/foreign/ForeignWorkbook.h"

#include <gtest/gtest.h>

#include <chrono>

#include "numeric/Text.h"
#include "tests/files/Samples.h"
#include "workbook/files/WorkbookFiles.h"
#include "workbook/files/ZipFile.h"
#include "workbook/files/foreign/Archive.h"
#include "workbook/files/foreign/ForeignFormats.h"
#include "workbook/files/foreign/XlsFormula.h"

namespace tellurix {
namespace {

namespace fs = std::filesystem;

const fs::path Data = fs::path(TELLURIX_SOURCE_DIR) / "tests/data/workbooks";

struct Sample {
  const char* file;
  double third;       // 0.1 + 0.2, of which LibreOffice and Gnumeric write 15 digits into their own files
  bool keepsOthers;   // formulas that refer to other sheets: not in xls 5
  bool keepsResults;  // not in gnumeric files
  const char* secondName;
};

class ClinicTest : public testing::TestWithParam<Sample> {};

// Through the reader's process, as everybody does. What stands in the cells is in clinic.fods.
TEST_P(ClinicTest, IsRead) {
  const Sample& sample = GetParam();
  Workbook book;
  std::string problem;
  ASSERT_TRUE(ReadWorkbookFile(Data / sample.file, book, Regional(), {}, problem)) << problem;
  ASSERT_EQ(book.SheetCount(), 2);
  EXPECT_EQ(book.SheetName(1), "Visits");
  EXPECT_EQ(book.SheetName(2), "Notes");
  EXPECT_EQ(book.Sheet(), 1);
  EXPECT_FALSE(book.document.changed);

  EXPECT_EQ(book.TextRC(1, 1), "name");
  EXPECT_TRUE(book.LookAt(1, 1).bold);
  EXPECT_FALSE(book.LookAt(2, 1).bold);
  EXPECT_EQ(book.TextRC(3, 1), sample.secondName);
  EXPECT_EQ(book.TypeRC(4, 1), EmptyCell);
  EXPECT_NEAR(book.ColumnWidth(1), 27, 1.5) << "2 inches";

  EXPECT_EQ(book.FormattedTextRC(2, 2), "1980-02-29");
  EXPECT_EQ(book.FormattedTextRC(3, 2), "1999-12-31");
  EXPECT_EQ(book.FormattedTextRC(4, 2).substr(0, 10), "2020-06-01");
  EXPECT_EQ(book.NumberRC(4, 2), 43983.75);

  EXPECT_EQ(book.NumberRC(2, 3), 61.25);
  EXPECT_EQ(book.NumberRC(3, 3), -0.1);
  EXPECT_EQ(book.FormattedTextRC(3, 3), "-0.10");
  EXPECT_EQ(book.NumberRC(4, 3), sample.third);
  EXPECT_EQ(book.NumberRC(5, 3), 0.125);
  EXPECT_EQ(book.FormattedTextRC(5, 3), "12.5%");
  EXPECT_EQ(book.NumberRC(5, 6), -123456789);

  EXPECT_EQ(book.TypeRC(2, 4), LogicalCell);
  EXPECT_EQ(book.NumberRC(2, 4), -1);
  EXPECT_EQ(book.TypeRC(3, 4), LogicalCell);
  EXPECT_EQ(book.NumberRC(3, 4), 0);

  EXPECT_EQ(book.NumberRC(2, 5), 122.5);
  EXPECT_EQ(book.TextRC(2, 6), "Ann!");
  EXPECT_DOUBLE_EQ(book.NumberRC(3, 5), 61.45);
  EXPECT_EQ(book.NumberRC(3, 6), 42);
  EXPECT_EQ(book.TextRC(4, 6), "#DIV/0!");
  EXPECT_EQ(book.TextRC(5, 4), "TRUE");
  EXPECT_EQ(book.NumberRC(5, 5), 2);
  if (sample.keepsResults) {
    EXPECT_EQ(book.NumberRC(4, 5), 6) << "GCD, which is not ours, leaves its result";
  }
  EXPECT_EQ(book.FormulaText(2, 5), "=C2*2");
  EXPECT_TRUE(EqualNoCase(book.FormulaText(3, 5), "=SUM(C2:C4)")) << "Gnumeric writes names of functions small";
  EXPECT_EQ(book.FormulaText(4, 5).empty(), sample.keepsResults);
  if (sample.keepsOthers) {
    book.Sheet(2);
    book.NumberRC(2, 2, 50);
    book.Sheet(1);
    EXPECT_EQ(book.NumberRC(3, 6), 51) << "computed anew, across sheets";
  }
  book.Sheet(2);
  EXPECT_EQ(book.TypeRC(2, 3), TextCell);
  EXPECT_EQ(book.TextRC(2, 3), "007");
}

INSTANTIATE_TEST_SUITE_P(Kinds, ClinicTest,
                         testing::Values(Sample{"clinic.ods", 0.3, true, true, "B\xC3\xB6rt <&> \xE5\x8C\x97"},
                                         Sample{"clinic.xlsx", 0.3, true, true, "B\xC3\xB6rt <&> \xE5\x8C\x97"},
                                         Sample{"clinic-gnumeric.xlsx", 0.3, true, true,
                                                "B\xC3\xB6rt <&> \xE5\x8C\x97"},
                                         Sample{"clinic.gnumeric", 0.3, true, false, "B\xC3\xB6rt <&> \xE5\x8C\x97"},
                                         Sample{"clinic-97.xls", 0.1 + 0.2, true, true, "B\xC3\xB6rt <&> \xE5\x8C\x97"},
                                         Sample{"clinic-95.xls", 0.3, false, true, "B\xC3\xB6rt <&> ?"}),
                         [](const auto& tested) {
                           std::string name = tested.param.file;
                           for (char& c : name) c = std::isalnum(static_cast<unsigned char>(c)) ? c : '_';
                           return name;
                         });

TEST(ForeignWorkbook, XlsxHasEveryKindOfCell) {
  Workbook book;
  std::string problem;
  ASSERT_TRUE(ReadForeignWorkbook(Data / "kinds.xlsx", book, problem)) << problem;
  EXPECT_EQ(book.SheetName(1), "A & B");
  EXPECT_EQ(book.TextRC(1, 1), "plain");
  EXPECT_EQ(book.TextRC(1, 2), "rich ") << "the pieces, without the phonetic ones";
  EXPECT_EQ(book.TextRC(1, 3), "inline");
  EXPECT_EQ(book.TextRC(1, 4), "#N/A");
  EXPECT_EQ(book.NumberRC(1, 5), 43864.5);
  EXPECT_EQ(book.LookAt(1, 5).number.form, NumberFormat::Form::Date);
  EXPECT_EQ(book.TextRC(1, 6), "direct");
  EXPECT_EQ(book.NumberRC(1, 7), 1.5e-7);
  EXPECT_EQ(book.TypeRC(1, 8), LogicalCell);
  EXPECT_EQ(book.TextRC(1, 9), std::string("a\x01"
                                           "b"));
  EXPECT_EQ(book.NumberRC(2, 1), 7) << "rows and cells without a place come one after the other";
  EXPECT_EQ(book.NumberRC(2, 2), 8);
  EXPECT_EQ(book.FormulaText(4, 1), "=A3*2+$B$2") << "of a shared formula";
  EXPECT_EQ(book.NumberRC(5, 1), 112);
  EXPECT_EQ(book.NumberRC(3, 2), 30) << "an array formula leaves its result";
  EXPECT_TRUE(book.IsError(3, 3));
  EXPECT_EQ(book.NumberRC(5, 2), 3);
  EXPECT_EQ(book.FormulaText(5, 2), "");
  EXPECT_EQ(book.ColumnWidth(3), 20);
}

// What formulas.fods has in its second column.
TEST(ForeignWorkbook, FormulasOfEveryKindAreOurs) {
  const char* expected[] = {"=COUNT(A1:A3)",
                            "=IF(A1>1,\"a\"\"b\",A2)",
                            "=AVERAGE(A1:A3,7)",
                            "=-(A1+$A$2)*2^3%",
                            "=ROUND(PI(),2)&\"x\"",
                            "=AND(A1<>2,NOT(A2>=3))",
                            "=MEDIAN(A1:A3)+SUMSQ(A1:A3)+PRODUCT(A1:A3)+COUNTA(A1:A3)",
                            "=LEN(TRIM(\" ab \"))",
                            "=ISNUMBER(A1)",
                            "=ISBLANK(A9)",
                            "=MOD(A3,2)+INT(2.5)+ABS(-1)",
                            "=STDEV(A1:A3)+VAR(A1:A3)+SQRT(4)+LN(1)+LOG10(10)+EXP(0)",
                            "='It''s 2'!A1+1",
                            "=SUM('It''s 2'!A1:B2)"};
  for (const char* file : {"formulas.xls", "formulas.xlsx", "formulas.ods"}) {
    Workbook book;
    std::string problem;
    ASSERT_TRUE(ReadForeignWorkbook(Data / file, book, problem)) << problem;
    for (int row = 1; row <= 14; ++row) {
      const std::string text = ReplaceAll(book.FormulaText(row, 2), ";", ",");
      EXPECT_EQ(ReplaceAll(text, "$'It", "'It"), expected[row - 1]) << file;
    }
    EXPECT_EQ(book.TextRC(2, 2), "2") << file;
    EXPECT_EQ(book.NumberRC(7, 2), 2 + 14 + 6 + 3) << file;
    EXPECT_EQ(book.NumberRC(14, 2), 30) << file;
  }
}

TEST(ForeignWorkbook, DatesSince1904KeepTheirDays) {
  Workbook book;
  std::string problem;
  ASSERT_TRUE(ReadForeignWorkbook(Data / "mac1904.xlsx", book, problem)) << problem;
  EXPECT_EQ(book.FormattedTextRC(1, 1), "2001-02-03");
  EXPECT_EQ(book.FormattedTextRC(2, 1).substr(0, 10), "1904-01-02");
  EXPECT_EQ(book.FormattedTextRC(3, 1), "2001-02-04") << "a formula without a stored result";
  EXPECT_EQ(book.NumberRC(1, 2), 5) << "no date, no shift";
  EXPECT_EQ(book.NumberRC(2, 2), 10);
}

TEST(ForeignFormats, CodesAndFormulas) {
  using Form = NumberFormat::Form;
  const auto form = [](const char* code) { return FormatOfCode(code).form; };
  EXPECT_EQ(form("General"), Form::General);
  EXPECT_EQ(form("dd/mm/yyyy"), Form::Date);
  EXPECT_EQ(form("[$-409]d\\-mmm\\-yy;@"), Form::Date);
  EXPECT_EQ(form("yyyy-mm-dd hh:mm"), Form::DateMinutes);
  EXPECT_EQ(form("[$-409]m/d/yy\\ h:mm:ss AM/PM;@"), Form::DateSeconds);
  EXPECT_EQ(form("m/d/yy \"at\" h AM/PM"), Form::Date);
  EXPECT_EQ(form("h:mm"), Form::General);
  EXPECT_EQ(form("[h]:mm:ss"), Form::General);
  EXPECT_EQ(form("@"), Form::Text);
  EXPECT_EQ(form("0.0\" days\""), Form::Fixed);
  EXPECT_EQ(form("# ?/?"), Form::General);
  EXPECT_EQ(FormatOfCode("#,##0.000_);[Red](#,##0.000)"), (NumberFormat{Form::Fixed, 3, true}));
  EXPECT_EQ(FormatOfCode("0.0%"), (NumberFormat{Form::Percent, 1, false}));
  EXPECT_EQ(FormatOfCode("0.00E+00"), (NumberFormat{Form::Scientific, 2, false}));
  const auto formula = [](const char* text) { return FormulaFrom(text, FormulaGrammar::OpenFormula); };
  EXPECT_EQ(formula("of:=[.A1]+[.$B$2:.C3]"), "=A1+$B$2:C3");
  EXPECT_EQ(formula("of:=SUM([$Notes.B2:.B9];\"[.A1]\")"), "=SUM(Notes!B2:B9;\"[.A1]\")");
  EXPECT_EQ(formula("of:=[$'It''s: 1.5'.A1]"), "='It''s: 1.5'!A1");
}

// Tokens as [MS-XLS] has them: a shared formula's distances, a reference to another sheet, and what is not known.
TEST(XlsFormula, TokensAsText) {
  const XlsNames names{true, {"Two"}};
  const auto text = [&](std::string_view tokens, int row, int column) {
    return TextOfTokens(tokens, row, column, names).value_or("none");
  };
  using namespace std::string_view_literals;
  EXPECT_EQ(text("\x2C\xFF\xFF\x00\xC0"sv, 5, 3), "=C4") << "one row up";
  EXPECT_EQ(text("\x2C\x02\x00\xFE\x40"sv, 5, 3), "=A$3") << "two columns to the left in the third row";
  EXPECT_EQ(text("\x5A\x00\x00\x08\x00\x01\x00"sv, 1, 1), "=Two!$B$9");
  EXPECT_EQ(text("\x5A\x01\x00\x08\x00\x01\x00"sv, 1, 1), "none") << "no such sheet";
  EXPECT_EQ(text("\x1E\x03\x00\x1E\x02\x00\x04"sv, 1, 1), "=3-2");
  EXPECT_EQ(text("\x1E\x03\x00\x04"sv, 1, 1), "none") << "an operand is missing";
  EXPECT_EQ(text("\x23\x01\x00\x00\x00"sv, 1, 1), "none") << "a name";
  EXPECT_EQ(text(""sv, 1, 1), "none");
}

// --- damage ---

int Rounds() {
  const char* more = std::getenv("TELLURIX_FUZZ_ROUNDS");
  return more ? std::atoi(more) : 500;
}

std::string Damaged(std::string bytes, std::mt19937& random) {
  if (bytes.empty()) return bytes;
  if (random() % 5 == 0) bytes.resize(random() % bytes.size());
  for (unsigned flips = 1 + random() % 6; flips > 0 && !bytes.empty(); --flips) {
    char& at = bytes[random() % bytes.size()];
    // In texts a digit that becomes another one gets further than a flipped bit.
    if (at >= '0' && at <= '9' && random() % 2 == 0) {
      at = static_cast<char>('0' + random() % 10);
    } else {
      at ^= static_cast<char>(1 << random() % 8);
    }
  }
  return bytes;
}

// Reads a file that may be damaged: no crash, no long wait, and the workbook as it was if it is refused.
void TryToRead(const fs::path& path, int round) {
  Workbook book;
  book.TextRC(1, 1, "stays");
  std::string problem;
  const auto start = std::chrono::steady_clock::now();
  const bool good = ReadForeignWorkbook(path, book, problem);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2)) << path << " round " << round;
  if (good) return;
  ASSERT_NE(problem, "") << path << " round " << round;
  ASSERT_EQ(book.TextRC(1, 1), "stays") << path << " round " << round;
}

class DamageTest : public testing::TestWithParam<const char*> {};

TEST_P(DamageTest, IsRefusedOrHarmless) {
  const TestFolder folder;
  const std::string good = FileBytes(Data / GetParam());
  ASSERT_FALSE(good.empty());
  std::mt19937 random(4);
  for (int round = 0; round < Rounds(); ++round) {
    PutFile(folder / "bad", Damaged(good, random));
    TryToRead(folder / "bad", round);
  }
}

INSTANTIATE_TEST_SUITE_P(Kinds, DamageTest,
                         testing::Values("clinic.ods", "clinic.xlsx", "clinic.gnumeric", "clinic-97.xls",
                                         "clinic-95.xls"));

// The checksums of an archive keep damage from its parts; here the parts themselves are damaged.
class PartDamageTest : public testing::TestWithParam<std::pair<const char*, std::vector<const char*>>> {};

TEST_P(PartDamageTest, IsRefusedOrHarmless) {
  const TestFolder folder;
  const auto& [file, parts] = GetParam();
  Archive archive(Data / file);
  std::vector<std::string> contents(parts.size());
  for (std::size_t i = 0; i < parts.size(); ++i) ASSERT_TRUE(archive.Read(parts[i], contents[i])) << parts[i];
  std::mt19937 random(5);
  for (int round = 0; round < Rounds(); ++round) {
    const std::size_t bad = random() % parts.size();
    {
      ZipFile zip(folder / "bad");
      for (std::size_t i = 0; i < parts.size(); ++i) {
        zip.Begin(parts[i]);
        zip.Write(i == bad ? Damaged(contents[i], random) : contents[i]);
      }
      ASSERT_TRUE(zip.Close());
    }
    TryToRead(folder / "bad", round);
  }
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, PartDamageTest,
    testing::Values(std::pair("clinic.ods", std::vector{"mimetype", "styles.xml", "content.xml", "content.xml"}),
                    std::pair("clinic.xlsx", std::vector{"_rels/.rels", "xl/workbook.xml", "xl/_rels/workbook.xml.rels",
                                                         "xl/sharedStrings.xml", "xl/styles.xml",
                                                         "xl/worksheets/sheet1.xml", "xl/worksheets/sheet2.xml"})));

TEST(ForeignWorkbook, DamagedPartsOfGnumeric) {
  const TestFolder folder;
  std::string good;
  ASSERT_TRUE(ReadGzip(Data / "clinic.gnumeric", good));
  std::mt19937 random(6);
  for (int round = 0; round < Rounds(); ++round) {
    PutFile(folder / "bad", Damaged(good, random));
    TryToRead(folder / "bad", round);
  }
}

}  // namespace
}  // namespace tellurix
