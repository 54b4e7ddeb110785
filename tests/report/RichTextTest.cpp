#include "report/RichText.h"

#include <gtest/gtest.h>

namespace tellurix {
namespace {

TEST(RichText, EndsParagraphsAsWordProcessorsDo) {
  EXPECT_EQ(WriteText(*ReadRtf("{\\rtf1 a\\par \\par }")), "a\n\n");
  EXPECT_EQ(WriteText(*ReadRtf("{\\rtf1 a\\par b}")), "a\nb\n");
}

}  // namespace
}  // namespace tellurix
