#include "desktop/GridEditing.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <utility>

#include "numeric/Text.h"
#include "workbook/TypedText.h"

namespace tellurix {

namespace {

constexpr std::size_t LongestText = 32767;

bool IsFormula(std::string_view text) { return text.size() > 1 && text[0] == '='; }

}  // namespace

std::string LockedText(const Workbook& workbook) {
  return fmt::format("The sheet {} is locked. Lock Sheet in the Format menu unlocks it.",
                     workbook.SheetName(workbook.Sheet()));
}

bool CommitText(Workbook& workbook, int row, int column, std::string_view text, const Regional& regional,
                std::string& reason) {
  if (workbook.SheetLocked()) {
    reason = LockedText(workbook);
    return false;
  }
  if (CharacterCount(text) > LongestText) {
    reason = fmt::format("A cell holds at most {} characters.", LongestText);
    return false;
  }
  const bool isUnchanged =
      workbook.TypeRC(row, column) == NumberCell && text == PlainText(workbook, row, column, regional);
  if (!isUnchanged) workbook.Enter(row, column, text, regional);
  return true;
}

std::string PlainText(const Workbook& workbook, int row, int column, const Regional& regional) {
  const CellView cell = workbook.ReadRC(row, column);
  switch (std::abs(cell.type)) {
    case NumberCell:
      return TypedText(cell.number, workbook.NumberFormatAt(row, column), regional);
    case LogicalCell:
      return cell.number != 0 ? "TRUE" : "FALSE";
    case TextCell:
      return std::string(cell.text);
    default:
      return {};
  }
}

std::string EditableText(const Workbook& workbook, int row, int column, const Regional& regional) {
  const CellView cell = workbook.ReadRC(row, column);
  if (cell.type < 0) return workbook.FormulaText(row, column);
  std::string text = PlainText(workbook, row, column, regional);
  if (cell.type != TextCell || workbook.NumberFormatAt(row, column).form == NumberFormat::Form::Text) return text;
  const bool staysText = !IsFormula(text) && !text.starts_with('\'') && ReadTyped(text, regional).type == TextCell;
  return staysText ? text : "'" + text;
}

// --- blocks ---

std::vector<CellRange> BlockOf(const Workbook& workbook) {
  std::vector<CellRange> block;
  const int lastRow = workbook.LastRow();
  const int lastColumn = workbook.LastCol();
  for (int i = 0; i < workbook.SelectionCount(); ++i) {
    CellRange range = workbook.GetSelection(i);
    if (range.lastRow == GridStore::MaxRows) range.lastRow = std::max(range.firstRow, lastRow);
    if (range.lastColumn == GridStore::MaxColumns) range.lastColumn = std::max(range.firstColumn, lastColumn);
    block.push_back(range);
  }
  const CellRange& first = block.front();
  const bool sameRows = std::all_of(block.begin(), block.end(), [&](const CellRange& range) {
    return range.firstRow == first.firstRow && range.lastRow == first.lastRow;
  });
  const bool sameColumns = std::all_of(block.begin(), block.end(), [&](const CellRange& range) {
    return range.firstColumn == first.firstColumn && range.lastColumn == first.lastColumn;
  });
  if (sameRows) {
    std::stable_sort(block.begin(), block.end(),
                     [](const CellRange& a, const CellRange& b) { return a.firstColumn < b.firstColumn; });
  } else if (sameColumns) {
    std::stable_sort(block.begin(), block.end(),
                     [](const CellRange& a, const CellRange& b) { return a.firstRow < b.firstRow; });
  } else {
    block.clear();
  }
  return block;
}

namespace {

// Visits a block line by line: `field(row, column, isFirst)`, then `line()`.
template <typename OnField, typename OnLine>
void ForBlock(std::span<const CellRange> block, OnField field, OnLine line) {
  if (block.empty()) return;
  const bool sideBySide = block.size() > 1 && block[0].firstRow == block[1].firstRow;
  const auto visit = [&](std::span<const CellRange> parts, int row) {
    bool first = true;
    for (const CellRange& part : parts) {
      for (int column = part.firstColumn; column <= part.lastColumn; ++column) {
        field(row, column, first);
        first = false;
      }
    }
    line();
  };
  if (sideBySide) {
    for (int row = block[0].firstRow; row <= block[0].lastRow; ++row) visit(block, row);
  } else {
    for (std::size_t i = 0; i < block.size(); ++i) {
      for (int row = block[i].firstRow; row <= block[i].lastRow; ++row) visit(block.subspan(i, 1), row);
    }
  }
}

}  // namespace

std::string BlockText(const Workbook& workbook, std::span<const CellRange> block, const Regional& regional,
                      bool quoteTexts, bool formulas) {
  std::string out;
  ForBlock(
      block,
      [&](int row, int column, bool first) {
        if (!first) out += '\t';
        const CellView cell = workbook.ReadRC(row, column);
        if (formulas && cell.type < 0) {
          const std::string formula = workbook.FormulaText(row, column);
          if (formula.find_first_of("\t\r\n") == std::string::npos) {
            out += formula;
            return;
          }
        }
        if (std::abs(cell.type) == NumberCell) {
          const NumberFormat format = workbook.NumberFormatAt(row, column);
          const bool isPlain = !format.IsDate() && format.form != NumberFormat::Form::Percent;
          if (isPlain && regional.decimalSymbol == ".") {
            fmt::format_to(std::back_inserter(out), "{}", cell.number);
          } else if (quoteTexts) {
            out += ExactTypedText(cell.number, format, regional);
          } else {
            out += TypedText(cell.number, format, regional);
          }
        } else if (std::abs(cell.type) == LogicalCell) {
          out += cell.number != 0 ? "TRUE" : "FALSE";
        } else if (std::abs(cell.type) == TextCell) {
          const bool quote =
              quoteTexts || cell.text.find_first_of("\t\r\n") != std::string_view::npos || cell.text.starts_with('"');
          if (!quote) {
            out += cell.text;
          } else {
            out += '"';
            for (const char c : cell.text) out.append(c == '"' ? 2 : 1, c);
            out += '"';
          }
        }
      },
      [&] { out += '\n'; });
  return out;
}

std::string BlockHtml(const Workbook& workbook, std::span<const CellRange> block, const Regional& regional) {
  std::string out = "<html><head><meta charset=\"utf-8\"></head><body><table>\n<tr>";
  ForBlock(
      block,
      [&](int row, int column, bool) {
        const bool isNumber = std::abs(workbook.ReadRC(row, column).type) == NumberCell;
        out += isNumber ? "<td align=\"right\">" : "<td>";
        for (const char c : PlainText(workbook, row, column, regional)) {
          switch (c) {
            case '<':
              out += "&lt;";
              break;
            case '>':
              out += "&gt;";
              break;
            case '&':
              out += "&amp;";
              break;
            case '\n':
              out += "<br>";
              break;
            default:
              out += c;
          }
        }
        out += "</td>";
      },
      [&] { out += "</tr>\n<tr>"; });
  out.resize(out.size() - 4);  // the row that was opened last
  return out + "</table></body></html>";
}

TextBlock::TextBlock(std::string text) : text_(std::move(text)) {
  // Quoted fields are unquoted in place: what is written never overtakes what is read.
  char* const data = text_.data();
  const std::size_t size = text_.size();
  std::size_t at = 0;
  bool quotesClose = true;  // a quote that nothing closes is looked for once
  const auto endsField = [&](std::size_t i) {
    return i >= size || data[i] == '\t' || data[i] == '\n' || data[i] == '\r';
  };
  while (at < size) {
    lines_.push_back(fields_.size());
    for (;;) {
      Field field;
      bool taken = false;
      if (at < size && data[at] == '"' && quotesClose) {
        std::size_t close = at + 1;
        while (close < size && (data[close] != '"' || (close + 1 < size && data[close + 1] == '"'))) {
          close += data[close] == '"' ? 2 : 1;
        }
        if (close >= size) {
          quotesClose = false;
        } else if (endsField(close + 1)) {
          std::size_t to = at;
          for (std::size_t from = at + 1; from < close; ++from) {
            data[to++] = data[from];
            if (data[from] == '"') ++from;
          }
          field = {std::string_view(data + at, to - at), true};
          at = close + 1;
          taken = true;
        }
      }
      if (!taken) {
        const std::size_t start = at;
        while (!endsField(at)) ++at;
        field.text = std::string_view(data + start, at - start);
      }
      longest_ = std::max(longest_, field.text.size());
      fields_.push_back(field);
      if (at >= size || data[at] != '\t') break;
      ++at;
    }
    columns_ = std::max(columns_, static_cast<int>(fields_.size() - lines_.back()));
    if (at < size && data[at] == '\r') ++at;
    if (at < size && data[at] == '\n') ++at;
  }
}

TextBlock::Field TextBlock::At(int row, int column) const {
  const auto line = static_cast<std::size_t>(row);
  const std::size_t end = line + 1 < lines_.size() ? lines_[line + 1] : fields_.size();
  const std::size_t at = lines_[line] + static_cast<std::size_t>(column);
  return at < end ? fields_[at] : Field{};
}

BlockSource::BlockSource(std::span<const CellRange> block) {
  for (const CellRange& part : block) {
    const std::pair rows(part.firstRow, part.lastRow);
    const std::pair columns(part.firstColumn, part.lastColumn);
    if (rows_.empty() || rows_.front() != rows) rows_.push_back(rows);
    if (columns_.empty() || columns_.front() != columns) columns_.push_back(columns);
  }
}

int BlockSource::At(const Parts& parts, int index) {
  for (const auto& [first, last] : parts) {
    if (index <= last - first) return first + index;
    index -= last - first + 1;
  }
  return parts.empty() ? 1 : parts.back().second;
}

namespace {

// Of the next cell down a column that is given a format: given all at once at the end, for each change of the looks of
// a cell writes those of its column anew.
void AddFormat(std::vector<Workbook::FormatRun>& formats, int row, const NumberFormat& format) {
  const bool goesOn = !formats.empty() && formats.back().lastRow == row - 1 && formats.back().format == format;
  if (!goesOn) formats.push_back({row, row, format});
  formats.back().lastRow = row;
}

}  // namespace

void PasteBlock(Workbook& workbook, const TextBlock& block, const CellRange& to, const Regional& regional,
                const PasteRules& rules) {
  const GridStep step(workbook, "Paste");
  const int lines = rules.transposed ? block.Columns() : block.Rows();
  const int width = rules.transposed ? block.Rows() : block.Columns();
  std::vector<double> numbers;
  std::vector<std::string> texts;  // empty ones clear
  std::vector<Workbook::FormatRun> formats;
  for (int column = to.firstColumn; column <= to.lastColumn; ++column) {
    const int across = (column - to.firstColumn) % width;
    int row = to.firstRow;
    const auto flush = [&] {
      if (!numbers.empty()) workbook.SetColumnNumbers(column, row - static_cast<int>(numbers.size()), numbers);
      if (!texts.empty()) workbook.SetColumnTexts(column, row - static_cast<int>(texts.size()), texts);
      numbers.clear();
      texts.clear();
    };
    for (; row <= to.lastRow; ++row) {
      const int down = (row - to.firstRow) % lines;
      const int atRow = rules.transposed ? across : down;
      const int atColumn = rules.transposed ? down : across;
      const TextBlock::Field field = block.At(atRow, atColumn);
      const bool isText =
          rules.quotedAreTexts ? field.quoted : workbook.NumberFormatAt(row, column).form == NumberFormat::Form::Text;
      if (!isText && rules.formulas && IsFormula(field.text)) {
        flush();
        std::optional<std::string> moved;
        if (rules.source) {
          moved =
              FormulaCode(field.text)
                  .AfterCopy(field.text, row - rules.source->RowOf(atRow), column - rules.source->ColumnOf(atColumn));
        }
        workbook.Enter(row, column, moved ? *moved : field.text, regional);
        continue;
      }
      const TypedValue value = isText ? TypedValue{.type = TextCell} : ReadTyped(field.text, regional);
      if (value.format) AddFormat(formats, row, *value.format);
      if (value.type == NumberCell) {
        if (!texts.empty()) flush();
        numbers.push_back(value.number);
      } else if (value.type == LogicalCell) {
        flush();
        workbook.SetLogical(row, column, value.number != 0);
      } else {
        if (!numbers.empty()) flush();
        texts.emplace_back(field.text);
      }
    }
    flush();
    workbook.GiveNumberFormats(column, std::exchange(formats, {}));
  }
}

// --- find and replace ---

namespace {

class Matcher {
 public:
  Matcher(std::string_view text, const FindOptions& options, const Regional& regional)
      : options_(options),
        regional_(regional),
        text_(options.matchCase ? std::string(text) : FoldCase(text)),
        inNumbers_(text_.find_first_not_of("0123456789+-eE%,: " + regional.decimalSymbol + regional.dateForm) ==
                   std::string::npos),
        inLogicals_(text.find_first_not_of("TRUEFALSEtruefalse") == std::string_view::npos) {}

