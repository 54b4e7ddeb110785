#include "desktop/ReportFindBar.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTextCursor>
#include <QTextEdit>
#include <QToolButton>

namespace tellurix {

ReportFindBar::ReportFindBar(QTextEdit& view, QWidget* parent) : QWidget(parent), view_(view) {
  setAutoFillBackground(true);
  auto* rows = new QVBoxLayout(this);
  rows->setContentsMargins(6, 4, 6, 4);
  rows->setSpacing(4);

  auto* findRow = new QHBoxLayout;
  find_ = new QLineEdit(this);
  find_->setObjectName(QStringLiteral("find"));
  find_->setPlaceholderText(tr("Find"));
  find_->setClearButtonEnabled(true);
  matchCase_ = new QCheckBox(tr("Match &case"), this);
  wholeWord_ = new QCheckBox(tr("&Whole word"), this);
  status_ = new QLabel(this);
  auto* next = new QPushButton(tr("Find &next"), this);
  auto* previous = new QPushButton(tr("Find &previous"), this);
  auto* close = new QToolButton(this);
  close->setText(QStringLiteral("×"));
  close->setToolTip(tr("Close"));
  close->setAutoRaise(true);
  findRow->addWidget(find_, 1);
  findRow->addWidget(next);
  findRow->addWidget(previous);
  findRow->addWidget(matchCase_);
  findRow->addWidget(wholeWord_);
  findRow->addWidget(status_);
  findRow->addWidget(close);
  rows->addLayout(findRow);

  replaceRow_ = new QWidget(this);
  auto* replaceLayout = new QHBoxLayout(replaceRow_);
  replaceLayout->setContentsMargins(0, 0, 0, 0);
  replace_ = new QLineEdit(replaceRow_);
  replace_->setObjectName(QStringLiteral("replace"));
  replace_->setPlaceholderText(tr("Replace with"));
  auto* replace = new QPushButton(tr("&Replace"), replaceRow_);
  auto* replaceAll = new QPushButton(tr("Replace &all"), replaceRow_);
  replaceLayout->addWidget(replace_, 1);
  replaceLayout->addWidget(replace);
  replaceLayout->addWidget(replaceAll);
  replaceLayout->addStretch(1);
  rows->addWidget(replaceRow_);

  connect(next, &QPushButton::clicked, this, &ReportFindBar::FindNext);
  connect(previous, &QPushButton::clicked, this, &ReportFindBar::FindPrevious);
  connect(replace, &QPushButton::clicked, this, &ReportFindBar::Replace);
  connect(replaceAll, &QPushButton::clicked, this, &ReportFindBar::ReplaceAll);
  connect(close, &QToolButton::clicked, this, &QWidget::hide);
  connect(find_, &QLineEdit::textChanged, this, [this] { Say({}); });
}

void ReportFindBar::Open(bool withReplace) {
  replaceRow_->setVisible(withReplace);
  QString selected = view_.textCursor().selectedText();
  selected.remove(QChar::ObjectReplacementCharacter);
  if (!selected.isEmpty() && selected.size() < 100 && !selected.contains(QChar::ParagraphSeparator) &&
      !selected.contains(QChar::LineSeparator)) {
    find_->setText(selected);
  }
  Say({});
  show();
  find_->setFocus();
  find_->selectAll();
}

void ReportFindBar::SetFindText(const QString& text) { find_->setText(text); }
void ReportFindBar::SetReplaceText(const QString& text) { replace_->setText(text); }
void ReportFindBar::SetMatchCase(bool on) { matchCase_->setChecked(on); }
void ReportFindBar::SetWholeWord(bool on) { wholeWord_->setChecked(on); }
QString ReportFindBar::Status() const { return status_->text(); }
void ReportFindBar::Say(const QString& text) { status_->setText(text); }

QTextDocument::FindFlags ReportFindBar::Flags() const {
  QTextDocument::FindFlags flags;
  if (matchCase_->isChecked()) flags |= QTextDocument::FindCaseSensitively;
  if (wholeWord_->isChecked()) flags |= QTextDocument::FindWholeWords;
  return flags;
}

bool ReportFindBar::FindNext() { return Find(false); }
bool ReportFindBar::FindPrevious() { return Find(true); }

bool ReportFindBar::Find(bool backward) {
  if (find_->text().isEmpty()) return false;
  QTextDocument& document = *view_.document();
  auto flags = Flags();
  if (backward) flags |= QTextDocument::FindBackward;
  QTextCursor found = document.find(find_->text(), view_.textCursor(), flags);
  Say({});
  if (found.isNull()) {
    QTextCursor end(&document);
    if (backward) end.movePosition(QTextCursor::End);
    found = document.find(find_->text(), end, flags);
    if (found.isNull()) {
      Say(tr("Not found"));
      return false;
    }
    Say(backward ? tr("Went on from the end") : tr("Went on from the start"));
  }
  view_.setTextCursor(found);
  view_.ensureCursorVisible();
  return true;
}

// The new words look like the first character of those they replace.
void ReportFindBar::Put(QTextCursor& place) const {
  QTextCursor first(place);
  first.setPosition(place.selectionStart() + 1);
  QTextCharFormat format = first.charFormat();
  format.clearProperty(QTextFormat::ObjectType);
  place.insertText(replace_->text(), format);
}

bool ReportFindBar::Replace() {
  QTextCursor selected = view_.textCursor();
  if (!view_.isReadOnly() && selected.hasSelection() && !find_->text().isEmpty()) {
    QTextCursor start(selected);
    start.setPosition(selected.selectionStart());
    QTextCursor place = view_.document()->find(find_->text(), start, Flags());
    if (place.selectionStart() == selected.selectionStart() && place.selectionEnd() == selected.selectionEnd()) {
      Put(place);
      view_.setTextCursor(place);
    }
  }
  return FindNext();
}

int ReportFindBar::ReplaceAll() {
  if (view_.isReadOnly() || find_->text().isEmpty()) return 0;
  QTextDocument& document = *view_.document();
  QTextCursor step(&document);
  step.beginEditBlock();
  int count = 0;
  QTextCursor from(&document);
  for (;;) {
    QTextCursor place = document.find(find_->text(), from, Flags());
    if (place.isNull()) break;
    Put(place);
    from = place;
    ++count;
  }
  step.endEditBlock();
  Say(count == 0 ? tr("Not found") : tr("%1 replaced").arg(count));
  return count;
}

void ReportFindBar::keyPressEvent(QKeyEvent* event) {
  switch (event->key()) {
    case Qt::Key_Escape:
      hide();
      return;
    case Qt::Key_Return:
    case Qt::Key_Enter:
      if (replace_->hasFocus()) {
        Replace();
      } else {
        Find(event->modifiers().testFlag(Qt::ShiftModifier));
      }
      return;
    default:
      QWidget::keyPressEvent(event);
  }
}

void ReportFindBar::hideEvent(QHideEvent* event) {
  QWidget::hideEvent(event);
  if (event->spontaneous()) return;  // the window went, not the bar
  view_.setFocus();
  emit Closed();
}

}  // namespace tellurix
