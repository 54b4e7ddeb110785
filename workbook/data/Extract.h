#pragma once

#include "session/Session.h"

namespace tellurix {

// Data, Grouping, Extract: a new column with the values of one of the selected columns V1, V2 ... in the rows where a
// condition on them holds.
void Extract(Session& session);

}  // namespace tellurix
