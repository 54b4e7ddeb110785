// Where rows and columns lie: numbers to pixels and back, for sheets of a million rows.
#pragma once

#include <QtGlobal>
#include <utility>
#include <vector>

namespace tellurix {

// The rows or the columns of a sheet along their axis. All have one size but for the exceptions, which are kept as runs
// of equal size with the pixels that the runs before them add: memory and time go by the number of runs.
// Indexes are 1-based; sizes are in pixels, 0 hides.
class GridAxis {
 public:
  GridAxis(int count, int defaultSize) : count_(count), defaultSize_(defaultSize) {}

  int Count() const { return count_; }
  int DefaultSize() const { return defaultSize_; }
  void SetDefaultSize(int size) { defaultSize_ = size, summed_ = false; }
  void SetSize(int first, int last, int size);
  void Reset(int first, int last);  // the default size again
  void Reset() { Reset(1, count_); }

  int Size(int index) const;          // 0 outside 1..Count
  qint64 Start(int index) const;      // pixels before it; of Count + 1 the length of all
  int At(qint64 pixel) const;         // whose pixel it is; cut to 1..Count
  int Next(int index, int by) const;  // the nearest that is not hidden after (by > 0) or before it; 0: none
  bool IsHidden(int index) const { return Size(index) == 0; }
  bool HasHidden(int first, int last) const;

 private:
  struct Run {
    int first;
    int last;
    int size;
    qint64 before;  // pixels that the runs before this one have more than they would by default
  };
  std::size_t RunFrom(int index) const;  // the first run that ends at or after it
  void CutOut(int first, int last);
  void Sum() const;

  int count_;
  int defaultSize_;
  mutable std::vector<Run> runs_;  // ordered, apart
  mutable bool summed_ = true;
};

// A row or column as it lies in a window.
struct GridSpan {
  int index;
  int start;
  int size;
  int End() const { return start + size; }
};

// All that decides where the cells of a sheet lie in its window. Frozen rows and columns stand before the scrolled
// ones.
struct SheetGeometry {
  GridAxis rows;
  GridAxis columns;
  int frozenRows = 0;
  int frozenColumns = 0;
  int topRow = 1;  // the first of the scrolled ones
  int leftColumn = 1;
  bool showsGridlines = true;
  bool showsHeadings = true;
  bool showsZeros = true;
};

// Those of an axis that show between two pixels of the window: the frozen ones, then those from `first` on. The last
// one may reach beyond `to`.
std::vector<GridSpan> LayOut(const GridAxis& axis, int frozen, int first, int from, int to);

// Which of these spans, in order, have an index from `first` to `last`: from the first number up to the second one.
std::pair<std::size_t, std::size_t> SpansWithin(const std::vector<GridSpan>& spans, int first, int last);

}  // namespace tellurix
