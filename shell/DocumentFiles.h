// Documents to and from files, with nobody asked.
#pragma once

#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "numeric/Regional.h"
#include "report/Report.h"
#include "workbook/Workbook.h"
#include "workbook/files/WorkbookFiles.h"

namespace tellurix {

// What a file is opened as, in the order of the list that asks for it.
enum class FileKind { Workbook, Excel, Tab, Csv, Dos, RichText, PlainText };

// By extension: tlw, mrw, mgw, mhw; xls, tmx, xlsx, ods, gnumeric; tab; csv, prn; rtf, rtt. Nothing for any other.
std::optional<FileKind> KindOfFile(const std::filesystem::path& file);

// A kind of file that a workbook is saved as.
struct WorkbookFormat {
  const char* caption;    // in the list of a file dialog
  const char* pattern;    // the same
  const char* extension;  // "tlw"
  WorkbookFileType type;
  bool isWriteOnly = false;  // cannot be opened again
};

// All of them, in the order in which a file dialog offers them.
std::span<const WorkbookFormat> WorkbookFormats();

// The format for a file name by its extension; of several the one that was chosen in the dialog, else the first.
// Null for an extension that none has, "chosen" for a name without one.
const WorkbookFormat* FormatOfFile(const std::filesystem::path& file, int chosen = -1);

std::string UpperCase(std::string text);  // of plain letters

// The bytes of a file; false with the reason in words.
bool ReadWholeFile(const std::filesystem::path& file, std::string& bytes, std::string& problem);

// Writes beside the file, syncs, and renames over it; false with the reason in words and the old file as it was.
bool WriteWholeFile(const std::filesystem::path& file, std::string_view bytes, std::string& problem);

// The words of a plain text file as UTF-8, its lines ended by "\n"; false with the reason in words.
bool ReadPlainText(const std::filesystem::path& file, std::string& text, std::string& problem);

// Plain text as a report shows it: a paragraph a line.
RichText PlainRichText(std::string_view text);

// By extension: rtf, rtt, html, htm, txt.
bool SaveReport(const Report& report, const std::filesystem::path& file, std::string& problem);

// By extension, as WorkbookFormats has them.
bool SaveWorkbook(const Workbook& workbook, const std::filesystem::path& file, const Regional& regional,
                  std::string& problem);

}  // namespace tellurix
