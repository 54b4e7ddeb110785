// The workbooks and reports that are open.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "host/Documents.h"
#include "report/Report.h"
#include "workbook/Workbook.h"

namespace tellurix {

class OpenDocuments : public Documents {
 public:
  int WorkbookCount() const override { return static_cast<int>(workbooks_.size()); }
  Workbook& WorkbookAt(int index) override { return *workbooks_.at(static_cast<std::size_t>(index)); }
  std::string WorkbookName(int index) const override;
  std::vector<std::string> SheetNames(int index) const override;
  Workbook* ActiveWorkbook() override;
  Workbook& NewWorkbook() override;
  void ActivateWorkbook(int index) override { activeWorkbook_ = index; }

  int ReportCount() const override { return static_cast<int>(reports_.size()); }
  Report& ReportAt(int index) override { return *reports_.at(static_cast<std::size_t>(index)); }
  std::string ReportName(int index) const override;
  Report* ActiveReport() override;
  Report& NewReport() override;
  void ActivateReport(int index) override { activeReport_ = index; }

  // Takes the active workbook away again, after a file could not be read into it.
  void DropActiveWorkbook();

 private:
  std::vector<std::unique_ptr<Workbook>> workbooks_;
  std::vector<std::unique_ptr<Report>> reports_;
  int activeWorkbook_ = -1;
  int activeReport_ = -1;
  int booksMade_ = 0;
  int reportsMade_ = 0;
};

}  // namespace tellurix
