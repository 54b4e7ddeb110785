// Reports on paper: printers, the print preview and PDF.
#pragma once

#include <QPageLayout>
#include <QPageSize>
#include <QPagedPaintDevice>
#include <QString>

#include "desktop/RichTextDocument.h"

namespace tellurix {

struct PageSetup {
  QPageSize::PageSizeId size = QPageSize::A4;
  bool landscape = false;
  double left = 2;  // margins in centimetres
  double top = 2;
  double right = 2;
  double bottom = 2;

  bool operator==(const PageSetup&) const = default;
};

inline constexpr double CentimetresPerInch = 2.54;

QPageLayout ToPageLayout(const PageSetup& setup);
PageSetup ToPageSetup(const QPageLayout& layout);

struct PageRange {  // 1-based; 0 and 0 is all
  int from = 0;
  int to = 0;
};

// Draws the report page by page. What is marked to be kept with the next paragraph stays with it, and a table that fits
// on a page is not split over two; heads of longer tables come again on every page. Tables wider than the page are
// narrowed, pictures larger than it made smaller. The number of pages drawn; -1 when the device takes no painting.
int PrintRichText(const RichText& text, QPagedPaintDevice& device, PageRange range = {});

// Writes a PDF file, whole or not at all; false with the reason in `error`.
bool WritePdf(const RichText& text, const PageSetup& setup, const QString& title, const QString& path, QString& error);

}  // namespace tellurix
