// What is open: workbooks and reports, as the commands see them.
#pragma once

#include <string>
#include <vector>

namespace tellurix {

class Workbook;
class Report;

// What every document window has.
struct DocumentState {
  std::string caption;  // "Book 01 (not saved)" until it has a name
  std::string path;
  bool changed = false;
  bool readOnly = false;
};

class Documents {
 public:
  virtual ~Documents() = default;

  virtual int WorkbookCount() const = 0;
  virtual Workbook& WorkbookAt(int index) = 0;  // 0-based
  virtual std::string WorkbookName(int index) const = 0;
  virtual std::vector<std::string> SheetNames(int index) const = 0;
  virtual Workbook* ActiveWorkbook() = 0;  // null when none is open
  virtual Workbook& NewWorkbook() = 0;     // becomes the active one
  virtual void ActivateWorkbook(int index) = 0;

  virtual int ReportCount() const = 0;
  virtual Report& ReportAt(int index) = 0;
  virtual std::string ReportName(int index) const = 0;
  virtual Report* ActiveReport() = 0;
  virtual Report& NewReport() = 0;
  virtual void ActivateReport(int index) = 0;
};

}  // namespace tellurix
