// Copies of documents with unsaved changes, for the next start after a crash. Each running program has a folder of its
// own for them, locked while it runs; a folder that nobody has locked is of one that did not get to its close-down.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "session/Session.h"
#include "shell/FileLock.h"
#include "shell/OpenDocuments.h"

namespace tellurix {

class Recovery {
 public:
  // The folder, which lies in `parent`, is made with the first copy.
  explicit Recovery(std::filesystem::path parent) : parent_(std::move(parent)) {}
  ~Recovery();  // what is being written is finished; the copies stay
  Recovery(const Recovery&) = delete;
  Recovery& operator=(const Recovery&) = delete;

  // Writes copies of the changed documents, but for those whose copy is of their present state, and drops those of
  // other documents. False with the reason in words; the earlier copies stand then.
  bool Keep(OpenDocuments& documents, std::string& problem);

  // The same in a child process, so that nobody waits for a large workbook. It tells how the one before went.
  bool KeepInBackground(OpenDocuments& documents, std::string& problem);

  // Drops the copies of documents that were saved or closed.
  void Tidy(OpenDocuments& documents);

  // Drops all: the close-down has asked.
  void Clear();

 private:
  struct Copy {
    int number = 0;
    bool isWorkbook = false;
    std::string caption;
    std::string path;         // of the document; empty: it has none
    std::uint64_t state = 0;  // of its contents
    bool isWritten = false;
    bool operator==(const Copy&) const = default;
  };
  struct Job {
    const void* document = nullptr;
    Copy copy;
    std::string rtf;  // of a report
  };

  std::vector<Job> Outdated(OpenDocuments& documents);
  bool MakeFolder(std::string& problem);
  bool Write(const Job& job, std::string& problem) const;
  void NoteWritten(const std::vector<Job>& jobs);
  bool FinishChild(bool waits, std::string& problem);  // false when it failed
  void Drop(const Copy& copy) const;

  std::filesystem::path parent_;
  std::filesystem::path folder_;
  std::optional<FileLock> lock_;
  std::map<const void*, Copy> copies_;  // by document
  int numbers_ = 0;
  pid_t child_ = -1;
  std::vector<Job> childJobs_;
};

// What another run has left.
struct UnsavedDocument {
  std::filesystem::path copy;
  bool isWorkbook = false;
  std::string caption;
  std::string path;
};

// A folder of such documents, kept from other starts while this lives.
struct AbandonedWork {
  std::filesystem::path folder;
  FileLock lock;
  std::vector<UnsavedDocument> documents;
};

std::vector<AbandonedWork> FindAbandonedWork(const std::filesystem::path& parent);

// Asks about all that was left in `parent`: it is opened as unsaved documents, deleted, or kept for the next start. A
// copy is deleted only once `recovery` keeps a new one; what cannot be read stays, and a message names it.
void OfferUnsavedWork(Session& session, OpenDocuments& documents, Recovery& recovery,
                      const std::filesystem::path& parent);

}  // namespace tellurix
