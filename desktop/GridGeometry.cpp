#include "desktop/GridGeometry.h"

#include <algorithm>

namespace tellurix {

std::size_t GridAxis::RunFrom(int index) const {
  const auto found = std::partition_point(runs_.begin(), runs_.end(), [&](const Run& run) { return run.last < index; });
  return static_cast<std::size_t>(found - runs_.begin());
}

void GridAxis::CutOut(int first, int last) {
  auto at = runs_.begin() + static_cast<std::ptrdiff_t>(RunFrom(first));
  if (at != runs_.end() && at->first < first) {
    const Run rest{first, at->last, at->size, 0};
    at->last = first - 1;
    at = runs_.insert(at + 1, rest);
  }
  auto end = at;
  while (end != runs_.end() && end->last <= last) ++end;
  if (end != runs_.end() && end->first <= last) end->first = last + 1;
  runs_.erase(at, end);
  summed_ = false;
}

void GridAxis::Reset(int first, int last) {
  first = std::max(first, 1);
  last = std::min(last, count_);
  if (first <= last) CutOut(first, last);
}

void GridAxis::SetSize(int first, int last, int size) {
  first = std::max(first, 1);
  last = std::min(last, count_);
  if (first > last) return;
  CutOut(first, last);
  if (size == defaultSize_) return;
  const std::size_t at = RunFrom(first);
  if (at > 0 && runs_[at - 1].last == first - 1 && runs_[at - 1].size == size) {
    runs_[at - 1].last = last;
  } else {
    runs_.insert(runs_.begin() + static_cast<std::ptrdiff_t>(at), Run{first, last, size, 0});
  }
}

void GridAxis::Sum() const {
  if (summed_) return;
  qint64 before = 0;
  for (auto& run : runs_) {
    run.before = before;
    before += static_cast<qint64>(run.last - run.first + 1) * (run.size - defaultSize_);
  }
  summed_ = true;
}

int GridAxis::Size(int index) const {
  if (index < 1 || index > count_) return 0;
  const std::size_t at = RunFrom(index);
  return at < runs_.size() && runs_[at].first <= index ? runs_[at].size : defaultSize_;
}

qint64 GridAxis::Start(int index) const {
  Sum();
  qint64 start = static_cast<qint64>(index - 1) * defaultSize_;
  const std::size_t at = RunFrom(index);
  if (at < runs_.size() && runs_[at].first <= index) {
    return start + runs_[at].before + static_cast<qint64>(index - runs_[at].first) * (runs_[at].size - defaultSize_);
  }
  if (at > 0) {
    const Run& run = runs_[at - 1];
    start += run.before + static_cast<qint64>(run.last - run.first + 1) * (run.size - defaultSize_);
  }
  return start;
}

int GridAxis::At(qint64 pixel) const {
  int low = 1;
  int high = count_;  // the last one that starts at or before the pixel is the one; hidden ones start where it ends
  while (low < high) {
    const int middle = low + (high - low + 1) / 2;
    if (Start(middle) <= pixel) {
      low = middle;
    } else {
      high = middle - 1;
    }
  }
  if (Size(low) == 0) {
    if (const int shown = Next(low, -1)) return shown;
  }
  return low;
}

int GridAxis::Next(int index, int by) const {
  index += by > 0 ? 1 : -1;
  while (index >= 1 && index <= count_) {
    const std::size_t at = RunFrom(index);
    if (at >= runs_.size() || runs_[at].first > index || runs_[at].size > 0) return index;
    index = by > 0 ? runs_[at].last + 1 : runs_[at].first - 1;
  }
  return 0;
}

bool GridAxis::HasHidden(int first, int last) const {
  for (std::size_t at = RunFrom(first); at < runs_.size() && runs_[at].first <= last; ++at) {
    if (runs_[at].size == 0) return true;
  }
  return false;
}

std::vector<GridSpan> LayOut(const GridAxis& axis, int frozen, int first, int from, int to) {
  std::vector<GridSpan> spans;
  int at = from;
  const auto add = [&](int index) {
    spans.push_back({index, at, axis.Size(index)});
    at = spans.back().End();
  };
  for (int index = axis.Next(0, 1); index != 0 && index <= frozen && at < to; index = axis.Next(index, 1)) add(index);
  for (int index = axis.Next(std::max(first, frozen + 1) - 1, 1); index != 0 && at < to; index = axis.Next(index, 1)) {
    add(index);
  }
  return spans;
}

std::pair<std::size_t, std::size_t> SpansWithin(const std::vector<GridSpan>& spans, int first, int last) {
  const auto begin =
      std::partition_point(spans.begin(), spans.end(), [&](const GridSpan& s) { return s.index < first; });
  const auto end = std::partition_point(begin, spans.end(), [&](const GridSpan& s) { return s.index <= last; });
  return {static_cast<std::size_t>(begin - spans.begin()), static_cast<std::size_t>(end - spans.begin())};
}

}  // namespace tellurix
