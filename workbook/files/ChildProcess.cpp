#include "workbook/files/ChildProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <optional>

#include "numeric/Text.h"

namespace tellurix {

namespace fs = std::filesystem;

namespace {

constexpr int MillisecondsBetweenPolls = 20;
constexpr std::size_t LongestOutput = 4096;
constexpr int NotExecuted = 127;

void SetLimit(int resource, rlim_t value, rlim_t grace = 0) {
  const rlimit limit{value, value + grace};
  setrlimit(static_cast<__rlimit_resource_t>(resource), &limit);
}

// Only what is safe between fork and exec.
[[noreturn]] void Become(const char* program, char* const* arguments, const ChildLimits& limits, int nothing,
                         int output) {
  setpgid(0, 0);
  dup2(nothing, STDIN_FILENO);
  dup2(output, STDOUT_FILENO);
  dup2(output, STDERR_FILENO);
  SetLimit(RLIMIT_CORE, 0);
  if (limits.processorSeconds > 0) SetLimit(RLIMIT_CPU, static_cast<rlim_t>(limits.processorSeconds), 1);
#ifndef __SANITIZE_ADDRESS__  // which needs all the address space there is
  if (limits.memoryBytes > 0) SetLimit(RLIMIT_AS, limits.memoryBytes);
#endif
  execv(program, arguments);
  _exit(NotExecuted);
}

// Takes what there is to read, waiting a moment for it; false once nothing more will come.
bool TakeOutput(int handle, std::string& output) {
  pollfd waiting{handle, POLLIN, 0};
  if (poll(&waiting, 1, MillisecondsBetweenPolls) <= 0) return true;
  char bytes[1024];
  const ssize_t count = read(handle, bytes, sizeof(bytes));
  if (count > 0 && output.size() < LongestOutput) output.append(bytes, static_cast<std::size_t>(count));
  return count > 0 || (count < 0 && errno == EINTR);
}

}  // namespace

ChildEnd RunChild(const std::vector<std::string>& arguments, const ChildLimits& limits, const Poll& poll,
                  const std::string& what, std::string& output) {
  const std::string program = FindProgram(arguments.front()).string();
  std::vector<char*> argv;
  for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
  argv.push_back(nullptr);
  int ends[2];
  if (program.empty() || pipe2(ends, O_CLOEXEC) != 0) return ChildEnd::NotStarted;
  const int nothing = open("/dev/null", O_RDONLY | O_CLOEXEC);
  const pid_t child = fork();
  if (child == 0) Become(program.c_str(), argv.data(), limits, nothing, ends[1]);
  close(ends[1]);
  close(nothing);
  if (child < 0) {
    close(ends[0]);
    return ChildEnd::NotStarted;
  }

  using Clock = std::chrono::steady_clock;
  const auto end = Clock::now() + std::chrono::duration<double>(limits.seconds);
  std::optional<ChildEnd> forced;
  int status = 0;
  bool isOpen = true;
  output.clear();
  while (waitpid(child, &status, WNOHANG) == 0) {
    if (isOpen) {
      isOpen = TakeOutput(ends[0], output);
    } else {
      usleep(1000);
    }
    if (forced) continue;
    if (Clock::now() > end) forced = ChildEnd::TookTooLong;
    if (poll && !poll(what, 0)) forced = ChildEnd::Stopped;
    if (forced) kill(-child, SIGKILL);
  }
  // What it left behind in the pipe; those that it started may still hold the other end.
  fcntl(ends[0], F_SETFL, O_NONBLOCK);
  while (isOpen && output.size() < LongestOutput) {
    const std::size_t before = output.size();
    isOpen = TakeOutput(ends[0], output) && output.size() > before;
  }
  close(ends[0]);
  kill(-child, SIGKILL);
  if (forced) return *forced;
  if (WIFSIGNALED(status)) return WTERMSIG(status) == SIGXCPU ? ChildEnd::TookTooLong : ChildEnd::Crashed;
  if (WEXITSTATUS(status) == NotExecuted) return ChildEnd::NotStarted;
  return WEXITSTATUS(status) == 0 ? ChildEnd::Good : ChildEnd::Failed;
}

fs::path FindProgram(const std::string& name) {
  if (name.find('/') != std::string::npos) return access(name.c_str(), X_OK) == 0 ? fs::path(name) : fs::path();
  const char* path = std::getenv("PATH");
  for (const std::string& folder : Split(path ? path : "", ':')) {
    const fs::path found = fs::path(folder.empty() ? "." : folder) / name;
    std::error_code error;
    if (access(found.c_str(), X_OK) == 0 && fs::is_regular_file(found, error)) return found;
  }
  return {};
}

TemporaryFolder::TemporaryFolder() {
  std::error_code error;
  const fs::path base = fs::temp_directory_path(error);
  std::string name = ((error ? fs::path("/tmp") : base) / "~tellurix-XXXXXX").string();
  if (mkdtemp(name.data())) path_ = name;
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code error;
  if (IsMade()) fs::remove_all(path_, error);
}

}  // namespace tellurix
