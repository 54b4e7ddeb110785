// The promised accuracy, on the regions of the accuracy table.

#include <gtest/gtest.h>

#include "tests/kernel/AccuracyRegions.h"

namespace tellurix::accuracy {
namespace {

TEST(Accuracy, ReferenceAgreesWithOtherMethods) { EXPECT_LT(ReferenceDisagreement(), 1e-40); }

TEST(Accuracy, EveryRegionKeepsItsPromise) {
  constexpr int Points = 250;
  for (const RegionResult& row : MeasureRegions(Points)) {
    SCOPED_TRACE(row.function + ", " + row.region + ", worst at (" + row.worstPoint + ")");
    EXPECT_EQ(row.points, row.wanted);
    EXPECT_LE(row.worst, row.worstBound);
    if (row.medianBound > 0) {
      EXPECT_LE(row.median, row.medianBound);
    }
  }
}

}  // namespace
}  // namespace tellurix::accuracy
