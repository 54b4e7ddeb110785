// The unpaired t test: the means of two independent samples.
#pragma once

#include "session/Session.h"

namespace tellurix {

// What the upper tail P of the variance ratio says about the t test to use, in two lines.
struct VarianceVerdict {
  const char* finding;
  const char* advice;
};
VarianceVerdict JudgeVariances(double upperP);

// Analysis, Parametric, Unpaired t. Writes m_unpair.rtf.
void UnpairedT(Session& session);

// Analysis, Parametric, Summary Data t, Unpaired: the same from sizes, means and standard deviations.
void UnpairedTFromSummary(Session& session);

}  // namespace tellurix
