// The commands of the Data menu on columns of a million, each as a whole: selection, work, new columns.
#include <benchmark/benchmark.h>

#include <cmath>
#include <string>

#include "bench/Played.h"

namespace tellurix {
namespace {

constexpr int Million = 1'000'000;

// Plays a script again and again on a new workbook with the titled column x of `rows` values; what a round has written
// is taken back.
void Play(benchmark::State& state, int rows, double (*value)(int), const std::string& text) {
  bench::Played played;
  played.workbook.TextRC(1, 1, "x");
  for (int i = 0; i < rows; ++i) played.workbook.NumberRC(i + 2, 1, value(i));
  played.RunAndUndo(state, text);
}

double Scattered(int i) { return std::fmod((i + 1) * 0.6180339887498949, 1.0) - 0.25; }
double Tied(int i) { return std::floor(Scattered(i) * 1000); }

void Transform(benchmark::State& state, const char* command) {
  Play(state, Million, Scattered,
       std::string("run M_Transform(") + command + ")\nselect A:A\ncancel\npick \"Book 01\"\n");
}

void MillionNaturalLogs(benchmark::State& state) { Transform(state, "0"); }
BENCHMARK(MillionNaturalLogs)->Unit(benchmark::kMillisecond);

void MillionLaddersOfPowers(benchmark::State& state) { Transform(state, "6"); }
BENCHMARK(MillionLaddersOfPowers)->Unit(benchmark::kMillisecond);

void MillionStandardized(benchmark::State& state) {
  Play(state, Million, Scattered, "run M_Datax(9)\nselect A:A\npress OK\npick \"Book 01\"\n");
}
BENCHMARK(MillionStandardized)->Unit(benchmark::kMillisecond);

void MillionSorted(benchmark::State& state) {
  Play(state, Million, Scattered, "run M_Sort(0)\nselect A:A\npress OK\npick \"Book 01\"\n");
}
BENCHMARK(MillionSorted)->Unit(benchmark::kMillisecond);

void MillionRowsSortedInPlace(benchmark::State& state) {
  Play(state, Million, Scattered, "run M_Sort(1)\nselect A:A\npress OK\n");
}
BENCHMARK(MillionRowsSortedInPlace)->Unit(benchmark::kMillisecond);

void MillionRanks(benchmark::State& state) {
  Play(state, Million, Scattered,
       "run M_Datax(6)\nselect A:A\nset \"Sum t^3 - t / 12\" on\npress OK\npick \"Book 01\"\n");
}
BENCHMARK(MillionRanks)->Unit(benchmark::kMillisecond);

void MillionTiedRanks(benchmark::State& state) {
  Play(state, Million, Tied,
       "run M_Datax(6)\nselect A:A\nset \"Sum t * (t-1) * (2*t+5)\" on\npress OK\npick \"Book 01\"\n");
}
BENCHMARK(MillionTiedRanks)->Unit(benchmark::kMillisecond);

void Score(benchmark::State& state, int rows, const char* option) {
  Play(state, rows, Scattered,
       std::string("run M_Datax(5)\nselect A:A\nset \"") + option + "\" on\npress OK\npick \"Book 01\"\n");
}

void MillionVanDerWaerdenScores(benchmark::State& state) { Score(state, Million, "van der Waerden"); }
BENCHMARK(MillionVanDerWaerdenScores)->Unit(benchmark::kMillisecond);

void MillionBlomScores(benchmark::State& state) { Score(state, Million, "Blom"); }
BENCHMARK(MillionBlomScores)->Unit(benchmark::kMillisecond);

void TenThousandExpectedOrderScores(benchmark::State& state) { Score(state, 10'000, "expected normal order"); }
BENCHMARK(TenThousandExpectedOrderScores)->Unit(benchmark::kMillisecond);

void MillionPairwiseSlopesWithMedian(benchmark::State& state) {
  // 1414 rows have 999 091 pairs.
  Play(state, 1414, Scattered, "run M_Pairwise(2)\nselect A:A\nselect A:A\nanswer Yes\npick \"Book 01\"\n");
}
BENCHMARK(MillionPairwiseSlopesWithMedian)->Unit(benchmark::kMillisecond);

void MillionClearedOfMissing(benchmark::State& state) {
  Play(state, Million, Scattered, "run M_Datax(1)\nselect A:A\npick \"Book 01\"\n");
}
BENCHMARK(MillionClearedOfMissing)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tellurix
