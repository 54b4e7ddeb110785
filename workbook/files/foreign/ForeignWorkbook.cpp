#include "workbook/files/foreign/ForeignWorkbook.h"

#include <new>

#include "workbook/files/ForeignFiles.h"
#include "workbook/files/foreign/Archive.h"
#include "workbook/files/foreign/GnumericImport.h"
#include "workbook/files/foreign/OdsImport.h"
#include "workbook/files/foreign/XlsImport.h"
#include "workbook/files/foreign/XlsxImport.h"

namespace tellurix {

bool ReadForeignWorkbook(const std::filesystem::path& path, Workbook& workbook, std::string& problem) {
  try {
    Archive archive(path);
    if (archive.IsOpen() && IsXlsx(archive)) return ReadXlsx(archive, workbook, problem);
    if (archive.IsOpen() && IsOds(archive)) return ReadOds(archive, workbook, problem);
    std::string bytes;
    if (!ReadGzip(path, bytes)) {
      problem = "The file is damaged.";
      return false;
    }
    if (IsXls(bytes)) return ReadXls(bytes, workbook, problem);
    if (IsGnumeric(bytes)) return ReadGnumeric(bytes, workbook, problem);
    problem = "The file is damaged, or none of the workbooks that can be read.";
  } catch (const std::bad_alloc&) {
    problem = "The file is damaged: it asks for more memory than there is.";
  }
  return false;
}

}  // namespace tellurix
