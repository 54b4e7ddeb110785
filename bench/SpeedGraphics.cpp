// Charts: recording, rendering, drawing again, and the size of the text in a report.
#include <benchmark/benchmark.h>

#include <cmath>
#include <filesystem>
#include <string>

#include "graphics/Graphics.h"
#include "graphics/ImageFile.h"
#include "graphics/Metafile.h"
#include "graphics/Renderer.h"
#include "graphics/ReportPicture.h"

namespace {

using namespace tellurix;

class NobodyHost : public Host {
 public:
  Reply ShowMessage(const Message&) override { return Reply::Ok; }
  bool RunForm(Form&) override { return false; }
  void ShowForm(std::shared_ptr<Form>) override {}
  SelectionReply WaitForSelection(const SelectionRequest&) override { return {}; }
  std::optional<FileChoice> ChooseFile(const FileRequest&) override { return std::nullopt; }
  bool ShowProgress(const Progress&) override { return true; }
  void ShowHelp(int) override {}
  void SetBusy(bool) override {}
  bool IsBusy() const override { return false; }
  void SetCommandsEnabled(bool) override {}
  void SetStatus(std::string_view) override {}
  void Beep() override {}
  void SetClipboard(std::string_view) override {}
  std::string Clipboard() override { return {}; }
  bool RunProgram(std::string_view) override { return false; }
};

// A scatter of markers of all series in its frame.
std::string Recorded(int markers) {
  NobodyHost host;
  const Regional regional;
  const std::filesystem::path folder = std::filesystem::temp_directory_path();
  Graphics graphics(host, regional, folder);
  for (int n = 0; n < SeriesCount; ++n) graphics.looks.Series[static_cast<std::size_t>(n)].Shape = n % 9;
  graphics.BeginPicture(true);
  graphics.DrawFrame(true, "Scatter", -3);
  for (int i = 0; i < markers; ++i) {
    graphics.DrawMarker(150 + i * 7919 % 900, 100 + static_cast<int>(i * 104729L % 600), 8, i % SeriesCount);
  }
  graphics.BeginPicture(false);
  std::filesystem::remove(graphics.Recording());
  return graphics.picture.Records();
}

void RecordMarkers(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(Recorded(static_cast<int>(state.range(0))));
}
BENCHMARK(RecordMarkers)->Arg(100'000)->Unit(benchmark::kMillisecond);

void ReadMarkers(benchmark::State& state) {
  const std::string bytes = Recorded(static_cast<int>(state.range(0)));
  for (auto _ : state) benchmark::DoNotOptimize(ReadMetafile(bytes));
}
BENCHMARK(ReadMarkers)->Arg(100'000)->Unit(benchmark::kMillisecond);

// From the bytes in a report to those of a PNG of twice the page's size.
void MarkersToPng(benchmark::State& state) {
  const std::string bytes = Recorded(static_cast<int>(state.range(0)));
  FontBook fonts;
  for (auto _ : state) {
    const auto drawing = ReadMetafile(bytes);
    benchmark::DoNotOptimize(EncodeBitmap(RenderImage(*drawing, fonts, 2264, 1600), BitmapFormat::Png));
  }
}
BENCHMARK(MarkersToPng)->Arg(100'000)->Unit(benchmark::kMillisecond);

// What the view of a report does when it shows the chart again.
void DrawMarkersAgain(benchmark::State& state) {
  const auto drawing = ReadMetafile(Recorded(static_cast<int>(state.range(0))));
  FontBook fonts;
  RenderImage(*drawing, fonts, 1132, 800);
  for (auto _ : state) benchmark::DoNotOptimize(RenderImage(*drawing, fonts, 1132, 800));
}
BENCHMARK(DrawMarkersAgain)->Arg(10'000)->Unit(benchmark::kMillisecond);

void TextOfCircles(benchmark::State& state) {
  NobodyHost host;
  const Regional regional;
  const std::filesystem::path folder = std::filesystem::temp_directory_path();
  Graphics graphics(host, regional, folder);
  graphics.BeginPicture(true);
  graphics.DrawFrame(true, "Circles", -3);
  for (int i = 0; i < state.range(0); ++i) graphics.DrawMarker(150 + i % 900, 100 + i * 31 % 600, 8, 0);
  graphics.BeginPicture(false);
  std::filesystem::remove(graphics.Recording());
  std::size_t size = 0;
  for (auto _ : state) size = PictureGroupText(graphics.picture.Records(), 13692, 9676).size();
  state.counters["bytes"] = static_cast<double>(size);
}
BENCHMARK(TextOfCircles)->Arg(1000)->Unit(benchmark::kMicrosecond);

}  // namespace
