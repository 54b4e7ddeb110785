// Speed of expressions: once, row by row, and Apply Function on a million rows as a whole command.
#include <benchmark/benchmark.h>

#include <cmath>

#include "bench/Played.h"
#include "numeric/Expression.h"
#include "numeric/Rounding.h"

namespace tellurix {
namespace {

constexpr int Million = 1'000'000;

double Scattered(int i, double step) { return std::fmod((i + 1) * step, 1.0) * 100; }

void EvaluateOnce(benchmark::State& state) {
  const Regional regional;
  ExpressionEvaluator evaluator(regional);
  for (auto _ : state) benchmark::DoNotOptimize(evaluator.EvaluateExpression("SQRT(12.5)*2+3.25"));
}
BENCHMARK(EvaluateOnce)->Unit(benchmark::kMicrosecond);

// Per row; the numbers have all their digits.
void EvaluateRow(benchmark::State& state, const char* text) {
  const Regional regional;
  ExpressionEvaluator evaluator(regional);
  RowExpression expression(evaluator, text, {"V1", "V2"});
  int i = 0;
  for (auto _ : state) {
    const double values[] = {Scattered(i, 0.6180339887498949), Scattered(i, 0.4142135623730951) - 50};
    benchmark::DoNotOptimize(expression.Evaluate(values));
    i = (i + 1) % Million;
  }
}
BENCHMARK_CAPTURE(EvaluateRow, Root, "SQRT(V1)*2+V2");
BENCHMARK_CAPTURE(EvaluateRow, SignsThatMatter, "V1-V2^2-V2*V1");
BENCHMARK_CAPTURE(EvaluateRow, TextThatGrowsTogether, "2V1");

// What is left of a number when it is written and read.
void RoundToFifteenDigits(benchmark::State& state) {
  int i = 0;
  for (auto _ : state) benchmark::DoNotOptimize(FifteenDigits(Scattered(++i, 0.6180339887498949)));
}
BENCHMARK(RoundToFifteenDigits);

void MillionRowsOfApplyFunction(benchmark::State& state) {
  bench::Played played;
  Workbook& workbook = played.workbook;
  workbook.TextRC(1, 1, "x");
  workbook.TextRC(1, 2, "y");
  for (int i = 0; i < Million; ++i) {
    workbook.NumberRC(i + 2, 1, Scattered(i, 0.6180339887498949));
    workbook.NumberRC(i + 2, 2, Scattered(i, 0.4142135623730951));
  }
  played.RunAndUndo(state, "run M_Datax(0)\nselect A:B\ntype \"SQRT(V1)*2+V2\"\ntype \"root\"\npick \"Book 01\"\n");
}
BENCHMARK(MillionRowsOfApplyFunction)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tellurix
