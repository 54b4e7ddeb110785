#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "graphics/Metafile.h"
#include "graphics/Renderer.h"
#include "tests/graphics/Fixture.h"

namespace tellurix {
namespace {

class Frames : public Charts {
 protected:
  // The picture of a frame and its titles, read back.
  Drawing Draw(int type, std::string_view title = "Title") {
    const auto drawing = ReadMetafile(Recorded([&] {
      graphics.DrawFrame(true, title, type);
      graphics.DrawAxisTitleX("across");
      graphics.DrawAxisTitleY("a title too long for the margin");
    }));
    EXPECT_TRUE(drawing);
    return drawing.value_or(Drawing());
  }

  // Where a text stands, y upward; nothing where it is not drawn.
  std::optional<DrawPoint> Find(const Drawing& drawing, std::string_view text) const {
    for (const DrawItem& item : drawing.items) {
      if (item.kind != DrawItem::Kind::Text || drawing.texts[item.text].text != text) continue;
      return DrawPoint{drawing.points[item.first].x, graphics.page.PageHeight - drawing.points[item.first].y};
    }
    return std::nullopt;
  }

  // Whether a line from one point to another, y upward, is drawn.
  bool HasLine(const Drawing& drawing, double x0, double y0, double x1, double y1) const {
    return std::ranges::any_of(drawing.items, [&](const DrawItem& item) {
      if (item.kind != DrawItem::Kind::Line || item.count != 2) return false;
      const DrawPoint a = drawing.points[item.first], b = drawing.points[item.first + 1];
      const int height = graphics.page.PageHeight;
      return a.x == x0 && height - a.y == y0 && b.x == x1 && height - b.y == y1;
    });
  }

