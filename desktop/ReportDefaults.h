// The dialog `ReportDefaults`: margins of printed reports, kept in the settings.
#pragma once

#include "desktop/ReportPrinting.h"
#include "session/Session.h"

namespace tellurix {

// Asks for units and margins and keeps them; false when cancelled.
bool ReportDefaults(Session& session);

// The page with the margins that the settings hold.
PageSetup PageOf(const Settings& settings, PageSetup page = {});

}  // namespace tellurix
