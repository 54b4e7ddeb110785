// Charts in the view of a report: on the screen, on paper, on the clipboard, through the menus into files.
#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QFileDialog>
#include <QLineEdit>
#include <QMdiArea>
#include <QMimeData>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <random>

#include "desktop/DocumentWindows.h"
#include "desktop/FormDialog.h"
#include "desktop/MainWindow.h"
#include "desktop/ReportView.h"
#include "graphics/ImageExport.h"
#include "graphics/Renderer.h"
#include "graphics/ReportPicture.h"
#include "report/RtfPicture.h"
#include "shell/ProgramFolder.h"
#include "tests/desktop/Driver.h"
#include "tests/desktop/NotedPaper.h"
#include "tests/graphics/Fixture.h"

namespace tellurix {
namespace {

namespace fs = std::filesystem;

class ReportPictures : public Charts {
 protected:
  // A report with a line of words and a chart.
  RichText Charted(const char* title = "A chart") {
    const std::string records = Recorded([&] {
      graphics.DrawFrame(true, title, -7);
      for (int i = 1; i < 20; ++i) graphics.DrawMarker(150 + 40 * i, 110 + 25 * i, 7, i);
    });
    auto text = ReadRtf("{\\rtf1\\ansi words\\par " + PictureGroupText(records, 13692, 9676) + "\\par }");
    EXPECT_TRUE(text);
    return *text;
  }

  static RichText Holding(PictureGroup picture) {
    Paragraph paragraph;
    paragraph.runs.emplace_back();
    paragraph.runs.back().picture = std::make_shared<const PictureGroup>(std::move(picture));
    RichText text;
    text.blocks.emplace_back(std::move(paragraph));
    return text;
  }

  void Show(RichText text) {
    report.text = std::move(text);
    view.resize(900, 700);
    view.SetReport(report);
    view.show();
    view.setFocus();
    QTest::qWait(1);
  }

  // What the view shows, on a screen with so many points to a pixel.
  QImage Shot(double ratio = 1) {
    QImage image(view.viewport()->size() * ratio, QImage::Format_RGB32);
    image.setDevicePixelRatio(ratio);
    image.fill(Qt::blue);
    view.viewport()->render(&image);
    return image;
  }

  // The chart as the renderer draws it for a width of so many pixels.
  static QImage Drawn(const PictureGroup& picture, int width, int height) {
    FontBook fonts;
    const Image image = RenderImage(*DrawingOf(picture), fonts, width, height);
    return QImage(reinterpret_cast<const uchar*>(image.pixels.data()), image.width, image.height, 4 * image.width,
                  QImage::Format_RGB32)
        .copy();
  }

  // Whether an image stands pixel by pixel in another, and where.
  static std::optional<QPoint> Find(const QImage& part, const QImage& whole) {
    for (int y = 0; y + part.height() <= whole.height(); ++y) {
      for (int x = 0; x <= std::min(60, whole.width() - part.width()); ++x) {
        if (whole.copy(QRect(QPoint(x, y), QSize(part.width(), 1))) != part.copy(0, 0, part.width(), 1)) continue;
        if (whole.copy(QRect(QPoint(x, y), part.size())) == part) return QPoint(x, y);
      }
    }
    return std::nullopt;
  }

  QPoint MiddleOfPicture() {
    const QRect line = view.cursorRect(QTextCursor(view.document()->findBlockByNumber(1)));
    return line.center() + QPoint(60, 0);
  }

