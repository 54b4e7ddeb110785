#pragma once

#include "session/Session.h"

namespace tellurix {

// One column less its mean, divided by its standard deviation, or both.
void Standardization(Session& session);

}  // namespace tellurix
