#include "shell/CloseDown.h"

#include <filesystem>
#include <system_error>

#include "session/Skeleton.h"

namespace tellurix {

namespace {

constexpr const char* CloseTitle = "Tellurix Close-Down";

bool AskAboutCalculation(Session& session) {
  if (!session.CalculationRunning) return true;
  return ShowMessage(session, "A calculation is running, are you sure you want to quit?", YesNo | QuestionIcon,
                     CloseTitle) == Reply::Yes;
}

template <typename Document>
bool AskToSave(Session& session, Document& document, const std::string& name,
               const std::function<bool(Document&)>& save) {
  const Reply reply = ShowMessage(session, "Save changes to " + name + "?", YesNoCancel | QuestionIcon, CloseTitle);
  return reply == Reply::No || (reply == Reply::Yes && save(document));
}

bool AskToSave(Session& session, Workbook& workbook, const SaveFunctions& save) {
  if (!workbook.document.changed) return true;
  return AskToSave(session, workbook, DocumentName(workbook.document), save.workbook);
}

bool AskToSave(Session& session, Report& report, const SaveFunctions& save) {
  if (!report.document.changed || !ReportHasText(report)) return true;
  return AskToSave(session, report, DocumentName(report.document), save.report);
}

}  // namespace

bool AskBeforeClosing(Session& session, const SaveFunctions& save) {
  if (!AskAboutCalculation(session)) return false;
  Documents& documents = session.documents;
  for (int i = 0; i < documents.WorkbookCount(); ++i) {
    if (!AskToSave(session, documents.WorkbookAt(i), save)) return false;
  }
  for (int i = 0; i < documents.ReportCount(); ++i) {
    if (!AskToSave(session, documents.ReportAt(i), save)) return false;
  }
  session.CalculationRunning = false;
  return true;
}

bool AskBeforeClosing(Session& session, Workbook& workbook, const SaveFunctions& save) {
  return AskAboutCalculation(session) && AskToSave(session, workbook, save);
}

bool AskBeforeClosing(Session& session, Report& report, const SaveFunctions& save) {
  return AskAboutCalculation(session) && AskToSave(session, report, save);
}

void DeleteTemporaryFiles(const Paths& paths) {
  for (const char* name : {"~place.wmf", "~tmp.wmf", "~report.tmp", "~excel.xls"}) {
    std::error_code ignored;
    std::filesystem::remove(paths.temporary / name, ignored);
  }
}

}  // namespace tellurix
