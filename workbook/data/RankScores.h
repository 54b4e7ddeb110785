// Ranks and normal scores of columns.
#pragma once

#include "session/Session.h"

namespace tellurix {

// The ranks of each selected column, with a tie term in the title.
void RankColumns(Session& session);

// The normal scores of each selected column: van der Waerden's, Blom's or the expected order statistics.
void NormalScores(Session& session);

}  // namespace tellurix
