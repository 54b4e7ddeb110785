#include "numeric/Rounding.h"

#include <gtest/gtest.h>

namespace tellurix {
namespace {

TEST(Rounding, TiesGoToEvenAndTheExactBinaryValueDecides) {
  EXPECT_EQ(PlainText(0.125, 2), "0.12");
  EXPECT_EQ(PlainText(0.375, 2), "0.38");
  EXPECT_EQ(PlainText(2.5, 0), "2");
  EXPECT_EQ(PlainText(-3.5, 0), "-4");
  EXPECT_EQ(PlainText(2.675, 2), "2.67");  // the double lies below the tie
  EXPECT_EQ(RoundHalfEven(0.125, 2), 0.12);
  EXPECT_EQ(ToInteger(0.5), 0);
  EXPECT_EQ(ToInteger(1.5), 2);
  EXPECT_EQ(ToInteger(-2.5), -2);
  EXPECT_EQ(ToInteger(1e300), 2147483647);
}

TEST(Rounding, PlainTextShowsNoNoiseBehindFifteenDigits) {
  EXPECT_EQ(PlainText(1000000000000.1, 6), "1000000000000.1");
  EXPECT_EQ(PlainText(123456.7890125, 6), "123456.789012");
  EXPECT_EQ(PlainText(-0.0000001, 6), "0");
  EXPECT_EQ(PlainText(100, 6), "100");
  EXPECT_EQ(PlainText(1.5e20, 6), "1.5E+20");
  EXPECT_EQ(PlainText(999999999999999.9, 6), "1000000000000000");  // sixteen digits before the point
  EXPECT_EQ(GeneralText(0.1 + 0.2), "0.3");
  EXPECT_EQ(GeneralText(1234567.25), "1234567.25");
  EXPECT_EQ(GeneralText(1e-10), "1E-10");
  EXPECT_EQ(ScientificText(1.234e-5), "1.23E-05");
  EXPECT_EQ(ScientificText(-4e-123), "-4.00E-123");
}

}  // namespace
}  // namespace tellurix
