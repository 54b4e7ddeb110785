// Progress: a long calculation with a way out.
#pragma once

#include <QDialog>
#include <QElapsedTimer>

#include "host/Host.h"

class QLabel;
class QProgressBar;

namespace tellurix {

class ProgressDialog : public QDialog {
  Q_OBJECT

 public:
  explicit ProgressDialog(QWidget* owner);

  // Serves events and, in a calculation that takes its time, shows how far it is; false once Cancel was pressed. A
  // share of 1 ends the calculation and hides it.
  bool Show(const Progress& progress);
  void reject() override;  // Cancel: hides it, the calculation sees it at its next round

 private:
  void Leave();

  QElapsedTimer started_;  // invalid between calculations
  QLabel* line_;
  QLabel* labels_[3];
  QProgressBar* bar_;
  bool cancelled_ = false;
};

}  // namespace tellurix
