// The shape of table rows as rich text describes it.
#pragma once

#include <span>
#include <vector>

#include "report/RichText.h"
#include "report/RtfKeywords.h"

namespace tellurix {

class RtfRow {
 public:
  using Cell = std::vector<Paragraph>;

  RtfRow() = default;
  RtfRow(const RtfRow&) = delete;
  RtfRow& operator=(const RtfRow&) = delete;

  // Takes up a word from RowDefaults to CellEdge.
  void SetProperty(const RtfKeyword& keyword, const RtfToken& token);

  // Adds a row to the table, with what the cells hold; cells that are merged become one.
  void AddTo(Table& table, std::span<Cell> cells) const;

 private:
  struct BorderState {
    bool drawn = false;
    int width = 15;
  };
  struct CellState {
    BorderState borders[4];  // top, bottom, left, right
    int rightEdge = 0;
    bool merged = false;      // with the cell before it
    bool mergedDown = false;  // with the cell above it

    Borders Widths() const;
  };

  void Reset();
  void EndCellState(int rightEdge);

  TableRow row_;     // all but the cells
  int padding_ = 0;  // at the right of the cells; newer writers give it in place of the gap
  std::vector<CellState> cells_;
  CellState cell_;
  BorderState* border_ = nullptr;  // that of the last border word
};

}  // namespace tellurix
