// The Transformations menu.
#pragma once

#include "session/Session.h"

namespace tellurix {

// Logarithms of one column. Where not all values are above 0 a constant to add is asked for; without one the impossible
// values become missing.
void TransformToNaturalLog(Session& session);
void TransformToLog10(Session& session);

// Of one column of proportions, or of counts with their totals, which are asked for.
void TransformToLogit(Session& session);
void TransformToProbit(Session& session);
void TransformToAngle(Session& session);

// The running sum of one column.
void TransformToCumulative(Session& session);

// Six columns, from the power -2 over the logarithm to the square, of each column selected.
void TransformToLadderOfPowers(Session& session);

}  // namespace tellurix
