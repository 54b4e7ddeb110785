// Search and replace by value, text or condition.
#pragma once

#include "session/Session.h"

namespace tellurix {

// Data, Search & Replace: a dialog that finds, counts and replaces cells in place, in the marked cells or on the whole
// sheet. Each Replace All is one undo step. Formulas are found by their results and never replaced.
void SearchAndReplace(Session& session);

}  // namespace tellurix
