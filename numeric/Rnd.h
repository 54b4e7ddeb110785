// Random deviates of named distributions, drawn from the kernel's one uniform stream (MTRND).
//
// Each class holds references to those it draws through, down to one RndUniform: a Seed of any of them seeds the
// stream, and the same seed gives the same deviates. Parameters outside the range that is named give MissingValue; a
// positive parameter may be at most 1e100 and at least 1e-100. What is worked out for parameters is kept for the next
// call with the same ones.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <utility>

#include "kernel/Kernel.h"
#include "numeric/Missing.h"

namespace tellurix {

// A seed from the clock, 1 to 2147483647.
std::int32_t ClockSeed();

// Whether a parameter that must be above 0 is one that the generators take.
inline bool IsPositiveParameter(double x) { return x >= 1e-100 && x <= 1e100; }

class RndUniform {
 public:
  using SeedSource = std::function<std::int32_t()>;

  // Where nobody has called Seed, the first draw takes a seed from here.
  explicit RndUniform(SeedSource seedSource = ClockSeed) : seedSource_(std::move(seedSource)) {}

  void Seed(std::int32_t seed);

  double GenUni() {  // strictly between 0 and 1
    if (!ready_) Seed(seedSource_());
    return MTRND();
  }
  double GenUniAB(double a, double b);                // from the smaller to the larger
  double GenCauchy(double location, double scale);    // scale above 0
  double GenLogistic(double location, double scale);  // scale above 0
  double GenWeibull(double shape, double scale);      // both above 0

 private:
  SeedSource seedSource_;
  bool ready_ = false;
};

// By inversion (GAUINV) of two uniforms joined into one of 59 bits.
class RndNormal {
 public:
  explicit RndNormal(RndUniform& uniform) : uniform_(uniform) {}

  void Seed(std::int32_t seed) { uniform_.Seed(seed); }

  double GenNorm(double mean, double sd);

  // exp of a normal deviate with mean ln(mean) and standard deviation ln(sd), both arguments above 0: the geometric
  // mean and the geometric standard deviation.
  double GenLnNorm(double mean, double sd);

 private:
  RndUniform& uniform_;
  double mean_ = 1, sd_ = 1, logMean_ = 0, logSd_ = 0;  // of GenLnNorm
};

// J. H. Ahrens & U. Dieter (1972), algorithm SA, Computer methods for sampling from the exponential and normal
// distributions, Communications of the ACM 15:873-882.
class RndExponential {
 public:
  explicit RndExponential(RndUniform& uniform) : uniform_(uniform) {}

  void Seed(std::int32_t seed) { uniform_.Seed(seed); }

  double GenExp();  // of mean 1

 private:
  RndUniform& uniform_;
};

// Shape 1 and above: J. H. Ahrens & U. Dieter (1982), algorithm GD, Generating gamma variates by a modified rejection
// technique, Communications of the ACM 25:47-54. Below: their algorithm GS (1974), Computer methods for sampling from
// gamma, beta, Poisson and binomial distributions, Computing 12:223-246.
class RndGamma {
 public:
  RndGamma(RndUniform& uniform, RndNormal& normal, RndExponential& exponential)
      : uniform_(uniform), normal_(normal), exponential_(exponential) {}

  void Seed(std::int32_t seed) { uniform_.Seed(seed); }

  double GenGamma(double shape, double scale);  // shape above 0, scale 0 or above; mean shape times scale
  double GenChiSq(double df);
  double GenF(double dfn, double dfd);
  double GenT(double df);

 private:
  // What algorithm GD works out of the shape alone.
  struct LargeShape {
    double shape = 0;
    double s2 = 0, s = 0, d = 0;             // step 1
    double q0 = 0, b = 0, sigma = 0, c = 0;  // step 4
    double Quotient(double t) const;         // q(t) of steps 5 and 10, the logarithm of the quotient of densities
  };

  void Prepare(double shape);
  double FromLargeShape(double shape);  // GD
  double FromSmallShape(double shape);  // GS

  RndUniform& uniform_;
  RndNormal& normal_;
  RndExponential& exponential_;
  LargeShape large_;
};

// R. C. H. Cheng (1978), algorithms BB (both parameters above 1) and BC, Generating beta variates with nonintegral
// shape parameters, Communications of the ACM 21:317-322.
class RndBeta {
 public:
  explicit RndBeta(RndUniform& uniform) : uniform_(uniform) {}

  void Seed(std::int32_t seed) { uniform_.Seed(seed); }

