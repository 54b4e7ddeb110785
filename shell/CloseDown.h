// Closing: the questions, in their order, and the clearing up.
#pragma once

#include <functional>

#include "session/Session.h"
#include "shell/OpenDocuments.h"

namespace tellurix {

// Saves a document, asking for a name where it has none; false when that failed or was cancelled.
struct SaveFunctions {
  std::function<bool(Workbook&)> workbook;
  std::function<bool(Report&)> report;
};

// Asks about a running calculation, then about every changed workbook, then about every changed report that holds text.
// False when the close is stopped. After it nothing calculates any more.
bool AskBeforeClosing(Session& session, const SaveFunctions& save);

// The same for one window.
bool AskBeforeClosing(Session& session, Workbook& workbook, const SaveFunctions& save);
bool AskBeforeClosing(Session& session, Report& report, const SaveFunctions& save);

// Deletes the temporary files "~place.wmf", "~tmp.wmf", "~report.tmp" and "~excel.xls", those that are there.
void DeleteTemporaryFiles(const Paths& paths);

}  // namespace tellurix
