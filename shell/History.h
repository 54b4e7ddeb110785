// The list of the files last opened and saved, kept in the settings and shown in the File menus.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "session/Session.h"

namespace tellurix {

struct HistoryRow {
  std::string caption;  // "&1 sleep.csv"
  std::filesystem::path path;
};

// Four rows at most, the newest first.
std::vector<HistoryRow> History(const Session& session);

// Brings a file to the top of the list: one that is in it already moves up, else the last row falls out. Its folder is
// the last data folder from now on.
void AddToHistory(Session& session, const std::filesystem::path& file);

void RemoveFromHistory(Session& session, const std::filesystem::path& file);

}  // namespace tellurix
