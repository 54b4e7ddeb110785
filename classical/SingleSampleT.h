// The single sample t test: a mean against a given population mean.
#pragma once

#include "session/Session.h"

namespace tellurix {

// Analysis, Parametric, Single Sample t. Writes m_single.rtf.
void SingleSampleT(Session& session);

// Analysis, Parametric, Summary Data t, Single Sample: the same from size, mean and standard deviation.
void SingleSampleTFromSummary(Session& session);

}  // namespace tellurix
