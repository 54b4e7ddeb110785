// The session's options on how results are written and data are chosen, loaded from and saved to the settings.
#pragma once

#include "numeric/Regional.h"

namespace tellurix {

struct Options {
  int DecimalPlaces = 6;    // of statistics, 2 to 12
  int PDecimalPlaces = 3;   // of P values, 3 to 7
  int DefaultCI = 0;        // per cent: 80, 85, 90, 95, 99, or 0 to ask each time
  bool UseGroupID = false;  // data are chosen by a group identifier where a command allows it
  bool RClick = true;       // the right mouse button confirms a selection
  Regional regional;
};

}  // namespace tellurix
