// Numbers for the different texts of a column.
#pragma once

#include "session/Session.h"

namespace tellurix {

// Data, Text to Numbers: a column with a code for each text, by the user's choice or 1, 2, 3 in the order of first
// appearance.
void TextToNumbers(Session& session);

}  // namespace tellurix
