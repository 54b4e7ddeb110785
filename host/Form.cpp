#include "host/Form.h"

#include <algorithm>

#include "numeric/Text.h"

namespace tellurix {

namespace {

bool MeansOn(std::string_view value) {
  return value == "-1" || value == "1" || EqualNoCase(value, "on") || EqualNoCase(value, "yes") ||
         EqualNoCase(value, "true");
}

// For comparing: no trailing colon, no blanks around.
std::string CaptionKey(std::string_view caption) {
  caption = Trim(caption);
  if (caption.ends_with(':')) caption.remove_suffix(1);
  return FoldCase(Trim(caption));
}

// Whether the words name the caption, written plain ("Men & women") or with its access key ("&Men && women").
bool Names(std::string_view words, std::string_view caption) {
  const std::string plain = CaptionKey(PlainCaption(caption));
  return CaptionKey(words) == plain || CaptionKey(PlainCaption(words)) == plain;
}

}  // namespace

std::string PlainCaption(std::string_view caption) {
  std::string plain;
  for (std::size_t i = 0; i < caption.size(); ++i) {
    if (caption[i] == '&' && i + 1 < caption.size()) ++i;
    plain.push_back(caption[i]);
  }
  return plain;
}

Form::Form(std::string formName, std::string formTitle) : title(std::move(formTitle)), name_(std::move(formName)) {}

Control& Form::Add(Control control) { return controls_.emplace_back(std::move(control)); }

Control& Form::AddLabel(std::string id, std::string text) {
  return Add({.kind = ControlKind::Label, .id = std::move(id), .caption = std::move(text)});
}

Control& Form::AddText(std::string id, std::string caption, std::string value) {
  return Add(
      {.kind = ControlKind::Text, .id = std::move(id), .caption = std::move(caption), .value = std::move(value)});
}

Control& Form::AddCombo(std::string id, std::string caption, std::vector<std::string> items, int index) {
  Control combo{.kind = ControlKind::Combo, .id = std::move(id), .caption = std::move(caption)};
  if (index >= 0 && index < static_cast<int>(items.size())) {
    combo.index = index;
    combo.value = items[static_cast<std::size_t>(index)];
  }
  combo.items = std::move(items);
  return Add(std::move(combo));
}

Control& Form::AddCheck(std::string id, std::string caption, bool checked) {
  return Add({.kind = ControlKind::Check, .id = std::move(id), .caption = std::move(caption), .checked = checked});
}

Control& Form::AddRadio(std::string id, std::string caption, std::string group, bool checked) {
  return Add({.kind = ControlKind::Radio,
              .id = std::move(id),
              .caption = std::move(caption),
              .group = std::move(group),
              .checked = checked});
}

Control& Form::AddList(std::string id, std::string caption, std::vector<std::string> rows, int index) {
  Control& list = AddCombo(std::move(id), std::move(caption), std::move(rows), index);
  list.kind = ControlKind::List;
  return list;
}

Control& Form::AddButton(std::string id, std::string caption, ButtonRole role) {
  return Add({.kind = ControlKind::Button, .id = std::move(id), .caption = std::move(caption), .role = role});
}

void Form::Update(std::string_view id, const std::function<void(Control&)>& change) {
  if (Control* control = FindMutable(id)) {
    change(*control);
    Show(id);
  }
}

void Form::Open() {
  open_ = true;
  accepted_ = false;
}

void Form::Finish(bool accepted) {
  open_ = false;
  accepted_ = accepted;
  Show({});
}

bool Form::Set(std::string_view id, std::string_view value) {
  Control* control = Usable(id);
  if (!control) return false;
  switch (control->kind) {
    case ControlKind::Text:
    case ControlKind::Slider:
    case ControlKind::Colour:
    case ControlKind::RichText:
      control->value = value;
      break;
    case ControlKind::Combo:
    case ControlKind::List: {
      const auto row = std::ranges::find_if(control->items, [&](const auto& item) { return EqualNoCase(item, value); });
      if (row == control->items.end() && !control->editable) return false;
      control->index = row == control->items.end() ? -1 : static_cast<int>(row - control->items.begin());
      control->value = row == control->items.end() ? std::string(value) : *row;
      break;
    }
    case ControlKind::Check:
      control->checked = MeansOn(value);
      break;
    case ControlKind::Radio:
      if (control->checked && !MeansOn(value)) return false;  // only another one of its group takes its mark away
      control->checked = MeansOn(value);
      if (control->checked) {
        for (Control& other : controls_) {
          if (&other != control && other.kind == ControlKind::Radio && other.group == control->group) {
            other.checked = false;
            Show(other.id);
          }
        }
      }
      break;
    default:
      return false;
  }
  Tell(FormAction::Kind::Set, id, value);
  Show(id);
  if (onChange) onChange(*control);
  return true;
}

bool Form::Enter(std::string_view id, std::vector<std::vector<std::string>> cells) {
  Control* control = Usable(id);
  if (!control || control->kind != ControlKind::Grid) return false;
  for (std::size_t row = 0; row < cells.size(); ++row) {
    if (control->cells.size() <= row) control->cells.emplace_back();
    auto& target = control->cells[row];
    if (target.size() < cells[row].size()) target.resize(cells[row].size());
    std::ranges::copy(cells[row], target.begin());
  }
  if (listener) listener(*this, {FormAction::Kind::Enter, std::string(id), {}, std::move(cells)});
  Show(id);
  if (onChange) onChange(*control);
  return true;
}

bool Form::Press(std::string_view id) {
  Control* control = Usable(id);
  if (!control || control->kind != ControlKind::Button) return false;
  if (control->role == ButtonRole::Cancel) {
    Close();  // pressed all the same when that is vetoed
    return true;
  }
  Tell(FormAction::Kind::Press, id);
  if (onPress) {
    onPress(*control);
  } else if (control->role == ButtonRole::Default) {
    Finish(true);
  }
  return true;
}

bool Form::Focus(std::string_view id) {
  Control* control = Usable(id);
  if (!control) return false;
  Tell(FormAction::Kind::Focus, id);
  if (onFocus) onFocus(*control);
  return true;
}

bool Form::Activate(std::string_view id) {
  Control* control = Usable(id);
  if (!control) return false;
  Tell(FormAction::Kind::Activate, id);
  if (onActivate) onActivate(*control);
  return true;
}

bool Form::Close() {
  if (!open_) return true;  // it has its answer
  Tell(FormAction::Kind::Close, {});
  if (onClose && !onClose()) return false;
  Finish(false);
  return true;
}

const Control* Form::Find(std::string_view id) const {
  const auto found = std::ranges::find_if(controls_, [&](const Control& c) { return EqualNoCase(c.id, id); });
  return found == controls_.end() ? nullptr : &*found;
}

Control* Form::FindMutable(std::string_view id) { return const_cast<Control*>(Find(id)); }

Control* Form::Usable(std::string_view id) {
  Control* control = FindMutable(id);
  return open_ && control && control->visible && control->enabled ? control : nullptr;
}

const Control* Form::FindByCaption(std::string_view caption, std::string_view group) const {
  for (const Control& control : controls_) {
    if (control.kind == ControlKind::Label || !control.visible) continue;
    if (!group.empty() && !Names(group, control.group)) continue;
    if (Names(caption, control.caption)) return &control;
  }
  return nullptr;
}

const Control* Form::DefaultButton() const {
  const auto found = std::ranges::find_if(
      controls_, [](const Control& c) { return c.kind == ControlKind::Button && c.role == ButtonRole::Default; });
  return found == controls_.end() ? nullptr : &*found;
}

const std::string& Form::ValueOf(std::string_view id) const {
  static const std::string none;
  const Control* control = Find(id);
  return control ? control->value : none;
}

bool Form::IsChecked(std::string_view id) const {
  const Control* control = Find(id);
  return control && control->checked;
}

int Form::IndexOf(std::string_view id) const {
  const Control* control = Find(id);
  return control ? control->index : -1;
}

void Form::Tell(FormAction::Kind kind, std::string_view id, std::string_view value) {
  if (listener) listener(*this, {kind, std::string(id), std::string(value), {}});
}

void Form::Show(std::string_view id) {
  if (view) view(id);
}

}  // namespace tellurix