  double GenBeta(double a, double b);  // both above 0

 private:
  struct Setup {
    double first = 0, second = 0;    // the parameters as they were given
    double a = 0, b = 0, alpha = 0;  // a the smaller in BB, the larger in BC
    double beta = 0, gamma = 0;      // gamma of BB only
    double k1 = 0, k2 = 0;           // of BC only
  };

  void Prepare(double first, double second);
  double FromBB();
  double FromBC();

  RndUniform& uniform_;
  Setup setup_;
};

// V. Kachitvichyanukul & B. W. Schmeiser (1988), algorithm BTPE, Binomial random variate generation, Communications of
// the ACM 31:216-222; inversion where n min(p, 1 - p) is below 30.
class RndBinomial {
 public:
  explicit RndBinomial(RndUniform& uniform) : uniform_(uniform) {}

  void Seed(std::int32_t seed) { uniform_.Seed(seed); }

  double GenBinom(std::int32_t n, double p);  // n 0 or above, p from 0 to 1

 private:
  struct Setup {
    std::int32_t trials = -1;
    double probability = -1;               // as it was given
    double n = 0, p = 0, q = 0, np = 0;    // p the smaller of both probabilities
    double start = 0;                      // inversion: q to the power n
    double npq = 0, mean = 0, mode = 0;    // BTPE: mean is n p + p
    double xm = 0, xl = 0, xr = 0, c = 0;  // its regions
    double lambdaL = 0, lambdaR = 0;
    double p1 = 0, p2 = 0, p3 = 0, p4 = 0;
  };

  void Prepare(std::int32_t n, double p);
  void PrepareBTPE();
  double FromInversion();
  double FromBTPE();
  bool Accepts(double x, double v) const;  // step 5: whether v lies under the scaled mass function at x

  RndUniform& uniform_;
  Setup setup_;
};

// J. H. Ahrens & U. Dieter (1982), algorithm PD, Computer generation of Poisson deviates from modified normal
// distributions, ACM Transactions on Mathematical Software 8:163-179; below a mean of 10 its table look-up.
class RndPoisson {
 public:
  static constexpr double LargestMean = 1e15;  // beyond, whole numbers are no longer told apart

  RndPoisson(RndUniform& uniform, RndNormal& normal, RndExponential& exponential, RndGamma& gamma)
      : uniform_(uniform), normal_(normal), exponential_(exponential), gamma_(gamma) {}

  void Seed(std::int32_t seed) { uniform_.Seed(seed); }

  double GenPoisson(double mean);           // 0 to LargestMean
  double GenNegbin(double size, double p);  // failures before success number `size` (above 0, any); 0 < p <= 1
  double GenGeom(double p);                 // failures before the first success; 0 < p <= 1

 private:
  static constexpr int TableSize = 35;

  struct LargeMean {
    double mean = -1;
    double s = 0, d = 0, l = 0;                               // step N
    double omega = 0, c = 0, c0 = 0, c1 = 0, c2 = 0, c3 = 0;  // step P
  };
  struct SmallMean {
    double mean = -1;
    double atZero = 0;                               // P(X = 0)
    double term = 0;                                 // P(X = filled)
    int filled = 0;                                  // entries 1 to `filled` of the table are there
    std::array<double, TableSize + 1> cumulative{};  // P(X <= k)
  };
  // Procedure F: the logarithms and factors of both mass functions at k.
  struct Densities {
    double px, py, fx, fy;
  };

  void PrepareLarge(double mean);
  void PrepareSmall(double mean);
  double FromLargeMean(double mean);  // PD, cases of step N on
  double FromSmallMean(double mean);  // the table
  Densities At(double k) const;

  RndUniform& uniform_;
  RndNormal& normal_;
  RndExponential& exponential_;
  RndGamma& gamma_;
  LargeMean large_;
  SmallMean small_;
};

// One of each on one uniform source.
struct RndFamily {
  explicit RndFamily(RndUniform::SeedSource seedSource = ClockSeed) : uniform(std::move(seedSource)) {}
  RndFamily(const RndFamily&) = delete;
  RndFamily& operator=(const RndFamily&) = delete;

  RndUniform uniform;
  RndNormal normal{uniform};
  RndExponential exponential{uniform};
  RndGamma gamma{uniform, normal, exponential};
  RndBeta beta{uniform};
  RndBinomial binomial{uniform};
  RndPoisson poisson{uniform, normal, exponential, gamma};
};

}  // namespace tellurix
