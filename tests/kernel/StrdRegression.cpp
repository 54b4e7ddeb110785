#include "tests/kernel/StrdRegression.h"

#include <algorithm>
#include <boost/multiprecision/cpp_bin_float.hpp>
#include <cmath>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "kernel/LeastSquares.h"
#include "tests/kernel/ExactSolve.h"

namespace tellurix::strd {

namespace {

using Exact = boost::multiprecision::cpp_bin_float_100;

// The degree of the polynomial of a set; 0 where the columns of the file are the predictors.
i32 DegreeOf(const std::string& name) {
  if (name == "Filip") return 10;
  if (name == "Pontius") return 2;
  return name.starts_with("Wampler") ? 5 : 0;
}

std::vector<std::string> WordsOf(const std::string& line) {
  std::istringstream in(line);
  std::vector<std::string> words;
  for (std::string word; in >> word;) words.push_back(word);
  return words;
}

void ReadCertified(const std::vector<std::string>& words, Regression& set) {
  const bool isCoefficient = words.size() >= 3 && words[0].size() >= 2 && words[0][0] == 'B' &&
                             words[0].find_first_not_of("0123456789", 1) == std::string::npos;
  if (isCoefficient) {
    set.coefficients.push_back(std::stod(words[1]));
    set.errors.push_back(std::stod(words[2]));
  } else if (words.size() >= 4 && words[0] == "Residual") {
    set.residualSS = std::stod(words[2]);
  } else if (words.size() >= 4 && words[0] == "Regression") {
    set.regressionSS = std::stod(words[2]);
  }
}

}  // namespace

const std::vector<std::string>& Names() {
  static const std::vector<std::string> names{"Norris",   "Pontius",  "NoInt1",   "NoInt2",   "Filip",   "Longley",
                                              "Wampler1", "Wampler2", "Wampler3", "Wampler4", "Wampler5"};
  return names;
}

Regression Read(const std::string& name) {
  std::ifstream in(std::string(TELLURIX_SOURCE_DIR) + "/tests/data/strd/" + name + ".dat");
  if (!in) throw std::runtime_error("no data set " + name);
  Regression set{.name = name, .intercept = !name.starts_with("NoInt")};
  std::vector<std::vector<f64>> rows;
  std::string line;
  for (int number = 1; std::getline(in, line); ++number) {
    const auto words = WordsOf(line);
    if (number > 28 && number < 60) ReadCertified(words, set);
    if (number < 61 || words.empty()) continue;
    rows.emplace_back();
    for (const auto& word : words) rows.back().push_back(std::stod(word));
  }
  set.rows = static_cast<i32>(rows.size());
  for (const auto& row : rows) set.response.push_back(row[0]);
  for (std::size_t j = 1; j < rows[0].size(); ++j) {
    for (const auto& row : rows) set.design.push_back(row[j]);
  }
  set.columns = static_cast<i32>(rows[0].size()) - 1;
  if (const i32 degree = DegreeOf(name); degree > 0) {
    const auto x = std::exchange(set.design, {});
    set.columns = degree;
    set.design.resize(x.size() * static_cast<std::size_t>(degree));
    set.designLow.resize(set.design.size());
    kernel::PowerColumns(x.data(), set.rows, degree, set.design.data(), set.designLow.data());
  }
  return set;
}

Fit FitOf(const Regression& set, bool rounded) {
  const i32 p = set.columns + (set.intercept ? 1 : 0);
  const auto size = static_cast<std::size_t>(p);
  Fit fit;
  fit.coefficients.resize(size);
  fit.errors.resize(size);
  std::vector<f64> r(size * size);
  std::vector<f64> covariance(size * size);
  std::vector<i32> pivot(size);
  const bool low = !rounded && !set.designLow.empty();
  const GlsqrData data{.rows = set.rows,
                       .columns = set.columns,
                       .responses = 1,
                       .intercept = set.intercept,
                       .design = set.design.data(),
                       .designLeading = set.rows,
                       .designLow = low ? set.designLow.data() : nullptr,
                       .response = set.response.data(),
                       .responseLeading = set.rows,
                       .weights = nullptr};
  fit.sums = {.r = r.data(),
              .rLeading = p,
              .coefficients = fit.coefficients.data(),
              .effects = nullptr,
              .pivot = pivot.data(),
              .totalSS = &fit.totalSS,
              .regressionSS = &fit.regressionSS,
              .residualSS = &fit.residualSS};
  GLSQR(data, 0, fit.sums, fit.status);
  if (fit.status != 0) return fit;
  RCOVARB(p, r.data(), p, fit.residualSS / (fit.sums.rowsUsed - fit.sums.rank), covariance.data(), p, fit.status);
  for (std::size_t j = 0; j < size; ++j) fit.errors[j] = std::sqrt(covariance[j * size + j]);
  return fit;
}

Fit ExactFitOf(const Regression& set, bool rounded) {
  const auto rows = static_cast<std::size_t>(set.rows);
  const std::size_t p = static_cast<std::size_t>(set.columns) + (set.intercept ? 1 : 0);
  const auto at = [&](std::size_t row, std::size_t j) -> Exact {
    if (set.intercept && j-- == 0) return 1;
    if (j == static_cast<std::size_t>(set.columns)) return set.response[row];
    const Exact low = rounded || set.designLow.empty() ? 0.0 : set.designLow[j * rows + row];
    return low + set.design[j * rows + row];
  };
  // Gauss and Jordan on [X'X | I | X'y].
  const std::size_t width = 2 * p + 1;
  accuracy::Rows<Exact> m(p, std::vector<Exact>(width, Exact(0)));
  for (std::size_t i = 0; i < p; ++i) {
    for (std::size_t row = 0; row < rows; ++row) {
      for (std::size_t j = 0; j < p; ++j) m[i][j] += at(row, i) * at(row, j);
      m[i][2 * p] += at(row, i) * at(row, p);
    }
    m[i][p + i] = 1;
  }
  accuracy::Eliminate(m);
  Exact residualSS = 0;
  for (std::size_t row = 0; row < rows; ++row) {
    Exact rest = at(row, p);
    for (std::size_t j = 0; j < p; ++j) rest -= at(row, j) * m[j][2 * p];
    residualSS += rest * rest;
  }
  Fit fit;
  fit.residualSS = static_cast<f64>(residualSS);
  for (std::size_t j = 0; j < p; ++j) {
    fit.coefficients.push_back(static_cast<f64>(m[j][2 * p]));
    fit.errors.push_back(static_cast<f64>(sqrt(m[j][p + j] * residualSS / static_cast<f64>(rows - p))));
  }
  return fit;
}

f64 Lre(f64 value, f64 certified) {
  if (value == certified) return 15;
  const f64 error = std::fabs(value - certified) / (certified == 0 ? 1 : std::fabs(certified));
  return std::min(15.0, -std::log10(error));
}

f64 LeastLre(const std::vector<f64>& values, const std::vector<f64>& certified) {
  f64 least = values.size() == certified.size() && !values.empty() ? 15 : 0;
  for (std::size_t j = 0; j < std::min(values.size(), certified.size()); ++j)
    least = std::min(least, Lre(values[j], certified[j]));
  return least;
}

}  // namespace tellurix::strd
