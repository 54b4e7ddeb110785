// A person for tests: answers from queues, and notes what was asked. Documents and settings in memory go with it.
#pragma once

#include <gtest/gtest.h>

#include <deque>
#include <functional>
#include <initializer_list>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "host/Documents.h"
#include "host/Form.h"
#include "host/Host.h"
#include "host/Settings.h"
#include "report/Report.h"
#include "workbook/Workbook.h"

namespace tellurix {

class FakeHost : public Host {
 public:
  // --- answers, each used once, in order ---
  std::deque<Reply> replies;                     // to message boxes that offer a choice
  std::deque<std::function<void(Form&)>> forms;  // acts on the next form through Set, Press and Close
  std::deque<std::function<SelectionReply()>> selections;
  std::deque<FileChoice> files;  // none: the dialog is cancelled
  bool leftoverRangeAnswers = true;

  // --- what was asked ---
  std::vector<Message> messages;
  std::vector<SelectionRequest> requests;
  std::vector<std::string> formTitles;
  std::vector<FileRequest> fileRequests;
  int rangesTaken = 0;
  int beeps = 0;
  bool busy = false;
  bool busyWhenAsked = false;  // the hourglass stood over a question
  bool commandsEnabled = true;

  std::string LastMessage() const { return messages.empty() ? "" : messages.back().text; }

  // Whether every answer was used.
  bool AllUsed() const { return replies.empty() && forms.empty() && selections.empty(); }

  Reply ShowMessage(const Message& message) override {
    busyWhenAsked = busyWhenAsked || busy;
    messages.push_back(message);
    if (message.Buttons() == OkOnly) return Reply::Ok;
    if (replies.empty()) {
      ADD_FAILURE() << "nobody answers: " << message.text;
      throw std::runtime_error("no answer");
    }
    return Next(replies);
  }

  bool RunForm(Form& form) override {
    busyWhenAsked = busyWhenAsked || busy;
    formTitles.push_back(form.title);
    if (forms.empty()) {
      ADD_FAILURE() << "nobody answers the form " << form.title;
      throw std::runtime_error("no answer");
    }
    form.Open();
    Next(forms)(form);
    EXPECT_FALSE(form.IsOpen()) << form.title << " stands open";
    return form.Accepted();
  }

  SelectionReply WaitForSelection(const SelectionRequest& request) override {
    busyWhenAsked = busyWhenAsked || busy;
    EXPECT_FALSE(commandsEnabled) << "a second command could start";
    requests.push_back(request);
    if (selections.empty()) {
      ADD_FAILURE() << "nobody answers: " << request.prompt;
      throw std::runtime_error("no answer");
    }
    return Next(selections)();
  }

  bool LeftoverRangeAnswers() const override { return leftoverRangeAnswers; }
  void RangeTaken(const SelectionRequest&) override { ++rangesTaken; }
  void SetBusy(bool nowBusy) override { busy = nowBusy; }
  bool IsBusy() const override { return busy; }
  void SetCommandsEnabled(bool enabled) override { commandsEnabled = enabled; }
  void Beep() override { ++beeps; }
  std::optional<FileChoice> ChooseFile(const FileRequest& request) override {
    fileRequests.push_back(request);
    if (files.empty()) return std::nullopt;
    return Next(files);
  }
  bool ShowProgress(const Progress&) override { return progressGoesOn; }
  bool progressGoesOn = true;

  void ShowForm(std::shared_ptr<Form>) override {}
  void ShowHelp(int) override {}
  void SetStatus(std::string_view) override {}
  void SetClipboard(std::string_view) override {}
  std::string Clipboard() override { return {}; }
  bool RunProgram(std::string_view) override { return false; }

