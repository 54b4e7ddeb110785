#include "shell/FileCommands.h"

#include <fmt/format.h>
#include <unistd.h>

#include <new>

#include "numeric/Text.h"
#include "session/Skeleton.h"
#include "shell/DocumentFiles.h"
#include "shell/History.h"
#include "workbook/BlockCopy.h"
#include "workbook/DelimitedText.h"
#include "workbook/DosWorksheet.h"
#include "workbook/files/NativeWorkbook.h"

namespace tellurix {

namespace fs = std::filesystem;

namespace {

constexpr const char* NotSaved = " (not saved)";
constexpr const char* TemporaryMark = "~excel";
constexpr const char* CopyName = "copy of excel workbook.xls";

constexpr const char* OpenFilter =
    "Tellurix Workbooks (*.tlw)|*.tlw;*.mrw|Rich Text Reports (*.rtf)|*.rtf|"
    "Comma Separated Vector File (*.csv)|*.csv|Tabbed Text Workbook (*.tab)|*.tab|Excel Workbooks (*.xls)|*.xls|"
    "All files (*.*)|*.*|Excel 2007 Workbooks (*.xlsx)|*.xlsx|OpenDocument Spreadsheets (*.ods)|*.ods|"
    "Gnumeric Workbooks (*.gnumeric)|*.gnumeric";
constexpr const char* OpenPattern = "*.tlw;*.mrw;*.csv;*.tab;*.xls;*.rtf;*.xlsx;*.ods;*.gnumeric";
constexpr const char* ImportFilter =
    "Comma delimited (*.csv)|*.csv|Tab delimited (*.tab)|*.tab|Text file (*.txt)|*.txt|Morvane DOS (*.*)|*.*|"
    "All files (*.*)|*.*";
constexpr const char* ExportFilter = "Comma delimited (*.csv)|*.csv|Tab delimited (*.tab)|*.tab";
constexpr int TabbedExport = 1;  // of these

void Warn(Session& session, std::string_view text, std::string_view title) {
  ShowMessage(session, text, WarningIcon, title);
}

bool Exists(const fs::path& file) {
  std::error_code error;
  return fs::exists(file, error);
}

bool HasExtension(const fs::path& file, std::initializer_list<const char*> extensions) {
  const std::string own = file.extension().string();
  for (const char* extension : extensions) {
    if (EqualNoCase(own, extension)) return true;
  }
  return false;
}

// ---------------------------------------------------------------------------------------------------------------------
// Names
// ---------------------------------------------------------------------------------------------------------------------

// Nobody may write the file, by its permissions; the superuser is bound by them here too.
bool IsReadOnly(const fs::path& file) {
  std::error_code error;
  const auto permissions = fs::status(file, error).permissions();
  const auto writers = fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write;
  return !error && ((permissions & writers) == fs::perms::none || ::access(file.c_str(), W_OK) != 0);
}

// What an opened document is called.
void TakeName(DocumentState& document, const fs::path& file) {
  std::error_code error;
  document.path = fs::absolute(file, error).string();
  document.caption = file.filename().string();
  document.readOnly = IsReadOnly(file);
  document.changed = false;
}

bool WantsNewName(const DocumentState& document) {
  return document.path.empty() || document.readOnly || IsTemporaryCopy(document.path) ||
         document.caption.find(NotSaved) != std::string::npos;
}

// ---------------------------------------------------------------------------------------------------------------------
// Opening
// ---------------------------------------------------------------------------------------------------------------------

// Says on the status line what is done, as long as it lives.
class StatusHere {
 public:
  StatusHere(Session& session, std::string_view text) : session_(session) { session_.host.SetStatus(text); }
  ~StatusHere() { session_.host.SetStatus("Ready"); }
  StatusHere(const StatusHere&) = delete;
  StatusHere& operator=(const StatusHere&) = delete;

