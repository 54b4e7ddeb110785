// Power of tests.
#pragma once

#include <cstdint>

namespace tellurix {

// Each answers MissingValue for a missing argument, a standard deviation that is not positive, fewer observations than
// named, or an alpha outside (0, 1). U is the upper tail of Student's distribution.

// The power of the two-sided t test of one sample (or of paired differences) of n >= 2 observations with standard
// deviation s at level alpha, when the true mean lies d from the hypothetical one. With df = n - 1, t the critical
// value of level alpha/2 and e = s/sqrt(n) it is 1 - [U((d - t e)/e) - U((d + t e)/e)].
double PowerOneSample(double alpha, double d, double s, std::int32_t n);

// The same for two samples of n and r n observations, together at least 3, with common standard deviation s and means
// that lie d apart: df = (r + 1) n - 2 and e = s sqrt((1/r + 1)/n).
double PowerTwoSample(double alpha, double d, double s, std::int32_t n, double r);

// The same without the assumption of equal variances, n1 and n2 at least 2: the one tail U(t - d/e), with
// e^2 = s1^2/n1 + s2^2/n2 and the degrees of freedom of Welch and Satterthwaite. One of the standard deviations may be
// 0.
double PowerUnequalVariance(double alpha, double d, std::int32_t n1, std::int32_t n2, double s1, double s2);

}  // namespace tellurix
