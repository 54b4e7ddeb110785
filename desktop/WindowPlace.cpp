#include "desktop/WindowPlace.h"

#include <QFontMetrics>
#include <QGuiApplication>
#include <QScreen>
#include <QWidget>
#include <algorithm>
#include <vector>

#include "shell/FormPlace.h"

namespace tellurix {

namespace {

std::vector<ScreenArea> Screens() {
  std::vector<ScreenArea> areas;
  for (const QScreen* screen : QGuiApplication::screens()) {
    const QRect free = screen->availableGeometry();
    areas.push_back({free.x(), free.y(), free.width(), free.height()});
  }
  return areas;
}

}  // namespace

void SaveFormPlace(const QWidget& window, Settings& settings, std::string_view section) {
  FormPlace place;
  if (window.isMinimized()) {
    place.state = WindowState::Minimised;
  } else if (window.isMaximized() || window.isFullScreen()) {
    place.state = WindowState::Maximised;
  } else {
    place.area = {window.x(), window.y(), window.width(), window.height()};
  }
  SaveFormPlace(settings, section, place);
}

bool LoadFormPlace(QWidget& window, const Settings& settings, std::string_view section) {
  const FormPlace place = LoadFormPlace(settings, section, Screens());
  if (place.HasArea()) {
    window.resize(place.area.width, place.area.height);
    window.move(place.area.left, place.area.top);
  }
  if (place.state == WindowState::Maximised) window.setWindowState(Qt::WindowMaximized);
  return place.HasArea();
}

int WidthForTitle(const QWidget& window) {
  constexpr int iconAndButtons = 120, widest = 560;
  QFont bold = window.font();
  bold.setBold(true);
  const QString title = window.windowTitle() + " — " + QGuiApplication::applicationDisplayName();
  return std::min(QFontMetrics(bold).horizontalAdvance(title) + iconAndButtons, widest);
}

}  // namespace tellurix
