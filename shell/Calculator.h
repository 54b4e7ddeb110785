#pragma once

#include "session/Session.h"

namespace tellurix {

// Tools, Calculator: shows `TLCalc`, which evaluates expressions and keeps a list of them. It stays open beside the
// other windows; once open it is brought to the front.
void ShowCalculator(Session& session);

}  // namespace tellurix
