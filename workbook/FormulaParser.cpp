// Reading formulas, and rewriting their references.
#include <algorithm>
#include <charconv>
#include <cmath>

#include "numeric/Text.h"
#include "workbook/FormulaFunctions.h"

namespace tellurix {

namespace {

constexpr int DeepestNesting = 200;  // of parentheses, calls and signs
constexpr std::size_t MostArguments = 255;
constexpr int SheetMaxRows = GridStore::MaxRows;
constexpr int SheetMaxColumns = GridStore::MaxColumns;

constexpr std::pair<FormulaError, std::string_view> ErrorTexts[] = {
    {FormulaError::Syntax, "#ERR"},     {FormulaError::DivideByZero, "#DIV/0!"}, {FormulaError::Value, "#VALUE!"},
    {FormulaError::Reference, "#REF!"}, {FormulaError::Name, "#NAME?"},          {FormulaError::Number, "#NUM!"},
    {FormulaError::Circle, "#CIRC!"}};

bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }
bool IsNamePart(char c) {
  return IsLetter(c) || IsDigit(c) || c == '_' || c == '.' || static_cast<unsigned char>(c) >= 0x80;
}

struct Broken {};

// One corner of a reference; a missing part is 0.
struct Corner {
  int row = 0;
  int column = 0;
  bool fixedRow = false;
  bool fixedColumn = false;
};

// Reads a corner at `at` and moves it behind; false for what is none.
bool ReadCorner(std::string_view text, std::size_t& at, Corner& corner) {
  std::size_t i = at;
  const auto peek = [&](std::size_t k) { return k < text.size() ? text[k] : '\0'; };
  bool fixed = peek(i) == '$';
  if (fixed) ++i;
  const std::size_t letters = i;
  while (IsLetter(peek(i))) ++i;
  if (i > letters) {
    corner.column = i - letters <= 3 ? ColumnNumber(text.substr(letters, i - letters)) : 0;
    if (corner.column < 1 || corner.column > SheetMaxColumns) return false;
    corner.fixedColumn = fixed;
    fixed = peek(i) == '$';
    if (fixed) ++i;
  }
  const std::size_t digits = i;
  while (IsDigit(peek(i))) ++i;
  if (i > digits) {
    const auto [end, error] = std::from_chars(text.data() + digits, text.data() + i, corner.row);
    if (error != std::errc() || corner.row < 1 || corner.row > SheetMaxRows) return false;
    corner.fixedRow = fixed;
  } else if (fixed) {
    return false;
  }
  if (corner.row == 0 && corner.column == 0) return false;
  at = i;
  return true;
}

std::string CellsText(const FormulaReference& ref) {
  const auto corner = [&](int row, int column, bool fixedRow, bool fixedColumn) {
    std::string text;
    if (!ref.wholeRows) text.append(fixedColumn ? "$" : "").append(ColumnLetters(column));
    if (!ref.wholeColumns) text.append(fixedRow ? "$" : "").append(std::to_string(row));
    return text;
  };
  std::string text = corner(ref.range.firstRow, ref.range.firstColumn, ref.fixedFirstRow, ref.fixedFirstColumn);
  if (!ref.isCell) {
    text += ':' + corner(ref.range.lastRow, ref.range.lastColumn, ref.fixedLastRow, ref.fixedLastColumn);
  }
  return text;
}

// The name as it stands before "!".
std::string SheetText(std::string_view name) {
  CellRange range;
  const bool plain = !name.empty() && std::all_of(name.begin(), name.end(), IsNamePart) && !IsDigit(name[0]) &&
                     name[0] != '.' && !ReadRange(name, range);
  return plain ? std::string(name) : "'" + ReplaceAll(name, "'", "''") + "'";
}

// Moves first..last as CellsMoved tells; false when all of it is gone.
bool MoveSpan(int& first, int& last, const CellsMoved& moved, int end) {
  if (moved.inserted > 0) {
    if (first >= moved.at) first += moved.inserted;
    if (last >= moved.at) last = std::min(last + moved.inserted, end);
    return first <= end;
  }
  const int behind = moved.at + moved.deleted;
  if (first >= moved.at && last < behind) return false;
  if (first >= behind) {
    first -= moved.deleted;
  } else if (first > moved.at) {
    first = moved.at;
  }
  if (last >= behind) {
    last -= moved.deleted;
  } else if (last >= moved.at) {
    last = moved.at - 1;
  }
  return true;
}

// The text with the references for which `change` answers something replaced by that.
template <typename Change>
std::optional<std::string> Rewritten(std::string_view text, const std::vector<FormulaReference>& references,
                                     Change change) {
  std::optional<std::string> made;
  std::size_t copied = 0;
  for (const auto& ref : references) {
    const std::optional<std::string> replaced = change(ref);
    if (!replaced) continue;
    if (!made) made.emplace();
    made->append(text.substr(copied, ref.begin - copied)).append(*replaced);
    copied = ref.end;
  }
  if (made) made->append(text.substr(copied));
  return made;
}

}  // namespace

