// The paired t test: the mean of the differences between two matched columns.
#pragma once

#include "session/Session.h"

namespace tellurix {

// Analysis, Parametric, Paired t. Writes m_paired.rtf.
void PairedT(Session& session);

}  // namespace tellurix
