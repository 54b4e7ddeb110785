// The child windows of the workspace: Worksheet_Form and Report_Form.
#pragma once

#include <QMdiSubWindow>
#include <QPointer>

#include "host/Documents.h"

class QLabel;

namespace tellurix {

class MainWindow;
class ReportView;
class WorksheetView;

// What both have: the document's name in the title, and the questions before they close.
class DocumentWindow : public QMdiSubWindow {
  Q_OBJECT

 public:
  explicit DocumentWindow(MainWindow& main);

  virtual DocumentState& State() = 0;
  virtual bool AskBeforeClosing() = 0;  // false stops the close
  virtual void CloseDocument() = 0;     // the document goes; the window follows

  void UpdateTitle();  // the caption, with a star while there are changes

 protected:
  void closeEvent(QCloseEvent* event) override;

  MainWindow& main_;
};

class WorksheetForm : public DocumentWindow {
  Q_OBJECT

 public:
  WorksheetForm(MainWindow& main, Workbook& workbook);
  ~WorksheetForm() override;

  Workbook& Book() { return workbook_; }
  WorksheetView& View() { return *view_; }

  DocumentState& State() override;
  bool AskBeforeClosing() override;
  void CloseDocument() override;

 private:
  void ShowSummary(bool isInFront);

  Workbook& workbook_;
  WorksheetView* view_;
  QPointer<QLabel> summary_;  // at the right of the status bar; all worksheets share it
  int listener_ = 0;
};

class ReportForm : public DocumentWindow {
  Q_OBJECT

 public:
  ReportForm(MainWindow& main, Report& report);
  ~ReportForm() override;

  Report& Shown() { return report_; }
  ReportView& View() { return *view_; }

  DocumentState& State() override;
  bool AskBeforeClosing() override;
  void CloseDocument() override;

 private:
  void ShowPictureMenu(QPoint position);

  Report& report_;
  ReportView* view_;
};

}  // namespace tellurix