std::string_view ErrorText(FormulaError error) { return ErrorTexts[static_cast<std::size_t>(error)].second; }

FormulaError ErrorOf(std::string_view text) {
  for (const auto& [error, shown] : ErrorTexts) {
    if (shown == text) return error;
  }
  return FormulaError::Value;
}

bool FormulaReference::IsOf(std::string_view sheetName, bool isOwnSheet) const {
  return sheet.empty() ? isOwnSheet : EqualNoCase(sheet, sheetName);
}

// Recursive descent; the code comes out in postfix order.
class FormulaParser {
 public:
  FormulaParser(std::string_view text, FormulaCode& code) : text_(text), to_(code) {}

  void Read() {
    if (Peek() != '=') throw Broken();
    ++at_;
    Comparison();
    SkipBlanks();
    if (at_ != text_.size()) throw Broken();
  }

 private:
  using Op = FormulaCode::Op;

  char Peek(std::size_t ahead = 0) const { return at_ + ahead < text_.size() ? text_[at_ + ahead] : '\0'; }
  void SkipBlanks() {
    while (IsBlank(Peek())) ++at_;
  }
  bool Take(std::string_view token) {
    SkipBlanks();
    if (!text_.substr(std::min(at_, text_.size())).starts_with(token)) return false;
    at_ += token.size();
    return true;
  }
  void Emit(Op op, std::size_t at = 0) { to_.code_.push_back({op, 0, 0, static_cast<std::uint32_t>(at)}); }

  void Comparison() {
    Joined();
    constexpr std::pair<std::string_view, Op> operators[] = {
        {"<>", Op::Unequal}, {"<=", Op::LessOrEqual}, {">=", Op::GreaterOrEqual},
        {"=", Op::Equal},    {"<", Op::Less},         {">", Op::Greater}};
    for (bool more = true; more;) {
      more = false;
      for (const auto& [token, op] : operators) {
        if (!Take(token)) continue;
        Joined();
        Emit(op);
        more = true;
        break;
      }
    }
  }

  void Joined() {
    Sum();
    while (Take("&")) {
      Sum();
      Emit(Op::Join);
    }
  }

  void Sum() {
    Product();
    for (;;) {
      const Op op = Take("+") ? Op::Add : Take("-") ? Op::Subtract : Op::Jump;
      if (op == Op::Jump) return;
      Product();
      Emit(op);
    }
  }

  void Product() {
    Power();
    for (;;) {
      const Op op = Take("*") ? Op::Multiply : Take("/") ? Op::Divide : Op::Jump;
      if (op == Op::Jump) return;
      Power();
      Emit(op);
    }
  }

  void Power() {
    Signed();
    while (Take("^")) {
      Signed();
      Emit(Op::Power);
    }
  }

  void Signed() {
    if (++depth_ > DeepestNesting) throw Broken();
    if (Take("-")) {
      Signed();
      Emit(Op::Negate);
    } else if (Take("+")) {
      Signed();
      Emit(Op::Plus);
    } else {
      Primary();
      while (Take("%")) Emit(Op::Percent);
    }
    --depth_;
  }

