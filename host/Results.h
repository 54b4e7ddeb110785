// The log of what commands delivered, with every figure unrounded. The merge, the prompts and the writers of columns
// fill it; the command line writes it as JSON, a script's `expect` reads it.
#pragma once

#include <string>
#include <vector>

namespace tellurix {

struct FieldResult {
  std::string name;  // as the command asked for it
  std::string mark;  // the mark of the template that was in fact filled; empty where the template leaves it out
  std::string text;
  std::vector<double> numbers;  // MissingValue for a missing one
};

struct TemplateResult {
  std::string file;
  std::vector<FieldResult> fields;
};

struct SelectionResult {
  std::string title;
  std::string range;  // A1 form
  int count = 0;
};

struct ColumnResult {
  std::string sheet;
  std::string title;
  std::vector<double> values;
};

// What reached a report or a dialog without a template. Its fields, where it has any, are found like those of a
// template with the text's name.
struct TextResult {
  std::string text;
  std::vector<double> numbers;
  std::string name;
  std::vector<FieldResult> fields;
};

struct PictureSeries {
  std::string name;
  std::vector<double> values;
};

struct PictureResult {
  std::string title;
  std::vector<PictureSeries> series;
};

struct MessageResult {
  std::string title;
  std::string text;
  std::string answer;
};

enum class RunStatus { Done, Cancelled, Failed };

// One run of one command.
struct RunResult {
  std::string entry;
  std::string path;
  RunStatus status = RunStatus::Cancelled;  // once it has ended
  bool running = true;
  bool delivered = false;  // something reached a report, a sheet or a picture
  std::vector<SelectionResult> selection;
  std::vector<TemplateResult> templates;
  std::vector<TextResult> texts;
  std::vector<ColumnResult> columns;
  std::vector<PictureResult> pictures;
  std::vector<MessageResult> messages;
};

class ResultsLog {
 public:
  // Opens the record of a run; everything logged goes to the newest one.
  RunResult& Begin(std::string entry, std::string path) {
    runs_.emplace_back();
    runs_.back().entry = std::move(entry);
    runs_.back().path = std::move(path);
    return runs_.back();
  }

  // The newest run; an unnamed one where nothing has run yet.
  RunResult& Current() {
    if (runs_.empty()) Begin("", "");
    return runs_.back();
  }

  // The run that a look from outside means: the newest one, or the one before while that has yet to select anything.
  const RunResult& Latest() {
    const RunResult& run = Current();
    return run.running && run.selection.empty() && run.messages.empty() && !run.delivered && runs_.size() > 1
               ? runs_[runs_.size() - 2]
               : run;
  }

  const std::vector<RunResult>& Runs() const { return runs_; }

 private:
  std::vector<RunResult> runs_;
};

}  // namespace tellurix
