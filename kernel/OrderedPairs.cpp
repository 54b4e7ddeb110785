// Walks through the pairs of one or two ordered samples in the order of their averages or differences.
#include <algorithm>
#include <cmath>

#include "kernel/Inner.h"

namespace tellurix::kernel {

namespace {

enum Status : i32 { Given, NoneLeft, Illegal };

bool IsOrderedSample(const f64* data, i32 count) {
  if (data == nullptr || count < 1) return false;
  return std::all_of(data, data + count, [](f64 x) { return std::isfinite(x); }) && std::is_sorted(data, data + count);
}

// Every row rises; its k-th element is valueAt(row, k). The first elements of the rows rise too, so a row joins the
// heap only when the first element of the row before has been given.
template <typename ValueAt>
class RowHeap {
 public:
  RowHeap(PairWalk& walk, ValueAt valueAt) : walk_(walk), valueAt_(valueAt) {}

  void Start() {
    walk_.rows = 0;
    Join(0);
  }

  f64 Next(i32 rows, i32 lengthOfTop) {
    const i32 top = walk_.heap[0];
    const f64 value = Key(top);
    const bool wasFirst = walk_.next[top]++ == 0;
    if (walk_.next[top] == lengthOfTop) walk_.heap[0] = walk_.heap[--walk_.rows];
    SiftDown();
    if (wasFirst && top + 1 < rows) Join(top + 1);
    return value;
  }

 private:
  f64 Key(i32 row) const { return valueAt_(row, walk_.next[row]); }

  void Join(i32 row) {
    walk_.next[row] = 0;
    walk_.heap[walk_.rows++] = row;
    for (i32 at = walk_.rows - 1; at > 0;) {
      const i32 above = (at - 1) / 2;
      if (!(Key(walk_.heap[at]) < Key(walk_.heap[above]))) break;
      std::swap(walk_.heap[at], walk_.heap[above]);
      at = above;
    }
  }

  void SiftDown() {
    for (std::int64_t at = 0;;) {
      std::int64_t below = 2 * at + 1;
      if (below >= walk_.rows) break;
      if (below + 1 < walk_.rows && Key(walk_.heap[below + 1]) < Key(walk_.heap[below])) ++below;
      if (!(Key(walk_.heap[below]) < Key(walk_.heap[at]))) break;
      std::swap(walk_.heap[at], walk_.heap[below]);
      at = below;
    }
  }

  PairWalk& walk_;
  ValueAt valueAt_;
};

// One step; lengthOf(row) elements stand in a row.
template <typename ValueAt, typename LengthOf>
void Step(PairWalk& walk, i32 rows, bool legal, ValueAt valueAt, LengthOf lengthOf, f64& result) {
  result = NaN;
  RowHeap heap(walk, valueAt);
  if (walk.started == 0) {
    walk.status = legal && walk.next != nullptr && walk.heap != nullptr ? Given : Illegal;
    walk.started = 1;
    walk.rows = 0;
    if (walk.status == Given) heap.Start();
  }
  if (walk.status != Given) return;
  if (walk.rows == 0) {
    walk.status = NoneLeft;
    return;
  }
  result = heap.Next(rows, lengthOf(walk.heap[0]));
}

// The mean of two finite numbers, rounded once.
f64 Middle(f64 a, f64 b) {
  const f64 sum = a + b;
  return std::isfinite(sum) ? sum / 2 : a / 2 + b / 2;
}

}  // namespace

}  // namespace tellurix::kernel

using namespace tellurix::kernel;

void PAIRNEXT(PairWalk& walk, f64& result, const f64* data, const i32& count) {
  const bool legal = walk.started != 0 || IsOrderedSample(data, count);
  Step(
      walk, count, legal, [=](i32 row, i32 k) { return Middle(data[row], data[row + k]); },
      [&](i32 row) { return count - row; }, result);
}

void FINDNEXT(PairWalk& walk, f64& result, const f64* a, const f64* b, const i32& na, const i32& nb) {
  const bool legal = walk.started != 0 || (IsOrderedSample(a, na) && IsOrderedSample(b, nb));
  Step(
      walk, na, legal, [&](i32 row, i32 k) { return a[row] - b[nb - 1 - k]; }, [&](i32) { return nb; }, result);
}
