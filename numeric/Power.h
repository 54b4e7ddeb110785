// Power of tests.
#pragma once

#include <cstdint>

namespace tellurix {

// The power of the two-sided t test of one sample (or of paired differences) of n observations with standard deviation
// s at level alpha, when the true mean lies d from the hypothetical one. With df = n - 1, t the critical value of level
// alpha/2 and e = s/sqrt(n) it is 1 - [U((d - t e)/e) - U((d + t e)/e)], U being the upper tail of Student's
// distribution. MissingValue for a missing argument, n < 2, s = 0 or an alpha outside (0, 1).
double PowerOneSample(double alpha, double d, double s, std::int32_t n);

}  // namespace tellurix