  void Primary() {
    SkipBlanks();
    const char c = Peek();
    if (c == '(') {
      ++at_;
      Comparison();
      if (!Take(")")) throw Broken();
    } else if (c == '"') {
      Emit(Op::Text, to_.texts_.size());
      to_.texts_.push_back(Quoted('"'));
    } else if (c == '#') {
      ErrorLiteral();
    } else if (c == '\'') {
      const std::size_t begin = at_;
      std::string sheet = Quoted('\'');
      if (sheet.empty() || Peek() != '!') throw Broken();
      ++at_;
      ReferenceOf(begin, std::move(sheet));
    } else if (IsDigit(c) || c == '.') {
      if (!TryReference(at_, {})) Number();
    } else if (c == '$') {
      if (!TryReference(at_, {})) throw Broken();
    } else if (IsNamePart(c)) {
      Name();
    } else {
      throw Broken();
    }
  }

  std::string Quoted(char quote) {
    std::string read;
    for (++at_;; ++at_) {
      if (at_ >= text_.size()) throw Broken();
      if (text_[at_] == quote) {
        if (Peek(1) != quote) break;
        ++at_;
      }
      read += text_[at_];
    }
    ++at_;
    return read;
  }

  void ErrorLiteral() {
    for (const auto& [error, shown] : ErrorTexts) {
      if (error == FormulaError::Syntax || !StartsWithNoCase(text_.substr(at_), shown)) continue;
      at_ += shown.size();
      return Emit(Op::Error, static_cast<std::size_t>(error));
    }
    throw Broken();
  }

  void Number() {
    const std::size_t begin = at_;
    while (IsDigit(Peek())) ++at_;
    if (Peek() == '.') ++at_;
    while (IsDigit(Peek())) ++at_;
    if (at_ == begin + 1 && text_[begin] == '.') throw Broken();
    if (Peek() == 'e' || Peek() == 'E') {
      const std::size_t sign = Peek(1) == '+' || Peek(1) == '-' ? 1 : 0;
      if (IsDigit(Peek(1 + sign))) {
        at_ += 1 + sign;
        while (IsDigit(Peek())) ++at_;
      }
    }
    if (IsNamePart(Peek())) throw Broken();
    double value = 0;
    const auto [end, error] = std::from_chars(text_.data() + begin, text_.data() + at_, value);
    if (error == std::errc::result_out_of_range) {
      // Too large or too small for a double; from_chars does not say which.
      const std::string copy(text_.substr(begin, at_ - begin));
      value = std::strtod(copy.c_str(), nullptr);
      if (!std::isfinite(value)) return Emit(Op::Error, static_cast<std::size_t>(FormulaError::Number));
    } else if (error != std::errc()) {
      throw Broken();
    }
    Emit(Op::Number, to_.numbers_.size());
    to_.numbers_.push_back(value);
  }

  // A range of cells at `at_`; false, and nothing read, for what is none.
  bool TryReference(std::size_t begin, std::string sheet) {
    std::size_t at = at_;
    Corner first;
    Corner last;
    FormulaReference ref;
    if (!ReadCorner(text_, at, first)) return false;
    const bool isRange = at < text_.size() && text_[at] == ':';
    if (isRange) {
      ++at;
      if (!ReadCorner(text_, at, last)) return false;
      if ((first.row == 0) != (last.row == 0) || (first.column == 0) != (last.column == 0)) return false;
    } else {
      if (first.row == 0 || first.column == 0) return false;
      last = first;
    }
    if (at < text_.size() && (IsNamePart(text_[at]) || text_[at] == '(' || text_[at] == '!' || text_[at] == '$')) {
      return false;
    }
    ref.begin = begin;
    ref.cellsAt = at_;
    ref.end = at;
    ref.isCell = !isRange;
    ref.wholeColumns = first.row == 0;
    ref.wholeRows = first.column == 0;
    if (first.row > last.row) {
      std::swap(first.row, last.row);
      std::swap(first.fixedRow, last.fixedRow);
    }
    if (first.column > last.column) {
      std::swap(first.column, last.column);
      std::swap(first.fixedColumn, last.fixedColumn);
    }
    ref.range = {std::max(first.row, 1), std::max(first.column, 1), ref.wholeColumns ? SheetMaxRows : last.row,
                 ref.wholeRows ? SheetMaxColumns : last.column};
    ref.fixedFirstRow = first.fixedRow;
    ref.fixedFirstColumn = first.fixedColumn;
    ref.fixedLastRow = last.fixedRow;
    ref.fixedLastColumn = last.fixedColumn;
    to_.namesSheets_ = to_.namesSheets_ || !sheet.empty();
    ref.sheet = std::move(sheet);
    at_ = at;
    Emit(Op::Reference, to_.references_.size());
    to_.references_.push_back(std::move(ref));
    return true;
  }

