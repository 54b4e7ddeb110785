#include "workbook/files/foreign/XlsFormula.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <cstdint>

#include "numeric/Text.h"
#include "workbook/FormulaFunctions.h"
#include "workbook/GridStore.h"
#include "workbook/files/ByteStream.h"

namespace tellurix {

namespace {

constexpr std::size_t MostOperands = 1000;

struct NumberedFunction {
  int number;
  std::string_view name;
};

// Those of FormulaFunctions.h, by their numbers in the files.
constexpr NumberedFunction Functions[] = {
    {0, "COUNT"},  {1, "IF"},         {4, "SUM"},       {5, "AVERAGE"},  {6, "MIN"},       {7, "MAX"},
    {12, "STDEV"}, {15, "SIN"},       {16, "COS"},      {17, "TAN"},     {19, "PI"},       {20, "SQRT"},
    {21, "EXP"},   {22, "LN"},        {23, "LOG10"},    {24, "ABS"},     {25, "INT"},      {27, "ROUND"},
    {32, "LEN"},   {36, "AND"},       {37, "OR"},       {38, "NOT"},     {39, "MOD"},      {46, "VAR"},
    {118, "TRIM"}, {128, "ISNUMBER"}, {129, "ISBLANK"}, {169, "COUNTA"}, {183, "PRODUCT"}, {227, "MEDIAN"},
    {321, "SUMSQ"}};

std::string_view FunctionName(int number) {
  for (const NumberedFunction& function : Functions) {
    if (function.number == number) return function.name;
  }
  return {};
}

std::string Quoted(const std::string& sheet) {
  const bool isPlain = !sheet.empty() && std::isalpha(static_cast<unsigned char>(sheet[0])) &&
                       std::all_of(sheet.begin(), sheet.end(),
                                   [](char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '_'; });
  // A name that looks like a cell ("A1") needs the quotes too.
  CellRange range;
  if (isPlain && !ReadRange(sheet, range)) return sheet;
  return "'" + ReplaceAll(sheet, "'", "''") + "'";
}

class Decoder {
 public:
  Decoder(std::string_view tokens, int row, int column, const XlsNames& names)
      : bytes_(tokens), row_(row), column_(column), names_(names) {}

  std::optional<std::string> Text() {
    while (!bytes_.IsAtEnd()) {
      if (!Token(bytes_.Take<std::uint8_t>()) || bytes_.IsBad() || operands_.size() > MostOperands) return std::nullopt;
    }
    if (operands_.size() != 1) return std::nullopt;
    return "=" + operands_[0];
  }

 private:
  struct Corner {
    int row, column;
    bool isRowFixed, isColumnFixed;
  };

  bool Push(std::string operand) {
    operands_.push_back(std::move(operand));
    return true;
  }
  // False for want of operands.
  bool Pop(std::string& operand) {
    if (operands_.empty()) return false;
    operand = std::move(operands_.back());
    operands_.pop_back();
    return true;
  }

  bool Token(int token) {
    // Those that refer to cells or call functions come in three classes.
    const int kind = token >= 0x40 ? (token & 0x1F) | 0x20 : token;
    switch (kind) {
      case 0x12:
        return Around("+", "");
      case 0x13:
        return Around("-", "");
      case 0x14:
        return Around("", "%");
      case 0x15:
        return Around("(", ")");
      case 0x16:
        return Push("");
      case 0x17:
        return Push("\"" + ReplaceAll(TakeText(), "\"", "\"\"") + "\"");
      case 0x19:
        return Attribute();
      case 0x1D:
        return Push(bytes_.Take<std::uint8_t>() ? "TRUE" : "FALSE");
      case 0x1E:
        return Push(std::to_string(bytes_.Take<std::uint16_t>()));
      case 0x1F:
        return Push(fmt::format("{}", bytes_.Take<double>()));
      case 0x21: {
        const std::string_view name = FunctionName(bytes_.Take<std::uint16_t>());
        return !name.empty() && Call(name, FindFunction(name)->least);
      }
      case 0x22: {
        const std::size_t count = bytes_.Take<std::uint8_t>() & 0x7F;
        return Call(FunctionName(bytes_.Take<std::uint16_t>() & 0x7FFF), count);
      }
      case 0x24:
        return Push(Name(TakeCorner(false)));
      case 0x25:
        return PushArea("", false);
      case 0x2C:
        return Push(Name(TakeCorner(true)));
      case 0x2D:
        return PushArea("", true);
      case 0x3A: {
        std::string sheet;
        return TakeSheet(sheet) && Push(sheet + Name(TakeCorner(false)));
      }
      case 0x3B: {
        std::string sheet;
        return TakeSheet(sheet) && PushArea(sheet, false);
      }
      default:
        return Operator(kind);
    }
  }

