// The settings file: every key with its default, and the way between it and the session.
#pragma once

#include <filesystem>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "session/Session.h"

namespace tellurix {

struct SettingKey {
  std::string section;
  std::string key;
  std::string defaultValue;
};

// Every key of the settings file in its order, with the default that is read where it is missing. Keys whose default
// depends on the machine (folders), and places of windows, have an empty one here.
const std::vector<SettingKey>& SettingKeys();

// The default of a key of the table; empty for any other.
const std::string& SettingDefault(std::string_view section, std::string_view key);

// The value in force of a key of the table, its default included.
std::string SettingValue(const Settings& settings, std::string_view section, std::string_view key);

// The same as an integer: the default stands for what is no number or not in [low, high]. For keys with a numeric
// default.
int IntegerSetting(const Settings& settings, std::string_view section, std::string_view key, int low, int high);

// A folder as the settings file holds it, a separator at its end, and back.
std::string FolderText(const std::filesystem::path& folder);
std::filesystem::path FolderFromText(std::string_view text);

// The windows that keep a place of their own, by their section.
const std::vector<std::string>& PlacedForms();

// Reads the settings into the session.
void LoadSettings(Session& session);

// Writes the session's options; kept at once.
void SaveSettings(Session& session);

}  // namespace tellurix
