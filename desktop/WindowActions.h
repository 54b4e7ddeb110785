// The menu entries that are about windows, what stands in them, and files: what lies behind each, by entry name.
#pragma once

#include <functional>
#include <map>
#include <string>

#include "shell/CommandTable.h"

namespace tellurix {

class MainWindow;

struct WindowAction {
  std::function<void()> run;
  unsigned windows = InWorksheet | InReport | InMain;  // those in which it works
  std::function<bool()> isReady;                       // whether it can do something now; none: always
};

using WindowActions = std::map<std::string, WindowAction>;

WindowActions MakeWindowActions(MainWindow& main);

}  // namespace tellurix
