// What results say in words, at the very limits.
#include <gtest/gtest.h>

#include <cmath>

#include "classical/ShapiroWilkTest.h"
#include "classical/UnpairedT.h"
#include "numeric/Missing.h"

namespace tellurix {
namespace {

double JustBelow(double x) { return std::nextafter(x, 0); }

TEST(Verdict, OfShapiroAndWilk) {
  EXPECT_STREQ(ShapiroWilkVerdict(0), "Sample unlikely to be from a normal distribution");
  EXPECT_STREQ(ShapiroWilkVerdict(JustBelow(0.05)), "Sample unlikely to be from a normal distribution");
  EXPECT_STREQ(ShapiroWilkVerdict(0.05), "Test not quite significant but do NOT assume normality");
  EXPECT_STREQ(ShapiroWilkVerdict(JustBelow(0.1)), "Test not quite significant but do NOT assume normality");
  EXPECT_STREQ(ShapiroWilkVerdict(0.1), "No evidence of non-normality");
  EXPECT_STREQ(ShapiroWilkVerdict(1), "No evidence of non-normality");
  EXPECT_STREQ(ShapiroWilkVerdict(MissingValue), "Error in calculation");
}

TEST(Verdict, OfVariances) {
  const VarianceVerdict unequal = JudgeVariances(JustBelow(0.025));
  EXPECT_STREQ(unequal.finding, "TWO SIDED F TEST IS SIGNIFICANT");
  EXPECT_STREQ(unequal.advice, "USE APPROXIMATE t (UNEQUAL VARIANCES) RESULT or ALTERNATIVELY MANN-WHITNEY");
  const VarianceVerdict equal = JudgeVariances(0.025);
  EXPECT_STREQ(equal.finding, "Two sided F test is not significant");
  EXPECT_STREQ(equal.advice, "No need to assume unequal variances");
  EXPECT_STREQ(JudgeVariances(MissingValue).finding, "*");
}

}  // namespace
}  // namespace tellurix
