#include "shell/LinkCommand.h"

#include <algorithm>

#include "numeric/Text.h"
#include "session/Skeleton.h"

namespace tellurix {

namespace {

namespace fs = std::filesystem;

// The path itself or, a relative one, in the program's folder.
std::optional<fs::path> Existing(std::string_view name, const fs::path& programFolder) {
  std::error_code error;
  const fs::path path(Trim(name));
  if (path.empty()) return std::nullopt;
  if (fs::exists(path, error)) return path;
  if (path.is_relative() && fs::exists(programFolder / path, error)) return programFolder / path;
  return std::nullopt;
}

}  // namespace

std::optional<fs::path> ReadLinkCommand(std::string_view text, const fs::path& programFolder) {
  const std::string command = ReplaceAll(Trim(text), "\"", "");
  std::optional<fs::path> file;
  const auto blank = command.find(' ');
  if (FoldCase(command).find("fileopen") != std::string::npos) {
    if (blank != std::string::npos) file = Existing(std::string_view(command).substr(blank + 1), programFolder);
  } else {
    file = Existing(command, programFolder);
    if (!file && blank != std::string::npos) {
      file = Existing(std::string_view(command).substr(command.rfind(' ') + 1), programFolder);
    }
  }
  return file;
}

bool ExecuteLinkCommand(Session& session, std::string_view text, const std::function<bool(const fs::path&)>& open) {
  BusyPointer(session);
  const auto file = ReadLinkCommand(text, session.paths.program);
  const bool isGood = file ? open(*file) : Trim(text).empty();
  NormalPointer(session);
  if (!file && !isGood) {
    ShowMessage(session, UpperCase(ReplaceAll(Trim(text), "\"", "")) + " is not available", WarningIcon, "File Open");
  }
  return isGood;
}

}  // namespace tellurix
