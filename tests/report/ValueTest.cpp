#include "report/Value.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "numeric/Missing.h"

namespace tellurix {
namespace {

constexpr double NotANumber = std::numeric_limits<double>::quiet_NaN();

struct Case {
  double x;
  int places;
  const char* text;
};

TEST(Formatter, FormatValueFollowsItsRulesInTheirOrder) {
  const Options options;
  const Formatter format(options);
  const Case cases[] = {
      {MissingValue, 4, "*"},
      {-MissingValue, 4, "*"},
      {-2147483647, 4, "infinity"},  // the markers, the signs this way round
      {2147483647, 4, "-infinity"},
      {2147483646, 4, "2147483646"},
      {NotANumber, 4, "error"},
      {INFINITY, 4, "error"},
      {0, 4, "0"},
      {-0.0, 4, "0"},
      {1.5, 4, "1.5"},
      {-1.50, 4, "-1.5"},
      {100, 2, "100"},
      {0.125, 2, "0.12"},
      {0.375, 2, "0.38"},
      {2.5, 0, "2"},
      {3.5, 0, "4"},
      {0.00001, 4, "1.00E-05"},
      {-0.00001234, 4, "-1.23E-05"},
      {0.000099, 4, "9.90E-05"},
      {0.00012, 4, "0.0001"},
      {0.004, 2, "4.00E-03"},
      {1e-300, 12, "1.00E-300"},
      {123456.5, 0, "123456"},
  };
  for (const Case& c : cases) EXPECT_EQ(format.FormatValue(c.x, c.places).text, c.text) << c.x << " at " << c.places;
  // The least size that shows is itself shown.
  std::string least = "0.1";
  for (int places = 1; places <= 12; ++places, least.insert(2, "0")) {
    EXPECT_EQ(format.FormatValue(std::strtod(least.c_str(), nullptr), places).text, least);
  }
  EXPECT_EQ(format.FormatValue(1.23456789, 3).numbers, std::vector<double>{1.23456789});  // unrounded behind the text
  EXPECT_EQ(format.FormatStatistic(2.0 / 3).text, "0.666667");
}

TEST(Formatter, FormatPlacesGivesAllDigitsFromSevenOn) {
  const Options options;
  const Formatter format(options);
  EXPECT_EQ(format.FormatPlaces(2.0 / 3, 6).text, "0.666667");
  EXPECT_EQ(format.FormatPlaces(2.0 / 3, 7).text, "0.666666666666667");
  EXPECT_EQ(format.FormatPlaces(1.5, 12).text, "1.5");
  EXPECT_EQ(format.FormatPlaces(MissingValue, 7).text, "*");
}

TEST(Formatter, FormatLikeTakesItsDecimalsFromTheReference) {
  const Options options;
  const Formatter format(options);
  const struct {
    double x, ref;
    const char* text;
  } cases[] = {
      {1.5, 1, "1.50"},       {1.5, 0, "1.50"},       {1.5, 0.01, "1.50"},          {1.5, 0.0099, "1.500"},
      {1.5, -0.005, "1.500"}, {1.5, 0.001, "1.500"},  {1.5, 0.0009, "1.5000"},      {1.5, -1e-9, "1.5000"},
      {0, 1, "0.00"},         {0.125, 1, "0.12"},     {0.004, 1, "4.00E-03"},       {0.004, 0.005, "0.004"},
      {0.01, 1, "0.01"},      {MissingValue, 1, "*"}, {-2147483647, 1, "infinity"}, {NotANumber, 1, "error"},
  };
  for (const auto& c : cases) EXPECT_EQ(format.FormatLike(c.x, c.ref).text, c.text) << c.x << " like " << c.ref;
}

TEST(Formatter, FormatPAtItsEdges) {
  for (int places = 3; places <= 7; ++places) {
    Options options;
    options.PDecimalPlaces = places;
    const Formatter format(options);
    const std::string tiny = "0." + std::string(static_cast<std::size_t>(places) - 1, '0') + "1";
    const std::string nines = "0." + std::string(static_cast<std::size_t>(places), '9');
    const double t = std::strtod(tiny.c_str(), nullptr), most = std::strtod(nines.c_str(), nullptr);
    EXPECT_EQ(format.FormatP(t).text, "P = " + tiny);
    EXPECT_EQ(format.FormatP(t * 0.999).text, "P < " + tiny);
    EXPECT_EQ(format.FormatP(0).text, "P < " + tiny);
    EXPECT_EQ(format.FormatP(-10).text, "P < " + tiny);
    EXPECT_EQ(format.FormatP(most).text, "P = " + nines);
    EXPECT_EQ(format.FormatP(most + t * 0.01).text, "P > " + nines);
    EXPECT_EQ(format.FormatP(1).text, "P > " + nines);
    EXPECT_EQ(format.FormatP(10).text, "P > " + nines);
    EXPECT_EQ(format.FormatP(10.01).text, "P = *");
    EXPECT_EQ(format.FormatP(-10.01).text, "P = *");
    EXPECT_EQ(format.FormatP(MissingValue).text, "P = *");
    EXPECT_EQ(format.FormatP(NotANumber).text, "P = *");
    EXPECT_EQ(format.FormatP(0.5).text, "P = 0.5");
    EXPECT_EQ(format.FormatHalfP(0.5).text, "P > 0.4" + std::string(static_cast<std::size_t>(places) - 1, '9'));
    EXPECT_EQ(format.FormatHalfP(0.25).text, "P = 0.25");
    EXPECT_EQ(format.FormatHalfP(0).text, "P < " + tiny);
    EXPECT_EQ(format.FormatHalfP(MissingValue).text, "P = err");
  }
  Options options;
  EXPECT_EQ(Formatter(options).FormatP(0.0005).text, "P < 0.001");
  EXPECT_EQ(Formatter(options).FormatP(0.0312).text, "P = 0.031");
  options.PDecimalPlaces = 4;
  EXPECT_EQ(Formatter(options).FormatP(0.0005).text, "P = 0.0005");
}

TEST(Formatter, FormatPowerSaysItsLevelAndItsBounds) {
  const Options options;
  const Formatter format(options);
  EXPECT_EQ(format.FormatPower(0.8123456, 0.05).text, "(for 5% significance) = 81.23%");
  EXPECT_EQ(format.FormatPower(0.9999, 0.05).text, "(for 5% significance) = 99.99%");
  EXPECT_EQ(format.FormatPower(0.99995, 0.01).text, "(for 1% significance) > 99.99%");
  EXPECT_EQ(format.FormatPower(0.0001, 0.1).text, "(for 10% significance) = 0.01%");
  EXPECT_EQ(format.FormatPower(0.00009, 0.05).text, "(for 5% significance) < 0.01%");
  EXPECT_EQ(format.FormatPower(MissingValue, 0.05).text, "(for 5% significance) *");
}

TEST(Formatter, WritesTheUsersDecimalSymbolEverywhere) {
  Options options;
  options.regional.decimalSymbol = ",";
  const Formatter format(options);
  EXPECT_EQ(format.FormatValue(1.5, 4).text, "1,5");
  EXPECT_EQ(format.FormatValue(0.00001, 4).text, "1,00E-05");
  EXPECT_EQ(format.FormatPlaces(1.5, 9).text, "1,5");
  EXPECT_EQ(format.FormatLike(1.5, 1).text, "1,50");
  EXPECT_EQ(format.FormatP(0.031).text, "P = 0,031");
  EXPECT_EQ(format.FormatP(0).text, "P < 0,001");
  EXPECT_EQ(format.FormatP(1).text, "P > 0,999");
  EXPECT_EQ(format.FormatPower(0.5123, 0.025).text, "(for 2,5% significance) = 51,23%");
  EXPECT_EQ(format.FormatPower(1, 0.05).text, "(for 5% significance) > 99,99%");
}

TEST(Parse, ReadsWhatAPromptHolds) {
  const Regional german{.decimalSymbol = ",", .groupingSymbol = "."};
  EXPECT_EQ(ParseInteger("12"), 12);
  EXPECT_EQ(ParseInteger(" -3 "), -3);
  EXPECT_EQ(ParseInteger("2.5"), 2);
  EXPECT_EQ(ParseInteger("3.5"), 4);
  EXPECT_EQ(ParseInteger("1e3"), 1000);
  for (const char* text : {"", " ", "abc", "12x", "1 2", "~~Cancel", "0x10", "inf"}) {
    EXPECT_EQ(ParseInteger(text), 0) << text;
    EXPECT_EQ(ParseReal(text), 0) << text;
  }
  EXPECT_EQ(ParseInteger("1.234,5", german), 1234);
  EXPECT_EQ(ParseReal("1.234,5", german), 1234.5);
  EXPECT_EQ(ParseReal("0.123456789012345678"), 0.12345678901235);  // 14 decimals
  EXPECT_EQ(ParseReal("0.000000000000004"), 0);
  EXPECT_EQ(ParseReal("-1e-13"), -1e-13);
  EXPECT_EQ(ParseReal("1e300"), 1e300);
}

}  // namespace
}  // namespace tellurix
