#include <algorithm>

#include "numeric/Text.h"
#include "report/RichText.h"
#include "report/TableGrid.h"

namespace tellurix {

namespace {

constexpr std::size_t ColumnGap = 2;
constexpr std::size_t MaxColumnWidth = 60;

// The paragraph without help tags and without other hidden text. Tags may begin or end in text that is shown.
std::string VisibleText(const Paragraph& paragraph) {
  bool hasHidden = false;
  std::string text;
  for (const auto& run : paragraph.runs) {
    hasHidden = hasHidden || run.format.hidden;
    text += run.text;
  }
  if (!hasHidden) return RemoveHiddenTags(text);
  std::string visible;
  const auto kept = OutsideHiddenTags(text);
  auto stretch = kept.begin();
  std::size_t from = 0;
  for (const auto& run : paragraph.runs) {
    const std::size_t to = from + run.text.size();
    while (stretch != kept.end() && stretch->second <= from) ++stretch;
    if (!run.format.hidden) {
      for (auto part = stretch; part != kept.end() && part->first < to; ++part) {
        const std::size_t first = std::max(part->first, from);
        visible += std::string_view(text).substr(first, std::min(part->second, to) - first);
      }
    }
    from = to;
  }
  return visible;
}

// Adds the lines of the text, none wider than `width`: broken between words, words only where they must.
void Wrap(std::string_view text, std::size_t width, std::vector<std::string>& lines) {
  if (text.size() <= width || DisplayWidth(text) <= width) {
    lines.emplace_back(text);
    return;
  }
  std::string line;
  std::size_t lineWidth = 0;
  const auto endLine = [&] {
    lines.push_back(std::move(line));
    line.clear();
    lineWidth = 0;
  };
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = std::min(text.find(' ', at), text.size());
    std::string_view word = text.substr(at, end - at);
    std::size_t wordWidth = DisplayWidth(word);
    const std::size_t blank = lineWidth > 0 ? 1 : 0;
    if (lineWidth + blank + wordWidth <= width) {
      if (blank > 0) line += ' ';
      line += word;
      lineWidth += blank + wordWidth;
    } else {
      if (lineWidth > 0) endLine();
      if (wordWidth > width) {
        while (!word.empty()) {
          std::size_t bytes = 1;
          while (bytes < word.size() && (static_cast<unsigned char>(word[bytes]) & 0xC0) == 0x80) ++bytes;
          const std::size_t characterWidth = DisplayWidth(word.substr(0, bytes));
          if (lineWidth + characterWidth > width) endLine();
          line += word.substr(0, bytes);
          lineWidth += characterWidth;
          word.remove_prefix(bytes);
        }
      } else {
        line = word;
        lineWidth = wordWidth;
      }
    }
    at = end + 1;
  }
  endLine();
}

struct CellLines {
  std::vector<std::string> lines;
  std::vector<Alignment> alignments;  // of each line
  std::size_t width = 0;
};

CellLines LayOutCell(const TableCell& cell, std::size_t width) {
  CellLines result;
  for (const auto& paragraph : cell.paragraphs) {
    const std::string text = ReplaceAll(VisibleText(paragraph), "\t", " ");
    for (std::size_t at = 0; at <= text.size();) {
      const std::size_t end = std::min(text.find('\n', at), text.size());
      Wrap(std::string_view(text).substr(at, end - at), width, result.lines);
      at = end + 1;
    }
    result.alignments.resize(result.lines.size(), paragraph.format.alignment);
  }
  for (const auto& line : result.lines) result.width = std::max(result.width, DisplayWidth(line));
  return result;
}

class TextTable {
 public:
  explicit TextTable(const Table& table) : table_(table), grid_(FindGrid(table)) {
    widths_.resize(static_cast<std::size_t>(grid_.columns));
    cells_.resize(table.rows.size());
    // Cells in one column say how wide it is; those that span several then widen the last of them if they must.
    ForEachCell([&](std::size_t row, std::size_t cell, const TableGrid::Place& place) {
      auto& lines = cells_[row].emplace_back();
      if (place.span > 1) return;
      lines = LayOutCell(table_.rows[row].cells[cell], MaxColumnWidth);
      std::size_t& width = widths_[static_cast<std::size_t>(place.column)];
      width = std::max(width, lines.width);
    });
    ForEachCell([&](std::size_t row, std::size_t cell, const TableGrid::Place& place) {
      if (place.span == 1) return;
      const std::size_t width = Width(place);
      auto& lines = cells_[row][cell];
      lines = LayOutCell(table_.rows[row].cells[cell], std::max(width, MaxColumnWidth));
      const std::size_t last = static_cast<std::size_t>(place.column) + static_cast<std::size_t>(place.span) - 1;
      if (lines.width > width) widths_[last] += lines.width - width;
    });
    starts_.push_back(0);
    for (const std::size_t width : widths_) starts_.push_back(starts_.back() + width + ColumnGap);
  }