  // Every text lies on the page, and no two of them overlap.
  void ExpectTextsApart(const Drawing& drawing) {
    struct Box {
      double left, top, right, bottom;
      std::string text;
    };
    std::vector<Box> boxes;
    for (const DrawItem& item : drawing.items) {
      if (item.kind != DrawItem::Kind::Text) continue;
      const DrawText& text = drawing.texts[item.text];
      const DrawFont& font = drawing.fonts[item.brush];
      const FaceName face{font.name, font.weight > 550, font.italic};
      const double width = graphics.fonts.Width(text.text, face, font.height);
      const double shift = text.across == TextAcross::Left ? 0 : text.across == TextAcross::Right ? width : width / 2;
      const DrawPoint at = drawing.points[item.first];
      const double height = 0.93 * font.height;  // from the capitals' top to the baseline, generously
      Box box = font.escapement == 0
                    ? Box{at.x - shift, at.y + 0.15 * font.height, at.x - shift + width, at.y + height, text.text}
                    : Box{at.x + 0.15 * font.height, at.y + shift - width, at.x + height, at.y + shift, text.text};
      EXPECT_GE(box.left, 0) << text.text.substr(0, 60);
      EXPECT_LE(box.right, Page::PageWidth) << text.text.substr(0, 60);
      EXPECT_GE(box.top, 0) << text.text.substr(0, 60);
      EXPECT_LE(font.escapement == 0 ? at.y + 1.15 * font.height : box.bottom, drawing.height)
          << text.text.substr(0, 60);
      for (const Box& other : boxes) {
        EXPECT_FALSE(box.left < other.right && other.left < box.right && box.top < other.bottom &&
                     other.top < box.bottom)
            << box.text.substr(0, 60) << " over " << other.text.substr(0, 60);
      }
      boxes.push_back(std::move(box));
    }
    EXPECT_FALSE(boxes.empty());
  }
};

TEST(Page, GrowsWithItsRows) {
  Page page;
  for (const auto& [items, height] : {std::pair{0, 800}, {10, 800}, {11, 840}, {30, 1600}, {90, 4000}, {500, 4000}}) {
    page.GrowFor(items);
    EXPECT_EQ(page.PageHeight, height) << items;
    page.ResetFrame();
    EXPECT_EQ(page.PlotHeight, height - 200);
  }
  page.Restore();
  EXPECT_EQ(page.PageHeight, 800);
  page.ResetFrame();
  page.ShiftFrame(60);
  EXPECT_EQ(page.PlotLeft, 210);
  EXPECT_EQ(page.PlotWidth, 840);
}

TEST_F(Frames, PartsOfEachType) {
  graphics.page.Categories = {"one", "two"};
  for (const int type : {1, 2, 3, 4, 5, 6, 7, 8, 9, 23}) {
    graphics.page.XLow = 0, graphics.page.XHigh = 100;
    graphics.page.YLow = 3, graphics.page.YHigh = 3;
    const Drawing drawing = Draw(-type);
    EXPECT_EQ(HasLine(drawing, 150, 100, 150, 700), type != 4 && type != 6) << "left of " << type;
    EXPECT_EQ(HasLine(drawing, 150, 100, 1050, 100), type != 5) << "bottom of " << type;
    EXPECT_EQ(HasLine(drawing, 150, 700, 1050, 700), type >= 7 && type <= 9) << "top of " << type;
    EXPECT_EQ(HasLine(drawing, 1050, 700, 1050, 100), type >= 7 && type <= 9) << "right of " << type;
    const bool numericX = type == 1 || type == 3 || type == 4 || type == 7 || type == 8 || type == 23;
    const bool numericY = type != 1 && type != 8 && type != 4 && type != 6;
    EXPECT_EQ(Find(drawing, "120").has_value(), numericX) << type;
    EXPECT_EQ(Find(drawing, "2.5").has_value(), numericY && type != 23) << type;
    EXPECT_EQ(HasLine(drawing, 138, 250, 150, 250), numericY) << "major tick of " << type;
    EXPECT_EQ(Find(drawing, "two").has_value(), type == 1 || type == 2 || type == 8 || type == 9) << type;
  }
}

TEST_F(Frames, PlacesOfTicksAndTitles) {
  graphics.page.YLow = graphics.page.YHigh = 3;
  const Drawing drawing = Draw(-3);
  EXPECT_EQ(Find(drawing, "Title")->x, 600);
  EXPECT_EQ(Find(drawing, "Title")->y, 780);
  EXPECT_EQ(Find(drawing, "0.25")->x, 375);
  EXPECT_EQ(Find(drawing, "0.25")->y, 88);
  EXPECT_TRUE(HasLine(drawing, 375, 88, 375, 100)) << "major";
  EXPECT_TRUE(HasLine(drawing, 195, 93, 195, 100)) << "minor";
  EXPECT_EQ(Find(drawing, "2.5")->x, 138);
  EXPECT_EQ(Find(drawing, "2.5")->y, 260);
  EXPECT_EQ(Find(drawing, "a title too long for the margin")->x, 30);
  EXPECT_EQ(Find(drawing, "a title too long for the margin")->y, 400);
  EXPECT_EQ(Find(drawing, "across")->x, 600);
}

TEST_F(Frames, TitleOfTheYAxisTurnsOnlyWhereItMust) {
  const auto placed = [&](std::string_view text, int lines) {
    return *Find(*ReadMetafile(Recorded([&] { graphics.DrawAxisTitleY(text, lines); })), text);
  };
  EXPECT_EQ(placed("Short", 1).x, 150);
  EXPECT_EQ(placed("Short", 1).y, 740);
  EXPECT_EQ(placed("A title wider than the margin", 2).y, 300);
  graphics.looks.RotateAllY = true;
  EXPECT_EQ(placed("Short", 1).x, 30);
}

TEST_F(Frames, TextsNeitherClippedNorColliding) {
  std::string endless;
  while (endless.size() < 10'000) endless += "far too many wörds, ";
  std::vector<std::string> names;
  for (int i = 1; i <= 80; ++i) names.push_back("Practice " + std::to_string(i));
  struct Limits {
    double low, high;
  };
  for (const Limits& limits : {Limits{0, 1}, {-2e6, 3.5e6}, {1234567, 1234568}, {-1e308, 1e308}, {1e-308, 3e-308}}) {
    for (const int type : {2, 3}) {
      for (const int size : {12, 20, 30, 36}) {
        graphics.looks.LabelFont.Size = size;
        graphics.page.Categories = names;
        graphics.page.XLow = graphics.page.YLow = limits.low;
        graphics.page.XHigh = graphics.page.YHigh = limits.high;
        SCOPED_TRACE(testing::Message() << limits.low << " to " << limits.high << ", type " << type << ", " << size);
        ExpectTextsApart(Draw(-type, endless));
      }
    }
  }
}

TEST_F(Frames, EmptyTitlesAndCategoriesDrawNothing) {
  graphics.page.Categories.clear();
  const Drawing drawing = Draw(-1, "");
  EXPECT_TRUE(Find(drawing, "across"));
  EXPECT_FALSE(Find(drawing, ""));
}

TEST_F(Frames, SeriesBeyondTenTakeTheStylesAnew) {
  graphics.looks.Series[1].Shape = 3;
  graphics.looks.Series[0].Shape = 8;
  EXPECT_EQ(graphics.StyleOf(11).Shape, 3);
  EXPECT_EQ(graphics.StyleOf(20).Shape, 8);
  EXPECT_EQ(&graphics.StyleOf(10), &graphics.looks.Series[FramePen]);
}

TEST_F(Frames, AllBlackLeavesTheStyles) {
  graphics.looks.AllBlack = true;
  const auto drawing = ReadMetafile(Recorded([&] {
    graphics.picture.SelectPen({.Colour = 0xFF, .Width = 2, .Style = 1});
    graphics.picture.MoveTo(0, 0);
    graphics.picture.LineTo(9, 9);
    graphics.picture.SelectFont({.Colour = 0xFF});
    graphics.picture.TextOut(1, 1, "x");
  }));
  EXPECT_EQ(drawing->pens[drawing->items[0].pen], (DrawPen{PenStyle::Dash, 2, 0}));
  EXPECT_EQ(drawing->texts[0].colour, 0U);
}

TEST_F(Frames, UnwritableFolderIsToldOnce) {
  std::filesystem::remove_all(folder);
  host.busy = false;
  EXPECT_FALSE(graphics.BeginPicture(true));
  ASSERT_EQ(host.messages.size(), 1U);
  EXPECT_EQ(host.LastMessage(), "Error creating metafile.");
  EXPECT_EQ(host.messages[0].title, "Tellurix Report Generator");
  EXPECT_FALSE(host.busy);
  graphics.DrawFrame(true, "nothing is open", 3);
  graphics.DrawMarker(1, 1, 1, 1);
}

TEST_F(Frames, MissingFontsAreToldOnce) {
  graphics.looks.LabelFont.Name = "No Such Face At All";
  Draw(-3);
  Draw(-3);
  ASSERT_EQ(host.messages.size(), 1U);
  EXPECT_NE(host.LastMessage().find("No Such Face At All"), std::string::npos);
}

TEST_F(Frames, WidthsAreThoseOfTheFace) {
  // Advance widths of Arial in 2048ths of the em: A 1366, i 455, blank 569.
  graphics.picture.SelectFont({.Size = 20});
  EXPECT_NEAR(graphics.picture.TextWidth("A i"), 20 * (1366 + 569 + 455) / 2048.0, 0.02);
}

// A line one unit wide is one row of pixels, black and nothing but black, at any zoom.
TEST_F(Frames, HairlinesStandOnTheGrid) {
  const auto drawing = ReadMetafile(Recorded([&] {
    graphics.picture.SelectPenRaw(1, 0);
    graphics.picture.MoveTo(100, 400);
    graphics.picture.LineTo(1000, 400);
    graphics.DrawMarker(500, 200, 9, 1);
  }));
  FontBook fonts;
  for (const double zoom : {0.5, 1.0, 1.3, 2.0, 3.0}) {
    const Image image = RenderImage(*drawing, fonts, static_cast<int>(1132 * zoom), static_cast<int>(800 * zoom));
    int dark = 0, grey = 0;
    const int x = static_cast<int>(550 * zoom);
    for (int y = 0; y < image.height; ++y) {
      const std::uint32_t pixel = image.pixels[static_cast<std::size_t>(y * image.width + x)] & 0xFF;
      dark += pixel == 0 ? 1 : 0;
      grey += pixel != 0 && pixel != 0xFF ? 1 : 0;
    }
    EXPECT_EQ(dark, std::max(1, static_cast<int>(std::round(zoom)))) << zoom;
    EXPECT_EQ(grey, 0) << zoom;
  }
}

TEST(TextCanvas, CountsHitsInACell) {
  TextCanvas canvas;
  canvas.ClearCanvas(5);
  std::string seen;
  for (int i = 0; i < 11; ++i) {
    canvas.CanvasPlot(20, 4);
    seen += static_cast<char>(canvas.At(20, 4));
  }
  EXPECT_EQ(seen, "*2345678999");
  for (const char32_t sign : {U'|', U'+', U'-'}) {
    canvas.Put(21, 4, sign);
    canvas.CanvasPlot(21, 4);
    EXPECT_EQ(canvas.At(21, 4), U'*');
  }
  canvas.CanvasPlot(86, 4);
  canvas.CanvasPlot(0, 0);
}

TEST_F(Frames, CanvasLaysOutTheSamePlot) {
  graphics.page.XLow = graphics.page.YLow = -1;
  graphics.page.XHigh = graphics.page.YHigh = 1;
  graphics.canvas.ClearCanvas(23);
  graphics.DrawFrame(false, "Title", -3);
  graphics.canvas.CanvasPlot(TextCanvas::ColumnOf(0, graphics.page.X), graphics.canvas.RowOf(0, graphics.page.Y));
  const std::string text = graphics.canvas.RichRows();
  EXPECT_TRUE(text.starts_with("          1.0+\\par              |\\par ")) << text.substr(0, 60);
  EXPECT_NE(text.find("          0.0+                              *\\par "), std::string::npos) << text;
  EXPECT_TRUE(text.ends_with("             /" + std::string(61, '=') +
                             "\\par              -1.0           -0.5            0.0            0.5            1.0"))
      << text;
}

}  // namespace
}  // namespace tellurix
