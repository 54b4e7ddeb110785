#include "shell/ProgramFolder.h"

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

Paths ScriptPaths(const fs::path& program) {
  std::error_code error;
  const fs::path temporary = fs::temp_directory_path(error);
  return {.program = program, .user = {}, .data = program / "Data", .temporary = error ? fs::path("/tmp") : temporary};
}

}  // namespace tellurix
