// What another program, or a second start of this one, asks for in words.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "session/Session.h"

namespace tellurix {

// The file that a command line or a link command names: "FileOpen PATH", or the path alone, with or without quotes. A
// relative path that does not exist is looked for in the program's folder; a name with a blank in it that does not
// exist stands for its last word. Nothing when there is no such file.
std::optional<std::filesystem::path> ReadLinkCommand(std::string_view text, const std::filesystem::path& programFolder);

// Carries a link command or a command line out: `open` gets the file that it names. False when that fails, and after a
// message when there is no such file; an empty text names none and is no failure.
bool ExecuteLinkCommand(Session& session, std::string_view text,
                        const std::function<bool(const std::filesystem::path&)>& open);

}  // namespace tellurix
