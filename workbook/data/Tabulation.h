// Two-way tables of counts from classifiers, and back.
#pragma once

#include "session/Session.h"

namespace tellurix {

// Data, Grouping, Tabulate: a table of counts for a first classifier by each of some second ones, side by side. Rows in
// which either classifier is missing are not counted.
void Tabulate(Session& session);

// Data, Grouping, Detabulate: two columns with one row for each observation that a table counts.
void Detabulate(Session& session);

}  // namespace tellurix
