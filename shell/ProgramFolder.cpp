#include "shell/ProgramFolder.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>

namespace tellurix {

namespace fs = std::filesystem;

namespace {

bool HasTemplates(const fs::path& folder) {
  std::error_code error;
  return fs::is_directory(folder / "Template", error);
}

}  // namespace

std::optional<fs::path> FindProgramFolder() {
  if (const char* home = std::getenv("TELLURIX_HOME"); home && *home) {
    return HasTemplates(home) ? std::optional<fs::path>(home) : std::nullopt;
  }
  std::error_code error;
  const fs::path executable = fs::read_symlink("/proc/self/exe", error);
  for (fs::path folder = executable.parent_path(); !folder.empty(); folder = folder.parent_path()) {
    if (HasTemplates(folder)) return folder;
    if (HasTemplates(folder / "share" / "tellurix")) return folder / "share" / "tellurix";
    if (folder == folder.root_path()) break;
  }
  return std::nullopt;
}

fs::path UserFolder() {
  // The rules want an absolute path; any other is as good as none.
  if (const char* config = std::getenv("XDG_CONFIG_HOME"); config && fs::path(config).is_absolute()) {
    return fs::path(config) / "tellurix";
  }
  const char* home = std::getenv("HOME");
  if (!home || !*home) {
    const passwd* user = ::getpwuid(::getuid());
    home = user ? user->pw_dir : "/";
  }
  return fs::path(home) / ".config" / "tellurix";
}

Paths DesktopPaths() {
  Paths paths = ScriptPaths(FindProgramFolder().value_or(fs::path()));
  paths.user = UserFolder();
  return paths;
}

Paths ScriptPaths(const fs::path& program) {
  std::error_code error;
  const fs::path temporary = fs::temp_directory_path(error);
  return {.program = program, .user = {}, .data = program / "Data", .temporary = error ? fs::path("/tmp") : temporary};
}

}  // namespace tellurix
