// The grid: filling, reading, memory, undo, and text files of a million rows.

#include <benchmark/benchmark.h>
#include <malloc.h>

#include <filesystem>
#include <string>
#include <vector>

#include "workbook/DelimitedText.h"
#include "workbook/Workbook.h"

namespace tellurix {
namespace {

constexpr int Rows = 1000000;

double ValueAt(int row) { return 0.37 * row - 1000; }

void FillNumbers(GridStore& grid, int column) {
  for (int row = 1; row <= Rows; ++row) grid.NumberRC(row, column, ValueAt(row));
}

std::size_t AllocatedBytes() {
  const auto info = mallinfo2();
  return info.uordblks + info.hblkhd;
}

// Megabytes taken by what `fill` puts into an empty workbook.
template <typename Fill>
void CountMemory(benchmark::State& state, Fill fill) {
  const std::size_t before = AllocatedBytes();
  Workbook workbook;
  fill(workbook);
  state.counters["MB"] = static_cast<double>(AllocatedBytes() - before) / 1e6;
}

void WorkbookFillNumbers(benchmark::State& state) {
  for (auto _ : state) {
    Workbook workbook;
    workbook.BeginStep("Fill");
    FillNumbers(workbook, 1);
    workbook.EndStep();
  }
  CountMemory(state, [](Workbook& workbook) {
    workbook.BeginStep("Fill");
    FillNumbers(workbook, 1);
    workbook.EndStep();
  });
}
BENCHMARK(WorkbookFillNumbers)->Unit(benchmark::kMillisecond);

void WorkbookFillNumbersEachItsOwnStep(benchmark::State& state) {
  for (auto _ : state) {
    Workbook workbook;
    FillNumbers(workbook, 1);
  }
}
BENCHMARK(WorkbookFillNumbersEachItsOwnStep)->Unit(benchmark::kMillisecond);

void WorkbookOverwriteNumbersInOneStep(benchmark::State& state) {
  Workbook workbook;
  FillNumbers(workbook, 1);
  workbook.ClearHistory();
  for (auto _ : state) {
    workbook.BeginStep("Fill");
    FillNumbers(workbook, 1);
    workbook.EndStep();
    state.PauseTiming();
    workbook.ClearHistory();
    state.ResumeTiming();
  }
}
BENCHMARK(WorkbookOverwriteNumbersInOneStep)->Unit(benchmark::kMillisecond);

void WorkbookFillColumnAtOnce(benchmark::State& state) {
  std::vector<double> values(Rows);
  for (int row = 1; row <= Rows; ++row) values[static_cast<std::size_t>(row - 1)] = ValueAt(row);
  for (auto _ : state) {
    Workbook workbook;
    workbook.SetColumnNumbers(1, 1, values);
  }
}
BENCHMARK(WorkbookFillColumnAtOnce)->Unit(benchmark::kMillisecond);

// The worst case for typed blocks: no two neighbours alike, written in no order.
void WorkbookFillMixedScattered(benchmark::State& state) {
  const auto fill = [](Workbook& workbook) {
    workbook.BeginStep("Fill");
    for (long long i = 0; i < Rows; ++i) {
      const int row = static_cast<int>(i * 700001 % Rows) + 1;
      if (row % 2) {
        workbook.NumberRC(row, 1, ValueAt(row));
      } else {
        workbook.TextRC(row, 1, "odd");
      }
    }
    workbook.EndStep();
  };
  for (auto _ : state) {
    Workbook workbook;
    fill(workbook);
  }
  CountMemory(state, fill);
}
BENCHMARK(WorkbookFillMixedScattered)->Unit(benchmark::kMillisecond);

void FillCategories(GridStore& grid) {
  const std::string categories[] = {"placebo", "low dose", "high dose of the second treatment", "none", "withdrawn"};
  for (int row = 1; row <= Rows; ++row) grid.TextRC(row, 1, categories[row * 7 % 5]);
}

void WorkbookFillCategories(benchmark::State& state) {
  const auto fill = [](Workbook& workbook) {
    workbook.BeginStep("Fill");
    FillCategories(workbook);
    workbook.EndStep();
  };
  for (auto _ : state) {
    Workbook workbook;
    fill(workbook);
  }
  CountMemory(state, fill);
}
BENCHMARK(WorkbookFillCategories)->Unit(benchmark::kMillisecond);

void WorkbookReadTypeAndNumber(benchmark::State& state) {
  Workbook workbook;
  FillNumbers(workbook, 1);
  const GridStore& grid = workbook;
  for (auto _ : state) {
    double sum = 0;
    for (int row = 1; row <= Rows; ++row) {
      if (grid.TypeRC(row, 1) == NumberCell) sum += grid.NumberRC(row, 1);
    }
    benchmark::DoNotOptimize(sum);
  }
}
BENCHMARK(WorkbookReadTypeAndNumber)->Unit(benchmark::kMillisecond);

void WorkbookReadViews(benchmark::State& state) {
  Workbook workbook;
  workbook.BeginStep("Fill");
  if (state.range(0) == NumberCell) {
    FillNumbers(workbook, 1);
  } else {
    FillCategories(workbook);
  }
  workbook.EndStep();
  const GridStore& grid = workbook;
  for (auto _ : state) {
    double sum = 0;
    for (int row = 1; row <= Rows; ++row) {
      const CellView cell = grid.ReadRC(row, 1);
      sum += cell.number + static_cast<double>(cell.text.size());
    }
    benchmark::DoNotOptimize(sum);
  }
}
BENCHMARK(WorkbookReadViews)->Arg(NumberCell)->Arg(TextCell)->Unit(benchmark::kMillisecond);

// One cell of a full column, as a step of its own, and back.
void WorkbookEditOneCellAndUndo(benchmark::State& state) {
  Workbook workbook;
  workbook.BeginStep("Fill");
  FillNumbers(workbook, 1);
  workbook.EndStep();
  int row = 0;
  for (auto _ : state) {
    row = (row + 700001) % Rows;
    workbook.NumberRC(row + 1, 1, 1);
    workbook.Undo();
  }
}
BENCHMARK(WorkbookEditOneCellAndUndo);

void WorkbookUndoAndRedoColumn(benchmark::State& state) {
  Workbook workbook;
  workbook.BeginStep("Fill");
  FillNumbers(workbook, 1);
  workbook.EndStep();
  for (auto _ : state) {
    workbook.Undo();
    workbook.Redo();
  }
}
BENCHMARK(WorkbookUndoAndRedoColumn);

void WorkbookInsertRow(benchmark::State& state) {
  Workbook workbook;
  for (int column = 1; column <= 5; ++column) {
    workbook.BeginStep("Fill");
    FillNumbers(workbook, column);
    workbook.EndStep();
  }
  for (auto _ : state) {
    workbook.InsertRows(10, 1);
    workbook.DeleteRows(10, 1);
    state.PauseTiming();
    workbook.ClearHistory();
    state.ResumeTiming();
  }
}
BENCHMARK(WorkbookInsertRow)->Unit(benchmark::kMillisecond);

std::filesystem::path TextFile() { return std::filesystem::temp_directory_path() / "tellurix-speed.csv"; }

void FillFive(Workbook& workbook) {
  workbook.BeginStep("Fill");
  for (int column = 1; column <= 5; ++column) {
    for (int row = 1; row <= Rows; ++row) workbook.NumberRC(row, column, (row % 9973) * 0.01 + column);
  }
  workbook.EndStep();
}

void DelimitedWrite(benchmark::State& state) {
  Workbook workbook;
  FillFive(workbook);
  std::string error;
  for (auto _ : state) {
    if (!WriteDelimited(workbook, TextFile(), ',', error)) state.SkipWithError(error.c_str());
  }
  std::filesystem::remove(TextFile());
}
BENCHMARK(DelimitedWrite)->Unit(benchmark::kMillisecond);

void DelimitedRead(benchmark::State& state) {
  std::string error;
  {
    Workbook workbook;
    FillFive(workbook);
    if (!WriteDelimited(workbook, TextFile(), ',', error)) return state.SkipWithError(error.c_str());
  }
  state.counters["MB"] = static_cast<double>(std::filesystem::file_size(TextFile())) / 1e6;
  for (auto _ : state) {
    Workbook workbook;
    if (!ReadDelimited(TextFile(), workbook, Regional(), error)) state.SkipWithError(error.c_str());
    benchmark::DoNotOptimize(workbook.NumberRC(Rows, 5));
  }
  std::filesystem::remove(TextFile());
}
BENCHMARK(DelimitedRead)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tellurix
