// Cells as texts that are typed, copied and pasted.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "numeric/Regional.h"
#include "workbook/Workbook.h"

namespace tellurix {

// What happens while it lives is one undo step.
class GridStep {
 public:
  GridStep(Workbook& workbook, std::string_view caption) : workbook_(workbook) { workbook_.BeginStep(caption); }
  ~GridStep() { workbook_.EndStep(); }
  GridStep(const GridStep&) = delete;
  GridStep& operator=(const GridStep&) = delete;

 private:
  Workbook& workbook_;
};

// Puts a typed text into a cell by Workbook::Enter; a number's own text leaves it as it is, to the last bit. False,
// with the reason, when the cell does not take it.
bool CommitText(Workbook& workbook, int row, int column, std::string_view text, const Regional& regional,
                std::string& reason);

// A cell as it is edited: a number by TypedText, a formula as it was written, a text that would become something else
// if it were typed behind an apostrophe.
std::string EditableText(const Workbook& workbook, int row, int column, const Regional& regional);

// The same of what a cell holds or has come to, its text as it stands.
std::string PlainText(const Workbook& workbook, int row, int column, const Regional& regional);

// Why cells cannot be changed: their sheet is locked.
std::string LockedText(const Workbook& workbook);

// --- blocks of cells as text ---

// Several ranges as one block: side by side when they have the same rows, one below the other when they have the same
// columns. Whole rows and columns end with the used part of the sheet. Empty when they make no block.
std::vector<CellRange> BlockOf(const Workbook& workbook);

// Tab-separated lines, each ended by a line feed; fields that hold a tab, a line break or a quote at their start are
// quoted, with `quoteTexts` every text cell is, and every number reads back exactly. `formulas`: a formula as it was
// written, never quoted; one that holds a tab or a line break goes by its result.
std::string BlockText(const Workbook& workbook, std::span<const CellRange> block, const Regional& regional,
                      bool quoteTexts, bool formulas = false);
std::string BlockHtml(const Workbook& workbook, std::span<const CellRange> block, const Regional& regional);

// Tab-separated text taken apart. A field in quotes runs to its closing quote, which a tab, a line end or the end of
// the text must follow; otherwise the quotes are part of it. Lines end in CR LF, LF or CR; one at the end opens no new
// line.
class TextBlock final {
 public:
  explicit TextBlock(std::string text);
  TextBlock(const TextBlock&) = delete;
  TextBlock& operator=(const TextBlock&) = delete;

  struct Field {
    std::string_view text;
    bool quoted = false;
  };
  int Rows() const { return static_cast<int>(lines_.size()); }
  int Columns() const { return columns_; }
  Field At(int row, int column) const;  // 0-based; empty beyond the end of a short line
  std::size_t LongestField() const { return longest_; }

 private:
  std::string text_;
  std::vector<Field> fields_;
  std::vector<std::size_t> lines_;  // the first field of each
  int columns_ = 0;
  std::size_t longest_ = 0;
};

// Where the fields of a block came from. Formulas that are pasted elsewhere are copies: their references without $ move
// with them.
class BlockSource final {
 public:
  explicit BlockSource(std::span<const CellRange> block);
  int RowOf(int row) const { return At(rows_, row); }  // of a line, 0-based
  int ColumnOf(int column) const { return At(columns_, column); }

 private:
  using Parts = std::vector<std::pair<int, int>>;  // first and last
  static int At(const Parts& parts, int index);
  Parts rows_;
  Parts columns_;
};

struct PasteRules {
  bool quotedAreTexts = false;          // quoted fields are texts whatever they look like
  bool formulas = true;                 // what begins with "=" is a formula, else a text
  bool transposed = false;              // lines of the block go down the columns
  const BlockSource* source = nullptr;  // null: formulas go as they read
};

// Writes a block over the cells of a range that fits the sheet, again and again when the range is a multiple of it, as
// one step. Cells with the number format Text take what is not `quotedAreTexts` as texts.
void PasteBlock(Workbook& workbook, const TextBlock& block, const CellRange& to, const Regional& regional,
                const PasteRules& rules);

// --- find and replace ---

struct FindOptions {
  bool matchCase = false;
  bool wholeCell = false;
  bool byColumns = false;  // else along the rows
  bool backwards = false;
};

// The nearest cell after the given one, round the end of the sheet back to it, whose text, as displayed in the region,
// holds the text.
bool FindNext(const Workbook& workbook, std::string_view text, const FindOptions& options, const Regional& regional,
              int& row, int& column);

// Replaces in every cell that is no formula, as one step, and answers in how many. The texts that come of it are
// entered as if typed.
int ReplaceAll(Workbook& workbook, std::string_view text, std::string_view by, const FindOptions& options,
               const Regional& regional);
// The same in one cell.
bool ReplaceOne(Workbook& workbook, int row, int column, std::string_view text, std::string_view by,
                const FindOptions& options, const Regional& regional);

}  // namespace tellurix
