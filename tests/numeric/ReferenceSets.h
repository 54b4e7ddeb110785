// The univariate sets of tests/data/strd with their certified values.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace tellurix {

struct ReferenceSet {
  double mean = 0;
  double sd = 0;
  std::vector<double> data;
};

// The certified values stand after the colon of lines 41 and 42, the data from line 61 on.
inline ReferenceSet ReadReferenceSet(const std::string& name) {
  std::ifstream in(std::string(TELLURIX_SOURCE_DIR) + "/tests/data/strd/" + name + ".dat");
  EXPECT_TRUE(in) << name;
  ReferenceSet set;
  std::string line;
  for (int number = 1; std::getline(in, line); ++number) {
    if (number == 41) set.mean = std::stod(line.substr(line.find(':') + 1));
    if (number == 42) set.sd = std::stod(line.substr(line.find(':') + 1));
    if (number <= 60) continue;
    std::istringstream fields(line);
    for (double x = 0; fields >> x;) set.data.push_back(x);
  }
  return set;
}

inline double LogRelativeError(double got, double certified) {
  const double error = std::fabs(got - certified) / std::fabs(certified);
  return error == 0 ? 15 : std::min(-std::log10(error), 15.0);
}

struct UnivariateSet {
  std::string name;
  std::size_t n;
  double sdDigits;  // that can be had of the standard deviation: reading decimals into doubles bounds them
};

inline std::vector<UnivariateSet> UnivariateSets() {
  return {{"Lew", 200, 14.5},      {"Lottery", 218, 14.5}, {"Mavro", 50, 13},
          {"Michelso", 100, 13.5}, {"NumAcc1", 3, 15},     {"NumAcc2", 1001, 14},
          {"NumAcc3", 1001, 9.4},  {"NumAcc4", 1001, 8.2}, {"PiDigits", 5000, 14.5}};
}

}  // namespace tellurix
