// The only door to a person. Two stand behind it: the desktop, and the one that answers from a script. The logic never
// asks which.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tellurix {

class Form;

// Answers of a message box.
enum class Reply { Ok = 1, Cancel = 2, Yes = 6, No = 7 };

// Style of a message box: one of the button sets, plus an icon, plus HelpButton when it has one.
enum MessageStyle : int {
  OkOnly = 0,
  OkCancel = 1,
  YesNoCancel = 3,
  YesNo = 4,
  ErrorIcon = 16,
  QuestionIcon = 32,
  WarningIcon = 48,
  InformationIcon = 64,
  HelpButton = 16384,
};

struct Message {
  std::string text;
  std::string title;  // empty: the application's
  int style = OkOnly;
  int helpContext = 0;

  int Buttons() const { return style & 7; }
  bool Offers(Reply reply) const;  // whether the box has a button with this answer
};

// What the selection bar shows while it waits.
struct SelectionRequest {
  std::string prompt;
  int minColumns = 1;
  int maxColumns = 1;
  bool offersGroups = false;  // the two radios and the hint on non-adjoined data are shown
  bool useGroupId = false;    // which radio is set
  bool batch = false;         // state of the batch box
  int helpContext = 0;
};

struct SelectionReply {
  enum class Answer { Ok, Cancel, Restart };  // Restart: the user chose the other radio
  Answer answer = Answer::Cancel;
  bool batch = false;
};

struct FileRequest {
  std::string title;
  std::string filter;   // "Caption|*.a;*.b|Caption|*.c"
  std::string pattern;  // of all the files that are meant: "*.a;*.b"
  std::string defaultExtension;
  std::string suggestedName;
  int filterIndex = 0;  // of the filter offered first
  bool save = false;
};

struct FileChoice {
  std::string path;
  int filter = -1;  // in force when the file was chosen; -1: unknown
};

struct Progress {
  std::string line = "Click cancel if you want to quit, otherwise please wait...";
  std::vector<std::string> labels;  // three at most
  double share = 0;                 // done, 0 to 1; 1 hides the dialog
};

// Told to long computations: a text and the share done; false means stop.
using Poll = std::function<bool(std::string_view, double)>;

class Host {
 public:
  virtual ~Host() = default;

  virtual Reply ShowMessage(const Message& message) = 0;
  virtual bool RunForm(Form& form) = 0;                   // modal; false when cancelled
  virtual void ShowForm(std::shared_ptr<Form> form) = 0;  // modeless: the calculators
  virtual SelectionReply WaitForSelection(const SelectionRequest& request) = 0;
  virtual std::optional<FileChoice> ChooseFile(const FileRequest& request) = 0;
  virtual bool ShowProgress(const Progress& progress) = 0;  // pumps events; false once Cancel was pressed
  virtual void ShowHelp(int topic) = 0;

  // Whether a range still marked from an earlier prompt of the same command may answer the next one.
  virtual bool LeftoverRangeAnswers() const { return true; }

  // Told when a range that was marked before has answered a prompt without the bar.
  virtual void RangeTaken(const SelectionRequest& request) { (void)request; }
  // A command has taken this seed for its random numbers from the clock.
  virtual void SeedTaken(int) {}

  virtual void SetBusy(bool busy) = 0;  // the hourglass
  virtual bool IsBusy() const = 0;
  virtual void SetCommandsEnabled(bool enabled) = 0;
  virtual void SetStatus(std::string_view text) = 0;
  virtual void Beep() = 0;
  virtual void SetClipboard(std::string_view text) = 0;
  virtual std::string Clipboard() = 0;
  virtual bool RunProgram(std::string_view commandLine) = 0;
};

// Shows the normal pointer while it lives, then the shape that was there before.
class NormalPointerHere {
 public:
  explicit NormalPointerHere(Host& host) : host_(host), wasBusy_(host.IsBusy()) { host_.SetBusy(false); }
  ~NormalPointerHere() { host_.SetBusy(wasBusy_); }
  NormalPointerHere(const NormalPointerHere&) = delete;
  NormalPointerHere& operator=(const NormalPointerHere&) = delete;

 private:
  Host& host_;
  bool wasBusy_;
};

}  // namespace tellurix
