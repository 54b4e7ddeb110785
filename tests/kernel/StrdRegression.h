// The linear regression sets of tests/data/strd, read and solved exactly.
#pragma once

#include <string>
#include <vector>

#include "kernel/Kernel.h"

namespace tellurix::strd {

struct Regression {
  std::string name;
  bool intercept = true;
  i32 rows = 0;
  i32 columns = 0;             // of the design, the intercept not counted
  std::vector<f64> design;     // by columns
  std::vector<f64> designLow;  // low-order words; empty where the design is no polynomial
  std::vector<f64> response;
  std::vector<f64> coefficients;  // certified, the intercept first
  std::vector<f64> errors;        // their certified standard errors
  f64 residualSS = 0;             // certified
  f64 regressionSS = 0;           // certified, about the mean with an intercept
};

// The names of the sets, in the order of their difficulty.
const std::vector<std::string>& Names();

Regression Read(const std::string& name);

struct Fit {
  i32 status = 0;
  GlsqrFit sums{};
  std::vector<f64> coefficients;
  std::vector<f64> errors;
  f64 totalSS = 0;
  f64 regressionSS = 0;
  f64 residualSS = 0;
};

// By GLSQR and RCOVARB; without low-order words where `rounded`.
Fit FitOf(const Regression& set, bool rounded = false);

// By the normal equations in 100 digits, of the data as they stand in doubles (with the low-order words unless
// `rounded`).
Fit ExactFitOf(const Regression& set, bool rounded = false);

// The log relative error: agreeing significant digits, 15 at most; of the absolute error where `certified` is 0.
f64 Lre(f64 value, f64 certified);
f64 LeastLre(const std::vector<f64>& values, const std::vector<f64>& certified);

}  // namespace tellurix::strd
