// The tabs of a workbook's sheets: a click chooses, a double-click renames, dragging moves, "+" adds.
#pragma once

#include <QLineEdit>
#include <QPointer>
#include <QTabBar>
#include <QWidget>

#include "workbook/Workbook.h"

class QToolButton;

namespace tellurix {

class WorksheetTabs : public QWidget {
  Q_OBJECT

 public:
  explicit WorksheetTabs(Workbook& workbook, QWidget* parent = nullptr);

  QTabBar* Bar() const { return bar_; }
  QToolButton* AddButton() const { return add_; }
  QLineEdit* NameEditor() const { return editor_; }  // null when no tab is renamed
  void SetEnabledChanges(bool on);                   // off: sheets can be chosen, not changed

 public slots:
  void Refresh();          // sheets were changed elsewhere
  void Add();              // after the active one
  void Rename(int sheet);  // 1-based; opens the editor over the tab
  void Delete(int sheet);

 signals:
  void AboutToChange();  // the moment to end an edit
  void SheetChosen();    // the workbook's active sheet is another one, or its sheets changed
  void Refused(const QString& reason);

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void FinishRename(bool take);
  void FinishMove();
  void ShowMenu(const QPoint& position);

  Workbook& workbook_;
  QTabBar* bar_;
  QToolButton* add_;
  QPointer<QLineEdit> editor_;
  int renamed_ = 0;
  int pressed_ = -1;    // the tab that the mouse went down on, 0-based
  bool moved_ = false;  // it was dragged past another
  bool refreshing_ = false;
  bool changes_ = true;
};

}  // namespace tellurix
