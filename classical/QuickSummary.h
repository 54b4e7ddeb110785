#pragma once

#include "session/Session.h"

namespace tellurix {

// The summary of one column as a plain block of text.
void QuickSummary(Session& session);

}  // namespace tellurix
