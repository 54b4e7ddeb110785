#include "graphics/Metafile.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>

#include "graphics/Renderer.h"
#include "numeric/Text.h"
#include "tests/graphics/Fixture.h"

namespace tellurix {
namespace {

std::uint16_t WordAt(const std::string& bytes, std::size_t at) {
  return static_cast<std::uint16_t>(static_cast<unsigned char>(bytes[at]) | static_cast<unsigned char>(bytes[at + 1])
                                                                                << 8);
}
std::uint32_t LongAt(const std::string& bytes, std::size_t at) {
  return WordAt(bytes, at) | static_cast<std::uint32_t>(WordAt(bytes, at + 2)) << 16;
}

// A record of a metafile by another hand.
std::string Record(std::uint16_t function, const std::vector<int>& words) {
  std::string bytes;
  const auto put = [&](int word) {
    bytes.push_back(static_cast<char>(word & 0xFF));
    bytes.push_back(static_cast<char>(word >> 8 & 0xFF));
  };
  put(static_cast<int>(words.size()) + 3);
  put(0);
  put(function);
  for (const int word : words) put(word);
  return bytes;
}
std::string Header() {
  std::string bytes(18, '\0');
  bytes[0] = 1;
  bytes[2] = 9;
  bytes[5] = 3;
  return bytes;
}

TEST_F(Charts, HeaderOfTheRecordingCountsWhatFollows) {
  const std::string bytes = Recorded([&] { graphics.DrawMarker(100, 100, 8, 1); });
  EXPECT_EQ(WordAt(bytes, 0), 1);
  EXPECT_EQ(WordAt(bytes, 2), 9);
  EXPECT_EQ(WordAt(bytes, 4), 0x0300);
  EXPECT_EQ(LongAt(bytes, 6), bytes.size() / 2);
  std::size_t longest = 0, at = 18;
  int created = 0, deleted = 0;
  std::uint16_t function = 0xFFFF;
  while (at < bytes.size()) {
    const std::size_t words = LongAt(bytes, at);
    function = WordAt(bytes, at + 4);
    created += function == wmf::CreatePen || function == wmf::CreateBrush || function == wmf::CreateFont ? 1 : 0;
    deleted += function == wmf::DeleteObject ? 1 : 0;
    longest = std::max(longest, words);
    ASSERT_GE(words, 3U);
    at += 2 * words;
  }
  EXPECT_EQ(at, bytes.size());
  EXPECT_EQ(function, wmf::Eof);
  EXPECT_EQ(LongAt(bytes, 12), longest);
  EXPECT_EQ(WordAt(bytes, 10), created);
  EXPECT_EQ(deleted, created);
}

TEST_F(Charts, WhatIsRecordedIsReadBack) {
  const std::string words = "P ≤ 0.05, größer, Ω 漢字 “€”";
  const auto drawing = ReadMetafile(Recorded([&] {
    Picture& picture = graphics.picture;
    picture.SelectPen({.Colour = 0x00FF00, .Width = 3});
    picture.MoveTo(10, 790);
    picture.LineTo(20, 790);
    picture.LineTo(20, 700);
    picture.SetBrush(0xFF);
    picture.Ellipse(100, 300, 140, 200);
    picture.SelectFont({.Name = "Times New Roman", .Size = 30, .Bold = 700, .Italic = true, .Colour = 5}, 900, 2);
    picture.SetTextAlign(TextAlign::Centre);
    picture.TextOut(600, 400, words);
    picture.TextOut(600, 300, "plain");
  }));
  ASSERT_TRUE(drawing);
  EXPECT_EQ(drawing->width, 1132);
  EXPECT_EQ(drawing->height, 800);
  ASSERT_EQ(drawing->items.size(), 4U);
  const DrawItem& line = drawing->items[0];
  EXPECT_EQ(line.kind, DrawItem::Kind::Line);
  ASSERT_EQ(line.count, 3U) << "lines in a row are one";
  EXPECT_EQ(drawing->points[2].x, 20);
  EXPECT_EQ(drawing->points[2].y, 100);
  EXPECT_EQ(drawing->pens[line.pen], (DrawPen{PenStyle::Solid, 3, 0x00FF00}));
  const DrawItem& ellipse = drawing->items[1];
  EXPECT_EQ(ellipse.kind, DrawItem::Kind::Ellipse);
  EXPECT_EQ(drawing->brushes[ellipse.brush], (DrawBrush{DrawBrush::Kind::Solid, Hatch::Horizontal, 0xFF}));
  const DrawItem& text = drawing->items[2];
  EXPECT_EQ(drawing->texts[text.text].text, words);
  EXPECT_EQ(drawing->texts[text.text].across, TextAcross::Centre);
  EXPECT_EQ(drawing->texts[text.text].colour, 5U);
  EXPECT_EQ(drawing->fonts[text.brush], (DrawFont{"Times New Roman", 60, 700, false, false, false, 900}))
      << "turned text is never italic";
  EXPECT_EQ(drawing->texts[drawing->items[3].text].text, "plain");
}

// Other viewers draw a dashed line dash by dash, the pattern going on around a corner; ours, the line itself.
TEST_F(Charts, DashedLinesAreDrawnDashByDash) {
  const std::string recorded = Recorded([&] {
    Picture& picture = graphics.picture;
    picture.SelectPen({.Width = 2, .Style = 1});  // dashes of 18, gaps of 10
    picture.MoveTo(100, 500);
    picture.LineTo(140, 500);
    picture.LineTo(140, 484);
    picture.SelectPen({.Width = 2});
    picture.LineTo(200, 484);
    picture.SelectPen({.Width = 1, .Style = 2});  // a new pen begins anew: dots of 2, gaps of 4
    picture.LineTo(200, 479);
  });
  using Points = std::vector<std::pair<double, double>>;
  const auto chainsOf = [](const Drawing& drawing) {
    std::vector<Points> chains;
    for (const DrawItem& item : drawing.items) {
      chains.emplace_back();
      for (std::uint32_t i = 0; i < item.count; ++i) {
        const DrawPoint& point = drawing.points[item.first + i];
        chains.back().emplace_back(point.x, 800 - point.y);
      }
    }
    return chains;
  };
  const auto drawing = ReadMetafile(recorded);
  ASSERT_TRUE(drawing);
  EXPECT_EQ(
      chainsOf(*drawing),
      (std::vector<Points>{{{100, 500}, {140, 500}, {140, 484}}, {{140, 484}, {200, 484}}, {{200, 484}, {200, 479}}}));
  const auto other = ReadMetafile(ReplaceAll(recorded, wmf::LineSignature, "UNKNOWN!"));
  ASSERT_TRUE(other);
  EXPECT_EQ(chainsOf(*other), (std::vector<Points>{{{100, 500}, {118, 500}},
                                                   {{128, 500}, {140, 500}, {140, 494}},
                                                   {{140, 484}, {200, 484}},
                                                   {{200, 484}, {200, 482}}}));
  EXPECT_EQ(drawing->pens[drawing->items[0].pen].style, PenStyle::Dash);
  EXPECT_EQ(drawing->pens[drawing->items[1].pen].style, PenStyle::Solid);
}

TEST_F(Charts, PensAndFontsAreMadeOnce) {
  const auto drawing = [&](int markers) {
    return Recorded([&] {
             for (int i = 0; i < markers; ++i) {
               graphics.picture.SelectFont(graphics.looks.LabelFont);
               graphics.DrawMarker(100, 100, 8, 0);
             }
           })
        .size();
  };
  // 14 bytes an ellipse, and nothing else.
  EXPECT_EQ(drawing(1001) - drawing(1), 14'000U);
}

TEST(HatchLines, StayInsideTheShape) {
  // A bar of 20 by 100 from (10, 10): levels at the multiples of 8, none on the upper edge.
  const std::vector<PagePoint> bar{{10, 110}, {30, 110}, {30, 10}, {10, 10}, {10, 110}};
  const auto level = HatchLines(bar, Hatch::Horizontal, 8);
  ASSERT_EQ(level.size(), 12U);
  EXPECT_EQ(level[0].first.y, 16);
  EXPECT_EQ(std::abs(level[0].first.x - level[0].second.x), 20);
  for (const auto& [a, b] : HatchLines(bar, Hatch::DiagonalCross, 8)) {
    for (const PagePoint& p : {a, b}) EXPECT_TRUE(p.x >= 10 && p.x <= 30 && p.y >= 10 && p.y <= 110);
    EXPECT_EQ(std::abs(std::abs(a.x - b.x) - std::abs(a.y - b.y)) <= 1, true);
  }
  for (const auto& [a, b] : HatchLines(bar, Hatch::Forward, 8)) EXPECT_GE((a.x - b.x) * (a.y - b.y), 0) << "rising";
  const std::vector<PagePoint> notched{{0, 0}, {0, 40}, {20, 10}, {40, 40}, {40, 0}};
  EXPECT_EQ(HatchLines(notched, Hatch::Horizontal, 30).size(), 3U) << "one at 0, two at 30";
  EXPECT_TRUE(HatchLines({}, Hatch::Cross, 8).empty());
}

TEST(PlaceableHeader, IsAsPublished) {
  const std::string bytes = PlaceableHeader(1132, 800);
  ASSERT_EQ(bytes.size(), 22U);
  EXPECT_EQ(LongAt(bytes, 0), 0x9AC6CDD7U);
  EXPECT_EQ(WordAt(bytes, 10), 1132);
  EXPECT_EQ(WordAt(bytes, 12), 800);
  EXPECT_EQ(WordAt(bytes, 14), 210);
  EXPECT_EQ(WordAt(bytes, 20), 0x5711 ^ 1132 ^ 800 ^ 210);
  // 1132 / 210 inch is 136.92 mm.
  EXPECT_EQ(PlaceableSizeOf(bytes)->width, 13692);
  EXPECT_EQ(PlaceableSizeOf(bytes)->height, 9676);
  std::string wrong = bytes;
  wrong[20] = static_cast<char>(wrong[20] ^ 1);
  EXPECT_FALSE(PlaceableSizeOf(wrong));
}

TEST(ForeignMetafile, WindowsStatesAndShapes) {
  const std::string bytes = PlaceableHeader(100, 50) + Header() + Record(wmf::SetWindowOrg, {10, 20}) +
                            Record(wmf::SetWindowExt, {-50, 100}) + Record(wmf::CreatePen, {0, 2, 0, 0x3412, 0x56}) +
                            Record(wmf::SelectObject, {0}) +
                            Record(wmf::PolyPolygon, {2, 3, 3, 20, 10, 30, 10, 20, 0, 40, 10, 50, 10, 40, 0}) +
                            Record(wmf::SaveDc, {}) + Record(wmf::SetWindowExt, {-25, 200}) +
                            Record(wmf::Rectangle, {0, 40, 10, 20}) + Record(wmf::RestoreDc, {-1}) +
                            Record(0x0F43, {1, 2, 3}) +  // a bitmap cut short, which is passed over
                            Record(wmf::ExtTextOut, {5, 30, 4, 2, 0, 0, 0, 0, 0x9342, 0x4394}) + Record(wmf::Eof, {});
  const auto drawing = ReadMetafile(bytes);
  ASSERT_TRUE(drawing);
  EXPECT_EQ(drawing->left, 20);
  EXPECT_EQ(drawing->top, 10);
  EXPECT_EQ(drawing->width, 100);
  EXPECT_EQ(drawing->height, 50);
  ASSERT_EQ(drawing->items.size(), 3U);
  EXPECT_EQ(drawing->items[0].ringCount, 2U);
  EXPECT_EQ(drawing->points[2].x, 20);
  EXPECT_EQ(drawing->points[2].y, 20) << "downward by 10 from the origin at 10, in a window that counts upward";
  EXPECT_EQ(drawing->pens[drawing->items[0].pen].colour, 0x563412U);
  // The rectangle (20, 10) to (40, 0) in a window with twice the units across and half of them down.
  EXPECT_EQ(drawing->points[6].x, 20);
  EXPECT_EQ(drawing->points[6].y, 10);
  EXPECT_EQ(drawing->points[7].x, 30);
  EXPECT_EQ(drawing->points[7].y, 30);
  EXPECT_EQ(drawing->texts[0].text, "B“”C") << "Windows-1252";
}

// Words of a bitmap of 3 by 2 pixels, two colours: red and blue; the upper row is red, blue, red, the lower one blue.
std::vector<int> TwoRows(bool fromTop) {
  std::vector<int> words{40, 0, 3, 0, fromTop ? -2 : 2, fromTop ? -1 : 0, 1, 1, 0, 0, 0, 0, 0, 0, 0, 0, 2, 0, 0, 0};
  words.insert(words.end(), {0x0000, 0x00FF, 0x00FF, 0x0000});  // red, then blue: blue, green, red, nothing
  const std::vector<int> upper{0x40, 0}, lower{0xE0, 0};
  for (const auto& row : {fromTop ? upper : lower, fromTop ? lower : upper}) {
    words.insert(words.end(), row.begin(), row.end());
  }
  return words;
}

std::string WithBitmap(std::uint16_t function, std::vector<int> parameters, const std::vector<int>& bitmap) {
  parameters.insert(parameters.end(), bitmap.begin(), bitmap.end());
  return Header() + Record(wmf::SetWindowExt, {100, 100}) + Record(function, parameters) + Record(wmf::Eof, {});
}

// The four records that draw bitmaps, with rows from below and from above.
TEST(ForeignMetafile, Bitmaps) {
  constexpr std::uint32_t red = 0xFFFF0000, blue = 0xFF0000FF;
  constexpr int low = 0x0020, high = 0x00CC;  // the operation that copies
  for (const bool fromTop : {false, true}) {
    const std::vector<int> bitmap = TwoRows(fromTop);
    for (const std::string& bytes : {WithBitmap(0x0F43, {low, high, 0, 2, 3, 0, 0, 20, 30, 40, 50}, bitmap),
                                     WithBitmap(0x0B41, {low, high, 2, 3, 0, 0, 20, 30, 40, 50}, bitmap),
                                     WithBitmap(0x0940, {low, high, 0, 0, 2, 3, 40, 50}, bitmap),
                                     WithBitmap(0x0D33, {0, 2, 0, 0, 0, 2, 3, 40, 50}, bitmap)}) {
      const auto drawing = ReadMetafile(bytes);
      ASSERT_TRUE(drawing);
      ASSERT_EQ(drawing->bitmaps.size(), 1U);
      EXPECT_EQ(drawing->bitmaps[0].width, 3);
      EXPECT_EQ(drawing->bitmaps[0].height, 2);
      EXPECT_EQ(drawing->bitmaps[0].pixels, (std::vector<std::uint32_t>{red, blue, red, blue, blue, blue}));
      EXPECT_EQ(drawing->points[0].x, 50);
      EXPECT_EQ(drawing->points[0].y, 40);
      const bool isStretched = drawing->points[1].x == 80 && drawing->points[1].y == 60;
      const bool isPlain = drawing->points[1].x == 53 && drawing->points[1].y == 42;
      EXPECT_TRUE(isStretched || isPlain);
    }
  }
}

TEST(ForeignMetafile, BitmapsAreDrawnInPartTurnedOverAndMixed) {
  constexpr std::uint32_t red = 0xFFFF0000, blue = 0xFF0000FF, white = 0xFFFFFFFF;
  FontBook fonts;
  const auto drawn = [&](const std::vector<int>& parameters) {
    const auto drawing = ReadMetafile(WithBitmap(0x0F43, parameters, TwoRows(false)));
    EXPECT_TRUE(drawing);
    EXPECT_FALSE(WriteEnhancedMetafile(*drawing, 1000, 1000).empty());
    const Image image = RenderImage(*drawing, fonts, 100, 100);
    // In the middle of each enlarged pixel; between them the colours run into each other.
    const auto at = [&](int x, int y) {
      const std::uint32_t pixel = image.pixels[static_cast<std::size_t>(100 * y + x)];
      return (pixel & 0xFF00) > 0x8000 ? white : (pixel & 0xFF0000) > 0x800000 ? red : blue;
    };
    return std::vector<std::uint32_t>{at(10, 10), at(30, 10), at(50, 10), at(10, 30), at(70, 70)};
  };
  constexpr int copy = 0x00CC;
  EXPECT_EQ(drawn({0x0020, copy, 0, 2, 3, 0, 0, 40, 60, 0, 0}), (std::vector{red, blue, red, blue, white}));
  EXPECT_EQ(drawn({0x0020, copy, 0, 2, 3, 0, 0, -40, 60, 40, 0}), (std::vector{blue, blue, blue, red, white}));
  // The upper row from its second pixel on: rows are counted from below.
  EXPECT_EQ(drawn({0x0020, copy, 0, 1, 2, 1, 1, 40, 40, 0, 0}), (std::vector{blue, red, white, blue, white}));
  // Upon itself: the same where both are kept, black where they cancel out.
  const auto twice = [&](int low, int high) {
    std::string bytes = WithBitmap(0x0F43, {0x0020, copy, 0, 2, 3, 0, 0, 40, 60, 0, 0}, TwoRows(false));
    const std::string again = WithBitmap(0x0F43, {low, high, 0, 2, 3, 0, 0, 40, 60, 0, 0}, TwoRows(false));
    const std::size_t end = bytes.size() - Record(wmf::Eof, {}).size();
    const auto drawing = ReadMetafile(bytes.substr(0, end) + again.substr(Header().size()));
    EXPECT_TRUE(drawing);
    return RenderImage(*drawing, fonts, 100, 100).pixels[1010] & 0xC0C0C0;  // neighbours run into each other a little
  };
  EXPECT_EQ(twice(0x00C6, 0x0088), 0xC00000U) << "and";
  EXPECT_EQ(twice(0x0086, 0x00EE), 0xC00000U) << "or";
  EXPECT_EQ(twice(0x0046, 0x0066), 0U) << "exclusive or";
}

TEST(ForeignMetafile, RefusesWhatIsNone) {
  for (const std::string& bytes : {std::string(), std::string("\x01"), std::string(200, 'x'), Header(),
                                   PlaceableHeader(10, 10), std::string("\x89PNG\r\n\x1a\n")}) {
    EXPECT_FALSE(ReadMetafile(bytes));
  }
}

// Damage of every kind: whatever is read back is drawn, in every form.
TEST_F(Charts, DamagedMetafilesDoNoHarm) {
  std::string good = Recorded([&] {
    graphics.page.Categories = {"a", "ß"};
    graphics.DrawFrame(true, "Title with Ω", -9);
    for (int i = 0; i < 9; ++i) graphics.DrawMarker(200 + 50 * i, 300, 9, i);
    graphics.picture.SetBrush(Hatch::Forward);
    graphics.picture.Ellipse(100, 300, 140, 200);
    graphics.DrawAxisTitleY("A title that reads upward, turned");
    graphics.picture.SelectPen({.Width = 2, .Style = 3});
    graphics.picture.MoveTo(160, 120);
    graphics.picture.LineTo(700, 500);
  });
  std::vector<int> bitmap{0x0020, 0x00CC, 0, 2, 3, 0, 0, 90, 90, 300, 300};
  const std::vector<int> rows = TwoRows(false);
  bitmap.insert(bitmap.end(), rows.begin(), rows.end());
  good.insert(Header().size(), Record(0x0F43, bitmap));
  const char* rounds = std::getenv("TELLURIX_FUZZ_ROUNDS");
  std::mt19937 random(7);
  const auto below = [&](std::size_t n) { return std::uniform_int_distribution<std::size_t>(0, n - 1)(random); };
  FontBook fonts;
  int drawn = 0;
  for (int round = 0; round < (rounds ? std::atoi(rounds) : 500); ++round) {
    std::string bytes = good;
    if (below(4) == 0) bytes.resize(below(bytes.size()));
    for (std::size_t change = 0; change < 1 + below(12) && !bytes.empty(); ++change) {
      const std::size_t at = below(bytes.size());
      switch (below(3)) {
        case 0:
          bytes[at] = static_cast<char>(below(256));
          break;
        case 1:
          bytes[at] = static_cast<char>(below(2) == 0 ? 0xFF : 0x7F);
          break;
        default:
          bytes.insert(at, bytes.substr(below(bytes.size()), 2 * below(20)));
      }
    }
    const auto drawing = ReadMetafile(bytes);
    if (!drawing) continue;
    ++drawn;
    RenderImage(*drawing, fonts, 283, 200);
    WriteEnhancedMetafile(*drawing, 13692, 9676);
    if (round % 8 == 0) RenderSvg(*drawing, fonts, 283, 200, true);
  }
  EXPECT_GT(drawn, 0);
}

// Lengths and counts of the enhanced form, walked record by record.
TEST_F(Charts, EnhancedMetafileIsWellFormed) {
  const auto drawing = ReadMetafile(Recorded([&] { graphics.DrawFrame(true, "Título Ω", -3); }));
  ASSERT_TRUE(drawing);
  const std::string bytes = WriteEnhancedMetafile(*drawing, 13692, 9676);
  EXPECT_EQ(LongAt(bytes, 0), 1U);
  EXPECT_EQ(LongAt(bytes, 40), 0x464D4520U);
  EXPECT_EQ(LongAt(bytes, 48), bytes.size());
  EXPECT_EQ(LongAt(bytes, 32), 13692U);
  std::size_t at = 0, records = 0;
  std::uint32_t type = 0;
  bool found = false;
  while (at < bytes.size()) {
    type = LongAt(bytes, at);
    const std::size_t size = LongAt(bytes, at + 4);
    ASSERT_GE(size, 8U);
    ASSERT_EQ(size % 4, 0U);
    if (type == 84) {
      const std::size_t text = at + LongAt(bytes, at + 48), length = LongAt(bytes, at + 44);
      ASSERT_LE(text + 2 * length, at + size);
      found = found || (length == 8 && WordAt(bytes, text + 2) == u'í' && WordAt(bytes, text + 14) == u'Ω');
    }
    at += size;
    ++records;
  }
  EXPECT_EQ(at, bytes.size());
  EXPECT_EQ(LongAt(bytes, 52), records);
  EXPECT_EQ(type, 14U);
  EXPECT_TRUE(found);
}

}  // namespace
}  // namespace tellurix
