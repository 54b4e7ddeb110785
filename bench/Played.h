// Whole commands, played by scripts: selection, work, results.
#pragma once

#include <benchmark/benchmark.h>

#include <string>

#include "shell/ProgramFolder.h"
#include "shell/ScriptPlayer.h"
#include "workbook/Workbook.h"

namespace tellurix::bench {

// A player with one new workbook to be filled.
struct Played {
  ScriptPlayer player{ScriptPaths(TELLURIX_SOURCE_DIR)};
  Workbook& workbook = player.PlayedDocuments().NewWorkbook();

  // Plays a script again and again; what `takeBack` does after each round is not timed.
  template <typename TakeBack>
  void Run(benchmark::State& state, const std::string& text, TakeBack takeBack) {
    ScriptFile script;
    std::string error;
    if (!ReadScript(text, "speed.tlx", script, error)) return state.SkipWithError(error.c_str());
    for (auto _ : state) {
      if (!player.Play(script)) return state.SkipWithError(player.Failure().c_str());
      state.PauseTiming();
      takeBack();
      state.ResumeTiming();
    }
  }

  // The same with what a round has written to the workbook undone.
  void RunAndUndo(benchmark::State& state, const std::string& text) {
    workbook.ClearHistory();
    Run(state, text, [&] {
      if (!workbook.Undo()) state.SkipWithError("nothing was written");
      player.PlayedSession().results.Current() = {};
    });
  }
};

}  // namespace tellurix::bench
