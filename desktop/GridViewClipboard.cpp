// Cells to and from the clipboard.

#include <QApplication>
#include <QClipboard>
#include <QMimeData>
#include <algorithm>
#include <iterator>
#include <utility>

#include "desktop/GridRanges.h"
#include "desktop/GridView.h"
#include "desktop/QtText.h"

namespace tellurix {

namespace {

// What this program itself put on the clipboard: texts are quoted there, so that "007" comes back as a text.
constexpr const char* OwnFormat = "application/x-tellurix-cells";

constexpr qint64 LookedAtCells = 1'000'000;  // copied at once with their looks
constexpr std::size_t MostLooks = 20'000;    // pasted at once

using LookedAt = std::vector<std::pair<CellRange, CellLook>>;

// What this program has copied, as it finds it again as long as the clipboard is its own.
class CopiedCells : public QMimeData {
 public:
  const Workbook* workbook = nullptr;
  std::vector<CellRange> block;
  bool wereCut = false;  // formulas move: their references stay
  QString values;        // with the formulas' results
  // In the block, counted from 1; empty: not known.
  LookedAt looks;
};

// The looks of one column of the range, as runs of rows; counted from 1 in the range.
LookedAt LooksDown(const Workbook& workbook, const CellRange& range, int column) {
  LookedAt looks;
  const int across = column - range.firstColumn + 1;
  for (int row = range.firstRow; row <= range.lastRow; ++row) {
    const int down = row - range.firstRow + 1;
    CellLook look = workbook.LookAt(row, column);
    if (!looks.empty() && looks.back().second == look) {
      looks.back().first.lastRow = down;
    } else {
      looks.push_back({{down, across, down, across}, std::move(look)});
    }
  }
  return looks;
}

// The looks of a single range, as rectangles.
LookedAt LooksIn(const Workbook& workbook, const CellRange& range) {
  const auto isAlike = [](const auto& left, const auto& right) {
    return left.first.firstRow == right.first.firstRow && left.first.lastRow == right.first.lastRow &&
           left.second == right.second;
  };
  LookedAt looks;
  std::size_t before = 0;  // those of the column to the left start there
  for (int column = range.firstColumn; column <= range.lastColumn; ++column) {
    LookedAt next = LooksDown(workbook, range, column);
    const auto left = looks.begin() + static_cast<std::ptrdiff_t>(before);
    if (std::equal(left, looks.end(), next.begin(), next.end(), isAlike)) {
      // A column like the one to its left makes that one wider.
      for (auto look = left; look != looks.end(); ++look) ++look->first.lastColumn;
    } else {
      before = looks.size();
      std::ranges::move(next, std::back_inserter(looks));
    }
  }
  return looks;
}

LookChange AllOf(const CellLook& look) {
  return {look.number,    look.fontName,   look.fontSize,   look.bold,     look.italic,
          look.underline, look.textColour, look.fillColour, look.alignment};
}

void PasteLooks(Workbook& workbook, const CopiedCells& copied, const CellRange& to) {
  const CellRange& from = copied.block.front();
  const int rows = from.lastRow - from.firstRow + 1;
  const int columns = from.lastColumn - from.firstColumn + 1;
  if (copied.looks.size() == 1) {
    workbook.SetLook(to, AllOf(copied.looks[0].second));
    return;
  }
  const auto repeats = static_cast<std::size_t>((to.lastRow - to.firstRow + 1) / rows) *
                       static_cast<std::size_t>((to.lastColumn - to.firstColumn + 1) / columns);
  if (copied.looks.size() * repeats > MostLooks) return;
  for (int row = to.firstRow - 1; row < to.lastRow; row += rows) {
    for (int column = to.firstColumn - 1; column < to.lastColumn; column += columns) {
      for (const auto& [part, look] : copied.looks) {
        workbook.SetLook({row + part.firstRow, column + part.firstColumn, row + part.lastRow, column + part.lastColumn},
                         AllOf(look));
      }
    }
  }
}

}  // namespace

bool GridView::Copy() {
  if (!CommitEdit()) return false;
  const std::vector<CellRange> block = BlockOf(workbook_);
  if (block.empty()) return Refuse(tr("Ranges that are copied together must have the same rows or the same columns."));
  qint64 cells = 0;
  for (const CellRange& range : block) cells += CellCount(range);
  if (cells > MaxCopiedCells) return Refuse(tr("The marked range is too large to copy."));
  auto* copied = new CopiedCells;
  copied->setText(FromUtf8(BlockText(workbook_, block, regional_, false)));
  copied->workbook = &workbook_;
  copied->block = block;
  if (cells <= MaxOwnCells) {
    copied->setData(OwnFormat, QByteArray::fromStdString(BlockText(workbook_, block, regional_, true, true)));
    copied->values = FromUtf8(BlockText(workbook_, block, regional_, true));
  }
  if (cells <= LookedAtCells && block.size() == 1) copied->looks = LooksIn(workbook_, block[0]);
  if (cells <= MaxHtmlCells) copied->setHtml(FromUtf8(BlockHtml(workbook_, block, regional_)));
  QApplication::clipboard()->setMimeData(copied);
  return true;
}

bool GridView::Cut() {
  if (!ReadyToChange() || !Copy()) return false;
  if (const auto* held = dynamic_cast<const CopiedCells*>(QApplication::clipboard()->mimeData())) {
    const_cast<CopiedCells*>(held)->wereCut = true;
  }
  const GridStep step(workbook_, "Cut");
  for (const CellRange& range : MarkedRanges()) workbook_.ClearRange(range);
  return true;
}

bool GridView::Paste() {
  const QMimeData* held = QApplication::clipboard()->mimeData();
  if (!held) return false;
  if (!held->hasFormat(OwnFormat)) return held->hasText() && PasteText(held->text());
  const QString text = QString::fromUtf8(held->data(OwnFormat));
  const auto* own = dynamic_cast<const CopiedCells*>(held);
  if (!own || own->workbook != &workbook_) return PasteText(text, true);
  const BlockSource source(own->block);
  const GridStep step(workbook_, "Paste");
  std::vector<CellRange> pasted;
  if (!PasteFrom(text, {.quotedAreTexts = true, .source = own->wereCut ? nullptr : &source}, &pasted)) return false;
  if (!own->looks.empty()) {
    for (const CellRange& range : pasted) PasteLooks(workbook_, *own, range);
  }
  return true;
}

bool GridView::PasteSpecial(bool valuesOnly, bool transposed) {
  const QMimeData* held = QApplication::clipboard()->mimeData();
  if (!held || !(held->hasFormat(OwnFormat) || held->hasText())) {
    return Refuse(tr("There are no cells and no text on the clipboard."));
  }
  const auto* own = dynamic_cast<const CopiedCells*>(held);
  const bool isOurs = held->hasFormat(OwnFormat);
  QString text = isOurs ? QString::fromUtf8(held->data(OwnFormat)) : held->text();
  if (valuesOnly && own && !own->values.isEmpty()) text = own->values;
  const BlockSource source(own ? own->block : std::vector<CellRange>{{1, 1, 1, 1}});
  const bool moves = own && own->workbook == &workbook_ && !own->wereCut;
  return PasteFrom(text, {.quotedAreTexts = isOurs,
                          .formulas = !valuesOnly,
                          .transposed = transposed,
                          .source = moves ? &source : nullptr});
}

bool GridView::PasteText(const QString& text, bool quotedAreTexts) {
  return PasteFrom(text, {.quotedAreTexts = quotedAreTexts});
}

// Where a block goes: each marked range is filled all over by one value or by whole repeats of the block, else the
// block stands from its first cell on. Nothing, and that is told, where it does not fit.
std::optional<std::vector<CellRange>> GridView::PasteTargets(qint64 rows, qint64 columns) {
  const bool isOne = rows == 1 && columns == 1;
  std::vector<CellRange> targets;
  for (const CellRange& range : MarkedRanges()) {
    const qint64 height = range.lastRow - range.firstRow + 1;
    const qint64 width = range.lastColumn - range.firstColumn + 1;
    const bool whole = IsWholeColumns(range) || IsWholeRows(range);
    if (isOne || (!whole && height % rows == 0 && width % columns == 0)) {
      targets.push_back(range);
      continue;
    }
    const qint64 lastRow = range.firstRow + rows - 1;
    const qint64 lastColumn = range.firstColumn + columns - 1;
    if (lastRow > GridStore::MaxRows || lastColumn > GridStore::MaxColumns) {
      Refuse(tr("The clipboard holds %1 rows and %2 columns, which do not fit the sheet from %3 on.")
                 .arg(rows)
                 .arg(columns)
                 .arg(FromUtf8(RangeText({range.firstRow, range.firstColumn, range.firstRow, range.firstColumn}))));
      return std::nullopt;
    }
    targets.push_back({range.firstRow, range.firstColumn, static_cast<int>(lastRow), static_cast<int>(lastColumn)});
  }
  qint64 cells = 0;
  for (const CellRange& range : targets) cells += CellCount(range);
  if (cells > MaxBlockCells) {
    Refuse(tr("The marked range is too large to be filled."));
    return std::nullopt;
  }
  return targets;
}

bool GridView::PasteFrom(const QString& text, const PasteRules& rules, std::vector<CellRange>* pasted) {
  if (!ReadyToChange()) return false;
  const TextBlock block(text.contains(QChar(0)) ? QString(text).remove(QChar(0)).toStdString() : text.toStdString());
  if (block.Rows() == 0) return false;
  if (block.LongestField() > 32767) return Refuse(tr("A cell holds at most 32767 characters."));
  const auto targets =
      rules.transposed ? PasteTargets(block.Columns(), block.Rows()) : PasteTargets(block.Rows(), block.Columns());
  if (!targets) return false;
  {
    const GridStep step(workbook_, "Paste");
    for (const CellRange& range : *targets) PasteBlock(workbook_, block, range, regional_, rules);
  }
  if (pasted) *pasted = *targets;
  if (targets->size() == 1 && targets->front() != LastRange()) Select(targets->front());
  return true;
}

}  // namespace tellurix
