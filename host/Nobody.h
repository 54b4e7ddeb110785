// Nobody in front, and settings that nobody has changed: for programs that ask nothing of a person.
#pragma once

#include <cstdio>

#include "host/Host.h"
#include "host/Settings.h"

namespace tellurix {

// Messages go to standard error, everything else is declined.
class NobodyHost : public Host {
 public:
  Reply ShowMessage(const Message& message) override {
    std::fprintf(stderr, "%s\n", message.text.c_str());
    return Reply::Ok;
  }
  bool RunForm(Form&) override { return false; }
  void ShowForm(std::shared_ptr<Form>) override {}
  SelectionReply WaitForSelection(const SelectionRequest&) override { return {}; }
  std::optional<FileChoice> ChooseFile(const FileRequest&) override { return std::nullopt; }
  bool ShowProgress(const Progress&) override { return true; }
  void ShowHelp(int) override {}
  void SetBusy(bool) override {}
  bool IsBusy() const override { return false; }
  void SetCommandsEnabled(bool) override {}
  void SetStatus(std::string_view) override {}
  void Beep() override {}
  void SetClipboard(std::string_view) override {}
  std::string Clipboard() override { return {}; }
  bool RunProgram(std::string_view) override { return false; }
};

class DefaultSettings : public Settings {
 public:
  std::string GetIniValue(std::string_view, std::string_view, std::string_view defaultValue) const override {
    return std::string(defaultValue);
  }
  void SetIniValue(std::string_view, std::string_view, std::string_view) override {}
};

}  // namespace tellurix
