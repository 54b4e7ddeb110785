// Matched sets with the memory of CLMAIN's fit, and their likelihood by enumeration.
#pragma once

#include <bit>
#include <cmath>
#include <limits>
#include <utility>
#include <vector>

#include "kernel/Kernel.h"

namespace tellurix::matched {

struct Matched {
  i32 columns;
  std::vector<i32> stratum = {};
  std::vector<i32> isCase = {};
  std::vector<f64> covariates = {};  // by columns

  std::vector<f64> b = {};
  std::vector<f64> score = {};
  std::vector<f64> information = {};
  std::vector<f64> covariance = {};
  ClmainFit fit = {};
  i32 status = -1;

  i32 Rows() const { return static_cast<i32>(stratum.size()); }
  f64 X(i32 row, i32 column) const { return covariates[static_cast<std::size_t>(column * Rows() + row)]; }

  Matched& Run(std::vector<f64> start, i32 iterations, f64 accuracy = 1e-12) {
    constexpr f64 NaN = std::numeric_limits<f64>::quiet_NaN();
    const auto p = static_cast<std::size_t>(columns);
    b = std::move(start);
    score.assign(p, NaN);
    information.assign(p * p, NaN);
    covariance.assign(p * p, NaN);
    fit = {b.data(), score.data(), information.data(), covariance.data(), NaN, -1, -1};
    const ClmainData data{Rows(), columns, covariates.data(), Rows(), stratum.data(), isCase.data()};
    CLMAIN(data, accuracy, iterations, fit, status);
    return *this;
  }
};

// Six sets of 4 to 16 members, by congruences.
inline Matched SixSets() {
  Matched data{3};
  const i32 sizes[] = {5, 9, 12, 4, 14, 16};
  for (i32 set = 0; set < 6; ++set)
    data.stratum.insert(data.stratum.end(), static_cast<std::size_t>(sizes[set]), set + 1);
  for (i32 i = 0; i < 60; ++i) data.covariates.push_back((7 * i * i + 3 * i) % 23 / 4.0);
  for (i32 i = 0; i < 60; ++i) data.covariates.push_back((i * i * i + i) % 7);
  for (i32 i = 0; i < 60; ++i) data.covariates.push_back(i % 3 == 1);
  for (i32 i = 0; i < 60; ++i) data.isCase.push_back((5 * i * i + 11 * i) % 17 < 6 + 3 * (i % 3 == 1));
  return data;
}

struct Likelihood {
  f64 value = 0;
  std::vector<f64> score;
  std::vector<f64> information;
};

// The probability of every choice of as many members as are cases, summed; its means and covariances.
inline Likelihood Enumerated(const Matched& data, const std::vector<f64>& b) {
  const auto p = static_cast<std::size_t>(data.columns);
  Likelihood likelihood{0, std::vector<f64>(p, 0.0), std::vector<f64>(p * p, 0.0)};
  for (i32 first = 0, end = 0; first < data.Rows(); first = end) {
    unsigned cases = 0;
    for (end = first; end < data.Rows() &&
                      data.stratum[static_cast<std::size_t>(end)] == data.stratum[static_cast<std::size_t>(first)];
         ++end) {
      if (data.isCase[static_cast<std::size_t>(end)] == 1) cases |= 1u << (end - first);
    }
    const auto sums = [&](unsigned choice) {
      std::vector<f64> sum(p, 0.0);
      for (i32 row = first; row < end; ++row) {
        for (std::size_t j = 0; (choice >> (row - first) & 1) == 1 && j < p; ++j)
          sum[j] += data.X(row, static_cast<i32>(j));
      }
      return sum;
    };
    const auto eta = [&](const std::vector<f64>& sum) {
      f64 total = 0;
      for (std::size_t j = 0; j < p; ++j) total += b[j] * sum[j];
      return total;
    };
    f64 whole = 0;
    std::vector<f64> mean(p, 0.0);
    std::vector<f64> square(p * p, 0.0);
    for (unsigned choice = 0; choice < 1u << (end - first); ++choice) {
      if (std::popcount(choice) != std::popcount(cases)) continue;
      const auto sum = sums(choice);
      const f64 weight = std::exp(eta(sum));
      whole += weight;
      for (std::size_t i = 0; i < p; ++i) {
        mean[i] += weight * sum[i];
        for (std::size_t j = 0; j < p; ++j) square[i * p + j] += weight * sum[i] * sum[j];
      }
    }
    const auto chosen = sums(cases);
    likelihood.value += eta(chosen) - std::log(whole);
    for (std::size_t i = 0; i < p; ++i) {
      likelihood.score[i] += chosen[i] - mean[i] / whole;
      for (std::size_t j = 0; j < p; ++j)
        likelihood.information[i * p + j] += square[i * p + j] / whole - mean[i] / whole * (mean[j] / whole);
    }
  }
  return likelihood;
}

}  // namespace tellurix::matched
