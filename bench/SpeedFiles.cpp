// Workbook files: a million rows by 5 columns of numbers with 17 digits, saved and opened.

#include <benchmark/benchmark.h>

#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include "workbook/Workbook.h"
#include "workbook/files/NativeWorkbook.h"

namespace tellurix {
namespace {

namespace fs = std::filesystem;

constexpr int Rows = 1000000;
constexpr int Columns = 5;

void FillRandom(Workbook& workbook) {
  std::mt19937_64 random(1);
  std::normal_distribution<double> normal(100, 15);
  std::vector<double> values(Rows);
  for (int column = 1; column <= Columns; ++column) {
    for (double& value : values) value = normal(random);
    workbook.SetColumnNumbers(column, 1, values);
  }
  workbook.ClearHistory();
}

fs::path BenchFile(const std::string& name) { return fs::temp_directory_path() / ("tellurix-bench-" + name); }

// With the sync, which the time of the process does not count.
void NativeSave(benchmark::State& state) {
  Workbook workbook;
  FillRandom(workbook);
  const fs::path path = BenchFile("save.tlw");
  std::string problem;
  for (auto _ : state) {
    if (!WriteNativeWorkbook(workbook, path, problem)) state.SkipWithError(problem.c_str());
  }
  state.counters["MB"] = static_cast<double>(fs::file_size(path)) / 1e6;
  fs::remove(path);
}
BENCHMARK(NativeSave)->Unit(benchmark::kMillisecond);

void NativeOpen(benchmark::State& state) {
  const fs::path path = BenchFile("open.tlw");
  std::string problem;
  {
    Workbook workbook;
    FillRandom(workbook);
    if (!WriteNativeWorkbook(workbook, path, problem)) state.SkipWithError(problem.c_str());
  }
  for (auto _ : state) {
    Workbook workbook;
    if (!ReadNativeWorkbook(path, workbook, problem)) state.SkipWithError(problem.c_str());
  }
  fs::remove(path);
}
BENCHMARK(NativeOpen)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tellurix
