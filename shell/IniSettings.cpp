#include "shell/IniSettings.h"

namespace tellurix {

IniSettings::IniSettings() { ini_.SetUnicode(true); }

IniSettings::IniSettings(std::filesystem::path file) : IniSettings() {
  file_ = std::move(file);
  if (!file_.empty()) ini_.LoadFile(file_.c_str());  // an error leaves it empty
}

std::string IniSettings::GetIniValue(std::string_view section, std::string_view key,
                                     std::string_view defaultValue) const {
  const char* value = ini_.GetValue(std::string(section).c_str(), std::string(key).c_str());
  return value ? value : std::string(defaultValue);
}

void IniSettings::SetIniValue(std::string_view section, std::string_view key, std::string_view value) {
  ini_.SetValue(std::string(section).c_str(), std::string(key).c_str(), std::string(value).c_str());
  if (!file_.empty()) Save();
}

bool IniSettings::Save() const {
  std::filesystem::path beside = file_;
  beside += "~";
  if (ini_.SaveFile(beside.c_str()) < 0) return false;
  std::error_code error;
  std::filesystem::rename(beside, file_, error);
  return !error;
}

}  // namespace tellurix
