#include "numeric/Probability.h"

#include <algorithm>
#include <cmath>

#include "kernel/Tails.h"
#include "numeric/Missing.h"

namespace tellurix {

namespace {

template <typename... Values>
bool AnyMissing(Values... values) {
  return ((values == MissingValue) || ...);
}

double OrMissing(double value) { return std::isfinite(value) ? value : MissingValue; }

}  // namespace

double UpperPFromChi(double chi, double df) {
  if (AnyMissing(chi, df)) return MissingValue;
  return OrMissing(kernel::GammaTails(df / 2, chi / 2).upper);
}

double UpperPFromF(double f, double df1, double df2) {
  if (AnyMissing(f, df1, df2)) return MissingValue;
  return OrMissing(kernel::FTails(f, df1, df2).upper);
}

double UpperPFromT(double t, double df) {
  if (AnyMissing(t, df)) return MissingValue;
  return OrMissing(kernel::StudentTails(t, df).upper);
}

void CriticalValue(std::int32_t df, double& criticalValue, double confidence, double& alpha) {
  criticalValue = alpha = MissingValue;
  if (AnyMissing(confidence)) return;
  alpha = 1 - confidence;
  const double p = alpha / 2;
  if (df == 0) {
    // The deviate of 1 - p, found by the tail p itself.
    i32 ifault = 0;
    const double z = -GAUINV(p, ifault);
    if (ifault == 0) criticalValue = z;
  } else {
    criticalValue = OrMissing(TFROMP(std::min(p, 1 - p), df));
  }
}

double NormalCriticalValue(double confidence) {
  double z = 0, alpha = 0;
  CriticalValue(0, z, confidence, alpha);
  return z;
}

double FoldP(double p) { return AnyMissing(p) ? MissingValue : std::min(p, 1 - p); }

double OneSidedP(double z) { return AnyMissing(z) ? MissingValue : OrMissing(kernel::NormalTails(std::fabs(z)).upper); }

double TwoSidedP(double z) {
  const double p = OneSidedP(z);
  return AnyMissing(p) ? MissingValue : 2 * p;
}

}  // namespace tellurix
