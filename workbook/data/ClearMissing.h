#pragma once

#include "session/Session.h"

namespace tellurix {

// Copies of the selected columns without their missing values.
void ClearMissingData(Session& session);

}  // namespace tellurix
