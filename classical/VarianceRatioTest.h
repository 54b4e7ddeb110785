// The variance ratio (F) test of two independent samples.
#pragma once

#include "session/Session.h"

namespace tellurix {

// Analysis, Parametric, F (Variance Ratio). Writes variance.rtf.
void VarianceRatioTest(Session& session);

}  // namespace tellurix
