#include "graphics/Page.h"

#include <fmt/format.h>

#include <algorithm>

#include "numeric/Regional.h"
#include "numeric/Rounding.h"

namespace tellurix {

namespace {

constexpr double TallestPage = 5;
constexpr std::int32_t LargestColour = 0xFFFFFF;

class Reading {
 public:
  explicit Reading(const LooksReader& read) : read_(read) {}

  std::string Text(const std::string& key) const { return read_(key); }
  std::int32_t Integer(const std::string& key, std::int32_t low, std::int32_t high, std::int32_t otherwise) const {
    const auto number = ReadNumber(read_(key), {});
    return number && *number >= low && *number <= high ? ToInteger(*number) : otherwise;
  }
  bool Flag(const std::string& key) const { return ReadNumber(read_(key), {}).value_or(0) != 0; }

 private:
  const LooksReader& read_;
};

FontSpec ReadFont(const Reading& settings, const std::string& prefix, std::int32_t standardSize) {
  FontSpec font;
  font.Name = settings.Text(prefix + "Font");
  if (font.Name.empty()) font.Name = "Arial";
  font.Size = settings.Integer(prefix + "Size", 4, 200, standardSize);
  font.Bold = settings.Integer(prefix + "Bold", 1, 1000, 400);
  font.Italic = settings.Flag(prefix + "Italic");
  font.Underline = settings.Flag(prefix + "Uline");
  font.Strike = settings.Flag(prefix + "Strike");
  font.Colour = settings.Integer(prefix + "Colour", 0, LargestColour, 0);
  return font;
}

std::string FlagText(bool on) { return on ? "-1" : "0"; }

void WriteFont(const FontSpec& font, const std::string& prefix, const LooksWriter& write) {
  write(prefix + "Font", font.Name);
  write(prefix + "Size", std::to_string(font.Size));
  write(prefix + "Bold", std::to_string(font.Bold));
  write(prefix + "Italic", FlagText(font.Italic));
  write(prefix + "Uline", FlagText(font.Underline));
  write(prefix + "Strike", FlagText(font.Strike));
  write(prefix + "Colour", std::to_string(font.Colour));
}

double Map(double v, const AxisScale& scale, std::int32_t from, std::int32_t length) {
  const double span = scale.End() - scale.start;
  // Scales that reach over the whole range of a double are mapped by halves.
  const double share = span < std::numeric_limits<double>::infinity()
                           ? (v - scale.start) / span
                           : (v / 2 - scale.start / 2) / (scale.End() / 2 - scale.start / 2);
  return from + share * length;
}

}  // namespace

void Page::GrowFor(int items) {
  PageScale = items < 11 ? 1 : std::min(1 + (items - 10) / 20.0, TallestPage);
  PageHeight = ToInteger(800 * PageScale);
}

void Page::Restore() { GrowFor(0); }

void Page::ResetFrame() {
  PlotLeft = 150;
  PlotBottom = 100;
  PlotWidth = 900;
  PlotHeight = ToInteger(800 * PageScale) - 200;
}

void Page::ShiftFrame(std::int32_t shift) {
  PlotLeft += shift;
  PlotWidth -= shift;
}

double Page::MapX(double v) const { return Map(v, X, PlotLeft, PlotWidth); }
double Page::MapY(double v) const { return Map(v, Y, PlotBottom, PlotHeight); }

ChartLooks ReadLooks(const LooksReader& read) {
  const Reading settings(read);
  ChartLooks looks;
  for (int n = 0; n < SeriesCount; ++n) {
    SeriesStyle& style = looks.Series[static_cast<std::size_t>(n)];
    style.Shape = settings.Integer(fmt::format("Shape{}", n), 0, 8, 0);
    style.Colour = settings.Integer(fmt::format("Colour{}", n), 0, LargestColour, 0);
    style.Width = settings.Integer(fmt::format("Width{}", n), 0, 100, 1);
    style.Style = settings.Integer(fmt::format("Style{}", n), 0, 5, 0);
  }
  looks.TitleFont = ReadFont(settings, "Title", 28);
  looks.LabelFont = ReadFont(settings, "Label", 20);
  looks.AllBlack = settings.Flag("AllBlack");
  looks.RequestScales = settings.Flag("RequestScales");
  looks.BoxAxes = settings.Flag("BoxAxes");
  looks.RotateAllY = settings.Flag("RotateAllY");
  return looks;
}

void WriteLooks(const ChartLooks& looks, const LooksWriter& write) {
  WriteFont(looks.TitleFont, "Title", write);
  WriteFont(looks.LabelFont, "Label", write);
  write("AllBlack", FlagText(looks.AllBlack));
  write("RequestScales", FlagText(looks.RequestScales));
  write("BoxAxes", FlagText(looks.BoxAxes));
  write("RotateAllY", FlagText(looks.RotateAllY));
  for (int n = 0; n < SeriesCount; ++n) {
    const SeriesStyle& style = looks.Series[static_cast<std::size_t>(n)];
    write(fmt::format("Shape{}", n), std::to_string(style.Shape));
    write(fmt::format("Colour{}", n), std::to_string(style.Colour));
    write(fmt::format("Width{}", n), std::to_string(style.Width));
    write(fmt::format("Style{}", n), std::to_string(style.Style));
  }
}

}  // namespace tellurix
