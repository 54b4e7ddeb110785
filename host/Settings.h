// Settings as sections of keys with text values.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tellurix {

struct IniValue {
  std::string section;
  std::string key;
  std::string value;
};

class Settings {
 public:
  virtual ~Settings() = default;

  // The value, or the default where file, section or key is missing.
  virtual std::string GetIniValue(std::string_view section, std::string_view key,
                                  std::string_view defaultValue) const = 0;

  // Writes one value: text as it stands, numbers as decimal text, booleans as -1 and 0. Kept at once.
  virtual void SetIniValue(std::string_view section, std::string_view key, std::string_view value) = 0;

  // Writes several as one change.
  virtual void SetIniValues(const std::vector<IniValue>& values) {
    for (const IniValue& value : values) SetIniValue(value.section, value.key, value.value);
  }
};

}  // namespace tellurix
