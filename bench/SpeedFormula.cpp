// Formulas: 100 000 of them computed again after a change at the root of all, and what they cost to make and to move.

#include <benchmark/benchmark.h>
#include <malloc.h>

#include <string>

#include "workbook/Workbook.h"

namespace tellurix {
namespace {

constexpr int Count = 100000;

std::string Cell(const char* column, int row) { return column + std::to_string(row); }

template <typename Text>
void EnterAll(Workbook& workbook, int column, int firstRow, Text text) {
  workbook.BeginStep("Fill");
  for (int row = firstRow; row < firstRow + Count; ++row) workbook.Enter(row, column, text(row), Regional());
  workbook.EndStep();
}

void ChangeRoot(benchmark::State& state, Workbook& workbook, int checkRow) {
  double root = 0;
  double before = 0;
  for (auto _ : state) {
    workbook.NumberRC(1, 1, ++root);
    const double now = workbook.NumberRC(checkRow, 2);
    if (now == before) state.SkipWithError("not computed again");
    before = now;
  }
}

void FormulaChain(benchmark::State& state) {
  Workbook workbook;
  workbook.NumberRC(1, 1, 0.5);
  workbook.Enter(1, 2, "=A1", Regional());
  EnterAll(workbook, 2, 2, [](int row) { return "=" + Cell("B", row - 1) + "+1"; });
  ChangeRoot(state, workbook, Count + 1);
}
BENCHMARK(FormulaChain)->Unit(benchmark::kMillisecond);

// Each the sum of the ten above it.
void FormulaMovingWindow(benchmark::State& state) {
  Workbook workbook;
  workbook.NumberRC(1, 1, 0.5);
  for (int row = 1; row <= 10; ++row) workbook.Enter(row, 2, "=A1/1000", Regional());
  EnterAll(workbook, 2, 11, [](int row) { return "=SUM(" + Cell("B", row - 10) + ":" + Cell("B", row - 1) + ")/10"; });
  ChangeRoot(state, workbook, Count);
}
BENCHMARK(FormulaMovingWindow)->Unit(benchmark::kMillisecond);

void FormulaCommonCell(benchmark::State& state) {
  Workbook workbook;
  EnterAll(workbook, 2, 1, [](int row) { return "=$A$1*2+" + std::to_string(row); });
  ChangeRoot(state, workbook, Count);
}
BENCHMARK(FormulaCommonCell)->Unit(benchmark::kMillisecond);

// A change beside them: nothing is to be computed but one sum of a million numbers.
void FormulaWholeColumn(benchmark::State& state) {
  Workbook workbook;
  EnterAll(workbook, 3, 1, [](int row) { return "=" + Cell("D", row) + "+1"; });
  workbook.BeginStep("Fill");
  for (int row = 1; row <= 1000000; ++row) workbook.NumberRC(row, 1, 0.5 * row);
  workbook.EndStep();
  workbook.Enter(1, 2, "=SUM(A:A)", Regional());
  ChangeRoot(state, workbook, 1);
}
BENCHMARK(FormulaWholeColumn)->Unit(benchmark::kMillisecond);

void FormulaFillDown(benchmark::State& state) {
  for (auto _ : state) {
    Workbook workbook;
    workbook.Enter(1, 2, "=SUM(A1:A10)+$C$1", Regional());
    workbook.FillDown({1, 2, Count, 2});
  }
  const std::size_t before = mallinfo2().uordblks + mallinfo2().hblkhd;
  Workbook workbook;
  workbook.Enter(1, 2, "=SUM(A1:A10)+$C$1", Regional());
  workbook.FillDown({1, 2, Count, 2});
  state.counters["MB"] = static_cast<double>(mallinfo2().uordblks + mallinfo2().hblkhd - before) / 1e6;
}
BENCHMARK(FormulaFillDown)->Unit(benchmark::kMillisecond);

void FormulaInsertRow(benchmark::State& state) {
  Workbook workbook;
  workbook.Enter(1, 2, "=SUM(A1:A10)+$C$1", Regional());
  workbook.FillDown({1, 2, Count, 2});
  for (auto _ : state) {
    workbook.InsertRows(1, 1);
    workbook.Undo();
  }
}
BENCHMARK(FormulaInsertRow)->Unit(benchmark::kMillisecond);

// Each a step of its own, as a person types.
void FormulaEnterEach(benchmark::State& state) {
  for (auto _ : state) {
    Workbook workbook;
    for (int row = 2; row <= Count; ++row) workbook.Enter(row, 2, "=" + Cell("B", row - 1) + "+1", Regional());
    benchmark::DoNotOptimize(workbook.NumberRC(Count, 2));
  }
}
BENCHMARK(FormulaEnterEach)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tellurix
