// Writes down in the script language what is done, for playing it again. It stands between the commands and the host
// that answers them.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "host/Documents.h"
#include "host/Form.h"
#include "host/Host.h"
#include "shell/HandEdits.h"

namespace tellurix {

class Recorder : public Host {
 public:
  Recorder(Host& inner, Documents& documents) : inner_(inner), documents_(documents) {}

  // What is open comes first; the settings that differ from the defaults are the caller's to note.
  void Start();
  void Stop();
  bool IsRecording() const { return recording_; }
  std::string Text();  // the script so far, with what was done by hand until now

  // What happens outside of prompts is told by whoever does it.
  void Note(std::string_view step);
  void NoteRun(std::string_view path);
  void NoteRunEnded();
  void NoteSetting(std::string_view section, std::string_view key, std::string_view value);

  // So are the documents that come and go; what is done to them by hand is noticed.
  void Opened(Workbook& workbook);
  void Opened(const Report& report);
  void Closing(const Workbook& workbook);
  void Closing(const Report& report);

  // --- Host: passed on, and written down ---
  Reply ShowMessage(const Message& message) override;
  bool RunForm(Form& form) override;
  void ShowForm(std::shared_ptr<Form> form) override;
  SelectionReply WaitForSelection(const SelectionRequest& request) override;
  std::optional<FileChoice> ChooseFile(const FileRequest& request) override;
  void RangeTaken(const SelectionRequest& request) override;
  void SeedTaken(int seed) override;

  // --- Host: passed on ---
  bool ShowProgress(const Progress& progress) override { return inner_.ShowProgress(progress); }
  void ShowHelp(int topic) override { inner_.ShowHelp(topic); }
  bool LeftoverRangeAnswers() const override { return inner_.LeftoverRangeAnswers(); }
  void SetBusy(bool busy) override { inner_.SetBusy(busy); }
  bool IsBusy() const override { return inner_.IsBusy(); }
  void SetCommandsEnabled(bool enabled) override { inner_.SetCommandsEnabled(enabled); }
  void SetStatus(std::string_view text) override { inner_.SetStatus(text); }
  void Beep() override { inner_.Beep(); }
  void SetClipboard(std::string_view text) override { inner_.SetClipboard(text); }
  std::string Clipboard() override { return inner_.Clipboard(); }
  bool RunProgram(std::string_view commandLine) override { return inner_.RunProgram(commandLine); }

 private:
  void Write(int depth, std::string_view step);
  void Listen(Form& form, int depth);
  void WriteSet(const Form& form, const Control& control, const std::string& value, int depth);
  void WriteAction(const Form& form, const FormAction& action, int depth);
  void WriteMarks();

  // The control that was set last, and the lines with that step.
  struct Typing {
    const Form* form = nullptr;
    std::string id;
    std::size_t lines = 0;
    bool operator==(const Typing&) const = default;
  };

  Host& inner_;
  Documents& documents_;
  bool recording_ = false;
  int editDepth_ = 0;                 // of what is done by hand
  std::unique_ptr<HandEdits> edits_;  // while recording
  std::vector<std::string> lines_;
  std::size_t runLine_ = 0;  // where the last run begins
  Typing typing_;
  std::string modelessInUse_;  // title of the modeless form that acted last
};

}  // namespace tellurix
