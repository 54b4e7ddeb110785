#include "shell/Dispatch.h"

#include <exception>
#include <new>

#include "session/Skeleton.h"

namespace tellurix {

namespace {

// A failed run is one that ended after a warning without delivering anything.
RunStatus StatusOf(const RunResult& run, bool threw) {
  if (threw) return RunStatus::Failed;
  if (run.delivered) return RunStatus::Done;
  return run.messages.empty() ? RunStatus::Cancelled : RunStatus::Failed;
}

void RunOnce(Session& session, const MenuEntry& entry) {
  session.results.Begin(entry.name, entry.path);
  bool threw = true;
  session.data.BeginCommand();
  try {
    // Flipping the radios of the selection bar starts the command's selection again in the other manner.
    do {
      session.data.SelectionRestart = false;
      session.results.Current().selection.clear();
      entry.command(session);
    } while (session.data.SelectionRestart);
    threw = false;
  } catch (const std::bad_alloc&) {
    ShowMessage(session, "Error: not enough memory", ErrorIcon);
  } catch (const std::exception& error) {
    ShowMessage(session, std::string("Error: ") + error.what(), ErrorIcon);
  }
  session.data.SelectionRestart = false;
  EndCalculation(session);
  RunResult& run = session.results.Current();
  run.status = StatusOf(run, threw);
  run.running = false;
}

}  // namespace

RunStatus RunCommand(Session& session, const MenuEntry& entry) {
  // Waits pump events: a second command would overwrite what the first one has selected.
  if (session.CommandRunning || !entry.command) return RunStatus::Cancelled;
  session.CommandRunning = true;
  session.HelpContext = entry.helpContext;
  for (;;) {
    RunOnce(session, entry);
    if (!session.data.Batch) break;
    session.data.ClearGridSelection();
  }
  session.CommandRunning = false;
  return session.results.Current().status;
}

}  // namespace tellurix
