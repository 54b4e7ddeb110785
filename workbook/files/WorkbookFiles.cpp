#include "workbook/files/WorkbookFiles.h"

#include <cerrno>
#include <fstream>
#include <system_error>

#include "numeric/Text.h"
#include "workbook/DelimitedText.h"
#include "workbook/files/ForeignFiles.h"
#include "workbook/files/HtmlTables.h"
#include "workbook/files/NativeWorkbook.h"
#include "workbook/files/XlsxWriter.h"

namespace tellurix {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t HeadBytes = 1024;

bool HasExtension(const fs::path& path, std::initializer_list<std::string_view> extensions) {
  const std::string own = path.extension().string();
  for (const std::string_view extension : extensions) {
    if (EqualNoCase(own, extension)) return true;
  }
  return false;
}

bool IsOfOlderKind(const fs::path& path) { return HasExtension(path, {".mrw", ".mgw", ".mhw", ".tmx", ".xls"}); }

// By LibreOffice, if that is there.
bool ReadOlder(const fs::path& path, Workbook& workbook, const Poll& poll, std::string& problem) {
  if (HasOffice()) return ReadByOffice(path, workbook, poll, problem);
  problem = NoOffice;
  return false;
}

bool WriteXls(const Workbook& workbook, const fs::path& path, std::string& problem) {
  if (HasOffice()) return WriteByOffice(workbook, path, "xls", "MS Excel 97", problem);
  problem = NoOfficeForXls;
  return false;
}

}  // namespace

bool ReadWorkbookFile(const fs::path& path, Workbook& workbook, const Regional& regional, const Poll& poll,
                      std::string& problem) {
  std::ifstream in(path, std::ios::binary);
  if (!in || fs::is_directory(path)) {
    problem = std::generic_category().message(in ? EISDIR : errno);
    return false;
  }
  std::string head(HeadBytes, '\0');
  in.read(head.data(), HeadBytes);
  head.resize(static_cast<std::size_t>(in.gcount()));
  in.close();
  if (IsNativeWorkbook(path)) return ReadNativeWorkbook(path, workbook, problem);
  if (IsForeign(head)) {
    if (ReadByReader(path, workbook, poll, problem)) return true;
    const bool wasStopped = problem.empty();
    return !wasStopped && IsOfOlderKind(path) && HasOffice() && ReadByOffice(path, workbook, poll, problem);
  }
  if (HasExtension(path, {".tlw"})) return ReadNativeWorkbook(path, workbook, problem);  // says why it is none
  if (IsOfOlderKind(path)) return ReadOlder(path, workbook, poll, problem);
  if (HasExtension(path, {".xlsx", ".ods", ".gnumeric"})) {
    problem = "The file is damaged.";
    return false;
  }
  return ReadDelimited(path, workbook, regional, problem, poll);
}

std::optional<WorkbookFileType> WorkbookTypeOf(const fs::path& path) {
  static const std::pair<std::string_view, WorkbookFileType> Types[] = {
      {".tlw", WorkbookFileType::Native},        {".xls", WorkbookFileType::Excel97},
      {".xlsx", WorkbookFileType::Xlsx},         {".ods", WorkbookFileType::Ods},
      {".gnumeric", WorkbookFileType::Gnumeric}, {".tab", WorkbookFileType::TabText},
      {".txt", WorkbookFileType::TabText},       {".csv", WorkbookFileType::Csv},
      {".htm", WorkbookFileType::Html},          {".html", WorkbookFileType::Html}};
  for (const auto& [extension, type] : Types) {
    if (HasExtension(path, {extension})) return type;
  }
  return std::nullopt;
}

bool WriteWorkbookFile(const Workbook& workbook, const fs::path& path, WorkbookFileType type, std::string& problem,
                       const Regional& regional) {
  switch (type) {
    case WorkbookFileType::Native:
      return WriteNativeWorkbook(workbook, path, problem);
    case WorkbookFileType::Excel97:
      return WriteXls(workbook, path, problem);
    case WorkbookFileType::Excel5:  // LibreOffice writes it no more
      problem = NoExcel5;
      return false;
    case WorkbookFileType::Xlsx:
      return WriteXlsx(workbook, path, problem);
    case WorkbookFileType::TabText:
    case WorkbookFileType::TabValues:
      return WriteDelimited(workbook, path, '\t', problem, regional);
    case WorkbookFileType::Csv:
      return WriteDelimited(workbook, path, CsvSeparator(regional), problem, regional);
    case WorkbookFileType::Html:
      return WriteHtmlTables(workbook, path, true, problem);
    case WorkbookFileType::HtmlData:
      return WriteHtmlTables(workbook, path, false, problem);
    default:
      problem = "Files of this kind are read only.";
      return false;
  }
}

}  // namespace tellurix
