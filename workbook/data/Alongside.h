// Second selections that go row by row with a first one.
#pragma once

#include <string_view>

#include "session/Session.h"

namespace tellurix {

// Selects columns that stand beside one selected before: of its length, or, where they start on the same worksheet row
// as it, of any (a column ends at its last filled cell; what is missing there is missing). Asks again after "Error: all
// columns selected must be N rows long." and where, in a numeric mode, a column holds no number; false when cancelled.
// Position k of each column then belongs to position k of `first`; positions behind the end of DataMatrix's columns are
// missing.
bool SelectAlongside(Session& session, const ColumnDescriptor& first, SelectionMode mode, int maxColumns,
                     std::string_view prompt);

// The value at a position of a column of DataMatrix, MissingValue behind its end.
double ValueAt(const DataSelection& data, std::size_t column, std::size_t position);

}  // namespace tellurix