 private:
  template <typename Answers>
  static typename Answers::value_type Next(Answers& answers) {
    auto answer = std::move(answers.front());
    answers.pop_front();
    return answer;
  }
};

class FakeDocuments : public Documents {
 public:
  int WorkbookCount() const override { return static_cast<int>(books_.size()); }
  Workbook& WorkbookAt(int index) override { return *books_.at(static_cast<std::size_t>(index)); }
  std::string WorkbookName(int index) const override { return "Book" + std::to_string(index + 1); }
  std::vector<std::string> SheetNames(int index) const override {
    std::vector<std::string> names;
    const Workbook& book = *books_.at(static_cast<std::size_t>(index));
    for (int sheet = 1; sheet <= book.SheetCount(); ++sheet) names.push_back(book.SheetName(sheet));
    return names;
  }
  Workbook* ActiveWorkbook() override { return activeBook_ < 0 ? nullptr : &WorkbookAt(activeBook_); }
  Workbook& NewWorkbook() override {
    activeBook_ = WorkbookCount();
    return *books_.emplace_back(std::make_unique<Workbook>());
  }
  Workbook& AddNewWorkbook(std::unique_ptr<Workbook> workbook) override { return AddWorkbook(std::move(workbook)); }
  Workbook& AddWorkbook(std::unique_ptr<Workbook> workbook) override {
    activeBook_ = WorkbookCount();
    return *books_.emplace_back(std::move(workbook));
  }
  void CloseWorkbook(const Workbook& workbook) override {
    std::erase_if(books_, [&](const auto& book) { return book.get() == &workbook; });
    activeBook_ = WorkbookCount() - 1;
  }
  void ActivateWorkbook(int index) override { activeBook_ = index; }

  int ReportCount() const override { return static_cast<int>(reports_.size()); }
  Report& ReportAt(int index) override { return *reports_.at(static_cast<std::size_t>(index)); }
  std::string ReportName(int index) const override { return "Report" + std::to_string(index + 1); }
  Report* ActiveReport() override { return activeReport_ < 0 ? nullptr : &ReportAt(activeReport_); }
  Report& NewReport() override {
    activeReport_ = ReportCount();
    return *reports_.emplace_back(std::make_unique<Report>());
  }
  Report& AddReport(std::unique_ptr<Report> report) override {
    activeReport_ = ReportCount();
    return *reports_.emplace_back(std::move(report));
  }
  void CloseReport(const Report& report) override {
    std::erase_if(reports_, [&](const auto& open) { return open.get() == &report; });
    activeReport_ = ReportCount() - 1;
  }
  void ActivateReport(int index) override { activeReport_ = index; }

 private:
  std::vector<std::unique_ptr<Workbook>> books_;
  std::vector<std::unique_ptr<Report>> reports_;
  int activeBook_ = -1;
  int activeReport_ = -1;
};

class FakeSettings : public Settings {
 public:
  std::map<std::string, std::string> values;  // by "Section.Key"

  std::string GetIniValue(std::string_view section, std::string_view key,
                          std::string_view defaultValue) const override {
    const auto found = values.find(std::string(section) + "." + std::string(key));
    return found == values.end() ? std::string(defaultValue) : found->second;
  }
  void SetIniValue(std::string_view section, std::string_view key, std::string_view value) override {
    values[std::string(section) + "." + std::string(key)] = value;
  }
};

// Cells from a corner on: what reads as a number is one, an empty text stays empty; a quote at the front forces text.
inline void Fill(GridStore& grid, int row, int column, const std::vector<std::vector<std::string>>& lines) {
  for (std::size_t i = 0; i < lines.size(); ++i) {
    for (std::size_t k = 0; k < lines[i].size(); ++k) {
      const std::string& text = lines[i][k];
      const int r = row + static_cast<int>(i), c = column + static_cast<int>(k);
      char* end = nullptr;
      const double number = std::strtod(text.c_str(), &end);
      if (!text.empty() && *end == '\0') {
        grid.NumberRC(r, c, number);
      } else if (!text.empty()) {
        grid.TextRC(r, c, text.front() == '"' ? std::string_view(text).substr(1) : std::string_view(text));
      }
    }
  }
}

// Marks ranges in their order, "A1:A5" each.
inline void Mark(GridStore& grid, std::initializer_list<const char*> ranges) {
  bool first = true;
  for (const char* text : ranges) {
    CellRange range;
    ASSERT_TRUE(ReadRange(text, range)) << text;
    first ? grid.SetSelection(range) : grid.AddSelection(range);
    first = false;
  }
}

}  // namespace tellurix
