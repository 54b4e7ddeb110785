#include "session/ReportGraphics.h"

#include <fmt/format.h>

#include <array>
#include <fstream>
#include <optional>

#include "graphics/GraphicsOptions.h"
#include "graphics/Metafile.h"
#include "graphics/ReportPicture.h"
#include "graphics/ScaleForm.h"
#include "session/SessionSettings.h"
#include "session/Skeleton.h"

namespace tellurix {

namespace {

namespace fs = std::filesystem;

std::optional<std::string> ReadAll(const fs::path& file) {
  std::ifstream in(file, std::ios::binary);
  std::string bytes;
  std::array<char, 16384> block;
  while (in.read(block.data(), block.size()) || in.gcount() > 0) {
    bytes.append(block.data(), static_cast<std::size_t>(in.gcount()));
  }
  if (!in.eof()) return std::nullopt;
  return bytes;
}

// The recording behind a placeable header, in a file of its own that replaces an old one.
bool WritePlaceable(const fs::path& file, const Page& page, std::string_view records) {
  std::error_code ignored;
  fs::remove(file, ignored);
  std::ofstream out(file, std::ios::binary | std::ios::trunc);
  out << PlaceableHeader(Page::PageWidth, page.PageHeight) << records;
  out.close();
  return out.good();
}

}  // namespace

bool SendPictureToReport(Session& session, Report& report) {
  const Graphics& graphics = session.graphics;
  const auto records = ReadAll(graphics.Recording());
  std::optional<NaturalSize> size;
  if (records && WritePlaceable(graphics.Placeable(), graphics.page, *records)) {
    if (const auto placeable = ReadAll(graphics.Placeable())) size = PlaceableSizeOf(*placeable);
  }
  if (!size) {
    ShowMessage(session, "Error creating metafile.", WarningIcon, "Tellurix Report Generator");
    return false;
  }
  const std::string text = fmt::format("{{\\rtf1\\ansi {}{{\\v /h/{}/}}\\par\\par }}",
                                       PictureGroupText(*records, size->width, size->height), report.helpContext);
  auto rich = ReadRtf(text);
  if (!rich) return false;
  report.Append(std::move(*rich));
  RunResult& run = session.results.Current();
  run.pictures.push_back(graphics.record);
  run.delivered = true;
  return true;
}

bool SendCanvasToReport(Session& session, Report& report, std::string_view title) {
  TemplateMerge merge = session.Merge();
  if (!merge.OpenTemplate("asciigr.rtf")) return false;
  merge.SetField("ti", title);
  merge.SetField("gr", Value::Rich(session.graphics.canvas.RichRows()));
  merge.CloseTemplate();
  return merge.InsertMergedText(report);
}

bool ScaleLimitsPrompt(Session& session, bool needsY) {
  Graphics& graphics = session.graphics;
  if (!graphics.looks.RequestScales) return true;
  if (!RunScaleForm(session.host, graphics.page, graphics.looks.RequestScales, needsY, session.options.regional,
                    session.HelpContext))
    return false;
  if (!graphics.looks.RequestScales) SaveLooks(session);
  return true;
}

bool InsertPlot(Session& session, Report& report, bool needsY, const std::function<void()>& draw) {
  Graphics& graphics = session.graphics;
  bool sent = false;
  if (ScaleLimitsPrompt(session, needsY) && graphics.BeginPicture(true)) {
    draw();
    sent = graphics.BeginPicture(false) && SendPictureToReport(session, report);
  }
  graphics.page = Page();
  return sent;
}

bool GraphicsOptions(Session& session) {
  if (!RunGraphicsOptions(session.host, session.graphics.looks, session.HelpContext)) return false;
  SaveLooks(session);
  return true;
}

void LoadLooks(Session& session) {
  session.graphics.looks =
      ReadLooks([&](std::string_view key) { return SettingValue(session.settings, "Graphics", key); });
}

void SaveLooks(Session& session) {
  WriteLooks(session.graphics.looks, [&](std::string_view key, const std::string& value) {
    session.settings.SetIniValue("Graphics", key, value);
  });
}

}  // namespace tellurix
