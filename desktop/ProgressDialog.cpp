#include "desktop/ProgressDialog.h"

#include <QCoreApplication>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>

#include "desktop/FormDialog.h"

namespace tellurix {

namespace {

constexpr qint64 ShowsAfter = 500;  // milliseconds; what ends sooner does not flash by

}  // namespace

ProgressDialog::ProgressDialog(QWidget* owner) : QDialog(owner) {
  setObjectName("Progress");
  setWindowTitle("Tellurix Calculation Progress");
  setModal(true);
  auto* layout = new QVBoxLayout(this);
  line_ = new QLabel(this);
  layout->addWidget(line_);
  for (QLabel*& label : labels_) layout->addWidget(label = new QLabel(this));
  bar_ = new QProgressBar(this);
  bar_->setRange(0, 1000);
  layout->addWidget(bar_);
  auto* cancel = new QPushButton("&Cancel", this);
  layout->addWidget(cancel, 0, Qt::AlignRight);
  connect(cancel, &QPushButton::clicked, this, &ProgressDialog::reject);
}

bool ProgressDialog::Show(const Progress& progress) {
  if (progress.share >= 1) {
    started_.invalidate();
    cancelled_ = false;
    if (isVisible()) Leave();
    return true;
  }
  if (!started_.isValid()) started_.start();
  if (!isVisible() && !cancelled_) {
    if (started_.elapsed() < ShowsAfter) {
      // The windows are painted; nothing else can be begun meanwhile.
      QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
      return true;
    }
    FormDialog::PlaceOver(*this, parentWidget());
    show();
  }
  line_->setText(QString::fromStdString(progress.line));
  for (std::size_t i = 0; i < 3; ++i) {
    labels_[i]->setText(i < progress.labels.size() ? QString::fromStdString(progress.labels[i]) : QString());
  }
  bar_->setValue(static_cast<int>(1000 * std::clamp(progress.share, 0.0, 1.0)));
  QCoreApplication::processEvents();
  const bool goOn = !cancelled_;
  cancelled_ = false;
  return goOn;
}

void ProgressDialog::Leave() {
  hide();
  // Not every window manager gives the keys back to where they came from.
  parentWidget()->activateWindow();
}

void ProgressDialog::reject() {
  cancelled_ = true;
  Leave();
}

}  // namespace tellurix
