// The steps that every command shares.
//
// An analysis: select, ask for options, open its template, begin the calculation, find the report, compute, feed the
// template in its order, close it, insert the merged text, end the calculation. A false answer of any step leaves the
// command with the report as it was. A command of the Data menu does the same with new columns for the template.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string_view>

#include "report/Report.h"
#include "session/Session.h"

namespace tellurix {

void BusyPointer(Session& session);    // the hourglass
void NormalPointer(Session& session);  // called before any message box or prompt

// A calculation is running from Begin to End; quitting asks while it does.
void BeginCalculation(Session& session);
void EndCalculation(Session& session);

// Begins a calculation and ends it on every way out of the command.
class Calculation {
 public:
  explicit Calculation(Session& session) : session_(session) { BeginCalculation(session); }
  ~Calculation() { EndCalculation(session_); }
  Calculation(const Calculation&) = delete;
  Calculation& operator=(const Calculation&) = delete;

 private:
  Session& session_;
};

// A message box with the help number in force; an empty title is the application's.
Reply ShowMessage(Session& session, std::string_view text, int style = OkOnly, std::string_view title = {});

// Whether the system's decimal and grouping symbols are the same for numbers and for money; a message that ends with
// `consequence` when they are not. A session without system symbols has no such trouble.
bool CheckRegionalSettings(Session& session, std::string_view consequence);

// After a check of the regional settings: the report that gets the result: the only open one, the one picked when there
// are several, or a new one. Null when cancelled.
Report* EnsureReport(Session& session, bool wantsNew = false);

// The steps of an analysis from its template on: opens the template, finds the report, lets `feed` fill the fields in
// their order, and inserts the merged text. The report that has it; null when the user cancelled, or was told what is
// wrong.
Report* WriteReport(Session& session, std::string_view templateName,
                    const std::function<void(TemplateMerge& merge, const Formatter& format)>& feed);

// The last steps of a command of the Data menu: asks where the columns go, writes them under their titles in the
// worksheet row `titleRow` (headings when it is below 1), and closes the command. False, and nothing changed, when
// cancelled or when they do not fit.
bool WriteColumns(Session& session, std::span<const OutputColumn> block, const SheetRoom& room = {}, int titleRow = 1);

// Closes a command of the Data menu.
void AfterDataCommand(Session& session);

// Progress of a long loop, shown in its dialog with the events pumped; false once the user cancelled.
bool ShowProgress(Session& session, std::string_view label, double share);

// The same as the poll that long computations take.
Poll ProgressPoll(Session& session);

// The seed of a command that draws at random, above 0: the session's automatic one, else one from the clock.
std::int32_t NewSeed(Session& session);

// "You must select numerical data for this function".
void RefuseNonNumericData(Session& session);

}  // namespace tellurix
