#include "workbook/FileBeside.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <system_error>

namespace tellurix {

namespace fs = std::filesystem;

namespace {

constexpr int MostNames = 1000;
constexpr std::size_t LongestPart = 200;  // of the target's name: a name has 255 bytes at most

// What all unfinished files of a target begin with.
std::string BesidePrefix(const fs::path& target) {
  return "." + target.filename().string().substr(0, LongestPart) + ".saving-";
}

fs::path FolderOf(const fs::path& target) { return target.has_parent_path() ? target.parent_path() : fs::path("."); }

// The file that a chain of links ends in.
fs::path EndOfLinks(fs::path path) {
  std::error_code error;
  for (int depth = 0; depth < 40 && fs::is_symlink(path, error); ++depth) {
    path = FolderOf(path) / fs::read_symlink(path, error);
  }
  return path;
}

bool HasName(int handle, const fs::path& path) {
  struct stat held {
  }, named{};
  return fstat(handle, &held) == 0 && stat(path.c_str(), &named) == 0 && held.st_ino == named.st_ino &&
         held.st_dev == named.st_dev;
}

// A file that nobody may write by its permissions is left alone by the superuser too.
bool MayBeWritten(const fs::path& file) {
  struct stat old {};
  if (stat(file.c_str(), &old) != 0) return true;  // a new one
  errno = EACCES;
  return (old.st_mode & 0222) != 0 && access(file.c_str(), W_OK) == 0;
}

}  // namespace

void RemoveLeftovers(const fs::path& target) {
  const fs::path file = EndOfLinks(target);
  const std::string prefix = BesidePrefix(file);
  std::error_code error;
  for (fs::directory_iterator entry(FolderOf(file), error), end; !error && entry != end; entry.increment(error)) {
    if (!entry->path().filename().string().starts_with(prefix)) continue;
    const int handle = open(entry->path().c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW);
    if (handle < 0) continue;
    // Whoever is still writing holds the lock. What was opened may have taken its target's name by now, and its own
    // name be that of a newer file.
    if (flock(handle, LOCK_EX | LOCK_NB) == 0 && HasName(handle, entry->path())) unlink(entry->path().c_str());
    close(handle);
  }
}

FileBeside::FileBeside(const fs::path& target) : target_(EndOfLinks(target)) {
  RemoveLeftovers(target_);
  if (!MayBeWritten(target_)) {
    Fail("The file cannot be written");
    return;
  }
  if (!Make()) return;
  struct stat old {};
  if (stat(target_.c_str(), &old) == 0) fchmod(handle_, old.st_mode & 07777);
}

bool FileBeside::Make() {
  for (int n = 0; n < MostNames; ++n) {
    const auto now = std::chrono::steady_clock::now().time_since_epoch().count();  // a name is not used again
    path_ = FolderOf(target_) / fmt::format("{}{}-{}-{}", BesidePrefix(target_), getpid(), now, n);
    handle_ = open(path_.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (handle_ < 0 && errno != EEXIST) break;
    if (handle_ < 0) continue;
    // Between the two steps another process may have taken it for a leftover.
    if (flock(handle_, LOCK_EX | LOCK_NB) == 0 && HasName(handle_, path_)) return true;
    close(handle_);
    handle_ = -1;
  }
  return Fail("A new file cannot be made in the folder");
}

FileBeside::~FileBeside() {
  if (handle_ < 0) return;
  unlink(path_.c_str());
  close(handle_);
}

bool FileBeside::Write(std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = write(handle_, bytes.data(), bytes.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return Fail("The file could not be written");
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
  return true;
}

bool FileBeside::TakeOver(const fs::path& file) {
  const int from = open(file.c_str(), O_RDONLY | O_CLOEXEC);
  if (from < 0) return Fail("The file could not be written");
  std::string bytes(std::size_t{1} << 20, '\0');
  bool good = true;
  ssize_t count = 0;
  while (good && (count = read(from, bytes.data(), bytes.size())) > 0) {
    good = Write(std::string_view(bytes).substr(0, static_cast<std::size_t>(count)));
  }
  if (good && count < 0) good = Fail("The file could not be written");
  close(from);
  return good;
}

bool FileBeside::PutInPlace() {
  if (fsync(handle_) != 0) return Fail("The file could not be written");
  if (rename(path_.c_str(), target_.c_str()) != 0) return Fail("The file could not be put in its place");
  close(handle_);
  handle_ = -1;
  // The new file is there; that its name may be lost in a power failure is no reason to call the save failed.
  const int folder = open(FolderOf(target_).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (folder >= 0) {
    fsync(folder);
    close(folder);
  }
  return true;
}

bool FileBeside::Fail(const char* what) {
  problem_ = fmt::format("{}: {}.", what, std::generic_category().message(errno));
  return false;
}

}  // namespace tellurix
