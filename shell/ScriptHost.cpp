#include "shell/ScriptHost.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <filesystem>

#include "numeric/Text.h"
#include "shell/ScriptEdits.h"
#include "workbook/CellReading.h"
#include "workbook/Workbook.h"

namespace tellurix {

namespace {

constexpr int TitleSearchRows = 3;  // titles stand at most this far down the sheet

std::optional<Reply> ReadReply(std::string_view word) {
  if (EqualNoCase(word, "OK")) return Reply::Ok;
  if (EqualNoCase(word, "Cancel")) return Reply::Cancel;
  if (EqualNoCase(word, "Yes")) return Reply::Yes;
  if (EqualNoCase(word, "No")) return Reply::No;
  return std::nullopt;
}

// What leaves everything as it was.
Reply SafeReply(const Message& message) {
  for (const Reply reply : {Reply::Cancel, Reply::No}) {
    if (message.Offers(reply)) return reply;
  }
  return Reply::Ok;
}

const char* ReplyText(Reply reply) {
  switch (reply) {
    case Reply::Cancel:
      return "Cancel";
    case Reply::Yes:
      return "Yes";
    case Reply::No:
      return "No";
    default:
      return "OK";
  }
}

std::string WordText(const ScriptWord& word) { return word.quoted ? QuotedText(word.text) : word.text; }

// The captions of what can be set or pressed.
std::string CaptionsOf(const Form& form) {
  std::string captions;
  for (const Control& control : form.Controls()) {
    if (control.kind == ControlKind::Label || !control.visible) continue;
    if (!captions.empty()) captions += ", ";
    captions += control.caption.empty() ? "#" + control.id : QuotedText(PlainCaption(control.caption));
  }
  return captions;
}

// The place of the filter whose caption begins like this; -1 when there is none.
int FilterNumber(const FileRequest& request, std::string_view caption) {
  const auto parts = Split(request.filter, '|');
  for (std::size_t i = 0; i + 1 < parts.size(); i += 2) {
    if (StartsWithNoCase(parts[i], caption)) return static_cast<int>(i / 2);
  }
  return -1;
}

}  // namespace

std::string StepText(const ScriptStep& step) {
  std::string text;
  for (const ScriptWord& word : step.words) text += (text.empty() ? "" : " ") + WordText(word);
  return text;
}

void ScriptHost::Load(const ScriptFile& script) {
  script_ = script;
  position_ = 0;
  line_ = 0;
  failure_.clear();
}

const ScriptStep& ScriptHost::Take() {
  const ScriptStep& step = script_.steps[position_++];
  line_ = step.line;
  return step;
}

void ScriptHost::Fail(std::string_view problem) { FailAt(line_, problem); }

void ScriptHost::FailAt(int line, std::string_view problem) {
  if (failure_.empty()) failure_ = fmt::format("{}:{}: {}", script_.file, line, problem);
}

void ScriptHost::Check(const ScriptStep& step) {
  std::string problem;
  if (!CheckExpectation(*session_, step, comparisons_, problem)) FailAt(step.line, problem);
}

const ScriptStep* ScriptHost::NextAnswer(std::string_view asked, std::initializer_list<std::string_view> verbs,
                                         bool edits) {
  while (!Failed()) {
    const ScriptStep* step = Peek();
    if (!step) {
      Fail(fmt::format("{} is asked, but the script ends here", asked));
      break;
    }
    if (step->Is("expect") && !(step->words.size() > 1 && EqualNoCase(step->words[1].text, "message"))) {
      Check(Take());
      continue;
    }
    if (edits && IsEditStep(*step)) {
      Edit(Take());
      continue;
    }
    for (const std::string_view verb : verbs) {
      if (step->Is(verb)) return &Take();
    }
    FailAt(step->line, fmt::format("{} is asked, but the next step is: {}", asked, StepText(*step)));
  }
  return nullptr;
}

bool ScriptHost::Edit(const ScriptStep& step) {
  std::string problem;
  if (DoEditStep(session_->documents, session_->options.regional, step, problem)) return true;
  Fail(problem);
  return false;
}

// ---------------------------------------------------------------------------------------------------------------------
// Message boxes and files
// ---------------------------------------------------------------------------------------------------------------------

Reply ScriptHost::ShowMessage(const Message& message) {
  Reply reply = SafeReply(message);
  bool answered = false, expected = false;
  while (!Failed() && !answered) {
    const ScriptStep* step = Peek();
    if (step && step->Is("expect") && step->words.size() == 3 && EqualNoCase(step->words[1].text, "message") &&
        !expected) {
      const std::string wanted = Take().words[2].text;
      if (message.text.find(wanted) == std::string::npos) {
        Fail(fmt::format("the message is {}, not {}", QuotedText(message.text), QuotedText(wanted)));
      } else {
        comparisons_.push_back({step->line, "message", wanted, wanted, true});
      }
      expected = true;
    } else if (step && step->Is("answer") && step->words.size() == 2) {
      const auto given = ReadReply(Take().words[1].text);
      if (!given || !message.Offers(*given)) {
        Fail(fmt::format("the message {} does not take this answer", QuotedText(message.text)));
      } else {
        reply = *given;
      }
      answered = true;
    } else if (expected && message.Buttons() == OkOnly) {
      answered = true;
    } else {
      Fail(fmt::format("the message {} is shown{}", QuotedText(message.text),
                       message.Buttons() == OkOnly ? "" : " and wants an answer"));
    }
  }
  if (session_) session_->results.Current().messages.push_back({message.title, message.text, ReplyText(reply)});
  return reply;
}

std::optional<FileChoice> ScriptHost::ChooseFile(const FileRequest& request) {
  const ScriptStep* step = NextAnswer(fmt::format("A file ({})", QuotedText(request.title)), {"file", "cancel"});
  if (!step || step->Is("cancel")) return std::nullopt;
  if (step->words.size() < 2 || step->words.size() > 3) {
    Fail("a file name is wanted, and perhaps its kind");
    return std::nullopt;
  }
  FileChoice choice{step->words[1].text};
  if (step->words.size() == 3) {
    choice.filter = FilterNumber(request, step->words[2].text);
    if (choice.filter < 0) {
      Fail(fmt::format("there is no kind of file {}", QuotedText(step->words[2].text)));
      return std::nullopt;
    }
  }
  // As with `open`: beside the script, else in the working folder.
  std::error_code error;
  const auto besideScript = std::filesystem::path(script_.file).parent_path() / choice.path;
  if (!request.save && std::filesystem::exists(besideScript, error)) choice.path = besideScript.string();
  return choice;
}

// ---------------------------------------------------------------------------------------------------------------------
// The selection bar
// ---------------------------------------------------------------------------------------------------------------------

bool ScriptHost::MarkWord(const ScriptWord& word, bool first) {
  Workbook* workbook = session_->documents.ActiveWorkbook();
  if (!workbook) {
    Fail("no workbook is open");
    return false;
  }
  const auto mark = [&](const CellRange& range) {
    if (first) {
      workbook->SetActiveCell(range.firstRow, range.firstColumn);
      workbook->SetSelection(range);
    } else {
      workbook->AddSelection(range);
    }
    return true;
  };
  CellRange range;
  if (!word.quoted && ReadRange(word.text, range)) return mark(range);

  // A title: a column's heading, or a text near the top of a column.
  const int lastRow = workbook->LastRow();
  std::vector<CellRange> found;
  for (int column = 1; column <= workbook->LastCol(); ++column) {
    if (EqualNoCase(Trim(workbook->ColText(column)), Trim(word.text))) {
      found.push_back({1, column, lastRow, column});
      continue;
    }
    for (int row = 1; row <= std::min(lastRow, TitleSearchRows); ++row) {
      if (workbook->TypeRC(row, column) == TextCell &&
          EqualNoCase(GetCellLabel(*workbook, row, column), Trim(word.text))) {
        found.push_back({row, column, lastRow, column});
        break;
      }
    }
  }
  if (found.size() == 1) return mark(found.front());
  if (found.size() > 1) {
    Fail(fmt::format("{} is the title of several columns: name a range", QuotedText(word.text)));
    return false;
  }
  if (const auto bang = word.text.rfind('!'); bang != std::string::npos) {
    const int sheet = workbook->FindSheet(word.text.substr(0, bang));
    if (sheet > 0 && ReadRange(word.text.substr(bang + 1), range)) {
      if (workbook->Sheet() != sheet) workbook->Sheet(sheet);
      return mark(range);
    }
  }
  if (ReadRange(word.text, range)) return mark(range);
  Fail(fmt::format("{} is neither a range nor the title of a column", WordText(word)));
  return false;
}

bool ScriptHost::MarkWords(const ScriptStep& step, std::size_t from, std::size_t to) {
  if (from >= to) {
    Fail("a title or a range is wanted");
    return false;
  }
  for (std::size_t i = from; i < to; ++i) {
    if (!MarkWord(step.words[i], i == from)) return false;
  }
  return true;
}

SelectionReply ScriptHost::WaitForSelection(const SelectionRequest& request) {
  using Answer = SelectionReply::Answer;
  bool batch = request.batch;
  const auto reply = [&](Answer answer) {
    return SelectionReply{Failed() ? Answer::Cancel : answer, !Failed() && batch};
  };
  // The other radio: only where the radios are shown.
  const auto restart = [&] {
    if (!request.offersGroups)
      Fail(fmt::format("{} has no choice between columns and identifier", QuotedText(request.prompt)));
    return reply(Answer::Restart);
  };
  for (;;) {
    const std::string asked = fmt::format("A selection ({})", QuotedText(request.prompt));
    const ScriptStep* step = Peek();
    const bool byIdentifier = step && step->Is("select") && step->words.size() > 3 &&
                              step->words[step->words.size() - 2].text == "by" &&
                              step->words.back().text == "identifier";
    // The step stays: it answers the prompt that comes after the restart.
    if (byIdentifier && !request.useGroupId && !Failed()) return restart();

    step = NextAnswer(asked, {"select", "groups", "batch", "cancel"}, true);
    if (!step || step->Is("cancel")) return reply(Answer::Cancel);
    const std::string last = step->words.back().text;
    if (step->Is("batch")) {
      batch = EqualNoCase(last, "on");
    } else if (step->Is("groups")) {
      if (EqualNoCase(last, "identifier") != request.useGroupId) return restart();
    } else {
      MarkWords(*step, 1, step->words.size() - (byIdentifier ? 2 : 0));
      return reply(Answer::Ok);
    }
  }
}

// ---------------------------------------------------------------------------------------------------------------------
// Forms
// ---------------------------------------------------------------------------------------------------------------------

bool ScriptHost::RunForm(Form& form) {
  form.Open();
  while (form.IsOpen() && !Failed()) {
    const ScriptStep* step = NextAnswer(fmt::format("The form {}", QuotedText(form.title)),
                                        {"set", "enter", "focus", "activate", "press", "type", "pick", "cancel"});
    if (step) ActOn(form, *step);
  }
  if (Failed()) form.Finish(false);
  return form.Accepted();
}

void ScriptHost::ShowForm(std::shared_ptr<Form> form) {
  form->Open();
  std::erase_if(modeless_, [&](const auto& other) { return !other->IsOpen() || other == form; });
  modeless_.push_back(std::move(form));
}

Form* ScriptHost::Modeless(std::string_view title) {
  for (const auto& form : modeless_) {
    if (form->IsOpen() && EqualNoCase(form->title, title)) return form.get();
  }
  return nullptr;
}

// Reads `#id`, `"Caption"` or `"Group"/"Caption"` from word number `word` on, which moves behind it.
const Control* ScriptHost::FindControl(Form& form, const ScriptStep& step, std::size_t& word) {
  if (word >= step.words.size()) {
    Fail("a control is wanted");
    return nullptr;
  }
  const ScriptWord& name = step.words[word++];
  const Control* control = nullptr;
  if (!name.quoted && name.text.starts_with('#')) {
    control = form.Find(name.text.substr(1));
  } else if (word + 1 < step.words.size() && !step.words[word].quoted && step.words[word].text == "/") {
    control = form.FindByCaption(step.words[word + 1].text, name.text);
    word += 2;
  } else {
    control = form.FindByCaption(name.text);
  }
  if (!control) {
    Fail(fmt::format("the form {} has no {}: it has {}", QuotedText(form.title), WordText(name), CaptionsOf(form)));
  }
  return control;
}

bool ScriptHost::Pick(Form& form, const ScriptStep& step) {
  const auto list = std::ranges::find(form.Controls(), ControlKind::List, &Control::kind);
  if (list == form.Controls().end() || step.words.size() != 2) {
    Fail(list == form.Controls().end() ? "there is no list to pick from" : "one row is wanted");
    return false;
  }
  std::vector<std::string> matches;
  for (const std::string& row : list->items) {
    if (EqualNoCase(row, step.words[1].text)) {
      matches.assign(1, row);
      break;
    }
    if (StartsWithNoCase(row, step.words[1].text)) matches.push_back(row);
  }
  if (matches.size() != 1) {
    Fail(fmt::format("{} row of the list {} begins with {}", matches.empty() ? "no" : "more than one",
                     QuotedText(form.title), QuotedText(step.words[1].text)));
    return false;
  }
  const std::string id = list->id;
  form.Set(id, matches.front());
  if (const Control* button = form.DefaultButton()) form.Press(button->id);
  return true;
}

bool ScriptHost::Press(Form& form, const ScriptStep& step) {
  std::size_t word = 1;
  const Control* button = nullptr;
  if (step.words.size() > 1 && EqualNoCase(step.words[1].text, "OK") && !form.FindByCaption("OK")) {
    button = form.DefaultButton();
    word = 2;
  } else {
    button = FindControl(form, step, word);
  }
  int times = 1;
  if (word < step.words.size()) {
    const std::string& count = step.words[word].text;
    std::from_chars(count.data(), count.data() + count.size(), times);
  }
  const std::string id = button ? button->id : "";
  for (int i = 0; i < times && button && form.IsOpen() && !Failed(); ++i) {
    if (!form.Press(id)) {
      Fail(fmt::format("the button {} cannot be pressed", WordText(step.words[1])));
      return false;
    }
  }
  return button != nullptr;
}

bool ScriptHost::ActOn(Form& form, const ScriptStep& step) {
  if (step.Is("cancel")) {
    if (!form.Close()) Fail(fmt::format("the form {} does not close", QuotedText(form.title)));
    return !Failed();
  }
  if (step.Is("press")) return Press(form, step);
  if (step.Is("pick")) return Pick(form, step);
  if (step.Is("type")) {
    const auto box = std::ranges::find(form.Controls(), ControlKind::Text, &Control::kind);
    if (box == form.Controls().end() || step.words.size() != 2) {
      Fail(box == form.Controls().end() ? "there is nothing to type into" : "one text is wanted");
      return false;
    }
    form.Set(box->id, step.words[1].text);
    if (const Control* button = form.DefaultButton()) form.Press(button->id);
    return true;
  }

  std::size_t word = 1;
  const Control* control = FindControl(form, step, word);
  if (!control) return false;
  const std::string id = control->id;
  bool taken = false;
  if (step.Is("set")) {
    if (word + 1 != step.words.size()) {
      Fail("one value is wanted");
      return false;
    }
    taken = form.Set(id, step.words[word].text);
  } else if (step.Is("focus")) {
    taken = form.Focus(id);
  } else if (step.Is("activate")) {
    taken = form.Activate(id);
  } else if (step.Is("enter")) {
    std::vector<std::vector<std::string>> cells(1);
    for (; word < step.words.size(); ++word) {
      if (!step.words[word].quoted && step.words[word].text == "/") {
        cells.emplace_back();
      } else {
        cells.back().push_back(step.words[word].text);
      }
    }
    taken = form.Enter(id, std::move(cells));
  }
  if (!taken) Fail(fmt::format("{} does not take this: {}", WordText(step.words[1]), StepText(step)));
  return taken;
}

}  // namespace tellurix
