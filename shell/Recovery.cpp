#include "shell/Recovery.h"

#include <fmt/format.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <functional>
#include <nlohmann/json.hpp>
#include <set>

#include "numeric/Text.h"
#include "report/RichText.h"
#include "session/Skeleton.h"
#include "shell/DocumentFiles.h"
#include "workbook/files/NativeWorkbook.h"

namespace tellurix {

namespace fs = std::filesystem;

namespace {

constexpr const char* FolderPrefix = "work-";
constexpr const char* LockName = "lock";

fs::path CopyFile(const fs::path& folder, int number, bool isWorkbook) {
  return folder / fmt::format("{}.{}", number, isWorkbook ? "tlw" : "rtf");
}

// Beside the copy: what document it is of.
fs::path NoteOf(fs::path copy) { return copy.replace_extension(".json"); }

bool ReadNote(const fs::path& note, UnsavedDocument& document) {
  std::string bytes, problem;
  if (!ReadWholeFile(note, bytes, problem)) return false;
  const auto json = nlohmann::json::parse(bytes, nullptr, false);
  if (!json.is_object()) return false;
  const auto text = [&](const char* key) {
    const auto found = json.find(key);
    return found != json.end() && found->is_string() ? found->get<std::string>() : std::string();
  };
  const std::string kind = text("kind");
  if (kind != "workbook" && kind != "report") return false;
  document.isWorkbook = kind == "workbook";
  document.caption = text("caption");
  document.path = text("path");
  document.copy = fs::path(note).replace_extension(document.isWorkbook ? ".tlw" : ".rtf");
  std::error_code error;
  return fs::exists(document.copy, error);
}

}  // namespace

// ---------------------------------------------------------------------------------------------------------------------
// Keeping
// ---------------------------------------------------------------------------------------------------------------------

Recovery::~Recovery() {
  std::string ignored;
  FinishChild(true, ignored);
}

std::vector<Recovery::Job> Recovery::Outdated(OpenDocuments& documents) {
  std::vector<Job> jobs;
  const auto consider = [&](const void* document, const DocumentState& state, Job job) {
    const auto known = copies_.find(document);
    job.document = document;
    job.copy.caption = state.caption;
    job.copy.path = state.path;
    job.copy.isWritten = true;
    job.copy.number = known == copies_.end() ? ++numbers_ : known->second.number;
    if (known == copies_.end() || known->second != job.copy) jobs.push_back(std::move(job));
  };
  for (int i = 0; i < documents.WorkbookCount(); ++i) {
    const Workbook& workbook = documents.WorkbookAt(i);
    if (!workbook.document.changed) continue;
    consider(&workbook, workbook.document, {.copy = {.isWorkbook = true, .state = workbook.Revision()}});
  }
  for (int i = 0; i < documents.ReportCount(); ++i) {
    const Report& report = documents.ReportAt(i);
    if (!report.document.changed || !ReportHasText(report)) continue;
    Job job{.rtf = WriteRtf(report.text)};
    job.copy.state = std::hash<std::string>()(job.rtf);
    consider(&report, report.document, std::move(job));
  }
  return jobs;
}

bool Recovery::MakeFolder(std::string& problem) {
  if (!folder_.empty()) return true;
  std::error_code error;
  fs::create_directories(parent_, error);
  // A start that looks for abandoned folders must not find this one before it is locked.
  const FileLock parent(parent_);
  std::string name = (parent_ / (std::string(FolderPrefix) + "XXXXXX")).string();
  if (!::mkdtemp(name.data())) {
    problem = fmt::format("{}: {}", parent_.string(), std::strerror(errno));
    return false;
  }
  folder_ = name;
  lock_.emplace(folder_ / LockName);
  return true;
}

// The note comes first: no copy is ever without one.
bool Recovery::Write(const Job& job, std::string& problem) const {
  const Copy& copy = job.copy;
  const fs::path file = CopyFile(folder_, copy.number, copy.isWorkbook);
  // Names of files need not be UTF-8: one that is not is asked for again when the document is saved.
  const nlohmann::json note{{"kind", copy.isWorkbook ? "workbook" : "report"},
                            {"caption", copy.caption},
                            {"path", IsValidUtf8(copy.path) ? copy.path : std::string()}};
  const std::string bytes = note.dump(2, ' ', false, nlohmann::json::error_handler_t::replace);
  if (!WriteWholeFile(NoteOf(file), bytes, problem)) return false;
  return copy.isWorkbook ? WriteNativeWorkbook(*static_cast<const Workbook*>(job.document), file, problem)
                         : WriteWholeFile(file, job.rtf, problem);
}

void Recovery::NoteWritten(const std::vector<Job>& jobs) {
  for (const Job& job : jobs) copies_[job.document] = job.copy;
}

bool Recovery::Keep(OpenDocuments& documents, std::string& problem) {
  FinishChild(true, problem);
  Tidy(documents);
  const auto jobs = Outdated(documents);
  if (jobs.empty()) return true;
  if (!MakeFolder(problem)) return false;
  bool isGood = true;
  for (const Job& job : jobs) {
    if (Write(job, problem)) {
      NoteWritten({job});
    } else {
      isGood = false;
    }
  }
  return isGood;
}

bool Recovery::KeepInBackground(OpenDocuments& documents, std::string& problem) {
  const bool isGood = FinishChild(false, problem);
  if (child_ > 0) return true;  // still at it
  Tidy(documents);
  childJobs_ = Outdated(documents);
  if (childJobs_.empty()) return isGood;
  if (!MakeFolder(problem)) return false;
  child_ = ::fork();
  if (child_ < 0) return Keep(documents, problem);
  if (child_ > 0) {
    // Known from now on, though not yet to be counted on: closing the document drops it.
    for (Job& job : childJobs_) {
      copies_[job.document] = job.copy;
      copies_[job.document].isWritten = false;
    }
    return isGood;
  }
  // The child sees the documents as they stand at this moment.
  bool isWritten = true;
  std::string ignored;
  for (const Job& job : childJobs_) isWritten = Write(job, ignored) && isWritten;
  ::_exit(isWritten ? 0 : 1);
}

bool Recovery::FinishChild(bool waits, std::string& problem) {
  if (child_ <= 0) return true;
  int status = 0;
  pid_t ended = 0;
  do {
    ended = ::waitpid(child_, &status, waits ? 0 : WNOHANG);
  } while (ended < 0 && errno == EINTR);
  if (ended == 0) return true;
  child_ = -1;
  const bool isGood = ended > 0 && WIFEXITED(status) && WEXITSTATUS(status) == 0;
  for (const Job& job : childJobs_) {
    const auto known = copies_.find(job.document);
    // One that was dropped meanwhile may have come back.
    if (known == copies_.end() || known->second.number != job.copy.number) Drop(job.copy);
    if (known != copies_.end() && isGood) known->second.isWritten = true;
  }
  childJobs_.clear();
  if (!isGood) problem = fmt::format("{} could not be written.", folder_.string());
  return isGood;
}

void Recovery::Tidy(OpenDocuments& documents) {
  std::set<const void*> unsaved;
  for (int i = 0; i < documents.WorkbookCount(); ++i) {
    if (documents.WorkbookAt(i).document.changed) unsaved.insert(&documents.WorkbookAt(i));
  }
  for (int i = 0; i < documents.ReportCount(); ++i) {
    if (documents.ReportAt(i).document.changed) unsaved.insert(&documents.ReportAt(i));
  }
  for (auto known = copies_.begin(); known != copies_.end();) {
    if (unsaved.contains(known->first)) {
      ++known;
    } else {
      Drop(known->second);
      known = copies_.erase(known);
    }
  }
}

// The note goes last, as it came first.
void Recovery::Drop(const Copy& copy) const {
  std::error_code ignored;
  const fs::path file = CopyFile(folder_, copy.number, copy.isWorkbook);
  fs::remove(file, ignored);
  fs::remove(NoteOf(file), ignored);
}

void Recovery::Clear() {
  std::string ignored;
  FinishChild(true, ignored);
  copies_.clear();
  std::error_code error;
  if (!folder_.empty()) fs::remove_all(folder_, error);
  folder_.clear();
  lock_.reset();
}

// ---------------------------------------------------------------------------------------------------------------------
// Offering
// ---------------------------------------------------------------------------------------------------------------------

namespace {

constexpr const char* Title = "Unsaved Work";

// Whether no copy is left in a folder: what else lies there is its lock and what a killed program was writing.
bool IsSpent(const fs::path& folder) {
  std::error_code error;
  return std::ranges::none_of(fs::directory_iterator(folder, error), [](const fs::directory_entry& entry) {
    return entry.path().extension() == ".tlw" || entry.path().extension() == ".rtf";
  });
}

// Deletes what was left of one document; its folder with the last one.
void Delete(const AbandonedWork& work, const UnsavedDocument& document) {
  std::error_code ignored;
  fs::remove(document.copy, ignored);
  fs::remove(NoteOf(document.copy), ignored);
  if (IsSpent(work.folder)) fs::remove_all(work.folder, ignored);
}

// "Book 01 (not saved)" comes back as "Recovered Book 01 (not saved)": the next new one is Book 01 again.
void Restore(DocumentState& state, const UnsavedDocument& document) {
  constexpr std::string_view recovered = "Recovered ";
  state.path = document.path;
  state.caption = document.caption;
  if (state.path.empty() && !state.caption.starts_with(recovered)) state.caption.insert(0, recovered);
}

bool Open(OpenDocuments& documents, const UnsavedDocument& document, std::string& problem) {
  if (document.isWorkbook) {
    auto workbook = std::make_unique<Workbook>();
    if (!ReadNativeWorkbook(document.copy, *workbook, problem)) return false;
    Restore(workbook->document, document);
    workbook->MarkUnsaved();
    documents.AddWorkbook(std::move(workbook));
    return true;
  }
  std::string bytes;
  if (!ReadWholeFile(document.copy, bytes, problem)) return false;
  auto text = ReadRtf(bytes);
  if (!text) {
    problem = document.copy.string() + " is not a valid (rich) text file";
    return false;
  }
  auto report = std::make_unique<Report>();
  report->text = std::move(*text);
  Restore(report->document, document);
  report->document.changed = true;
  documents.AddReport(std::move(report));
  return true;
}

void OpenAll(Session& session, OpenDocuments& documents, Recovery& recovery, const std::vector<AbandonedWork>& left) {
  std::vector<std::pair<const AbandonedWork*, const UnsavedDocument*>> opened;
  for (const AbandonedWork& work : left) {
    for (const UnsavedDocument& document : work.documents) {
      std::string problem;
      if (Open(documents, document, problem)) {
        opened.emplace_back(&work, &document);
        continue;
      }
      // It is not offered again.
      std::error_code ignored;
      fs::rename(NoteOf(document.copy), fs::path(document.copy).replace_extension(".unread"), ignored);
      ShowMessage(session,
                  fmt::format("{} could not be recovered.\n{}\nIt is kept as {}",
                              DocumentName({.caption = document.caption, .path = document.path}), problem,
                              document.copy.string()),
                  WarningIcon, Title);
    }
  }
  std::string problem;
  if (!recovery.Keep(documents, problem)) return;
  for (const auto& [work, document] : opened) Delete(*work, *document);
}

}  // namespace

std::vector<AbandonedWork> FindAbandonedWork(const fs::path& parent) {
  std::vector<AbandonedWork> found;
  std::error_code error;
  if (!fs::is_directory(parent, error)) return found;
  const FileLock parentLock(parent);
  for (const auto& entry : fs::directory_iterator(parent, error)) {
    if (!entry.path().filename().string().starts_with(FolderPrefix) || !entry.is_directory(error)) continue;
    FileLock lock = FileLock::Try(entry.path() / LockName);
    if (!lock.IsHeld()) continue;  // of a running program
    AbandonedWork work{entry.path(), std::move(lock), {}};
    for (const auto& file : fs::directory_iterator(work.folder, error)) {
      UnsavedDocument document;
      if (file.path().extension() == ".json" && ReadNote(file.path(), document)) {
        work.documents.push_back(std::move(document));
      }
    }
    std::ranges::sort(work.documents, {}, &UnsavedDocument::copy);
    if (!work.documents.empty()) {
      found.push_back(std::move(work));
    } else if (IsSpent(work.folder)) {
      fs::remove_all(work.folder, error);
    }
  }
  return found;
}

void OfferUnsavedWork(Session& session, OpenDocuments& documents, Recovery& recovery, const fs::path& parent) {
  const auto left = FindAbandonedWork(parent);
  if (left.empty()) return;
  std::string text = "Tellurix ended before these documents were saved:\n\n";
  for (const AbandonedWork& work : left) {
    for (const UnsavedDocument& document : work.documents) {
      text += DocumentName({.caption = document.caption, .path = document.path}) + '\n';
    }
  }
  text +=
      "\nDo you want to open them with their changes?  No deletes the changes, Cancel keeps them until the next "
      "start.";
  const Reply reply = ShowMessage(session, text, YesNoCancel | QuestionIcon, Title);
  if (reply == Reply::Yes) return OpenAll(session, documents, recovery, left);
  if (reply != Reply::No) return;
  for (const AbandonedWork& work : left) {
    for (const UnsavedDocument& document : work.documents) Delete(work, document);
  }
}

}  // namespace tellurix
