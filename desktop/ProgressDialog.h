// Progress: a long calculation with a way out.
#pragma once

#include <QDialog>

#include "host/Host.h"

class QLabel;
class QProgressBar;

namespace tellurix {

class ProgressDialog : public QDialog {
  Q_OBJECT

 public:
  explicit ProgressDialog(QWidget* owner);

  // Shows how far it is and serves events; false once Cancel was pressed. A share of 1 hides it.
  bool Show(const Progress& progress);
  void reject() override;  // Cancel: hides it, the calculation sees it at its next round

 private:
  QLabel* line_;
  QLabel* labels_[3];
  QProgressBar* bar_;
  bool cancelled_ = false;
};

}  // namespace tellurix
