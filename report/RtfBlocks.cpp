#include "report/RtfBlocks.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace tellurix {

void RtfBlocks::EndParagraph(bool inTable) {
  if (inTable) {
    cell_.push_back(text_.Take());
    PlaceBoxesInCell();
  } else {
    Paragraph paragraph = text_.Take();
    if (std::exchange(partsTables_, false) && paragraph.runs.empty() && boxes_.empty()) return;
    CloseTable();
    blocks_.emplace_back(std::move(paragraph));
    PlaceBoxes();
  }
  afterNestedRow_ = false;
}

void RtfBlocks::EndNestedRow() {
  if (text_.HasRuns() || text_.EndsNestedCell()) cell_.push_back(text_.Take());
  afterNestedRow_ = true;
}

void RtfBlocks::EndCell() {
  partsTables_ = false;
  Paragraph last = text_.Take();
  if (!afterNestedRow_ || cell_.empty() || !last.runs.empty()) cell_.push_back(std::move(last));
  PlaceBoxesInCell();
  afterNestedRow_ = false;
  cells_.push_back(std::exchange(cell_, {}));
}

void RtfBlocks::EndRow() {
  if (text_.HasRuns()) EndCell();
  if (!cell_.empty()) cells_.push_back(std::exchange(cell_, {}));
  if (cells_.empty()) return;
  row_.AddTo(table_, cells_);
  cells_.clear();
}

void RtfBlocks::EndTable() {
  CloseTable();
  partsTables_ = true;
}

// A row without its end is closed; paragraphs that wait for the end of a cell which never came stand behind the table.
void RtfBlocks::CloseTable() {
  if (!cells_.empty()) EndRow();
  if (!table_.rows.empty()) blocks_.emplace_back(std::exchange(table_, Table{}));
  std::ranges::move(std::exchange(cell_, {}), std::back_inserter(blocks_));
}

void RtfBlocks::AddBox(std::vector<Block> blocks) { std::ranges::move(blocks, std::back_inserter(boxes_)); }

void RtfBlocks::PlaceBoxes() { std::ranges::move(std::exchange(boxes_, {}), std::back_inserter(blocks_)); }

// Tables in a box go paragraph by paragraph: a cell holds no tables.
void RtfBlocks::PlaceBoxesInCell() {
  for (Block& block : std::exchange(boxes_, {})) {
    if (auto* paragraph = std::get_if<Paragraph>(&block)) {
      cell_.push_back(std::move(*paragraph));
    } else {
      for (TableRow& row : std::get<Table>(block).rows) {
        for (TableCell& cell : row.cells) std::ranges::move(cell.paragraphs, std::back_inserter(cell_));
      }
    }
  }
}

std::vector<Block> RtfBlocks::Finish(bool inTable) {
  if (text_.HasPending() || text_.HasRuns()) {
    Paragraph last = text_.Take();
    if (!last.runs.empty()) {
      if (inTable) {
        cell_.push_back(std::move(last));
      } else {
        CloseTable();
        blocks_.emplace_back(std::move(last));
      }
    }
  }
  CloseTable();
  PlaceBoxes();
  return std::move(blocks_);
}

}  // namespace tellurix
