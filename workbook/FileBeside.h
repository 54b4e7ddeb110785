// A file that takes the place of another one only when it is complete. Until then the old one stands untouched, and
// whatever kills the process leaves either of the two behind.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace tellurix {

class FileBeside {
 public:
  // Makes an empty file in the folder of `target` (of what it points to, if it is a link), with the permissions of an
  // old one, and takes away what killed processes have left of theirs. One that cannot be made has a Problem.
  explicit FileBeside(const std::filesystem::path& target);
  ~FileBeside();  // takes the file away unless it was put in place
  FileBeside(const FileBeside&) = delete;
  FileBeside& operator=(const FileBeside&) = delete;

  bool IsMade() const { return handle_ >= 0; }
  const std::filesystem::path& Path() const { return path_; }
  const std::string& Problem() const { return problem_; }

  // Puts bytes at the end. Large pieces are wanted: each goes to the system at once. False with a Problem.
  bool Write(std::string_view bytes);
  bool TakeOver(const std::filesystem::path& file);  // the contents of another file; false with a Problem

  // Syncs the file, gives it the target's name, and syncs the folder. False with a Problem; the target is then as it
  // was.
  bool PutInPlace();

 private:
  bool Make();
  bool Fail(const char* what);

  std::filesystem::path target_;
  std::filesystem::path path_;
  std::string problem_;
  int handle_ = -1;
};

// Takes away the unfinished files of a target whose processes are gone.
void RemoveLeftovers(const std::filesystem::path& target);

}  // namespace tellurix
