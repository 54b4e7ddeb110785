// Speed of reading a selection into the shapes that the analyses share.

#include <benchmark/benchmark.h>

#include "numeric/Missing.h"
#include "shell/ScriptHost.h"
#include "shell/ScriptPlayer.h"
#include "workbook/CellReading.h"

namespace tellurix {
namespace {

constexpr int Rows = 1000000;

// A player with one workbook, column A marked from row 1 to `Rows`.
struct Marked {
  ScriptPlayer player{Paths{}};
  Workbook& workbook = player.PlayedDocuments().NewWorkbook();
  void Mark() { workbook.SetSelection({1, 1, Rows, 1}); }
};

void ReadThroughGetCellNumber(benchmark::State& state) {
  Workbook workbook;
  for (int row = 1; row <= Rows; ++row) workbook.NumberRC(row, 1, row * 0.5);
  for (auto _ : state) {
    double sum = 0;
    for (int row = 1; row <= Rows; ++row) sum += GetCellNumber(workbook, row, 1);
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(state.iterations() * Rows);
}
BENCHMARK(ReadThroughGetCellNumber)->Unit(benchmark::kMillisecond);

void SelectMillionNumbers(benchmark::State& state) {
  Marked marked;
  for (int row = 1; row <= Rows; ++row) marked.workbook.NumberRC(row, 1, row * 0.5);
  DataSelection& data = marked.player.PlayedSession().data;
  for (auto _ : state) {
    marked.Mark();
    data.BeginCommand();
    if (!data.SelectWorksheetData(ModeNumericRows, 1, 1, "Select DATA")) state.SkipWithError("refused");
  }
}
BENCHMARK(SelectMillionNumbers)->Unit(benchmark::kMillisecond);

void SelectMillionTextsOfTenThousandCategories(benchmark::State& state) {
  Marked marked;
  for (int row = 1; row <= Rows; ++row) {
    marked.workbook.TextRC(row, 1, "Category number " + std::to_string(row * 7919LL % 10000));
  }
  DataSelection& data = marked.player.PlayedSession().data;
  for (auto _ : state) {
    marked.Mark();
    data.BeginCommand();
    if (!data.SelectWorksheetData(ModeCategorical, 1, 1, "Select GROUP IDENTIFIERS")) state.SkipWithError("refused");
    if (data.ColumnInfo.front().CategoryCount != 10000) state.SkipWithError("wrong number of categories");
  }
}
BENCHMARK(SelectMillionTextsOfTenThousandCategories)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tellurix
