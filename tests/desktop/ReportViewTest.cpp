// The view of a report, driven by keys and the clipboard.

#include "desktop/ReportView.h"

#include <gtest/gtest.h>

#include <QAbstractTextDocumentLayout>
#include <QApplication>
#include <QBuffer>
#include <QClipboard>
#include <QFileInfo>
#include <QImage>
#include <QMenu>
#include <QMimeData>
#include <QPrinter>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTextBlock>
#include <QTextTable>
#include <cstdlib>
#include <map>

#include "desktop/ReportFindBar.h"
#include "tests/desktop/NotedPaper.h"
#include "tests/desktop/ReportSamples.h"

namespace tellurix {
namespace {

int Rounds() {
  const char* rounds = std::getenv("TELLURIX_FUZZ_ROUNDS");
  return rounds != nullptr ? std::max(std::atoi(rounds), 1) : 200;
}

Paragraph WithRun(const std::string& text, const CharFormat& format = {},
                  std::shared_ptr<const PictureGroup> picture = nullptr) {
  Paragraph paragraph;
  paragraph.runs.push_back({text, format, std::move(picture)});
  return paragraph;
}

Paragraph Words(const std::string& text) { return WithRun(text); }

Paragraph Shown(const PictureGroup& picture) { return WithRun("", {}, std::make_shared<const PictureGroup>(picture)); }

Paragraph Tagged(int topic, const std::string& text) {
  CharFormat hidden;
  hidden.hidden = true;
  Paragraph paragraph = WithRun("/h/" + std::to_string(topic) + "/", hidden);
  CharFormat bold;
  bold.bold = true;
  paragraph.runs.push_back({text, bold, nullptr});
  return paragraph;
}

std::string Visible(const RichText& text) { return ToPlainText(text, false).toStdString(); }

// Hidden runs outside of tables that are help tags.
int TagCount(const RichText& text) {
  int count = 0;
  for (const Block& block : text.blocks) {
    const auto* paragraph = std::get_if<Paragraph>(&block);
    if (paragraph == nullptr) continue;
    for (const Run& run : paragraph->runs) count += run.format.hidden && run.text.starts_with("/h/") ? 1 : 0;
  }
  return count;
}

class ReportViewTest : public testing::Test {
 protected:
  void Show(RichText text) {
    report.text = std::move(text);
    view.resize(700, 400);
    view.SetReport(report);
    view.show();
    view.setFocus();
  }
  void Show(const std::vector<Paragraph>& paragraphs) {
    RichText text;
    for (const Paragraph& paragraph : paragraphs) text.blocks.emplace_back(paragraph);
    Show(text);
  }
  const RichText& Committed() {
    view.Commit();
    return report.text;
  }
  void CaretTo(int block, int offset) {
    QTextCursor cursor(view.document()->findBlockByNumber(block));
    cursor.setPosition(cursor.position() + offset);
    view.setTextCursor(cursor);
  }
  void Select(int from, int to) {
    QTextCursor cursor(view.document());
    cursor.setPosition(from);
    cursor.setPosition(to, QTextCursor::KeepAnchor);
    view.setTextCursor(cursor);
  }
  void Paste(const char* type, const QByteArray& bytes, const QString& plain = {}) {
    auto* data = new QMimeData;
    data->setData(type, bytes);
    if (!plain.isEmpty()) data->setText(plain);
    QApplication::clipboard()->setMimeData(data);
    view.paste();
  }

