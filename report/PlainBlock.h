// A result that is plain text in a fixed-width font, without a template.
#pragma once

#include <string_view>

#include "report/Report.h"

namespace tellurix {

// Appends the lines to the report, with the hidden tag of its help topic in front and a blank line behind.
void InsertPlainBlock(Report& report, std::string_view lines);

}  // namespace tellurix
