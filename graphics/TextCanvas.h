// The character canvas: a plot laid out on rows of 85 characters, for reports in plain text. Rows and columns count
// from 1, row 1 is at the bottom. The data area is 61 columns wide from column 15 on, and the rows from 3 to the top.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "graphics/Scale.h"
#include "numeric/Regional.h"

namespace tellurix {

class TextCanvas {
 public:
  static constexpr int Columns = 85;
  static constexpr int AxisColumn = 14;
  static constexpr int FirstDataColumn = 15;
  static constexpr int DataColumns = 60;  // between the first tick and the last
  static constexpr int FirstDataRow = 3;
  static constexpr int StandardRows = 23;  // one row for each of 20 intervals

  void ClearCanvas(int rows);
  int Rows() const { return static_cast<int>(rows_.size()); }

  // A data point: a blank or the sign of an axis becomes "*", a second one in the same cell "2", and so on up to "9".
  // Beyond the canvas it is left out.
  void CanvasPlot(int column, int row);

  // One character, or text from a column on; what does not fit is left out. Text is UTF-8, a character a column.
  void Put(int column, int row, char32_t character);
  void PutText(int column, int row, std::string_view text);
  char32_t At(int column, int row) const;  // a blank beyond the canvas

  // Where a value stands on the data area.
  static int ColumnOf(double v, const AxisScale& scale);
  int RowOf(double v, const AxisScale& scale) const;

  // Axes with ticks and labels.
  void DrawXAxis(const AxisScale& scale, const Regional& regional, bool logarithmic, bool withLabels = true);
  void DrawYAxis(const AxisScale& scale, const Regional& regional, bool logarithmic, bool withLabels = true);
  // The y axis without ticks, and labels of categories from the bottom, each at the middle of its share of the rows.
  void DrawCategoryY(const std::vector<std::string>& labels);
  // The x axis without ticks, and labels of categories at the middle of their shares; those that would collide are left
  // out.
  void DrawCategoryX(const std::vector<std::string>& labels);

  // The rows from top to bottom without blanks at their ends, each but the last followed by "\par ", as rich text.
  std::string RichRows() const;

 private:
  void DrawXLine();
  void DrawYLine();

  std::vector<std::u32string> rows_;  // from the bottom
};

}  // namespace tellurix