  Report report;
  ReportView view;
};

TEST_F(ReportViewTest, EditsReachTheReportWhenAskedFor) {
  Show({Words("first")});
  EXPECT_FALSE(report.document.changed);
  view.moveCursor(QTextCursor::End);
  QTest::keyClicks(&view, " word");
  EXPECT_TRUE(report.document.changed);
  EXPECT_EQ(Visible(report.text), "first");
  view.Commit();
  EXPECT_EQ(Visible(report.text), "first word");
  QTest::keyClick(&view, Qt::Key_Tab);
  QFocusEvent away(QEvent::FocusOut);
  QApplication::sendEvent(&view, &away);
  EXPECT_EQ(Visible(report.text), "first word\t");
}

TEST_F(ReportViewTest, ResultsAppendedToAnEditedReportJoinTheEdits) {
  Show(SampleResult());
  view.moveCursor(QTextCursor::End);
  QTest::keyClicks(&view, "note");
  for (int k = 0; k < 20; ++k) report.Append(SampleResult());
  const std::string text = Visible(Committed());
  EXPECT_EQ(TagCount(report.text), 21);
  EXPECT_EQ(report.text.blocks.size(), 21 * SampleResult().blocks.size());
  EXPECT_LT(text.find("note"), text.find("Single sample t test", 10));
  // The newest result's first line is in view, and the view is at rest there.
  QApplication::processEvents();
  QTextBlock title = view.document()->lastBlock();
  while (!title.text().contains("Single sample t test")) title = title.previous();
  const double top =
      view.document()->documentLayout()->blockBoundingRect(title).top() - view.verticalScrollBar()->value();
  EXPECT_GE(top, 0);
  EXPECT_LT(top, view.viewport()->height() - 20);
  view.undo();
  EXPECT_EQ(TagCount(Committed()), 20);
}

TEST_F(ReportViewTest, TheCaretStandsBehindHiddenText) {
  Show({Words("before"), Tagged(11, "Title"), Words("after")});
  CaretTo(1, 1);
  QTest::keyClick(&view, Qt::Key_Home);
  EXPECT_EQ(view.textCursor().positionInBlock(), 1);
  QTest::keyClick(&view, Qt::Key_Left);
  EXPECT_EQ(view.textCursor().blockNumber(), 0);
  EXPECT_TRUE(view.textCursor().atBlockEnd());
  QTest::keyClick(&view, Qt::Key_Right);
  EXPECT_EQ(view.textCursor().blockNumber(), 1);
  EXPECT_EQ(view.textCursor().positionInBlock(), 1);
  // What is typed there belongs to the title and looks like it.
  QTest::keyClicks(&view, "My ");
  EXPECT_EQ(std::get<Paragraph>(Committed().blocks[1]), Tagged(11, "My Title"));
  // At the start of the report, too.
  Show({Tagged(11, "Title")});
  view.moveCursor(QTextCursor::Start);
  QTest::keyClick(&view, Qt::Key_Left);
  QTest::keyClick(&view, Qt::Key_Backspace);
  QTest::keyClicks(&view, "A ");
  EXPECT_EQ(std::get<Paragraph>(Committed().blocks[0]), Tagged(11, "A Title"));
}

TEST_F(ReportViewTest, ErasingGoesPastHiddenText) {
  Show({Words("ab"), Tagged(11, "Title"), Words("after")});
  CaretTo(1, 1);
  QTest::keyClick(&view, Qt::Key_Backspace);  // joins the paragraphs
  QTest::keyClick(&view, Qt::Key_Backspace);
  QTest::keyClick(&view, Qt::Key_Delete);
  EXPECT_EQ(Visible(Committed()), "aitle\nafter");
  EXPECT_EQ(TagCount(report.text), 1);
  QTest::keyClick(&view, Qt::Key_Backspace, Qt::ControlModifier);
  QTest::keyClick(&view, Qt::Key_Delete, Qt::ControlModifier);
  EXPECT_EQ(TagCount(Committed()), 1);
  while (view.document()->isUndoAvailable()) view.undo();
  EXPECT_EQ(Visible(Committed()), "ab\nTitle\nafter");
  EXPECT_EQ(std::get<Paragraph>(report.text.blocks[1]), Tagged(11, "Title"));
}

TEST_F(ReportViewTest, BackspaceJoinsAnIndentedParagraphAtOnce) {
  Paragraph indented = Words("b");
  indented.format.leftIndent = 720;
  Show({Words("a"), indented});
  CaretTo(1, 0);
  QTest::keyClick(&view, Qt::Key_Backspace);
  EXPECT_EQ(Visible(Committed()), "ab");
}

TEST_F(ReportViewTest, CutAndPasteCarryHiddenTextAndUndoBringsItBack) {
  RichText two = SampleResult();
  two.Append(SampleResult());
  Show(two);
  view.selectAll();
  view.cut();
  EXPECT_TRUE(Committed().IsEmpty());
  EXPECT_EQ(TagCount(report.text), 0);
  view.paste();
  EXPECT_TRUE(Committed() == two) << WriteRtf(report.text);
  view.undo();
  view.undo();
  EXPECT_TRUE(Committed() == two) << WriteRtf(report.text);
}

// Whatever is selected outside of tables, cutting it and pasting it changes nothing; but where a mark is cut with only
// a part of its paragraph, the joined paragraph has the format of the first and does not find back to its own.
TEST_F(ReportViewTest, CutAndPasteInPlaceGiveTheSameReport) {
  for (unsigned seed = 0; seed < static_cast<unsigned>(Rounds()); ++seed) {
    const RichText text = RandomReport(seed);
    Show(text);
    Dice dice(seed + 1);
    const auto place = [&] {
      for (;;) {
        const int position = dice.Below(view.document()->characterCount());
        QTextCursor cursor(view.document());
        cursor.setPosition(position);
        if (cursor.currentTable() == nullptr && !view.document()->characterAt(position).isLowSurrogate())
          return position;
      }
    };
    const int from = place();
    Select(from, place());
    if (!view.textCursor().hasSelection()) continue;
    const auto atStart = [&](int position) { return view.document()->findBlock(position).position() == position; };
    if (atStart(view.textCursor().selectionEnd())) continue;
    view.cut();
    view.paste();
    ASSERT_TRUE(Committed() == text) << "seed " << seed << "\n" << WriteRtf(text) << "\n" << WriteRtf(report.text);
  }
}

TEST_F(ReportViewTest, TheClipboardHoldsRichTextHtmlAndWords) {
  Show(SampleResult());
  view.selectAll();
  view.copy();
  const QMimeData* data = QApplication::clipboard()->mimeData();
  const auto rtf = ReadRtf(data->data("text/rtf").toStdString());
  ASSERT_TRUE(rtf.has_value());
  RichText expected = SampleResult();
  expected.blocks.pop_back();  // the empty paragraph at the end is the mark of the one before it
  EXPECT_TRUE(*rtf == expected);
  EXPECT_EQ(data->data("application/rtf"), data->data("text/rtf"));
  EXPECT_TRUE(data->html().contains("Single sample t test") && data->html().contains("<table"));
  EXPECT_FALSE(data->html().contains("/h/"));
  EXPECT_TRUE(data->text().startsWith("Single sample t test\nSample: Difference\nSample mean\tPopulation mean\tn\t"));
  EXPECT_FALSE(data->text().contains("/h/"));
}

TEST_F(ReportViewTest, PastesInTheFormThatIsAskedFor) {
  QMimeData data;
  data.setData("text/rtf", "{\\rtf1 {\\b bold} words}");
  data.setHtml("<i>slanted words</i>");
  data.setText("plain words");
  using Forms = std::vector<PasteForm>;
  EXPECT_EQ(ReportView::PasteForms(data), (Forms{PasteForm::RichText, PasteForm::Html, PasteForm::PlainText}));
  const auto pasted = [&](PasteForm form) {
    Show(RichText());
    EXPECT_TRUE(view.PasteAs(form, data));
    return std::get<Paragraph>(Committed().blocks.at(0)).runs;
  };
  const auto rich = pasted(PasteForm::RichText);
  ASSERT_EQ(rich.size(), 2u);
  EXPECT_TRUE(rich[0].format.bold && rich[0].text == "bold" && !rich[1].format.bold && rich[1].text == " words");
  const auto html = pasted(PasteForm::Html);
  ASSERT_EQ(html.size(), 1u);
  EXPECT_TRUE(html[0].format.italic && html[0].text == "slanted words");
  const auto plain = pasted(PasteForm::PlainText);
  ASSERT_EQ(plain.size(), 1u);
  EXPECT_TRUE(plain[0].format == CharFormat() && plain[0].text == "plain words");
  EXPECT_FALSE(view.PasteAs(PasteForm::Picture, data));
  EXPECT_TRUE(ReportView::PasteForms(QMimeData()).empty());
}

TEST_F(ReportViewTest, CellsOfATableAreCopiedAsATable) {
  Show(SampleResult());
  QTextTable* table = qobject_cast<QTextTable*>(view.document()->rootFrame()->childFrames().front());
  ASSERT_NE(table, nullptr);
  Select(table->cellAt(0, 1).firstPosition(), table->cellAt(1, 2).lastPosition());
  view.copy();
  const auto rtf = ReadRtf(QApplication::clipboard()->mimeData()->data("text/rtf").toStdString());
  ASSERT_TRUE(rtf && rtf->blocks.size() == 1);
  const Table& copied = std::get<Table>(rtf->blocks[0]);
  ASSERT_EQ(copied.rows.size(), 2u);
  ASSERT_EQ(copied.rows[0].cells.size(), 2u);
  EXPECT_EQ(copied.rows[0].leftEdge, 2200);
  EXPECT_EQ(copied.rows[0].cells[1].rightEdge, 6600);
  EXPECT_EQ(Visible(*rtf), "Population mean\tn\n0\t10");
}

TEST_F(ReportViewTest, PastesWhatOtherProgramsGive) {
  Show({Words("ab")});
  CaretTo(0, 1);
  Paste("text/rtf", "{\\rtf1 x{\\b y}}", "plain");
  EXPECT_EQ(Visible(Committed()), "axyb");
  Paste("text/rtf", "{\\rtf1 1\\par 2\\par}");
  EXPECT_EQ(Visible(Committed()), "axy1\n2\nb");
  Paste("text/html", "<p>one <b>two</b></p><ul><li>three</li></ul><table><tr><td>4</td><td>5</td></tr></table>");
  EXPECT_EQ(Visible(Committed()), "axy1\n2\none two\n•\tthree\n4\t5\nb");
  Paste("text/plain", "six\nseven");
  EXPECT_EQ(Visible(Committed()), "axy1\n2\none two\n•\tthree\n4\t5\nsix\nsevenb");
  QImage image(20, 10, QImage::Format_RGB32);
  image.fill(Qt::red);
  auto* data = new QMimeData;
  data->setImageData(image);
  QApplication::clipboard()->setMimeData(data);
  view.paste();
  const auto picture = PictureAt(*view.document(), view.textCursor().position() - 1);
  ASSERT_NE(picture, nullptr);
  EXPECT_EQ(picture->kind, "pngblip");
  EXPECT_EQ(picture->goalWidth, 300);
  // A picture by itself goes out as one.
  QTest::keyClick(&view, Qt::Key_Left, Qt::ShiftModifier);
  view.copy();
  const QMimeData* out = QApplication::clipboard()->mimeData();
  EXPECT_EQ(qvariant_cast<QImage>(out->imageData()).size(), image.size());
  EXPECT_TRUE(out->html().contains("src=\"data:image/png;base64,"));
}

TEST_F(ReportViewTest, DamagedRichTextGivesWhatCanBeReadOrThePlainWords) {
  RichText sample = SampleResult();
  PictureGroup picture;
  picture.kind = "pngblip";
  picture.bytes = "not a picture";
  picture.goalWidth = picture.goalHeight = 700;
  sample.blocks.emplace_back(Shown(picture));
  const std::string whole = WriteRtf(sample);
  Show({Words("x")});
  // Cut short: the words. Not rich text at all: the words.
  Paste("text/rtf", QByteArray::fromStdString(whole.substr(0, whole.size() / 2)), "the words");
  Paste("text/rtf", "{nothing", " again");
  EXPECT_EQ(Visible(Committed()), "the words againx");
  std::mt19937 engine(20);
  for (int round = 0; round < Rounds(); ++round) {
    std::string bytes = whole;
    for (int changes = 1 + static_cast<int>(engine() % 20); changes > 0; --changes) {
      const std::size_t at = engine() % bytes.size();
      switch (engine() % 4) {
        case 0:
          bytes[at] = static_cast<char>(engine());
          break;
        case 1:
          bytes.erase(at, engine() % 200);
          break;
        case 2:
          bytes.insert(at, bytes.substr(engine() % bytes.size(), engine() % 300));
          break;
        default:
          bytes.insert(at, std::string(1, "{}\\0123456789-"[engine() % 14]));
      }
      if (bytes.size() < 10) bytes = whole;
    }
    Show({Words("x")});
    Paste("text/rtf", QByteArray::fromStdString(bytes), "words");
    view.grab();
    view.Commit();
    const auto read = ReadRtf(WriteRtf(report.text));
    ASSERT_TRUE(read.has_value());
    ASSERT_TRUE(*read == report.text) << "round " << round << "\n" << bytes;
  }
}

TEST_F(ReportViewTest, HelpIsThatOfTheResultUnderTheCaret) {
  report.helpContext = 7;
  Show({Words("before"), Tagged(11, "One"), Words("text"), Tagged(12, "Two"), Words("end")});
  const auto topicAt = [&](int block, int offset) {
    CaretTo(block, offset);
    return view.HelpTopicAtCaret();
  };
  EXPECT_EQ(topicAt(0, 3), 7);
  EXPECT_EQ(topicAt(1, 1), 11);
  EXPECT_EQ(topicAt(2, 0), 11);
  EXPECT_EQ(topicAt(3, 0), 12);  // the caret goes behind the tag
  EXPECT_EQ(topicAt(4, 2), 12);
}

TEST_F(ReportViewTest, TheMenuOffersHelpOnTheResultUnderTheMouse) {
  Show({Tagged(11, "One"), Words("text"), Tagged(12, "Two")});
  QSignalSpy spy(&view, &ReportView::HelpRequested);
  view.moveCursor(QTextCursor::End);
  const QPoint point = view.cursorRect(QTextCursor(view.document()->findBlockByNumber(1))).center();
  QContextMenuEvent event(QContextMenuEvent::Mouse, point, view.viewport()->mapToGlobal(point));
  QApplication::sendEvent(view.viewport(), &event);
  QMenu* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
  ASSERT_NE(menu, nullptr);
  menu->actions().back()->trigger();
  menu->close();
  ASSERT_EQ(spy.count(), 1);
  EXPECT_EQ(spy[0][0].toInt(), 11);
}

TEST_F(ReportViewTest, AReadOnlyReportStaysAsItIs) {
  report.document.readOnly = true;
  Show({Tagged(11, "One")});
  QTest::keyClicks(&view, "x");
  QTest::keyClick(&view, Qt::Key_Backspace);
  QTest::keyClick(&view, Qt::Key_Delete);
  QTest::keyClick(&view, Qt::Key_Delete, Qt::ControlModifier);
  Paste("text/rtf", "{\\rtf1 y}");
  view.FindBar().SetFindText("One");
  view.FindBar().SetReplaceText("z");
  EXPECT_EQ(view.FindBar().ReplaceAll(), 0);
  view.SetBold(false);
  view.ToggleBullets();
  EXPECT_FALSE(report.document.changed);
  report.Append(SampleResult());
  EXPECT_EQ(TagCount(ToRichText(*view.document())), 2);
}

TEST_F(ReportViewTest, FindsAndReplaces) {
  Show({Words("cat Cat concat"), Words("the cat")});
  ReportFindBar& bar = view.FindBar();
  bar.SetFindText("cat");
  bar.SetWholeWord(true);
  const auto found = [&] { return view.textCursor().selectionStart(); };
  view.moveCursor(QTextCursor::Start);
  EXPECT_TRUE(bar.FindNext());
  EXPECT_EQ(found(), 0);
  EXPECT_TRUE(bar.FindNext());
  EXPECT_EQ(found(), 4);
  bar.SetMatchCase(true);
  EXPECT_TRUE(bar.FindNext());
  EXPECT_EQ(found(), 19);
  EXPECT_EQ(bar.Status(), "");
  EXPECT_TRUE(bar.FindNext());  // round the end
  EXPECT_EQ(found(), 0);
  EXPECT_NE(bar.Status(), "");
  EXPECT_TRUE(bar.FindPrevious());
  EXPECT_EQ(found(), 19);
  bar.SetReplaceText("dog");
  EXPECT_TRUE(bar.Replace());
  EXPECT_EQ(Visible(Committed()), "cat Cat concat\nthe dog");
  bar.SetMatchCase(false);
  bar.SetWholeWord(false);
  bar.SetReplaceText("a cat");
  EXPECT_EQ(bar.ReplaceAll(), 3);
  EXPECT_EQ(Visible(Committed()), "a cat a cat cona cat\nthe dog");
  view.undo();
  EXPECT_EQ(Visible(Committed()), "cat Cat concat\nthe dog");
  bar.SetFindText("bird");
  EXPECT_FALSE(bar.FindNext());
  EXPECT_EQ(bar.Status(), "Not found");
}

TEST_F(ReportViewTest, FormatsTextAndParagraphs) {
  Show({Words("word"), Tagged(11, "item")});
  Select(0, 4);
  view.SetBold(true);
  view.SetFamily("Times New Roman");
  view.SetPointSize(12.5);
  view.SetSuperscript(true);
  view.SetColour(QColor(0x12, 0x34, 0x56));
  view.SetParagraphAlignment(Alignment::Justify);
  CharFormat format;
  format.font = "Times New Roman";
  format.bold = true;
  format.halfPoints = 25;
  format.script = Script::Super;
  format.colour = 0x123456;
  Paragraph expected = WithRun("word", format);
  expected.format.alignment = Alignment::Justify;
  EXPECT_EQ(std::get<Paragraph>(Committed().blocks[0]), expected);

  const RichText before = report.text;
  view.selectAll();
  view.ToggleNumbers();
  EXPECT_EQ(Visible(Committed()), "1.\tword\n2.\titem");
  EXPECT_TRUE(*ReadRtf(WriteRtf(report.text)) == report.text);
  view.ToggleBullets();
  view.IndentMore();
  const Paragraph item = std::get<Paragraph>(Committed().blocks[1]);
  EXPECT_EQ(Visible(report.text), "•\tword\n•\titem");
  EXPECT_EQ(item.format.leftIndent, 1080);
  EXPECT_EQ(item.format.firstIndent, -360);
  EXPECT_EQ(item.format.tabs, std::vector<TabStop>{TabStop{1080}});
  EXPECT_EQ(TagCount(report.text), 1);
  view.IndentLess();
  view.ToggleBullets();
  EXPECT_TRUE(Committed() == before) << WriteRtf(report.text);
  view.SetTabStops({{500, Alignment::Right, false}, {900, Alignment::Left, true}});
  EXPECT_EQ(view.TabStops(), (std::vector<TabStop>{{500, Alignment::Right, false}, {900, Alignment::Left, true}}));
}

TEST_F(ReportViewTest, ZoomChangesNoSizes) {
  PictureGroup picture;
  picture.kind = "emfblip";
  picture.goalWidth = 1440;
  picture.goalHeight = 720;
  RichText text = SampleResult();
  text.blocks.emplace_back(Shown(picture));
  Show(text);
  view.resize(1600, 400);  // no line wraps
  const auto widthOfLast = [&] {
    const QTextBlock block = view.document()->lastBlock();
    const QTextLine line = block.layout()->lineForTextPosition(0);
    return line.cursorToX(1) - line.cursorToX(0);
  };
  view.grab();
  EXPECT_EQ(widthOfLast(), 96);
  const double height = view.document()->size().height();
  view.SetZoom(2);
  view.grab();
  EXPECT_EQ(widthOfLast(), 192);
  EXPECT_NEAR(view.document()->size().height(), 2 * height, 0.1 * height);  // fonts have whole pixels
  EXPECT_FALSE(view.HasUncommittedEdits());
  EXPECT_FALSE(report.document.changed);
  EXPECT_TRUE(ToRichText(*view.document()) == text);
}

TEST_F(ReportViewTest, ThePictureUnderTheMouseHasAMenuOfItsOwn) {
  PictureGroup picture;
  picture.goalWidth = 1440;
  picture.goalHeight = 1440;
  Show({Words("word"), Shown(picture)});
  QSignalSpy spy(&view, &ReportView::PictureMenuRequested);
  QTextCursor at(view.document());
  at.setPosition(5);
  const QPoint inside = view.cursorRect(at).center() + QPoint(40, 0);
  EXPECT_EQ(view.PicturePositionAt(inside), 5);
  EXPECT_EQ(view.PicturePositionAt(inside + QPoint(100, 0)), -1);
  QContextMenuEvent event(QContextMenuEvent::Mouse, inside, view.viewport()->mapToGlobal(inside));
  QApplication::sendEvent(view.viewport(), &event);
  ASSERT_EQ(spy.count(), 1);
  EXPECT_EQ(spy[0][1].toInt(), 5);
  PictureGroup other;
  other.kind = "pngblip";
  ASSERT_TRUE(view.ReplacePicture(5, std::make_shared<const PictureGroup>(other)));
  EXPECT_EQ(*std::get<Paragraph>(Committed().blocks[1]).runs[0].picture, other);
}

TEST_F(ReportViewTest, WritesPdf) {
  Show(SampleResult());
  QTemporaryDir folder;
  QString error;
  const QString path = folder.filePath("report.pdf");
  ASSERT_TRUE(view.ExportPdf(path, error)) << error.toStdString();
  QFile file(path);
  ASSERT_TRUE(file.open(QIODevice::ReadOnly));
  const QByteArray bytes = file.readAll();
  EXPECT_TRUE(bytes.startsWith("%PDF-"));
  EXPECT_TRUE(bytes.trimmed().endsWith("%%EOF"));
  EXPECT_FALSE(view.ExportPdf(folder.filePath("none/report.pdf"), error));
  EXPECT_FALSE(error.isEmpty());
  QPrinter printer(QPrinter::HighResolution);
  printer.setOutputFormat(QPrinter::PdfFormat);
  printer.setOutputFileName(folder.filePath("printed.pdf"));
  view.PrintTo(printer);
  EXPECT_GT(QFileInfo(folder.filePath("printed.pdf")).size(), 1000);

  PageSetup page;
  page.landscape = true;
  page.left = 2 * CentimetresPerInch;
  const PageSetup back = ToPageSetup(ToPageLayout(page));
  EXPECT_TRUE(back.landscape);
  EXPECT_NEAR(back.left, page.left, 0.01);
}

// A bitmap of so many pixels a side, by which it is known again.
PictureGroup PngOf(int side) {
  QImage image(side, side, QImage::Format_RGB32);
  image.fill(Qt::red);
  QByteArray bytes;
  QBuffer buffer(&bytes);
  buffer.open(QIODevice::WriteOnly);
  image.save(&buffer, "PNG");
  return {.kind = "pngblip", .bytes = bytes.toStdString()};
}

// Where the pages break, seen by the pictures that are drawn: what is to be kept together is, nothing is cut, and
// pages are filled.
TEST_F(ReportViewTest, PagesBreakBetweenResults) {
  RichText text;
  for (int k = 0; k < 12; ++k) {
    PictureGroup picture = PngOf(k + 1);
    picture.goalWidth = k == 5 ? 40000 : 3000;  // one wider than the page
    picture.goalHeight = 3000;
    Paragraph first = Shown(picture);
    first.format.keepWithNext = true;
    text.blocks.emplace_back(first);
    Table table;
    TableRow row;
    row.cells.push_back({{Words("a cell")}, 30000, {10, 10, 10, 10}});  // wider than the page
    row.cells[0].paragraphs[0].format.keepWithNext = true;
    table.rows.push_back(row);
    text.blocks.emplace_back(table);
    text.blocks.emplace_back(Shown(picture));
  }
  NotedPaper paper(ToPageLayout({}));
  const QSizeF page(paper.width(), paper.height());
  const int pages = PrintRichText(text, paper);
  std::map<int, std::vector<int>> pagesOf;
  for (const NotedImage& drawn : paper.images) {
    if (drawn.place.top() >= page.height() - 1 || drawn.place.bottom() <= 1) continue;  // of a page beside this one
    EXPECT_GE(drawn.place.top(), -1);
    EXPECT_LE(drawn.place.bottom(), page.height() + 1);
    EXPECT_LE(drawn.place.right(), page.width() + 1);
    pagesOf[drawn.image.width()].push_back(drawn.page);
  }
  EXPECT_EQ(pagesOf.size(), 12u);
  for (const auto& [kind, numbers] : pagesOf) {
    EXPECT_GE(numbers.size(), 2u);
    for (const int number : numbers) EXPECT_EQ(number, numbers.front()) << "picture " << kind;
  }
  // Two results of 4.2 inches and a line do not fit on a page of 10.1 inches together with a third.
  EXPECT_EQ(pages, 6);
}

}  // namespace
}  // namespace tellurix
