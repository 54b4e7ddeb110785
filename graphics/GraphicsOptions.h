// The dialog on the looks of charts.
#pragma once

#include "graphics/Page.h"
#include "host/Host.h"

namespace tellurix {

// Shows the dialog `lines` ("Graphics Options") with the looks. False, with the looks as they were, when cancelled.
bool RunGraphicsOptions(Host& host, ChartLooks& looks, int helpContext);

}  // namespace tellurix
