// Formulas of cells: their text read into a code, the text following its cells when these move, the code computed.
//
// A formula is a text that begins with "=". Cells are named A1 or $A$1, ranges A1:B9, C:D (whole columns) and 3:7
// (whole rows), those of other sheets Sheet!A1 and 'My sheet'!A1. From the tightest on: unary minus and plus, percent,
// ^ (from left to right), * /, + -, & (joins texts), comparisons; so -2^2 is 4, as in every spreadsheet. Numbers have
// "." for their decimal symbol, texts stand in "double quotes", arguments are parted by "," or ";".
//
// In arithmetic a logical counts 1 or 0, an empty cell 0, and a text is an error. The functions over many values
// (SUM ... COUNTA, AND, OR) skip texts, logicals and empty cells of ranges (AND and OR take their logicals).
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "workbook/GridStore.h"

namespace tellurix {

class CellColumn;

enum class FormulaError : std::uint8_t { Syntax, DivideByZero, Value, Reference, Name, Number, Circle };

std::string_view ErrorText(FormulaError error);  // "#ERR", "#DIV/0!", "#VALUE!", "#REF!", "#NAME?", "#NUM!", "#CIRC!"
FormulaError ErrorOf(std::string_view text);     // Value for a text that is none of them

// What a formula came to. An error is a text ("#ERR") that says so; an empty result is an empty text.
struct FormulaResult {
  int type = TextCell;  // NumberCell, TextCell or LogicalCell
  double number = 0;    // a number or logical (true -1, false 0)
  std::string text;
  bool isError = false;

  static FormulaResult Number(double value) { return {NumberCell, value, {}, false}; }
  static FormulaResult Text(std::string text) { return {TextCell, 0, std::move(text), false}; }
  static FormulaResult Logical(bool value) { return {LogicalCell, value ? -1.0 : 0.0, {}, false}; }
  static FormulaResult Error(std::string text) { return {TextCell, 0, std::move(text), true}; }
  static FormulaResult Error(FormulaError error) { return Error(std::string(ErrorText(error))); }
};

// The cells that formulas read. Sheets are numbered from 0 here.
class FormulaCells {
 public:
  virtual ~FormulaCells() = default;
  virtual int SheetCount() const = 0;
  virtual int FindSheet(std::string_view name) const = 0;             // -1 when there is none
  virtual const CellColumn* Column(int sheet, int column) const = 0;  // null: empty
  virtual int LastColumn(int sheet) const = 0;
};

struct FormulaReference {
  std::size_t begin = 0;    // in the formula's text, with the sheet's name
  std::size_t cellsAt = 0;  // behind the sheet's name
  std::size_t end = 0;
  std::string sheet;  // empty: that of the formula
  CellRange range;
  bool fixedFirstRow = false;
  bool fixedFirstColumn = false;
  bool fixedLastRow = false;
  bool fixedLastColumn = false;
  bool isCell = false;
  bool wholeColumns = false;
  bool wholeRows = false;
  mutable int sheetIndex = -1;  // set by Resolve; -1: there is no such sheet

  bool IsOf(std::string_view sheetName, bool isOwnSheet) const;
};

// Cells of a sheet that moved down or up (rows), or to the right or left: at `at`, `inserted` places were made or
// `deleted` ones taken out, in the columns (rows) from `firstAcross` to `lastAcross`.
struct CellsMoved {
  bool rows = true;
  int at = 1;
  int inserted = 0;
  int deleted = 0;
  int firstAcross = 1;
  int lastAcross = 1;
};

class FormulaCode {
 public:
  // Never fails: of a text that cannot be read the result is "#ERR", of an unknown name "#NAME?".
  explicit FormulaCode(std::string_view text);

  const std::vector<FormulaReference>& References() const { return references_; }
  bool NamesSheets() const { return namesSheets_; }

  // Finds the sheets of the references, for a formula that stands on sheet `own`.
  void Resolve(const FormulaCells& cells, int own) const;

  // After Resolve. Numbers are finite: what overflows is "#NUM!".
  FormulaResult Evaluate(const FormulaCells& cells) const;

  // The text as it must read after a change, or nothing when it stays. `text` is the one the code was made of.
  std::optional<std::string> AfterMove(std::string_view text, const CellsMoved& moved, std::string_view sheetName,
                                       bool isOwnSheet) const;
  std::optional<std::string> AfterRename(std::string_view text, std::string_view from, std::string_view to) const;
  std::optional<std::string> AfterSheetDeleted(std::string_view text, std::string_view sheetName) const;
  // With each reference that `change` answers put in the place of the one it is given.
  std::optional<std::string> WithReferences(
      std::string_view text,
      const std::function<std::optional<FormulaReference>(const FormulaReference&)>& change) const;
  // Of a copy so many rows below and columns to the right.
  std::optional<std::string> AfterCopy(std::string_view text, int rows, int columns) const;

 private:
  friend class FormulaParser;
  friend class FormulaMachine;
  enum class Op : std::uint8_t {
    Number,     // at: of numbers_
    Text,       // at: of texts_
    Logical,    // at: 0 or 1
    Error,      // at: which
    Missing,    // an argument left out
    Reference,  // at: of references_
    Negate,
    Plus,
    Percent,
    Add,
    Subtract,
    Multiply,
    Divide,
    Power,
    Join,
    Equal,
    Unequal,
    Less,
    LessOrEqual,
    Greater,
    GreaterOrEqual,
    Call,    // function, count
    Branch,  // on a false condition to `at`, with an error for its condition on to where a Jump stands before `at`
    Jump
  };
  struct Instruction {
    Op op;
    std::uint8_t function = 0;
    std::uint8_t count = 0;
    std::uint32_t at = 0;
  };

  std::vector<Instruction> code_;
  std::vector<FormulaReference> references_;
  std::vector<double> numbers_;
  std::vector<std::string> texts_;
  bool namesSheets_ = false;
};

// A formula in a cell, of which every cell has its own. What it came to is no part of the contents that undo restores.
struct Formula {
  explicit Formula(std::string_view from) : text(from), code(from) {}
  void Take(FormulaResult result) const;

  std::string text;
  FormulaCode code;
  mutable int type = NumberCell;  // of the result
  mutable double number = 0;
  mutable std::string result;  // a text's or error's
  mutable bool isError = false;
  mutable bool stale = true;                // to be computed when next in a cell
  mutable std::uint32_t node = UINT32_MAX;  // the engine's
};

}  // namespace tellurix
