// A sum that does not lose what rounding drops on the way.
#pragma once

#include <cmath>

namespace tellurix {

// Neumaier's sum (A. Neumaier 1974, Zeitschrift fuer angewandte Mathematik und Mechanik 54:39-51).
class CompensatedSum {
 public:
  void Add(double x) {
    const double sum = sum_ + x;
    rest_ += std::fabs(sum_) >= std::fabs(x) ? (sum_ - sum) + x : (x - sum) + sum_;
    sum_ = sum;
  }
  double Value() const { return sum_ + rest_; }

 private:
  double sum_ = 0;
  double rest_ = 0;
};

}  // namespace tellurix
