// Intervals of time from columns of dates.
#pragma once

#include "session/Session.h"

namespace tellurix {

// Data, Date & Time Intervals: a column of the whole numbers of units from the dates of a column to one date, or to
// those of a second column.
void DateIntervals(Session& session);

}  // namespace tellurix
