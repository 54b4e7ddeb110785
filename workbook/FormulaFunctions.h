// The functions that formulas know, by name.
#pragma once

#include <cstdint>
#include <string_view>

#include "workbook/Formula.h"

namespace tellurix {

enum class FunctionId : std::uint8_t {
  Unknown,
  If,
  // over many values
  Sum,
  Average,
  Min,
  Max,
  Count,
  CountA,
  Median,
  StDev,
  Var,
  Product,
  SumSq,
  And,
  Or,
  // of one number
  Sqrt,
  Ln,
  Log10,
  Exp,
  Abs,
  Int,
  Sin,
  Cos,
  Tan,
  // others
  Round,
  Mod,
  Not,
  Pi,
  Len,
  Trim,
  IsNumber,
  IsBlank
};

struct FormulaFunction {
  std::string_view name;
  FunctionId id;
  std::size_t least;  // arguments
  std::size_t most;
};

const FormulaFunction* FindFunction(std::string_view name);  // without regard to case; null for an unknown one

}  // namespace tellurix
