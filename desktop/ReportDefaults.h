// The dialog `ReportDefaults`: margins of printed reports and indents of what is typed into new ones, kept in the
// settings.
#pragma once

#include "desktop/ReportPrinting.h"
#include "desktop/ReportView.h"
#include "session/Session.h"

namespace tellurix {

// Asks for units, margins and indents and keeps them; false when cancelled.
bool ReportDefaults(Session& session);

// The page with the margins that the settings hold.
PageSetup PageOf(const Settings& settings, PageSetup page = {});

// Gives a report without contents the indents that the settings hold.
void SetStartIndents(ReportView& view, const Settings& settings);

}  // namespace tellurix
