// The unpaired t test: the means of two independent samples.
#pragma once

#include "session/Session.h"

namespace tellurix {

// Analysis, Parametric, Unpaired t. Writes m_unpair.rtf.
void UnpairedT(Session& session);

// Analysis, Parametric, Summary Data t, Unpaired: the same from sizes, means and standard deviations.
void UnpairedTFromSummary(Session& session);

}  // namespace tellurix
