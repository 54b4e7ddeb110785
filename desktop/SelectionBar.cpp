#include "desktop/SelectionBar.h"

#include <QCheckBox>
#include <QEventLoop>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>

namespace tellurix {

SelectionBar::SelectionBar(QWidget* parent) : QFrame(parent) {
  setObjectName("Btn_Bar");
  setFrameShape(QFrame::StyledPanel);
  setAutoFillBackground(true);
  prompt_ = new QLabel("Selection message...", this);
  prompt_->setObjectName("Lab_M");
  QFont bold = prompt_->font();
  bold.setBold(true);
  prompt_->setFont(bold);
  hint_ = new QLabel("Select data in the worksheet then click OK or click the right mouse button", this);
  nonAdjoined_ = new QLabel("To select non-adjoined data, hold down Ctrl and use the mouse.", this);
  nonAdjoined_->setObjectName("Label1");
  byColumn_ = new QRadioButton("Groups by column", this);
  byColumn_->setObjectName("Option1");
  byIdentifier_ = new QRadioButton("Groups by identifier", this);
  byIdentifier_->setObjectName("Option2");
  batch_ = new QCheckBox("Batch mode", this);
  batch_->setObjectName("Batch");
  ok_ = new QPushButton("OK", this);
  ok_->setObjectName("Multi0");
  cancel_ = new QPushButton("&Cancel", this);
  cancel_->setObjectName("Multi1");

  auto* texts = new QVBoxLayout;
  texts->setSpacing(2);
  texts->addWidget(prompt_);
  texts->addWidget(hint_);
  texts->addWidget(nonAdjoined_);
  auto* groups = new QVBoxLayout;
  groups->setSpacing(2);
  groups->addWidget(byColumn_);
  groups->addWidget(byIdentifier_);
  auto* row = new QHBoxLayout(this);
  row->addLayout(texts, 1);
  row->addLayout(groups);
  row->addSpacing(12);
  row->addWidget(batch_);
  row->addSpacing(12);
  row->addWidget(ok_);
  row->addWidget(cancel_);
  // The grid keeps the keyboard: the bar takes it only when it is clicked.
  for (QWidget* widget : {static_cast<QWidget*>(ok_), static_cast<QWidget*>(cancel_), static_cast<QWidget*>(batch_),
                          static_cast<QWidget*>(byColumn_), static_cast<QWidget*>(byIdentifier_)}) {
    widget->setFocusPolicy(Qt::TabFocus);
  }
  connect(ok_, &QPushButton::clicked, this, &SelectionBar::Confirm);
  connect(cancel_, &QPushButton::clicked, this, &SelectionBar::Cancel);
  for (QRadioButton* radio : {byColumn_, byIdentifier_}) {
    connect(radio, &QRadioButton::clicked, this, [this, radio] {
      const bool inForce = (radio == byIdentifier_) == useGroupId_;
      if (!inForce) Answer(SelectionReply::Answer::Restart);
    });
  }
  hide();
}

SelectionReply SelectionBar::Wait(const SelectionRequest& request) {
  if (waiting_) return {};
  prompt_->setText(QString::fromStdString(request.prompt));
  nonAdjoined_->setVisible(request.offersGroups);
  byColumn_->setVisible(request.offersGroups);
  byIdentifier_->setVisible(request.offersGroups);
  byColumn_->setChecked(!request.useGroupId);
  byIdentifier_->setChecked(request.useGroupId);
  useGroupId_ = request.useGroupId;
  batch_->setChecked(request.batch);
  waiting_ = true;
  answered_ = false;
  show();
  emit WaitBegan();
  QEventLoop loop;
  while (!answered_) loop.processEvents(QEventLoop::WaitForMoreEvents);
  hide();
  waiting_ = false;
  emit WaitEnded();
  reply_.batch = batch_->isChecked();
  return reply_;
}

void SelectionBar::Confirm() { Answer(SelectionReply::Answer::Ok); }

void SelectionBar::Cancel() { Answer(SelectionReply::Answer::Cancel); }

void SelectionBar::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_Escape) return Cancel();
  QFrame::keyPressEvent(event);
}

void SelectionBar::Answer(SelectionReply::Answer answer) {
  if (!waiting_ || answered_) return;
  reply_.answer = answer;
  answered_ = true;
}

}  // namespace tellurix
