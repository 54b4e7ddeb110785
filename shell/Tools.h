// The Tools menu: external programs by caption and command line.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "session/Session.h"

namespace tellurix {

struct Tool {
  std::string caption;
  std::string commandLine;
};

// The configured tools, in order, up to the first without a caption.
std::vector<Tool> ConfiguredTools(const Session& session);

// Runs one: a line with "TellurixCalculator" shows the built-in calculator, one with "update" runs the updater with the
// program's version, any other is run as it is.
void RunTool(Session& session, const Tool& tool, const std::function<void()>& showCalculator);

// The dialog `Apps`: captions and command lines, and the link from the spreadsheet program.
void SetupTools(Session& session);

}  // namespace tellurix
