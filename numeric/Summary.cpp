#include "numeric/Summary.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "kernel/Kernel.h"
#include "kernel/Sort.h"
#include "numeric/CompensatedSum.h"
#include "numeric/Probability.h"
#include "numeric/Rounding.h"
#include "numeric/Sorting.h"

namespace tellurix {

namespace {

constexpr double LargestSumOfSquares = 1e300;

// Weights stand for decimals: running weights that differ by less than this share of all are equal.
constexpr double WeightRounding = 1e-14;

struct WeightedValue {
  double x;
  double weight;
};

void SortValues(std::vector<double>& values) {
  std::vector<std::uint64_t> keys(values.size());
  std::ranges::transform(values, keys.begin(), kernel::SortKey);
  kernel::SortKeys(keys);
  std::ranges::transform(keys, values.begin(), kernel::FromSortKey);
}

// The power of 2 by which numbers up to `most` are multiplied so that their fourth powers and sums stay well within
// the doubles.
double ScaleFor(double most) {
  if (most == 0 || !std::isfinite(most)) return 1;
  return std::ldexp(1.0, std::clamp(-std::ilogb(most), -1000, 1000));
}

// The sum of logarithms of positive numbers, by their product in mantissa and exponent.
class LogSum {
 public:
  void Add(double x) {
    int exponent = 0;
    mantissa_ *= std::frexp(x, &exponent);
    exponents_ += exponent;
    if (++factors_ == 500) Settle();
  }
  double Value() {
    Settle();
    return std::log(mantissa_) + static_cast<double>(exponents_) * std::log(2.0);
  }

 private:
  void Settle() {  // before the mantissa, a half or more to a factor, leaves the doubles
    int exponent = 0;
    mantissa_ = std::frexp(mantissa_, &exponent);
    exponents_ += exponent;
    factors_ = 0;
  }

