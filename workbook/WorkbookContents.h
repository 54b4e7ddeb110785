// A workbook as it stands, all sheets at once, for those who write it to a file. Nothing of it is copied: it holds
// until the workbook changes. Sheets are numbered from 1.
#pragma once

#include "workbook/WorkbookData.h"

namespace tellurix {

class WorkbookContents {
 public:
  explicit WorkbookContents(const Workbook& workbook) : workbook_(workbook) {}

  int SheetCount() const { return workbook_.SheetCount(); }
  int ActiveSheet() const { return workbook_.Sheet(); }
  const WorkbookSettings& Settings() const { return workbook_.Settings(); }
  const std::vector<CellLook>& Looks() const { return workbook_.looks_; }  // those that LookRuns number

  const std::string& Name(int sheet) const { return At(sheet).name; }
  const SheetSettings& Settings(int sheet) const { return At(sheet).settings; }
  const SheetLooks& Looks(int sheet) const { return *At(sheet).looks; }
  const std::vector<CellRange>& Selection(int sheet) const { return At(sheet).selection; }
  int ActiveRow(int sheet) const { return At(sheet).activeRow; }
  int ActiveColumn(int sheet) const { return At(sheet).activeColumn; }
  int LastRow(int sheet) const { return At(sheet).LastRow(); }
  int LastColumn(int sheet) const { return static_cast<int>(At(sheet).columns.size()); }
  const CellColumn* Column(int sheet, int slot) const { return At(sheet).Find(slot); }  // null: empty
  CellLook LookAt(int sheet, int row, int column) const {
    const SheetLooks& looks = Looks(sheet);
    return Index(column) < looks.size() && looks[Index(column)] ? workbook_.looks_[looks[Index(column)]->At(row)]
                                                                : CellLook();
  }

 private:
  const Workbook::SheetData& At(int sheet) const { return *workbook_.sheets_[Index(sheet)]; }

  const Workbook& workbook_;
};

}  // namespace tellurix