  Report report;
  ReportView view;
};

TEST_F(ReportPictures, ChartsAreShownPixelByPixelAtAnyZoom) {
  const RichText text = Charted();
  Show(text);
  const PictureGroup& picture = *PicturesOf(text).at(0);
  // 7762 by 5486 twips at 96 pixels to the inch.
  EXPECT_TRUE(Find(Drawn(picture, 517, 366), Shot()));
  EXPECT_TRUE(Find(Drawn(picture, 1035, 731), Shot(2))) << "a screen of twice the pixels";
  view.SetZoom(1.5);
  EXPECT_TRUE(Find(Drawn(picture, 776, 549), Shot()));
}

TEST_F(ReportPictures, SavedReportShowsTheChartAgain) {
  const RichText text = Charted();
  Show(text);
  const QImage before = Shot();
  const auto again = ReadRtf(WriteRtf(text));
  ASSERT_TRUE(again);
  view.ForgetReport();
  Show(*again);
  EXPECT_EQ(Shot(), before);
}

TEST_F(ReportPictures, PaperGetsLinesAndLetters) {
  NotedPaper paper(ToPageLayout({}));
  ASSERT_EQ(PrintRichText(Charted(), paper), 1);
  EXPECT_TRUE(paper.images.empty());
  EXPECT_GT(paper.shapes.size(), 60u) << "ticks, labels, markers";
  QRectF all;
  for (const QRectF& shape : paper.shapes) all |= shape;
  const double inch = paper.logicalDpiX();
  EXPECT_GT(all.width(), 4.2 * inch) << "the frame has 900 of 210 units to the inch";
  EXPECT_LT(all.width(), 5.39 * inch);
  EXPECT_LT(all.height(), 3.81 * inch);
  EXPECT_GT(all.height(), 3.2 * inch) << "from the title down to the labels";
}

TEST_F(ReportPictures, DamagedPicturesAreTold) {
  for (const char* kind : {"wmetafile8", "pngblip", "emfblip"}) {
    PictureGroup damaged{.kind = kind, .bytes = "not a picture", .goalWidth = 5000, .goalHeight = 2000};
    Show(Holding(damaged));
    const QImage shot = Shot();
    int box = 0, words = 0;
    for (int y = 20; y < 140; ++y) {
      for (int x = 20; x < 340; ++x) {
        const QRgb pixel = shot.pixel(x, y);
        box += pixel == qRgb(0xF6, 0xF6, 0xF6) ? 1 : 0;
        words += qGray(pixel) < 0xC0 ? 1 : 0;
      }
    }
    EXPECT_GT(box, 20000) << kind;
    EXPECT_GT(words, 200) << kind;
    view.ForgetReport();
  }
}

TEST_F(ReportPictures, MutatedChartsDoNoHarm) {
  const PictureGroup whole = *PicturesOf(Charted()).at(0);
  std::mt19937 random(7);
  for (int round = 0; round < 60; ++round) {
    PictureGroup picture = whole;
    for (int k = 0; k < 20; ++k) picture.bytes[random() % picture.bytes.size()] = static_cast<char>(random());
    view.ForgetReport();
    Show(Holding(picture));
    EXPECT_FALSE(Shot().isNull());
  }
}

TEST_F(ReportPictures, AClickSelectsAndCopyGivesOthersAnImage) {
  Show(Charted());
  QTest::mouseClick(view.viewport(), Qt::LeftButton, {}, MiddleOfPicture());
  ASSERT_TRUE(view.textCursor().hasSelection());
  ASSERT_TRUE(view.ChosenPicture());
  view.copy();
  const QMimeData* copied = QApplication::clipboard()->mimeData();
  ASSERT_TRUE(copied->hasImage());
  const auto image = qvariant_cast<QImage>(copied->imageData());
  EXPECT_EQ(image.width(), 2264);
  EXPECT_LT(std::abs(image.height() - 1600), 2);
  EXPECT_TRUE(copied->html().contains("data:image/png;base64"));
  // What comes back into a report is the chart itself.
  view.moveCursor(QTextCursor::End);
  view.paste();
  view.Commit();
  const auto pictures = PicturesOf(report.text);
  ASSERT_EQ(pictures.size(), 2u);
  EXPECT_EQ(*pictures[0], *pictures[1]);
  EXPECT_FALSE(view.ChosenPicture()) << "two, and none is selected";
}

TEST_F(ReportPictures, TheMenusExport) {
  MainWindow main(ScriptPaths(TELLURIX_SOURCE_DIR), {});
  main.show();
  main.NewReport();
  QTest::qWait(30);
  ReportView& shown = main.ActiveReport()->View();
  const auto entry = [&] {
    QAction* action = main.menuBar()->findChild<QAction*>("M_Report_Export_Picture");
    if (action) emit qobject_cast<QMenu*>(action->parent())->aboutToShow();
    return action;
  };
  ASSERT_TRUE(entry());
  EXPECT_FALSE(entry()->isEnabled()) << "nothing to export";
  main.ActiveReport()->Shown().Append(Charted());
  EXPECT_TRUE(entry()->isEnabled()) << "the only picture";

  QTemporaryDir target;
  const QString file = target.filePath("chart.png");
  Driver driver;
  driver.Step(
      "the menu", [&] { return true; },
      [&] {
        Driver::ClickMenu(main.menuBar(), {"Edit", "Export Picture"});
      });
  driver.Step(
      "the dialog", [] { return qobject_cast<FormDialog*>(QApplication::activeModalWidget()) != nullptr; },
      [] {
        QWidget* dialog = QApplication::activeModalWidget();
        Driver::Picture(dialog, "export-picture");
        EXPECT_EQ(dialog->windowTitle(), "Graphical Image Export");
        for (QPushButton* button : dialog->findChildren<QPushButton*>()) {
          if (button->isDefault()) return QTest::mouseClick(button, Qt::LeftButton);
        }
      });
  driver.Step(
      "the name", [] { return qobject_cast<QFileDialog*>(QApplication::activeModalWidget()) != nullptr; },
      [&] {
        auto* dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
        dialog->findChild<QLineEdit*>()->setText(file);
        QTest::keyClick(dialog->findChild<QLineEdit*>(), Qt::Key_Return);
      });
  driver.Step(
      "the file", [&] { return QFileInfo::exists(file); }, [] {});
  driver.Drive();
  EXPECT_EQ(QImage(file).width(), 2264);

  // The menu of the picture itself.
  QTest::mouseClick(shown.viewport(), Qt::LeftButton, {}, QPoint(100, 200));
  EXPECT_TRUE(shown.textCursor().hasSelection());
  QContextMenuEvent event(QContextMenuEvent::Mouse, {100, 200}, shown.viewport()->mapToGlobal(QPoint(100, 200)));
  QApplication::sendEvent(shown.viewport(), &event);
  QMenu* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
  ASSERT_TRUE(menu);
  QStringList captions;
  for (QAction* action : menu->actions()) captions << action->text();
  EXPECT_EQ(captions, QStringList({"&Copy", "&Export Picture...", "", "&Help on this result"}));
  menu->close();
  main.ActiveReport()->State().changed = false;
}

// The options of charts, from the menu into the settings; their dialog fits on a small screen.
TEST_F(ReportPictures, ChartOptionsAreKept) {
  MainWindow main(ScriptPaths(TELLURIX_SOURCE_DIR), {});
  main.show();
  main.NewWorkbook();
  QTest::qWait(30);
  Session& session = main.DesktopSession();
  EXPECT_FALSE(session.graphics.looks.BoxAxes);
  Driver driver;
  driver.Step(
      "the menu", [&] { return true; },
      [&] {
        Driver::ClickMenu(main.menuBar(), {"Graphics", "Options"});
      });
  driver.Step(
      "the dialog", [] { return qobject_cast<FormDialog*>(QApplication::activeModalWidget()) != nullptr; },
      [] {
        auto* dialog = qobject_cast<FormDialog*>(QApplication::activeModalWidget());
        Driver::Picture(dialog, "graphics-options");
        EXPECT_LE(dialog->height(), 700);
        EXPECT_LE(dialog->width(), 1000);
        qobject_cast<QCheckBox*>(dialog->WidgetOf("BoxAxes"))->click();
        qobject_cast<QComboBox*>(dialog->WidgetOf("Shape"))->setCurrentIndex(4);
        QTest::mouseClick(dialog->WidgetOf("OK"), Qt::LeftButton);
      });
  driver.Step(
      "the end", [] { return QApplication::activeModalWidget() == nullptr; }, [] {});
  driver.Drive();
  EXPECT_TRUE(session.graphics.looks.BoxAxes);
  EXPECT_EQ(session.settings.GetIniValue("Graphics", "BoxAxes", "0"), "-1");
  EXPECT_EQ(session.settings.GetIniValue("Graphics", "Shape0", "0"), "4");
}

}  // namespace
}  // namespace tellurix
