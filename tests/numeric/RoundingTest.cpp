#include "numeric/Rounding.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <random>

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

// As the C library writes and reads them.
double ThroughText(double x) {
  char text[40];
  std::snprintf(text, sizeof text, "%.14e", x);
  return std::strtod(text, nullptr) + 0.0;
}

TEST(Rounding, FifteenDigitsAreThoseOfTheText) {
  std::mt19937_64 random(15);
  const auto expectSame = [](double x) {
    ASSERT_EQ(std::bit_cast<std::uint64_t>(FifteenDigits(x)), std::bit_cast<std::uint64_t>(ThroughText(x))) << x;
    ASSERT_EQ(std::strtod(GeneralText(x).c_str(), nullptr), ThroughText(x)) << x;
  };
  for (int i = 0; i < 100000; ++i) {
    const auto bits = random();
    const double any = std::bit_cast<double>(bits);
    if (std::isfinite(any)) expectSame(any);
    expectSame(std::ldexp(static_cast<double>(bits >> 11), static_cast<int>(bits % 160) - 90));
    // Halfway between two of 15 digits, and beside it.
    const double half = (static_cast<double>(100000000000000 + bits % 100000000000000) + 0.5) / std::pow(2.0, bits % 7);
    for (const double scale : {1.0, 0.01, 1e-18, 100.0, 1e7, 1e20}) {
      expectSame(half * scale);
      expectSame(std::nextafter(half * scale, 0));
    }
  }
  for (int exponent = -320; exponent <= 308; ++exponent) {
    const double power = std::pow(10.0, exponent);
    for (const double x : {power, std::nextafter(power, 0.0), std::nextafter(power, 1e308), -power, 5 * power}) {
      if (std::isfinite(x)) expectSame(x);
    }
  }
  // Beside a power of ten, where the number of decimals changes.
  EXPECT_EQ(GeneralText(999999.999999999), "999999.999999999");
  EXPECT_EQ(GeneralText(0.00999999999999999), "0.00999999999999999");
  EXPECT_EQ(GeneralText(0.00009999999999999999), "0.0001");
  EXPECT_EQ(GeneralText(999999999999999.9), "1E+15");
  EXPECT_EQ(PlainText(999999.999999999, 9), "999999.999999999");
  expectSame(-0.0);
  EXPECT_TRUE(std::isinf(FifteenDigits(std::numeric_limits<double>::max())));
}

}  // namespace
}  // namespace tellurix
