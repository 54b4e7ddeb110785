// A lock that one running program has on a file or folder. The system takes it away when the program ends, however that
// comes about.
#pragma once

#include <filesystem>
#include <utility>

namespace tellurix {

class FileLock {
 public:
  // Waits for the lock. A file that does not exist is made, in a folder that does. Where the file cannot be opened or
  // its file system knows no locks, nothing is held.
  explicit FileLock(const std::filesystem::path& path) : FileLock(path, true) {}
  static FileLock Try(const std::filesystem::path& path) { return FileLock(path, false); }  // without waiting

  ~FileLock();
  FileLock(FileLock&& other) noexcept : handle_(std::exchange(other.handle_, -1)) {}
  FileLock& operator=(FileLock&& other) noexcept {
    std::swap(handle_, other.handle_);
    return *this;
  }

  bool IsHeld() const { return handle_ >= 0; }

 private:
  FileLock(const std::filesystem::path& path, bool waits);

  int handle_;
};

}  // namespace tellurix
