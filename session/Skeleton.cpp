#include "session/Skeleton.h"

#include "numeric/Rnd.h"

namespace tellurix {

void BusyPointer(Session& session) { session.host.SetBusy(true); }
void NormalPointer(Session& session) { session.host.SetBusy(false); }

void BeginCalculation(Session& session) {
  session.CalculationRunning = true;
  session.CancelRequested = false;
}

void EndCalculation(Session& session) {
  session.CalculationRunning = false;
  if (session.ProgressShown) session.host.ShowProgress({.share = 1});  // takes the dialog away
  session.ProgressShown = false;
  NormalPointer(session);
}

Reply ShowMessage(Session& session, std::string_view text, int style, std::string_view title) {
  const NormalPointerHere pointer(session.host);
  return session.host.ShowMessage(
      {.text = std::string(text), .title = std::string(title), .style = style, .helpContext = session.HelpContext});
}

bool CheckRegionalSettings(Session& session, std::string_view consequence) {
  if (!session.systemSymbols || session.systemSymbols().AgreeWithMoney()) return true;
  constexpr std::string_view advice =
      "Please adjust your system settings for 'Decimal symbol' and 'Digit grouping symbol'\n"
      "so that they are the same under the 'Numeric' tab as they are under the 'Currency' tab\n"
      "in 'Regional Options' in Windows 'Control Pannel'.\n\n";
  ShowMessage(session, std::string(advice).append(consequence), WarningIcon, "Regional Settings Need Updating");
  return false;
}

namespace {

int IndexOfActiveReport(Documents& documents) {
  for (int i = 0; i < documents.ReportCount(); ++i) {
    if (&documents.ReportAt(i) == documents.ActiveReport()) return i;
  }
  return 0;
}

}  // namespace

Report* EnsureReport(Session& session, bool wantsNew) {
  CheckRegionalSettings(session, "Tellurix will not properly run until you make these changes.");
  Documents& documents = session.documents;
  if (wantsNew || documents.ReportCount() == 0) return &documents.NewReport();
  if (documents.ReportCount() == 1) return &documents.ReportAt(0);
  const int picked = session.prompts.PickFromList("Report", IndexOfActiveReport(documents));
  if (picked == PickedCancel) return nullptr;
  if (picked == PickedNew) return &documents.NewReport();
  documents.ActivateReport(picked);
  return &documents.ReportAt(picked);
}

Report* WriteReport(Session& session, std::string_view templateName,
                    const std::function<void(TemplateMerge& merge, const Formatter& format)>& feed) {
  TemplateMerge merge = session.Merge();
  if (!merge.OpenTemplate(templateName)) return nullptr;
  const Calculation calculation(session);
  Report* report = EnsureReport(session);
  if (!report) return nullptr;
  feed(merge, session.Format());
  merge.CloseTemplate();
  report->helpContext = session.HelpContext;
  return merge.InsertMergedText(*report) ? report : nullptr;
}

bool WriteColumns(Session& session, std::span<const OutputColumn> block, const SheetRoom& room, int titleRow) {
  OutputColumns output(session.host, session.documents, session.prompts, session.results);
  int columns = static_cast<int>(block.size());
  const bool written =
      output.FitsRows(block, titleRow) && output.GetOutputColumns(columns, room) && output.Write(block, titleRow);
  AfterDataCommand(session);
  return written;
}

void AfterDataCommand(Session& session) { NormalPointer(session); }

bool ShowProgress(Session& session, std::string_view label, double share) {
  Progress progress{.share = share};
  progress.labels.emplace_back(label);
  session.ProgressShown = true;
  if (!session.host.ShowProgress(progress)) session.CancelRequested = true;
  return !session.CancelRequested;
}

Poll ProgressPoll(Session& session) {
  return [&session](std::string_view label, double share) { return ShowProgress(session, label, share); };
}

std::int32_t NewSeed(Session& session) {
  if (session.AutomaticSeed > 0) return session.AutomaticSeed;
  const std::int32_t seed = ClockSeed();
  session.host.SeedTaken(seed);
  return seed;
}

void RefuseNonNumericData(Session& session) {
  ShowMessage(session, "You must select numerical data for this function", WarningIcon, "Worksheet Data Selection");
}

}  // namespace tellurix
