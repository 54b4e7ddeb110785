#include "workbook/CellColumn.h"

#include <algorithm>

namespace tellurix {

namespace mtv = mdds::mtv;

namespace {

std::size_t Unsigned(int value) { return static_cast<std::size_t>(value); }

}  // namespace

std::size_t CellColumn::Segment::Bytes() const {
  std::size_t bytes = sizeof(Segment);
  for (auto block = cells.begin(); block != cells.end(); ++block) {
    bytes += 64;  // the block's own entries and headers
    switch (block->type) {
      case mtv::element_type_double:
        bytes += NumberBlock::capacity(*block->data) * sizeof(double);
        break;
      case mtv::element_type_uint8:
        bytes += LogicalBlock::capacity(*block->data);
        break;
      case TextElement:
        bytes += TextBlock::capacity(*block->data) * sizeof(TextRef);
        break;
      case FormulaElement:
        bytes += FormulaBlock::capacity(*block->data) * (sizeof(FormulaRef) + sizeof(Formula));
        break;
      default:
        break;
    }
  }
  return bytes;
}

void CellColumn::MoveCursor(int offset) const {
  const std::size_t segment = Unsigned(offset) / SegmentRows;
  const int start = static_cast<int>(segment) * SegmentRows;
  if (segment >= segments_.size() || !segments_[segment]) {
    cursor_ = {start, SegmentRows, mtv::element_type_empty, nullptr};
    return;
  }
  const auto block = segments_[segment]->cells.position(Unsigned(offset - start)).first;
  void* data = nullptr;
  switch (block->type) {
    case mtv::element_type_double:
      data = NumberBlock::data(*block->data);
      break;
    case mtv::element_type_uint8:
      data = LogicalBlock::data(*block->data);
      break;
    case TextElement:
      data = TextBlock::data(*block->data);
      break;
    case FormulaElement:
      data = FormulaBlock::data(*block->data);
      break;
    default:
      break;
  }
  cursor_ = {start + static_cast<int>(block->position), static_cast<int>(block->size), block->type, data};
}

CellView CellColumn::View(int row) const {
  const Cursor& at = Seek(row);
  switch (at.kind) {
    case mtv::element_type_double:
      return {NumberCell, At<double>(at, row), {}};
    case TextElement:
      return {TextCell, 0, At<TextRef>(at, row).View()};
    case mtv::element_type_uint8:
      return {LogicalCell, At<std::uint8_t>(at, row) ? -1.0 : 0.0, {}};
    case FormulaElement: {
      const Formula& formula = *At<FormulaRef>(at, row);
      return {-formula.type, formula.number, formula.result};
    }
    default:
      return {};
  }
}

CellValue CellColumn::Get(int row) const {
  const Cursor& at = Seek(row);
  CellValue value;
  value.type = TypeOf(at.kind);
  switch (at.kind) {
    case mtv::element_type_double:
      value.number = At<double>(at, row);
      break;
    case TextElement:
      value.text = At<TextRef>(at, row);
      break;
    case mtv::element_type_uint8:
      value.number = At<std::uint8_t>(at, row);
      break;
    case FormulaElement:
      value.formula = At<FormulaRef>(at, row);
      break;
    default:
      break;
  }
  return value;
}

const Formula* CellColumn::FormulaAt(int row) const {
  const Cursor& at = Seek(row);
  return at.kind == FormulaElement ? At<FormulaRef>(at, row).get() : nullptr;
}

int CellColumn::LastRow() const {
  if (segments_.empty()) return 0;
  // Neighbouring blocks differ in type, so only the last one can be empty.
  const auto last = std::prev(segments_.back()->cells.end());
  const std::size_t used = last->type == mtv::element_type_empty ? last->position : last->position + last->size;
  return static_cast<int>((segments_.size() - 1) * SegmentRows + used);
}

bool CellColumn::IsEmpty(int firstRow, int lastRow) const {
  lastRow = std::min(lastRow, LastRow());
  while (firstRow <= lastRow) {
    const Cursor& at = Seek(firstRow);
    if (at.kind != mtv::element_type_empty) return false;
    firstRow = at.first + at.count + 1;
  }
  return true;
}

void CellColumn::Set(int row, const CellValue& value) {
  if (value.formula) {
    Set(row, value.formula);
  } else if (value.type == NumberCell) {
    Set(row, value.number);
  } else if (value.type == TextCell) {
    Set(row, value.text);
  } else if (value.type == LogicalCell) {
    Set(row, value.number != 0);
  } else {
    Clear(row, row);
  }
}

template <typename T>
void CellColumn::PutElsewhere(int row, const T& value) {
  cursor_.count = 0;
  Own(Unsigned(row - 1) / SegmentRows).cells.set(Unsigned(row - 1) % SegmentRows, value);
}

template void CellColumn::PutElsewhere(int, const double&);
template void CellColumn::PutElsewhere(int, const std::uint8_t&);
template void CellColumn::PutElsewhere(int, const TextRef&);
template void CellColumn::PutElsewhere(int, const FormulaRef&);

template <typename T>
void CellColumn::PutRun(int row, std::span<const T> values) {
  cursor_.count = 0;
  for (std::size_t offset = Unsigned(row - 1); !values.empty();) {
    const std::size_t within = offset % SegmentRows;
    const std::size_t count = std::min(values.size(), SegmentRows - within);
    const std::size_t segment = offset / SegmentRows;
    if (count == SegmentRows && segment < segments_.size()) ClearPart(segment, 0, SegmentRows);  // rather than cloned
    Own(segment).cells.set(within, values.begin(), values.begin() + static_cast<std::ptrdiff_t>(count));
    values = values.subspan(count);
    offset += count;
  }
}

void CellColumn::Set(int row, std::span<const double> values) { PutRun(row, values); }
void CellColumn::Set(int row, std::span<const TextRef> texts) { PutRun(row, texts); }

void CellColumn::Clear(int firstRow, int lastRow) {
  cursor_.count = 0;
  lastRow = std::min(lastRow, static_cast<int>(segments_.size()) * SegmentRows);
  for (int offset = firstRow - 1; offset < lastRow;) {
    const int within = offset % SegmentRows;
    const int count = std::min(lastRow - offset, SegmentRows - within);
    ClearPart(Unsigned(offset) / SegmentRows, within, count);
    offset += count;
  }
  Trim();
}

void CellColumn::CopyCells(const CellColumn& source, int from, int count, int to) {
  cursor_.count = 0;
  for (--from, --to; count > 0;) {
    const int fromWithin = from % SegmentRows;
    const int toWithin = to % SegmentRows;
    const int part = std::min({count, SegmentRows - fromWithin, SegmentRows - toWithin});
    const std::size_t fromSegment = Unsigned(from) / SegmentRows;
    const std::size_t toSegment = Unsigned(to) / SegmentRows;
    if (fromSegment >= source.segments_.size() || !source.segments_[fromSegment]) {
      if (toSegment < segments_.size()) ClearPart(toSegment, toWithin, part);
    } else if (part == SegmentRows) {
      if (toSegment >= segments_.size()) segments_.resize(toSegment + 1);
      segments_[toSegment] = source.segments_[fromSegment];
    } else {
      CopyPart(*source.segments_[fromSegment], fromWithin, toSegment, toWithin, part);
    }
    from += part;
    to += part;
    count -= part;
  }
  Trim();
}

std::size_t CellColumn::OwnBytes() const {
  std::size_t bytes = sizeof(CellColumn) + segments_.capacity() * sizeof(segments_[0]);
  for (const auto& segment : segments_) {
    if (segment && segment.use_count() == 1) bytes += segment->Bytes();
  }
  return bytes;
}

CellColumn::Segment& CellColumn::Own(std::size_t segment) {
  if (segment >= segments_.size()) segments_.resize(segment + 1);
  auto& held = segments_[segment];
  if (!held) {
    held = std::make_shared<Segment>();
  } else if (held.use_count() > 1) {
    detachedBytes_ += held->Bytes();
    held = std::make_shared<Segment>(*held);
  }
  return *held;
}

void CellColumn::ClearPart(std::size_t segment, int first, int count) {
  auto& held = segments_[segment];
  if (!held) return;
  if (count < SegmentRows) {
    Segment& own = Own(segment);
    own.cells.set_empty(Unsigned(first), Unsigned(first + count - 1));
    if (!own.IsEmpty()) return;
  } else if (held.use_count() > 1) {
    detachedBytes_ += held->Bytes();
  }
  held.reset();
}

void CellColumn::CopyPart(const Segment& source, int from, std::size_t segment, int to, int count) {
  Segment& own = Own(segment);
  const auto start = source.cells.position(Unsigned(from));
  auto block = start.first;
  std::size_t within = start.second;
  std::size_t at = Unsigned(to);
  for (std::size_t left = Unsigned(count); left > 0; ++block, within = 0) {
    const std::size_t part = std::min(left, block->size - within);
    const auto copy = [&]<typename Block>(const Block*) {
      const auto first = Block::cbegin(*block->data) + static_cast<std::ptrdiff_t>(within);
      own.cells.set(at, first, first + static_cast<std::ptrdiff_t>(part));
    };
    switch (block->type) {
      case mtv::element_type_double:
        copy(static_cast<const NumberBlock*>(nullptr));
        break;
      case mtv::element_type_uint8:
        copy(static_cast<const LogicalBlock*>(nullptr));
        break;
      case TextElement:
        copy(static_cast<const TextBlock*>(nullptr));
        break;
      case FormulaElement:
        copy(static_cast<const FormulaBlock*>(nullptr));
        break;
      default:
        own.cells.set_empty(at, at + part - 1);
        break;
    }
    at += part;
    left -= part;
  }
  if (own.IsEmpty()) segments_[segment].reset();
}

void CellColumn::Trim() {
  while (!segments_.empty() && !segments_.back()) segments_.pop_back();
}

}  // namespace tellurix
