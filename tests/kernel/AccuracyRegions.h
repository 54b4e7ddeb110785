// Accuracy of the kernel against 50-digit values, region by region; shared by the tests and by bench/Accuracy.cpp.
#pragma once

#include <string>
#include <vector>

namespace tellurix::accuracy {

struct RegionResult {
  std::string function;
  std::string region;
  int points = 0;
  double worst = 0;        // the largest relative error
  double median = 0;       // the median relative error
  std::string worstPoint;  // its arguments
  double worstBound = 0;   // what the library promises
  double medianBound = 0;  // 0: nothing promised
};

// Draws `points` arguments in every region (the same ones for the same number) and compares the kernel there with an
// independent computation in 50 digits: incomplete gamma by power series and Legendre's continued fraction, incomplete
// beta by the continued fraction of Abramowitz & Stegun 26.5.8, inverses by Newton's method on those.
std::vector<RegionResult> MeasureRegions(int points);

// The 50-digit incomplete gamma and beta against closed forms and against another method of computing them: the largest
// relative difference seen.
double ReferenceDisagreement();

}  // namespace tellurix::accuracy
