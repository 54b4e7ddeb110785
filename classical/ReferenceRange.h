// The reference range: between which limits most values of healthy people lie.
#pragma once

#include "session/Session.h"

namespace tellurix {

// Analysis, Parametric, Reference Range. Writes refrange.rtf.
void ReferenceRange(Session& session);

}  // namespace tellurix
