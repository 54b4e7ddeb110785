// Scales of axes: round first ticks and steps for given limits, and how their labels are written.
#pragma once

#include <string>
#include <vector>

#include "numeric/Regional.h"

namespace tellurix {

// The ticks stand at start, start + step, ..., start + intervals * step; every minorPerMajor-th is labelled.
struct AxisScale {
  int intervals = 20;
  int minorPerMajor = 5;
  double start = 0;
  double step = 0.05;

  double End() const { return Tick(intervals); }
  double Tick(int i) const;  // 0 is exactly 0
};

// The scale for limits. Equal limits become low - 1 and high + 1, limits in the wrong order are exchanged, and where
// one is missing or beyond 1e308 both become 0 and 1: the caller's values are changed.
AxisScale ChooseScale(double& low, double& high);

// One candidate with n intervals: the smallest step of round mantissa with which n intervals reach from low to high.
// Equal limits are changed as above. False, with the scale untouched, for n below 1 or high not above low.
bool TickCandidate(double& low, double& high, int n, AxisScale& scale);

// Moves the scale onto a rounder first tick where that leaves at least 0.7 of it to the data, perhaps with 4 or 5
// intervals more. Answers the score of its step, low for round ones.
int RoundStart(double low, double high, AxisScale& scale);

// Which of two scales takes fewer digits; one with a tick at zero goes before one that spans zero without.
enum class ScaleOrder { Worse, Equal, Better };
ScaleOrder CompareScales(const AxisScale& old, const AxisScale& candidate);

// The format of the labels: "#0.00" and so on, or "Scientific".
std::string AxisNumberFormat(const AxisScale& scale);

// The labelled ticks in order: i of Tick(i), and its label by the axis format. Scientific labels have two decimals;
// where neighbours would then read alike more, or the plain form with as many as it takes if that is shorter. With
// `logarithmic` the ticks are natural logarithms, written as what they are the logarithms of.
struct TickLabel {
  int tick = 0;
  std::string text;
};
std::vector<TickLabel> TickLabels(const AxisScale& scale, const Regional& regional, bool logarithmic = false);

}  // namespace tellurix
