#include "report/TableGrid.h"

#include <algorithm>

namespace tellurix {

namespace {

constexpr int Tolerance = 10;
constexpr std::size_t MaxColumns = 200;

// The edges of all cells, or none if there are too many.
std::vector<int> FindEdges(const Table& table) {
  std::vector<int> all;
  for (const auto& row : table.rows) {
    all.push_back(row.leftEdge);
    for (const auto& cell : row.cells) all.push_back(cell.rightEdge);
  }
  std::sort(all.begin(), all.end());
  std::vector<int> edges;
  for (const int edge : all) {
    if (edges.empty() || edge > edges.back() + Tolerance) edges.push_back(edge);
    if (edges.size() > MaxColumns + 1) return {};
  }
  return edges;
}

bool Place(const Table& table, TableGrid& grid) {
  const auto find = [&](int edge) {
    return static_cast<int>(std::upper_bound(grid.edges.begin(), grid.edges.end(), edge) - grid.edges.begin()) - 1;
  };
  for (const auto& row : table.rows) {
    auto& places = grid.rows.emplace_back();
    int from = find(row.leftEdge);
    for (const auto& cell : row.cells) {
      const int to = find(cell.rightEdge);
      if (to <= from) return false;
      places.push_back({from, to - from});
      from = to;
    }
  }
  return true;
}

}  // namespace

TableGrid FindGrid(const Table& table) {
  TableGrid grid;
  grid.edges = FindEdges(table);
  if (!grid.edges.empty() && Place(table, grid)) {
    grid.columns = static_cast<int>(grid.edges.size()) - 1;
    return grid;
  }
  grid = TableGrid{};
  for (const auto& row : table.rows) {
    auto& places = grid.rows.emplace_back();
    for (int column = 0; column < static_cast<int>(row.cells.size()); ++column) places.push_back({column, 1});
    grid.columns = std::max(grid.columns, static_cast<int>(row.cells.size()));
  }
  return grid;
}

}  // namespace tellurix
