#include "desktop/SheetForms.h"

#include <fmt/format.h>

#include <QColor>
#include <QFontDatabase>
#include <QFontMetricsF>
#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <string>
#include <vector>

#include "desktop/GridView.h"
#include "desktop/MainWindow.h"
#include "desktop/SheetLooks.h"
#include "desktop/SheetPrinting.h"
#include "host/Form.h"
#include "numeric/Text.h"

namespace tellurix {

namespace {

using Kind = NumberFormat::Form;

constexpr const char* Mixed = "(as they are)";
constexpr const char* Automatic = "Automatic";
constexpr double LargestFont = 400;
constexpr double LargestWidth = 255;
constexpr double LargestHeight = 1000;

void AddOkAndCancel(Form& form) {
  form.AddButton("ok", "OK", ButtonRole::Default);
  form.AddButton("cancel", "Cancel", ButtonRole::Cancel);
}

// Runs a form whose OK is taken only when `take` answers no reason against it.
bool Ask(MainWindow& main, Form& form, const std::function<std::string()>& take) {
  form.helpContext = main.DesktopSession().HelpContext;
  const auto others = form.onPress;
  form.onPress = [&, others](const Control& button) {
    if (button.id != "ok") {
      if (others) others(button);
      return;
    }
    const std::string reason = take();
    if (reason.empty()) {
      form.Finish(true);
    } else {
      main.Refuse(QString::fromStdString(reason));
    }
  };
  return main.DesktopSession().host.RunForm(form);
}

bool RefusedAsLocked(MainWindow& main, GridView& grid) {
  if (!grid.CommitEdit()) return true;
  if (!grid.Book().SheetLocked()) return false;
  main.Refuse(QString::fromStdString(LockedText(grid.Book())));
  return true;
}

// A choice out of several; where the marked cells differ the first row says so and leaves them.
void AddChoice(Form& form, const char* id, const char* caption, std::vector<std::string> items,
               std::optional<int> index) {
  if (!index) items.insert(items.begin(), Mixed);
  form.AddCombo(id, caption, std::move(items), index.value_or(0));
}

std::optional<int> ChoiceOf(const Form& form, const char* id) {
  const Control& combo = *form.Find(id);
  const bool canStay = combo.items.front() == Mixed;
  if (canStay && combo.index <= 0) return std::nullopt;
  return canStay ? combo.index - 1 : combo.index;
}

std::optional<double> SizeOf(const std::string& text, const Regional& regional, double least, double most) {
  const auto size = ReadNumber(text, regional);
  return size && *size >= least && *size <= most ? size : std::nullopt;
}

std::string NumberText(double value, const Regional& regional) { return Localized(fmt::format("{}", value), regional); }

// --- what the marked cells have in common ---

// Nothing: they differ.
struct CommonLook {
  std::optional<int> kind;  // row of the list of number formats
  std::optional<int> decimals;
  std::optional<std::string> fontName;
  std::optional<double> fontSize;
  std::optional<int> style;  // bit 0 bold, bit 1 italic
  std::optional<bool> underline;
  std::optional<int> textColour;
  std::optional<int> fillColour;
  std::optional<int> alignment;
};

const std::vector<std::string>& NumberKinds() {
  static const std::vector<std::string> kinds{
      "General", "Fixed decimals", "Thousands, fixed decimals",  "Scientific", "Percent",
      "Date",    "Date and time",  "Date and time with seconds", "Text"};
  return kinds;
}

int KindOf(const NumberFormat& format) {
  switch (format.form) {
    case Kind::Fixed:
      return format.grouping ? 2 : 1;
    case Kind::Scientific:
      return 3;
    case Kind::Percent:
      return 4;
    case Kind::Date:
      return 5;
    case Kind::DateMinutes:
      return 6;
    case Kind::DateSeconds:
      return 7;
    case Kind::Text:
      return 8;
    default:
      return 0;
  }
}

NumberFormat FormatOf(int kind, int decimals) {
  constexpr std::array forms{Kind::General, Kind::Fixed,       Kind::Fixed,       Kind::Scientific, Kind::Percent,
                             Kind::Date,    Kind::DateMinutes, Kind::DateSeconds, Kind::Text};
  return {forms[static_cast<std::size_t>(kind)], decimals, kind == 2};
}

bool HasDecimals(int kind) { return kind >= 1 && kind <= 4; }

// The lines of a range that are looked at: all of a few, else the first ones, a sample and the last.
std::vector<int> Sampled(int first, int last, int most) {
  std::vector<int> lines;
  const int count = last - first + 1;
  const int dense = count <= most ? count : most / 2;
  for (int i = 0; i < dense; ++i) lines.push_back(first + i);
  if (dense == count) return lines;
  const int stride = (count - dense) / (most - dense) + 1;
  for (int line = first + dense; line < last; line += stride) lines.push_back(line);
  lines.push_back(last);
  return lines;
}

CommonLook CommonOf(const Workbook& workbook, const std::vector<CellRange>& ranges) {
  CommonLook common;
  bool isFirst = true;
  CellLook before;
  const auto meet = [&](auto& field, const auto& value) {
    if (isFirst) {
      field = value;
    } else if (field && *field != value) {
      field.reset();
    }
  };
  for (const CellRange& range : ranges) {
    const std::vector<int> rows = Sampled(range.firstRow, range.lastRow, 2000);
    for (const int column : Sampled(range.firstColumn, range.lastColumn, 256)) {
      for (const int row : rows) {
        const CellLook look = workbook.LookAt(row, column);
        if (!isFirst && look == before) continue;
        meet(common.kind, KindOf(look.number));
        meet(common.decimals, look.number.decimals);
        meet(common.fontName, look.fontName);
        meet(common.fontSize, look.fontSize);
        meet(common.style, (look.bold ? 1 : 0) | (look.italic ? 2 : 0));
        meet(common.underline, look.underline);
        meet(common.textColour, look.textColour);
        meet(common.fillColour, look.fillColour);
        meet(common.alignment, static_cast<int>(look.alignment));
        before = look;
        isFirst = false;
      }
    }
  }
  return common;
}

// --- number formats ---

void AddNumberFormat(Form& form, const CommonLook& common, double sample, const Regional& regional) {
  AddChoice(form, "number", "&Number format:", NumberKinds(), common.kind);
  form.AddText("decimals", "&Decimals (0 to 15):", common.decimals ? std::to_string(*common.decimals) : "");
  form.AddLabel("sample", "");
  const auto show = [&form, sample, &regional] {
    const auto kind = ChoiceOf(form, "number");
    form.Update("decimals", [&](Control& entry) { entry.enabled = kind && HasDecimals(*kind); });
    const auto decimals = ReadNumber(form.ValueOf("decimals"), Regional());
    std::string text;
    if (kind && (decimals || !HasDecimals(*kind))) {
      text = "Sample: " + FormatNumber(sample, FormatOf(*kind, static_cast<int>(decimals.value_or(0))), regional);
    }
    form.Update("sample", [&](Control& label) { label.caption = text; });
  };
  form.onChange = [show](const Control&) { show(); };
  show();
}

// The format that is asked for, or nothing when it is to stay; a reason when it cannot be.
std::string ReadNumberFormat(const Form& form, const CommonLook& common, std::optional<NumberFormat>& format) {
  format.reset();
  const auto kind = ChoiceOf(form, "number");
  if (!kind) return {};
  int decimals = common.decimals.value_or(NumberFormat().decimals);
  if (HasDecimals(*kind)) {
    const auto typed = ReadNumber(form.ValueOf("decimals"), Regional());
    if (!typed || *typed < 0 || *typed > 15 || *typed != std::floor(*typed)) {
      return "Decimals are a whole number from 0 to 15.";
    }
    decimals = static_cast<int>(*typed);
  }
  if (kind != common.kind || (HasDecimals(*kind) && decimals != common.decimals)) format = FormatOf(*kind, decimals);
  return {};
}

// --- colours ---

std::string ColourText(int colour) {
  constexpr std::pair<int, const char*> names[] = {
      {0x000000, "Black"},  {0xFFFFFF, "White"},  {0xFF0000, "Red"},     {0x00FF00, "Lime"},
      {0x0000FF, "Blue"},   {0xFFFF00, "Yellow"}, {0xFF00FF, "Magenta"}, {0x00FFFF, "Cyan"},
      {0x800000, "Maroon"}, {0x008000, "Green"},  {0x000080, "Navy"},    {0x808000, "Olive"},
      {0x800080, "Purple"}, {0x008080, "Teal"},   {0xC0C0C0, "Silver"},  {0x808080, "Grey"}};
  for (const auto& [value, name] : names) {
    if (value == colour) return name;
  }
  return fmt::format("#{:06X}", colour);
}

void AddColour(Form& form, const char* id, const char* caption, const Workbook& workbook, const char* none,
               std::optional<int> colour) {
  std::vector<std::string> items{none};
  for (const int each : workbook.Settings().palette) items.push_back(ColourText(each));
  const std::string now = !colour ? Mixed : *colour == NoColour ? none : ColourText(*colour);
  if (std::ranges::find(items, now) == items.end()) items.insert(items.begin(), now);
  Control& combo = form.AddCombo(id, caption, items, static_cast<int>(std::ranges::find(items, now) - items.begin()));
  combo.editable = true;
}

// A colour of the palette, another by its English name or "#RRGGBB"; false for none of them.
bool ReadColour(const Form& form, const char* id, const char* none, std::optional<int> before,
                std::optional<int>& change) {
  change.reset();
  const std::string text(Trim(form.ValueOf(id)));
  if (text.empty() || text == Mixed) return true;
  int colour = NoColour;
  if (!EqualNoCase(text, none)) {
    const QColor named(QString::fromStdString(text));
    if (!named.isValid()) return false;
    colour = static_cast<int>(named.rgb() & 0xFFFFFFu);
  }
  if (before != colour) change = colour;
  return true;
}

std::vector<std::string> FontFamilies() {
  std::vector<std::string> families;
  for (const QString& family : QFontDatabase::families()) {
    if (QFontDatabase::isSmoothlyScalable(family)) families.push_back(family.toStdString());
  }
  return families;
}

const std::vector<std::string>& FontSizes() {
  static const std::vector<std::string> sizes{"8", "9", "10", "11", "12", "14", "16", "18", "20", "24", "28", "36"};
  return sizes;
}

void AddEntry(Form& form, const char* id, const char* caption, std::vector<std::string> items,
              const std::string& value) {
  const auto found = std::ranges::find(items, value);
  const int index = found == items.end() ? -1 : static_cast<int>(found - items.begin());
  Control& combo = form.AddCombo(id, caption, std::move(items), index);
  combo.editable = true;
  combo.value = value;
}

std::vector<CellRange> MarkedRanges(const Workbook& workbook) {
  std::vector<CellRange> ranges;
  for (int i = 0; i < workbook.SelectionCount(); ++i) ranges.push_back(workbook.GetSelection(i));
  return ranges;
}

}  // namespace

void FormatCells(MainWindow& main, GridView& grid) {
  if (RefusedAsLocked(main, grid)) return;
  Workbook& book = grid.Book();
  const Regional& regional = grid.RegionalSettings();
  const std::vector<CellRange> ranges = MarkedRanges(book);
  const CommonLook common = CommonOf(book, ranges);
  const CellView active = book.ReadRC(book.ActiveRow(), book.ActiveColumn());
  const std::string defaultFont = fmt::format("Default ({})", book.Settings().fontName);
  const std::string defaultSize = fmt::format("Default ({})", NumberText(book.Settings().fontSize, regional));

  Form form("FormatCells", "Format Cells");
  AddNumberFormat(form, common, std::abs(active.type) == NumberCell ? active.number : 1234.5, regional);
  std::vector<std::string> families = FontFamilies();
  families.insert(families.begin(), defaultFont);
  AddEntry(form, "font", "&Font:", std::move(families),
           !common.fontName           ? Mixed
           : common.fontName->empty() ? defaultFont
                                      : *common.fontName);
  std::vector<std::string> sizes = FontSizes();
  sizes.insert(sizes.begin(), defaultSize);
  AddEntry(form, "size", "Si&ze (points):", std::move(sizes),
           !common.fontSize        ? Mixed
           : *common.fontSize == 0 ? defaultSize
                                   : NumberText(*common.fontSize, regional));
  AddChoice(form, "style", "S&tyle:", {"Regular", "Bold", "Italic", "Bold italic"}, common.style);
  AddChoice(form, "underline", "&Underline:", {"None", "Single"},
            common.underline ? std::optional<int>(*common.underline ? 1 : 0) : std::nullopt);
  AddColour(form, "text", "Te&xt colour:", book, Automatic, common.textColour);
  AddColour(form, "fill", "F&ill colour:", book, "None", common.fillColour);
  AddChoice(form, "alignment", "&Alignment:", {"General", "Left", "Centre", "Right"}, common.alignment);
  AddOkAndCancel(form);

  LookChange change;
  const bool accepted = Ask(main, form, [&]() -> std::string {
    change = {};
    if (std::string reason = ReadNumberFormat(form, common, change.number); !reason.empty()) return reason;
    const std::string font(Trim(form.ValueOf("font")));
    if (!font.empty() && font != Mixed) {
      const std::string name = font == defaultFont ? "" : font;
      if (name != common.fontName) change.fontName = name;
    }
    const std::string size(Trim(form.ValueOf("size")));
    if (!size.empty() && size != Mixed) {
      const auto points = size == defaultSize ? 0.0 : SizeOf(size, regional, 1, LargestFont);
      if (!points) return "The size of a font is a number of points from 1 to 400.";
      if (points != common.fontSize) change.fontSize = *points;
    }
    if (const auto style = ChoiceOf(form, "style"); style && style != common.style) {
      change.bold = (*style & 1) != 0;
      change.italic = (*style & 2) != 0;
    }
    if (const auto line = ChoiceOf(form, "underline"); line && common.underline != (*line == 1)) {
      change.underline = *line == 1;
    }
    if (const auto side = ChoiceOf(form, "alignment"); side && side != common.alignment) {
      change.alignment = static_cast<CellLook::Alignment>(*side);
    }
    if (!ReadColour(form, "text", Automatic, common.textColour, change.textColour) ||
        !ReadColour(form, "fill", "None", common.fillColour, change.fillColour)) {
      return "A colour is one of the list, an English name, or #RRGGBB.";
    }
    return {};
  });
  const bool changes = change.number || change.fontName || change.fontSize || change.bold || change.underline ||
                       change.textColour || change.fillColour || change.alignment;
  if (!accepted || !changes) return;
  const GridStep step(book, "Format cells");
  for (const CellRange& range : ranges) book.SetLook(range, change);
}

void DescribeColumn(MainWindow& main, GridView& grid) {
  if (RefusedAsLocked(main, grid)) return;
  Workbook& book = grid.Book();
  const Regional& regional = grid.RegionalSettings();
  const int column = book.ActiveColumn();
  const CellRange cells{1, column, GridStore::MaxRows, column};
  int numbers = 0, texts = 0, missing = 0;
  std::optional<double> sample;
  for (int row = 1; row <= book.LastRow(); ++row) {
    const CellView cell = book.ReadRC(row, column);
    switch (std::abs(cell.type)) {
      case NumberCell:
        ++numbers;
        if (!sample) sample = cell.number;
        break;
      case TextCell:
        ++(cell.text == "*" ? missing : texts);
        break;
      default:
        break;
    }
  }
  const CommonLook common = CommonOf(book, {cells});
  const double width = book.ColumnWidth(column);

  Form form("DescribeColumn", "Describe Column Data");
  form.AddLabel("holds", fmt::format("Column {}: {} numbers, {} texts, {} marked as missing", ColumnLetters(column),
                                     numbers, texts, missing));
  form.AddText("heading", "&Heading:", book.ColText(column));
  form.AddText("width", "&Width (characters):", NumberText(width, regional));
  AddNumberFormat(form, common, sample.value_or(1234.5), regional);
  AddOkAndCancel(form);
  LookChange change;
  std::optional<double> wanted;
  if (!Ask(main, form, [&]() -> std::string {
        wanted = SizeOf(form.ValueOf("width"), regional, 0, LargestWidth);
        if (!wanted) return "The width of a column is a number of characters from 0 (hidden) to 255.";
        return ReadNumberFormat(form, common, change.number);
      })) {
    return;
  }
  const GridStep step(book, "Describe column");
  const std::string heading(Trim(form.ValueOf("heading")));
  if (heading != book.ColText(column)) book.ColText(column, heading);
  if (*wanted != width) book.SetColumnWidth(column, *wanted);
  if (change.number) book.SetLook(cells, change);
}

void ChooseDefaultFont(MainWindow& main, GridView& grid) {
  if (!grid.CommitEdit()) return;
  Workbook& book = grid.Book();
  const Regional& regional = grid.RegionalSettings();
  WorkbookSettings settings = book.Settings();
  Form form("DefaultFont", "Default Font");
  AddEntry(form, "font", "&Font:", FontFamilies(), settings.fontName);
  AddEntry(form, "size", "&Size (points):", FontSizes(), NumberText(settings.fontSize, regional));
  AddOkAndCancel(form);
  if (!Ask(main, form, [&]() -> std::string {
        settings.fontName = Trim(form.ValueOf("font"));
        const auto size = SizeOf(form.ValueOf("size"), regional, 1, LargestFont);
        if (settings.fontName.empty()) return "The font needs a name.";
        if (!size) return "The size of a font is a number of points from 1 to 400.";
        settings.fontSize = *size;
        return {};
      })) {
    return;
  }
  // Rows of the usual height stay as high as their text, with what they have to spare.
  const auto lines = [](const WorkbookSettings& of) {
    QFont font(QString::fromStdString(of.fontName));
    font.setPointSizeF(of.fontSize);
    return PixelsToPoints(QFontMetricsF(font).height());
  };
  const double spare = book.Settings().rowHeight - lines(book.Settings());
  settings.rowHeight = std::round(4 * (lines(settings) + std::max(spare, 1.0))) / 4;
  book.SetSettings(settings);
}

void EditPalette(MainWindow& main, GridView& grid) {
  Workbook& book = grid.Book();
  WorkbookSettings settings = book.Settings();
  Form form("Palette", "Colour Palette");
  const auto id = [](std::size_t i) { return fmt::format("colour{}", i + 1); };
  for (std::size_t i = 0; i < settings.palette.size(); ++i) {
    form.Add({.kind = ControlKind::Colour,
              .id = id(i),
              .caption = fmt::format("Colour {}:", i + 1),
              .value = std::to_string(settings.palette[i])});
  }
  form.AddButton("standard", "&Standard Colours", ButtonRole::None);
  AddOkAndCancel(form);
  form.onPress = [&](const Control&) {
    for (std::size_t i = 0; i < settings.palette.size(); ++i) {
      form.Update(id(i), [&](Control& colour) { colour.value = std::to_string(WorkbookSettings().palette[i]); });
    }
  };
  if (!Ask(main, form, [&]() -> std::string {
        for (std::size_t i = 0; i < settings.palette.size(); ++i) {
          const auto value = ReadNumber(form.ValueOf(id(i)), Regional());
          if (!value || *value < 0 || *value > 0xFFFFFF) return fmt::format("Colour {} is none.", i + 1);
          settings.palette[i] = static_cast<int>(*value);
        }
        return {};
      })) {
    return;
  }
  book.SetSettings(settings);
}

void EditSheetSettings(MainWindow& main, GridView& grid) {
  if (!grid.CommitEdit()) return;
  Workbook& book = grid.Book();
  SheetSettings settings = book.SettingsOfSheet();
  Form form("SheetSettings", "Sheet Settings");
  form.AddCheck("gridlines", "Show &gridlines", settings.showsGridlines);
  form.AddCheck("headings", "Show row and column &headings", settings.showsHeadings);
  form.AddCheck("zeros", "Show &zero values", settings.showsZeros);
  AddOkAndCancel(form);
  if (!Ask(main, form, [] { return std::string(); })) return;
  settings.showsGridlines = form.IsChecked("gridlines");
  settings.showsHeadings = form.IsChecked("headings");
  settings.showsZeros = form.IsChecked("zeros");
  book.SetSettingsOfSheet(settings);
}

void EditWorkbookOptions(MainWindow& main, GridView& grid) {
  if (!grid.CommitEdit()) return;
  Workbook& book = grid.Book();
  const Regional& regional = grid.RegionalSettings();
  WorkbookSettings settings = book.Settings();
  Form form("WorkbookOptions", "Workbook Options");
  form.AddText("width", "Default column &width (characters):", NumberText(settings.columnWidth, regional));
  form.AddText("height", "Default row &height (points):", NumberText(settings.rowHeight, regional));
  AddOkAndCancel(form);
  if (!Ask(main, form, [&]() -> std::string {
        const auto width = SizeOf(form.ValueOf("width"), regional, 1, LargestWidth);
        const auto height = SizeOf(form.ValueOf("height"), regional, 1, LargestHeight);
        if (!width) return "The width of a column is a number of characters from 1 to 255.";
        if (!height) return "The height of a row is a number of points from 1 to 1000.";
        settings.columnWidth = *width;
        settings.rowHeight = *height;
        return {};
      })) {
    return;
  }
  book.SetSettings(settings);
}

void PasteSpecial(MainWindow& main, GridView& grid) {
  if (RefusedAsLocked(main, grid)) return;
  Form form("PasteSpecial", "Paste Special");
  form.AddRadio("formulas", "&Formulas", "what", true);
  form.AddRadio("values", "&Values only", "what", false);
  form.AddCheck("transpose", "&Transpose rows and columns", false);
  AddOkAndCancel(form);
  if (!Ask(main, form, [] { return std::string(); })) return;
  grid.PasteSpecial(form.IsChecked("values"), form.IsChecked("transpose"));
}

void EditPageSetup(MainWindow& main, Workbook& book) {
  SheetSettings settings = book.SettingsOfSheet();
  SheetPrinting& printing = settings.printing;
  const Regional& regional = main.DesktopSession().options.regional;
  Form form("PageSetup", "Page Setup");
  std::vector<std::string> names;
  int chosen = 1;
  for (int i = 0; i < static_cast<int>(std::size(PaperSizes)); ++i) {
    names.push_back(QPageSize::name(PaperSizes[i]).toStdString());
    if (names.back() == printing.paper) chosen = i;
  }
  form.AddCombo("size", "&Paper:", names, chosen);
  form.AddCombo("orientation", "&Orientation:", {"Portrait", "Landscape"}, printing.isLandscape ? 1 : 0);
  const struct {
    const char* id;
    const char* caption;
    double SheetPrinting::*margin;
  } margins[] = {{"left", "&Left margin (cm):", &SheetPrinting::left},
                 {"right", "&Right margin (cm):", &SheetPrinting::right},
                 {"top", "&Top margin (cm):", &SheetPrinting::top},
                 {"bottom", "&Bottom margin (cm):", &SheetPrinting::bottom}};
  for (const auto& margin : margins) {
    const double rounded = std::round(100 * printing.*margin.margin) / 100;
    form.AddText(margin.id, margin.caption, NumberText(rounded, regional));
  }
  form.AddCheck("gridlines", "Print &gridlines", printing.gridlines);
  form.AddCheck("headings", "Print row and column &headings", printing.headings);
  AddOkAndCancel(form);
  if (!Ask(main, form, [&]() -> std::string {
        const QPageSize size(PaperSizes[form.IndexOf("size")]);
        printing.paper = size.name().toStdString();
        printing.isLandscape = form.IndexOf("orientation") == 1;
        QSizeF paper = size.size(QPageSize::Millimeter) / 10;
        if (printing.isLandscape) paper.transpose();
        for (const auto& margin : margins) {
          const auto typed = SizeOf(form.ValueOf(margin.id), regional, 0, 30);
          if (!typed) return "A margin is a number of centimetres from 0 on.";
          printing.*margin.margin = *typed;
        }
        constexpr double LeastRoom = 4;
        if (printing.left + printing.right > paper.width() - LeastRoom ||
            printing.top + printing.bottom > paper.height() - LeastRoom) {
          return "The margins leave no room on the page.";
        }
        return {};
      })) {
    return;
  }
  printing.gridlines = form.IsChecked("gridlines");
  printing.headings = form.IsChecked("headings");
  book.SetSettingsOfSheet(settings);
}

}  // namespace tellurix
