// Several groups as columns of their own, or as one column with an identifier.
#pragma once

#include "session/Session.h"

namespace tellurix {

// Data, Grouping, Combine: the selected columns one under another, and beside each value the title of its column.
void CombineColumns(Session& session);

// Data, Grouping, Split: the inverse, one column for each category of an identifier.
void SplitColumns(Session& session);

}  // namespace tellurix
