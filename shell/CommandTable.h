// The menu: every entry of the system, in the order in which it is shown.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "session/Session.h"

namespace tellurix {

using Command = void (*)(Session&);

// The windows in whose menu an entry stands.
enum MenuWindow : unsigned {
  InWorksheet = 1,  // Worksheet_Form: the whole command set
  InReport = 2,     // Report_Form
  InMain = 4,       // MD1 alone
};

struct MenuEntry {
  std::string path;      // plain captions from the menu's head down, joined with "/": what a script writes
  std::string captions;  // the same with the access keys: what a menu shows
  std::string caption;   // the last of them
  std::string name;      // "M_t_Single"; in an array of entries with its index, "M_Datax(2)"
  int helpContext = 0;
  unsigned windows = 0;  // those that show it
  unsigned active = 0;   // those where it has its command; elsewhere it stands as a caption
  Command command = nullptr;
};

// All entries, submenu heads not included.
const std::vector<MenuEntry>& CommandTable();

// By entry name or by path, without regard to case; null when there is none.
const MenuEntry* FindCommand(std::string_view nameOrPath);

}  // namespace tellurix
