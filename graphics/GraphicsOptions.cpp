#include "graphics/GraphicsOptions.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <vector>

#include "host/Form.h"
#include "numeric/Regional.h"
#include "numeric/Rounding.h"

namespace tellurix {

namespace {

constexpr const char* Title = "Graphics Options";
constexpr int OfferedSeries = 8;
constexpr int SmallestFont = 4, LargestFont = 200;
constexpr int WidestPen = 10;

struct NamedColour {
  const char* name;
  std::int32_t colour;  // 0x00BBGGRR
};
// Behind the primary colours of the defaults stand those of Okabe and Ito (Color Universal Design, 2008), which people
// with any colour vision tell apart.
constexpr std::array<NamedColour, 14> Palette{{{"Black", 0},
                                               {"Grey", 0x808080},
                                               {"Red", 0x0000FF},
                                               {"Green", 0x00FF00},
                                               {"Blue", 0xFF0000},
                                               {"Yellow", 0x00FFFF},
                                               {"Orange", 0x009FE6},
                                               {"Sky blue", 0xE9B456},
                                               {"Bluish green", 0x739E00},
                                               {"Dark yellow", 0x42E4F0},
                                               {"Dark blue", 0xB27200},
                                               {"Vermilion", 0x005ED5},
                                               {"Reddish purple", 0xA779CC},
                                               {"White", 0xFFFFFF}}};
constexpr const char* OtherColour = "Other";

const std::vector<std::string> Shapes{"Circle",
                                      "Square",
                                      "Triangle",
                                      "Plus sign",
                                      "Diagonal cross",
                                      "Circle with a stroke",
                                      "Square with a diagonal",
                                      "Square with both diagonals",
                                      "Dash"};
const std::vector<std::string> Styles{"Solid", "Dashes", "Dots", "Dashes and dots", "Dashes and two dots", "No line"};

std::vector<std::string> ColourNames() {
  std::vector<std::string> names;
  for (const NamedColour& one : Palette) names.emplace_back(one.name);
  names.emplace_back(OtherColour);
  return names;
}

// The row of a colour in the palette; the last row, "Other", for those it does not name.
int RowOf(std::int32_t colour) {
  const auto found = std::ranges::find_if(Palette, [&](const NamedColour& one) { return one.colour == colour; });
  return static_cast<int>(found - Palette.begin());
}

// Red and blue change places between pictures and colour controls, which hold 0xRRGGBB as a decimal number.
std::int32_t Exchanged(std::int32_t colour) {
  return (colour & 0xFF) << 16 | (colour & 0xFF00) | (colour >> 16 & 0xFF);
}

std::string ColourText(std::int32_t colour) { return std::to_string(Exchanged(colour)); }

std::optional<std::int32_t> ColourOf(const std::string& text) {
  const auto number = ReadNumber(text, {});
  if (!number || *number < 0 || *number > 0xFFFFFF) return std::nullopt;
  return Exchanged(ToInteger(*number));
}

class OptionsForm {
 public:
  OptionsForm(Host& host, const ChartLooks& looks, int helpContext)
      : host_(host), looks_(looks), form_("lines", Title) {
    form_.helpContext = helpContext;
    BuildSeries();
    BuildFont("Title", "Title font", looks_.TitleFont);
    BuildFont("Label", "Label font", looks_.LabelFont);
    form_.AddCheck("RotateAllY", "Rotate Y axis label by default", looks_.RotateAllY);
    form_.AddCheck("BoxAxes", "Box in all axes (top and right hand side lines)", looks_.BoxAxes);
    form_.AddCheck("AllBlack", "Draw all lines and text in black", looks_.AllBlack);
    form_.AddCheck("RequestScales", "Request scale limits for each graph", looks_.RequestScales);
    form_.AddButton("OK", "&OK", ButtonRole::Default);
    form_.AddButton("Cancel", "&Cancel", ButtonRole::Cancel);
    form_.onChange = [this](const Control& control) { Changed(control.id); };
    form_.onPress = [this](const Control& control) {
      if (control.id == "OK" && TakeFonts()) form_.Finish(true);
    };
  }

  bool Run(ChartLooks& looks) {
    const NormalPointerHere pointer(host_);
    if (!host_.RunForm(form_)) return false;
    looks_.RotateAllY = form_.IsChecked("RotateAllY");
    looks_.BoxAxes = form_.IsChecked("BoxAxes");
    looks_.AllBlack = form_.IsChecked("AllBlack");
    looks_.RequestScales = form_.IsChecked("RequestScales");
    looks = looks_;
    return true;
  }

 private:
  // --- the series: one is shown at a time ---

