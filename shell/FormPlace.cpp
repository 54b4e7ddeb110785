#include "shell/FormPlace.h"

#include <algorithm>
#include <string>

#include "numeric/Text.h"
#include "session/SessionSettings.h"

namespace tellurix {

namespace {

constexpr int TitleHeight = 30;
constexpr int LeastTitle = 100;    // of its width, to take hold of
constexpr int Farthest = 100'000;  // no screen reaches so far

const char* StateKey(std::string_view section) { return EqualNoCase(section, "MainWindow") ? "State" : "WindowState"; }

int Overlap(int from, int length, int otherFrom, int otherLength) {
  return std::max(0, std::min(from + length, otherFrom + otherLength) - std::max(from, otherFrom));
}

bool ShowsTitle(const ScreenArea& screen, const ScreenArea& area) {
  return Overlap(screen.left, screen.width, area.left, area.width) >= std::min(LeastTitle, area.width) &&
         Overlap(screen.top, screen.height, area.top, TitleHeight) == TitleHeight;
}

long Shown(const ScreenArea& screen, const ScreenArea& area) {
  return static_cast<long>(Overlap(screen.left, screen.width, area.left, area.width)) *
         Overlap(screen.top, screen.height, area.top, area.height);
}

// On one of the screens, and no larger than it; without size when it is on none.
ScreenArea OnScreen(ScreenArea area, const std::vector<ScreenArea>& screens) {
  const bool isReachable =
      std::ranges::any_of(screens, [&](const ScreenArea& screen) { return ShowsTitle(screen, area); });
  if (!isReachable) return {};
  const ScreenArea& screen = *std::ranges::max_element(screens, {}, [&](const auto& s) { return Shown(s, area); });
  area.width = std::min(area.width, screen.width);
  area.height = std::min(area.height, screen.height);
  return area;
}

}  // namespace

void SaveFormPlace(Settings& settings, std::string_view section, const FormPlace& place) {
  const bool isMain = EqualNoCase(section, "MainWindow");
  if (place.state == WindowState::Minimised || (place.state == WindowState::Maximised && !isMain)) return;
  const std::string name(section);
  std::vector<IniValue> values{{name, StateKey(section), std::to_string(static_cast<int>(place.state))}};
  if (place.HasArea()) {
    values.push_back({name, "Left", std::to_string(place.area.left)});
    values.push_back({name, "Top", std::to_string(place.area.top)});
    values.push_back({name, "Width", std::to_string(place.area.width)});
    values.push_back({name, "Height", std::to_string(place.area.height)});
  }
  settings.SetIniValues(values);
}

FormPlace LoadFormPlace(const Settings& settings, std::string_view section, const std::vector<ScreenArea>& screens) {
  const auto read = [&](const char* key, int low, int high) {
    return IntegerSetting(settings, section, key, low, high);
  };
  const ScreenArea area{read("Left", -Farthest, Farthest), read("Top", -Farthest, Farthest), read("Width", 0, Farthest),
                        read("Height", 0, Farthest)};
  const int state = read(StateKey(section), 0, 2);
  FormPlace place{{}, state == 2 ? WindowState::Maximised : WindowState::Normal};
  if (area.width > 0 && area.height > 0) place.area = OnScreen(area, screens);
  return place;
}

}  // namespace tellurix
