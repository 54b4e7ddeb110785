// The calculator of distributions, by mouse and keys.
#include <gtest/gtest.h>

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

#include "desktop/FormDialog.h"
#include "shell/CommandTable.h"
#include "shell/Dispatch.h"
#include "shell/ScriptPlayer.h"
#include "tests/desktop/Driver.h"

namespace tellurix {
namespace {

class Distributions : public testing::Test {
 protected:
  Distributions() {
    Run("M_Distributions(0)");
    form_ = player_.PlayedSession().distributions.lock();
    dialog_ = std::make_unique<FormDialog>(*form_, nullptr);
    dialog_->show();
  }

  static Paths ProgramPaths() {
    Paths paths;
    paths.program = TELLURIX_SOURCE_DIR;
    return paths;
  }

  void Run(const char* entry) { RunCommand(player_.PlayedSession(), *FindCommand(entry)); }
  QLineEdit* Box(const char* id) { return qobject_cast<QLineEdit*>(dialog_->WidgetOf(id)); }
  void Type(const char* id, const char* text) {
    QTest::mouseClick(Box(id), Qt::LeftButton);
    Box(id)->selectAll();
    QTest::keyClicks(Box(id), text);
  }
  // Whether a label of the dialog shows this.
  bool Shows(const QString& text) {
    for (const QLabel* label : dialog_->findChildren<QLabel*>()) {
      if (label->isVisible() && label->text() == text) return true;
    }
    return false;
  }

  ScriptPlayer player_{ProgramPaths()};
  std::shared_ptr<Form> form_;
  std::unique_ptr<FormDialog> dialog_;
};

TEST_F(Distributions, TypedOnEitherSideAndDoubleClicked) {
  Type("edpdf", "1.96");
  QTest::keyClick(Box("edpdf"), Qt::Key_Return);
  EXPECT_EQ(Box("edup")->text(), "0.0249978951482204");
  EXPECT_TRUE(Shows("P(z 1.96) = 0.024998 upper,  0.975002 lower,  0.049996 two sided"));
  Driver::Picture(dialog_.get(), "pdf-normal");

  Type("ed2p", "0.05");
  EXPECT_EQ(Box("edpdf")->text(), "");  // no longer belongs to what is typed
  QTest::mouseDClick(Box("ed2p"), Qt::LeftButton);
  EXPECT_EQ(Box("edpdf")->text(), "1.95996398454005");

  // Going through empty boxes to the button does not change what is known.
  Type("edpdf", "1");
  QTest::mouseClick(Box("edlp"), Qt::LeftButton);
  QTest::mouseClick(dialog_->WidgetOf("Calc"), Qt::LeftButton);
  EXPECT_EQ(Box("edpdf")->text(), "1");
  EXPECT_EQ(Box("edlp")->text(), "0.841344746068543");
}

TEST_F(Distributions, AnotherOneTakesTheSameWindow) {
  Type("edpdf", "1.96");
  QTest::keyClick(Box("edpdf"), Qt::Key_Return);
  Run("M_Distributions(5)");
  EXPECT_FALSE(Shows("P(z 1.96) = 0.024998 upper,  0.975002 lower,  0.049996 two sided"));  // of another distribution
  EXPECT_FALSE(dialog_->WidgetOf("Save")->isEnabled());
  QApplication::processEvents();
  for (const char* id : {"Calc", "btn_lcl", "btn_ucl", "edpdf"}) {  // room for what has come to it
    EXPECT_GE(dialog_->WidgetOf(id)->width(), dialog_->WidgetOf(id)->sizeHint().width()) << id;
  }
  EXPECT_EQ(player_.PlayedSession().distributions.lock(), form_);
  EXPECT_EQ(dialog_->windowTitle(), "Binomial distribution");
  EXPECT_TRUE(Shows("Probability of success per trial"));
  EXPECT_FALSE(Shows("Normal deviate (z)"));
  EXPECT_EQ(Box("edpdf")->text(), ".5");
  Type("eddf", "20");
  Type("eddf2", "14");
  QTest::mouseClick(dialog_->WidgetOf("btn_lcl"), Qt::LeftButton);
  // R: binom.test(14, 20)
  EXPECT_NEAR(Box("edpdf")->text().toDouble(), 0.4572108, 5e-8);
  EXPECT_NEAR(Box("edup")->text().toDouble(), 0.025, 1e-12);
  Driver::Picture(dialog_.get(), "pdf-binomial");
  Run("M_Distributions(3)");
  EXPECT_FALSE(dialog_->WidgetOf("btn_lcl")->isVisible());
  EXPECT_FALSE(Box("eddf2")->isVisible());
}

}  // namespace
}  // namespace tellurix
