// Rows to columns and columns to rows.
#pragma once

#include "session/Session.h"

namespace tellurix {

// Data, Rotate Data Block: the marked cells with rows and columns exchanged, in new columns.
void RotateDataBlock(Session& session);

}  // namespace tellurix
