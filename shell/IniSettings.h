// Settings kept in memory, and in an initialisation file when they have one.
#pragma once

#include <filesystem>
#include <functional>

#include "host/Settings.h"
#include "shell/IniText.h"

namespace tellurix {

// Each change is in the file at once: written beside it, synced, renamed over it. Before that the file is read again
// under a lock of its folder, so that of two running programs neither wipes out the other's keys. A missing file reads
// as defaults; a damaged one too, and it is kept beside as a copy. When the file cannot be written, the values stand
// in memory until it can.
class IniSettings : public Settings {
 public:
  IniSettings() = default;                            // in memory only
  explicit IniSettings(std::filesystem::path file);   // an empty path: in memory
  std::function<void(const std::string&)> onProblem;  // told in words when a later read or write fails

  const std::string& Problem() const { return problem_; }  // of the newest read or write; empty when all went well
  const std::string& Damage() const { return damage_; }    // said of a file that was put aside; empty when none was

  std::string GetIniValue(std::string_view section, std::string_view key, std::string_view defaultValue) const override;
  void SetIniValue(std::string_view section, std::string_view key, std::string_view value) override;
  void SetIniValues(const std::vector<IniValue>& values) override;

 private:
  void Load();
  void PutAside();
  void RemoveLeftovers() const;  // of saves that were killed
  bool Apply(const std::vector<IniValue>& values);

  std::filesystem::path file_;
  IniText text_;
  std::vector<IniValue> unwritten_;
  std::string problem_;
  std::string damage_;
};

}  // namespace tellurix
