// A csv of a million rows by 5 columns of numbers, about 91 MB, read into a worksheet. bench/peers/Csv.R reads the same
// file; whichever of the two comes first writes it, this one takes it away.

#include <benchmark/benchmark.h>

#include <filesystem>
#include <random>
#include <string>
#include <system_error>
#include <vector>

#include "workbook/DelimitedText.h"

namespace tellurix {
namespace {

namespace fs = std::filesystem;

constexpr int Rows = 1000000;
constexpr int Columns = 5;

fs::path CsvFile() { return fs::temp_directory_path() / "tellurix-bench-million.csv"; }

// The benchmark is called several times: the file goes with the program.
struct TakeAwayAtEnd {
  ~TakeAwayAtEnd() {
    std::error_code error;
    fs::remove(CsvFile(), error);
  }
};

bool MakeFile(std::string& problem) {
  static const TakeAwayAtEnd atEnd;
  if (fs::exists(CsvFile())) return true;
  Workbook workbook;
  std::mt19937_64 random(1);
  std::uniform_real_distribution<double> uniform;
  std::vector<double> values(Rows);
  for (int column = 1; column <= Columns; ++column) {
    for (double& value : values) value = uniform(random);
    workbook.SetColumnNumbers(column, 1, values);
  }
  return WriteDelimited(workbook, CsvFile(), ',', problem);
}

void CsvRead(benchmark::State& state) {
  std::string problem;
  if (!MakeFile(problem)) return state.SkipWithError(problem.c_str());
  state.counters["MB"] = static_cast<double>(fs::file_size(CsvFile())) / 1e6;
  for (auto _ : state) {
    Workbook workbook;
    if (!ReadDelimited(CsvFile(), workbook, Regional(), problem)) state.SkipWithError(problem.c_str());
    benchmark::DoNotOptimize(workbook.NumberRC(Rows, Columns));
  }
}
BENCHMARK(CsvRead)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tellurix