  void BuildSeries() {
    std::vector<std::string> series, widths;
    for (int n = 1; n <= OfferedSeries; ++n) series.push_back(fmt::format("Series {}", n));
    for (int width = 0; width <= WidestPen; ++width) widths.push_back(std::to_string(width));
    form_.AddList("Series", "Series", std::move(series), 0);
    AddSeriesCombo("Colour", "Marker Colour", ColourNames());
    Control other{.kind = ControlKind::Colour, .id = "Other", .caption = "Other colour"};
    other.group = "Series";
    form_.Add(std::move(other));
    AddSeriesCombo("Shape", "Marker shape", Shapes);
    AddSeriesCombo("Width", "Line width", std::move(widths));
    AddSeriesCombo("Style", "Line style", Styles);
    ShowSeries();
  }
  void AddSeriesCombo(const char* id, const char* caption, std::vector<std::string> items) {
    form_.AddCombo(id, caption, std::move(items), 0).group = "Series";
  }

  SeriesStyle& Shown() {
    return looks_.Series[static_cast<std::size_t>(std::clamp(form_.IndexOf("Series"), 0, OfferedSeries - 1))];
  }

  void ShowRow(const char* id, int row) {
    form_.Update(id, [&](Control& combo) {
      combo.index = std::clamp(row, 0, static_cast<int>(combo.items.size()) - 1);
      combo.value = combo.items[static_cast<std::size_t>(combo.index)];
    });
  }

  void ShowSeries() {
    const SeriesStyle& style = Shown();
    ShowRow("Colour", RowOf(style.Colour));
    form_.Update("Other", [&](Control& control) { control.value = ColourText(style.Colour); });
    ShowRow("Shape", style.Shape);
    ShowRow("Width", style.Width);
    ShowRow("Style", style.Style);
  }

  void Changed(const std::string& id) {
    SeriesStyle& style = Shown();
    if (id == "Series") ShowSeries();
    if (id == "Shape") style.Shape = form_.IndexOf("Shape");
    if (id == "Width") style.Width = form_.IndexOf("Width");
    if (id == "Style") style.Style = form_.IndexOf("Style");
    if (id == "Colour") {
      const auto row = static_cast<std::size_t>(form_.IndexOf("Colour"));
      if (row < Palette.size()) style.Colour = Palette[row].colour;
      form_.Update("Other", [&](Control& control) { control.value = ColourText(style.Colour); });
    }
    if (id == "Other") {
      style.Colour = ColourOf(form_.ValueOf("Other")).value_or(style.Colour);
      ShowRow("Colour", RowOf(style.Colour));
    }
  }

  // --- fonts ---

  void BuildFont(const std::string& prefix, const char* group, const FontSpec& font) {
    form_.AddText(prefix + "Font", "Font", font.Name).group = group;
    form_.AddText(prefix + "Size", "Size", std::to_string(font.Size)).group = group;
    form_.AddCheck(prefix + "Bold", "Bold", font.Bold > 550).group = group;
    form_.AddCheck(prefix + "Italic", "Italic", font.Italic).group = group;
    form_.AddCheck(prefix + "Uline", "Underline", font.Underline).group = group;
    form_.AddCheck(prefix + "Strike", "Strike out", font.Strike).group = group;
    Control colour{.kind = ControlKind::Colour, .id = prefix + "Colour", .caption = "Colour"};
    colour.group = group;
    colour.value = ColourText(font.Colour);
    form_.Add(std::move(colour));
  }

  bool TakeFont(const std::string& prefix, FontSpec& font) {
    const auto size = ReadNumber(form_.ValueOf(prefix + "Size"), {});
    if (!size || *size < SmallestFont || *size > LargestFont || form_.ValueOf(prefix + "Font").empty()) return false;
    font.Name = form_.ValueOf(prefix + "Font");
    font.Size = ToInteger(*size);
    // A weight between plain and bold stays while the box says the same.
    if (form_.IsChecked(prefix + "Bold") != (font.Bold > 550)) font.Bold = font.Bold > 550 ? 400 : 700;
    font.Italic = form_.IsChecked(prefix + "Italic");
    font.Underline = form_.IsChecked(prefix + "Uline");
    font.Strike = form_.IsChecked(prefix + "Strike");
    font.Colour = ColourOf(form_.ValueOf(prefix + "Colour")).value_or(font.Colour);
    return true;
  }

  bool TakeFonts() {
    if (TakeFont("Title", looks_.TitleFont) && TakeFont("Label", looks_.LabelFont)) return true;
    host_.ShowMessage({.text = fmt::format("A font needs a name and a size from {} to {}.", SmallestFont, LargestFont),
                       .title = Title,
                       .style = WarningIcon});
    return false;
  }

  Host& host_;
  ChartLooks looks_;  // as edited so far
  Form form_;
};

}  // namespace

bool RunGraphicsOptions(Host& host, ChartLooks& looks, int helpContext) {
  return OptionsForm(host, looks, helpContext).Run(looks);
}

}  // namespace tellurix
