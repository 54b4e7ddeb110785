// Charts: recording, rendering, drawing again, and the size of the text in a report.
#include <benchmark/benchmark.h>

#include <cmath>
#include <filesystem>
#include <functional>
#include <string>

#include "graphics/Graphics.h"
#include "graphics/ImageFile.h"
#include "graphics/Metafile.h"
#include "graphics/Renderer.h"
#include "graphics/ReportPicture.h"
#include "host/Nobody.h"

namespace {

using namespace tellurix;

// The records of a picture with its frame.
std::string Recorded(const char* title, const std::function<void(Graphics&)>& draw) {
  NobodyHost host;
  const Regional regional;
  const std::filesystem::path folder = std::filesystem::temp_directory_path();
  Graphics graphics(host, regional, folder);
  graphics.BeginPicture(true);
  graphics.DrawFrame(true, title, -3);
  draw(graphics);
  graphics.BeginPicture(false);
  std::filesystem::remove(graphics.Recording());
  return graphics.picture.Records();
}

// A scatter of markers of all shapes.
std::string RecordedMarkers(int markers) {
  return Recorded("Scatter", [&](Graphics& graphics) {
    for (int n = 0; n < SeriesCount; ++n) graphics.looks.Series[static_cast<std::size_t>(n)].Shape = n % 9;
    for (int i = 0; i < markers; ++i) {
      graphics.DrawMarker(150 + i * 7919 % 900, 100 + static_cast<int>(i * 104729L % 600), 8, i % SeriesCount);
    }
  });
}

void RecordMarkers(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(RecordedMarkers(static_cast<int>(state.range(0))));
}
BENCHMARK(RecordMarkers)->Arg(100'000)->Unit(benchmark::kMillisecond);

void ReadMarkers(benchmark::State& state) {
  const std::string bytes = RecordedMarkers(static_cast<int>(state.range(0)));
  for (auto _ : state) benchmark::DoNotOptimize(ReadMetafile(bytes));
}
BENCHMARK(ReadMarkers)->Arg(100'000)->Unit(benchmark::kMillisecond);

// From the bytes in a report to those of a PNG of twice the page's size.
void MarkersToPng(benchmark::State& state) {
  const std::string bytes = RecordedMarkers(static_cast<int>(state.range(0)));
  FontBook fonts;
  for (auto _ : state) {
    const auto drawing = ReadMetafile(bytes);
    benchmark::DoNotOptimize(EncodeBitmap(RenderImage(*drawing, fonts, 2264, 1600), BitmapFormat::Png));
  }
}
BENCHMARK(MarkersToPng)->Arg(100'000)->Unit(benchmark::kMillisecond);

// What the view of a report does when it shows the chart again.
void DrawMarkersAgain(benchmark::State& state) {
  const auto drawing = ReadMetafile(RecordedMarkers(static_cast<int>(state.range(0))));
  FontBook fonts;
  RenderImage(*drawing, fonts, 1132, 800);
  for (auto _ : state) benchmark::DoNotOptimize(RenderImage(*drawing, fonts, 1132, 800));
}
BENCHMARK(DrawMarkersAgain)->Arg(10'000)->Unit(benchmark::kMillisecond);

void TextOfCircles(benchmark::State& state) {
  const std::string records = Recorded("Circles", [&](Graphics& graphics) {
    for (int i = 0; i < state.range(0); ++i) graphics.DrawMarker(150 + i % 900, 100 + i * 31 % 600, 8, 0);
  });
  std::size_t size = 0;
  for (auto _ : state) size = PictureGroupText(records, 13692, 9676).size();
  state.counters["bytes"] = static_cast<double>(size);
}
BENCHMARK(TextOfCircles)->Arg(1000)->Unit(benchmark::kMicrosecond);

}  // namespace
