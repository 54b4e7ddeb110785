#include "shell/FileLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>

namespace tellurix {

namespace {

int Open(const std::filesystem::path& path) {
  std::error_code error;
  if (std::filesystem::is_directory(path, error)) return ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  return ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
}

}  // namespace

FileLock::FileLock(const std::filesystem::path& path, bool waits) : handle_(Open(path)) {
  if (handle_ < 0) return;
  int answer = 0;
  do {
    answer = ::flock(handle_, waits ? LOCK_EX : LOCK_EX | LOCK_NB);
  } while (answer != 0 && errno == EINTR);
  if (answer == 0) return;
  ::close(handle_);
  handle_ = -1;
}

FileLock::~FileLock() {
  if (handle_ >= 0) ::close(handle_);
}

}  // namespace tellurix
