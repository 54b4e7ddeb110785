// Prints the accuracy of the kernel, region by region: accuracy [POINTS], points a region (default 2000).
#include <cstdio>
#include <cstdlib>

#include "tests/kernel/AccuracyRegions.h"

int main(int argc, char** argv) {
  using namespace tellurix::accuracy;
  const int points = argc > 1 ? std::atoi(argv[1]) : 2000;
  std::printf(
      "Errors, relative unless the region says otherwise, against 50-digit values (which agree with other methods to\n"
      "%.1e), exact counts, enumeration and certified figures\n\n",
      ReferenceDisagreement());
  std::printf("%-18s %-64s %6s %9s %9s %9s  %s\n", "function", "region", "points", "worst", "promised", "median",
              "worst at");
  bool kept = true;
  for (const RegionResult& row : MeasureRegions(points)) {
    std::printf("%-18s %-64s %6d %9.1e %9.0e %9.1e  (%s)\n", row.function.c_str(), row.region.c_str(), row.points,
                row.worst, row.worstBound, row.median, row.worstPoint.c_str());
    kept = kept && row.IsKept();
  }
  std::printf("\n%s\n", kept ? "Every promise is kept." : "NOT every promise is kept.");
  return kept ? 0 : 1;
}
