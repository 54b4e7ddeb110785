// Workbooks of other programs. Their readers stand on libraries of others, so they run in a process of their own,
// tellurix-reader, with limits of time and memory: a file that brings it down is a message here.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "host/Host.h"
#include "workbook/Workbook.h"

namespace tellurix {

bool IsXls(std::string_view head);      // by the first bytes of a file: an OLE document or a bare stream of BIFF
bool IsForeign(std::string_view head);  // xls, or what xlsx, ods and gnumeric come as: a zip, gzip or XML file

// By tellurix-reader, which stands beside our own program (or where TELLURIX_READER says). False with the reason in
// `problem` (empty when `poll` stopped it), and the workbook as it was.
bool ReadByReader(const std::filesystem::path& path, Workbook& workbook, const Poll& poll, std::string& problem);

// Whether LibreOffice is there to convert what we cannot read or write ourselves.
bool HasOffice();
// Reads what LibreOffice can read. As ReadByReader.
bool ReadByOffice(const std::filesystem::path& path, Workbook& workbook, const Poll& poll, std::string& problem);
// Writes a file of one of LibreOffice's kinds: an extension and the name of its filter ("xls", "MS Excel 97"). The file
// takes its place when it is complete.
bool WriteByOffice(const Workbook& workbook, const std::filesystem::path& path, const std::string& extension,
                   const std::string& filter, std::string& problem);

}  // namespace tellurix