  void Write(std::string& out) const {
    for (std::size_t row = 0; row <= table_.rows.size(); ++row) {
      WriteRule(row, out);
      if (row < table_.rows.size()) WriteRow(row, out);
    }
  }

 private:
  template <typename Visit>
  void ForEachCell(Visit visit) const {
    for (std::size_t row = 0; row < grid_.rows.size(); ++row) {
      for (std::size_t cell = 0; cell < grid_.rows[row].size(); ++cell) visit(row, cell, grid_.rows[row][cell]);
    }
  }

  std::size_t Width(const TableGrid::Place& place) const {
    std::size_t width = ColumnGap * (static_cast<std::size_t>(place.span) - 1);
    for (int k = place.column; k < place.column + place.span; ++k) width += widths_[static_cast<std::size_t>(k)];
    return width;
  }

  // The line between a row and the one above it.
  void WriteRule(std::size_t row, std::string& out) const {
    std::string rule;
    const auto draw = [&](std::size_t of, int Borders::*side) {
      for (std::size_t cell = 0; cell < grid_.rows[of].size(); ++cell) {
        if (table_.rows[of].cells[cell].borders.*side <= 0) continue;
        const auto& place = grid_.rows[of][cell];
        const std::size_t from = starts_[static_cast<std::size_t>(place.column)];
        const bool goesOn = cell + 1 < grid_.rows[of].size() && table_.rows[of].cells[cell + 1].borders.*side > 0;
        const std::size_t behind = static_cast<std::size_t>(place.column) + static_cast<std::size_t>(place.span);
        const std::size_t to = starts_[behind] - (goesOn ? 0 : ColumnGap);
        if (rule.size() < to) rule.resize(to, ' ');
        std::fill(rule.begin() + static_cast<std::ptrdiff_t>(from), rule.begin() + static_cast<std::ptrdiff_t>(to),
                  '-');
      }
    };
    if (row > 0) draw(row - 1, &Borders::bottom);
    if (row < table_.rows.size()) draw(row, &Borders::top);
    if (rule.empty()) return;
    out += rule;
    out += '\n';
  }

  void WriteRow(std::size_t row, std::string& out) const {
    std::size_t height = 1;
    for (const auto& cell : cells_[row]) height = std::max(height, cell.lines.size());
    for (std::size_t line = 0; line < height; ++line) {
      std::size_t at = 0;  // columns written
      for (std::size_t cell = 0; cell < cells_[row].size(); ++cell) {
        const CellLines& lines = cells_[row][cell];
        if (line >= lines.lines.size() || lines.lines[line].empty()) continue;
        const auto& place = grid_.rows[row][cell];
        const std::string& text = lines.lines[line];
        const std::size_t textWidth = DisplayWidth(text);
        const std::size_t free = std::max(Width(place), textWidth) - textWidth;
        std::size_t start = starts_[static_cast<std::size_t>(place.column)];
        if (lines.alignments[line] == Alignment::Right) start += free;
        if (lines.alignments[line] == Alignment::Centre) start += free / 2;
        out.append(start - std::min(at, start), ' ');
        out += text;
        at = start + textWidth;
      }
      while (!out.empty() && out.back() == ' ') out.pop_back();
      out += '\n';
    }
  }

  const Table& table_;
  TableGrid grid_;
  std::vector<std::vector<CellLines>> cells_;
  std::vector<std::size_t> widths_;  // of the columns
  std::vector<std::size_t> starts_;  // of the columns, and where one more would start
};

}  // namespace

std::string WriteText(const RichText& document) {
  std::string out;
  for (const auto& block : document.blocks) {
    if (const auto* table = std::get_if<Table>(&block)) {
      TextTable(*table).Write(out);
    } else {
      out += VisibleText(std::get<Paragraph>(block));
      out += '\n';
    }
  }
  return out;
}

}  // namespace tellurix