  double mantissa_ = 1;
  std::int64_t exponents_ = 0;
  int factors_ = 0;
};

double GeometricMean(std::span<const double> x, const auto& weight) {
  LogSum logs;
  for (std::size_t i = 0; i < x.size(); ++i) {
    const double product = x[i] * weight(i);
    if (!(product > 0)) return MissingValue;
    logs.Add(product);
  }
  return std::exp(logs.Value() / static_cast<double>(x.size()));
}

struct Moments {
  double sum = 0;
  double mean = 0;
  double deviationScale = 1;  // what the deviations are multiplied by in the sums of their powers
  double squares = 0;
  double cubes = 0;
  double fourths = 0;
};

// Of values in rising order whose weights sum to their number n, or nearly so where the caller has set the scale.
Moments MomentsOf(std::span<const double> x, const auto& weight) {
  const auto n = static_cast<double>(x.size());
  Moments moments;
  // Sums stay as they are but near the end of the doubles.
  const double scale = std::max(std::fabs(x.front()), std::fabs(x.back())) > 0x1p900 ? 0x1p-100 : 1;
  CompensatedSum sum;
  for (std::size_t i = 0; i < x.size(); ++i) sum.Add(x[i] * scale * weight(i));
  moments.sum = sum.Value() / scale;
  moments.mean = sum.Value() / n / scale;

  const double mean = moments.mean;
  moments.deviationScale = ScaleFor(std::max(mean - x.front(), x.back() - mean));
  CompensatedSum squares;
  double deviations = 0, cubes = 0, fourths = 0, total = 0;
  for (std::size_t i = 0; i < x.size(); ++i) {
    const double w = weight(i);
    const double d = (x[i] - mean) * moments.deviationScale;
    const double square = d * d;
    squares.Add(square * w);
    deviations += d * w;
    cubes += square * d * w;
    fourths += square * square * w;
    total += w;
  }
  // The rounding of the mean is made good by the sum of the deviations (Chan, Golub & LeVeque 1983, The American
  // Statistician 37:242-247).
  const double error = total > 0 ? deviations / total : 0;
  moments.squares = std::max(squares.Value() - deviations * error, 0.0);
  moments.cubes = cubes - 3 * error * moments.squares;
  moments.fourths = fourths - 4 * error * cubes;
  return moments;
}

std::string PercentLabel(double percent) { return percent > 0 && percent < 100 ? GeneralText(percent) : ""; }

}  // namespace

// ---------------------------------------------------------------------------------------------------------------------
// The operations
// ---------------------------------------------------------------------------------------------------------------------

void Summary::Reset() {
  const int centileType = CentileType;
  *this = Summary();
  CentileType = centileType;
}

bool Summary::WeightedSummaryFromXK(std::span<const double> x, std::span<const double> weights, std::int32_t count,
                                    std::string_view columnTitle, std::string_view weightTitle, double confidence,
                                    double percentA, double percentB, double scale) {
  Reset();
  CentileType = 1;
  title.append(columnTitle).append(" (weight: ").append(weightTitle).append(")");
  std::vector<WeightedValue> pairs;
  for (std::size_t i = 0; i < static_cast<std::size_t>(std::max(count, 0)); ++i) {
    if (x[i] != MissingValue && weights[i] != MissingValue) pairs.push_back({x[i], weights[i]});
  }
  DxSortArrayMulti(pairs, &WeightedValue::x);
  for (const WeightedValue& pair : pairs) {
    values_.push_back(pair.x);
    weights_.push_back(pair.weight);
  }
  return Describe(confidence, percentA, percentB, scale);
}

bool Summary::FullSummaryFromXSort(std::span<const double> sorted, std::string_view columnTitle, double confidence,
                                   double percentA, double percentB) {
  Reset();
  title = columnTitle;
  std::ranges::copy_if(sorted, std::back_inserter(values_), [](double x) { return x != MissingValue; });
  return Describe(confidence, percentA, percentB, MissingValue);
}

bool Summary::FullSummaryFromX(std::span<const double> x, std::string_view columnTitle, double confidence,
                               double percentA, double percentB) {
  Reset();
  title = columnTitle;
  values_.reserve(x.size());
  std::ranges::copy_if(x, std::back_inserter(values_), [](double value) { return value != MissingValue; });
  SortValues(values_);
  return Describe(confidence, percentA, percentB, MissingValue);
}

bool Summary::FullSummaryFromXK(std::span<const double> x, std::int32_t count, std::string_view columnTitle,
                                double confidence, double percentA, double percentB, int centileType) {
  CentileType = centileType;
  return FullSummaryFromX(x.first(static_cast<std::size_t>(std::max(count, 0))), columnTitle, confidence, percentA,
                          percentB);
}

// ---------------------------------------------------------------------------------------------------------------------
// The core
// ---------------------------------------------------------------------------------------------------------------------

bool Summary::Describe(double confidence, double percentA, double percentB, double scale) {
  if (!(confidence > 0 && confidence < 1)) confidence = 0.95;
  confidenceLabel = GeneralText(RoundHalfEven(confidence * 100, 10)) + "% CL";
  centileALabel = PercentLabel(percentA);
  centileBLabel = PercentLabel(percentB);

  CompensatedSum total;
  for (const double weight : weights_) total.Add(weight);
  const auto size = static_cast<double>(values_.size());
  weightOfN_ = weights_.empty() ? size : total.Value();
  if (values_.empty() || weightOfN_ == 0) {
    values_.clear();
    weights_.clear();
    return false;
  }
  n = static_cast<std::int32_t>(values_.size());
  if (scale == MissingValue) {
    scale = size / weightOfN_;
  } else {
    weightOfN_ = size / scale;
  }

  const auto unitWeight = [](std::size_t) { return 1.0; };
  const auto scaledWeight = [&](std::size_t i) { return weights_[i] * scale; };
  const auto describeMoments = [&](const auto& weight) {
    geometricMean = GeometricMean(values_, weight);
    return MomentsOf(values_, weight);
  };
  const Moments moments = weights_.empty() ? describeMoments(unitWeight) : describeMoments(scaledWeight);
  weightTotal = weights_.empty() ? size : total.Value() * scale;
  sum = std::isfinite(moments.sum) ? moments.sum : MissingValue;
  mean = n == 1 ? values_.front() : moments.mean;
  DescribeOrder(percentA, percentB);
  if (n == 1) return true;
  range = std::isfinite(maximum - minimum) ? maximum - minimum : MissingValue;

  const double unscale = 1 / moments.deviationScale;
  if (!(moments.squares * unscale * unscale <= LargestSumOfSquares)) return true;
  const double scaledVariance = moments.squares / (n - 1);
  variance = scaledVariance * unscale * unscale;
  sd = std::sqrt(scaledVariance) * unscale;
  sem = sd / std::sqrt(size);
  const double half = TFROMP(FoldP((1 - confidence) / 2), static_cast<double>(n - 1)) * sem;
  lowerCL = mean - half;
  upperCL = mean + half;
  if (mean != 0) cv = sd / mean;
  if (moments.squares > 0 && n >= 4) {
    const double m2 = moments.squares / size;
    skewness = moments.cubes / size / (m2 * std::sqrt(m2));
    kurtosis = moments.fourths / size / (m2 * m2);
  }
  return true;
}

void Summary::DescribeOrder(double percentA, double percentB) {
  minimum = Quantile(0);
  lowerQuartile = Quantile(0.25);
  median = Quantile(0.5);
  upperQuartile = Quantile(0.75);
  maximum = Quantile(1);
  if (!centileALabel.empty()) centileA = Quantile(percentA / 100);
  if (!centileBLabel.empty()) centileB = Quantile(percentB / 100);
}

double Summary::Quantile(double p) const {
  if (values_.empty() || !(p >= 0 && p <= 1)) return MissingValue;
  if (p == 0) return values_.front();
  if (p == 1) return values_.back();
  const std::size_t last = values_.size() - 1;
  if (CentileType == 2) {
    const double place = static_cast<double>(values_.size() + 1) * p;
    const double whole = std::floor(place);
    const auto k = static_cast<std::size_t>(whole);
    const std::size_t low = k < 1 ? 0 : std::min(k - 1, last);
    const std::size_t high = std::min(k, last);
    return std::lerp(values_[low], values_[high], place - whole);
  }
  // The place at which the running weight exceeds that of p, and whether the one before it reaches it exactly.
  const double wanted = weightOfN_ * p;
  std::size_t i = 0;
  bool reached = false;
  if (weights_.empty()) {
    const double before = std::floor(wanted);
    i = static_cast<std::size_t>(before);
    reached = before == wanted;
  } else {
    const double rounding = WeightRounding * weightOfN_;
    CompensatedSum running;
    double before = 0;
    while (i <= last) {
      before = running.Value();
      running.Add(weights_[i]);
      if (running.Value() > wanted + rounding) break;
      ++i;
    }
    reached = before >= wanted - rounding;
  }
  if (i > last) return values_[last];
  return reached && i > 0 ? std::midpoint(values_[i - 1], values_[i]) : values_[i];
}

}  // namespace tellurix
