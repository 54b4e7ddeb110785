// The columns that the cells of a table, each with edges of its own, lie in.
#pragma once

#include <vector>

#include "report/RichText.h"

namespace tellurix {

struct TableGrid {
  struct Place {
    int column = 0;  // the first one that the cell covers
    int span = 1;
  };

  int columns = 0;
  std::vector<int> edges;                // columns + 1 of them, from the left; none when the cells' edges make no grid
  std::vector<std::vector<Place>> rows;  // a place for each cell
};

// Edges less than ten twips apart are the same. Where edges do not rise from cell to cell, or there would be more than
// 200 columns, the k-th cell of each row stands in the k-th column.
TableGrid FindGrid(const Table& table);

}  // namespace tellurix
