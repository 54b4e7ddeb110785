#include "workbook/SafeFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <random>
#include <system_error>

namespace tellurix {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t MarkLength = 6;
constexpr std::string_view MarkCharacters = "abcdefghijklmnopqrstuvwxyz0123456789";
constexpr int MostTried = 100;           // names
constexpr std::time_t LeftoverAge = 60;  // seconds; a younger one may have a writer that has yet to lock it

// What the name of the file beside ends in.
std::string RandomMark() {
  static std::mt19937 random{std::random_device{}()};
  std::string mark = "~";
  for (std::size_t i = 0; i < MarkLength; ++i) mark += MarkCharacters[random() % MarkCharacters.size()];
  return mark;
}

bool IsBeside(const std::string& name, const std::string& targetName) {
  return name.size() == targetName.size() + 1 + MarkLength && name.starts_with(targetName + "~") &&
         name.find_first_not_of(MarkCharacters, targetName.size() + 1) == std::string::npos;
}

// The permission bits say no to everyone, the superuser included, who would be let through otherwise.
bool MayBeWritten(const fs::path& file) {
  struct stat status {};
  return ::stat(file.c_str(), &status) != 0 || ((status.st_mode & 0222) != 0 && ::access(file.c_str(), W_OK) == 0);
}

void SyncFolder(const fs::path& folder) {
  const int handle = ::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (handle < 0) return;
  ::fsync(handle);
  ::close(handle);
}

}  // namespace

SafeFile::~SafeFile() {
  if (handle_ >= 0) Fail(0);
}

bool SafeFile::Fail(int code) {
  problem_ = std::generic_category().message(code);
  if (handle_ >= 0) {
    ::unlink(beside_.c_str());
    ::close(handle_);
    handle_ = -1;
  }
  return false;
}

bool SafeFile::Open(const fs::path& target) {
  // Beside what a link names, so that the rename stays within one file system.
  std::error_code problem;
  target_ = fs::is_symlink(fs::symlink_status(target, problem)) ? fs::canonical(target, problem) : target;
  if (target_.empty()) return Fail(problem.value());
  if (!MayBeWritten(target_)) return Fail(EACCES);
  ClearLeftovers();
  for (int i = 0; handle_ < 0; ++i) {
    beside_ = target_;
    beside_ += RandomMark();
    handle_ = ::open(beside_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (handle_ < 0 && (errno != EEXIST || i == MostTried)) return Fail(errno);
  }
  ::flock(handle_, LOCK_EX | LOCK_NB);  // as long as it is held, this is nobody's leftover
  return true;
}

void SafeFile::ClearLeftovers() const {
  std::error_code problem;
  const fs::path folder = target_.has_parent_path() ? target_.parent_path() : fs::path(".");
  for (fs::directory_iterator at(folder, problem), end; !problem && at != end; at.increment(problem)) {
    if (!IsBeside(at->path().filename().string(), target_.filename().string())) continue;
    const int handle = ::open(at->path().c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (handle < 0) continue;
    struct stat status {};
    const bool isOld =
        ::fstat(handle, &status) == 0 && S_ISREG(status.st_mode) && ::time(nullptr) - status.st_mtime > LeftoverAge;
    if (isOld && ::flock(handle, LOCK_EX | LOCK_NB) == 0) ::unlink(at->path().c_str());
    ::close(handle);
  }
}

bool SafeFile::Write(std::string_view bytes) {
  while (!bytes.empty()) {
    const auto written = ::write(handle_, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return Fail(errno);
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

bool SafeFile::Commit() {
  struct stat old {};
  if (::stat(target_.c_str(), &old) == 0 && ::fchmod(handle_, old.st_mode & 07777) != 0) return Fail(errno);
  if (::fsync(handle_) != 0 || ::rename(beside_.c_str(), target_.c_str()) != 0) return Fail(errno);
  ::close(handle_);
  handle_ = -1;
  SyncFolder(target_.parent_path());
  return true;
}

}  // namespace tellurix
