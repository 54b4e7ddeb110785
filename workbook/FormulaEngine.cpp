#include "workbook/FormulaEngine.h"

#include <algorithm>

namespace tellurix {

void RowIntervals::Add(int firstRow, int lastRow, std::uint32_t number) {
  const auto add = [&](std::uint32_t level, std::uint32_t index) {
    blocks_[level << LevelShift | index].push_back(number);
    ++inLevel_[level];
  };
  auto first = static_cast<std::uint32_t>(firstRow - 1);
  auto end = static_cast<std::uint32_t>(lastRow);
  for (std::uint32_t level = 0; first < end; ++level, first >>= 1, end >>= 1) {
    if (first & 1) add(level, first++);
    if (end & 1) add(level, --end);
  }
}

FormulaEngine::SheetIndex& FormulaEngine::IndexOf(int sheet) {
  const auto index = static_cast<std::size_t>(sheet);
  if (index >= sheets_.size()) sheets_.resize(index + 1);
  return sheets_[index];
}

void FormulaEngine::AddToIndex(std::uint32_t id) {
  const Node& node = nodes_[id];
  for (const auto& ref : node.formula->code.References()) {
    if (ref.sheetIndex < 0) continue;
    SheetIndex& index = IndexOf(ref.sheetIndex);
    const CellRange& range = ref.range;
    if (range.lastColumn - range.firstColumn >= WidestByColumn) {
      index.wide.Add(range.firstRow, range.lastRow, id);
    } else {
      for (int column = range.firstColumn; column <= range.lastColumn; ++column) {
        index.columns[column].Add(range.firstRow, range.lastRow, id);
      }
    }
  }
}

void FormulaEngine::Register(const FormulaRef& formula, int sheet, int column, int row) {
  const auto id = static_cast<std::uint32_t>(nodes_.size());
  nodes_.push_back({formula, sheet, column, row});
  formula->node = id;
  formula->code.Resolve(cells_, sheet);
  AddToIndex(id);
  IndexOf(sheet).nodes[column][row] = id;
  if (formula->stale) MarkDirty(id);
}

// The entries of the intervals stay until there are many dead ones.
void FormulaEngine::Unregister(std::uint32_t id) {
  Node& node = nodes_[id];
  if (node.formula->node == id) {
    node.formula->node = None;
    node.formula->stale = true;
  }
  node.formula = nullptr;
  node.isAlive = false;
  ++dead_;
}

void FormulaEngine::RefreshCell(int sheet, int column, int row) {
  const CellColumn* cells = cells_.Column(sheet, column);
  const auto run = cells ? cells->RunAt(row) : CellColumn::Run{};
  const Formula* present = run.formulas ? run.formulas->get() : nullptr;
  auto& columns = IndexOf(sheet).nodes;
  if (const auto of = columns.find(column); of != columns.end()) {
    if (const auto found = of->second.find(row); found != of->second.end()) {
      if (nodes_[found->second].formula.get() == present) {
        if (present && present->stale) MarkDirty(found->second);
        return;
      }
      Unregister(found->second);
      of->second.erase(found);
    }
  }
  if (present) Register(*run.formulas, sheet, column, row);
}

void FormulaEngine::RefreshColumn(int sheet, int column) {
  const CellColumn* cells = cells_.Column(sheet, column);
  auto& columns = IndexOf(sheet).nodes;
  if (const auto of = columns.find(column); of != columns.end()) {
    for (auto entry = of->second.begin(); entry != of->second.end();) {
      const Formula* present = cells ? cells->FormulaAt(entry->first) : nullptr;
      if (present == nodes_[entry->second].formula.get()) {
        ++entry;
      } else {
        Unregister(entry->second);
        entry = of->second.erase(entry);
      }
    }
  }
  if (!cells) return;
  cells->EachFormula(1, GridStore::MaxRows, [&](int row, const FormulaRef& formula) {
    auto& nodes = IndexOf(sheet).nodes[column];
    if (nodes.find(row) == nodes.end()) Register(formula, sheet, column, row);
  });
}

void FormulaEngine::Rebuild(bool namesMayDiffer) {
  std::vector<FormulaRef> before;
  for (const Node& node : nodes_) {
    if (node.isAlive && node.formula->node != None) before.push_back(node.formula);
  }
  for (const auto& formula : before) formula->node = None;
  nodes_.clear();
  sheets_.clear();
  dirty_.clear();
  dead_ = 0;
  for (int sheet = 0; sheet < cells_.SheetCount(); ++sheet) {
    for (int column = 1; column <= cells_.LastColumn(sheet); ++column) {
      const CellColumn* cells = cells_.Column(sheet, column);
      if (!cells) continue;
      cells->EachFormula(1, GridStore::MaxRows, [&](int row, const FormulaRef& formula) {
        if (namesMayDiffer && formula->code.NamesSheets()) formula->stale = true;
        Register(formula, sheet, column, row);
      });
    }
  }
  for (const auto& formula : before) {
    if (formula->node == None) formula->stale = true;
  }
}

void FormulaEngine::CompactIfWorthIt() {
  if (dead_ <= nodes_.size() / 2 + 1024) return;
  std::erase_if(nodes_, [](const Node& node) { return !node.isAlive; });
  dead_ = 0;
  for (auto& sheet : sheets_) {
    sheet.columns.clear();
    sheet.wide = {};
  }
  for (std::size_t i = 0; i < nodes_.size(); ++i) {
    const Node& node = nodes_[i];
    const auto id = static_cast<std::uint32_t>(i);
    node.formula->node = id;
    IndexOf(node.sheet).nodes[node.column][node.row] = id;
    AddToIndex(id);
  }
  dirty_.clear();
  for (std::size_t i = 0; i < nodes_.size(); ++i) {
    if (nodes_[i].isDirty) dirty_.push_back(static_cast<std::uint32_t>(i));
  }
}

void FormulaEngine::MarkDirty(std::uint32_t id) {
  Node& node = nodes_[id];
  if (node.isDirty || !node.isAlive) return;
  node.isDirty = true;
  dirty_.push_back(id);
}

void FormulaEngine::MarkReaders(int sheet, const CellRange& range) {
  if (static_cast<std::size_t>(sheet) >= sheets_.size()) return;
  const SheetIndex& index = sheets_[static_cast<std::size_t>(sheet)];
  const auto mark = [&](std::uint32_t id) { MarkDirty(id); };
  if (range.firstColumn == range.lastColumn) {
    const auto found = index.columns.find(range.firstColumn);
    if (found != index.columns.end()) found->second.Find(range.firstRow, range.lastRow, mark);
  } else {
    for (const auto& [column, intervals] : index.columns) {
      if (column >= range.firstColumn && column <= range.lastColumn) {
        intervals.Find(range.firstRow, range.lastRow, mark);
      }
    }
  }
  index.wide.Find(range.firstRow, range.lastRow, [&](std::uint32_t id) {
    const Node& node = nodes_[id];
    if (!node.isAlive || node.isDirty) return;
    for (const auto& ref : node.formula->code.References()) {
      if (ref.sheetIndex == sheet && ref.range.firstColumn <= range.lastColumn &&
          ref.range.lastColumn >= range.firstColumn) {
        return MarkDirty(id);
      }
    }
  });
}

void FormulaEngine::Changed(int sheet, const CellRange& range) {
  MarkReaders(sheet, {std::max(range.firstRow, 1), std::max(range.firstColumn, 1),
                      std::min(range.lastRow, GridStore::MaxRows), std::min(range.lastColumn, GridStore::MaxColumns)});
}

// The next dirty formula that the frame's one refers to, or None.
std::uint32_t FormulaEngine::NextUnfinished(Frame& frame) const {
  const auto& references = nodes_[frame.node].formula->code.References();
  for (; frame.reference < references.size(); ++frame.reference, frame.column = 0) {
    const auto& ref = references[frame.reference];
    if (ref.sheetIndex < 0) continue;
    if (frame.column == 0) {
      frame.column = ref.range.firstColumn;
      frame.row = ref.range.firstRow;
    }
    const int lastColumn = std::min(ref.range.lastColumn, cells_.LastColumn(ref.sheetIndex));
    for (; frame.column <= lastColumn; ++frame.column, frame.row = ref.range.firstRow) {
      const CellColumn* cells = cells_.Column(ref.sheetIndex, frame.column);
      if (!cells) continue;
      const int lastRow = std::min(ref.range.lastRow, cells->LastRow());
      while (frame.row <= lastRow) {
        const auto run = cells->RunAt(frame.row);
        const int end = std::min(run.lastRow, lastRow);
        if (run.formulas) {
          for (const FormulaRef* formula = run.formulas; frame.row <= end; ++formula) {
            ++frame.row;
            const std::uint32_t id = (*formula)->node;
            if (id != None && nodes_[id].isDirty) return id;
          }
        }
        frame.row = end + 1;
      }
    }
  }
  return None;
}

// Whether the result is another one than before.
bool FormulaEngine::Compute(const Node& node) const {
  const Formula& formula = *node.formula;
  FormulaResult result = formula.code.Evaluate(cells_);
  const bool isSame = result.type == formula.type && result.number == formula.number &&
                      result.isError == formula.isError && result.text == formula.result;
  formula.Take(std::move(result));
  return !isSame;
}

void FormulaEngine::Order(const std::function<void(const Node&)>& told) {
  std::vector<Frame> frames;
  std::vector<std::uint32_t> path;
  std::uint32_t count = 0;
  const auto enter = [&](std::uint32_t id) {
    Node& node = nodes_[id];
    node.number = node.low = ++count;
    node.isOnPath = true;
    node.readsItself = false;
    path.push_back(id);
    frames.push_back({id});
  };
  for (const std::uint32_t start : dirty_) {
    if (!nodes_[start].isDirty || !nodes_[start].isAlive) continue;
    enter(start);
    while (!frames.empty()) {
      const std::uint32_t id = frames.back().node;
      Node& node = nodes_[id];
      const std::uint32_t next = NextUnfinished(frames.back());
      if (next == id) {
        node.readsItself = true;
      } else if (next != None) {
        if (nodes_[next].isOnPath) {
          node.low = std::min(node.low, nodes_[next].number);
        } else {
          enter(next);
        }
      } else {
        frames.pop_back();
        if (!frames.empty()) {
          Node& reader = nodes_[frames.back().node];
          reader.low = std::min(reader.low, node.low);
        }
        if (node.low != node.number) continue;
        // All from this one on in the path are a circle, or it stands alone; all that they refer to is done.
        const bool isCircle = path.back() != id || node.readsItself;
        for (bool more = true; more;) {
          Node& done = nodes_[path.back()];
          more = path.back() != id;
          path.pop_back();
          done.isOnPath = false;
          done.isDirty = false;
          if (isCircle) {
            const FormulaResult circle = FormulaResult::Error(FormulaError::Circle);
            const bool isSame = done.formula->isError && done.formula->result == circle.text;
            done.formula->Take(circle);
            if (!isSame) told(done);
          } else if (Compute(done)) {
            told(done);
          }
        }
      }
    }
  }
}

void FormulaEngine::Recalculate(const std::function<void(int sheet, int row, int column)>& told) {
  CompactIfWorthIt();
  for (std::size_t i = 0; i < dirty_.size(); ++i) {
    const Node& node = nodes_[dirty_[i]];
    if (node.isAlive) MarkReaders(node.sheet, {node.row, node.column, node.row, node.column});
  }
  Order([&](const Node& node) { told(node.sheet, node.row, node.column); });
  dirty_.clear();
}

}  // namespace tellurix
