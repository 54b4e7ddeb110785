#include "shell/ScriptPlayer.h"

#include <fmt/format.h>

#include <algorithm>

#include "numeric/Text.h"
#include "session/SessionSettings.h"
#include "shell/Dispatch.h"
#include "shell/DocumentFiles.h"
#include "shell/FileCommands.h"
#include "shell/ScriptEdits.h"

namespace tellurix {

namespace fs = std::filesystem;

ScriptPlayer::ScriptPlayer(Paths paths)
    : recorder_(host_, documents_), session_(recorder_, documents_, settings_, std::move(paths)) {
  host_.Serve(session_);
  documents_.onWorkbookOpened = [this](Workbook& workbook) { recorder_.Opened(workbook); };
  documents_.onReportOpened = [this](Report& report) { recorder_.Opened(report); };
  documents_.onWorkbookClosing = [this](Workbook& workbook) { recorder_.Closing(workbook); };
  documents_.onReportClosing = [this](Report& report) { recorder_.Closing(report); };
  LoadSettings(session_);
}

bool ScriptPlayer::ApplySetting(std::string_view section, std::string_view key, std::string_view value) {
  const bool isKnown = std::ranges::any_of(SettingKeys(), [&](const SettingKey& known) {
    return EqualNoCase(known.section, section) && EqualNoCase(known.key, key);
  });
  if (!isKnown) return false;
  settings_.SetIniValue(section, key, value);
  LoadSettings(session_);
  recorder_.NoteSetting(section, key, value);
  return true;
}

bool ScriptPlayer::SetSetting(std::string_view text) {
  const auto equals = text.find('=');
  const auto dot = text.find('.');
  if (equals == std::string_view::npos || dot == std::string_view::npos || dot > equals) return false;
  return ApplySetting(text.substr(0, dot), text.substr(dot + 1, equals - dot - 1), text.substr(equals + 1));
}

bool ScriptPlayer::PlayFile(const fs::path& file) {
  std::string bytes, error;
  ScriptFile script;
  if (!ReadWholeFile(file, bytes, error) || !ReadScript(bytes, file.string(), script, error)) {
    failure_ = error;
    return false;
  }
  return Play(script);
}

bool ScriptPlayer::Play(const ScriptFile& script) {
  folder_ = fs::path(script.file).parent_path();
  source_ = script.source;
  host_.Load(script);
  while (!host_.Failed() && host_.Peek()) Do(host_.Take());
  failure_ = host_.Failure();
  return failure_.empty();
}

void ScriptPlayer::Do(const ScriptStep& step) {
  if (step.Is("run")) return Run(step);
  if (step.Is("expect")) return host_.Check(step);
  if (step.Is("open")) return Open(step);
  if (step.Is("save")) return Save(step);
  if (step.Is("mark")) return Mark(step);
  if (step.Is("setting")) return Setting(step);
  if (step.Is("use")) return Use(step);
  if (step.Is("close")) return Close(step);
  if (IsEditStep(step)) {
    host_.Edit(step);
    return;
  }
  const std::string object = step.words.size() > 1 ? step.words[1].text : "";
  if (step.Is("new") && object == "workbook") {
    NewDocument(session_, DocumentKind::Workbook);
    return;
  }
  if (step.Is("new") && object == "report") {
    NewDocument(session_, DocumentKind::Report);
    return;
  }
  if (step.Is("seed")) {
    const int seed = ParseInteger(object);
    if (seed < 1) return host_.Fail("a whole number above 0 is wanted");
    session_.AutomaticSeed = seed;
    return recorder_.Note("seed " + std::to_string(seed));
  }
  if (inUse_ && inUse_->IsOpen()) {
    for (const char* verb : {"set", "enter", "focus", "activate", "press", "type", "pick", "cancel"}) {
      if (step.Is(verb)) {
        host_.ActOn(*inUse_, step);
        return;
      }
    }
  }
  for (const char* verb : {"select", "groups", "batch", "set", "enter", "focus", "activate", "press", "type", "pick",
                           "answer", "file", "cancel"}) {
    if (step.Is(verb)) return host_.Fail(fmt::format("nothing asks for this: {}", StepText(step)));
  }
  host_.Fail(fmt::format("no such step: {}", StepText(step)));
}

void ScriptPlayer::Run(const ScriptStep& step) {
  if (step.words.size() != 2) return host_.Fail("one command is wanted");
  const MenuEntry* entry = FindCommand(step.words[1].text);
  if (!entry) return host_.Fail(fmt::format("there is no command {}", QuotedText(step.words[1].text)));
  if (!entry->command) return host_.Fail(fmt::format("{} has no command yet", QuotedText(entry->path)));
  if (!marked_) session_.data.ClearGridSelection();
  marked_ = false;
  session_.data.Batch = false;
  const std::size_t firstRun = session_.results.Runs().size();
  recorder_.NoteRun(entry->path);
  RunCommand(session_, *entry);
  recorder_.NoteRunEnded();
  for (std::size_t i = firstRun; i < session_.results.Runs().size(); ++i) {
    const std::string misplaced = MisplacedFields(session_.results.Runs()[i]);
    if (!misplaced.empty()) host_.Fail(misplaced);
  }
}

void ScriptPlayer::Open(const ScriptStep& step) {
  if (step.words.size() != 2) return host_.Fail("one file is wanted");
  const fs::path named = step.words[1].text;
  fs::path file = folder_ / named;
  std::error_code error;
  if (!fs::exists(file, error)) file = named;  // not beside the script: in the working folder
  OpenFile(session_, file);                    // a message that the script does not expect fails it
}

void ScriptPlayer::Save(const ScriptStep& step) {
  if (step.words.size() != 3) return host_.Fail("\"save report FILE\" or \"save workbook FILE\" is wanted");
  const fs::path file = step.words[2].text;
  std::string problem;
  if (step.words[1].text == "report") {
    const Report* report = documents_.ActiveReport();
    if (!report) return host_.Fail("no report is open");
    if (!SaveReport(*report, file, problem)) return host_.Fail(problem);
  } else if (step.words[1].text == "workbook") {
    const Workbook* workbook = documents_.ActiveWorkbook();
    if (!workbook) return host_.Fail("no workbook is open");
    if (!SaveWorkbook(*workbook, file, session_.options.regional, problem)) return host_.Fail(problem);
  } else {
    return host_.Fail(fmt::format("cannot save a {}", QuotedText(step.words[1].text)));
  }
  recorder_.Note(fmt::format("save {} {}", step.words[1].text, QuotedText(file.string())));
}

void ScriptPlayer::Mark(const ScriptStep& step) { marked_ = host_.MarkWords(step, 1, step.words.size()); }

void ScriptPlayer::Setting(const ScriptStep& step) {
  const std::string& name = step.words.size() == 3 ? step.words[1].text : "";
  const auto dot = name.find('.');
  if (dot == std::string::npos) return host_.Fail("\"setting Section.Key value\" is wanted");
  if (!ApplySetting(name.substr(0, dot), name.substr(dot + 1), step.words[2].text)) {
    host_.Fail(fmt::format("there is no setting {}", name));
  }
}

void ScriptPlayer::Use(const ScriptStep& step) {
  inUse_ = step.words.size() == 2 ? host_.Modeless(step.words[1].text) : nullptr;
  if (!inUse_) host_.Fail("no such form is open");
}

// The active document, or the one of this number in the order of opening, whether it has changed or not.
void ScriptPlayer::Close(const ScriptStep& step) {
  const bool isReport = step.words.size() > 1 && EqualNoCase(step.words[1].text, "report");
  if (!isReport && !(step.words.size() > 1 && EqualNoCase(step.words[1].text, "workbook"))) {
    return host_.Fail("\"close workbook\" or \"close report\" is wanted");
  }
  const int count = isReport ? documents_.ReportCount() : documents_.WorkbookCount();
  int index = count;
  if (step.words.size() > 2) {
    index = ParseInteger(step.words[2].text) - 1;
  } else if (isReport && documents_.ActiveReport()) {
    index = documents_.IndexOf(*documents_.ActiveReport());
  } else if (!isReport && documents_.ActiveWorkbook()) {
    index = documents_.IndexOf(*documents_.ActiveWorkbook());
  }
  if (index < 0 || index >= count) return host_.Fail(fmt::format("there is no such {}", step.words[1].text));
  if (isReport) {
    documents_.CloseReport(documents_.ReportAt(index));
  } else {
    documents_.CloseWorkbook(documents_.WorkbookAt(index));
  }
}

}  // namespace tellurix
