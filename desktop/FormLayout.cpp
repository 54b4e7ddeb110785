#include "desktop/FormLayout.h"

#include <QGroupBox>
#include <QLabel>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <set>

#include "desktop/QtText.h"

namespace tellurix {

namespace {

bool IsWide(ControlKind kind) {
  return kind == ControlKind::List || kind == ControlKind::Grid || kind == ControlKind::RichText ||
         kind == ControlKind::Picture;
}

bool HasLabel(ControlKind kind) {
  return IsWide(kind) || kind == ControlKind::Text || kind == ControlKind::Combo || kind == ControlKind::Slider ||
         kind == ControlKind::Colour;
}

// A text that would leave no room for the rest of the dialog on the screen scrolls in a frame of its own, by mouse or
// keys. The label where it is short.
QWidget* InScrollerWhenTall(QLabel& label, const QString& text, QWidget& window) {
  label.setText(text);
  const QSize needed = label.sizeHint();
  const int most = window.screen()->availableGeometry().height() / 2;
  if (needed.height() <= most) return &label;
  auto* scroller = new QScrollArea(&window);
  label.setAlignment(Qt::AlignTop);
  label.setMargin(4);
  scroller->setWidget(&label);
  scroller->setWidgetResizable(true);
  scroller->setMinimumHeight(most);
  scroller->setMinimumWidth(label.sizeHint().width() + 2 * scroller->frameWidth() +
                            scroller->verticalScrollBar()->sizeHint().width());
  return scroller;
}

// A group of radios of one dialog needs no frame; a frame has a caption to show.
bool StandsInFrame(const Control& control) { return !control.group.empty() && control.kind != ControlKind::Radio; }

// More frames than two stand side by side, or small screens would not hold them.
bool HasFramesInRow(const Form& form) {
  std::set<std::string> frames;
  for (const Control& control : form.Controls()) {
    if (StandsInFrame(control)) frames.insert(control.group);
  }
  return frames.size() > 2;
}

}  // namespace

FormLayout::FormLayout(QWidget& dialog, const Form& form)
    : dialog_(dialog), outer_(new QVBoxLayout(&dialog)), frames_(outer_), buttons_(new QDialogButtonBox(&dialog)) {
  if (HasFramesInRow(form)) frames_ = new QHBoxLayout;
}

QLabel* FormLayout::Add(const Control& control, QWidget& widget) {
  const bool isFree = control.group.empty();
  if (control.kind == ControlKind::Button) {
    auto& button = static_cast<QPushButton&>(widget);
    isFree ? AddButton(control, button) : AddKey(control, button);
    return nullptr;
  }
  const bool inRow = isFree && HasLabel(control.kind) && !IsWide(control.kind) && !control.caption.empty();
  return inRow ? AddRow(control, widget) : AddBelow(control, widget);
}

void FormLayout::Finish() {
  outer_->addWidget(buttons_);
  if (pads_.empty()) return;
  for (QAbstractButton* button : buttons_->buttons()) button->setFocusPolicy(Qt::TabFocus);
}

QVBoxLayout* FormLayout::LayoutOf(const Control& control) {
  if (!StandsInFrame(control)) return outer_;
  auto& layout = groups_[control.group];
  if (!layout) {
    if (frames_ != outer_ && frames_->isEmpty()) outer_->addLayout(frames_);
    auto* box = new QGroupBox(FromUtf8(control.group), &dialog_);
    layout = new QVBoxLayout(box);
    frames_->addWidget(box, 0, frames_ == outer_ ? Qt::Alignment() : Qt::AlignTop);
  }
  return layout;
}

void FormLayout::AddButton(const Control& control, QPushButton& button) {
  rows_ = nullptr;
  const auto role = control.role == ButtonRole::Default  ? QDialogButtonBox::AcceptRole
                    : control.role == ButtonRole::Cancel ? QDialogButtonBox::RejectRole
                                                         : QDialogButtonBox::ActionRole;
  buttons_->addButton(&button, role);
}

void FormLayout::AddKey(const Control& control, QPushButton& key) {
  KeyPad& pad = pads_[control.group];
  if (!pad.grid) {
    rows_ = nullptr;
    pad.grid = new QGridLayout;
    pad.grid->setSpacing(2);
    LayoutOf(control)->addLayout(pad.grid);
  }
  pad.Add(key, control.startsRow);
}

void FormLayout::KeyPad::Add(QPushButton& key, bool startsRow) {
  if (startsRow || row < 0) {
    ++row;
    column = 0;
  }
  key.setFocusPolicy(Qt::NoFocus);
  key.setAutoDefault(false);
  key.setMinimumWidth(key.fontMetrics().horizontalAdvance(key.text()) + 14);
  key.setSizePolicy(QSizePolicy::MinimumExpanding, QSizePolicy::Fixed);
  grid->addWidget(&key, row, column++);
}

QLabel* FormLayout::AddRow(const Control& control, QWidget& widget) {
  if (!rows_) {
    rows_ = new QFormLayout;
    outer_->addLayout(rows_);
  }
  QLabel* label = MakeLabel(control, widget);
  rows_->addRow(label, &widget);
  return label;
}

QLabel* FormLayout::AddBelow(const Control& control, QWidget& widget) {
  rows_ = nullptr;
  QVBoxLayout* layout = LayoutOf(control);
  const bool isTold = control.caption.empty() || control.caption == control.group;  // by the frame
  QLabel* label = nullptr;
  if (HasLabel(control.kind) && !isTold) {
    label = MakeLabel(control, widget);
    layout->addWidget(label);
  }
  QWidget* shown = &widget;
  if (control.kind == ControlKind::Label) {
    shown = InScrollerWhenTall(static_cast<QLabel&>(widget), FromUtf8(PlainCaption(control.caption)), dialog_);
  }
  layout->addWidget(shown, IsWide(control.kind) ? 1 : 0);
  return label;
}

QLabel* FormLayout::MakeLabel(const Control& control, QWidget& widget) {
  auto* label = new QLabel(FromUtf8(control.caption), &dialog_);
  label->setBuddy(&widget);
  return label;
}

}  // namespace tellurix
