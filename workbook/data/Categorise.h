// Classes of a continuous variable.
#pragma once

#include "session/Session.h"

namespace tellurix {

// Data, Grouping, Categorise: a column of class numbers by cut points that the user gives, and a table of the classes.
void Categorise(Session& session);

}  // namespace tellurix
