// Settings kept in memory, and in an initialisation file when they have one.
#pragma once

// As the packaged library is built.
#define SI_CONVERT_ICU
#include <SimpleIni.h>

#include <filesystem>

#include "host/Settings.h"

namespace tellurix {

class IniSettings : public Settings {
 public:
  IniSettings();  // in memory only
  explicit IniSettings(
      std::filesystem::path file);  // an empty path: in memory; a missing or damaged file reads as defaults

  std::string GetIniValue(std::string_view section, std::string_view key, std::string_view defaultValue) const override;
  void SetIniValue(std::string_view section, std::string_view key, std::string_view value) override;

 private:
  bool Save() const;  // beside the file, then renamed over it

  std::filesystem::path file_;
  CSimpleIniA ini_;
};

}  // namespace tellurix
