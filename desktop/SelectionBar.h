// Btn_Bar: the bar over the workspace that waits for the user's selection while the grid stays live.
#pragma once

#include <QFrame>

#include "host/Host.h"

class QCheckBox;
class QLabel;
class QPushButton;
class QRadioButton;

namespace tellurix {

class SelectionBar : public QFrame {
  Q_OBJECT

 public:
  explicit SelectionBar(QWidget* parent);

  // Shows the bar until it is answered, events being served meanwhile. One wait at a time: while one runs a second
  // call answers with a cancel.
  SelectionReply Wait(const SelectionRequest& request);
  bool IsWaiting() const { return waiting_; }

 public slots:
  void Confirm();  // OK, Enter in the grid, the right mouse button
  void Cancel();   // Cancel, Escape, also when the window closes

 signals:
  void WaitBegan();
  void WaitEnded();

 protected:
  void keyPressEvent(QKeyEvent* event) override;

 private:
  void Answer(SelectionReply::Answer answer);

  QLabel* prompt_;  // Lab_M
  QLabel* hint_;
  QLabel* nonAdjoined_;         // Label1
  QRadioButton* byColumn_;      // Option1
  QRadioButton* byIdentifier_;  // Option2
  QCheckBox* batch_;
  QPushButton* ok_;          // Multi 0
  QPushButton* cancel_;      // Multi 1
  bool useGroupId_ = false;  // the radio in force
  bool waiting_ = false;
  bool answered_ = false;
  SelectionReply reply_;
};

}  // namespace tellurix
