#include "shell/IniSettings.h"

#include <fmt/format.h>

#include "shell/DocumentFiles.h"
#include "shell/FileLock.h"

namespace tellurix {

namespace fs = std::filesystem;

IniSettings::IniSettings(fs::path file) {
  if (file.empty()) return;
  // What a link stands for is written, not the link.
  std::error_code error;
  const fs::path real = fs::weakly_canonical(file, error);
  file_ = error ? std::move(file) : real;
  RemoveLeftovers();
  Load();
}

void IniSettings::RemoveLeftovers() const {
  std::error_code error;
  if (!fs::is_directory(file_.parent_path(), error)) return;
  const FileLock lock(file_.parent_path());  // nobody is writing now
  const std::string beside = file_.filename().string() + '~';
  for (const auto& entry : fs::directory_iterator(file_.parent_path(), error)) {
    if (entry.path().filename().string().starts_with(beside)) fs::remove(entry.path(), error);
  }
}

void IniSettings::Load() {
  problem_.clear();
  std::error_code error;
  if (!fs::exists(fs::symlink_status(file_, error))) return;
  std::string bytes, reason;
  if (ReadWholeFile(file_, bytes, reason)) {
    if (auto text = IniText::Read(bytes)) {
      text_ = std::move(*text);
      return;
    }
  }
  PutAside();
}

void IniSettings::PutAside() {
  std::error_code error;
  fs::path copy;
  for (int n = 1; copy.empty() || fs::exists(fs::symlink_status(copy, error)); ++n) {
    copy = file_;
    copy += n == 1 ? std::string(".damaged") : fmt::format(".damaged{}", n);
  }
  fs::rename(file_, copy, error);
  damage_ = fmt::format("The settings file {} is damaged; the default settings are used.\n{}", file_.string(),
                        error ? "It could not be put aside." : "It is kept as " + copy.string());
  problem_ = damage_;
}

std::string IniSettings::GetIniValue(std::string_view section, std::string_view key,
                                     std::string_view defaultValue) const {
  return text_.Get(section, key).value_or(std::string(defaultValue));
}

void IniSettings::SetIniValue(std::string_view section, std::string_view key, std::string_view value) {
  SetIniValues({{std::string(section), std::string(key), std::string(value)}});
}

void IniSettings::SetIniValues(const std::vector<IniValue>& values) {
  if (file_.empty()) {
    Apply(values);
    return;
  }
  std::error_code error;
  fs::create_directories(file_.parent_path(), error);
  const FileLock lock(file_.parent_path());
  Load();
  unwritten_.insert(unwritten_.end(), values.begin(), values.end());
  std::string reason;
  if ((!Apply(unwritten_) && fs::exists(file_, error)) || WriteWholeFile(file_, text_.Bytes(), reason)) {
    unwritten_.clear();
  } else {
    problem_ = "The settings could not be saved. " + reason;
  }
  if (!problem_.empty() && onProblem) onProblem(problem_);
}

bool IniSettings::Apply(const std::vector<IniValue>& values) {
  bool changed = false;
  for (const IniValue& value : values) changed |= text_.Set(value.section, value.key, value.value);
  return changed;
}

}  // namespace tellurix
