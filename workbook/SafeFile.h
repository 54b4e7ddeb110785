// A file that takes the place of another only when it is complete.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace tellurix {

// Written beside its target, synced, and renamed over it: whatever happens, the target holds its old contents or the
// new ones. A link is followed. The target's permissions stay; a target that may not be written is refused. What the
// killed writers of former times have left beside the target is cleared away.
class SafeFile {
 public:
  SafeFile() = default;
  ~SafeFile();  // without Commit: nothing has happened
  SafeFile(const SafeFile&) = delete;
  SafeFile& operator=(const SafeFile&) = delete;

  // Each answers false when it fails, with the reason in Problem, and ends the writing.
  bool Open(const std::filesystem::path& target);
  bool Write(std::string_view bytes);  // not buffered: large pieces are wanted
  bool Commit();

  const std::string& Problem() const { return problem_; }  // the system's words: "No space left on device"

 private:
  bool Fail(int code);
  void ClearLeftovers() const;

  std::filesystem::path target_;
  std::filesystem::path beside_;
  int handle_ = -1;
  std::string problem_;
};

}  // namespace tellurix
