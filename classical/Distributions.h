#pragma once

#include "session/Session.h"

namespace tellurix {

// Shows the calculator of probability distributions, at the one of this number (0 to 9) in its list. It stays open
// beside the other windows; once open it is brought to the front.
void ShowDistribution(Session& session, int number);

template <int Number>
void DistributionCommand(Session& session) {
  ShowDistribution(session, Number);
}

}  // namespace tellurix
