// Speed of the grouping commands of the Data menu on a million rows, from the selection to the written columns.

#include <benchmark/benchmark.h>

#include <string>

#include "bench/Played.h"

namespace tellurix {
namespace {

constexpr int Rows = 1000000;

// A player with a workbook whose columns A to C hold a title and a million rows: 20 texts, 7 texts, 20 numbers.
struct MillionRows : bench::Played {
  MillionRows() {
    workbook.TextRC(1, 1, "Centre");
    workbook.TextRC(1, 2, "Treatment");
    workbook.TextRC(1, 3, "Score");
    for (int row = 0; row < Rows; ++row) {
      workbook.TextRC(row + 2, 1, "Centre " + std::to_string(row * 7919LL % 20));
      workbook.TextRC(row + 2, 2, "Treatment " + std::to_string(row * 104729LL % 7));
      workbook.NumberRC(row + 2, 3, static_cast<double>(row * 15485863LL % 20));
    }
  }

  // Plays a command that writes to a new workbook (or makes one itself), which is closed afterwards.
  void Run(benchmark::State& state, const std::string& text, bool picks = true) {
    Played::Run(state, text + (picks ? "pick \"New Book\"\n" : ""), [&] {
      Documents& documents = player.PlayedDocuments();
      documents.CloseWorkbook(documents.WorkbookAt(1));
      documents.ActivateWorkbook(0);
    });
  }
};

void TabulateMillionRows(benchmark::State& state) {
  MillionRows().Run(state, "run M_Grouping(4)\nselect \"Centre\"\nselect \"Treatment\"\nanswer Yes\n");
}
BENCHMARK(TabulateMillionRows)->Unit(benchmark::kMillisecond);

void TabulateMillionRowsOfNumbers(benchmark::State& state) {
  MillionRows().Run(state, "run M_Grouping(4)\nselect \"Score\"\nselect \"Treatment\"\nanswer Yes\n");
}
BENCHMARK(TabulateMillionRowsOfNumbers)->Unit(benchmark::kMillisecond);

void DummyVariablesOfMillionRows(benchmark::State& state) {
  MillionRows().Run(state, "run M_Datax(3)\nselect \"Centre\"\npress OK\n");
}
BENCHMARK(DummyVariablesOfMillionRows)->Unit(benchmark::kMillisecond);

void SplitMillionRows(benchmark::State& state) {
  MillionRows().Run(
      state, "run M_Grouping(3)\nselect \"Centre\"\nexpect message \"Number of groups = 20\"\nselect \"Score\"\n");
}
BENCHMARK(SplitMillionRows)->Unit(benchmark::kMillisecond);

void CombineMillionRows(benchmark::State& state) { MillionRows().Run(state, "run M_Grouping(2)\nselect \"Score\"\n"); }
BENCHMARK(CombineMillionRows)->Unit(benchmark::kMillisecond);

void CodeMillionTexts(benchmark::State& state) {
  MillionRows().Run(state, "run M_Datax(10)\nselect \"Centre\"\nanswer No\n");
}
BENCHMARK(CodeMillionTexts)->Unit(benchmark::kMillisecond);

void IntervalsFromMillionDates(benchmark::State& state) {
  MillionRows rows;
  Workbook& workbook = rows.workbook;
  workbook.TextRC(1, 4, "Admitted");
  for (int row = 0; row < Rows; ++row) {
    workbook.TextRC(row + 2, 4,
                    "20" + std::to_string(10 + row % 14) + "-0" + std::to_string(1 + row % 9) + "-17 13:45");
  }
  rows.Run(state, "run M_Datax(2)\nselect \"Admitted\"\nset #reference \"2025-01-01\"\npress OK\n");
}
BENCHMARK(IntervalsFromMillionDates)->Unit(benchmark::kMillisecond);

// Columns E and on hold a block of 256 rows by 200 columns.
void RotateBlockOf256RowsBy200Columns(benchmark::State& state) {
  MillionRows rows;
  Workbook& workbook = rows.workbook;
  for (int row = 1; row <= 256; ++row) {
    for (int column = 5; column < 205; ++column) workbook.NumberRC(row, column, row * 1000.0 + column);
  }
  rows.Run(state, "run M_Datax(7)\nselect E1:GV256\npress OK\n");
}
BENCHMARK(RotateBlockOf256RowsBy200Columns)->Unit(benchmark::kMillisecond);

// Half of a million numbers, there and back.
void ReplaceInMillionNumbers(benchmark::State& state) {
  MillionRows rows;
  rows.Run(state,
           "mark C1:C1000001\nrun M_Datax(8)\nset #find x>9\nset #replace x+100\npress \"Replace All\"\n"
           "expect message \"replaced\"\nset #replace x-100\npress \"Replace All\"\nexpect message \"replaced\"\n"
           "cancel\nnew workbook\n",
           false);
}
BENCHMARK(ReplaceInMillionNumbers)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tellurix
