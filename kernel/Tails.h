// Both tails of the distributions behind the flat functions, for C++ callers.
//
// Every tail is computed directly where it is the small one, so that it keeps its relative precision down to the
// smallest doubles; the other tail is then 1 minus it. Illegal arguments (see each function) give NaN, never a fault.
// Nothing is allocated, nothing is thrown, no state is held.
#pragma once

#include "kernel/Kernel.h"

namespace tellurix::kernel {

struct Tails {
  f64 lower;
  f64 upper;
};

// P(Z <= x) and P(Z > x) of the standard normal distribution. Rational approximations of W. J. Cody (1969), Rational
// Chebyshev approximations for the error function, Mathematics of Computation 23:631-637, as in his ANORM (1993,
// Algorithm 715, ACM Transactions on Mathematical Software 19:22-32).
TELLURIX_KERNEL Tails NormalTails(f64 x);

// exp(x*x/2) * P(Z > x) for x >= 0: the upper normal tail freed of its exponential.
TELLURIX_KERNEL f64 ScaledNormalTail(f64 x);

// ln Gamma(a) for a > 0, to the full relative precision near its zeros 1 and 2 too.
TELLURIX_KERNEL f64 LogGamma(f64 a);

// ln Gamma(1 + a) for a > -1; precise relative to a when a is near 0.
TELLURIX_KERNEL f64 LogGammaOnePlus(f64 a);

// ln of the complete beta function B(a, b), for a, b > 0; no difference of large log-gammas is taken.
TELLURIX_KERNEL f64 LogBeta(f64 a, f64 b);

// ln Gamma(a) - [(a - 1/2) ln a - a + ln(2 pi)/2] for a > 0: what Stirling's formula leaves out.
TELLURIX_KERNEL f64 StirlingRemainder(f64 a);

// e - ln(1 + e) for e > -1, without cancellation near 0. C. Loader (2000), Fast and accurate computation of binomial
// probabilities, builds saddle-point densities on it.
TELLURIX_KERNEL f64 LogDeficit(f64 e);

// The regularized incomplete gamma functions P(a, x) and Q(a, x): shape 0 < a < infinity, x >= 0 (infinity too).
//   - a >= 12 within |eta| <= 1 of the mean: N. M. Temme's uniform expansion (1987, in International Series of
//   Numerical
//     Mathematics 78:489-500; form of Gil, Segura & Temme 2012, SIAM Journal on Scientific Computing 34:A2965-A2981);
//   - below the mean: the power series;
//   - above it: Legendre's continued fraction, summed as in W. Gautschi (1979), ACM TOMS 5:466-481;
//   - small a and x: Taylor series of the upper tail (Gautschi 1979).
// The upper tail of chi-square on df degrees of freedom is GammaTails(df / 2, chi / 2).upper.
TELLURIX_KERNEL Tails GammaTails(f64 a, f64 x);

// The regularized incomplete beta functions I_x(a, b) and I_y(b, a): 0 < a, b < infinity, x and y in [0, 1], x + y = 1.
// The smaller of x and y is taken as exact, the other follows from it: give both as precisely as they are known.
//   - both parameters large, within |eta| <= 1 of the mean: Temme's uniform expansion, in the form that runs into the
//     one for the gamma distribution when a/b goes to 0 (Temme 1987, as above);
//   - far below the mean: the power series of the hypergeometric form (DLMF 8.17.7);
//   - otherwise the continued fraction of A. R. DiDonato & A. H. Morris (1992), Algorithm 708, ACM TOMS 18:360-373.
// With a below 1/2, the upper tail is 1 minus the lower one for x below (a + 1)/(a + b + 2).
TELLURIX_KERNEL Tails BetaTails(f64 x, f64 y, f64 a, f64 b);

// P(T <= t) and P(T > t) of Student's distribution on df > 0 degrees of freedom (infinity: the normal), every t.
TELLURIX_KERNEL Tails StudentTails(f64 t, f64 df);

// Lower and upper tail of the F distribution at f >= 0 on df1, df2 > 0 degrees of freedom.
TELLURIX_KERNEL Tails FTails(f64 f, f64 df1, f64 df2);

// P(T <= t) and P(T > t) of the non-central t distribution, T = (Z + delta)/S with S^2 a mean square on df > 0 degrees
// of freedom (infinity too), delta finite, |t| up to 1e150. Within 1e-13 absolute for |delta| up to 40 and 1e-10
// beyond; where t and delta are both positive the small tail is precise relative to itself. Time grows with |delta| up
// to 40 only.
TELLURIX_KERNEL Tails NoncentralTTails(f64 t, f64 df, f64 delta);

// P(X <= x) and P(X > x) of the non-central chi-square distribution on df > 0 degrees of freedom with non-centrality
// lambda >= 0 (the sum of the squared means), x >= 0. The small tail is precise relative to itself for lambda up to
// 1e8, in a time that grows with its square root; beyond it both are within 1e-9.
TELLURIX_KERNEL Tails NoncentralChiTails(f64 x, f64 df, f64 lambda);

// P(T' >= T) of the Hotelling-Pabst T, the sum of squared differences between two rankings of n, by the Edgeworth
// series of algorithm AS 89 (D. J. Best & D. E. Roberts 1975, Applied Statistics 24:377-379). An odd T counts as the
// next even one; 1 for T <= 0 or n <= 1, 0 beyond the largest T, (n^3 - n)/3.
TELLURIX_KERNEL f64 SpearmanSeries(f64 n, f64 T);

}  // namespace tellurix::kernel
