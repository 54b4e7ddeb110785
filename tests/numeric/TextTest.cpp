#include "numeric/Text.h"

#include <gtest/gtest.h>

#include "numeric/Regional.h"

namespace tellurix {
namespace {

TEST(Text, ComparesWithoutRegardToCaseBeyondAscii) {
  EXPECT_TRUE(EqualNoCase("YES", "yes"));
  EXPECT_TRUE(EqualNoCase("ÉTÉ", "été"));
  EXPECT_FALSE(EqualNoCase("ete", "été"));
  EXPECT_EQ(FoldCase("\xff"
                     "A"),
            "\xff"
            "a");
}

TEST(Text, ReadsForeignBytesAsWindows1252) {
  EXPECT_EQ(ToUtf8("caf\xe9 \x80"), "café €");
  EXPECT_EQ(ToUtf8("café"), "café");
  EXPECT_EQ(DisplayWidth("日本e\xcc\x81"), 5u);
}

TEST(Regional, ReadsNumbersByTheUsersSymbols) {
  const Regional plain;
  EXPECT_EQ(ReadNumber(" -1.5e3 ", plain), -1500.0);
  EXPECT_EQ(ReadNumber("+2", plain), 2.0);
  EXPECT_FALSE(ReadNumber("1,5", plain));
  EXPECT_FALSE(ReadNumber("", plain));
  EXPECT_FALSE(ReadNumber("inf", plain));
  EXPECT_FALSE(ReadNumber("nan", plain));
  EXPECT_FALSE(ReadNumber("0x10", plain));
  EXPECT_FALSE(ReadNumber("1e999", plain));
  EXPECT_FALSE(ReadNumber("+-1", plain));
  const Regional german{.decimalSymbol = ",", .groupingSymbol = ".", .dateForm = "dd.mm.yyyy"};
  EXPECT_EQ(ReadNumber("1.234,5", german), 1234.5);
  EXPECT_EQ(ReadNumber("-12.345.678", german), -12345678);
  EXPECT_EQ(ReadNumber("12.34.567,25e1", german), 12345672.5);
  // The decimal point of another country, and dates.
  for (const char* text : {"1.5", "28.02.2020", "1.1.2024", "1,234.5", "1234.567.8", ".123", "1234.567", "1..234", "1.",
                           "1e1.000", "1.23a"}) {
    EXPECT_FALSE(ReadNumber(text, german)) << text;
  }
  EXPECT_EQ(Localized("0.5", german), "0,5");
}

TEST(Regional, TheSystemsSymbolsAndDates) {
  EXPECT_EQ(DateFormOf("%d.%m.%Y"), "dd.mm.yyyy");
  EXPECT_EQ(DateFormOf("%m/%d/%y"), "mm/dd/yyyy");
  EXPECT_EQ(DateFormOf("%-d/%Om %EY"), "dd/mm yyyy");
  EXPECT_EQ(DateFormOf("%F"), "yyyy-mm-dd");
  EXPECT_EQ(DateFormOf("%d %b %Y"), "");
  EXPECT_EQ(DateFormOf("%d.%m.%"), "");
  ::setenv("LC_ALL", "C", 1);
  const SystemSymbols plain = ReadSystemSymbols();
  EXPECT_EQ(plain.decimal, ".");
  EXPECT_EQ(plain.grouping, "");
  EXPECT_EQ(plain.dateForm, "yyyy-mm-dd");
  EXPECT_TRUE(plain.AgreeWithMoney());  // the C locale says nothing of money
  ::setenv("LC_ALL", "no_SUCH.locale", 1);
  EXPECT_TRUE(ReadSystemSymbols().AgreeWithMoney());
  ::unsetenv("LC_ALL");
}

TEST(Text, UpperCaseKnowsAllLetters) {
  EXPECT_EQ(UpperCase("/home/été/a1.csv"), "/HOME/ÉTÉ/A1.CSV");
  EXPECT_EQ(UpperCase("x\xffy"), "X\xffY");
}

}  // namespace
}  // namespace tellurix
