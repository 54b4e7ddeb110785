// The blocks of a document as rich text ends them: paragraphs, cells, rows, tables, and the boxes tied to them.
#pragma once

#include <vector>

#include "report/RichText.h"
#include "report/RtfRow.h"
#include "report/RtfText.h"

namespace tellurix {

class RtfBlocks {
 public:
  // The text, which outlives the blocks, holds the paragraph under way.
  explicit RtfBlocks(RtfText& text) : text_(text) {}

  void SetRowProperty(const RtfKeyword& keyword, const RtfToken& token) { row_.SetProperty(keyword, token); }

  void EndParagraph(bool inTable);
  void EndCell();
  void EndRow();
  // The rows of a table inside a cell become paragraphs of the cell.
  void EndNestedRow();
  // The table ends here; what follows, if it is a table, is another one.
  void EndTable();

  // What stands in a box comes after the paragraph that the box is tied to, which is the one under way.
  void AddBox(std::vector<Block> blocks);

  // All blocks; whatever is open is closed.
  std::vector<Block> Finish(bool inTable);

 private:
  void CloseTable();
  void PlaceBoxes();
  void PlaceBoxesInCell();

  RtfText& text_;
  std::vector<Block> blocks_;
  std::vector<Block> boxes_;         // of the paragraph under way
  RtfRow::Cell cell_;                // paragraphs of the cell under way
  std::vector<RtfRow::Cell> cells_;  // of the row under way
  RtfRow row_;
  Table table_;
  bool afterNestedRow_ = false;
  bool partsTables_ = false;  // an empty paragraph now does nothing but part two tables
};

}  // namespace tellurix
