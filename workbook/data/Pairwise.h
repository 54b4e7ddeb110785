// The Pairwise menu: one value for each pair i below j of the rows.
#pragma once

#include "session/Session.h"

namespace tellurix {

void PairwiseDifferences(Session& session);  // Y[j] - X[i]
void PairwiseMeans(Session& session);        // Walsh averages of one column
void PairwiseSlopes(Session& session);       // (Y[j] - Y[i]) / (X[j] - X[i]), with their median on demand

}  // namespace tellurix
