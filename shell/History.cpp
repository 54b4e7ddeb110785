#include "shell/History.h"

#include <fmt/format.h>

#include "session/SessionSettings.h"

namespace tellurix {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t Rows = 4;

std::string Key(const char* name, std::size_t row) { return fmt::format("{}{}", name, row + 1); }

fs::path Absolute(const fs::path& file) {
  std::error_code error;
  const fs::path absolute = fs::absolute(file, error).lexically_normal();
  return error ? file : absolute;
}

void Renumber(std::vector<HistoryRow>& rows) {
  for (std::size_t i = 0; i < rows.size(); ++i) {
    rows[i].caption = fmt::format("&{} {}", i + 1, rows[i].path.filename().string());
  }
}

// The settings that hold the rows; what stands behind the last one is emptied.
std::vector<IniValue> AsSettings(std::vector<HistoryRow> rows) {
  Renumber(rows);
  rows.resize(Rows);
  std::vector<IniValue> values;
  for (std::size_t i = 0; i < Rows; ++i) {
    values.push_back({"FileHistory", Key("Caption", i), rows[i].caption});
    values.push_back({"FileHistory", Key("Path", i), rows[i].path.string()});
  }
  return values;
}

}  // namespace

std::vector<HistoryRow> History(const Session& session) {
  std::vector<HistoryRow> rows;
  for (std::size_t i = 0; i < Rows; ++i) {
    const fs::path path = SettingValue(session.settings, "FileHistory", Key("Path", i));
    if (!path.empty()) rows.push_back({"", path});
  }
  Renumber(rows);
  return rows;
}

void AddToHistory(Session& session, const fs::path& file) {
  const fs::path absolute = Absolute(file);
  auto rows = History(session);
  std::erase_if(rows, [&](const HistoryRow& row) { return row.path == absolute; });
  rows.insert(rows.begin(), HistoryRow{"", absolute});
  session.paths.data = absolute.parent_path();
  auto values = AsSettings(std::move(rows));
  values.push_back({"Paths", "Data", FolderText(session.paths.data)});
  session.settings.SetIniValues(values);
}

void RemoveFromHistory(Session& session, const fs::path& file) {
  auto rows = History(session);
  std::erase_if(rows, [&](const HistoryRow& row) { return row.path == file; });
  session.settings.SetIniValues(AsSettings(std::move(rows)));
}

}  // namespace tellurix
