#include "numeric/ExpressionFunctions.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "kernel/Kernel.h"
#include "numeric/Missing.h"

namespace tellurix {

namespace {

constexpr double Fault = std::numeric_limits<double>::quiet_NaN();
constexpr double RadiansPerDegree = 0.0174532925199433;
constexpr double DegreesPerRadian = 57.2957795130824;
constexpr double LargestNumber = 1.79769313486231e308;
constexpr double LogitMargin = 1.11022302462516e-16;

double Sign(double x) { return x > 0 ? 1 : x < 0 ? -1 : 0; }

double HalfPi() { return 2 * std::atan(1.0); }

// x / sqrt(x^2 - 1), whose arctangent is taken: no quotient at 1 and -1.
double SecantRatio(double x) {
  const double root = std::sqrt(x * x - 1);
  return root == 0 ? Fault : x / root;
}

// What is divided by exponentials that overflow is a fault, not 0.
double FaultIfInfinite(double x) { return std::isinf(x) ? Fault : x; }

bool ArcSinH(double x, double& r) {
  r = std::log(x + std::sqrt(x * x + 1));
  return true;
}

bool ArcCosH(double x, double& r) {
  if (x > 0) return false;
  r = std::log(x + std::sqrt(x * x - 1));
  return true;
}

bool ArcTanH(double x, double& r) {
  if (x < 0 || x >= 1) return false;
  r = std::log((1 + x) / (1 - x)) / 2;
  return true;
}

bool ArcSecH(double x, double& r) {
  if (x <= 0 || x > 1) return false;
  r = std::log((std::sqrt(1 - x * x) + 1) / x);
  return true;
}

bool ArcCscH(double x, double& r) {
  if (x == 0) return false;
  r = std::log((Sign(x) * std::sqrt(x * x + 1) + 1) / x);
  return true;
}

bool ArcCotH(double x, double& r) {
  if (x == 0) return false;
  r = std::log((x + 1) / (x - 1)) / 2;
  return true;
}

bool ArcSin(double x, double& r) {
  if (x < 0 || x > 1) return false;
  r = x == 1 ? 0 : std::atan(x / std::sqrt(1 - x * x));
  return true;
}

bool ArcCos(double x, double& r) {
  if (x < 0 || x >= 1) return false;
  r = HalfPi() - std::atan(x / std::sqrt(1 - x * x));
  return true;
}

bool ArcTan(double x, double& r) {
  r = std::atan(x);
  return true;
}

bool ArcSec(double x, double& r) {
  if (x == 0) return false;
  r = std::atan(SecantRatio(x)) + HalfPi() * Sign(Sign(x) - 1);
  return true;
}

bool ArcCsc(double x, double& r) {
  if (x == 0) return false;
  r = std::atan(SecantRatio(x)) + (Sign(x) - 1) * HalfPi();
  return true;
}

bool ArcCot(double x, double& r) {
  r = std::atan(x) + HalfPi();
  return true;
}

bool SinH(double x, double& r) {
  r = (std::exp(x) - std::exp(-x)) / 2;
  return true;
}

bool TanH(double x, double& r) {
  r = (std::exp(x) - std::exp(-x)) / (std::exp(x) + std::exp(-x));
  return true;
}

bool SecH(double x, double& r) {
  r = 2 / FaultIfInfinite(std::exp(x) + std::exp(-x));
  return true;
}

bool CscH(double x, double& r) {
  if (x == 0) return false;
  r = 2 / FaultIfInfinite(std::exp(x) - std::exp(-x));
  return true;
}

bool CotH(double x, double& r) {
  if (x == 0) return false;
  r = (std::exp(x) + std::exp(-x)) / (std::exp(x) - std::exp(-x));
  return true;
}

bool CommonLog(double x, double& r) {
  if (x <= 0) return false;
  r = std::log10(x);
  return true;
}

bool CommonExp(double x, double& r) {
  if (x > std::log10(LargestNumber)) return false;
  r = std::pow(10.0, x);
  return true;
}

bool LogFactorial(double x, double& r) {
  r = x < 0 ? MissingValue : ALOGAM(x + 1);
  return true;
}

bool Sec(double x, double& r) {
  r = 1 / std::cos(x);
  return true;
}

bool Csc(double x, double& r) {
  if (x == 0) return false;
  r = 1 / std::sin(x);
  return true;
}

bool Cot(double x, double& r) {
  if (x == 0) return false;
  r = 1 / std::tan(x);
  return true;
}

bool Sin(double x, double& r) {
  r = std::sin(x);
  return true;
}

bool Cos(double x, double& r) {
  r = std::cos(x);
  return true;
}

bool Tan(double x, double& r) {
  r = std::tan(x);
  return true;
}

bool InverseLogit(double x, double& r) {
  const double odds = FaultIfInfinite(std::exp(x));
  r = std::clamp(odds / (1 + odds), 0.0, 1.0);
  return true;
}

bool Exp(double x, double& r) {
  if (x > std::log(LargestNumber)) return false;
  r = std::exp(x);
  return true;
}

bool SquareRoot(double x, double& r) {
  if (x < 0) return false;
  r = std::sqrt(x);
  return true;
}

bool Absolute(double x, double& r) {
  r = std::fabs(x);
  return true;
}

// The complement of a whole number in two's complement, whatever its width.
bool Not(double x, double& r) {
  r = -1 - std::nearbyint(x);
  return true;
}

bool LowerTail(double x, double& r) {
  r = ALNORM(x);
  return true;
}

bool UpperTail(double x, double& r) {
  r = ALNORM(-x);
  return true;
}

bool UpperDeviate(double x, double& r) {
  i32 ifault = 0;
  r = -GAUINV(x, ifault);
  return ifault == 0;
}

bool ToRadians(double x, double& r) {
  r = x * RadiansPerDegree;
  return true;
}

bool ToDegrees(double x, double& r) {
  r = x * DegreesPerRadian;
  return true;
}

bool Logit(double x, double& r) {
  if (x < 0 || x > 1) return false;
  if (x == 0) x = LogitMargin;
  if (x == 1) x = 1 - LogitMargin;
  r = std::log(x / (1 - x));
  return true;
}

bool NaturalLog(double x, double& r) {
  if (x <= 0) return false;
  r = std::log(x);
  return true;
}

bool NearestWhole(double x, double& r) {
  r = std::nearbyint(x);
  return true;
}

bool Floor(double x, double& r) {
  r = std::floor(x);
  return true;
}

bool Truncate(double x, double& r) {
  r = std::trunc(x);
  return true;
}

constexpr ExpressionFunction Functions[] = {
    {U"ARCSINH", ArcSinH}, {U"ARCCOSH", ArcCosH},   {U"ARCTANH", ArcTanH},
    {U"ARCSECH", ArcSecH}, {U"ARCCSCH", ArcCscH},   {U"ARCCOTH", ArcCotH},
    {U"ARCSIN", ArcSin},   {U"ARCCOS", ArcCos},     {U"ARCTAN", ArcTan},
    {U"ARCSEC", ArcSec},   {U"ARCCSC", ArcCsc},     {U"ARCCOT", ArcCot},
    {U"SINH", SinH},       {U"TANH", TanH},         {U"SECH", SecH},
    {U"CSCH", CscH},       {U"COTH", CotH},         {U"CLOG", CommonLog},
    {U"CEXP", CommonExp},  {U"LOG!", LogFactorial}, {U"SEC", Sec},
    {U"CSC", Csc},         {U"COT", Cot},           {U"SIN", Sin},
    {U"COS", Cos},         {U"TAN", Tan},           {U"ALOGIT", InverseLogit},
    {U"EXP", Exp},         {U"SQRT", SquareRoot},   {U"SQR", SquareRoot},
    {U"ABS", Absolute},    {U"NOT", Not},           {U"LZ", LowerTail},
    {U"UZ", UpperTail},    {U"IZ", UpperDeviate},   {U"DEG", ToRadians},
    {U"RAD", ToDegrees},   {U"LOGIT", Logit},       {U"LOG", NaturalLog},
    {U"LN", NaturalLog},   {U"CINT", NearestWhole}, {U"INT", Floor},
    {U"TRUNC", Truncate},  {U"FIX", Truncate},
};

}  // namespace

std::span<const ExpressionFunction> ExpressionFunctions() { return Functions; }

}  // namespace tellurix
