// Documents to and from files.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "numeric/Regional.h"
#include "shell/OpenDocuments.h"

namespace tellurix {

// The bytes of a file; false with the reason in words.
bool ReadWholeFile(const std::filesystem::path& file, std::string& bytes, std::string& problem);

// Writes beside the file, syncs, and renames over it; false with the reason in words and the old file as it was.
bool WriteWholeFile(const std::filesystem::path& file, std::string_view bytes, std::string& problem);

// Opens by extension into a new document: csv, tab, prn and txt into a workbook, rtf and rtt into a report. A failed
// open leaves no new document.
bool OpenDocument(OpenDocuments& documents, const Regional& regional, const std::filesystem::path& file,
                  std::string& problem);

// By extension: rtf, rtt, html, htm, txt.
bool SaveReport(const Report& report, const std::filesystem::path& file, std::string& problem);

// By extension: csv, tab, txt.
bool SaveWorkbook(const Workbook& workbook, const std::filesystem::path& file, std::string& problem);

}  // namespace tellurix
