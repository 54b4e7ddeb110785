// Where the program's own files are.
#pragma once

#include <filesystem>
#include <optional>

#include "session/Session.h"

namespace tellurix {

// The folder that holds Template/: TELLURIX_HOME, else beside the executable or above it, else share/tellurix of the
// place it is installed in. Nothing when none has it.
std::optional<std::filesystem::path> FindProgramFolder();

// The user's own folder: "tellurix" in XDG_CONFIG_HOME, else in ".config" of the home folder. It need not exist yet.
std::filesystem::path UserFolder();

// The folders of the desktop's session. That of the program is empty where it is not found.
Paths DesktopPaths();

// The folders of a session that plays scripts: no user's folder is touched.
Paths ScriptPaths(const std::filesystem::path& program);

}  // namespace tellurix
