// Linear equations in numbers of many digits, for references.
#pragma once

#include <cstddef>
#include <vector>

namespace tellurix::accuracy {

template <typename Number>
using Rows = std::vector<std::vector<Number>>;

// By Gauss and Jordan on the rows [A | B] of a definite A, as many columns as there are rows: leaves [I | A^-1 B] and
// returns the determinant of A.
template <typename Number>
Number Eliminate(Rows<Number>& m) {
  Number determinant = 1;
  for (std::size_t i = 0; i < m.size(); ++i) {
    const Number pivot = m[i][i];
    determinant *= pivot;
    for (auto& x : m[i]) x /= pivot;
    for (std::size_t k = 0; k < m.size(); ++k) {
      if (k == i) continue;
      const Number factor = m[k][i];
      for (std::size_t j = 0; j < m[k].size(); ++j) m[k][j] -= factor * m[i][j];
    }
  }
  return determinant;
}

}  // namespace tellurix::accuracy
