// The calculator of expressions, by mouse and keys.
#include <gtest/gtest.h>

#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTest>

#include "desktop/FormDialog.h"
#include "shell/Calculator.h"
#include "shell/ScriptPlayer.h"
#include "tests/desktop/Driver.h"

namespace tellurix {
namespace {

class Calculator : public testing::Test {
 protected:
  Calculator() {
    ShowCalculator(player_.PlayedSession());
    form_ = player_.PlayedSession().calculator.lock();
    dialog_ = std::make_unique<FormDialog>(*form_, nullptr);
    dialog_->show();
  }

  QLineEdit* Entry() { return qobject_cast<QLineEdit*>(dialog_->WidgetOf("Expression")); }
  QListWidget* History() { return qobject_cast<QListWidget*>(dialog_->WidgetOf("History")); }
  void Click(const char* id) { QTest::mouseClick(dialog_->WidgetOf(id), Qt::LeftButton); }
  QString LastLine() { return History()->item(History()->count() - 1)->text(); }

  ScriptPlayer player_{Paths{}};
  std::shared_ptr<Form> form_;
  std::unique_ptr<FormDialog> dialog_;
};

TEST_F(Calculator, TypedAndClickedExpressionsGoIntoTheHistory) {
  QTest::keyClicks(Entry(), "2^3^2");
  QTest::keyClick(Entry(), Qt::Key_Return);
  EXPECT_EQ(LastLine(), "2^3^2 = 64");
  EXPECT_EQ(Entry()->text(), "");

  // An operator goes on from the last result; keys leave the focus in the line.
  for (const char* key : {"Key/", "Key(", "Key3", "Key-", "Key1", "Key)"}) Click(key);
  EXPECT_EQ(Entry()->text(), "LR/(3-1)");
  Click("Calc");
  EXPECT_EQ(LastLine(), "LR/(3-1) = 32");
  Click("KeySQRT(");
  QTest::keyClicks(dialog_->focusWidget(), "-1)");
  EXPECT_EQ(Entry()->text(), "SQRT(-1)");
  QTest::keyClick(Entry(), Qt::Key_Return);
  EXPECT_EQ(LastLine(), "SQRT(-1) = error");
  EXPECT_EQ(Entry()->text(), "SQRT(-1)");  // to be put right
  Driver::Picture(dialog_.get(), "calculator");

  const QPoint first = History()->visualItemRect(History()->item(0)).center();
  QTest::mouseClick(History()->viewport(), Qt::LeftButton, {}, first);
  QTest::mouseDClick(History()->viewport(), Qt::LeftButton, {}, first);
  EXPECT_EQ(Entry()->text(), "2^3^2");
  Click("Key+");
  QTest::keyClicks(dialog_->focusWidget(), "1");
  EXPECT_EQ(Entry()->text(), "2^3^2+1");
}

TEST_F(Calculator, OneWindowServesEveryCall) {
  ShowCalculator(player_.PlayedSession());
  EXPECT_EQ(player_.PlayedSession().calculator.lock(), form_);
}

}  // namespace
}  // namespace tellurix
