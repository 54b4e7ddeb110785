// The deviates against their laws: a chi-square test of fit on cells whose probabilities come from the kernel's tails,
// with cells far into both tails, and the first two moments against their exact values. Parameters reach every branch
// of every algorithm. TELLURIX_DRAWS sets the draws a law (default 400 000).

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "kernel/Tails.h"
#include "numeric/Rnd.h"

namespace tellurix {
namespace {

using kernel::Tails;

// The exact moments; the fourth, as excess kurtosis, tells how far the variance of a sample may stray. Nothing where
// the law has none, or one too heavy for the normal approximation.
struct Moments {
  double mean = 0;
  double variance = 0;
  std::optional<double> excess;
};

struct Law {
  std::string name;
  std::function<double(RndFamily&)> draw;
  std::function<Tails(double)> tails;  // P(X <= x) and P(X > x)
  std::optional<Moments> moments;
  bool whole = false;
};

int Draws() {
  const char* wanted = std::getenv("TELLURIX_DRAWS");
  return wanted ? std::atoi(wanted) : 400'000;
}

// ---------------------------------------------------------------------------------------------------------------------
// The test of fit
// ---------------------------------------------------------------------------------------------------------------------

// The smallest x, whole where the law is, with a tail not on the short side of p: P(X <= x) >= p, or P(X > x) <= p.
double Quantile(const Law& law, double p, bool upper) {
  const auto isReached = [&](double x) {
    const Tails at = law.tails(x);
    return upper ? at.upper <= p : at.lower >= p;
  };
  const auto onGrid = [&](double x) { return law.whole ? std::floor(x) : x; };
  double low = -1, high = 1;
  while (isReached(low)) low *= 4;
  while (!isReached(high)) high *= 4;
  for (int i = 0; i < 200; ++i) {
    const double middle = onGrid(low + (high - low) / 2);
    if (middle <= low || middle >= high) break;
    (isReached(middle) ? high : low) = middle;
  }
  return high;
}

// Upper edges of the cells, at least about ten draws expected in each: 200 equal ones, the outer ones split by halves.
std::vector<double> Edges(const Law& law, int draws) {
  std::vector<double> edges;
  for (double p = 10.0 / draws; p < 0.005; p *= 2) {
    edges.push_back(Quantile(law, p, false));
    edges.push_back(Quantile(law, p, true));
  }
  for (int i = 1; i < 200; ++i)
    edges.push_back(i <= 100 ? Quantile(law, i / 200.0, false) : Quantile(law, 1 - i / 200.0, true));
  std::ranges::sort(edges);
  edges.erase(std::unique(edges.begin(), edges.end()), edges.end());
  return edges;
}

std::vector<double> CellProbabilities(const Law& law, const std::vector<double>& edges) {
  std::vector<double> probabilities;
  Tails before{0, 1};
  for (const double edge : edges) {
    const Tails at = law.tails(edge);
    probabilities.push_back(at.lower < 0.5 ? at.lower - before.lower : before.upper - at.upper);
    before = at;
  }
  probabilities.push_back(before.upper);
  return probabilities;
}

// Sums about a known centre, compensated.
class Sum {
 public:
  void Add(double x) {
    const double corrected = x - lost_;
    const double next = sum_ + corrected;
    lost_ = (next - sum_) - corrected;
    sum_ = next;
  }
  double Value() const { return sum_; }

