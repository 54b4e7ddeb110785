// The Shapiro-Wilk test for departure from the normal distribution.
#pragma once

#include "session/Session.h"

namespace tellurix {

// Analysis, Parametric, Shapiro-Wilk. Writes shapwilk.rtf.
void ShapiroWilkTest(Session& session);

// What a P says about normality, in words; an error where it is MissingValue.
const char* ShapiroWilkVerdict(double p);

}  // namespace tellurix