 private:
  Session& session_;
};

void AddOpened(Session& session, std::unique_ptr<Workbook> workbook, const fs::path& file) {
  TakeName(workbook->document, file);
  if (IsTemporaryCopy(file)) workbook->MarkUnsaved();
  session.documents.AddWorkbook(std::move(workbook));
}

void AddOpened(Session& session, RichText text, const fs::path& file) {
  auto report = std::make_unique<Report>();
  report->text = std::move(text);
  TakeName(report->document, file);
  session.documents.AddReport(std::move(report));
}

// With `read` into a new workbook window; a problem is shown as an error of reading, none means cancelled.
template <typename Read>
bool ImportIntoNewWindow(Session& session, const fs::path& file, Read read) {
  const StatusHere status(session, "Importing data");
  auto workbook = std::make_unique<Workbook>();
  std::string problem;
  if (!read(session, file, *workbook, problem)) {
    if (!problem.empty()) Warn(session, fmt::format("Error reading {}\n{}", file.string(), problem), "File Open");
    return false;
  }
  AddOpened(session, std::move(workbook), file);
  return true;
}

bool ReadPlainReport(Session& session, const fs::path& file) {
  std::string text, problem;
  if (!ReadPlainText(file, text, problem)) {
    Warn(session, fmt::format("Error reading {}\n{}", file.string(), problem), "File Open");
    return false;
  }
  AddOpened(session, PlainRichText(text), file);
  return true;
}

}  // namespace

bool IsTemporaryCopy(const fs::path& file) { return FoldCase(file.string()).find(TemporaryMark) != std::string::npos; }

bool OpenFile(Session& session) {
  const auto chosen = session.host.ChooseFile({.title = "Open File", .filter = OpenFilter, .pattern = OpenPattern});
  return chosen && OpenFile(session, chosen->path);
}

bool OpenFile(Session& session, const fs::path& file) {
  if (!Exists(file)) {
    Warn(session, UpperCase(file.string()) + " is not available", "File Open");
    return false;
  }
  if (!OpenByExtension(session, file)) return false;
  if (!IsTemporaryCopy(file)) AddToHistory(session, file);
  return true;
}

bool OpenByExtension(Session& session, const fs::path& file) {
  const Calculation calculation(session);
  auto kind = KindOfFile(file);
  if (!kind) {
    const int picked = session.prompts.PickFromList("File");
    if (picked == PickedCancel) return false;
    kind = static_cast<FileKind>(picked);
  }
  BusyPointer(session);
  switch (*kind) {
    case FileKind::Workbook:
    case FileKind::Excel:
      return ReadWorkbook(session, file);
    case FileKind::Tab:
    case FileKind::Csv:
      return ImportIntoNewWindow(session, file, ImportDelimited);
    case FileKind::Dos:
      return ImportIntoNewWindow(session, file, ImportDosWorksheet);
    case FileKind::RichText:
      return ReadReport(session, file);
    case FileKind::PlainText:
      return ReadPlainReport(session, file);
  }
  return false;
}

bool ReadWorkbook(Session& session, const fs::path& file) {
  auto workbook = std::make_unique<Workbook>();
  std::string problem;
  if (ReadWorkbookFile(file, *workbook, session.options.regional, ProgressPoll(session), problem)) {
    AddOpened(session, std::move(workbook), file);
    return true;
  }
  if (problem.empty()) return false;  // cancelled
  std::string text = fmt::format("{} could not be read.", file.string());
  if (HasExtension(file, {".mrw", ".xls"})) {
    text +=
        "\nIn order to read some older types of workbook in Tellurix, Microsoft Excel must be installed on this "
        "computer.";
  }
  Warn(session, text + "\n" + problem, "Reading Workbook File");
  return false;
}

bool ReadReport(Session& session, const fs::path& file) {
  constexpr const char* Title = "Reading Rich Text File";
  std::string bytes, problem;
  if (!ReadWholeFile(file, bytes, problem)) {
    Warn(session, problem, Title);
    return false;
  }
  auto text = ReadRtf(bytes);
  if (!text) {
    Warn(session, file.string() + " is not a valid (rich) text file", Title);
    return false;
  }
  AddOpened(session, std::move(*text), file);
  return true;
}

// ---------------------------------------------------------------------------------------------------------------------
// New documents
// ---------------------------------------------------------------------------------------------------------------------

namespace {

// A copy of the template workbook, or an empty one. A template that cannot be read is told of.
std::unique_ptr<Workbook> StartingWorkbook(Session& session) {
  auto workbook = std::make_unique<Workbook>();
  const fs::path file = session.paths.user / TemplateWorkbook;
  std::string problem;
  if (!session.paths.user.empty() && Exists(file) && !ReadNativeWorkbook(file, *workbook, problem)) {
    Warn(session, fmt::format("{} could not be read.\n{}", file.string(), problem), "Loading Workbook");
  }
  return workbook;
}

}  // namespace

bool NewDocument(Session& session, DocumentKind kind) {
  const bool isReport = kind == DocumentKind::Report;
  try {
    if (isReport) {
      session.documents.NewReport();
    } else {
      session.documents.AddNewWorkbook(StartingWorkbook(session));
    }
    return true;
  } catch (const std::bad_alloc&) {
    Warn(session, isReport ? "Not enough memory to load Report" : "Not enough memory to load Worksheet",
         isReport ? "Loading Report" : "Loading Workbook");
    return false;
  }
}

// ---------------------------------------------------------------------------------------------------------------------
// Import and export
// ---------------------------------------------------------------------------------------------------------------------

bool ImportDelimited(Session& session, const fs::path& file, Workbook& workbook, std::string& problem) {
  return ReadDelimited(file, workbook, session.options.regional, problem, ProgressPoll(session));
}

bool ImportDosWorksheet(Session& session, const fs::path& file, Workbook& workbook, std::string& problem) {
  return ReadDosWorksheet(file, workbook, problem, ProgressPoll(session));
}

namespace {

// What the file holds, into the active sheet; nothing has changed when it is false.
bool ImportAtActiveCell(Session& session, const fs::path& file, Workbook& workbook, std::string& problem) {
  if (workbook.SheetLocked()) {
    problem = "The worksheet is locked.";
    return false;
  }
  Workbook read;
  const auto import = IsDosWorksheet(file) ? ImportDosWorksheet : ImportDelimited;
  if (!import(session, file, read, problem)) return false;
  workbook.BeginStep("Import Data");
  const bool fits = CopyCells(read, workbook, workbook.ActiveRow(), workbook.ActiveColumn());
  workbook.EndStep();
  if (!fits) problem = "The worksheet does not have enough rows and columns from the active cell on.";
  return fits;
}

}  // namespace

bool ImportData(Session& session) {
  constexpr const char* Title = "File Import";
  const auto chosen = session.host.ChooseFile(
      {.title = "Import worksheet data", .filter = ImportFilter, .pattern = "*.csv;*.tab;*.txt"});
  if (!chosen) return false;
  if (!Exists(chosen->path)) {
    Warn(session, UpperCase(chosen->path) + " is not available", Title);
    return false;
  }
  if (!session.documents.ActiveWorkbook() && !NewDocument(session, DocumentKind::Workbook)) return false;
  const StatusHere status(session, "Importing data");
  const Calculation calculation(session);
  BusyPointer(session);
  std::string problem;
  if (ImportAtActiveCell(session, chosen->path, *session.documents.ActiveWorkbook(), problem)) return true;
  if (!problem.empty()) Warn(session, fmt::format("Error reading {}\n{}", chosen->path, problem), Title);
  return false;
}

bool ExportData(Session& session) {
  constexpr const char* Title = "Export Data";
  const Workbook* workbook = session.documents.ActiveWorkbook();
  if (!workbook) return false;
  const auto chosen =
      session.host.ChooseFile({.title = Title, .filter = ExportFilter, .defaultExtension = "csv", .save = true});
  if (!chosen) return false;
  std::vector<CellRange> ranges;
  for (int i = 0; i < workbook->SelectionCount(); ++i) ranges.push_back(workbook->GetSelection(i));
  if (ranges.size() == 1 && ranges[0].IsOneCell()) ranges = {{1, 1, GridStore::MaxRows, GridStore::MaxColumns}};
  const bool isTabbed = HasExtension(chosen->path, {".tab", ".txt"}) ||
                        (chosen->filter == TabbedExport && !HasExtension(chosen->path, {".csv"}));
  const Regional& regional = session.options.regional;
  BusyPointer(session);
  std::string problem;
  const bool written =
      WriteDelimited(*workbook, ranges, chosen->path, isTabbed ? '\t' : CsvSeparator(regional), regional, problem);
  NormalPointer(session);
  if (!written) Warn(session, fmt::format("Error saving {}\n{}", chosen->path, problem), Title);
  return written;
}

bool ImportText(Session& session) {
  constexpr const char* Title = "Import Text";
  Report* report = session.documents.ActiveReport();
  if (!report) return false;
  if (report->document.readOnly) {
    Warn(session, "File is read only", Title);
    return false;
  }
  const auto chosen =
      session.host.ChooseFile({.title = Title, .filter = "ASCII Text (*.txt)|*.txt|All files (*.*)|*.*"});
  if (!chosen) return false;
  std::string text, problem;
  if (!ReadPlainText(chosen->path, text, problem)) {
    Warn(session, fmt::format("Error reading {}\n{}", chosen->path, problem), Title);
    return false;
  }
  if (report->insertText) {
    report->insertText(text);
  } else {
    report->Append(PlainRichText(text));
  }
  return true;
}

// ---------------------------------------------------------------------------------------------------------------------
// Saving workbooks
// ---------------------------------------------------------------------------------------------------------------------

namespace {

constexpr const char* SavingWorkbook = "Saving Workbook";

bool IsOfOneSheet(WorkbookFileType type) {
  return type == WorkbookFileType::TabText || type == WorkbookFileType::TabValues || type == WorkbookFileType::Csv;
}

bool IsOldExcel(WorkbookFileType type) { return type == WorkbookFileType::Excel97 || type == WorkbookFileType::Excel5; }

// The place of a format among those of the dialog.
int IndexOf(const WorkbookFormat* format) { return format ? static_cast<int>(format - WorkbookFormats().data()) : 0; }

std::string SaveFilter() {
  std::string filter;
  for (const WorkbookFormat& format : WorkbookFormats()) {
    filter += fmt::format("{}{}|{}", filter.empty() ? "" : "|", format.caption, format.pattern);
  }
  return filter;
}

// Asks about sheets that a file of text has no place for.
bool MayLeaveSheets(Session& session, const Workbook& workbook, const WorkbookFormat& format) {
  if (!IsOfOneSheet(format.type) || workbook.SheetCount() == 1) return true;
  return ShowMessage(session, "A text file holds the active sheet alone. Save it without the other sheets?",
                     YesNo | QuestionIcon, SavingWorkbook) == Reply::Yes;
}

// A write-only file is a copy: the window keeps its name, and what has changed in it has yet to be saved.
bool WriteTo(Session& session, Workbook& workbook, const fs::path& file, const WorkbookFormat& format) {
  if (!MayLeaveSheets(session, workbook, format)) return false;
  BusyPointer(session);
  std::string problem;
  const bool written = WriteWorkbookFile(workbook, file, format.type, problem, session.options.regional);
  NormalPointer(session);
  if (!written) {
    Warn(session, fmt::format("Error saving {}\n{}", file.string(), problem), SavingWorkbook);
    return false;
  }
  if (format.isWriteOnly) return true;
  TakeName(workbook.document, file);
  workbook.document.format = IndexOf(&format);
  workbook.MarkSaved();
  return true;
}

// What the dialog offers: the name that the workbook has, with an extension that can be written.
std::string SuggestedName(const Workbook& workbook) {
  const fs::path path = workbook.document.path;
  if (path.empty()) return DocumentName(workbook.document) + ".tlw";
  if (IsTemporaryCopy(path)) return CopyName;
  return FormatOfFile(path) ? path.string() : fs::path(path).replace_extension(".tlw").string();
}

bool SaveUnder(Session& session, Workbook& workbook, const std::string& suggestion) {
  const auto chosen =
      session.host.ChooseFile({.title = "Save Workbook As",
                               .filter = SaveFilter(),
                               .defaultExtension = "tlw",
                               .suggestedName = suggestion,
                               .filterIndex = IndexOf(FormatOfFile(suggestion, workbook.document.format)),
                               .save = true});
  if (!chosen) return false;
  fs::path file = chosen->path;
  if (!file.has_extension() && chosen->filter < 0) file += ".tlw";
  const WorkbookFormat* format = FormatOfFile(file, chosen->filter);
  if (!format && chosen->filter >= 0) format = &WorkbookFormats()[static_cast<std::size_t>(chosen->filter)];
  if (!format) {
    Warn(session, fmt::format("Error saving {}\nWorkbooks are not saved in files of this kind.", file.string()),
         SavingWorkbook);
    return false;
  }
  if (!WriteTo(session, workbook, file, *format)) {
    // Not every machine can write these: the newer kind stands in.
    return IsOldExcel(format->type) && SaveUnder(session, workbook, fs::path(file).replace_extension(".xlsx").string());
  }
  if (!format->isWriteOnly) AddToHistory(session, file);
  return true;
}

}  // namespace

bool SaveActive(Session& session, Workbook& workbook) {
  const WorkbookFormat* format = FormatOfFile(workbook.document.path, workbook.document.format);
  if (WantsNewName(workbook.document) || !format || format->isWriteOnly) return SaveActiveAs(session, workbook);
  return WriteTo(session, workbook, workbook.document.path, *format);
}

bool SaveActiveAs(Session& session, Workbook& workbook) {
  return SaveUnder(session, workbook, SuggestedName(workbook));
}

bool SaveTemplate(Session& session) {
  const Workbook* workbook = session.documents.ActiveWorkbook();
  if (!workbook) return false;
  if (ShowMessage(session,
                  "If you save this workbook as a template then all new workbooks that you create will be an exact "
                  "copy of this one until you save another template.  All of the contents and settings of the workbook "
                  "are saved in the template.",
                  YesNo | QuestionIcon, "Workbook Template") != Reply::Yes) {
    return false;
  }
  std::string problem;
  if (!session.paths.user.empty() && WriteNativeWorkbook(*workbook, session.paths.user / TemplateWorkbook, problem)) {
    return true;
  }
  Warn(session, "Error saving template workbook", "Save Template");
  return false;
}

// ---------------------------------------------------------------------------------------------------------------------
// Saving reports
// ---------------------------------------------------------------------------------------------------------------------

namespace {

constexpr const char* SavingReport = "Saving Report";

bool IsRichTextName(const fs::path& file) { return HasExtension(file, {".rtf", ".rtt"}); }

bool WriteTo(Session& session, Report& report, const fs::path& file) {
  BusyPointer(session);
  std::string problem;
  const bool written = SaveReport(report, file, problem);
  NormalPointer(session);
  if (!written) {
    Warn(session, problem, SavingReport);
    return false;
  }
  // Anything else than rich text is a copy.
  if (IsRichTextName(file)) TakeName(report.document, file);
  return true;
}

}  // namespace

bool SaveActive(Session& session, Report& report) {
  if (report.document.readOnly) Warn(session, "File is read only", SavingReport);
  if (WantsNewName(report.document) || !IsRichTextName(report.document.path)) return SaveActiveAs(session, report);
  return WriteTo(session, report, report.document.path);
}

bool SaveActiveAs(Session& session, Report& report) {
  const fs::path path = report.document.path;
  const std::string suggestion =
      path.empty() ? DocumentName(report.document) + ".rtf"
                   : (IsRichTextName(path) ? path : fs::path(path).replace_extension(".rtf")).string();
  const auto chosen = session.host.ChooseFile({.title = "Save Report As",
                                               .filter = "RTF File (*.rtf)|*.rtf",
                                               .defaultExtension = "rtf",
                                               .suggestedName = suggestion,
                                               .save = true});
  if (!chosen) return false;
  fs::path file = chosen->path;
  if (!file.has_extension()) file += ".rtf";
  if (!WriteTo(session, report, file)) return false;
  if (IsRichTextName(file)) AddToHistory(session, file);
  return true;
}

SaveFunctions SaversOf(Session& session) {
  return {.workbook = [&session](Workbook& workbook) { return SaveActive(session, workbook); },
          .report = [&session](Report& report) { return SaveActive(session, report); }};
}

// ---------------------------------------------------------------------------------------------------------------------
// The entries of the menu
// ---------------------------------------------------------------------------------------------------------------------

namespace fileMenu {

namespace {

void Note(Session& session, bool done) {
  if (done) session.results.Current().delivered = true;
}

void WithWorkbook(Session& session, bool (*action)(Session&, Workbook&)) {
  if (Workbook* workbook = session.documents.ActiveWorkbook()) Note(session, action(session, *workbook));
}

void WithReport(Session& session, bool (*action)(Session&, Report&)) {
  if (Report* report = session.documents.ActiveReport()) Note(session, action(session, *report));
}

// Asks about the changes, and takes the document away.
bool Close(Session& session, Workbook& workbook) {
  if (!AskBeforeClosing(session, workbook, SaversOf(session))) return false;
  session.documents.CloseWorkbook(workbook);
  return true;
}

bool Close(Session& session, Report& report) {
  if (!AskBeforeClosing(session, report, SaversOf(session))) return false;
  session.documents.CloseReport(report);
  return true;
}

}  // namespace

void NewWorkbook(Session& session) { Note(session, NewDocument(session, DocumentKind::Workbook)); }
void NewReport(Session& session) { Note(session, NewDocument(session, DocumentKind::Report)); }
void Open(Session& session) { Note(session, OpenFile(session)); }
void CloseWorkbook(Session& session) { WithWorkbook(session, Close); }
void CloseReport(Session& session) { WithReport(session, Close); }
void SaveWorkbook(Session& session) { WithWorkbook(session, SaveActive); }
void SaveWorkbookAs(Session& session) { WithWorkbook(session, SaveActiveAs); }
void SaveReport(Session& session) { WithReport(session, SaveActive); }
void SaveReportAs(Session& session) { WithReport(session, SaveActiveAs); }
void SaveTemplate(Session& session) { Note(session, tellurix::SaveTemplate(session)); }
void ImportData(Session& session) { Note(session, tellurix::ImportData(session)); }
void ExportData(Session& session) { Note(session, tellurix::ExportData(session)); }
void ImportText(Session& session) { Note(session, tellurix::ImportText(session)); }

}  // namespace fileMenu

}  // namespace tellurix
