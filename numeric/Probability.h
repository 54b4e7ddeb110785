// Tail probabilities and critical values as the procedures use them: a missing value goes in and comes out as
// MissingValue, and so does whatever has no answer (an illegal argument). Small tails keep their full relative
// precision.
#pragma once

#include <cstdint>

namespace tellurix {

// P(X > chi) of chi-square on df > 0 degrees of freedom, chi >= 0.
double UpperPFromChi(double chi, double df);

// P(X > f) of the F distribution on df1, df2 > 0 degrees of freedom, f >= 0.
double UpperPFromF(double f, double df1, double df2);

// P(T > t) of Student's distribution on df > 0 degrees of freedom, fractional allowed, for every t.
double UpperPFromT(double t, double df);

// The two-sided critical value for a confidence level between 0 and 1: of Student's distribution on df degrees of
// freedom, of the normal distribution when df is 0. `alpha` is 1 - confidence. A negative df has no critical value.
void CriticalValue(std::int32_t df, double& criticalValue, double confidence, double& alpha);

// The two-sided critical value of the normal distribution alone; MissingValue for a confidence outside (0, 1).
double NormalCriticalValue(double confidence);

// The smaller of p and 1 - p.
double FoldP(double p);

// P of a statistic z that is standard normal under the hypothesis: the folded tail, and twice it.
double OneSidedP(double z);
double TwoSidedP(double z);

}  // namespace tellurix
