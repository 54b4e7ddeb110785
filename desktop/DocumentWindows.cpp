#include "desktop/DocumentWindows.h"

#include <QCloseEvent>
#include <QLabel>
#include <QMenu>
#include <QStatusBar>

#include "desktop/Icons.h"
#include "desktop/MainWindow.h"
#include "desktop/QtText.h"
#include "desktop/ReportDefaults.h"
#include "desktop/ReportView.h"
#include "desktop/SelectionBar.h"
#include "desktop/SheetActions.h"
#include "desktop/WorksheetView.h"

namespace tellurix {

DocumentWindow::DocumentWindow(MainWindow& main) : main_(main) {
  setAttribute(Qt::WA_DeleteOnClose);
  setWindowIcon(ThemeIcon("tellurix"));
}

void DocumentWindow::UpdateTitle() {
  const DocumentState& state = State();
  setWindowTitle(QString::fromStdString(state.caption) + (state.changed ? " *" : ""));
}

void DocumentWindow::closeEvent(QCloseEvent* event) {
  event->ignore();
  if (main_.StopRunningCommand(*this)) return;  // it closes when the command has been taken back
  if (!AskBeforeClosing()) return;
  main_.Forget(*this);
  CloseDocument();
  main_.ForgetCopies();
  event->accept();
}

// ---------------------------------------------------------------------------------------------------------------------

WorksheetForm::WorksheetForm(MainWindow& main, Workbook& workbook) : DocumentWindow(main), workbook_(workbook) {
  setObjectName("Worksheet_Form");
  view_ = new WorksheetView(workbook, main.DesktopSession().options.regional, this);
  setWidget(view_);
  resize(760, 480);
  listener_ = workbook_.AddListener([this](const WorkbookChange&) { UpdateTitle(); });
  connect(view_->Grid(), &GridView::ConfirmRequested, &main.Bar(), &SelectionBar::Confirm);
  connect(view_->Grid(), &GridView::CancelRequested, &main.Bar(), &SelectionBar::Cancel);
  connect(view_, &WorksheetView::Refused, this, [this](const QString& reason) { main_.Refuse(reason); });
  connect(view_->Grid(), &GridView::ContextMenuRequested, this,
          [this](const QPoint& position) { ShowSheetMenu(main_, *this, position); });
  summary_ = main.statusBar()->findChild<QLabel*>("summary");
  if (!summary_) {
    summary_ = new QLabel(main.statusBar());
    summary_->setObjectName("summary");
    main.statusBar()->addPermanentWidget(summary_);
  }
  connect(view_->Grid(), &GridView::SummaryChanged, this, [this] {
    if (main_.ActiveWorksheet() == this) ShowSummary(true);
  });
  connect(this, &QMdiSubWindow::windowStateChanged, this, [this](Qt::WindowStates before, Qt::WindowStates now) {
    if ((before ^ now) & Qt::WindowActive) ShowSummary(now & Qt::WindowActive);
  });
  UpdateTitle();
}

// Count, sum and mean of the marked numbers, when there are several; dates have no sum.
void WorksheetForm::ShowSummary(bool isInFront) {
  if (!summary_ || !view_) return;
  QString text;
  if (isInFront && view_->Grid()->Summary().count > 1) {
    const SelectionSummary& figures = view_->Grid()->Summary();
    const auto shown = [this](double value) {
      return InRegion(QString::number(value, 'g', 10), view_->Grid()->RegionalSettings());
    };
    if (figures.areDates) {
      const NumberFormat date{.form = NumberFormat::Form::Date};
      const std::string mean = FormatNumber(figures.mean, date, view_->Grid()->RegionalSettings());
      text = QString("Mean %1   Count %2").arg(FromUtf8(mean)).arg(figures.count);
    } else {
      text = QString("Sum %1   Mean %2   Count %3").arg(shown(figures.sum), shown(figures.mean)).arg(figures.count);
    }
  }
  summary_->setText(text);
}

WorksheetForm::~WorksheetForm() = default;

DocumentState& WorksheetForm::State() { return workbook_.document; }

bool WorksheetForm::AskBeforeClosing() {
  view_->CommitEdit();
  return tellurix::AskBeforeClosing(main_.DesktopSession(), workbook_, main_.Savers());
}

void WorksheetForm::CloseDocument() {
  if (summary_) summary_->clear();
  // The view reads the workbook: it goes first.
  workbook_.RemoveListener(listener_);
  setWidget(nullptr);
  delete view_;
  view_ = nullptr;
  main_.OpenedDocuments().CloseWorkbook(workbook_);
}

// ---------------------------------------------------------------------------------------------------------------------

ReportForm::ReportForm(MainWindow& main, Report& report) : DocumentWindow(main), report_(report) {
  setObjectName("Report_Form");
  view_ = new ReportView(this);
  setWidget(view_);
  resize(760, 520);
  view_->SetReport(report);
  view_->SetPage(PageOf(main.DesktopSession().settings));
  SetStartIndents(*view_, main.DesktopSession().settings);
  connect(view_, &ReportView::HelpRequested, this, [this](int topic) { main_.ShowHelp(topic); });
  connect(view_, &ReportView::PictureMenuRequested, this, [this](QPoint position) { ShowPictureMenu(position); });
  connect(view_, &ReportView::Edited, this, [this] { UpdateTitle(); });
  connect(view_->document(), &QTextDocument::contentsChanged, this, [this] { UpdateTitle(); });
  UpdateTitle();
}

ReportForm::~ReportForm() = default;

// The picture under the mouse is selected.
void ReportForm::ShowPictureMenu(QPoint position) {
  auto* menu = new QMenu(this);
  menu->setAttribute(Qt::WA_DeleteOnClose);
  menu->addAction("&Copy", view_, &ReportView::copy);
  menu->addAction("&Export Picture...", this, [this] { main_.RunEntry(*FindCommand("M_Report_Export_Picture")); });
  menu->addSeparator();
  menu->addAction("&Help on this result", this, [this] { main_.ShowHelp(view_->HelpTopicAtCaret()); });
  menu->popup(position);
}

DocumentState& ReportForm::State() { return report_.document; }

bool ReportForm::AskBeforeClosing() {
  view_->Commit();
  return tellurix::AskBeforeClosing(main_.DesktopSession(), report_, main_.Savers());
}

void ReportForm::CloseDocument() {
  setWidget(nullptr);
  delete view_;
  view_ = nullptr;
  main_.OpenedDocuments().CloseReport(report_);
}

}  // namespace tellurix
