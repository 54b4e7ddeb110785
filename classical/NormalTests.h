// Tests of means by the standard normal distribution, for large samples or known variances.
#pragma once

#include "session/Session.h"

namespace tellurix {

// Analysis, Parametric, Single Sample z. Writes z_norm1.rtf.
void SingleSampleZ(Session& session);

// Analysis, Parametric, Unpaired z. Writes z_norm2.rtf.
void UnpairedZ(Session& session);

}  // namespace tellurix
