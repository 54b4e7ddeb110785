#include "workbook/files/WorkbookFiles.h"

#include "workbook/DelimitedText.h"
#include "workbook/files/NativeWorkbook.h"

namespace tellurix {

namespace fs = std::filesystem;

bool ReadWorkbookFile(const fs::path& path, Workbook& workbook, const Regional& regional, const Poll& poll,
                      std::string& problem) {
  if (IsNativeWorkbook(path)) return ReadNativeWorkbook(path, workbook, problem);
  return ReadDelimited(path, workbook, regional, problem, poll);
}

bool WriteWorkbookFile(const Workbook& workbook, const fs::path& path, WorkbookFileType type, std::string& problem) {
  switch (type) {
    case WorkbookFileType::Native:
      return WriteNativeWorkbook(workbook, path, problem);
    case WorkbookFileType::TabText:
    case WorkbookFileType::TabValues:
      return WriteDelimited(workbook, path, '\t', problem);
    case WorkbookFileType::Csv:
      return WriteDelimited(workbook, path, ',', problem);
    default:
      problem = "Files of this kind cannot be written.";
      return false;
  }
}

}  // namespace tellurix
