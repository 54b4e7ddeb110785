// Formulas of xls files: tokens in postfix order ([MS-XLS] 2.5.198) as texts.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tellurix {

// What tokens refer to.
struct XlsNames {
  bool is8 = true;                  // BIFF 8, else 5
  std::vector<std::string> sheets;  // of BIFF 8, by the number that references have; empty: not of this workbook
};

// The text of a formula in a cell (numbered from 1), with "="; nothing where a token is not known here, as with the
// functions that formulas of ours lack.
std::optional<std::string> TextOfTokens(std::string_view tokens, int row, int column, const XlsNames& names);

}  // namespace tellurix
