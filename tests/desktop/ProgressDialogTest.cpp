#include "desktop/ProgressDialog.h"

#include <gtest/gtest.h>

#include <QTest>

namespace tellurix {
namespace {

TEST(ProgressDialog, LeavesShortCalculationsAlone) {
  QWidget owner;
  owner.show();
  ProgressDialog dialog(&owner);
  EXPECT_TRUE(dialog.Show({.share = 0}));
  EXPECT_FALSE(dialog.isVisible());
  QTest::qWait(600);
  EXPECT_TRUE(dialog.Show({.share = 0.5}));
  EXPECT_TRUE(dialog.isVisible());
  EXPECT_TRUE(dialog.Show({.share = 1}));
  EXPECT_FALSE(dialog.isVisible());
  EXPECT_TRUE(dialog.Show({.share = 0}));  // the next one
  EXPECT_FALSE(dialog.isVisible());
}

}  // namespace
}  // namespace tellurix
