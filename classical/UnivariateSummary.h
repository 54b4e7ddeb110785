#pragma once

#include "session/Session.h"

namespace tellurix {

// A table of chosen statistics of each column or group, for the report and for a worksheet.
void UnivariateSummary(Session& session);

// The same with a column of weights for each column of data.
void WeightedUnivariateSummary(Session& session);

}  // namespace tellurix
