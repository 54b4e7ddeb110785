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
  EXPECT_EQ(Localized("0.5", german), "0,5");
}

}  // namespace
}  // namespace tellurix
