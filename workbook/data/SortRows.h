#pragma once

#include "session/Session.h"

namespace tellurix {

// Sorts the rows of the marked block in place by up to three of its columns, each in either direction.
void SortRows(Session& session);

}  // namespace tellurix
