// The places of windows between sessions. Lengths are those of the window system, scaled as its screens are.
#pragma once

#include <string_view>
#include <vector>

#include "host/Settings.h"

namespace tellurix {

struct ScreenArea {
  int left = 0;
  int top = 0;
  int width = 0;
  int height = 0;
};

enum class WindowState { Normal = 0, Minimised = 1, Maximised = 2 };

struct FormPlace {
  ScreenArea area;  // without size: no place
  WindowState state = WindowState::Normal;

  bool HasArea() const { return area.width > 0 && area.height > 0; }
};

// Keeps a place under its section; only when the window's state is normal. Of `MainWindow` a maximised state is kept
// too, with the place that it had before.
void SaveFormPlace(Settings& settings, std::string_view section, const FormPlace& place);

// The saved place on these screens (what of each is free for windows): fitted to the screen that shows the most of it,
// and without area when no screen shows enough of its title to take hold of.
FormPlace LoadFormPlace(const Settings& settings, std::string_view section, const std::vector<ScreenArea>& screens);

}  // namespace tellurix
