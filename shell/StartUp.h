// From the start of the process to the first command.
#pragma once

#include <string>
#include <vector>

#include "session/Session.h"
#include "shell/LinkCommand.h"

namespace tellurix {

// What only the front end can do while the program starts.
class FrontEnd {
 public:
  virtual ~FrontEnd() = default;

  virtual void SetTitle(const std::string& title) = 0;
  virtual bool OpenLinkedFile(const std::filesystem::path& file) = 0;  // by extension; false after a message
  // The `Opening` screen, with the events pumped, until its time has run out or it is clicked.
  virtual void ShowOpening(const std::string& name, const std::string& version) = 0;
  virtual void ShowMainWindow() = 0;  // MD1, at its saved place

  // Whether there is a spreadsheet program that an add-in can be registered with, and doing so; false when it failed.
  virtual bool CanLinkSpreadsheet() const { return false; }
  virtual bool LinkSpreadsheet() { return false; }
};

// The steps in their order: the program's own files, the regional settings, the user's folder, the first run, the
// settings, help, the link from the spreadsheet program, the files of the command line, `Opening`, `MD1`. False after a
// message when the program cannot run.
bool StartUp(Session& session, FrontEnd& front, const std::vector<std::string>& commandLine);

// --- single steps, for front ends without windows ---

// Whether the program's own files are in its folder, and what is said where they are not.
bool ProgramFilesArePresent(const Paths& paths);
std::string MissingFilesText();

}  // namespace tellurix
