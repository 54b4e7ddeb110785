// The flat numeric library: published algorithms under upper-case names, callable from any language.
//
// Calling convention, the same for every function here:
//   - every argument is passed by reference, scalars too: f64 is a double, i32 a 32-bit signed integer;
//   - an array is a reference to its first element with its length beside it; of two indices the first runs fastest;
//   - a function that can fail has a trailing `ifault`: the caller sets it to 0, anything else on return means that the
//     result must not be used;
//   - nothing is reported to a user, no state is held but the random generator's; the probability functions take no
//     memory but where a declaration says so, and lacking memory is a fault like another.
#pragma once

#include <cstdint>

#define TELLURIX_KERNEL __attribute__((visibility("default")))

using f64 = double;
using i32 = std::int32_t;

extern "C" {

// Lower tail of the standard normal distribution, P(Z <= x), for every x; 0 below about -38.5. NaN for NaN.
// Name and purpose of algorithm AS 66 (Hill 1973, Applied Statistics 22:424-427).
TELLURIX_KERNEL f64 ALNORM(const f64& x);

// The normal deviate z with ALNORM(z) = p, for p strictly between 0 and 1; otherwise ifault is 1 and the result 0.
// Name and purpose of algorithm AS 70 (Odeh & Evans 1974, Applied Statistics 23:96-97).
TELLURIX_KERNEL f64 GAUINV(const f64& p, i32& ifault);

// The value t of Student's distribution on df degrees of freedom (above 0, fractional allowed) with P(T > t) = p.
// Meant for p in (0, 0.5], where the result is at least 0; above 0.5 it is the negative value of symmetry. Infinite for
// p = 0 or 1, or beyond the largest double; NaN for an illegal argument.
TELLURIX_KERNEL f64 TFROMP(const f64& p, const f64& df);

// The regularized incomplete beta function I_x(p, q) for x in [0, 1], p > 0, q > 0; otherwise ifault is not 0.
// Name and purpose of algorithm AS 63 (Majumder & Bhattacharjee 1973, Applied Statistics 22:409-411), with the
// logarithm of the complete beta function worked out inside.
TELLURIX_KERNEL f64 BETAIN(const f64& x, const f64& p, const f64& q, i32& ifault);

// The regularized lower incomplete gamma integral P(p, x) for x >= 0 and shape p > 0; otherwise ifault is not 0.
// Name and purpose of algorithm AS 239 (Shea 1988, Applied Statistics 37:466-473).
TELLURIX_KERNEL f64 GAMMAD(const f64& x, const f64& p, i32& ifault);

// --- distributions and their inverses ---

// ln Gamma(x) for x > 0, precise near its zeros 1 and 2 too; infinite for x infinite or above about 2.5e305, NaN for
// x <= 0 or NaN. Name of algorithm ACM 291 (Pike & Hill 1966, Communications of the ACM 9:684); method in LogGamma.
TELLURIX_KERNEL f64 ALOGAM(const f64& x);

// ln(1 + x) for x >= -1, precise relative to x when x is near 0; -infinity for -1, NaN below it or for NaN. Name of the
// SLATEC routine (W. Fullerton 1977).
TELLURIX_KERNEL f64 DLNREL(const f64& x);

// The value x of chi-square on df > 0 degrees of freedom (fractional allowed) with P(X <= x) = p, 0 <= p < 1;
// otherwise, or beyond the largest double, ifault is 1 and the result 0. Name and purpose of algorithm AS 91 (Best &
// Roberts 1975, Applied Statistics 24:385-388), without its limits on p and df.
TELLURIX_KERNEL f64 PPCHI2(const f64& p, const f64& df, i32& ifault);

// The value f of the F distribution on dfn numerator and dfd denominator degrees of freedom (above 0, fractional
// allowed; the DENOMINATOR comes first) with P(F > f) = p. 3e300, the system's missing value, for an illegal argument
// and where f lies beyond the largest double (p = 0 among them).
TELLURIX_KERNEL f64 FFROMP(const f64& dfd, const f64& dfn, const f64& p);

// Poisson probabilities at a mean >= 0: of n or more events, n or fewer, and exactly n (n >= 0), each precise relative
// to itself however small. ifault 1 and zeros for illegal arguments. From the gamma distribution; nothing is summed up.
TELLURIX_KERNEL void POISSON(const f64& mean, const i32& n, f64& orMore, f64& orFewer, f64& exactly, i32& ifault);

// The mean of a Poisson distribution from one probability p (0 < p < 1) of a count n >= 0, with the three probabilities
// at that mean. `which` tells what p is: 1 that of n or more events (n > 0), 2 of n or fewer, 3 of exactly n, where of
// the two means that have it the one not below n is taken. ifault 1 and zeros where there is no such mean.
TELLURIX_KERNEL void POISSONI(const f64& p, const i32& n, const i32& which, f64& mean, f64& orMore, f64& orFewer,
                              f64& exactly, i32& ifault);

// Binomial probabilities in n >= 0 trials of success probability p in [0, 1]: of exactly k successes (0 <= k <= n), k
// or fewer, and k or more, each precise relative to itself however small. ifault 1 and zeros for illegal arguments.
// From the beta distribution; nothing is summed up.
TELLURIX_KERNEL void BINO(const i32& n, const f64& p, const i32& k, f64& exactly, f64& orFewer, f64& orMore,
                          i32& ifault);

// Exact test of r successes in n trials against the success probability p: one-sided P, the smaller of the two tails
// with r in it, and two-sided P, that of all outcomes no likelier than r. Illegal arguments as for BINO.
TELLURIX_KERNEL void BINO2(const i32& n, const f64& p, const i32& r, f64& oneSided, f64& twoSided, i32& ifault);

// The mid-P form of BINO2: r counts by half its probability; the two-sided P is twice the one-sided, at most 1.
// H. O. Lancaster (1961), Journal of the American Statistical Association 56:223-234.
TELLURIX_KERNEL void BINOMID(const i32& n, const f64& p, const i32& r, f64& oneSided, f64& twoSided, i32& ifault);

// Lower tail P(T <= t) of the non-central t distribution on df > 0 degrees of freedom (infinity: the normal) with
// non-centrality delta; ifault 1 and 0 for an illegal argument or an infinite delta. Method and precision in
// NoncentralTTails; the series is that of algorithm AS 243 (Lenth 1989, Applied Statistics 38:185-189).
TELLURIX_KERNEL f64 PNCT(const f64& t, const f64& df, const f64& delta, i32& ifault);

// The value t with PNCT(t, df, delta) = p, for p strictly between 0 and 1; ifault 1 and 0 for an illegal argument and
// where |t| lies beyond 1e150. Brent's root finder on PNCT.
TELLURIX_KERNEL f64 TNCT(const f64& p, const f64& df, const f64& delta, i32& ifault);

// Lower tail P(X <= x) of the non-central chi-square distribution on df > 0 degrees of freedom with non-centrality
// lambda >= 0, x >= 0; NaN for an illegal argument. Method and precision in NoncentralChiTails.
TELLURIX_KERNEL f64 NCHI2(const f64& x, const f64& df, const f64& lambda);

// A machine constant of doubles by job: 1 the relative spacing (2^-52), 2 the least normal number, 3 the largest
// number; 0 for any other job. Numbering of LINPACK's DMACH (Dongarra et al. 1979).
TELLURIX_KERNEL f64 DPMACH(const i32& job);

// --- exact distributions of rank statistics ---

// P(T' >= T) of the Hotelling-Pabst T, the sum of the squared differences between two independent rankings of n without
// ties: name and purpose of algorithm AS 89 (Best & Roberts 1975, Applied Statistics 24:377-379). T is even; an odd one
// counts as the next even one. Exact for n up to 22, from counts of the permutations; the algorithm's Edgeworth series
// above, right to about 1e-5 there. `ifault` 1 for n below 2.
TELLURIX_KERNEL f64 PRHO(const i32& n, const i32& T, i32& ifault);

// Two-sided P(D >= d) of Smirnov's statistic for samples of n1 and n2 without ties; d is rounded to a gap that these
// sizes can give. By reflection for equal sizes, otherwise by following the paths (Viehmann 2021, arXiv:2102.08037),
// both exact and precise in small tails; where the paths lead through more than 2e9 points (2 d n1 n2) or n1 + n2 is
// above 1e8, the limiting distribution, right to 0.3% of P for large samples of like size. `ifault` 1 for a size below
// 1 or a d that is NaN; 2 without memory, with unequal sizes it allocates once, 8 bytes for each member of the smaller
// sample; 3 when the limiting distribution would be due but one sample is smaller than 100.
TELLURIX_KERNEL f64 KSP2(const i32& n1, const i32& n2, const f64& d, i32& ifault);

// The exact distribution of the rank sum of two samples of n1 and n2, ties or not, given their ranks: `ranks` holds the
// n1 + n2 doubled average ranks of the pooled sample, rising. Returns P(2 U' <= twiceU) and sets `upper` to
// P(2 U' >= twiceU), with U = n1 n2 + n1 (n1 + 1)/2 - the rank sum of the first sample. Sequential drawing of the
// smaller sample, rank by rank, no term of which cancels. `ifault` 1 for a size below 1 or ranks that do not rise from
// 0 or more; 2 without memory for its table, or time. The table is allocated once, 8 bytes for each rank sum and each
// member of the smaller sample (1.6 MB for 30 and 80), 1 GB at most; the time is that of 2e10 steps at most, the cells
// of the table times the ranks.
TELLURIX_KERNEL f64 WMWPX(const i32& n1, const i32& n2, const i32& ranks, const i32& twiceU, f64& upper, i32& ifault);

// --- studentized range and multiple comparisons ---
//
// k is the number of samples, 2 to 1e6; df the degrees of freedom of the variance estimate, 0.1 to infinity; all upper
// tails. An illegal argument, or a quantile beyond the doubles, gives the sentinel 3e300 and, where there is an
// `ifault`, 1 there. The method is that of kernel/ScaleMixture.h; it serves the purpose of algorithm AS 190 (R. E. Lund
// & J. R. Lund 1983, Applied Statistics 32:204-210). P is right to 1e-11 of itself, small tails too (1e-9 for k above
// 1e5), quantiles to 1e-9 where p is below 0.9999.

// P(Q > q) of the studentized range of k samples; 1 for q <= 0. k may be fractional.
TELLURIX_KERNEL f64 PROBSR(const f64& q, const f64& k, const f64& df);

// The q with P(Q > q) = p, for 0 < p <= 1.
TELLURIX_KERNEL f64 QUANTSR(const f64& p, const f64& k, const f64& df);

// All pairs: P(Q > q), into p too, for the largest of `ranges` (1 or more) independent studentized ranges of k samples
// each over one variance estimate (M. D. Copenhaver & B. Holland 1988, Journal of Statistical Computation and
// Simulation 30:1-15). With one range it is PROBSR.
TELLURIX_KERNEL f64 DMCA(const f64& q, const i32& k, const f64& df, const i32& ranges, f64& p, i32& ifault);

// The q, into q too, for which DMCA is p; 0 < p <= 1.
TELLURIX_KERNEL f64 PPQ2(const f64& p, const i32& k, const f64& df, const i32& ranges, f64& q, i32& ifault);

// Comparisons with a control: P(D > d), into p too, where D is the largest |mean - control mean| over its standard
// error, s sqrt(1/n_i + 1/n_c), of k - 1 comparisons (C. W. Dunnett 1955, Journal of the American Statistical
// Association 50:1096-1121, two-sided, for any sizes). `sizes` holds the k sample sizes, the control first; each at
// least 1, and those of the others at most 1e6 times that of the control. k is 2 to 1000 here.
TELLURIX_KERNEL f64 DMCC(const f64& d, const i32& k, const f64& df, const i32& sizes, f64& p, i32& ifault);

// The d, into d too, for which DMCC is p; 0 < p <= 1.
TELLURIX_KERNEL f64 PPD2(const f64& p, const i32& k, const f64& df, const i32& sizes, f64& d, i32& ifault);

// --- ranks and sorting ---

// Average ranks 1 .. n of the data (n of them, not disturbed), equal values sharing their mean rank; both zeros are
// equal, and every NaN ranks after infinity, all of them tied. `correction` is the sum over the sets of t tied values
// of, by method: 1 (t^3 - t)/12; 2 t(t - 1)/2; 3 t(t - 1)(2t + 5); 4 t(t - 1)(t - 2); anything else 0.
// With n below 1 nothing is ranked. Takes n log n time at most; without memory all ranks and the correction are NaN.
TELLURIX_KERNEL void RANK(const f64* data, f64* ranks, const i32& n, const i32& method, f64& correction);

// The state of a walk through ordered pairs: set `started` to 0 and give memory for `next` and `heap`, one element each
// for every value of the first sample; the rest belongs to the walk. The samples must not change meanwhile.
struct PairWalk {
  i32 started;
  i32 status;  // 0 a value was given; 1 there is none left; 2 the arguments are illegal
  i32 rows;
  i32* next;
  i32* heap;
};

// The next of the ordered averages (x_i + x_j)/2, i <= j (Walsh averages, count(count + 1)/2 of them), in rising order:
// each call gives one. The data, count of them, finite, must stand in rising order. A heap with one pair of each row:
// O(log count) a call. With a status other than 0 in the walk the result is NaN.
TELLURIX_KERNEL void PAIRNEXT(PairWalk& walk, f64& result, const f64* data, const i32& count);

// The next of the ordered differences a_i - b_j, all na * nb of them, in rising order. Both samples, finite, must stand
// in rising order. Otherwise as PAIRNEXT; the memory of the walk is for na elements.
TELLURIX_KERNEL void FINDNEXT(PairWalk& walk, f64& result, const f64* a, const f64* b, const i32& na, const i32& nb);

// The expected value of the order-th smallest of n independent standard normal deviates, 1 <= order <= n; otherwise
// NaN. Precise to 1e-13 or better; quadrature as in NormalScores.h, where all orders of one n are to be had together.
TELLURIX_KERNEL f64 EXPNOS(const i32& n, const i32& order);

// --- least squares and matrices ---

// A least squares problem: responses on the columns of a design, both as given by columns of `rows` values.
struct GlsqrData {
  i32 rows;              // at least 1
  i32 columns;           // of the design, at least 0; with the intercept at least 1
  i32 responses;         // at least 1, each fitted by itself
  i32 intercept;         // not 0: a column of ones is put before the design
  const f64* design;     // rows by columns
  i32 designLeading;     // its leading dimension, at least rows
  const f64* designLow;  // null, or low-order words of the design in the same layout (columns that no double holds,
                         // as powers of a predictor); each at most an ulp of the element that it belongs to
  const f64* response;   // rows by responses
  i32 responseLeading;   // its leading dimension, at least rows
  const f64* weights;  // null for none, or one a row, at least 0; a row of weight 0 is left out, whatever stands in it
};

// The fit, in memory of the caller. With p = columns + 1 if there is an intercept, else columns:
struct GlsqrFit {
  f64* r;        // p by p: the upper triangle of R, R'R = X'WX, in the order of the columns, its diagonal at least 0.
                 // Column j is aliased with columns before it where R(j, j) is exactly 0.0; its row is then 0.
                 // Below the diagonal, at (j, i), stands what rounding took from R(i, j), for RCOVARB.
  i32 rLeading;  // leading dimension of r, at least p
  f64* coefficients;  // p by responses; 0 for an aliased column
  f64* effects;       // p by responses, or null: Q'y, 0 for an aliased column
  i32* pivot;         // p: the columns, counted from 0, that bear the fit, then the aliased ones, each in order
  f64* totalSS;       // one a response: of the response, about its weighted mean with an intercept, else about 0
  f64* regressionSS;  // one a response: totalSS less residualSS, computed as a sum of squares
  f64* residualSS;    // one a response
  i32 rank;           // columns that bear the fit
  i32 rowsUsed;       // rows whose weight is above 0; rowsUsed - rank are the residual degrees of freedom
  i32 doubled;        // 1 where the fit was computed in twice the precision of doubles, else 0
};

// Least squares by Householder's QR, blocks of rows at a time in one pass, the columns shifted to the middle of the
// data. Where a variance inflation factor exceeds 1e4 or a response is fitted to better than one part in a thousand,
// and always for small problems, the factorisation runs in twice the precision, so that coefficients and R are then
// right to the last digits of doubles for the data as given. A column counts as aliased where what the columns before
// it leave of it is at most `tolerance` of its length; a tolerance of 0 stands for 1e-13. status: 0 done; 1 sizes,
// pointers or the tolerance out of range; 2 a number that is infinite or NaN; 3 a negative weight or none above 0; 4
// not enough memory; 5 a result beyond the range of doubles.
TELLURIX_KERNEL void GLSQR(const GlsqrData& data, const f64& tolerance, GlsqrFit& fit, i32& status);

// scale * (R'R)^-1, a symmetric p by p matrix, from the R of GLSQR with its low-order words (or from any triangle with
// zeros below the diagonal). Rows and columns of an aliased column, R(j, j) = 0, are 0. status: 0 done; 1 sizes or
// pointers out of range; 2 an element or the scale that is infinite or NaN, or words below the diagonal that are no
// low-order words; 3 a result beyond the range of doubles; 4 not enough memory.
TELLURIX_KERNEL void RCOVARB(const i32& p, const f64* r, const i32& rLeading, const f64& scale, f64* covariance,
                             const i32& covarianceLeading, i32& status);

// The singular value decomposition A = U S V' of an m by n matrix, with k = min(m, n): a has the leading dimension
// `leading` >= m, s gets the k singular values in falling order, u m by k and v n by k get the vectors by columns
// without gaps. Singular values are precise to 1e-14 of the largest. Jacobi's rotations after a pivoted QR, or divide
// and conquer for large k (G. H. Golub & C. F. Van Loan 2013, Matrix Computations, 4th edition, 8.6), the values
// refined in twice the precision. status: 0 done; 1 sizes or pointers out of range; 2 an element that is infinite or
// NaN; 3 no convergence; 4 not enough memory.
TELLURIX_KERNEL void SVD(const i32& m, const i32& n, const f64* a, const i32& leading, f64* s, f64* u, f64* v,
                         i32& status);

// The inverse of a symmetric positive definite n by n matrix, of which the upper triangle is read, and the logarithm of
// its determinant; by Cholesky's factorisation. status: 0 done; 1 sizes or pointers out of range; 2 an element that is
// infinite or NaN; 3 not positive definite: `failed`, otherwise 0, is the first row, counted from 1, of which the rows
// before leave no more than 1e-12 of its diagonal; 4 not enough memory; 5 a result beyond the range of doubles.
TELLURIX_KERNEL void MXINV(const i32& n, const f64* a, const i32& leading, f64* inverse, const i32& inverseLeading,
                           f64& logDeterminant, i32& failed, i32& status);

// The order of n cases by stratum, then by time, then as they stand. order[i] is the case, counted from 0, that comes
// i-th; the strata lie at first[k] .. first[k + 1] - 1 of it, k = 0 .. strata - 1: `first` has room for n + 1.
// `stratum` may be null: then all is one stratum. status: 0 done; 1 sizes or pointers out of range; 2 a time that is
// infinite or NaN; 3 not enough memory.
TELLURIX_KERNEL void MXSRT(const i32& n, const f64* time, const i32* stratum, i32* order, i32& strata, i32* first,
                           i32& status);

// --- conditional likelihood and exact tables ---

// Matched sets of cases and controls.
struct ClmainData {
  i32 rows;               // at least 1
  i32 columns;            // covariates, at least 1
  const f64* covariates;  // rows by columns, by columns
  i32 leading;            // its leading dimension, at least rows
  const i32* stratum;     // one a row; a set is a run of rows with one value
  const i32* isCase;      // one a row: 1 for a case, 0 for a control
};

// The fit, in memory of the caller.
struct ClmainFit {
  f64* coefficients;  // columns; on entry where to start
  f64* score;         // columns: the derivatives of the log likelihood at the coefficients
  f64* information;   // columns by columns without gaps: minus the second derivatives there
  f64* covariance;    // columns by columns, or null: the inverse of the information
  f64 logLikelihood;  // at the coefficients
  i32 iterations;     // that were needed
  i32 singular;       // the covariate, counted from 1, that status 4 is about, else 0
};

// The exact conditional likelihood of matched sets of any number of cases and controls: of each set, the probability
// that among all choices of as many members the cases were the ones. Sets without a case or without a control add
// nothing. Recursion of M. H. Gail, J. H. Lubin & L. V. Rubinstein (1981), Biometrika 68:703-707, over the smaller of
// the two groups, carried on means and covariances of the chosen instead of derivatives, so that nothing cancels and
// nothing overflows. Time in proportion to members * smaller group * columns^2 for each set.
// Newton's method with halved steps, at most `iterations` of them, until the log likelihood changes by no more than
// accuracy * (|log likelihood| + accuracy); with iterations = 0 the likelihood is taken at the coefficients as given.
// status: 0 done; 1 sizes, pointers, the accuracy (at least 0) or a case indicator out of range; 2 a covariate or a
// coefficient that is infinite or NaN; 3 not enough memory; 4 the information is singular; 5 not converged: the fit
// holds the last step.
TELLURIX_KERNEL void CLMAIN(const ClmainData& data, const f64& accuracy, const i32& iterations, ClmainFit& fit,
                            i32& status);

// How far RCNWA may go; zeros throughout are good limits.
struct RcnwaLimits {
  i32 hybrid;  // not 0: where what is left of a table has expected counts of at least 5 in four fifths of its cells and
               // of at least 1 in all, chi-square stands for the rest of the walk
  f64 memory;  // bytes at most; 0 for 10^9
  f64 work;    // steps at most, some 6 nanoseconds each; 0 for 6 * 10^9
  i32 (*poll)(void* context, f64 share);  // null, or called some ten times a second with the share done; 0 stops
  void* context;                          // handed to poll
};

// The exact test of a rows by columns table with fixed margins (Fisher, Freeman and Halton): pTable is the probability
// of the table, p that of all tables no more probable (within one part in 10^9). The network algorithm of C. R. Mehta &
// N. R. Patel (1983), Journal of the American Statistical Association 78:427-434, hybrid form 1986, ACM Transactions on
// Mathematical Software 12:154-161, with the paths of equal length joined as in D. B. Clarkson, Y. Fan & H. Joe (1993),
// ACM Transactions on Mathematical Software 19:484-488. Counts are whole numbers in doubles, by columns.
// status: 0 done; 1 sizes (at least 2 by 2) or pointers out of range; 2 a count that is negative, not whole or not
// finite; 3 a total of 0 or above 2^31 - 1; 4 more memory needed than allowed or had, as for a row or column above
// 10^6; 5 more steps needed than allowed; 6 stopped by poll.
TELLURIX_KERNEL void RCNWA(const f64* table, const i32& rows, const i32& columns, const RcnwaLimits& limits,
                           f64& pTable, f64& p, i32& status);

// The generalized Cochran-Mantel-Haenszel statistics of strata of rows by columns tables, the first index running
// fastest: chi-square on df[0 .. 2] degrees of freedom under the hypothesis of no association in any stratum.
//   correlation  the linear trend between the scores, df 1
//   meanScore    the rows' means of the column scores, df rows - 1
//   association  any association, df (rows - 1)(columns - 1)
// Scores that are null stand for 1, 2, 3 ... A degree of freedom falls away with a row or column that is empty or with
// scores that do not differ; with none left df and statistic are 0. Strata of fewer than 2 add nothing.
// J. R. Landis, E. R. Heyman & G. G. Koch (1978), International Statistical Review 46:237-254.
// status: 0 done; 1 sizes (rows and columns at least 2, strata at least 1) or pointers out of range; 2 a count that is
// negative or a number that is infinite or NaN; 3 no stratum of 2 or more; 4 not enough memory.
TELLURIX_KERNEL void GENCMH(const f64* table, const i32& rows, const i32& columns, const i32& strata,
                            const f64* rowScores, const f64* columnScores, f64& correlation, f64& meanScore,
                            f64& association, i32* df, i32& status);

// --- curves ---

// The polynomial c[0] + c[1] x + ... + c[degree] x^degree at x, as if in twice the precision and then rounded:
// compensated Horner scheme (S. Graillat, P. Langlois & N. Louvet 2009, Japan Journal of Industrial and Applied
// Mathematics 26:191-214). NaN for a degree below 0.
TELLURIX_KERNEL f64 POLYFUNC(const f64& x, const f64* coefficients, const i32& degree);

// The polynomial through the n points (xa, ya) at x, by Neville's method; dy is what the point farthest from x changed
// (y itself where there is but one), an estimate of the error. status: 0 done; 1 n below 1, two equal xa or a result
// that is not finite: y and dy are 0; 2 not enough memory.
TELLURIX_KERNEL void POLINT(const f64* xa, const f64* ya, const i32& n, const f64& x, f64& y, f64& dy, i32& status);

// One stage of the extended trapezoidal rule for an integral from `lower` to `upper`. Stage 1 takes count = 2 values,
// of the function at both limits; stage k > 1 takes the values at the count = 2^(k - 2) points between, the i-th of
// them (from 0) at lower + (i + 1/2)(upper - lower)/count, and halves the steps of the `result` that stage k - 1 left.
// NaN for another count or a stage outside 1 .. 32.
TELLURIX_KERNEL void TRAPZD(const f64& lower, const f64& upper, const f64* values, const i32& stage, f64& result,
                            const i32& count);

// --- random numbers ---
// One stream for the whole process, of the Mersenne Twister MT19937 (Matsumoto & Nishimura 1998, ACM Transactions on
// Modeling and Computer Simulation 8:3-30); the only functions here with a state between calls. For one thread.

// Starts the stream: the same seed, any at all, gives the same stream. The published seeding of 2002 for one integer,
// the 32 bits of `seed` read as unsigned. A process that never calls it has the stream of the seed 5489.
TELLURIX_KERNEL void INITMTRND(const i32& seed);

// The next uniform deviate: (k + 1/2) / 2^32 for the next 32-bit integer k of the stream; never 0, never 1.
TELLURIX_KERNEL f64 MTRND();

}  // extern "C"
