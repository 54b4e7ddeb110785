// The workbooks and reports that are open.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "host/Documents.h"
#include "report/Report.h"
#include "workbook/Workbook.h"

namespace tellurix {

// The file's name, or the caption without its " (not saved)" for a document that has none.
std::string DocumentName(const DocumentState& document);

class OpenDocuments : public Documents {
 public:
  // Told by a front end that shows windows: what was opened, and what a command wants in front.
  std::function<void(Workbook&)> onWorkbookOpened;
  std::function<void(Report&)> onReportOpened;
  std::function<void(Workbook&)> onWorkbookActivated;
  std::function<void(Report&)> onReportActivated;
  std::function<void(Workbook&)> onWorkbookClosing;  // it is still there
  std::function<void(Report&)> onReportClosing;

  int WorkbookCount() const override { return static_cast<int>(workbooks_.size()); }
  Workbook& WorkbookAt(int index) override { return *workbooks_.at(static_cast<std::size_t>(index)); }
  std::string WorkbookName(int index) const override;
  std::vector<std::string> SheetNames(int index) const override;
  Workbook* ActiveWorkbook() override;
  Workbook& NewWorkbook() override;
  Workbook& AddNewWorkbook(std::unique_ptr<Workbook> workbook) override;
  Workbook& AddWorkbook(std::unique_ptr<Workbook> workbook) override;  // no front end has heard of it before
  void CloseWorkbook(const Workbook& workbook) override;
  void ActivateWorkbook(int index) override;

  int ReportCount() const override { return static_cast<int>(reports_.size()); }
  Report& ReportAt(int index) override { return *reports_.at(static_cast<std::size_t>(index)); }
  std::string ReportName(int index) const override;
  Report* ActiveReport() override;
  Report& NewReport() override;
  Report& AddReport(std::unique_ptr<Report> report) override;
  void CloseReport(const Report& report) override;
  void ActivateReport(int index) override;

  int IndexOf(const Workbook& workbook) const;  // -1 when it is not open
  int IndexOf(const Report& report) const;

 private:
  std::vector<std::unique_ptr<Workbook>> workbooks_;
  std::vector<std::unique_ptr<Report>> reports_;
  int activeWorkbook_ = -1;
  int activeReport_ = -1;
  int booksMade_ = 0;
  int reportsMade_ = 0;
};

}  // namespace tellurix
