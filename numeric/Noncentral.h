// Non-centralities from probabilities, for power and for the limits of effect sizes.
#pragma once

namespace tellurix {

// The non-centrality lambda at which P(X <= x) of the non-central chi-square on df degrees of freedom is p, by Brent's
// method on the kernel's NCHI2: 300 iterations at most, to within 1e-6. `failed` is set, and the result is
// MissingValue, for a missing or illegal argument, for a p above that of lambda = 0, and without convergence.
double NoncentralityFromChi(double p, double x, double df, bool& failed);

// The non-centrality delta at which P(T <= t) of the non-central t on df degrees of freedom is p (held strictly between
// 0 and 1): 100 steps of PNCT at most, their width falling to a tenth whenever they have passed p, until it is 1e-4 of
// the spread of T or less; then interpolated within the last step. `failed` as above.
double NoncentralityFromT(double p, double t, double df, bool& failed);

}  // namespace tellurix