 private:
  double sum_ = 0, lost_ = 0;
};

void ExpectFit(const Law& law, std::int32_t seed) {
  SCOPED_TRACE(law.name);
  const int draws = Draws();
  const std::vector<double> edges = Edges(law, draws);
  const std::vector<double> probabilities = CellProbabilities(law, edges);
  const Moments moments = law.moments.value_or(Moments{});
  std::vector<long> counts(probabilities.size());
  Sum first, second;
  RndFamily rnd;
  rnd.uniform.Seed(seed);
  for (int i = 0; i < draws; ++i) {
    const double x = law.draw(rnd);
    ASSERT_TRUE(std::isfinite(x) && x != MissingValue && (!law.whole || x == std::floor(x))) << x;
    ++counts[static_cast<std::size_t>(std::ranges::lower_bound(edges, x) - edges.begin())];
    const double deviation = x - moments.mean;
    first.Add(deviation);
    second.Add(deviation * deviation);
  }

  // Neighbouring cells are joined until ten draws are expected.
  double chiSquare = 0, expected = 0;
  long count = 0;
  int cells = 0;
  double left = draws;
  for (std::size_t i = 0; i < counts.size(); ++i) {
    expected += draws * probabilities[i];
    count += counts[i];
    left -= draws * probabilities[i];
    if (i + 1 < counts.size() && (expected < 9.5 || left < 9.5)) continue;
    chiSquare += (count - expected) * (count - expected) / expected;
    ++cells;
    expected = 0;
    count = 0;
  }
  ASSERT_GT(cells, 1);
  const double p = kernel::GammaTails((cells - 1) / 2.0, chiSquare / 2).upper;
  EXPECT_TRUE(p > 1e-4 && p < 1 - 1e-4) << "chi-square " << chiSquare << " in " << cells << " cells: P = " << p;

  if (!law.moments) return;
  const double n = draws;
  const double meanZ = first.Value() / std::sqrt(n * moments.variance);
  EXPECT_LT(std::fabs(meanZ), 4) << "of the mean";
  if (!moments.excess) return;
  const double varianceZ = (second.Value() / (n * moments.variance) - 1) * std::sqrt(n / (*moments.excess + 2));
  EXPECT_LT(std::fabs(varianceZ), 4) << "of the variance";
}

void ExpectFits(const std::vector<Law>& laws) {
  std::int32_t seed = 20021;
  for (const Law& law : laws) ExpectFit(law, seed++);
}

// ---------------------------------------------------------------------------------------------------------------------
// The laws
// ---------------------------------------------------------------------------------------------------------------------

std::string Named(const char* name, double a, double b) {
  return std::string(name) + " " + std::to_string(a) + " " + std::to_string(b);
}

// Of a law of positive numbers.
Tails Positive(double x, const std::function<Tails(double)>& tails) { return x > 0 ? tails(x) : Tails{0, 1}; }

// Of an increasing function of an exponential deviate of mean 1.
Tails OfExponential(double x) { return {-std::expm1(-x), std::exp(-x)}; }

Law Gamma(double shape, double scale = 1) {
  return {Named("gamma", shape, scale), [=](RndFamily& rnd) { return rnd.gamma.GenGamma(shape, scale); },
          [=](double x) { return Positive(x, [&](double y) { return kernel::GammaTails(shape, y / scale); }); },
          Moments{shape * scale, shape * scale * scale, 6 / shape}};
}

Law Beta(double a, double b) {
  const double sum = a + b;
  const double excess = 6 * ((a - b) * (a - b) * (sum + 1) - a * b * (sum + 2)) / (a * b * (sum + 2) * (sum + 3));
  return {Named("beta", a, b), [=](RndFamily& rnd) { return rnd.beta.GenBeta(a, b); },
          [=](double x) {
            if (x <= 0) return Tails{0, 1};
            return x >= 1 ? Tails{1, 0} : kernel::BetaTails(x, 1 - x, a, b);
          },
          Moments{a / sum, a * b / (sum * sum * (sum + 1)), excess}};
}

Law Poisson(double mean) {
  return {Named("Poisson", mean, 0), [=](RndFamily& rnd) { return rnd.poisson.GenPoisson(mean); },
          [=](double x) {
            if (x < 0) return Tails{0, 1};
            const Tails gamma = kernel::GammaTails(x + 1, mean);
            return Tails{gamma.upper, gamma.lower};
          },
          Moments{mean, mean, 1 / mean}, true};
}

Law Binomial(std::int32_t n, double p) {
  const double variance = n * p * (1 - p);
  return {Named("binomial", n, p), [=](RndFamily& rnd) { return rnd.binomial.GenBinom(n, p); },
          [=](double x) {
            if (x < 0) return Tails{0, 1};
            if (x >= n) return Tails{1, 0};
            const Tails beta = kernel::BetaTails(p, 1 - p, x + 1, n - x);
            return Tails{beta.upper, beta.lower};
          },
          Moments{n * p, variance, (1 - 6 * p * (1 - p)) / variance}, true};
}

Law NegativeBinomial(double size, double p) {
  const double q = 1 - p;
  return {Named("negative binomial", size, p), [=](RndFamily& rnd) { return rnd.poisson.GenNegbin(size, p); },
          [=](double x) {
            return x < 0 ? Tails{0, 1} : kernel::BetaTails(p, q, size, x + 1);
          },
          Moments{size * q / p, size * q / (p * p), 6 / size + p * p / (q * size)}, true};
}

Law Geometric(double p) {
  const double q = 1 - p;
  return {Named("geometric", p, 0), [=](RndFamily& rnd) { return rnd.poisson.GenGeom(p); },
          [=](double x) {
            if (x < 0) return Tails{0, 1};
            const double exponent = (x + 1) * std::log1p(-p);
            return Tails{-std::expm1(exponent), std::exp(exponent)};
          },
          Moments{q / p, q / (p * p), 6 + p * p / q}, true};
}

TEST(RndFit, Uniform) {
  ExpectFits({{"uniform", [](RndFamily& rnd) { return rnd.uniform.GenUni(); },
               [](double x) {
                 return Tails{std::clamp(x, 0.0, 1.0), std::clamp(1 - x, 0.0, 1.0)};
               },
               Moments{0.5, 1.0 / 12, -1.2}},
              {"uniform -3 to 5", [](RndFamily& rnd) { return rnd.uniform.GenUniAB(5, -3); },
               [](double x) {
                 return Tails{std::clamp((x + 3) / 8, 0.0, 1.0), std::clamp((5 - x) / 8, 0.0, 1.0)};
               },
               Moments{1, 64.0 / 12, -1.2}},
              {"Cauchy 2 3",
               [](RndFamily& rnd) { return rnd.uniform.GenCauchy(2, 3); },
               [](double x) { return kernel::StudentTails((x - 2) / 3, 1); },
               {}},
              {"logistic -1 2", [](RndFamily& rnd) { return rnd.uniform.GenLogistic(-1, 2); },
               [](double x) {
                 const double z = (x + 1) / 2;
                 return Tails{1 / (1 + std::exp(-z)), 1 / (1 + std::exp(z))};
               },
               Moments{-1, 4 * M_PI * M_PI / 3, 1.2}},
              {"Weibull 1.5 2", [](RndFamily& rnd) { return rnd.uniform.GenWeibull(1.5, 2); },
               [](double x) { return Positive(x, [](double y) { return OfExponential(std::pow(y / 2, 1.5)); }); },
               Moments{2 * std::tgamma(1 + 1 / 1.5),
                       4 * (std::tgamma(1 + 2 / 1.5) - std::pow(std::tgamma(1 + 1 / 1.5), 2)),
                       {}}}});
}

TEST(RndFit, NormalAndExponential) {
  ExpectFits(
      {{"normal 10 2", [](RndFamily& rnd) { return rnd.normal.GenNorm(10, 2); },
        [](double x) { return kernel::NormalTails((x - 10) / 2); }, Moments{10, 4, 0.0}},
       {"lognormal", [](RndFamily& rnd) { return rnd.normal.GenLnNorm(std::exp(1), std::exp(0.25)); },
        [](double x) { return Positive(x, [](double y) { return kernel::NormalTails((std::log(y) - 1) / 0.25); }); },
        Moments{std::exp(1 + 0.03125), std::expm1(0.0625) * std::exp(2 + 0.0625), {}}},
       {"exponential", [](RndFamily& rnd) { return rnd.exponential.GenExp(); },
        [](double x) { return Positive(x, OfExponential); }, Moments{1, 1, 6.0}}});
}

// GS; GD with each of its three hats, their borders, and large shapes.
TEST(RndFit, Gamma) {
  ExpectFits({Gamma(0.02), Gamma(0.4, 3), Gamma(0.99), Gamma(1), Gamma(1.3), Gamma(1.8), Gamma(2.5), Gamma(3.2),
              Gamma(3.686), Gamma(3.7), Gamma(8), Gamma(13.022), Gamma(14, 0.2), Gamma(60), Gamma(2000), Gamma(1e6)});
}

TEST(RndFit, RatiosOfGammas) {
  const auto chiSquare = [](double df) {
    Law law = Gamma(df / 2, 2);
    law.name = Named("chi-square", df, 0);
    law.draw = [df](RndFamily& rnd) { return rnd.gamma.GenChiSq(df); };
    return law;
  };
  const auto f = [](double dfn, double dfd) {
    const double mean = dfd / (dfd - 2);
    std::optional<Moments> moments;
    if (dfd > 8) moments = Moments{mean, 2 * mean * mean * (dfn + dfd - 2) / (dfn * (dfd - 4)), {}};
    return Law{Named("F", dfn, dfd), [=](RndFamily& rnd) { return rnd.gamma.GenF(dfn, dfd); },
               [=](double x) { return Positive(x, [&](double y) { return kernel::FTails(y, dfn, dfd); }); }, moments};
  };
  const auto t = [](double df) {
    std::optional<Moments> moments;
    if (df > 4) moments = Moments{0, df / (df - 2), {}};
    if (df > 20) moments->excess = 6 / (df - 4);
    return Law{Named("t", df, 0), [=](RndFamily& rnd) { return rnd.gamma.GenT(df); },
               [=](double x) { return kernel::StudentTails(x, df); }, moments};
  };
  ExpectFits({chiSquare(1), chiSquare(7), f(1, 3), f(5, 12), f(40, 60), t(0.7), t(5), t(30)});
}

// BB and BC, either parameter the larger one.
TEST(RndFit, Beta) {
  ExpectFits({Beta(1.0001, 1.0001), Beta(2, 3), Beta(7, 1.5), Beta(40, 90), Beta(3, 5000), Beta(1e5, 2e5), Beta(1, 1),
              Beta(0.5, 0.5), Beta(0.05, 0.3), Beta(0.3, 4), Beta(30, 0.8), Beta(1, 2.5), Beta(1000, 0.5)});
}

// With tiny parameters a beta deviate lies at either end, beyond what cells of doubles tell apart: only the share of
// the upper one is compared.
TEST(RndFit, TinyBetaParametersFallToEitherEnd) {
  RndFamily rnd;
  rnd.uniform.Seed(20021);
  const int draws = Draws();
  for (const auto& [a, b] : {std::pair{1e-3, 3e-3}, {3e-3, 1e-3}, {2e-5, 1e-5}, {1e-90, 1e-90}}) {
    int upper = 0;
    for (int i = 0; i < draws; ++i) upper += rnd.beta.GenBeta(a, b) > 0.5;
    const double p = a < 1e-50 ? 0.5 : kernel::BetaTails(0.5, 0.5, a, b).upper;
    EXPECT_LT(std::fabs(upper - draws * p) / std::sqrt(draws * p * (1 - p)), 4) << a << " " << b;
  }
}

// Inversion; BTPE from where its squeezes are empty to the most trials.
TEST(RndFit, Binomial) {
  ExpectFits({Binomial(1, 0.3), Binomial(10, 0.25), Binomial(20, 0.9), Binomial(3000, 0.00999),
              Binomial(2147483647, 1e-9), Binomial(60, 0.5), Binomial(100, 0.31), Binomial(100, 0.65),
              Binomial(500, 0.5), Binomial(2000, 0.02), Binomial(20000, 0.3), Binomial(1000000, 0.8),
              Binomial(2147483647, 0.4)});
}

// The table look-up; PD, its small counts by factorials included.
TEST(RndFit, Poisson) {
  ExpectFits({Poisson(0.01), Poisson(0.7), Poisson(3.5), Poisson(9.99), Poisson(10), Poisson(11.5), Poisson(25),
              Poisson(140.3), Poisson(5000), Poisson(1e6), Poisson(1e12)});
}

TEST(RndFit, MixturesOfPoissons) {
  ExpectFits({NegativeBinomial(0.3, 0.05), NegativeBinomial(2.5, 0.4), NegativeBinomial(12, 0.02),
              NegativeBinomial(5, 0.95), Geometric(0.9), Geometric(0.2), Geometric(0.001)});
}

}  // namespace
}  // namespace tellurix
