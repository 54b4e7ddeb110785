// Indicator variables for the categories of a column.
#pragma once

#include "session/Session.h"

namespace tellurix {

// Data, Dummy Variables: a column for each category but the one that the user drops, 1 in the rows of the category, 0
// in the others, "*" where the category is missing.
void MakeDummyVariables(Session& session);

}  // namespace tellurix
