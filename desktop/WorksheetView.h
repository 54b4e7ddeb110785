// What a worksheet window holds: name box and formula line, the grid, the tabs of the sheets.
#pragma once

#include <QWidget>

#include "desktop/GridView.h"
#include "desktop/SheetLooks.h"
#include "desktop/WorksheetTabs.h"

class QLineEdit;

namespace tellurix {

class WorksheetView : public QWidget {
  Q_OBJECT

 public:
  // Both outlive the view.
  WorksheetView(Workbook& workbook, const Regional& regional, QWidget* parent = nullptr);
  ~WorksheetView() override;

  Workbook& Book() const { return grid_->Book(); }
  GridView* Grid() const { return grid_; }
  WorksheetTabs* Tabs() const { return tabs_; }
  QLineEdit* NameBox() const { return nameBox_; }
  QLineEdit* FormulaLine() const { return formulaLine_; }

  bool CommitEdit() { return grid_->CommitEdit(); }
  void SetSelecting(bool on);  // see GridView; sheets can still be chosen

 public slots:
  void Refresh();  // sheet, sheets or marks were set elsewhere

 signals:
  void Refused(const QString& reason);  // by the grid, the tabs or the name box

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void FollowSettings();

  SheetLooksAdapter looks_;
  GridView* grid_;
  WorksheetTabs* tabs_;
  QLineEdit* nameBox_;
  QLineEdit* formulaLine_;
  int listener_ = 0;
};

}  // namespace tellurix
