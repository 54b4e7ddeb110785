#pragma once

#include "session/Session.h"

namespace tellurix {

// Data, Fill Series: a new column that begins with a start value, each further row being an expression in the one
// above.
void FillSeries(Session& session);

}  // namespace tellurix
