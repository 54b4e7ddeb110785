// The dialog that asks for the limits of a graph's axes.
#pragma once

#include "graphics/Page.h"
#include "host/Host.h"
#include "numeric/Regional.h"

namespace tellurix {

// Shows ScaleForm with the page's data limits, of logarithmic axes the antilogarithms. The user's limits replace those
// of the page; `requestScales` follows its check box. False, with nothing changed, when cancelled.
bool RunScaleForm(Host& host, Page& page, bool& requestScales, bool needsY, const Regional& regional, int helpContext);

}  // namespace tellurix
