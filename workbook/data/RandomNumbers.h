// The Random Numbers menu: new columns of random deviates.
#pragma once

#include "session/Session.h"

namespace tellurix {

// In the order of the menu.
enum class RandomLaw {
  UniformZeroToOne,
  UniformAToB,
  Normal,
  Lognormal,
  Binomial,
  Poisson,
  Gamma,
  Exponential,
  ChiSquare,
  F,
  StudentT,
  Logistic,
  Geometric,
  NegativeBinomial,
  Cauchy,
  Weibull,
  Beta,
};

// Data, Random Numbers: asks how many columns and rows to fill and for the parameters of the law, and writes the
// deviates. One seed (NewSeed) starts the stream, which runs through the columns from the left; every title names it.
void FillRandomNumbers(Session& session, RandomLaw law);

template <RandomLaw law>
void FillRandomNumbers(Session& session) {
  FillRandomNumbers(session, law);
}

}  // namespace tellurix
