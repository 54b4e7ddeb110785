// Random expressions, sound ones and broken ones, have the value that the rewriting of their text gives, evaluated once
// as well as row by row.
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdlib>
#include <random>

#include "ExpressionReference.h"
#include "numeric/Expression.h"
#include "numeric/ExpressionFunctions.h"
#include "numeric/Rounding.h"

namespace tellurix {
namespace {

constexpr int Names = 5;
const std::vector<std::string> NameList{"V1", "V2", "V10", "VX", "X"};

class Generator {
 public:
  Generator(std::uint32_t seed, char separator) : random_(seed), separator_(separator) {}

  std::string Expression() {
    std::string text = Relation(0);
    if (Chance(8)) text += One({" AND ", " OR "}) + Relation(0);
    if (Chance(12)) text = "=" + text;
    for (int damage = Below(8) - 5; damage > 0; --damage) Damage(text);
    return text;
  }

  std::vector<double> Values() {
    std::vector<double> values(Names);
    for (double& value : values) value = Number();
    return values;
  }

 private:
  int Below(int n) { return static_cast<int>(random_() % static_cast<std::uint32_t>(n)); }
  bool Chance(int oneIn) { return Below(oneIn) == 0; }
  std::string One(const std::vector<std::string>& choices) {
    return choices[static_cast<std::size_t>(Below(static_cast<int>(choices.size())))];
  }

  std::string Relation(int depth) {
    if (Chance(20))
      return "\"" + One({"A", "b", "B", "3", "V1"}) + "\"" + One({"=", "<", "<>"}) + "\"" + One({"A", "b", "3"}) + "\"";
    std::string text = Sum(depth);
    while (Chance(6)) text += One({"=", "<>", "><", "<=", "=<", ">=", "=>", "<", ">"}) + Sum(depth);
    return text;
  }

  std::string Sum(int depth) {
    std::string text = Product(depth);
    while (Chance(2)) text += One({"+", "-", "+", "-", "--", "+-", "-+", "++", "---"}) + Product(depth);
    return text;
  }

  std::string Product(int depth) {
    std::string text = Power(depth);
    while (Chance(3)) text += One({"*", "/", "\\", " MOD ", "*-", "/+"}) + Power(depth);
    return text;
  }

  std::string Power(int depth) {
    std::string text = Atom(depth);
    while (Chance(6)) text += One({"^", "^", "**", "^-"}) + Atom(depth);
    return text;
  }

  std::string Atom(int depth) {
    switch (Below(12)) {
      case 0:
      case 1:
        if (depth < 3) {
          const std::string pair = One({"()", "()", "()", "()", "()", "()", "()", "[]", "{}"});
          return pair[0] + Relation(depth + 1) + pair[1];
        }
        break;
      case 2:
      case 3:
        if (depth < 3) return Function() + "(" + Sum(depth + 1) + ")";
        break;
      case 4:
        return Function() + Literal();
      case 5:
        return One({"PI", "EE", "LR", "lr"});
      case 6:
        return One({"3", "0", "V1", "(V2)", "12", "1E3"}) + "!";
      case 7:
        return Literal();
      case 8:
        return One({"-", "+", "NOT "}) + Variable();
      default:
        return Variable();
    }
    return Literal();
  }

  std::string Function() {
    const auto functions = ExpressionFunctions();
    const auto& word = functions[static_cast<std::size_t>(Below(static_cast<int>(functions.size())))].word;
    return std::string(word.begin(), word.end());
  }

  std::string Variable() { return One(NameList); }

  std::string Literal() {
    std::string text = GeneralText(Chance(4) ? Number() : Below(20));
    if (Chance(30)) text = One({"1D2", "1E-3", "2.50", ".5", "4.", "0.1234567890123456789", "1E400", "1E-400"});
    if (separator_ != '.') {
      for (char& c : text) c = c == '.' ? separator_ : c;
    }
    return text;
  }

  double Number() {
    switch (Below(10)) {
      case 0:
        return 0;
      case 1:
      case 2:
        return Below(10);
      case 3:
        return -Below(10);
      case 4:
        return (Below(2001) - 1000) / 8.0;
      case 5:
        return (Below(2000001) - 1000000) / 1000003.0;
      case 6:
        return std::ldexp(Below(2000001) - 1000000, Below(200) - 120);
      case 7:
        return std::ldexp(Below(2000001) - 1000000, Below(1900) - 1000);
      case 8:
        return (1 - Below(3) * 1e-15) * std::pow(10, Below(24) - 8);  // beside a power of ten
      default:
        return Below(1000) * One({"1", "-1"}).size();
    }
  }

  // Something is left out, doubled or put in.
  void Damage(std::string& text) {
    if (text.empty()) return;
    const auto at = static_cast<std::size_t>(Below(static_cast<int>(text.size())));
    switch (Below(3)) {
      case 0:
        text.erase(at, 1);
        break;
      case 1:
        text.insert(at, 1, text[at]);
        break;
      default:
        text.insert(at, One({"+",  "-", "(",  ")", "E", "D",   "%", "!", "^",   ".",  ",",
                             "\"", "=", "V1", "X", "5", "NOT", "[", "A", "MOD", "OR", "SIN"}));
    }
  }

  std::mt19937 random_;
  char separator_;
};

bool SameBits(double a, double b) { return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b); }

int Rounds() {
  const char* rounds = std::getenv("TELLURIX_FUZZ_ROUNDS");
  return rounds ? std::max(1000, std::atoi(rounds)) : 100000;
}

void CompareRandomExpressions(char separator, int rounds, std::uint32_t seed) {
  const Regional regional{.decimalSymbol = std::string(1, separator), .groupingSymbol = "", .dateForm = ""};
  Generator generator(seed, separator);
  ExpressionEvaluator evaluator(regional);
  ExpressionReference reference(separator);
  int withValue = 0;
  for (int round = 0; round < rounds; ++round) {
    const std::string text = generator.Expression();
    RowExpression expression(evaluator, text, NameList);
    std::vector<std::vector<double>> rows{generator.Values(), generator.Values()};
    rows.push_back(rows[0]);
    for (double& value : rows.back()) value *= 1.25;  // another number, which takes the same way
    for (const auto& values : rows) {
      std::vector<std::pair<std::string, double>> variables;
      for (std::size_t i = 0; i < values.size(); ++i) variables.emplace_back(NameList[i], values[i]);
      const std::string substituted = reference.Substitute(text, variables);
      const double expected = reference.Evaluate(substituted);
      ExpressionEvaluator once = evaluator;
      const double row = expression.Evaluate(values);
      withValue += expected != 3e300;
      ASSERT_TRUE(SameBits(row, expected))
          << round << ": " << text << " as " << substituted << ": " << row << " " << expected;
      if (&values != rows.data()) continue;
      const double whole = once.EvaluateExpression(substituted);
      ASSERT_TRUE(SameBits(whole, expected)) << round << ": " << substituted << ": " << whole << " " << expected;
    }
  }
  EXPECT_GT(withValue, rounds / 2);  // of three rows
}

TEST(ExpressionFuzzTest, PointAsDecimalSymbol) { CompareRandomExpressions('.', Rounds() * 4 / 5, 1); }
TEST(ExpressionFuzzTest, CommaAsDecimalSymbol) { CompareRandomExpressions(',', Rounds() / 5, 2); }

}  // namespace
}  // namespace tellurix
