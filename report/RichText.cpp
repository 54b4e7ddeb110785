#include "report/RichText.h"

#include <charconv>
#include <iterator>

#include "numeric/Text.h"

namespace tellurix {

namespace {

bool IsBlank(const Paragraph& paragraph) {
  for (const auto& run : paragraph.runs) {
    if (run.picture || !Trim(run.text).empty()) return false;
  }
  return true;
}

bool IsBlank(const Table& table) {
  for (const auto& row : table.rows) {
    for (const auto& cell : row.cells) {
      for (const auto& paragraph : cell.paragraphs) {
        if (!IsBlank(paragraph)) return false;
      }
    }
  }
  return true;
}

// The number of the last "/h/<number>/" in the text.
std::optional<int> LastTagIn(std::string_view text) {
  for (auto at = text.rfind("/h/"); at != std::string_view::npos; at = at == 0 ? at - 1 : text.rfind("/h/", at - 1)) {
    const std::string_view rest = text.substr(at + 3);
    int number = 0;
    const auto [end, error] = std::from_chars(rest.data(), rest.data() + rest.size(), number);
    if (error == std::errc() && end != rest.data() + rest.size() && *end == '/') return number;
  }
  return std::nullopt;
}

// A tag may stand in several hidden runs that touch.
std::optional<int> LastTagIn(const Paragraph& paragraph) {
  std::string hidden;
  for (const auto& run : paragraph.runs) {
    if (run.format.hidden) {
      hidden += run.text;
    } else if (!hidden.empty() && hidden.back() != '\n') {
      hidden += '\n';
    }
  }
  return LastTagIn(hidden);
}

std::optional<int> LastTagIn(const Table& table) {
  for (auto row = table.rows.rbegin(); row != table.rows.rend(); ++row) {
    for (auto cell = row->cells.rbegin(); cell != row->cells.rend(); ++cell) {
      for (auto paragraph = cell->paragraphs.rbegin(); paragraph != cell->paragraphs.rend(); ++paragraph) {
        if (const auto tag = LastTagIn(*paragraph)) return tag;
      }
    }
  }
  return std::nullopt;
}

}  // namespace

bool Run::operator==(const Run& other) const {
  const bool samePicture =
      picture == other.picture || (picture != nullptr && other.picture != nullptr && *picture == *other.picture);
  return samePicture && format == other.format && text == other.text;
}

bool RichText::IsEmpty() const {
  for (const auto& block : blocks) {
    if (!std::visit([](const auto& any) { return IsBlank(any); }, block)) return false;
  }
  return true;
}

void RichText::Append(RichText other) {
  if (blocks.empty()) {
    blocks = std::move(other.blocks);
  } else {
    blocks.insert(blocks.end(), std::make_move_iterator(other.blocks.begin()),
                  std::make_move_iterator(other.blocks.end()));
  }
}

std::vector<std::pair<std::size_t, std::size_t>> OutsideHiddenTags(std::string_view text) {
  constexpr std::size_t tagLimit = 21;  // characters from the start of the tag to its last slash
  std::vector<std::pair<std::size_t, std::size_t>> kept;
  std::size_t from = 0;
  std::size_t look = 0;
  for (;;) {
    const auto start = text.find("/h/", look);
    if (start == std::string_view::npos) break;
    const auto end = text.find('/', start + 3);
    if (end == std::string_view::npos) break;
    // A character has at most four bytes, so that only short stretches are counted.
    if (end - start < 4 * tagLimit && CharacterCount(text.substr(start, end - start)) < tagLimit) {
      if (start > from) kept.emplace_back(from, start);
      from = look = end + 1;
    } else {
      look = start + 3;
    }
  }
  if (from < text.size()) kept.emplace_back(from, text.size());
  return kept;
}

std::string RemoveHiddenTags(std::string_view text) {
  std::string result;
  for (const auto& [from, to] : OutsideHiddenTags(text)) result += text.substr(from, to - from);
  return result;
}

std::optional<int> LastHelpTag(const RichText& document, std::size_t block) {
  for (std::size_t left = document.blocks.empty() ? 0 : std::min(block, document.blocks.size() - 1) + 1; left > 0;
       --left) {
    const auto tag = std::visit([](const auto& any) { return LastTagIn(any); }, document.blocks[left - 1]);
    if (tag) return tag;
  }
  return std::nullopt;
}

}  // namespace tellurix