  // What follows the name of a sheet.
  void ReferenceOf(std::size_t begin, std::string sheet) {
    if (Peek() == '#') return ErrorLiteral();
    if (!TryReference(begin, std::move(sheet))) throw Broken();
  }

  void Name() {
    const std::size_t begin = at_;
    std::size_t end = at_;
    while (end < text_.size() && IsNamePart(text_[end])) ++end;
    const std::string_view name = text_.substr(begin, end - begin);
    if (end < text_.size() && text_[end] == '!') {
      at_ = end + 1;
      return ReferenceOf(begin, std::string(name));
    }
    if (TryReference(begin, {})) return;
    at_ = end;
    if (Take("(")) return Call(name);
    if (EqualNoCase(name, "TRUE")) return Emit(Op::Logical, 1);
    if (EqualNoCase(name, "FALSE")) return Emit(Op::Logical, 0);
    Emit(Op::Error, static_cast<std::size_t>(FormulaError::Name));
  }

  bool Separator() { return Take(",") || Take(";"); }

  void Argument() {
    SkipBlanks();
    if (Peek() == ',' || Peek() == ';' || Peek() == ')') {
      Emit(Op::Missing);
    } else {
      Comparison();
    }
  }

  void Call(std::string_view name) {
    const FormulaFunction* function = FindFunction(name);
    if (function && function->id == FunctionId::If) return If();
    std::size_t count = 0;
    if (!Take(")")) {
      do {
        Argument();
        if (++count > MostArguments) throw Broken();
      } while (Separator());
      if (!Take(")")) throw Broken();
    }
    const FunctionId id = function ? function->id : FunctionId::Unknown;
    if (function && (count < function->least || count > function->most)) throw Broken();
    to_.code_.push_back({Op::Call, static_cast<std::uint8_t>(id), static_cast<std::uint8_t>(count), 0});
  }

  // Only the chosen branch is computed: condition, Branch to the other, first, Jump behind, other.
  void If() {
    Argument();
    const std::size_t branch = to_.code_.size();
    Emit(Op::Branch);
    if (!Separator()) throw Broken();
    Argument();
    const std::size_t jump = to_.code_.size();
    Emit(Op::Jump);
    to_.code_[branch].at = static_cast<std::uint32_t>(to_.code_.size());
    if (Separator()) {
      Argument();
    } else {
      Emit(Op::Logical, 0);
    }
    if (!Take(")")) throw Broken();
    to_.code_[jump].at = static_cast<std::uint32_t>(to_.code_.size());
  }

  std::string_view text_;
  FormulaCode& to_;
  std::size_t at_ = 0;
  int depth_ = 0;
};

FormulaCode::FormulaCode(std::string_view text) {
  try {
    FormulaParser(text, *this).Read();
  } catch (const Broken&) {
    references_.clear();
    namesSheets_ = false;
    code_.assign(1, {Op::Error, 0, 0, static_cast<std::uint32_t>(FormulaError::Syntax)});
  }
}

void FormulaCode::Resolve(const FormulaCells& cells, int own) const {
  for (const auto& ref : references_) ref.sheetIndex = ref.sheet.empty() ? own : cells.FindSheet(ref.sheet);
}

