#include "shell/DocumentFiles.h"

#include <fmt/format.h>

#include <array>
#include <fstream>

#include "graphics/ImageExport.h"
#include "numeric/Text.h"
#include "report/RichText.h"
#include "workbook/FileBeside.h"
#include "workbook/TextFile.h"

namespace tellurix {

namespace fs = std::filesystem;

namespace {

constexpr std::array<WorkbookFormat, 9> Formats{
    {{"Tellurix (*.tlw)", "*.tlw", "tlw", WorkbookFileType::Native},
     {"Excel 8/97 (*.xls)", "*xls", "xls", WorkbookFileType::Excel97},
     {"Excel 5 and 7/95 (*.xls)", "*xls", "xls", WorkbookFileType::Excel5},
     {"Tabbed Text (*.tab)", "*tab", "tab", WorkbookFileType::TabText},
     {"Tabbed Text values only (*.tab)", "*tab", "tab", WorkbookFileType::TabValues},
     {"HTML (write only) (*.htm)", "*htm", "htm", WorkbookFileType::Html, true},
     {"HTML data only (write only) (*.htm)", "*htm", "htm", WorkbookFileType::HtmlData, true},
     {"Excel 2007 (*.xlsx)", "*.xlsx", "xlsx", WorkbookFileType::Xlsx},
     {"Comma delimited (*.csv)", "*.csv", "csv", WorkbookFileType::Csv}}};

struct KnownExtension {
  const char* extension;
  FileKind kind;
};

constexpr KnownExtension Extensions[] = {
    {"tlw", FileKind::Workbook}, {"mrw", FileKind::Workbook}, {"mgw", FileKind::Workbook},
    {"mhw", FileKind::Workbook}, {"xls", FileKind::Excel},    {"tmx", FileKind::Excel},
    {"xlsx", FileKind::Excel},   {"ods", FileKind::Excel},    {"gnumeric", FileKind::Excel},
    {"tab", FileKind::Tab},      {"csv", FileKind::Csv},      {"prn", FileKind::Csv},
    {"rtf", FileKind::RichText}, {"rtt", FileKind::RichText}};

// Without its dot, in lower case.
std::string Extension(const fs::path& file) {
  const std::string extension = FoldCase(file.extension().string());
  return extension.empty() ? extension : extension.substr(1);
}

// Other extensions that files of a format have.
std::string MainExtension(const std::string& extension) {
  if (extension == "html") return "htm";
  if (extension == "txt") return "tab";
  if (extension == "prn") return "csv";
  return extension;
}

}  // namespace

std::optional<FileKind> KindOfFile(const fs::path& file) {
  const std::string extension = Extension(file);
  for (const KnownExtension& known : Extensions) {
    if (extension == known.extension) return known.kind;
  }
  return std::nullopt;
}

std::span<const WorkbookFormat> WorkbookFormats() { return Formats; }

const WorkbookFormat* FormatOfFile(const fs::path& file, int chosen) {
  const WorkbookFormat* format = chosen >= 0 && chosen < static_cast<int>(Formats.size()) ? &Formats[chosen] : nullptr;
  const std::string extension = MainExtension(Extension(file));
  if (extension.empty() || (format && extension == format->extension)) return format;
  for (const WorkbookFormat& other : Formats) {
    if (extension == other.extension) return &other;
  }
  return nullptr;
}

std::string UpperCase(std::string text) {
  for (char& c : text) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  }
  return text;
}

bool ReadWholeFile(const fs::path& file, std::string& bytes, std::string& problem) {
  std::error_code error;
  if (!fs::exists(file, error)) {
    problem = UpperCase(file.string()) + " is not available";
    return false;
  }
  std::ifstream in(file, std::ios::binary);
  const auto size = fs::is_directory(file, error) ? 0 : fs::file_size(file, error);
  bytes.resize(size);
  in.read(bytes.data(), static_cast<std::streamsize>(size));
  if (!in || fs::is_directory(file, error)) {
    problem = file.string() + " could not be read.";
    return false;
  }
  return true;
}

bool WriteWholeFile(const fs::path& file, std::string_view bytes, std::string& problem) {
  FileBeside beside(file);
  if (beside.IsMade() && beside.Write(bytes) && beside.PutInPlace()) return true;
  problem = fmt::format("Error saving {}\n{}", file.string(), beside.Problem());
  return false;
}

bool ReadPlainText(const fs::path& file, std::string& text, std::string& problem) {
  if (!ReadWholeText(file, text, problem)) return false;
  std::erase(text, '\0');
  text = ReplaceAll(ReplaceAll(ToUtf8(text), "\r\n", "\n"), "\r", "\n");
  return true;
}

RichText PlainRichText(std::string_view text) {
  RichText rich;
  if (text.ends_with('\n')) text.remove_suffix(1);
  for (std::string& line : Split(text, '\n')) {
    Paragraph paragraph;
    if (!line.empty()) paragraph.runs.push_back({.text = std::move(line)});
    rich.blocks.emplace_back(std::move(paragraph));
  }
  return rich;
}

bool SaveReport(const Report& report, const fs::path& file, std::string& problem) {
  const std::string extension = Extension(file);
  if (extension == "rtf" || extension == "rtt") return WriteWholeFile(file, WriteRtf(report.text), problem);
  if (extension == "html" || extension == "htm") {
    return WriteWholeFile(file, WriteHtml(report.text, file.stem().string(), MakePictureToSvg()), problem);
  }
  if (extension == "txt") return WriteWholeFile(file, WriteText(report.text), problem);
  problem = fmt::format("a report is saved as rtf, html or txt, not as {}", file.filename().string());
  return false;
}

bool SaveWorkbook(const Workbook& workbook, const fs::path& file, const Regional& regional, std::string& problem) {
  if (const WorkbookFormat* format = FormatOfFile(file)) {
    return WriteWorkbookFile(workbook, file, format->type, problem, regional);
  }
  problem = fmt::format("a workbook is not saved as {}", file.filename().string());
  return false;
}

}  // namespace tellurix
