// Frame, axes and titles. Places and lengths of ticks, labels and titles are those of the page; where a text would not
// fit it is set smaller, then cut with an ellipsis, and labels that would collide are thinned.
#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "graphics/Graphics.h"
#include "numeric/Rounding.h"
#include "numeric/Text.h"

namespace tellurix {

namespace {

constexpr int MinorTick = 7;
constexpr int MajorTick = 12;
constexpr int PageEdge = 4;              // no text comes nearer to the edge of the page
constexpr int RotatedTitleOffset = 120;  // of the y axis' title, left of the frame
constexpr double SmallestTitle = 0.6;    // scales of fonts below which text is cut instead
constexpr double SmallestLabel = 0.7;
constexpr double LineHeight = 1.2;  // of letters from top to bottom, in ems
constexpr int Upward = 900;

struct FrameParts {
  bool left, bottom;
  bool numericX, numericY, categoriesX, categoriesY;
  bool yLabels = true;
};

FrameParts PartsOf(int type) {
  switch (type) {
    case 1:
    case 8:
      return {true, true, true, false, false, true};
    case 2:
    case 9:
      return {true, true, false, true, true, false};
    case 4:
      return {false, true, true, false, false, false};
    case 5:
      return {true, false, false, true, false, false};
    case 6:
      return {false, true, false, false, false, false};
    case 23:
      return {true, true, true, true, false, false, false};
    default:
      return {true, true, true, true, false, false};
  }
}

// Every so many labels can be shown where each needs a length and stands a pitch from the next.
int Thinning(double needed, double pitch) {
  return pitch > 0 ? std::max(1, static_cast<int>(std::ceil(needed / pitch - 1e-9))) : 1;
}

std::string OnOneLine(std::string_view text) {
  std::string line(Trim(text));
  std::ranges::replace_if(
      line, [](char c) { return c == '\n' || c == '\r' || c == '\t'; }, ' ');
  return line;
}

// The first characters of a text; never part of one.
std::string Beginning(std::string_view text, std::size_t bytes) {
  while (bytes > 0 && bytes < text.size() && (static_cast<unsigned char>(text[bytes]) & 0xC0) == 0x80) --bytes;
  return std::string(text.substr(0, bytes));
}

}  // namespace

void Graphics::DrawFrame(bool graphicOn, std::string_view title, int frameType, int leftShift) {
  if (frameType < 0) ResetFrame();
  const int type = std::abs(frameType);
  page.ShiftFrame(leftShift);
  record.title = title;
  const FrameParts parts = PartsOf(type);
  if (graphicOn) {
    DrawTitle(title);
    picture.SelectFont(looks.LabelFont);
    picture.SelectPen(looks.Series[FramePen]);
    const bool closed = (type >= 7 && type <= 9) || looks.BoxAxes;
    DrawFrameLines(parts.left, parts.bottom, closed && type != 5);
  } else if (canvas.Rows() == 0) {
    canvas.ClearCanvas(TextCanvas::StandardRows);
  }
  if (parts.numericX) DrawXAxis(graphicOn);
  if (parts.numericY) DrawYAxis(graphicOn, parts.yLabels);
  if (parts.categoriesX) DrawCategoryX(graphicOn);
  if (parts.categoriesY) DrawCategoryY(graphicOn);
}

void Graphics::DrawTitle(std::string_view title) {
  const int centre = page.PlotLeft + page.PlotWidth / 2;
  const Fitted fitted = Fit(looks.TitleFont, 0, title, Page::PageWidth - 2 * PageEdge, SmallestTitle);
  picture.SelectFont(looks.TitleFont, 0, fitted.scale);
  CentredText(centre, page.PlotHeight + 180, fitted.text);
}

void Graphics::DrawFrameLines(bool left, bool bottom, bool closed) {
  const int right = page.PlotLeft + page.PlotWidth, top = page.PlotBottom + page.PlotHeight;
  if (left) Line(page.PlotLeft, page.PlotBottom, page.PlotLeft, top);
  if (bottom) Line(page.PlotLeft, page.PlotBottom, right, page.PlotBottom);
  if (!closed) return;
  Line(page.PlotLeft, top, right, top);
  Line(right, top, right, page.PlotBottom);
}

// --- numeric axes ---

void Graphics::ScaleX() {
  if (!page.FixedX) page.X = ChooseScale(page.XLow, page.XHigh);
  NoteSeries("x limits", {page.XLow, page.XHigh});
  NoteSeries("x scale", {page.X.start, page.X.step, static_cast<double>(page.X.intervals)});
}

void Graphics::ScaleY() {
  if (!page.FixedY) page.Y = ChooseScale(page.YLow, page.YHigh);
  NoteSeries("y limits", {page.YLow, page.YHigh});
  NoteSeries("y scale", {page.Y.start, page.Y.step, static_cast<double>(page.Y.intervals)});
}

void Graphics::DrawXAxis(bool graphicOn, bool withLabels) {
  ScaleX();
  if (!graphicOn) {
    canvas.DrawXAxis(page.X, regional_, page.LogX, withLabels);
    return;
  }
  picture.SelectPen(looks.Series[FramePen]);
  const AxisScale& scale = page.X;
  const auto at = [&](int i) {
    return ToInteger(static_cast<double>(i) / scale.intervals * page.PlotWidth + page.PlotLeft);
  };
  for (int i = 0; i <= scale.intervals; ++i) {
    const int length = i % scale.minorPerMajor == 0 ? MajorTick : MinorTick;
    Line(at(i), page.PlotBottom - length, at(i), page.PlotBottom);
  }
  if (!withLabels) return;
  const std::vector<TickLabel> labels = TickLabels(scale, regional_, page.LogX);
  picture.SelectFont(looks.LabelFont);
  double widest = 0;
  for (const TickLabel& label : labels) widest = std::max(widest, picture.TextWidth(label.text));
  const double pitch = static_cast<double>(page.PlotWidth) / scale.intervals * scale.minorPerMajor;
  const int every = Thinning(widest + looks.LabelFont.Size / 2.0, pitch);
  for (std::size_t i = 0; i < labels.size(); i += static_cast<std::size_t>(every)) {
    CentredText(at(labels[i].tick), page.PlotBottom - MajorTick, labels[i].text);
  }
}

void Graphics::DrawYAxis(bool graphicOn, bool withLabels) {
  ScaleY();
  if (!graphicOn) {
    canvas.DrawYAxis(page.Y, regional_, page.LogY, withLabels);
    return;
  }
  picture.SelectPen(looks.Series[FramePen]);
  const AxisScale& scale = page.Y;
  const auto at = [&](int i) {
    return ToInteger(static_cast<double>(i) / scale.intervals * page.PlotHeight + page.PlotBottom);
  };
  for (int i = 0; i <= scale.intervals; ++i) {
    const int length = i % scale.minorPerMajor == 0 ? MajorTick : MinorTick;
    Line(page.PlotLeft - length, at(i), page.PlotLeft, at(i));
  }
  if (!withLabels) return;
  const std::vector<TickLabel> labels = TickLabels(scale, regional_, page.LogY);
  // The column of a title that reads upward stays free.
  const int size = looks.LabelFont.Size;
  const double title = page.PlotLeft - RotatedTitleOffset + (LineHeight + 0.4) * size;
  const double room = page.PlotLeft - MajorTick - std::max<double>(title, PageEdge);
  picture.SelectFont(looks.LabelFont, 0, LabelScale(labels, room));
  picture.SetTextAlign(TextAlign::Right);
  const double pitch = static_cast<double>(page.PlotHeight) / scale.intervals * scale.minorPerMajor;
  const int every = Thinning(1.1 * size, pitch);
  for (std::size_t i = 0; i < labels.size(); i += static_cast<std::size_t>(every)) {
    picture.TextOut(page.PlotLeft - MajorTick, at(labels[i].tick) + size / 2, labels[i].text);
  }
  picture.SetTextAlign(TextAlign::Left);
  picture.SelectFont(looks.LabelFont);
}

double Graphics::LabelScale(const std::vector<TickLabel>& labels, double width) {
  picture.SelectFont(looks.LabelFont);
  double widest = 0;
  for (const TickLabel& label : labels) widest = std::max(widest, picture.TextWidth(label.text));
  return widest > width && width > 0 ? width / widest : 1;
}

// --- categories ---

void Graphics::DrawCategoryX(bool graphicOn) {
  if (!graphicOn) {
    canvas.DrawCategoryX(page.Categories);
    return;
  }
  if (page.Categories.empty()) return;
  picture.SelectPen(looks.Series[FramePen]);
  picture.SelectFont(looks.LabelFont);
  const double pitch = static_cast<double>(page.PlotWidth) / static_cast<double>(page.Categories.size());
  const auto at = [&](std::size_t i) { return ToInteger(page.PlotLeft + (static_cast<double>(i) + 0.5) * pitch); };
  // A label keeps at least the room of some letters; where the pitch is less, labels are thinned.
  const double gap = looks.LabelFont.Size / 2.0;
  const double room = std::max(pitch - gap, 6.0 * looks.LabelFont.Size);
  std::vector<std::string> labels;
  double widest = 0;
  for (const std::string& category : page.Categories) {
    labels.push_back(Fit(looks.LabelFont, 0, category, room, 1).text);
    widest = std::max(widest, picture.TextWidth(labels.back()));
  }
  const auto every = static_cast<std::size_t>(Thinning(widest + gap, pitch));
  for (std::size_t i = 0; i < labels.size(); ++i) Line(at(i), page.PlotBottom - MinorTick, at(i), page.PlotBottom);
  for (std::size_t i = 0; i < labels.size(); i += every) {
    CentredText(at(i), page.PlotBottom - MajorTick, labels[i]);
  }
}

void Graphics::DrawCategoryY(bool graphicOn) {
  if (!graphicOn) {
    canvas.DrawCategoryY(page.Categories);
    return;
  }
  if (page.Categories.empty()) return;
  picture.SelectPen(looks.Series[FramePen]);
  const int size = looks.LabelFont.Size;
  const double pitch = static_cast<double>(page.PlotHeight) / static_cast<double>(page.Categories.size());
  const auto at = [&](std::size_t i) { return ToInteger(page.PlotBottom + (static_cast<double>(i) + 0.5) * pitch); };
  const auto every = static_cast<std::size_t>(Thinning(1.1 * size, pitch));
  for (std::size_t i = 0; i < page.Categories.size(); ++i) {
    Line(page.PlotLeft - MinorTick, at(i), page.PlotLeft, at(i));
  }
  picture.SetTextAlign(TextAlign::Right);
  const double room = page.PlotLeft - MajorTick - PageEdge;
  for (std::size_t i = 0; i < page.Categories.size(); i += every) {
    const Fitted fitted = Fit(looks.LabelFont, 0, page.Categories[i], room, SmallestLabel);
    picture.SelectFont(looks.LabelFont, 0, fitted.scale);
    picture.TextOut(page.PlotLeft - MajorTick, at(i) + ToInteger(size * fitted.scale / 2), fitted.text);
  }
  picture.SetTextAlign(TextAlign::Left);
  picture.SelectFont(looks.LabelFont);
}

// --- titles of axes ---

void Graphics::DrawAxisTitleX(std::string_view text) {
  const int centre = page.PlotLeft + page.PlotWidth / 2;
  Fitted fitted = Fit(looks.LabelFont, 0, text, Page::PageWidth - 2 * PageEdge, SmallestLabel);
  // Large letters: what the tick labels leave of the margin is all there is.
  const int size = looks.LabelFont.Size;
  const double room = page.PlotBottom - MajorTick - LineHeight * size;
  fitted.scale = std::min(fitted.scale, std::max(SmallestTitle / 2, room / (LineHeight * size)));
  const int y = std::max(page.PlotBottom - MajorTick - 2 * size, ToInteger(LineHeight * size * fitted.scale));
  picture.SelectFont(looks.LabelFont, 0, fitted.scale);
  CentredText(centre, y, fitted.text);
  picture.SelectFont(looks.LabelFont);
}

void Graphics::DrawAxisTitleY(std::string_view text, int lineCount) {
  const std::string line = OnOneLine(text);
  picture.SelectFont(looks.LabelFont);
  const int width = ToInteger(picture.TextWidth(line));
  if (!looks.RotateAllY && width <= page.PlotLeft) {
    picture.SetTextAlign(TextAlign::Right);
    // A title as wide as the margin keeps clear of the page's edge.
    const int x = std::max(page.PlotLeft, width + PageEdge);
    const int belowTitle = page.PlotHeight + 180 - ToInteger(LineHeight * looks.TitleFont.Size);
    picture.TextOut(x, std::min(page.PlotBottom + page.PlotHeight + 2 * looks.LabelFont.Size, belowTitle), line);
    picture.SetTextAlign(TextAlign::Left);
    return;
  }
  const int centre = page.PlotBottom + page.PlotHeight / (lineCount >= 2 ? 3 : 2);
  // Clear of the other titles, which are above and below the frame.
  const int reach = std::min({centre - PageEdge, page.PageHeight - PageEdge - centre, page.PlotHeight / 2 + 50});
  const double room = 2.0 * reach;
  const Fitted fitted = Fit(looks.LabelFont, Upward, line, room, SmallestLabel);
  picture.SelectFont(looks.LabelFont, Upward, fitted.scale);
  picture.SetTextAlign(TextAlign::Centre);
  picture.TextOut(page.PlotLeft - RotatedTitleOffset, centre, fitted.text);
  picture.SetTextAlign(TextAlign::Left);
  picture.SelectFont(looks.LabelFont);
}

// --- text that fits ---

Graphics::Fitted Graphics::Fit(const FontSpec& font, int escapement, std::string_view text, double width,
                               double smallestScale) {
  Fitted fitted{OnOneLine(text), 1};
  picture.SelectFont(font, escapement);
  const double full = picture.TextWidth(fitted.text);
  if (full <= width) return fitted;
  fitted.scale = std::max(smallestScale, width / full);
  const double room = width / fitted.scale;  // in the plain size
  if (full <= room * (1 + 1e-9)) return fitted;
  const std::string whole = fitted.text;
  std::size_t low = 0, high = std::min<std::size_t>(whole.size(), 4096);
  while (low < high) {
    const std::size_t middle = (low + high + 1) / 2;
    if (picture.TextWidth(Beginning(whole, middle) + "…") <= room) {
      low = middle;
    } else {
      high = middle - 1;
    }
  }
  fitted.text = Beginning(whole, low) + "…";
  return fitted;
}

// Centred at x, or as near to it as keeps it on the page.
void Graphics::CentredText(double x, int y, std::string_view text) {
  const double half = picture.TextWidth(text) / 2;
  const double inside = std::max(half + PageEdge, std::min(x, Page::PageWidth - PageEdge - half));
  picture.SetTextAlign(TextAlign::Centre);
  picture.TextOut(ToInteger(inside), y, text);
  picture.SetTextAlign(TextAlign::Left);
}

}  // namespace tellurix
