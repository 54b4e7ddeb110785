// Two independent samples, as several commands take them from the worksheet.
#pragma once

#include <string>

#include "numeric/ColumnStats.h"
#include "session/Session.h"

namespace tellurix {

struct Sample {
  std::string title;
  ColumnStats stats;
};

struct TwoSamples {
  Sample first;
  Sample second;
};

// Asks for two columns, or for data and a group identifier with two groups, as the options say, by "Select DATA". False
// when cancelled, or after a message when one of them holds no number.
bool SelectTwoSamples(Session& session, TwoSamples& samples);

}  // namespace tellurix
