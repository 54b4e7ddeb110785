// Find and replace in a text view: a bar that stands at the foot of the view.
#pragma once

#include <QTextDocument>
#include <QWidget>

class QCheckBox;
class QLabel;
class QLineEdit;
class QTextEdit;

namespace tellurix {

class ReportFindBar : public QWidget {
  Q_OBJECT

 public:
  // The view has to outlive the bar.
  explicit ReportFindBar(QTextEdit& view, QWidget* parent = nullptr);

  // Shows the bar with the selected words as what is looked for, and gives it the focus.
  void Open(bool withReplace);

  void SetFindText(const QString& text);
  void SetReplaceText(const QString& text);
  void SetMatchCase(bool on);
  void SetWholeWord(bool on);
  QString Status() const;

 public slots:
  // Marks the next or previous place and goes round at the ends; false, with a note in the bar, when there is none.
  bool FindNext();
  bool FindPrevious();
  // Replaces what is marked if it is a place, and goes to the next one.
  bool Replace();
  // How many places were replaced, in one undo step.
  int ReplaceAll();

 signals:
  void Closed();

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  void hideEvent(QHideEvent* event) override;

 private:
  QTextDocument::FindFlags Flags() const;
  bool Find(bool backward);
  void Put(QTextCursor& place) const;
  void Say(const QString& text);

  QTextEdit& view_;
  QLineEdit* find_;
  QLineEdit* replace_;
  QCheckBox* matchCase_;
  QCheckBox* wholeWord_;
  QLabel* status_;
  QWidget* replaceRow_;
};

}  // namespace tellurix
