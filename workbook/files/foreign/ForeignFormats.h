// Number formats and formulas of other programs as ours.
#pragma once

#include <string>
#include <string_view>

#include "workbook/CellLook.h"

namespace tellurix {

// A format code ("0.00", "#,##0", "dd/mm/yyyy hh:mm", "0%"); General for one that we have nothing like.
NumberFormat FormatOfCode(std::string_view code);

// One of the formats that are known by number (ECMA-376 part 1, 18.8.30).
NumberFormat FormatOfNumber(int number);

enum class FormulaGrammar { A1, OpenFormula };

// A formula as ours: with "=", references as Sheet!A1; OpenFormula's "of:=[.A1]+[$Sheet2.B1]" is turned round.
std::string FormulaFrom(std::string_view text, FormulaGrammar grammar);

}  // namespace tellurix
