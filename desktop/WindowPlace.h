// The places of windows on the screens, kept in the settings.
#pragma once

#include <string_view>

#include "host/Settings.h"

class QWidget;

namespace tellurix {

// Keeps where a window is, under its section; of one that is not in its normal state the place stays as it was kept.
void SaveFormPlace(const QWidget& window, Settings& settings, std::string_view section);

// Puts a window that is not shown yet where it was, in the state that it had. False, and the window as it stands, when
// no such place is on a screen that is there now; its state is set all the same.
bool LoadFormPlace(QWidget& window, const Settings& settings, std::string_view section);

// The least width, in pixels, at which the title of a window can be read beside its icon and buttons; very long titles
// are cut all the same.
int WidthForTitle(const QWidget& window);

}  // namespace tellurix
