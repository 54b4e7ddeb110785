#include "graphics/Scale.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>

#include "numeric/Missing.h"
#include "numeric/Rounding.h"

namespace tellurix {

namespace {

constexpr double Epsilon = 1.11022302462516e-16;
constexpr double AcceptedShare = 0.7;  // of a scale that must lie within the data limits

double Log10(double v) { return std::log(v) / std::log(10.0); }

// 10^exponent, the nearest double.
double PowerOfTen(int exponent) { return std::pow(10.0, exponent); }

// The power of ten that brings v to a mantissa of 0.1 and more, as far as the logarithm tells.
int MantissaPower(double v) { return static_cast<int>(std::trunc(Log10(std::fabs(v)))) + 1; }

// In two steps, as 10^power itself may be beyond the range of a double.
double Mantissa(double v) {
  const int power = MantissaPower(v);
  return v / PowerOfTen(power / 2) / PowerOfTen(power - power / 2);
}

bool Alike(double a, double b) { return std::fabs(a - b) <= 1e-12 * std::fabs(b); }

// The interval between labels, which is what a reader counts in.
double LabelledStep(const AxisScale& scale) { return scale.intervals % 5 == 0 ? 5 * scale.step : 4 * scale.step; }

// A scale reaches beyond its limits, and must not leave the range of a double.
bool IsUsableLimit(double v) { return std::fabs(v) <= 1e308 && std::fabs(v) != MissingValue; }

// The smallest round step not below d: a mantissa times a power of ten. Nothing where d is too small for doubles.
std::optional<double> RoundStep(double d) {
  constexpr std::array mantissas{0.1, 0.15, 0.2, 0.25, 0.4, 0.5, 0.6, 0.75, 0.8};
  const int exponent = ToInteger(Log10(d) - 2);
  for (int i = 0; i < 11; ++i) {
    const double power = PowerOfTen(exponent + i);
    for (const double mantissa : mantissas) {
      if (mantissa * power >= d) return mantissa * power;
    }
  }
  return std::nullopt;
}

// Drops trailing digits of the start as long as the scale still reaches `high`.
double ShortenStart(double start, double step, int n, double high) {
  const double reach = (n + 0.04) * step;
  const double top = reach + start;
  const double widest = std::fabs(top) < std::fabs(start) ? std::fabs(start) : std::fabs(top);
  const int k = widest > 0 ? std::max(0, ToInteger(Log10(widest) + 1)) : 0;
  int m = ToInteger(Log10(step) - 2.5);
  if (m > 0) m = -m;
  if (k + m >= 10) return start;
  double candidate = start, shortened = start;
  for (int i = 1; i <= 9; ++i) {
    if (!(reach + candidate >= high)) break;
    shortened = candidate;
    const double power = PowerOfTen(i - m);  // of the negative exponent's opposite, which is a whole number
    if (!std::isfinite(power)) break;
    candidate = start / power;
    if (candidate < 0) candidate -= 1;
    candidate = std::trunc(candidate) * power;
  }
  return shortened + 0.0;  // never -0
}

// The score of one value: low for mantissas that are easy to count in.
int RoundnessOf(double v) {
  const double m = std::fabs(Mantissa(v));
  if (m == 0 || Alike(m, 1)) return 0;
  if (Alike(m, 0.5) || Alike(m, 0.1)) return 1;
  if (Alike(m, 0.2) || Alike(m, 0.3)) return 2;
  if (Alike(m, 0.4) || Alike(m, 0.6)) return 3;
  return 4;
}

int DigitCount(double v) {
  if (v == 0) return 0;
  const std::string text = GeneralText(Mantissa(v));
  return text == "1" ? 1 : static_cast<int>(text.size()) - 2;
}

// Within what is lost when a tick is computed, which grows with the first tick.
bool HitsZero(const AxisScale& scale) {
  const double tolerance = 10 * Epsilon * std::max(1.0, std::fabs(scale.start));
  for (int i = 0; i <= scale.intervals; ++i) {
    if (std::fabs(scale.start + i * scale.step) <= tolerance) return true;
  }
  return false;
}

bool IsOnOneSide(const AxisScale& scale) { return scale.start >= 0 || scale.End() <= 0; }

// Decimals that the default text of v shows; -1 where that text has an exponent.
int DecimalsOf(double v) {
  const std::string text = GeneralText(v);
  if (text.find('E') != std::string::npos) return -1;
  const auto point = text.find('.');
  return point == std::string::npos ? 0 : static_cast<int>(text.size() - point - 1);
}

std::string Scientific(double v, int decimals) { return fmt::format("{:.{}E}", v, decimals); }

// Writes the labels by a function of value and decimals, with as few decimals from `least` on as tell neighbours apart.
template <typename Write>
void WriteApart(const std::vector<double>& values, std::vector<TickLabel>& labels, int least, Write write) {
  for (int decimals = least; decimals <= 15; ++decimals) {
    bool apart = true;
    for (std::size_t i = 0; i < labels.size(); ++i) {
      labels[i].text = write(values[i], decimals);
      if (i > 0 && labels[i].text == labels[i - 1].text) apart = false;
    }
    if (apart) return;
  }
}

std::size_t Longest(const std::vector<TickLabel>& labels) {
  std::size_t longest = 0;
  for (const TickLabel& label : labels) longest = std::max(longest, label.text.size());
  return longest;
}

// Scientific labels. Two decimals mostly do; where more are needed the plain form may be shorter.
void WriteScientific(const std::vector<double>& values, int decimalsOfStep, std::vector<TickLabel>& labels) {
  WriteApart(values, labels, 2, Scientific);
  if (Longest(labels) <= std::size_t{9}) return;
  std::vector<TickLabel> plain = labels;
  WriteApart(values, plain, std::max(0, decimalsOfStep), FixedText);
  if (Longest(plain) < Longest(labels)) labels = std::move(plain);
}

// An antilogarithm, to three figures.
std::string AntilogarithmText(double v) {
  const double x = std::exp(v);
  if (!(x >= 0.001 && x < 1000)) return ScientificText(x);
  const int decimals = std::max(0, 2 - static_cast<int>(std::floor(std::log10(x))));
  return PlainText(x, decimals);
}

}  // namespace

double AxisScale::Tick(int i) const {
  double value = start + i * step;
  if (!std::isfinite(value)) value = 2 * (start / 2 + i * (step / 2));  // i * step alone may be too large
  return std::fabs(value) < 1e-9 * std::fabs(step) ? 0 : value;
}

AxisScale ChooseScale(double& low, double& high) {
  if (!IsUsableLimit(low) || !IsUsableLimit(high)) {
    low = 0;
    high = 1;
  }
  if (low > high) std::swap(low, high);
  if (low == 0 && high == 1) return {20, 5, 0, 0.05};

  AxisScale best;
  TickCandidate(low, high, 20, best);
  int bestScore = RoundStart(low, high, best);
  for (const int n : {15, 25, 16, 24}) {
    AxisScale candidate;
    if (!TickCandidate(low, high, n, candidate)) continue;
    const int score = RoundStart(low, high, candidate);
    const ScaleOrder order = CompareScales(best, candidate);
    if (order == ScaleOrder::Better || (order == ScaleOrder::Equal && score < bestScore)) {
      best = candidate;
      bestScore = score;
    }
  }
  best.minorPerMajor = best.intervals % 5 == 0 ? 5 : 4;
  return best;
}

bool TickCandidate(double& low, double& high, int n, AxisScale& scale) {
  if (low == high) {
    low -= 1;
    high += 1;
    // Beyond 2^53 one is nothing.
    if (low == high) {
      low -= std::fabs(low) * 1e-3;
      high += std::fabs(high) * 1e-3;
    }
  }
  if (n < 1) return false;
  // The difference itself may be beyond the range of a double.
  double d = high / (n + 0.1) - low / (n + 0.1);
  if (std::isfinite(high - low)) d = (high - low) / (n + 0.1);
  if (!(d > 0) || !std::isfinite(d)) return false;

  // Where a double cannot hold smaller steps the walk down would never end.
  d = std::max(d, std::numeric_limits<double>::min());
  double start = 0, step = 0;
  for (bool reaches = false; !reaches; d *= 1.05) {
    const auto round = RoundStep(d);
    if (!round || !std::isfinite(*round)) return false;
    step = *round;
    start = std::trunc((2 * Epsilon + 1) * (low / step)) * step;
    while (start - 0.05 * step > low && start - step < start) start -= step;
    reaches = (n + 0.04) * step + start >= high;
  }
  scale.intervals = n;
  scale.step = step;
  scale.start = ShortenStart(start, step, n, high);
  return true;
}

int RoundStart(double low, double high, AxisScale& scale) {
  constexpr std::array table{1.0, 0.5, 0.1, 0.2, 0.3, 0.4, 0.6, 0.8, 0.7, 0.9, 0.15, 0.25, 0.75, 0.05};
  if (scale.start != 0) {
    const double power = PowerOfTen(MantissaPower(scale.start));
    const auto fits = [&](double c, int n) {
      const double top = n * scale.step + c;
      return c <= low && top >= high && (high - low) / std::fabs(top - c) > AcceptedShare;
    };
    std::optional<double> withFourMore;
    bool finished = false;
    for (const double t : table) {
      const double c = scale.start < 0 ? -t * power : t * power;
      const int n = scale.intervals;
      if (n * scale.step + c >= high) {
        finished = fits(c, n);
      } else if (n % 5 != 0 && n < 24) {
        if (!withFourMore && fits(c, n + 4)) withFourMore = c;
      } else if (n % 5 == 0 && n < 25 && fits(c, n + 5)) {
        scale.intervals = n + 5;
        finished = true;
      }
      if (finished) {
        scale.start = c;
        break;
      }
    }
    if (!finished && withFourMore) {
      scale.start = *withFourMore;
      scale.intervals += 4;
    }
  }
  return RoundnessOf(scale.step) + RoundnessOf(LabelledStep(scale));
}

ScaleOrder CompareScales(const AxisScale& old, const AxisScale& candidate) {
  const auto cost = [](const AxisScale& scale) { return DigitCount(scale.start) + DigitCount(LabelledStep(scale)); };
  const int oldCost = cost(old), newCost = cost(candidate);
  const ScaleOrder verdict = newCost < oldCost    ? ScaleOrder::Better
                             : newCost == oldCost ? ScaleOrder::Equal
                                                  : ScaleOrder::Worse;
  if (IsOnOneSide(old) && IsOnOneSide(candidate)) return verdict;
  if (HitsZero(old)) return HitsZero(candidate) ? verdict : ScaleOrder::Worse;
  return HitsZero(candidate) ? ScaleOrder::Better : verdict;
}

std::string AxisNumberFormat(const AxisScale& scale) {
  int decimals = -1;
  if (scale.step >= 1e-6) {
    const int ofStep = DecimalsOf(scale.minorPerMajor * scale.step);
    const int ofStart = DecimalsOf(std::fabs(scale.start));
    decimals = ofStep < 0 || ofStart < 0 ? -1 : std::max(ofStep, ofStart);
  }
  int width = 1;
  const double total =
      std::min(std::fabs(scale.start) + std::fabs(scale.intervals * scale.step), std::numeric_limits<double>::max());
  if (total > 0) width += std::abs(static_cast<int>(std::trunc(Log10(total))));
  if (scale.start < 0) width += 1;
  if (width > 6) decimals = -1;
  std::string format(static_cast<std::size_t>(width - 1), '#');
  format += '0';
  if (decimals > 0) format += "." + std::string(static_cast<std::size_t>(decimals), '0');
  return format.size() > 9 || decimals < 0 ? "Scientific" : format;
}

std::vector<TickLabel> TickLabels(const AxisScale& scale, const Regional& regional, bool logarithmic) {
  std::vector<TickLabel> labels;
  std::vector<double> values;
  for (int i = 0; i <= scale.intervals; i += scale.minorPerMajor) {
    labels.push_back({i, {}});
    values.push_back(scale.Tick(i));
  }
  const std::string format = AxisNumberFormat(scale);
  if (logarithmic) {
    for (std::size_t i = 0; i < labels.size(); ++i) labels[i].text = AntilogarithmText(values[i]);
  } else if (format == "Scientific") {
    WriteScientific(values, DecimalsOf(scale.minorPerMajor * scale.step), labels);
  } else {
    const auto point = format.find('.');
    const int decimals = point == std::string::npos ? 0 : static_cast<int>(format.size() - point - 1);
    for (std::size_t i = 0; i < labels.size(); ++i) labels[i].text = FixedText(values[i], decimals);
  }
  for (TickLabel& label : labels) label.text = Localized(std::move(label.text), regional);
  return labels;
}

}  // namespace tellurix
