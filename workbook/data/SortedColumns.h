#pragma once

#include "session/Session.h"

namespace tellurix {

// Each selected column sorted into a new one, with other columns in its order on demand.
void CreateSortedColumns(Session& session);

}  // namespace tellurix
