#include "shell/Recorder.h"

#include <fmt/format.h>

#include <algorithm>

#include "host/Script.h"
#include "numeric/Text.h"
#include "workbook/Workbook.h"

namespace tellurix {

namespace {

// How a control is named: by caption where it has one that no other control shares, else by id.
std::string ControlName(const Form& form, const Control& control) {
  const std::string caption = PlainCaption(control.caption);
  if (!caption.empty() && form.FindByCaption(caption) == &control) {
    const auto shared = std::ranges::count_if(form.Controls(), [&](const Control& other) {
      return other.kind != ControlKind::Label && PlainCaption(other.caption) == caption;
    });
    if (shared == 1) return QuotedText(caption);
  }
  return "#" + control.id;
}

std::string SetText(const Form& form, const Control& control, const std::string& value) {
  if (control.kind == ControlKind::Check || control.kind == ControlKind::Radio) {
    return fmt::format("set {} {}", ControlName(form, control), control.checked ? "on" : "off");
  }
  return fmt::format("set {} {}", ControlName(form, control), ScriptText(value));
}

}  // namespace

void Recorder::Write(int depth, std::string_view step) {
  if (recording_) lines_.push_back(std::string(static_cast<std::size_t>(2 * depth), ' ') + std::string(step));
}

std::string Recorder::Text() {
  if (edits_) edits_->WriteDown();
  std::string text;
  for (const std::string& line : lines_) text += line + "\n";
  return text;
}

void Recorder::Start() {
  recording_ = true;
  typing_ = {};
  edits_ = std::make_unique<HandEdits>(documents_, [this](const std::string& step) { Write(editDepth_, step); });
  edits_->Start();
}

void Recorder::Stop() {
  if (edits_) edits_->WriteDown();
  edits_.reset();
  recording_ = false;
}

void Recorder::Note(std::string_view step) {
  if (edits_) edits_->WriteDown();
  Write(0, step);
}

void Recorder::NoteRun(std::string_view path) {
  Note("run " + QuotedText(path));
  runLine_ = lines_.empty() ? 0 : lines_.size() - 1;
  if (edits_) edits_->CommandActs();
}

void Recorder::NoteRunEnded() {
  if (edits_) edits_->PersonActs();
}

void Recorder::Opened(Workbook& workbook) {
  if (edits_) edits_->Opened(workbook);
}

void Recorder::Opened(const Report& report) {
  if (edits_) edits_->Opened(report);
}

void Recorder::Closing(const Workbook& workbook) {
  if (edits_) edits_->Closing(workbook);
}

void Recorder::Closing(const Report& report) {
  if (edits_) edits_->Closing(report);
}

void Recorder::NoteSetting(std::string_view section, std::string_view key, std::string_view value) {
  Note(fmt::format("setting {}.{} {}", section, key, ScriptText(value)));
}

Reply Recorder::ShowMessage(const Message& message) {
  const Reply reply = inner_.ShowMessage(message);
  Write(1, "expect message " + QuotedText(message.text));
  if (message.Buttons() != OkOnly) {
    Write(1, reply == Reply::Yes      ? "answer Yes"
             : reply == Reply::No     ? "answer No"
             : reply == Reply::Cancel ? "answer Cancel"
                                      : "answer OK");
  }
  return reply;
}

// What is typed comes letter by letter; the last word counts.
void Recorder::WriteSet(const Form& form, const Control& control, const std::string& value, int depth) {
  const bool isTyped = control.kind == ControlKind::Text || control.editable;
  const Typing typing{&form, control.id, lines_.size()};
  if (recording_ && isTyped && typing == typing_) lines_.pop_back();
  Write(depth, SetText(form, control, value));
  typing_ = {&form, control.id, lines_.size()};
}

void Recorder::WriteAction(const Form& form, const FormAction& action, int depth) {
  const Control* control = form.Find(action.id);
  switch (action.kind) {
    case FormAction::Kind::Close:
      Write(depth, "cancel");
      return;
    case FormAction::Kind::Set:
      if (control) WriteSet(form, *control, action.value, depth);
      return;
    case FormAction::Kind::Press:
      if (control) {
        Write(depth,
              control->role == ButtonRole::Default ? std::string("press OK") : "press " + ControlName(form, *control));
      }
      return;
    case FormAction::Kind::Focus:
      Write(depth, "focus #" + action.id);
      return;
    case FormAction::Kind::Activate:
      Write(depth, "activate #" + action.id);
      return;
    case FormAction::Kind::Enter: {
      std::string step = "enter #" + action.id;
      for (std::size_t row = 0; row < action.cells.size(); ++row) {
        if (row > 0) step += " /";
        for (const std::string& cell : action.cells[row]) step += " " + ScriptText(cell);
      }
      Write(depth, step);
    }
  }
}

void Recorder::Listen(Form& form, int depth) {
  form.listener = [this, depth](Form& acted, const FormAction& action) {
    if (depth == 0 && modelessInUse_ != acted.title) {
      modelessInUse_ = acted.title;
      Note("use " + QuotedText(acted.title));
    }
    WriteAction(acted, action, depth);
  };
}

bool Recorder::RunForm(Form& form) {
  // The two simplest prompts have words of their own, written when they are answered.
  if (form.Name() == "InpFrm" || form.Name() == "ListForm") {
    const bool accepted = inner_.RunForm(form);
    Write(1, !accepted                 ? std::string("cancel")
             : form.Name() == "InpFrm" ? "type " + QuotedText(form.ValueOf("Text"))
                                       : "pick " + QuotedText(form.ValueOf("List")));
    return accepted;
  }
  Listen(form, 1);
  return inner_.RunForm(form);
}

void Recorder::ShowForm(std::shared_ptr<Form> form) {
  Listen(*form, 0);
  modelessInUse_.clear();
  inner_.ShowForm(std::move(form));
}

void Recorder::WriteMarks() {
  const Workbook* workbook = documents_.ActiveWorkbook();
  if (!workbook) return;
  std::string step = "select";
  for (int i = 0; i < workbook->SelectionCount(); ++i) {
    const std::string range = RangeText(workbook->GetSelection(i));
    step +=
        " " + (workbook->SheetCount() == 1 ? range : ScriptText(workbook->SheetName(workbook->Sheet()) + "!" + range));
  }
  Write(1, step);
}

SelectionReply Recorder::WaitForSelection(const SelectionRequest& request) {
  // The documents are the person's while the bar is up.
  if (edits_) edits_->PersonActs();
  editDepth_ = 1;
  const SelectionReply reply = inner_.WaitForSelection(request);
  if (edits_) {
    edits_->WriteDown();
    edits_->CommandActs();
  }
  editDepth_ = 0;
  if (reply.batch != request.batch) Write(1, reply.batch ? "batch on" : "batch off");
  switch (reply.answer) {
    case SelectionReply::Answer::Ok:
      WriteMarks();
      break;
    case SelectionReply::Answer::Cancel:
      Write(1, "cancel");
      break;
    case SelectionReply::Answer::Restart:
      Write(1, request.useGroupId ? "groups by column" : "groups by identifier");
      break;
  }
  return reply;
}

void Recorder::RangeTaken(const SelectionRequest& request) {
  WriteMarks();
  inner_.RangeTaken(request);
}

// The seed has to be in force before the run begins.
void Recorder::SeedTaken(int seed) {
  if (recording_) {
    lines_.insert(lines_.begin() + static_cast<std::ptrdiff_t>(runLine_), "seed " + std::to_string(seed));
    ++runLine_;
  }
  inner_.SeedTaken(seed);
}

std::optional<FileChoice> Recorder::ChooseFile(const FileRequest& request) {
  auto file = inner_.ChooseFile(request);
  std::string step = file ? "file " + QuotedText(file->path) : std::string("cancel");
  // The filter tells apart what a name leaves open.
  const auto filters = Split(request.filter, '|');
  if (file && request.save && file->filter >= 0 && filters.size() > 2) {
    step += " " + QuotedText(filters.at(2 * static_cast<std::size_t>(file->filter)));
  }
  Write(1, step);
  return file;
}

}  // namespace tellurix
