// Accuracy of the kernel against 50-digit values, exact counts, enumeration and certified figures, region by region;
// shared by the tests and by bench/Accuracy.cpp.
//
// A file *Regions.cpp of this folder holds the regions of one subject and adds them to the table:
//   const bool added = AddRegions(&MyRegions);
#pragma once

#include <cmath>
#include <functional>
#include <optional>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace tellurix::accuracy {

using Random = std::mt19937_64;

inline double Uniform(Random& random, double low, double high) {
  return std::uniform_real_distribution<double>(low, high)(random);
}

inline double LogUniform(Random& random, double low, double high) {
  return std::exp(Uniform(random, std::log(low), std::log(high)));
}

struct Point {
  std::vector<double> arguments;
  double error;  // relative, unless the region's name says otherwise
};

struct Region {
  std::string function;
  std::string name;
  double worstBound;
  double medianBound;  // 0: nothing promised
  // One point, or nothing where the drawn arguments lie outside the region.
  std::function<std::optional<Point>(Random&)> draw;
  int mostPoints = 1'000'000;  // fewer where the 50-digit values take long
};

// The same region with fewer points.
inline Region AtMost(int points, Region region) {
  region.mostPoints = points;
  return region;
}

// A region of given cases, taken in their order. `measure` makes the Point of a case.
template <typename Case, typename Measure>
Region Listed(std::string function, std::string name, double worstBound, std::vector<Case> cases, Measure measure) {
  const int count = static_cast<int>(cases.size());
  auto next = [cases = std::move(cases), measure, at = std::size_t{0}](Random&) mutable -> std::optional<Point> {
    return measure(cases[at++ % cases.size()]);
  };
  return {std::move(function), std::move(name), worstBound, 0, std::move(next), count};
}

// The error of a result that must be right to the last bit.
inline double Exactly(bool right) { return right ? 0 : INFINITY; }

// Adds a list of regions to the table; true.
bool AddRegions(std::vector<Region> (*regions)());

struct RegionResult {
  std::string function;
  std::string region;
  int points = 0;
  int wanted = 0;          // how many points were asked for
  double worst = 0;        // the largest error
  double median = 0;       // the median error
  std::string worstPoint;  // the arguments of the largest one
  double worstBound = 0;   // what the library promises
  double medianBound = 0;  // 0: nothing promised

  bool IsKept() const { return points == wanted && worst <= worstBound && (medianBound == 0 || median <= medianBound); }
};

// Draws `points` arguments in every region (fewer where its `mostPoints` says so; the same ones for the same number)
// and compares the kernel there with its references. Sorted by function; the regions of one function in their
// own order.
std::vector<RegionResult> MeasureRegions(int points);

// The 50-digit incomplete gamma and beta against closed forms and against another method of computing them: the largest
// relative difference seen.
double ReferenceDisagreement();

}  // namespace tellurix::accuracy
