// Dialogs by mouse and keys.

#include "desktop/FormDialog.h"

#include <gtest/gtest.h>

#include <QMessageBox>
#include <QRadioButton>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QTableWidget>
#include <QTest>
#include <QTimer>

#include "desktop/MainWindow.h"
#include "host/Form.h"
#include "session/Skeleton.h"
#include "shell/ProgramFolder.h"
#include "shell/ScriptPlayer.h"

namespace tellurix {
namespace {

TEST(FormDialog, ArrowKeysGoThroughTheRadiosOfAGroup) {
  Form form("OptForm", "Radios");
  form.AddRadio("first", "First", "", false);
  form.AddRadio("second", "Second", "", true);
  form.AddRadio("third", "Third", "", false);
  form.AddRadio("other", "Other", "Others", true);
  form.AddButton("OK", "&OK", ButtonRole::Default);
  int told = 0;
  form.listener = [&](Form&, const FormAction&) { ++told; };
  form.Open();
  FormDialog dialog(form, nullptr);
  dialog.show();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&dialog));
  const auto key = [](Qt::Key k) { QTest::keyClick(QApplication::focusWidget(), k); };
  EXPECT_EQ(QApplication::focusWidget(), dialog.WidgetOf("second"));  // the one that is chosen
  key(Qt::Key_Down);
  EXPECT_TRUE(form.IsChecked("third"));
  EXPECT_FALSE(form.IsChecked("second"));
  EXPECT_TRUE(form.IsChecked("other"));
  key(Qt::Key_Up);
  key(Qt::Key_Up);
  EXPECT_TRUE(form.IsChecked("first"));
  EXPECT_EQ(told, 3);
  QTest::mouseClick(dialog.WidgetOf("first"), Qt::LeftButton);
  EXPECT_EQ(told, 3);  // a second click is no choice
  EXPECT_TRUE(static_cast<QRadioButton*>(dialog.WidgetOf("first"))->isChecked());
  form.Update("first", [](Control& radio) { radio.checked = false; });
  form.Update("third", [](Control& radio) { radio.checked = true; });
  EXPECT_FALSE(static_cast<QRadioButton*>(dialog.WidgetOf("first"))->isChecked());
  EXPECT_EQ(told, 3);
}

TEST(FormDialog, ScrollsAPromptThatIsTallerThanTheScreen) {
  std::string prompt = "Enter an expression using V1 etc.\n";
  for (int i = 1; i <= 200; ++i) prompt += "\nV" + std::to_string(i) + ": Measurement of the follow-up";
  Form form("InpFrm", "Apply function to data");
  form.AddLabel("Prompt", prompt);
  form.AddText("Text", "", "");
  form.AddButton("OK", "&OK", ButtonRole::Default);
  form.Open();
  FormDialog dialog(form, nullptr);
  dialog.show();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&dialog));
  const QRect screen = dialog.screen()->availableGeometry();
  EXPECT_TRUE(screen.contains(dialog.geometry()));
  EXPECT_EQ(QApplication::focusWidget(), dialog.WidgetOf("Text"));
  const QWidget* label = dialog.WidgetOf("Prompt");
  EXPECT_GE(label->height(), label->sizeHint().height());  // no line is cut
  auto* scroller = dialog.findChild<QScrollArea*>();
  ASSERT_NE(scroller, nullptr);
  EXPECT_GE(scroller->viewport()->width(), label->width());
  scroller->setFocus(Qt::TabFocusReason);
  QTest::keyClick(scroller, Qt::Key_PageDown);
  EXPECT_GT(scroller->verticalScrollBar()->value(), 0);
}

TEST(FormDialog, ShowsTheTextsOfAGridWholeAndTakesWhatIsTypedBesideThem) {
  const char* text = "Ward number 12 of the general hospital";
  Form form("TextNum", "Text to Numbers");
  form.Add({.kind = ControlKind::Grid,
            .id = "codes",
            .items = {"Text", "Code"},
            .cells = {{text, "1"}, {"Other", "2"}},
            .readOnlyColumns = 1});
  form.AddButton("OK", "&OK", ButtonRole::Default);
  form.Open();
  FormDialog dialog(form, nullptr);
  dialog.show();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&dialog));
  auto* table = static_cast<QTableWidget*>(dialog.WidgetOf("codes"));
  EXPECT_GE(table->columnWidth(0), table->fontMetrics().horizontalAdvance(text));
  EXPECT_GE(table->viewport()->width(), table->columnWidth(0) + table->columnWidth(1));
  QTest::keyClicks(table, "7");  // without a step to the codes
  QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
  const std::vector<std::string> coded{text, "7"};
  EXPECT_TRUE(QTest::qWaitFor([&] { return form.Find("codes")->cells[0] == coded; }));
  table->setCurrentCell(1, 0);
  QTest::keyClicks(table, "x");
  EXPECT_EQ(table->item(1, 0)->text(), "Other");
  EXPECT_TRUE(form.IsOpen());
}

TEST(MessageBox, GoesBackToTheWindowThatAsked) {
  MainWindow main(ScriptPaths(TELLURIX_SOURCE_DIR), {});
  main.show();
  const auto form = std::make_shared<Form>("Modeless", "A window beside the work");
  form->AddText("entry", "Entry", "");
  main.DesktopSession().host.ShowForm(form);
  const QWidget* dialog = nullptr;
  for (QWidget* window : QApplication::topLevelWidgets()) {
    if (window->windowTitle() == "A window beside the work" && window->isVisible()) dialog = window;
  }
  ASSERT_NE(dialog, nullptr);
  ASSERT_TRUE(QTest::qWaitFor([&] { return dialog->isActiveWindow(); }));
  const QWidget* owner = nullptr;
  QTimer::singleShot(100, &main, [&] {
    QWidget* box = QApplication::activeModalWidget();
    if (!box) return;
    owner = box->parentWidget();
    box->close();
  });
  ShowMessage(main.DesktopSession(), "n = 2", InformationIcon, "A title that is longer than the text");
  EXPECT_EQ(owner, dialog);
}

}  // namespace
}  // namespace tellurix
