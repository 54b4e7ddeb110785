// The host that answers from a script: every prompt takes the next step.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "host/Form.h"
#include "host/Host.h"
#include "host/Script.h"
#include "session/Session.h"
#include "shell/ScriptChecks.h"

namespace tellurix {

class ScriptHost : public Host {
 public:
  // The session that it answers for; named before the first step.
  void Serve(Session& session) { session_ = &session; }

  // --- the steps and where the play stands ---
  void Load(const ScriptFile& script);
  const ScriptStep* Peek() const { return position_ < script_.steps.size() ? &script_.steps[position_] : nullptr; }
  const ScriptStep& Take();
  const std::string& File() const { return script_.file; }

  // The first failure stands; from then on everything that is asked is cancelled.
  void Fail(std::string_view problem);
  void FailAt(int line, std::string_view problem);
  bool Failed() const { return !failure_.empty(); }
  const std::string& Failure() const { return failure_; }

  // Checks an `expect` step that was taken; a miss is a failure.
  void Check(const ScriptStep& step);
  const std::vector<Comparison>& Comparisons() const { return comparisons_; }

  // Marks what the words name: titles or ranges of the active workbook; false after a failure.
  bool MarkWords(const ScriptStep& step, std::size_t from, std::size_t to);

  // Does a step that edits the documents; false after a failure.
  bool Edit(const ScriptStep& step);

  // Applies one step to a form; false after a failure.
  bool ActOn(Form& form, const ScriptStep& step);
  Form* Modeless(std::string_view title);  // the open modeless form of this title

  // --- Host ---
  Reply ShowMessage(const Message& message) override;
  bool RunForm(Form& form) override;
  void ShowForm(std::shared_ptr<Form> form) override;
  SelectionReply WaitForSelection(const SelectionRequest& request) override;
  std::optional<FileChoice> ChooseFile(const FileRequest& request) override;
  bool ShowProgress(const Progress&) override { return !Failed(); }
  void ShowHelp(int) override {}
  bool LeftoverRangeAnswers() const override { return false; }
  void SetBusy(bool busy) override { busy_ = busy; }
  bool IsBusy() const override { return busy_; }
  void SetCommandsEnabled(bool) override {}
  void SetStatus(std::string_view) override {}
  void Beep() override {}
  void SetClipboard(std::string_view text) override { clipboard_ = text; }
  std::string Clipboard() override { return clipboard_; }
  bool RunProgram(std::string_view) override { return false; }  // a script starts no programs

 private:
  // The next step that answers what is asked, checks on the way done; null after a failure.
  // With `edits`, what edits the documents is done on the way too.
  const ScriptStep* NextAnswer(std::string_view asked, std::initializer_list<std::string_view> verbs,
                               bool edits = false);
  const Control* FindControl(Form& form, const ScriptStep& step, std::size_t& word);
  bool MarkWord(const ScriptWord& word, bool first);
  bool Pick(Form& form, const ScriptStep& step);
  bool Press(Form& form, const ScriptStep& step);

  Session* session_ = nullptr;
  ScriptFile script_;
  std::size_t position_ = 0;
  int line_ = 0;  // of the step taken last
  std::string failure_;
  std::vector<Comparison> comparisons_;
  std::vector<std::shared_ptr<Form>> modeless_;
  std::string clipboard_;
  bool busy_ = false;
};

// The words of a step as they would be written.
std::string StepText(const ScriptStep& step);

}  // namespace tellurix
