// Worksheets on pages that are pictures, so that what is drawn can be looked at.

#include "desktop/SheetPrinting.h"

#include <gtest/gtest.h>

#include <QImage>
#include <QPaintEngine>
#include <QPdfWriter>
#include <QTemporaryDir>
#include <vector>

namespace tellurix {
namespace {

constexpr int Dpi = 192;

class PicturePages : public QPagedPaintDevice {
 public:
  PicturePages(int width, int height) : QPagedPaintDevice(nullptr), page_(width, height, QImage::Format_RGB32) {
    page_.setDotsPerMeterX(qRound(Dpi / 0.0254));
    page_.setDotsPerMeterY(qRound(Dpi / 0.0254));
    page_.fill(Qt::white);
  }
  QPaintEngine* paintEngine() const override { return page_.paintEngine(); }
  bool newPage() override {
    pages.push_back(page_.copy());
    page_.fill(Qt::white);
    return true;
  }
  const QImage& LastPage() const { return page_; }

  std::vector<QImage> pages;  // but for the last one

 protected:
  int metric(PaintDeviceMetric what) const override {
    switch (what) {
      case PdmWidth:
        return page_.width();
      case PdmHeight:
        return page_.height();
      case PdmDpiX:
      case PdmDpiY:
      case PdmPhysicalDpiX:
      case PdmPhysicalDpiY:
        return Dpi;
      case PdmDepth:
        return 32;
      case PdmDevicePixelRatio:
        return 1;
      case PdmDevicePixelRatioScaled:
        return static_cast<int>(devicePixelRatioFScale());
      default:
        return 0;
    }
  }

 private:
  QImage page_;
};

// Whether a part of a page has a colour in it.
bool Has(const QImage& page, const QRect& part, const QColor& colour) {
  for (int y = part.top(); y <= part.bottom(); ++y) {
    for (int x = part.left(); x <= part.right(); ++x) {
      if (page.pixelColor(x, y) == colour) return true;
    }
  }
  return false;
}

int DarkRows(const QImage& page) {
  int rows = 0;
  for (int y = 0; y < page.height(); ++y) rows += Has(page, {0, y, page.width(), 1}, Qt::black);
  return rows;
}

TEST(SheetPrinting, DividesTheSheetIntoPages) {
  Workbook book;
  for (int row = 1; row <= 100; ++row) {
    for (int column = 1; column <= 8; ++column) book.NumberRC(row, column, row * column);
  }
  const auto range = PrintedRange(book);
  ASSERT_EQ(range, (CellRange{1, 1, 100, 8}));
  PicturePages pages(1000, 1400);
  int total = 0;
  const int drawn = PrintSheet(book, Regional(), *range, pages, {}, 0, &total);
  EXPECT_EQ(drawn, total);
  EXPECT_EQ(pages.pages.size() + 1, static_cast<std::size_t>(total));
  // 100 rows of 15 points each, on pages of 1400 dots less headings and footer; likewise across.
  const int onePage = static_cast<int>((1400.0 / Dpi * 72) / 15);
  EXPECT_GE(total, 2 * (100 / onePage));
  EXPECT_EQ(total % 2, 0);
  // Hidden rows take no room, and a range of pages is drawn alone.
  book.SetRowHeight(11, 100, 0);
  PicturePages fewer(1000, 1400);
  EXPECT_EQ(PrintSheet(book, Regional(), *range, fewer, {}, 0, &total), 2);
  EXPECT_EQ(total, 2);
  EXPECT_EQ(PrintSheet(book, Regional(), *range, fewer, {2, 2}), 1);
  book.SetRowHeight(1, 100, 0);
  EXPECT_EQ(PrintSheet(book, Regional(), *range, fewer), 0);
  EXPECT_EQ(PrintedRange(Workbook()), std::nullopt);
}

TEST(SheetPrinting, DrawsCellsAsTheyLook) {
  Workbook book;
  book.ColText(1, "Age");
  book.NumberRC(1, 1, 12345.678);
  book.TextRC(2, 1, "a text that reaches over its empty neighbours");
  book.NumberRC(3, 1, 0);
  LookChange look;
  look.number = NumberFormat{NumberFormat::Form::Fixed, 1, true};
  look.fillColour = 0xFFFF00;
  look.textColour = 0x0000FF;
  look.bold = true;
  book.SetLook({1, 1, 1, 2}, look);
  PicturePages pages(1200, 900);
  ASSERT_EQ(PrintSheet(book, Regional(), {1, 1, 6, 4}, pages), 1);
  const QImage page = pages.LastPage();
  if (const QString folder = qEnvironmentVariable("TELLURIX_PICTURES"); !folder.isEmpty()) {
    page.save(folder + "/sheet-printed.png");
  }
  EXPECT_TRUE(Has(page, {0, 0, 600, 120}, Qt::yellow));
  EXPECT_TRUE(Has(page, {0, 0, 400, 120}, Qt::blue));
  EXPECT_FALSE(Has(page, {0, 121, 1200, 779}, Qt::yellow));
  EXPECT_TRUE(Has(page, {500, 820, 200, 80}, Qt::black));  // "Page 1 of 1"
  EXPECT_FALSE(Has(page, {0, 820, 400, 80}, Qt::black));

  // Without lines, headings and zeros there is less.
  SheetSettings settings = book.SettingsOfSheet();
  settings.printing.gridlines = settings.printing.headings = false;
  settings.showsZeros = false;
  book.SetSettingsOfSheet(settings);
  PicturePages bare(1200, 900);
  ASSERT_EQ(PrintSheet(book, Regional(), {1, 1, 6, 4}, bare), 1);
  EXPECT_LT(DarkRows(bare.LastPage()), DarkRows(page));
  EXPECT_EQ(bare.LastPage().pixelColor(4, 4), QColor(Qt::yellow));  // the first cell stands in the corner
}

TEST(SheetPrinting, FitsThePaper) {
  Workbook book;
  for (int row = 1; row <= 200; ++row) book.NumberRC(row, 1, row);
  QTemporaryDir folder;
  const auto pagesOn = [&](bool landscape) {
    QPdfWriter writer(folder.filePath("sheet.pdf"));
    SheetSettings settings = book.SettingsOfSheet();
    settings.printing.isLandscape = landscape;
    book.SetSettingsOfSheet(settings);
    writer.setPageLayout(ToPageLayout(PageOf(settings.printing)));
    return PrintSheet(book, Regional(), {1, 1, 200, 1}, writer);
  };
  // A4 less 2 cm at each end holds 728 points of height, 481 of them lying; 15 a row, about 3 for headings and footer.
  EXPECT_EQ(pagesOn(false), (200 + 44) / 45);
  EXPECT_EQ(pagesOn(true), (200 + 28) / 29);
}

}  // namespace
}  // namespace tellurix
