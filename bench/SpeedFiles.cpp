// Workbook files: a million rows by 5 columns of numbers with 17 digits as .tlw, 200 000 rows by 2 as .xlsx.

#include <benchmark/benchmark.h>

#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include "workbook/Workbook.h"
#include "workbook/files/NativeWorkbook.h"
#include "workbook/files/WorkbookFiles.h"

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

// With the sync, which the processor's time does not count.
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
BENCHMARK(NativeSave)->Unit(benchmark::kMillisecond)->UseRealTime();

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
BENCHMARK(NativeOpen)->Unit(benchmark::kMillisecond)->UseRealTime();

// 200 000 rows by 2, a column of numbers and one of few texts, read by the reader's process.
void FillTwoColumns(Workbook& workbook) {
  constexpr int XlsxRows = 200000;
  std::mt19937_64 random(2);
  std::normal_distribution<double> normal(100, 15);
  std::vector<double> values(XlsxRows);
  std::vector<std::string> texts(XlsxRows);
  for (int i = 0; i < XlsxRows; ++i) {
    values[static_cast<std::size_t>(i)] = normal(random);
    texts[static_cast<std::size_t>(i)] = "group " + std::to_string(random() % 10);
  }
  workbook.SetColumnNumbers(1, 1, values);
  workbook.SetColumnTexts(2, 1, texts);
}

void XlsxSave(benchmark::State& state) {
  Workbook workbook;
  FillTwoColumns(workbook);
  const fs::path path = BenchFile("save.xlsx");
  std::string problem;
  for (auto _ : state) {
    if (!WriteWorkbookFile(workbook, path, WorkbookFileType::Xlsx, problem)) state.SkipWithError(problem.c_str());
  }
  state.counters["MB"] = static_cast<double>(fs::file_size(path)) / 1e6;
  fs::remove(path);
}
BENCHMARK(XlsxSave)->Unit(benchmark::kMillisecond)->UseRealTime();

void XlsxOpen(benchmark::State& state) {
  const fs::path path = BenchFile("open.xlsx");
  std::string problem;
  {
    Workbook workbook;
    FillTwoColumns(workbook);
    if (!WriteWorkbookFile(workbook, path, WorkbookFileType::Xlsx, problem)) state.SkipWithError(problem.c_str());
  }
  for (auto _ : state) {
    Workbook workbook;
    if (!ReadWorkbookFile(path, workbook, Regional(), {}, problem)) state.SkipWithError(problem.c_str());
  }
  fs::remove(path);
}
BENCHMARK(XlsxOpen)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
}  // namespace tellurix
