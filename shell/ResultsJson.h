// The log of results as JSON, every figure at full precision.
#pragma once

#include <string>

#include "session/Session.h"

namespace tellurix {

// {"settings", "seed", "runs": [...]}; a missing number is null, a list stands where a text holds several.
std::string ResultsAsJson(const Session& session);

}  // namespace tellurix
