// The cells of one column, in typed blocks of plain arrays (a structure of arrays; no object for each cell).
//
// The column is cut every SegmentRows rows, and each segment has its own multi-type vector of blocks. That bounds what
// a write into a column of mixed types costs (its blocks stand in a plain list, which is quadratic for a million
// alternating cells), and it makes copies cheap: copying a column copies pointers, and a segment that several columns
// share is cloned when one of them writes to it. Undo rests on that.
//
// Not for use by several threads at once, not even for reading: reads move a cursor.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <mdds/multi_type_vector.hpp>
#include <mdds/multi_type_vector/custom_func2.hpp>

#include "workbook/Formula.h"
#include "workbook/GridStore.h"
#include "workbook/TextPool.h"

namespace tellurix {

using FormulaRef = std::shared_ptr<const Formula>;

inline constexpr mdds::mtv::element_t TextElement = mdds::mtv::element_type_user_start;
inline constexpr mdds::mtv::element_t FormulaElement = mdds::mtv::element_type_user_start + 1;
using NumberBlock = mdds::mtv::double_element_block;
using LogicalBlock = mdds::mtv::uint8_element_block;
using TextBlock = mdds::mtv::default_element_block<TextElement, TextRef>;
using FormulaBlock = mdds::mtv::default_element_block<FormulaElement, FormulaRef>;

MDDS_MTV_DEFINE_ELEMENT_CALLBACKS(TextRef, TextElement, TextRef(), TextBlock)
MDDS_MTV_DEFINE_ELEMENT_CALLBACKS(FormulaRef, FormulaElement, FormulaRef(), FormulaBlock)

// One cell taken out of a column, to be put back.
struct CellValue {
  int type = EmptyCell;
  double number = 0;
  TextRef text;
  FormulaRef formula;  // when set, it is all that counts

  bool IsEmpty() const { return type == EmptyCell && !formula; }
};

class CellColumn {
 public:
  static constexpr int SegmentRows = 4096;

  CellColumn() = default;
  // A copy shares every segment.
  CellColumn(const CellColumn& other) : segments_(other.segments_), detachedBytes_(other.detachedBytes_) {}
  CellColumn& operator=(const CellColumn&) = delete;

  // --- reading; any row from 1 on ---
  int Type(int row) const {
    const Cursor& at = Seek(row);
    return at.kind == FormulaElement ? -At<FormulaRef>(at, row)->type : TypeOf(at.kind);
  }
  double Number(int row) const {
    const Cursor& at = Seek(row);
    return at.kind == mdds::mtv::element_type_double ? At<double>(at, row) : View(row).number;
  }
  CellView View(int row) const;
  CellValue Get(int row) const;
  const Formula* FormulaAt(int row) const;  // null when there is none
  int LastRow() const;                      // 0 when empty; constant time

  // The cells of one kind from a row on: their last row, and where they stand. Numbers and formulas begin at the row.
  struct Run {
    int lastRow = 0;
    int type = EmptyCell;  // EmptyCell for formulas
    const double* numbers = nullptr;
    const FormulaRef* formulas = nullptr;
  };
  Run RunAt(int row) const {
    const Cursor& at = Seek(row);
    Run run{at.first + at.count, TypeOf(at.kind)};
    if (at.kind == mdds::mtv::element_type_double) run.numbers = &At<double>(at, row);
    if (at.kind == FormulaElement) run.formulas = &At<FormulaRef>(at, row);
    return run;
  }

  // Calls visit(row, formula) for every formula from firstRow to lastRow.
  template <typename Visit>
  void EachFormula(int firstRow, int lastRow, Visit visit) const {
    lastRow = std::min(lastRow, LastRow());
    for (int row = firstRow; row <= lastRow;) {
      const Run run = RunAt(row);
      const int end = std::min(run.lastRow, lastRow);
      if (run.formulas) {
        for (int i = 0; i <= end - row; ++i) visit(row + i, run.formulas[i]);
      }
      row = end + 1;
    }
  }

