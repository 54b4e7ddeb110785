// Numbers of twice the precision of a double: an unevaluated sum of two doubles, about 31 digits.
//
// The operations without error are those of D. E. Knuth (1998, The Art of Computer Programming 2, 4.2.2) and T. J.
// Dekker (1971), A floating-point technique for extending the available precision, Numerische Mathematik 18:224-242;
// the arithmetic on pairs is that of Y. Hida, X. S. Li & D. H. Bailey (2001), Algorithms for quad-double precision
// floating point arithmetic, 15th IEEE Symposium on Computer Arithmetic, 155-162. Magnitudes must stay between about
// 1e-140 and 1e290: callers scale.
#pragma once

#include <cmath>

namespace tellurix::kernel {

struct DoubleDouble {
  double high = 0;
  double low = 0;  // at most half a unit in the last place of `high`

  constexpr DoubleDouble() = default;
  constexpr DoubleDouble(double x) : high(x) {}
  constexpr DoubleDouble(double h, double l) : high(h), low(l) {}
  explicit constexpr operator double() const { return high; }
};

// a + b with its error; without conditions, and for |a| >= |b|.
inline DoubleDouble TwoSum(double a, double b) {
  const double sum = a + b;
  const double part = sum - a;
  return {sum, (a - (sum - part)) + (b - part)};
}
inline DoubleDouble QuickTwoSum(double a, double b) {
  const double sum = a + b;
  return {sum, b - (sum - a)};
}

// The upper half of the digits of a.
inline double UpperHalf(double a) {
  const double spread = 134217729.0 * a;  // 2^27 + 1
  return spread - (spread - a);
}

// a * b with its error; the second form takes the halves of `a` as known.
inline DoubleDouble TwoProduct(double a, double aUpper, double aLower, double b) {
  const double product = a * b;
  const double bUpper = UpperHalf(b);
  const double bLower = b - bUpper;
  return {product, ((aUpper * bUpper - product) + aUpper * bLower + aLower * bUpper) + aLower * bLower};
}
inline DoubleDouble TwoProduct(double a, double b) {
  const double aUpper = UpperHalf(a);
  return TwoProduct(a, aUpper, a - aUpper, b);
}

inline DoubleDouble operator+(DoubleDouble a, DoubleDouble b) {
  const DoubleDouble high = TwoSum(a.high, b.high);
  const DoubleDouble low = TwoSum(a.low, b.low);
  const DoubleDouble sum = QuickTwoSum(high.high, high.low + low.high);
  return QuickTwoSum(sum.high, sum.low + low.low);
}
inline DoubleDouble operator-(DoubleDouble a) { return {-a.high, -a.low}; }
inline DoubleDouble operator-(DoubleDouble a, DoubleDouble b) { return a + -b; }
inline DoubleDouble operator*(DoubleDouble a, DoubleDouble b) {
  const DoubleDouble product = TwoProduct(a.high, b.high);
  return QuickTwoSum(product.high, product.low + (a.high * b.low + a.low * b.high));
}
inline DoubleDouble operator/(DoubleDouble a, DoubleDouble b) {
  const double first = a.high / b.high;
  const DoubleDouble rest = a - b * first;
  const double second = rest.high / b.high;
  const DoubleDouble last = rest - b * second;
  return QuickTwoSum(first, second) + DoubleDouble(last.high / b.high);
}
inline DoubleDouble& operator+=(DoubleDouble& a, DoubleDouble b) { return a = a + b; }
inline DoubleDouble& operator-=(DoubleDouble& a, DoubleDouble b) { return a = a - b; }
inline DoubleDouble& operator*=(DoubleDouble& a, DoubleDouble b) { return a = a * b; }
inline bool operator<(DoubleDouble a, DoubleDouble b) { return a.high < b.high || (a.high == b.high && a.low < b.low); }

// The square root of a >= 0: one of Newton's steps from the double's root.
inline DoubleDouble Root(DoubleDouble a) {
  if (!(a.high > 0)) return 0;
  const double root = std::sqrt(a.high);
  return QuickTwoSum(root, (a - TwoProduct(root, root)).high / (2 * root));
}
inline double Root(double a) { return std::sqrt(a); }

// Products with a power of two are exact.
inline DoubleDouble Scaled(DoubleDouble a, double power) { return {a.high * power, a.low * power}; }
inline double Scaled(double a, double power) { return a * power; }

}  // namespace tellurix::kernel
