// The view of a report: rich text that is shown, edited, printed and exported.
#pragma once

#include <QPaintDevice>
#include <QPoint>
#include <QTextEdit>
#include <memory>
#include <vector>

#include "desktop/ReportPrinting.h"
#include "desktop/RichTextDocument.h"
#include "report/Report.h"

class QPrinter;

namespace tellurix {

class ReportFindBar;

enum class PasteForm { RichText, Html, Picture, PlainText };  // the richest first

// Hidden text takes no room in the view and the caret stands only behind it, so that what is typed at the start of a
// result belongs to that result. Backspace goes past hidden text; it goes only with a selection that holds it.
class ReportView : public QTextEdit {
  Q_OBJECT

 public:
  explicit ReportView(QWidget* parent = nullptr);
  ~ReportView() override;

  // Shows a report, which has to outlive the view or be taken away by ForgetReport, and follows what is appended to
  // it. Edits mark the report as changed at once; its text has them after Commit().
  void SetReport(Report& report);
  void ForgetReport();
  Report* ShownReport() const { return report_; }
  // The report's text was replaced.
  void Reload();
  // Brings edits into the report's text: call it before anything reads that.
  void Commit();
  bool HasUncommittedEdits() const { return dirty_; }

  // The number of the last help tag ahead of the caret, otherwise the report's own topic.
  int HelpTopicAtCaret() const;

  // Puts another picture in the place of the one at the position; false where none is or the report is read-only.
  bool ReplacePicture(int position, std::shared_ptr<const PictureGroup> picture);
  // The position of the picture under a point of the viewport, or -1.
  int PicturePositionAt(QPoint point) const;
  // The picture that is selected, or the only one of the report; null when there is none, or several to choose from.
  std::shared_ptr<const PictureGroup> ChosenPicture() const;

  double Zoom() const { return zoom_; }
  void SetZoom(double factor);  // from 0.2 to 5; the sizes in the report stay as they are

  const PageSetup& Page() const { return page_; }
  void SetPage(const PageSetup& page) { page_ = page; }
  bool ExportPdf(const QString& path, QString& error);
  void PrintTo(QPrinter& printer);

  ReportFindBar& FindBar();

  std::vector<TabStop> TabStops() const;
  void SetTabStops(const std::vector<TabStop>& tabs);  // of the selected paragraphs

  bool canInsertFromMimeData(const QMimeData* source) const override;
  // The forms in which something can be pasted. Pasting takes the first one, PasteAs the one that is named; false when
  // it is not there or the report is read-only.
  static std::vector<PasteForm> PasteForms(const QMimeData& source);
  bool PasteAs(PasteForm form, const QMimeData& source);

  // How what is typed into a report without contents stands, in twips.
  void SetStartIndents(int left, int first, int right);

 public slots:
  void SetFamily(const QString& family);
  void SetPointSize(double points);
  void SetBold(bool on);
  void SetItalic(bool on);
  void SetUnderline(bool on);
  void SetStrike(bool on);
  void SetSubscript(bool on);
  void SetSuperscript(bool on);
  void SetColour(const QColor& colour);
  void SetParagraphAlignment(tellurix::Alignment alignment);
  void ToggleBullets();
  void ToggleNumbers();
  void IndentMore();
  void IndentLess();

  void ZoomIn();
  void ZoomOut();
  void ZoomReset();

  void Find();
  void FindAndReplace();
  void FindAgain();

  bool EditPageSetup();                     // with the system's dialog; false when it was cancelled
  bool Print(const QString& printer = {});  // on the one of this name, else the system's; false when cancelled
  void PrintPreview();

 signals:
  void Edited();
  void HelpRequested(int topic);
  void PictureMenuRequested(QPoint globalPosition, int position);
  void ZoomChanged(double factor);

 protected:
  QMimeData* createMimeDataFromSelection() const override;
  void insertFromMimeData(const QMimeData* source) override;
  void keyPressEvent(QKeyEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;

 private:
  // The screen as if it had more or fewer pixels in an inch: the layout measures by it.
  class ZoomedScreen : public QPaintDevice {
   public:
    double dpi = 96;
    QPaintEngine* paintEngine() const override { return nullptr; }

   protected:
    int metric(PaintDeviceMetric metric) const override;
  };

  void SelectPicture(int position);
  void ShowAppended();
  void NoteChange();
  void PutCaretBehindHiddenText();
  int BeforeHiddenText(int position) const;
  int BehindHiddenText(int position) const;
  bool ZoomByKey(const QKeyEvent& event);
  bool GoBehindHiddenText(QKeyEvent* event);
  bool DeleteByKey(const QKeyEvent& event);
  void SelectUpToHiddenText(QTextCursor& cursor, QTextCursor::MoveOperation movement) const;
  void ScrollToTop(int position);
  void PlaceFindBar();
  std::vector<QTextBlock> SelectedBlocks() const;
  void ToggleList(bool numbers);
  void Indent(int steps);
  void MergeCharFormat(const QTextCharFormat& format);

  Report* report_ = nullptr;
  std::size_t known_ = 0;  // blocks of the report's text that are in the view
  bool dirty_ = false;
  bool loading_ = false;
  bool movingCaret_ = false;
  double zoom_ = 1;
  ZoomedScreen screen_;
  PageSetup page_;
  ReportFindBar* findBar_ = nullptr;
};

}  // namespace tellurix
