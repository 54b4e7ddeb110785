// The Shapiro-Wilk test for departure from the normal distribution.
#pragma once

#include "session/Session.h"

namespace tellurix {

// Analysis, Parametric, Shapiro-Wilk. Writes shapwilk.rtf.
void ShapiroWilkTest(Session& session);

}  // namespace tellurix