std::optional<std::string> FormulaCode::AfterMove(std::string_view text, const CellsMoved& moved,
                                                  std::string_view sheetName, bool isOwnSheet) const {
  return Rewritten(text, references_, [&](const FormulaReference& ref) -> std::optional<std::string> {
    if (!ref.IsOf(sheetName, isOwnSheet)) return std::nullopt;
    FormulaReference now = ref;
    if (moved.rows) {
      if (ref.wholeColumns || ref.range.firstColumn < moved.firstAcross || ref.range.lastColumn > moved.lastAcross) {
        return std::nullopt;
      }
      if (!MoveSpan(now.range.firstRow, now.range.lastRow, moved, SheetMaxRows)) return "#REF!";
    } else {
      if (ref.wholeRows || ref.range.firstRow < moved.firstAcross || ref.range.lastRow > moved.lastAcross) {
        return std::nullopt;
      }
      if (!MoveSpan(now.range.firstColumn, now.range.lastColumn, moved, SheetMaxColumns)) return "#REF!";
    }
    if (now.range == ref.range) return std::nullopt;
    return std::string(text.substr(ref.begin, ref.cellsAt - ref.begin)) + CellsText(now);
  });
}

std::optional<std::string> FormulaCode::AfterRename(std::string_view text, std::string_view from,
                                                    std::string_view to) const {
  if (!namesSheets_) return std::nullopt;
  return Rewritten(text, references_, [&](const FormulaReference& ref) -> std::optional<std::string> {
    if (ref.sheet.empty() || !EqualNoCase(ref.sheet, from)) return std::nullopt;
    return SheetText(to) + "!" + std::string(text.substr(ref.cellsAt, ref.end - ref.cellsAt));
  });
}

std::optional<std::string> FormulaCode::AfterSheetDeleted(std::string_view text, std::string_view sheetName) const {
  if (!namesSheets_) return std::nullopt;
  return Rewritten(text, references_, [&](const FormulaReference& ref) -> std::optional<std::string> {
    if (ref.sheet.empty() || !EqualNoCase(ref.sheet, sheetName)) return std::nullopt;
    return "#REF!";
  });
}

std::optional<std::string> FormulaCode::WithReferences(
    std::string_view text,
    const std::function<std::optional<FormulaReference>(const FormulaReference&)>& change) const {
  return Rewritten(text, references_, [&](const FormulaReference& ref) -> std::optional<std::string> {
    const auto now = change(ref);
    if (!now) return std::nullopt;
    return (now->sheet.empty() ? std::string() : SheetText(now->sheet) + "!") + CellsText(*now);
  });
}

std::optional<std::string> FormulaCode::AfterCopy(std::string_view text, int rows, int columns) const {
  return Rewritten(text, references_, [&](const FormulaReference& ref) -> std::optional<std::string> {
    FormulaReference now = ref;
    const auto add = [](int& to, bool fixed, int by) {
      if (!fixed) to += by;
    };
    if (!ref.wholeColumns) {
      add(now.range.firstRow, ref.fixedFirstRow, rows);
      add(now.range.lastRow, ref.fixedLastRow, rows);
    }
    if (!ref.wholeRows) {
      add(now.range.firstColumn, ref.fixedFirstColumn, columns);
      add(now.range.lastColumn, ref.fixedLastColumn, columns);
    }
    if (now.range == ref.range) return std::nullopt;
    // One fixed and one relative corner may pass each other.
    if (now.range.firstRow > now.range.lastRow) {
      std::swap(now.range.firstRow, now.range.lastRow);
      std::swap(now.fixedFirstRow, now.fixedLastRow);
    }
    if (now.range.firstColumn > now.range.lastColumn) {
      std::swap(now.range.firstColumn, now.range.lastColumn);
      std::swap(now.fixedFirstColumn, now.fixedLastColumn);
    }
    if (now.range.firstRow < 1 || now.range.lastRow > SheetMaxRows || now.range.firstColumn < 1 ||
        now.range.lastColumn > SheetMaxColumns) {
      return "#REF!";
    }
    return std::string(text.substr(ref.begin, ref.cellsAt - ref.begin)) + CellsText(now);
  });
}

void Formula::Take(FormulaResult from) const {
  stale = false;
  isError = from.isError;
  if (from.type == NumberCell && std::isfinite(from.number)) {
    type = NumberCell;
    number = from.number;
    result.clear();
  } else if (from.type == LogicalCell) {
    type = LogicalCell;
    number = from.number != 0 ? -1 : 0;
    result.clear();
  } else {
    type = TextCell;
    number = 0;
    result = from.type == NumberCell ? "*" : std::move(from.text);
  }
}

}  // namespace tellurix