  bool Matches(const Workbook& workbook, int row, int column) const {
    const CellView cell = workbook.ReadRC(row, column);
    switch (std::abs(cell.type)) {
      case EmptyCell:
        return false;
      case NumberCell:
        return inNumbers_ && Holds(workbook.FormattedTextRC(row, column, regional_));
      case LogicalCell:
        if (!inLogicals_) return false;
        break;
      default:
        return Holds(cell.text);
    }
    return Holds(workbook.FormattedTextRC(row, column));
  }

  bool Holds(std::string_view shown) const {
    if (options_.wholeCell && options_.matchCase) return shown == text_;
    if (options_.matchCase) return shown.find(text_) != std::string_view::npos;
    folded_ = FoldCase(shown);
    return options_.wholeCell ? folded_ == text_ : folded_.find(text_) != std::string::npos;
  }

  // The text with every occurrence replaced.
  std::string Replaced(std::string_view shown, std::string_view by) const {
    if (options_.wholeCell) return std::string(by);
    if (options_.matchCase) return ReplaceAll(shown, text_, by);
    std::string out;
    for (std::size_t at = 0; at < shown.size();) {
      std::size_t length = MatchAt(shown, at);
      if (length > 0) {
        out += by;
      } else {
        length = 1;
        while (at + length < shown.size() && IsContinuation(shown[at + length])) ++length;
        out += shown.substr(at, length);
      }
      at += length;
    }
    return out;
  }

