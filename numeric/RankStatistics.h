// The rank correlations of Kendall and Spearman: tail probabilities, and the statistic for a probability.
//
// A missing probability that goes in (MissingValue) comes out as the fault of an illegal argument.
#pragma once

#include <cstdint>

namespace tellurix {

// P(S' >= S) of Kendall's S, concordant less discordant pairs, of n untied pairs of ranks that are independent. An S
// that n pairs cannot give, for its parity, counts as the next higher one. Exact for n up to 50, by the number of
// permutations with each number of inversions; above by an Edgeworth series (D. J. Best & P. G. Gipps 1974, Algorithm
// AS 71, Applied Statistics 23:98-100), right to about 3e-6 there. `ifault`: 1 for n below 2, 3 for S beyond n (n -
// 1)/2 either way; the result is then MissingValue.
double KendallUpperP(std::int32_t S, std::int32_t n, std::int32_t& ifault);

// The S and the tau for an upper tail: the largest S whose P(S' >= S) is at least `p`, sought from 1000 down to 3.
// `ifault` 1 where there is none (a p of nearly one half or more, or below that of S = 1005 or of the largest S), or n
// is below 2; S and tau are then 0 and MissingValue.
void KendallFromP(double p, double& tau, std::int32_t& S, std::int32_t n, std::int32_t& ifault);

// The Hotelling-Pabst T, sum of squared rank differences of n pairs, for a tail at low T, that is at high rho: the
// largest T for which P(T' < T) is at most `p`; `reached` is that probability. `ifault` 1 for p outside (0, 1), n below
// 2, or where no T within 32 bits will do; T and reached are then 0 and MissingValue.
void HotellingFromP(double p, double& reached, std::int32_t& T, std::int32_t n, std::int32_t& ifault);

// P(T' >= T) by the Edgeworth series of AS 89 (D. J. Best & D. E. Roberts 1975, Applied Statistics 24:377-379) for
// every n: as PRHO above its exact n, but for a T beyond 32 bits. 1 with `ifault` 1 for n below 2, or a T that is
// missing or NaN.
double SpearmanUpperP(std::int32_t n, double T, std::int32_t& ifault);

}  // namespace tellurix
