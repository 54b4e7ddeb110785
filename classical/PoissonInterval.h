// The mean of counts with its exact Poisson confidence interval.
#pragma once

#include "session/Session.h"

namespace tellurix {

// Analysis, Parametric, Poisson Confidence Interval. Writes poisson.rtf.
void PoissonInterval(Session& session);

}  // namespace tellurix
