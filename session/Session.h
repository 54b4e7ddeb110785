// Everything that the commands share, gathered in one place and passed by reference.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>

#include "graphics/Graphics.h"
#include "host/Documents.h"
#include "host/Host.h"
#include "host/Results.h"
#include "host/Settings.h"
#include "numeric/Expression.h"
#include "report/Options.h"
#include "report/Prompts.h"
#include "report/TemplateMerge.h"
#include "report/Value.h"
#include "workbook/DataSelection.h"
#include "workbook/OutputColumns.h"

namespace tellurix {

struct Paths {
  std::filesystem::path program;    // holds Template/, Help/, Data/
  std::filesystem::path user;       // settings, the default workbook, data
  std::filesystem::path data;       // last data folder
  std::filesystem::path temporary;  // the "~" files
  std::filesystem::path help = program / "Help";
};

class Session {
 public:
  Session(Host& frontHost, Documents& openDocuments, Settings& settingsFile, Paths folders);
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  Host& host;
  Documents& documents;
  Settings& settings;
  Paths paths;
  std::function<SystemSymbols()> systemSymbols;  // of the user's locale; null where it has no say, as in a script

  Options options;
  ResultsLog results;
  int HelpContext = 0;              // help number of the menu entry last chosen
  bool CommandRunning = false;      // the dispatcher starts no second one
  bool CalculationRunning = false;  // between BeginCalculation and EndCalculation
  bool CancelRequested = false;     // the Progress dialog's Cancel
  bool ProgressShown = false;       // until the calculation ends
  int AutomaticSeed = 0;            // of the random generator; 0: from the clock

  Prompts prompts;
  DataSelection data;
  Graphics graphics;
  ExpressionEvaluator expressions{options.regional};  // one LR for all
  std::weak_ptr<Form> distributions;                  // the calculator of distributions, while it is open
  std::weak_ptr<Form> calculator;                     // that of expressions

  Formatter Format() const { return Formatter(options); }
  TemplateMerge Merge() { return {host, results, paths.program / "Template"}; }
};

}  // namespace tellurix
