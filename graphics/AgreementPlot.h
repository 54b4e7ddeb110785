// The plot of agreement between two measurements: the differences of the pairs against their means, with lines at the
// mean difference and at the limits of agreement (Bland and Altman 1986, Lancet 327:307-310).
#pragma once

#include <string>
#include <vector>

#include "graphics/Graphics.h"

namespace tellurix {

struct AgreementPlot {
  std::string title;
  std::string xTitle;
  std::string yTitle;
  std::vector<double> means;        // of the pairs
  std::vector<double> differences;  // as many, in the same order
  double meanDifference = 0;
  double lowerLimit = 0;
  double upperLimit = 0;
};

// Limits of the page that hold every pair and the three lines.
void SetAgreementLimits(Page& page, const AgreementPlot& plot);

// Draws it into the open picture, within the limits of the page.
void DrawAgreementPlot(Graphics& graphics, const AgreementPlot& plot);

}  // namespace tellurix