  bool IsEmpty() const { return segments_.empty(); }
  bool IsEmpty(int firstRow, int lastRow) const;

  // --- writing; the row fits the sheet ---
  void Set(int row, double value) { Put(row, value, mdds::mtv::element_type_double); }
  void Set(int row, const TextRef& text) { Put(row, text, TextElement); }
  void Set(int row, bool value) { Put(row, static_cast<std::uint8_t>(value), mdds::mtv::element_type_uint8); }
  void Set(int row, const FormulaRef& formula) { Put(row, formula, FormulaElement); }
  void Set(int row, const CellValue& value);
  void Set(int row, std::span<const double> values);
  void Set(int row, std::span<const TextRef> texts);
  void Clear(int firstRow, int lastRow);

  // Cells of another column from row `from` on, over those from row `to` on, empty ones too. Whole segments are shared
  // where they fall on whole segments.
  void CopyCells(const CellColumn& source, int from, int count, int to);

  // Bytes of the segments that nobody else shares.
  std::size_t OwnBytes() const;
  // Bytes left behind in other columns by writes to shared segments since this was last asked.
  std::size_t TakeDetachedBytes() { return std::exchange(detachedBytes_, 0); }

  // Used by the workbook's undo: the step which last wrote here and how many of its writes were logged.
  std::uint64_t step = 0;
  int logged = 0;

 private:
  using Cells = mdds::multi_type_vector<mdds::mtv::custom_block_func2<TextBlock, FormulaBlock>>;
  struct Segment {
    Cells cells{static_cast<std::size_t>(SegmentRows)};
    bool IsEmpty() const { return cells.block_size() == 1 && cells.begin()->type == mdds::mtv::element_type_empty; }
    std::size_t Bytes() const;
  };

  // The block that was last read.
  struct Cursor {
    int first = 0;  // offset of its first cell
    int count = 0;  // 0: none
    mdds::mtv::element_t kind = mdds::mtv::element_type_empty;
    void* data = nullptr;
  };

  static int TypeOf(mdds::mtv::element_t kind) {
    switch (kind) {
      case mdds::mtv::element_type_double:
        return NumberCell;
      case TextElement:
        return TextCell;
      case mdds::mtv::element_type_uint8:
        return LogicalCell;
      default:
        return EmptyCell;
    }
  }
  template <typename T>
  static T& At(const Cursor& cursor, int row) {
    return static_cast<T*>(cursor.data)[row - 1 - cursor.first];
  }
  bool Holds(int row) const {
    return static_cast<unsigned>(row - 1 - cursor_.first) < static_cast<unsigned>(cursor_.count);
  }
  const Cursor& Seek(int row) const {
    if (!Holds(row)) MoveCursor(row - 1);
    return cursor_;
  }
  void MoveCursor(int offset) const;

  template <typename T>
  void Put(int row, const T& value, mdds::mtv::element_t kind) {
    const auto segment = static_cast<std::size_t>(row - 1) / SegmentRows;
    if (Holds(row) && cursor_.kind == kind && segments_[segment].use_count() == 1) {
      At<T>(cursor_, row) = value;
      return;
    }
    PutElsewhere(row, value);
  }
  template <typename T>
  void PutElsewhere(int row, const T& value);  // where the cursor does not stand
  template <typename T>
  void PutRun(int row, std::span<const T> values);
  Segment& Own(std::size_t segment);  // made if there is none, cloned if shared
  void ClearPart(std::size_t segment, int first, int count);
  void CopyPart(const Segment& source, int from, std::size_t segment, int to, int count);
  void Trim();  // no empty segments at the end

  std::vector<std::shared_ptr<Segment>> segments_;  // null: empty
  std::size_t detachedBytes_ = 0;
  mutable Cursor cursor_;
};

}  // namespace tellurix