 private:
  static bool IsContinuation(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }

  // Bytes at a place that fold to the text, or 0. Folding may change lengths, so it goes character by character.
  std::size_t MatchAt(std::string_view shown, std::size_t at) const {
    std::string folded;
    for (std::size_t end = at; end < shown.size() && folded.size() < text_.size();) {
      const std::size_t start = end++;
      while (end < shown.size() && IsContinuation(shown[end])) ++end;
      folded += FoldCase(shown.substr(start, end - start));
      if (folded == text_) return end - at;
      if (text_.compare(0, folded.size(), folded) != 0) return 0;
    }
    return 0;
  }

  FindOptions options_;
  const Regional& regional_;
  std::string text_;
  bool inNumbers_;
  bool inLogicals_;
  mutable std::string folded_;
};

// What is to be entered into a cell that matches; nothing for what cannot be replaced.
std::optional<std::string> ReplacedText(const Workbook& workbook, int row, int column, const Matcher& matcher,
                                        std::string_view by, const Regional& regional) {
  if (!matcher.Matches(workbook, row, column) || workbook.TypeRC(row, column) < 0) return std::nullopt;
  // Of a number all digits count, lest the ones not shown be lost.
  const std::string old = PlainText(workbook, row, column, regional);
  if (!matcher.Holds(old)) return std::nullopt;
  std::string made = matcher.Replaced(old, by);
  return made == old ? std::nullopt : std::optional(std::move(made));
}

}  // namespace

bool FindNext(const Workbook& workbook, std::string_view text, const FindOptions& options, const Regional& regional,
              int& row, int& column) {
  if (text.empty()) return false;
  std::vector<int> used;  // columns
  for (int at = 1; at <= workbook.LastCol(); ++at) {
    if (workbook.LastRowOf(at) > 0) used.push_back(at);
  }
  const Matcher matcher(text, options, regional);
  const bool backwards = options.backwards;
  const int by = backwards ? -1 : 1;
  // The search goes along lines: the part behind the place where it starts, then all from the other end up to it.
  const auto placeOf = [&](int r, int c) { return options.byColumns ? std::pair(c, r) : std::pair(r, c); };
  const auto start = placeOf(row, column);
  const auto isAt = [&](int r, int c, bool isBehind) {
    const auto place = placeOf(r, c);
    if ((backwards ? place < start : place > start) != isBehind || !matcher.Matches(workbook, r, c)) return false;
    row = r;
    column = c;
    return true;
  };
  const auto isInLine = [&](int line, bool isBehind) {
    const int count = options.byColumns ? workbook.LastRowOf(line) : static_cast<int>(used.size());
    for (int i = backwards ? count : 1; i >= 1 && i <= count; i += by) {
      const bool found =
          options.byColumns ? isAt(i, line, isBehind) : isAt(line, used[static_cast<std::size_t>(i - 1)], isBehind);
      if (found) return true;
    }
    return false;
  };
  const int lines = options.byColumns ? workbook.LastCol() : workbook.LastRow();
  const auto isAmong = [&](int from, int to, bool isBehind) {
    for (int line = from; backwards ? line >= to : line <= to; line += by) {
      if (isInLine(line, isBehind)) return true;
    }
    return false;
  };
  const int here = std::min(start.first, lines);
  if (backwards) return isAmong(here, 1, true) || isAmong(lines, here, false);
  return isAmong(start.first, lines, true) || isAmong(1, here, false);
}

int ReplaceAll(Workbook& workbook, std::string_view text, std::string_view by, const FindOptions& options,
               const Regional& regional) {
  if (text.empty() || workbook.SheetLocked()) return 0;
  const Matcher matcher(text, options, regional);
  const GridStep step(workbook, "Replace");
  int replaced = 0;
  std::vector<Workbook::FormatRun> formats;
  std::string reason;
  for (int column = workbook.LastCol(); column >= 1; --column) {
    for (int row = 1; row <= workbook.LastRowOf(column); ++row) {
      const auto made = ReplacedText(workbook, row, column, matcher, by, regional);
      if (!made) continue;
      const bool staysText = workbook.NumberFormatAt(row, column).form == NumberFormat::Form::Text;
      const TypedValue value = staysText ? TypedValue{.type = TextCell} : ReadTyped(*made, regional);
      if (value.format) {
        workbook.NumberRC(row, column, value.number);
        AddFormat(formats, row, *value.format);
      } else if (!CommitText(workbook, row, column, *made, regional, reason)) {
        continue;
      }
      ++replaced;
    }
    workbook.GiveNumberFormats(column, std::exchange(formats, {}));
  }
  return replaced;
}

bool ReplaceOne(Workbook& workbook, int row, int column, std::string_view text, std::string_view by,
                const FindOptions& options, const Regional& regional) {
  if (text.empty()) return false;
  const Matcher matcher(text, options, regional);
  const GridStep step(workbook, "Replace");
  const auto made = ReplacedText(workbook, row, column, matcher, by, regional);
  std::string reason;
  return made && CommitText(workbook, row, column, *made, regional, reason);
}

}  // namespace tellurix
