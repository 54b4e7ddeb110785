// The commands of the File menu: opening, importing, saving and exporting. They work from the desktop's menu and from a
// script alike. Each shows its own messages; false where it failed or was cancelled, with everything as it stood.
#pragma once

#include <filesystem>

#include "session/Session.h"
#include "shell/CloseDown.h"

namespace tellurix {

enum class DocumentKind { Workbook, Report };

// A new document named "Book 01 (not saved)" or "Report 01 (not saved)". A workbook begins as a copy of the template
// workbook of the user's folder, where there is one.
bool NewDocument(Session& session, DocumentKind kind);

bool OpenFile(Session& session);                                     // asks which
bool OpenFile(Session& session, const std::filesystem::path& file);  // and remembers it in the history
bool OpenByExtension(Session& session, const std::filesystem::path& file);

// Each reads a file into a new window of its own.
bool ReadWorkbook(Session& session, const std::filesystem::path& file);
bool ReadReport(Session& session, const std::filesystem::path& file);

// Asks for a text file and puts its cells into the active sheet from the active cell on, in one step that can be
// undone. A file of the DOS predecessor is told by its first items.
bool ImportData(Session& session);
// The two text readers, into an empty workbook.
bool ImportDelimited(Session& session, const std::filesystem::path& file, Workbook& workbook, std::string& problem);
bool ImportDosWorksheet(Session& session, const std::filesystem::path& file, Workbook& workbook, std::string& problem);

// Asks for a file and writes the marked cells to it as text; where no more than one cell is marked, the whole sheet.
bool ExportData(Session& session);

// Asks for a plain text file and puts it into the active report, at its caret where it is shown.
bool ImportText(Session& session);

// Under the name that it has, or else under one that is asked for.
bool SaveActive(Session& session, Workbook& workbook);
bool SaveActive(Session& session, Report& report);
bool SaveActiveAs(Session& session, Workbook& workbook);
bool SaveActiveAs(Session& session, Report& report);

// Makes the active workbook the one that new workbooks are copies of.
bool SaveTemplate(Session& session);

// What the close-down saves with.
SaveFunctions SaversOf(Session& session);

// Whether a file is a copy that a spreadsheet program sent: "~excel" in its name.
bool IsTemporaryCopy(const std::filesystem::path& file);

inline constexpr const char* TemplateWorkbook = "Tellurix.tlw";  // in the user's folder

// The entries of the menu.
namespace fileMenu {

void NewWorkbook(Session& session);
void NewReport(Session& session);
void Open(Session& session);
void CloseWorkbook(Session& session);
void CloseReport(Session& session);
void SaveWorkbook(Session& session);
void SaveWorkbookAs(Session& session);
void SaveReport(Session& session);
void SaveReportAs(Session& session);
void SaveTemplate(Session& session);
void ImportData(Session& session);
void ExportData(Session& session);
void ImportText(Session& session);

}  // namespace fileMenu

}  // namespace tellurix
