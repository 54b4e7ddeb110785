// Which formulas depend on which cells, and computing those that must be, each after all it refers to.
//
// What formulas refer to is kept by column as intervals of rows, each cut into the aligned powers of two that make it
// up; a range over a whole column costs one entry, and the formulas that read a cell are found in at most 21 look-ups.
// Ranges wider than a few columns are kept once, by their rows, with the columns looked at when found.
//
// Formulas that refer to each other in a circle (by any branch of theirs) all come to "#CIRC!". The order is found by
// Tarjan's strongly connected components (SIAM J. Comput. 1, 1972) with a stack of its own, so that chains of any
// length are followed.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <unordered_map>
#include <vector>

#include "workbook/CellColumn.h"
#include "workbook/Formula.h"

namespace tellurix {

// Numbered intervals of rows.
class RowIntervals {
 public:
  void Add(int firstRow, int lastRow, std::uint32_t number);

  // Calls visit(number) for every interval that meets the rows, perhaps more than once.
  template <typename Visit>
  void Find(int firstRow, int lastRow, Visit visit) const {
    const auto first = static_cast<std::uint32_t>(firstRow - 1);
    const auto last = static_cast<std::uint32_t>(lastRow - 1);
    if (last - first > blocks_.size()) {
      for (const auto& [key, numbers] : blocks_) {
        const std::uint32_t level = key >> LevelShift;
        const std::uint32_t index = key & ((1u << LevelShift) - 1);
        if (index > last >> level || index < first >> level) continue;
        for (const std::uint32_t number : numbers) visit(number);
      }
      return;
    }
    for (std::uint32_t level = 0; level < Levels; ++level) {
      if (inLevel_[level] == 0) continue;
      for (std::uint32_t index = first >> level; index <= last >> level; ++index) {
        const auto found = blocks_.find(level << LevelShift | index);
        if (found == blocks_.end()) continue;
        for (const std::uint32_t number : found->second) visit(number);
      }
    }
  }

 private:
  static constexpr std::uint32_t LevelShift = 21;
  static constexpr std::uint32_t Levels = 21;  // blocks of 1 to 2^20 rows

  std::unordered_map<std::uint32_t, std::vector<std::uint32_t>> blocks_;
  std::array<std::uint32_t, Levels> inLevel_{};
};

class FormulaEngine {
 public:
  explicit FormulaEngine(const FormulaCells& cells) : cells_(cells) {}

  // Until the first formula of the workbook there is nothing to do.
  void Use() { isUsed_ = true; }
  bool IsUsed() const { return isUsed_; }

  // The formulas of a cell, of a column, or of all sheets may be others now, and with `namesMayDiffer` the names of
  // sheets may mean others. Sheets are numbered from 0.
  void RefreshCell(int sheet, int column, int row);
  void RefreshColumn(int sheet, int column);
  void Rebuild(bool namesMayDiffer);

  // Cells have other contents; the formulas that read them are to be computed. After the refreshing.
  void Changed(int sheet, const CellRange& range);

  // Computes what is to be computed; `told` hears of each cell whose result is another one now.
  void Recalculate(const std::function<void(int sheet, int row, int column)>& told);

 private:
  static constexpr std::uint32_t None = UINT32_MAX;
  static constexpr int WidestByColumn = 8;

  struct Node {
    FormulaRef formula;
    int sheet;
    int column;
    int row;
    bool isAlive = true;
    bool isDirty = false;
    bool isOnPath = false;  // the rest is Tarjan's
    bool readsItself = false;
    std::uint32_t number = 0;
    std::uint32_t low = 0;
  };

  struct SheetIndex {
    std::unordered_map<int, RowIntervals> columns;
    RowIntervals wide;
    std::unordered_map<int, std::unordered_map<int, std::uint32_t>> nodes;  // of columns by row
  };

  // Where the search for the dirty formulas that a formula refers to stands.
  struct Frame {
    std::uint32_t node;
    std::size_t reference = 0;
    int column = 0;  // 0: at the start of the reference
    int row = 0;
  };

  SheetIndex& IndexOf(int sheet);
  void Register(const FormulaRef& formula, int sheet, int column, int row);
  void Unregister(std::uint32_t id);
  void AddToIndex(std::uint32_t id);
  void CompactIfWorthIt();
  void MarkDirty(std::uint32_t id);
  void MarkReaders(int sheet, const CellRange& range);
  std::uint32_t NextUnfinished(Frame& frame) const;
  bool Compute(const Node& node) const;
  void Order(const std::function<void(const Node&)>& told);

  const FormulaCells& cells_;
  bool isUsed_ = false;
  std::vector<SheetIndex> sheets_;
  std::vector<Node> nodes_;
  std::size_t dead_ = 0;
  std::vector<std::uint32_t> dirty_;
};

}  // namespace tellurix
