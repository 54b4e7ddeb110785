// Plays a script: the same commands as the desktop, with the script in the place of the person.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "host/Script.h"
#include "session/Session.h"
#include "shell/IniSettings.h"
#include "shell/OpenDocuments.h"
#include "shell/Recorder.h"
#include "shell/ScriptHost.h"

namespace tellurix {

class ScriptPlayer {
 public:
  // Default settings, "." as decimal symbol, no grouping, ISO dates, whatever the user's own.
  explicit ScriptPlayer(Paths paths);

  // One setting in force from here on; false when `text` is not "Section.Key=value" or names no key of the settings.
  bool SetSetting(std::string_view text);

  // Plays one script file, or a script already read. False after a failure, which then says file, line and what
  // happened. Several scripts may follow one another in the same session.
  bool PlayFile(const std::filesystem::path& file);
  bool Play(const ScriptFile& script);

  const std::string& Failure() const { return failure_; }
  const std::string& Source() const { return source_; }  // where the figures of the last script come from
  const std::vector<Comparison>& Comparisons() const { return host_.Comparisons(); }
  Session& PlayedSession() { return session_; }
  OpenDocuments& PlayedDocuments() { return documents_; }

  // From here on everything that is done is written down.
  void Record() { recorder_.Start(); }
  std::string Recording() { return recorder_.Text(); }

 private:
  void Do(const ScriptStep& step);
  void Run(const ScriptStep& step);
  void Open(const ScriptStep& step);
  void Save(const ScriptStep& step);
  void Mark(const ScriptStep& step);
  void Setting(const ScriptStep& step);
  void Use(const ScriptStep& step);
  void Close(const ScriptStep& step);
  bool ApplySetting(std::string_view section, std::string_view key, std::string_view value);

  OpenDocuments documents_;
  IniSettings settings_;
  ScriptHost host_;
  Recorder recorder_;  // between the commands and the script
  Session session_;
  std::filesystem::path folder_;  // of the script that plays
  Form* inUse_ = nullptr;         // the modeless form that steps outside of a run act on
  bool marked_ = false;           // the next run takes what is marked
  std::string failure_;
  std::string source_;
};

}  // namespace tellurix
