#pragma once

#include "session/Session.h"

namespace tellurix {

// Data, Apply Function: a new column with the value of an expression in the selected columns V1, V2 ... for each row.
void ApplyFunction(Session& session);

}  // namespace tellurix
