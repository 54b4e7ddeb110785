// From a menu entry to its command.
#pragma once

#include "session/Session.h"
#include "shell/CommandTable.h"

namespace tellurix {

// Runs the command of an entry: its help number is in force, and while the batch box is ticked it runs again with a
// fresh selection. A stray exception becomes the message "Error: " and its text. Answers how the last run ended.
// Nothing happens while a command runs already, nor for an entry without a command.
RunStatus RunCommand(Session& session, const MenuEntry& entry);

}  // namespace tellurix
