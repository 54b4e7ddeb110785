// Transformations of single observations, and running sums. What has no value, or none within the range of numbers, is
// MissingValue, and so is what is made of a missing value.
#pragma once

#include <span>
#include <vector>

namespace tellurix {

double NaturalLog(double x);  // x above 0
double Log10(double x);
double PowerOf(double x, double exponent);

// Of proportions from 0 to 1: ln(p / (1 - p)) and the standard normal deviate below which p lies, both without a value
// at 0 and 1; the arcsine of the square root, in radians.
double Logit(double p);
double Probit(double p);
double Angle(double p);

// Of counts r out of n, whole numbers, 0 <= r <= n and n >= 1; always finite.
//   EmpiricalLogit: ln((r + 1/2) / (n - r + 1/2)), D. R. Cox (1970) Analysis of Binary Data, section 3.2.
//   EmpiricalProbit: the probit of the proportion with that logit, (r + 1/2) / (n + 1).
//   AngleOfCount: arcsin(sqrt((r + 3/8) / (n + 3/4))), F. J. Anscombe (1948) Biometrika 35:246-254.
double EmpiricalLogit(double r, double n);
double EmpiricalProbit(double r, double n);
double AngleOfCount(double r, double n);

// The sum of the values down to each; missing ones are passed over and stay missing.
std::vector<double> RunningSums(std::span<const double> values);

}  // namespace tellurix
