#include "desktop/RichTextFormats.h"

#include <QGuiApplication>
#include <QScreen>
#include <algorithm>
#include <cmath>

#include "desktop/RichTextDocument.h"

namespace tellurix {

double ScreenDpi() {
  static const double dpi = [] {
    if (QGuiApplication::testAttribute(Qt::AA_Use96Dpi)) return 96.0;
    const QScreen* screen = QGuiApplication::primaryScreen();
    return screen != nullptr ? std::round(screen->logicalDotsPerInchY()) : 96.0;
  }();
  return dpi;
}

double PixelsOfTwips(int twips) { return twips * ScreenDpi() / 1440.0; }

int TwipsOfPixels(double pixels) { return static_cast<int>(std::lround(pixels * 1440.0 / ScreenDpi())); }

Qt::Alignment ToQt(Alignment alignment) {
  switch (alignment) {
    case Alignment::Centre:
      return Qt::AlignHCenter;
    case Alignment::Right:
      return Qt::AlignRight;
    case Alignment::Justify:
      return Qt::AlignJustify;
    case Alignment::Left:
      break;
  }
  return Qt::AlignLeft;
}

Alignment ToAlignment(Qt::Alignment alignment) {
  if (alignment & Qt::AlignHCenter) return Alignment::Centre;
  if (alignment & Qt::AlignRight) return Alignment::Right;
  if (alignment & Qt::AlignJustify) return Alignment::Justify;
  return Alignment::Left;
}

QTextBlockFormat FillerFormat() {
  QTextBlockFormat format;
  format.setProperty(Filler, true);
  return format;
}

QTextBlockFormat ToQtFormat(const ParagraphFormat& format) {
  QTextBlockFormat result;
  result.setAlignment(ToQt(format.alignment));
  // Of a block's measures to the left and right Qt fits only this one, and tabs, to the device.
  if (format.leftIndent > 0) result.setIndent(format.leftIndent);
  if (format.leftIndent < 0) result.setLeftMargin(PixelsOfTwips(format.leftIndent));
  if (format.rightIndent != 0) result.setRightMargin(PixelsOfTwips(format.rightIndent));
  if (format.firstIndent != 0) result.setTextIndent(PixelsOfTwips(format.firstIndent));
  if (format.spaceBefore != 0) result.setTopMargin(PixelsOfTwips(format.spaceBefore));
  if (format.spaceAfter != 0) result.setBottomMargin(PixelsOfTwips(format.spaceAfter));
  if (format.keepWithNext) result.setProperty(KeepWithNext, true);
  if (!format.tabs.empty()) result.setTabPositions(ToQtTabs(format.tabs));
  // Qt gives an empty block ahead of a table no height unless it has a background.
  result.setBackground(Qt::NoBrush);
  return result;
}

ParagraphFormat ToParagraphFormat(const QTextBlock& block) {
  const QTextBlockFormat format = block.blockFormat();
  ParagraphFormat result;
  result.alignment = ToAlignment(format.alignment());
  result.leftIndent =
      TwipsOfPixels(format.leftMargin()) + format.indent() * TwipsOfPixels(block.document()->indentWidth());
  result.rightIndent = TwipsOfPixels(format.rightMargin());
  result.firstIndent = TwipsOfPixels(format.textIndent());
  result.spaceBefore = TwipsOfPixels(format.topMargin());
  result.spaceAfter = TwipsOfPixels(format.bottomMargin());
  result.keepWithNext = format.boolProperty(KeepWithNext);
  for (const QTextOption::Tab& tab : format.tabPositions()) {
    TabStop stop{TwipsOfPixels(tab.position)};
    if (tab.type == QTextOption::DelimiterTab) {
      stop.decimal = true;
    } else if (tab.type == QTextOption::CenterTab) {
      stop.alignment = Alignment::Centre;
    } else if (tab.type == QTextOption::RightTab) {
      stop.alignment = Alignment::Right;
    }
    result.tabs.push_back(stop);
  }
  return result;
}

QList<QTextOption::Tab> ToQtTabs(const std::vector<TabStop>& tabs) {
  QList<QTextOption::Tab> result;
  for (const TabStop& tab : tabs) {
    QTextOption::TabType type = QTextOption::LeftTab;
    if (tab.decimal) {
      type = QTextOption::DelimiterTab;
    } else if (tab.alignment == Alignment::Centre) {
      type = QTextOption::CenterTab;
    } else if (tab.alignment == Alignment::Right) {
      type = QTextOption::RightTab;
    }
    result.append(QTextOption::Tab(PixelsOfTwips(tab.position), type, QLatin1Char('.')));
  }
  return result;
}

QTextCharFormat ToQtFormat(const CharFormat& format) {
  QTextCharFormat result;
  result.setFontFamilies({QString::fromStdString(format.font)});
  result.setFontPointSize(std::max(format.halfPoints, 2) / 2.0);
  if (format.bold) result.setFontWeight(QFont::Bold);
  if (format.italic) result.setFontItalic(true);
  if (format.underline) result.setFontUnderline(true);
  if (format.strike) result.setFontStrikeOut(true);
  if (format.script == Script::Sub) result.setVerticalAlignment(QTextCharFormat::AlignSubScript);
  if (format.script == Script::Super) result.setVerticalAlignment(QTextCharFormat::AlignSuperScript);
  if (format.colour != 0) result.setForeground(QColor::fromRgb(format.colour & 0xFFFFFF));
  return result;
}

CharFormat ToCharFormat(const QTextCharFormat& format) {
  CharFormat result;
  if (const QStringList families = format.fontFamilies().toStringList(); !families.isEmpty())
    result.font = families.first().toStdString();
  if (format.hasProperty(QTextFormat::FontPointSize)) {
    result.halfPoints = static_cast<int>(std::lround(2 * format.fontPointSize()));
  } else if (format.hasProperty(QTextFormat::FontPixelSize)) {
    result.halfPoints = static_cast<int>(std::lround(1.5 * format.intProperty(QTextFormat::FontPixelSize)));
  } else if (format.hasProperty(QTextFormat::FontSizeAdjustment)) {
    static constexpr int sizes[] = {14, 16, 20, 24, 30, 36};  // from -2 to 3
    result.halfPoints = sizes[std::clamp(format.intProperty(QTextFormat::FontSizeAdjustment), -2, 3) + 2];
  }
  result.halfPoints = std::max(result.halfPoints, 2);
  result.bold = format.fontWeight() >= QFont::DemiBold;
  result.italic = format.fontItalic();
  result.underline = format.fontUnderline();
  result.strike = format.fontStrikeOut();
  if (format.verticalAlignment() == QTextCharFormat::AlignSubScript) result.script = Script::Sub;
  if (format.verticalAlignment() == QTextCharFormat::AlignSuperScript) result.script = Script::Super;
  if (const QBrush brush = format.foreground(); brush.style() != Qt::NoBrush)
    result.colour = brush.color().rgb() & 0xFFFFFF;
  return result;
}

}  // namespace tellurix
