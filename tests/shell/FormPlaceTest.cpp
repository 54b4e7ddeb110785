#include "shell/FormPlace.h"

#include <gtest/gtest.h>

#include "tests/FakeHost.h"

namespace tellurix {
namespace {

const std::vector<ScreenArea> TwoScreens{{0, 28, 1920, 1052}, {1920, 0, 1280, 1024}};

TEST(FormPlace, IsUsedOnlyWhereAScreenShowsItsTitle) {
  FakeSettings settings;
  const auto loaded = [&](ScreenArea area, const std::vector<ScreenArea>& screens) {
    SaveFormPlace(settings, "TLCalc", {area, WindowState::Normal});
    const ScreenArea place = LoadFormPlace(settings, "TLCalc", screens).area;
    return std::vector<int>{place.left, place.top, place.width, place.height};
  };
  const std::vector<int> none{0, 0, 0, 0};
  EXPECT_EQ(loaded({100, 100, 400, 300}, TwoScreens), (std::vector<int>{100, 100, 400, 300}));
  EXPECT_EQ(loaded({2000, 50, 400, 300}, TwoScreens), (std::vector<int>{2000, 50, 400, 300}));
  EXPECT_EQ(loaded({2000, 50, 400, 300}, {TwoScreens[0]}), none);  // the screen is gone
  EXPECT_EQ(loaded({-350, 100, 400, 300}, TwoScreens), none);      // half a hundred shows
  EXPECT_EQ(loaded({-250, 100, 400, 300}, TwoScreens), (std::vector<int>{-250, 100, 400, 300}));
  EXPECT_EQ(loaded({100, 0, 400, 300}, TwoScreens), none);  // title under a panel
  EXPECT_EQ(loaded({100, 1070, 400, 300}, TwoScreens), none);
  EXPECT_EQ(loaded({0, 28, 5000, 5000}, TwoScreens), (std::vector<int>{0, 28, 1920, 1052}));
  EXPECT_EQ(loaded({1900, 100, 900, 3000}, TwoScreens), (std::vector<int>{1900, 100, 900, 1024}));
  settings.values["TLCalc.Left"] = "far out";
  EXPECT_EQ(LoadFormPlace(settings, "TLCalc", TwoScreens).area.left, 0);
  settings.values["TLCalc.Left"] = "2147483647";
  settings.values["TLCalc.Width"] = "1e300";
  EXPECT_FALSE(LoadFormPlace(settings, "TLCalc", TwoScreens).HasArea());
}

TEST(FormPlace, IsSavedInTheNormalStateOnly) {
  FakeSettings settings;
  SaveFormPlace(settings, "pdf", {{1, 2, 300, 400}, WindowState::Maximised});
  SaveFormPlace(settings, "pdf", {{1, 2, 300, 400}, WindowState::Minimised});
  EXPECT_TRUE(settings.values.empty());
  SaveFormPlace(settings, "MainWindow", {{10, 20, 300, 400}, WindowState::Normal});
  SaveFormPlace(settings, "MainWindow", {{}, WindowState::Maximised});
  SaveFormPlace(settings, "MainWindow", {{}, WindowState::Minimised});
  const FormPlace place = LoadFormPlace(settings, "MainWindow", {{0, 0, 1000, 1000}});
  EXPECT_EQ(place.state, WindowState::Maximised);
  EXPECT_EQ(place.area.left, 10);  // where it goes back to
  EXPECT_EQ(place.area.height, 400);
  EXPECT_EQ(LoadFormPlace(FakeSettings(), "MainWindow", {}).state, WindowState::Maximised);
  EXPECT_EQ(LoadFormPlace(FakeSettings(), "pdf", {}).state, WindowState::Normal);
}

}  // namespace
}  // namespace tellurix
