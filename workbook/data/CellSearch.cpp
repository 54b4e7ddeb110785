#include "workbook/data/CellSearch.h"

#include <cmath>
#include <cstdlib>

#include "numeric/Missing.h"
#include "numeric/Rounding.h"
#include "numeric/Text.h"

namespace tellurix {

namespace {

bool IsQuoted(std::string_view text) { return text.size() >= 2 && text.front() == '"' && text.back() == '"'; }

std::string_view WithoutQuotes(std::string_view text) {
  return IsQuoted(text) ? text.substr(1, text.size() - 2) : text;
}

bool IsWordPart(char c) { return std::isalnum(static_cast<unsigned char>(c)) || static_cast<unsigned char>(c) >= 0x80; }

// Whether x stands in an expression as a word of its own.
bool NamesX(std::string_view text) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != 'x' && text[i] != 'X') continue;
    const bool begins = i == 0 || !IsWordPart(text[i - 1]);
    const bool ends = i + 1 == text.size() || !IsWordPart(text[i + 1]);
    if (begins && ends) return true;
  }
  return false;
}

bool HasRelation(std::string_view text) { return text.find_first_of("<>=") != std::string_view::npos; }

bool IsMissingMark(std::string_view text) { return text == "*" || text == "." || EqualNoCase(text, "MISSING"); }

std::string_view LogicalText(const CellView& cell) { return cell.number != 0 ? "TRUE" : "FALSE"; }

}  // namespace

CellSearch::CellSearch(std::string_view find, bool wholeCells, const Regional& regional)
    : text_(WithoutQuotes(find)), folded_(FoldCase(text_)), wholeCells_(wholeCells), evaluator_(regional) {
  const auto number = ReadNumber(find, regional);
  if (find.empty() || text_.empty()) return;
  if (EqualNoCase(Trim(find), MissingData)) {
    kind_ = Kind::Missing;
  } else if (number) {
    kind_ = Kind::Number;
    number_ = *number;
    numberText_ = GeneralText(number_);
    wholeCells_ = true;
  } else if (!IsQuoted(find) && NamesX(find) && HasRelation(find)) {
    kind_ = Kind::Condition;
    condition_ = std::make_unique<RowExpression>(evaluator_, find, std::vector<std::string>{"X"});
  } else {
    kind_ = Kind::Text;
  }
}

bool CellSearch::MatchesText(std::string_view text) const {
  return wholeCells_ ? EqualNoCase(Trim(text), text_) : FoldCase(text).find(folded_) != std::string::npos;
}

bool CellSearch::Matches(const CellView& cell) {
  const int type = std::abs(cell.type);
  switch (kind_) {
    case Kind::Missing:
      return type == EmptyCell || (type == TextCell && IsMissingMark(cell.text));
    case Kind::Number:
      if (type == TextCell) return MatchesText(cell.text);
      if (type != NumberCell) return false;
      return cell.number == number_ ||
             (std::abs(cell.number - number_) <= 1e-14 * std::abs(number_) && GeneralText(cell.number) == numberText_);
    case Kind::Condition: {
      if (type != NumberCell) return false;
      const double value = condition_->Evaluate({&cell.number, 1});
      return value != 0 && value != MissingValue;
    }
    case Kind::Text:
      return (type == TextCell && MatchesText(cell.text)) || (type == LogicalCell && MatchesText(LogicalText(cell)));
    default:
      return false;
  }
}

std::string CellSearch::Replaced(std::string_view text, std::string_view by) const {
  if (wholeCells_) return std::string(by);
  // Folding may change lengths, so it goes character by character.
  std::string made;
  for (std::size_t at = 0; at < text.size();) {
    std::size_t end = at;
    std::string folded;
    while (end < text.size() && folded.size() < folded_.size()) {
      const std::size_t start = end++;
      while (end < text.size() && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) ++end;
      folded += FoldCase(text.substr(start, end - start));
    }
    if (folded == folded_) {
      made += by;
      at = end;
      continue;
    }
    made += text[at++];
    while (at < text.size() && (static_cast<unsigned char>(text[at]) & 0xC0) == 0x80) made += text[at++];
  }
  return made;
}

CellReplacement::CellReplacement(std::string_view by, const CellSearch& search, const Regional& regional)
    : search_(search), regional_(regional), text_(WithoutQuotes(by)), evaluator_(regional) {
  isMissing_ = EqualNoCase(Trim(by), MissingData);
  number_ = ReadNumber(by, regional);
  if (!isMissing_ && !number_ && !IsQuoted(by) && search.IsForNumbers() && NamesX(by)) {
    expression_ = std::make_unique<RowExpression>(evaluator_, by, std::vector<std::string>{"X"});
  }
}

std::optional<Replacement> CellReplacement::For(const CellView& cell) {
  const int type = std::abs(cell.type);
  if (isMissing_) return Replacement{{}, "*"};
  if (expression_) {
    if (type != NumberCell) return std::nullopt;
    const double value = expression_->Evaluate({&cell.number, 1});
    return value == MissingValue ? Replacement{{}, "*"} : Replacement{value, {}};
  }
  if (type != TextCell || search_.IsForMissing() || search_.IsForNumbers()) return Replacement{number_, text_};
  const std::string made = search_.Replaced(cell.text, text_);
  const auto number = number_ ? ReadNumber(made, regional_) : std::nullopt;
  return number ? Replacement{number, {}} : Replacement{{}, made};
}

}  // namespace tellurix
