// What is open: workbooks and reports, as the commands see them.
#pragma once

#include <memory>
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
  bool readOnly = false;  // the file may not be written: saved under a new name only
  int format = -1;        // of the formats of a workbook the one that was chosen in saving; -1: told by the extension
};

class Documents {
 public:
  virtual ~Documents() = default;

  virtual int WorkbookCount() const = 0;
  virtual Workbook& WorkbookAt(int index) = 0;  // 0-based
  virtual std::string WorkbookName(int index) const = 0;
  virtual std::vector<std::string> SheetNames(int index) const = 0;
  virtual Workbook* ActiveWorkbook() = 0;                                    // null when none is open
  virtual Workbook& NewWorkbook() = 0;                                       // an empty one; becomes the active one
  virtual Workbook& AddNewWorkbook(std::unique_ptr<Workbook> workbook) = 0;  // the same with contents
  virtual Workbook& AddWorkbook(std::unique_ptr<Workbook> workbook) = 0;     // that was read from a file
  virtual void CloseWorkbook(const Workbook& workbook) = 0;
  virtual void ActivateWorkbook(int index) = 0;

  virtual int ReportCount() const = 0;
  virtual Report& ReportAt(int index) = 0;
  virtual std::string ReportName(int index) const = 0;
  virtual Report* ActiveReport() = 0;
  virtual Report& NewReport() = 0;
  virtual Report& AddReport(std::unique_ptr<Report> report) = 0;  // that was read from a file
  virtual void CloseReport(const Report& report) = 0;
  virtual void ActivateReport(int index) = 0;
};

}  // namespace tellurix
