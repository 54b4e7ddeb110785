#include "graphics/TextCanvas.h"

#include <utf8proc.h>

#include <algorithm>
#include <cmath>

#include "numeric/Rounding.h"
#include "numeric/Text.h"
#include "report/RichText.h"

namespace tellurix {

namespace {

constexpr int LabelRow = 1;
constexpr int AxisRow = 2;

std::u32string Characters(std::string_view text) {
  const std::string valid = ToUtf8(text);
  std::u32string characters;
  const auto* bytes = reinterpret_cast<const utf8proc_uint8_t*>(valid.data());
  for (std::size_t at = 0; at < valid.size();) {
    utf8proc_int32_t character = 0;
    const auto used = utf8proc_iterate(bytes + at, static_cast<utf8proc_ssize_t>(valid.size() - at), &character);
    if (used <= 0) break;
    characters.push_back(static_cast<char32_t>(character < 0x20 ? ' ' : character));
    at += static_cast<std::size_t>(used);
  }
  return characters;
}

double ShareOf(double v, const AxisScale& scale) {
  return (v / 2 - scale.start / 2) / (scale.End() / 2 - scale.start / 2);  // halves, for scales of any reach
}

bool IsSignOfAxis(char32_t c) { return c == U'|' || c == U'+' || c == U'-'; }

}  // namespace

void TextCanvas::ClearCanvas(int rows) {
  rows_.assign(static_cast<std::size_t>(std::max(rows, 0)), std::u32string(Columns, U' '));
}

char32_t TextCanvas::At(int column, int row) const {
  if (row < 1 || row > Rows() || column < 1 || column > Columns) return U' ';
  return rows_[static_cast<std::size_t>(row - 1)][static_cast<std::size_t>(column - 1)];
}

void TextCanvas::Put(int column, int row, char32_t character) {
  if (row < 1 || row > Rows() || column < 1 || column > Columns) return;
  rows_[static_cast<std::size_t>(row - 1)][static_cast<std::size_t>(column - 1)] = character;
}

void TextCanvas::PutText(int column, int row, std::string_view text) {
  for (const char32_t c : Characters(text)) Put(column++, row, c);
}

void TextCanvas::CanvasPlot(int column, int row) {
  const char32_t there = At(column, row);
  if (there == U' ' || IsSignOfAxis(there)) {
    Put(column, row, U'*');
  } else if (there == U'*') {
    Put(column, row, U'2');
  } else if (there >= U'2' && there < U'9') {
    Put(column, row, there + 1);
  }
}

int TextCanvas::ColumnOf(double v, const AxisScale& scale) {
  return ToInteger(FirstDataColumn + DataColumns * ShareOf(v, scale));
}

int TextCanvas::RowOf(double v, const AxisScale& scale) const {
  return ToInteger(FirstDataRow + (Rows() - FirstDataRow) * ShareOf(v, scale));
}

void TextCanvas::DrawXLine() {
  Put(AxisColumn, AxisRow, U'/');
  for (int i = 0; i <= DataColumns; ++i) Put(FirstDataColumn + i, AxisRow, U'=');
}

void TextCanvas::DrawYLine() {
  for (int row = FirstDataRow; row <= Rows(); ++row) Put(AxisColumn, row, U'|');
}

void TextCanvas::DrawXAxis(const AxisScale& scale, const Regional& regional, bool logarithmic, bool withLabels) {
  DrawXLine();
  if (!withLabels) return;
  int free = 1;  // first column that no label has taken
  for (const TickLabel& label : TickLabels(scale, regional, logarithmic)) {
    int column = ToInteger(static_cast<double>(DataColumns) / scale.intervals * label.tick + FirstDataColumn);
    if (label.text.starts_with('-')) --column;
    const auto width = static_cast<int>(CharacterCount(label.text));
    if (column < free || column + width - 1 > Columns) continue;
    PutText(column, LabelRow, label.text);
    free = column + width + 1;
  }
}

void TextCanvas::DrawYAxis(const AxisScale& scale, const Regional& regional, bool logarithmic, bool withLabels) {
  DrawYLine();
  int last = 0;
  for (const TickLabel& label : TickLabels(scale, regional, logarithmic)) {
    const int row = ToInteger(FirstDataRow + static_cast<double>(Rows() - FirstDataRow) / scale.intervals * label.tick);
    if (row == last) continue;
    last = row;
    Put(AxisColumn, row, U'+');
    if (withLabels) PutText(AxisColumn - static_cast<int>(CharacterCount(label.text)), row, label.text);
  }
}

void TextCanvas::DrawCategoryY(const std::vector<std::string>& labels) {
  DrawYLine();
  constexpr std::size_t widest = AxisColumn - 2;
  int last = 0;
  for (std::size_t i = 0; i < labels.size(); ++i) {
    const double share = (static_cast<double>(i) + 0.5) / static_cast<double>(labels.size());
    const int row = ToInteger(FirstDataRow + (Rows() - FirstDataRow) * share);
    if (row == last) continue;
    last = row;
    std::u32string text = Characters(labels[i]);
    text.resize(std::min(text.size(), widest));
    Put(AxisColumn, row, U'+');
    for (std::size_t k = 0; k < text.size(); ++k) {
      Put(AxisColumn - 1 - static_cast<int>(text.size()) + static_cast<int>(k), row, text[k]);
    }
  }
}

void TextCanvas::DrawCategoryX(const std::vector<std::string>& labels) {
  DrawXLine();
  int free = 1;
  for (std::size_t i = 0; i < labels.size(); ++i) {
    const double share = (static_cast<double>(i) + 0.5) / static_cast<double>(labels.size());
    const auto width = static_cast<int>(CharacterCount(labels[i]));
    const int column = FirstDataColumn + ToInteger(DataColumns * share) - width / 2;
    if (column < free || column + width - 1 > Columns) continue;
    PutText(column, LabelRow, labels[i]);
    free = column + width + 1;
  }
}

std::string TextCanvas::RichRows() const {
  std::string text;
  for (std::size_t i = rows_.size(); i-- > 0;) {
    std::u32string_view row = rows_[i];
    while (!row.empty() && row.back() == U' ') row.remove_suffix(1);
    std::string line;
    for (const char32_t c : row) line += EncodeUtf8(c);
    text += EscapeRtf(line);
    if (i > 0) text += "\\par ";
  }
  return text;
}

}  // namespace tellurix
