#pragma once

#include "session/Session.h"

namespace tellurix {

// How often each value of a column occurs. Writes freq.rtf.
void Frequencies(Session& session);

}  // namespace tellurix