  bool Operator(int kind) {
    constexpr int First = 0x03, Last = 0x0E;
    static constexpr const char* Signs[] = {"+", "-", "*", "/", "^", "&", "<", "<=", "=", ">=", ">", "<>"};
    std::string left, right;
    if (kind < First || kind > Last || !Pop(right) || !Pop(left)) return false;
    return Push(left + Signs[kind - First] + right);
  }

  bool Around(const char* before, const char* behind) {
    std::string operand;
    return Pop(operand) && Push(before + operand + behind);
  }

  bool Call(std::string_view name, std::size_t count) {
    if (name.empty() || count > operands_.size()) return false;
    std::string text(name);
    text += '(';
    const std::size_t first = operands_.size() - count;
    for (std::size_t i = first; i < operands_.size(); ++i) {
      if (i > first) text += ',';
      text += operands_[i];
    }
    operands_.resize(first);
    return Push(text + ")");
  }

  bool Attribute() {
    const int kind = bytes_.Take<std::uint8_t>();
    const std::size_t data = bytes_.Take<std::uint16_t>();
    constexpr int Choose = 0x04, Sum = 0x10;
    if (kind & Choose) bytes_.TakeBytes(2 * (data + 1));
    return !(kind & Sum) || Call("SUM", 1);
  }

  std::string TakeText() {
    const std::size_t count = bytes_.Take<std::uint8_t>();
    if (!names_.is8) return ToUtf8(bytes_.TakeBytes(count));
    const bool isWide = (bytes_.Take<std::uint8_t>() & 1) != 0;
    std::string text;
    for (std::size_t i = 0; i < count && !bytes_.IsBad(); ++i) {
      text += EncodeUtf8(isWide ? bytes_.Take<std::uint16_t>() : bytes_.Take<std::uint8_t>());
    }
    return text;
  }

  bool TakeSheet(std::string& sheet) {
    if (!names_.is8) return false;
    const std::size_t number = bytes_.Take<std::uint16_t>();
    if (number >= names_.sheets.size() || names_.sheets[number].empty()) return false;
    sheet = Quoted(names_.sheets[number]) + "!";
    return true;
  }

  // Numbers of rows and columns with the marks of what moves along; in shared formulas those are distances.
  Corner MakeCorner(int row, int column, int marks, bool isShared) const {
    constexpr int ColumnMoves = 0x4000, RowMoves = 0x8000;
    Corner corner{row + 1, column + 1, !(marks & RowMoves), !(marks & ColumnMoves)};
    if (!isShared) return corner;
    constexpr int Rows = 0x10000, Columns = 0x100;
    const int rows = names_.is8 ? Rows : Rows / 4;
    if (!corner.isRowFixed) corner.row = (row_ - 1 + row) % rows + 1;
    if (!corner.isColumnFixed) corner.column = (column_ - 1 + column) % Columns + 1;
    return corner;
  }

  Corner TakeCorner(bool isShared) {
    const int row = bytes_.Take<std::uint16_t>();
    if (!names_.is8) return MakeCorner(row & 0x3FFF, bytes_.Take<std::uint8_t>(), row, isShared);
    const int column = bytes_.Take<std::uint16_t>();
    return MakeCorner(row, column & 0xFF, column, isShared);
  }

  bool PushArea(const std::string& sheet, bool isShared) {
    const int firstRow = bytes_.Take<std::uint16_t>(), lastRow = bytes_.Take<std::uint16_t>();
    const auto column = [&]() -> int {
      return names_.is8 ? bytes_.Take<std::uint16_t>() : bytes_.Take<std::uint8_t>();
    };
    const int firstColumn = column(), lastColumn = column();
    const auto corner = [&](int row, int at) {
      return names_.is8 ? MakeCorner(row, at & 0xFF, at, isShared) : MakeCorner(row & 0x3FFF, at, row, isShared);
    };
    return Push(sheet + Name(corner(firstRow, firstColumn)) + ":" + Name(corner(lastRow, lastColumn)));
  }

  static std::string Name(const Corner& corner) {
    return fmt::format("{}{}{}{}", corner.isColumnFixed ? "$" : "", ColumnLetters(corner.column),
                       corner.isRowFixed ? "$" : "", corner.row);
  }

  ByteReader bytes_;
  int row_, column_;
  const XlsNames& names_;
  std::vector<std::string> operands_;
};

}  // namespace

std::optional<std::string> TextOfTokens(std::string_view tokens, int row, int column, const XlsNames& names) {
  return Decoder(tokens, row, column, names).Text();
}

}  // namespace tellurix
