// The one widget that shows any Form.
#pragma once

#include <QDialog>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "host/Form.h"

class QButtonGroup;
class QLabel;

namespace tellurix {

class FormDialog : public QDialog {
  Q_OBJECT

 public:
  // Shows `form`, which must outlive the dialog, and acts on it only through its own operations. `showHelp` is told the
  // form's help number when help is asked for.
  FormDialog(Form& form, QWidget* owner, std::function<void(int)> showHelp = {});
  ~FormDialog() override;

  // The widget that shows a control; null for none.
  QWidget* WidgetOf(std::string_view id) const;

  // Centred over the owner, pushed back onto the screen.
  static void PlaceOver(QWidget& window, const QWidget* owner);

  void reject() override;  // Escape and the window's close box: the form's cancel

 protected:
  void closeEvent(QCloseEvent* event) override;
  void showEvent(QShowEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  struct Shown {
    std::string id;
    ControlKind kind;
    QWidget* widget = nullptr;
    QLabel* label = nullptr;
  };

  void Build();
  void GoOnTyping();
  static ControlKind ShownKind(const Control& control);
  QWidget* MakeWidget(const Control& control);
  QWidget* MakeEntry(const Control& control);
  QWidget* MakeRadio(const Control& control);
  QWidget* MakeGrid(const Control& control);
  QWidget* MakeSlider(const Control& control);
  QWidget* MakeColour(const Control& control);
  void Refresh(std::string_view id);
  void RefreshControl(const Shown& shown, const Control& control);
  void FormChanged(std::string_view id);
  Shown* Find(std::string_view id);

  Form& form_;
  std::function<void(int)> showHelp_;
  std::vector<Shown> shown_;
  std::map<std::string, QButtonGroup*> radios_;  // by the form's groups
  bool refreshing_ = false;                      // a change by the form, not by the person
};

}  // namespace tellurix
