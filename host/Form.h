// A dialog as data. Everyone, the desktop, a script, a test, acts on it only through Set, Press, Focus, Activate, Enter
// and Close; each tells the form's listener before the dialog's own callback runs, so a recorder hears the actions in
// their order, nested prompts included. The logic of a dialog is in its callbacks and needs no window.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace tellurix {

enum class ControlKind { Label, Text, Combo, Check, Radio, List, Grid, RichText, Picture, Slider, Colour, Button };

// Role of a button in the dialog's keyboard order.
enum class ButtonRole { None, Default, Cancel };

struct Control {
  ControlKind kind = ControlKind::Label;
  std::string id;                  // stable, unique in the form
  std::string caption;             // with "&" before the access key; a label's text
  std::string group;               // radios of one group exclude one another; otherwise the frame the control stands in
  std::string value;               // text, combo, slider, colour, rich text (RTF)
  bool checked = false;            // check and radio
  int index = -1;                  // chosen row of a combo or list, 0-based
  bool editable = false;           // combo: other text than the items may be typed
  std::vector<std::string> items;  // combo and list
  std::vector<std::vector<std::string>> cells;  // grid, by row
  int readOnlyColumns = 0;                      // grid: the first columns, which are there to be read
  ButtonRole role = ButtonRole::None;
  bool repeats = false;    // a button that may repeat while held
  bool startsRow = false;  // a button of a group: the first of a row of keys
  bool visible = true;
  bool enabled = true;
};

struct FormAction {
  enum class Kind { Set, Enter, Press, Focus, Activate, Close };
  Kind kind = Kind::Set;
  std::string id;
  std::string value;
  std::vector<std::vector<std::string>> cells;  // Enter
};

class Form {
 public:
  using Listener = std::function<void(Form&, const FormAction&)>;
  using View = std::function<void(std::string_view id)>;

  Form(std::string formName, std::string formTitle);

  const std::string& Name() const { return name_; }  // the dialog's name: "OptForm", "InpFrm"
  std::string title;
  int helpContext = 0;

  // --- built by the dialog ---
  Control& Add(Control control);  // the reference holds until the next Add
  Control& AddLabel(std::string id, std::string text);
  Control& AddText(std::string id, std::string caption, std::string value);
  Control& AddCombo(std::string id, std::string caption, std::vector<std::string> items, int index);
  Control& AddCheck(std::string id, std::string caption, bool checked);
  Control& AddRadio(std::string id, std::string caption, std::string group, bool checked);
  Control& AddList(std::string id, std::string caption, std::vector<std::string> rows, int index);
  Control& AddButton(std::string id, std::string caption, ButtonRole role);

  // Called after the change, press, double-click or focus has been told and stored.
  std::function<void(const Control&)> onChange;
  std::function<void(const Control&)> onPress;
  std::function<void(const Control&)> onActivate;
  std::function<void(const Control&)> onFocus;
  // May veto a close by the window's own means or the cancel button: answers false.
  std::function<bool()> onClose;

  // --- changed by the dialog's own logic at any time; the view is told, the listener is not ---
  void Update(std::string_view id, const std::function<void(Control&)>& change);
  void Finish(bool accepted);  // closes it with this answer

  // --- acted on by a person, a script or a test; false when there is no such control or it is disabled or hidden ---
  // Check and radio: "-1", "on", "yes", "true" or their opposites; a radio that is set is put off only by another one.
  bool Set(std::string_view id, std::string_view value);
  bool Enter(std::string_view id, std::vector<std::vector<std::string>> cells);  // fills a grid from its first row
  bool Press(std::string_view id);
  bool Focus(std::string_view id);
  bool Activate(std::string_view id);
  bool Close();  // the cancel: false when vetoed; nothing for a form that is closed

  // --- looked up ---
  const std::vector<Control>& Controls() const { return controls_; }
  const Control* Find(std::string_view id) const;
  // By caption, without regard to case, access key and a trailing colon; `group` narrows when it is not empty.
  const Control* FindByCaption(std::string_view caption, std::string_view group = {}) const;
  const Control* DefaultButton() const;
  const std::string& ValueOf(std::string_view id) const;  // empty text for an unknown control
  bool IsChecked(std::string_view id) const;
  int IndexOf(std::string_view id) const;

  bool IsOpen() const { return open_; }
  bool Accepted() const { return accepted_; }
  void Open();  // before it is shown: open, unanswered

  Listener listener;  // the recorder
  View view;          // told the id of what changed, "" for the form itself

 private:
  Control* FindMutable(std::string_view id);
  Control* Usable(std::string_view id);
  void Tell(FormAction::Kind kind, std::string_view id, std::string_view value = {});
  void Show(std::string_view id);

  std::string name_;
  std::vector<Control> controls_;
  bool open_ = false;
  bool accepted_ = false;
};

// A caption without its access key: "&Select" is "Select", "&&" is "&".
std::string PlainCaption(std::string_view caption);

}  // namespace tellurix
