#include "numeric/Expression.h"

#include <gtest/gtest.h>

#include <cmath>

#include "numeric/Missing.h"

namespace tellurix {
namespace {

struct Case {
  const char* text;
  double value;
};

double Value(std::string_view text, const Regional& regional = {}) {
  return ExpressionEvaluator(regional).EvaluateExpression(text);
}

void ExpectValues(std::initializer_list<Case> cases) {
  for (const Case& c : cases) EXPECT_DOUBLE_EQ(Value(c.text), c.value) << c.text;
}

// What goes into a function has 15 digits.
void ExpectNear(std::initializer_list<Case> cases) {
  for (const Case& c : cases) EXPECT_NEAR(Value(c.text), c.value, 1e-14 * (1 + std::fabs(c.value))) << c.text;
}

void ExpectNoValue(std::initializer_list<const char*> texts) {
  for (const char* text : texts) EXPECT_EQ(Value(text), MissingValue) << text;
}

TEST(ExpressionTest, ArithmeticGoesFromTheLeftByPrecedence) {
  ExpectValues({{"2^3^2", 64},         {"1E3+1", 1001},
                {"1d3 + 1", 1001},     {"2+3*4", 14},
                {"8/4*2", 4},          {"7\\2*3", 9},
                {"17 MOD 5", 2},       {"-17 mod 5", -2},
                {"2*7 MOD 4", 2},      {"10-4-3", 3},
                {"5-3+2", 4},          {"1-3+5", 3},
                {"2.5\\1.5", 1},       {"2**3", 8},
                {"=1+1", 2},           {"0.1+0.2", 0.3},
                {".5*4.", 2},          {"1E-5*1E5", 1},
                {"-1E-3-1E-3", -.002}, {"5.5 MOD 2", 1.5},
                {"2^-1", 0.5},         {"1/3*3", 0.999999999999999}});
  ExpectNoValue({"5 MOD 0", "1/0", "1\\0.4", "", "=", "A", "1+", "*2", "1..2+1", "1E+1E", "1E400", "9E200*9E200", "5%",
                 "%", "0^-1", "(0-8)^0.5", "1E17\\1"});
}

TEST(ExpressionTest, SignsBelongToNumbersUnlessTheyFollowOne) {
  ExpectValues({{"-3^2", 9},    {"5-3^2", -4},     {"5--3^2", 14},   {"5*-3^2", 45},  {"5+-3", 2},
                {"5-+3", 2},    {"5---3", 2},      {"+5", 5},        {"--5", 5},      {"2*-3*-4", 24},
                {"5-2*-3", 11}, {"5-(0-3)^2", 14}, {"3=-3", 0},      {"7 MOD -2", 1}, {"1 OR -2", -1},
                {"NOT -1", 0},  {"1-(-1)", 2},     {"2^-1^2", 0.25}, {"-(-(2))", 2},  {"-0", 0}});
  EXPECT_FALSE(std::signbit(Value("-0")));
  ExpectNoValue({"1 OR +2", "2*--3^"});
}

TEST(ExpressionTest, BracketsGiveWayToTheirNumbers) {
  ExpectValues({{"(2+3)*4", 20},
                {"((2))^((3))", 8},
                {"2(3)", 23},
                {"5(+3)", 8},
                {"(1/3)*3", 0.999999999999999},
                {"PI*1", 3.14159265358979},
                {"(PI)-3", 0.14159265358979},
                {"SQRT((2)+(2))", 2}});
  ExpectNoValue({"(2", "2)", ")2(", "()", "[2]", "{2}", "(2]", "[2+3]*2", "(2+[3])", "(2])[3"});
  std::string deep(2000, '(');
  EXPECT_EQ(Value(deep + "1" + std::string(2000, ')')), MissingValue);
}

// As the table defines them: ARCSEC and ARCCSC take x over the root. Values from of Abramowitz & Stegun, Handbook of
// Mathematical Functions, tables 4.1 to 4.17 and 26.1.
TEST(ExpressionTest, FunctionsFollowTheirTable) {
  ExpectNear({{"LOG(EE)", 1},
              {"ln(10)", 2.30258509299405},
              {"CLOG(100)", 2},
              {"CEXP(3)", 1000},
              {"SQR(9)", 3},
              {"SQRT(9)", 3},
              {"EXP(1)", 2.71828182845905},
              {"ABS(-2)", 2},
              {"SIN(PI/6)", 0.5},
              {"COS(PI/3)", 0.5},
              {"TAN(PI/4)", 1},
              {"SEC(PI/3)", 2},
              {"CSC(PI/6)", 2},
              {"COT(PI/4)", 1},
              {"SINH(1)", 1.1752011936438},
              {"TANH(1)", 0.761594155955765},
              {"SECH(1)", 0.648054273663885},
              {"CSCH(1)", 0.850918128239322},
              {"COTH(1)", 1.31303528549933},
              {"ARCSIN(0.5)*6", 3.14159265358979},
              {"ARCSIN(1)", 0},
              {"ARCCOS(0.5)*3", 3.14159265358979},
              {"ARCTAN(1)*4", 3.14159265358979},
              {"ARCSEC(2)-ARCTAN(2/SQRT(3))", 0},
              {"ARCCSC(2)-ARCSEC(2)", 0},
              {"ARCSEC(-2)+ARCSEC(2)", -1.5707963267949},
              {"ARCCSC(-2)+ARCCSC(2)", -3.14159265358979},
              {"ARCCOT(0)*2", 3.14159265358979},
              {"ARCSINH(1)", 0.881373587019543},
              {"ARCTANH(0.5)", 0.549306144334055},
              {"ARCSECH(0.5)", 1.31695789692482},
              {"ARCCSCH(1)", 0.881373587019543},
              {"ARCCOTH(2)", 0.549306144334055},
              {"LOG!(5)", 4.78749174278205},
              {"ALOGIT(0)", 0.5},
              {"LOGIT(0.75)", 1.09861228866811},
              {"LZ(0)", 0.5},
              {"LZ(1.96)", 0.975002104851780},
              {"UZ(1.96)", 0.0249978951482204},
              {"IZ(0.025)", 1.95996398454005},
              {"DEG(180)", 3.14159265358979},
              {"RAD(PI)", 180},
              {"CINT(2.5)", 2},
              {"CINT(3.5)", 4},
              {"INT(-1.5)", -2},
              {"TRUNC(-1.5)", -1},
              {"FIX(1.9)", 1},
              {"NOT(5)", -6},
              {"SIN(COS(PI/2))", 0}});
  ExpectNoValue({"ARCCOS(1)",    "ARCCOS(-0.1)", "ARCCOSH(2)", "ARCCOSH(0)", "ARCTANH(1)", "ARCTANH(-0.1)",
                 "ARCSECH(0)",   "ARCSECH(1.1)", "ARCCSCH(0)", "ARCCOTH(0)", "ARCCOTH(1)", "ARCCOTH(0.5)",
                 "ARCSIN(-0.5)", "ARCSIN(1.1)",  "ARCSEC(0)",  "ARCSEC(1)",  "ARCCSC(0)",  "ARCCSC(-1)",
                 "CSCH(0)",      "COTH(0)",      "CLOG(0)",    "CEXP(309)",  "CSC(0)",     "COT(0)",
                 "EXP(710)",     "SQRT(-1)",     "IZ(0)",      "IZ(1)",      "LOGIT(2)",   "LOG(0)",
                 "LN(-1)",       "SINH(800)",    "SECH(800)",  "LOG!(-1)",   "COSH(1)",    "SIN COS(0)",
                 "SIN"});
}

TEST(ExpressionTest, FactorialsTakeTheDigitsBeforeThem) {
  ExpectValues({{"0!", 1},
                {"5!", 120},
                {"3!!", 720},
                {"-3!", -6},
                {"2*3!", 12},
                {"1E3!", 1e6},
                {"(2+1)!", 6},
                {"3!4", 64},
                {"0.5!", 0.886226925452758}});
  EXPECT_NEAR(Value("170!") / 7.25741561530799e306, 1, 1e-12);
  ExpectNoValue({"!", "171!", "A!", "1.2.3!"});
}

TEST(ExpressionTest, RelationsAreMinusOneOrZero) {
  ExpectValues({{"3=3", -1},         {"NOT(3=3)", 0},     {"3<>3", 0},         {"3><4", -1},        {"3<=3", -1},
                {"3=<2", 0},         {"3>=4", 0},         {"3=>3", -1},        {"2<3", -1},         {"2>3", 0},
                {"1<2=-1", -1},      {"2+2=4", -1},       {"1=1 AND 2=2", -1}, {"1=1 AND 2=3", 0},  {"1=2 OR 2=2", -1},
                {"6 AND 3", 2},      {"6 OR 3", 7},       {"2.5 AND 3", 2},    {"1 OR 2 AND 0", 1}, {"\"a\"=\"A\"", -1},
                {"\"A\"<\"B\"", -1}, {"\"AB\">\"B\"", 0}, {"(3>2)*5", -5}});
  ExpectNoValue({"3=", "3<", "=3=3=", "\"A\"", "\"A\"=3", "\"A=\"A\"", "1E17 AND 1"});
}

TEST(ExpressionTest, TheLastResultIsLr) {
  const Regional regional;
  ExpressionEvaluator evaluator(regional);
  EXPECT_EQ(evaluator.EvaluateExpression("LR"), 0);
  EXPECT_EQ(evaluator.EvaluateExpression("2*3"), 6);
  EXPECT_EQ(evaluator.EvaluateExpression("LR+1"), 7);
  EXPECT_EQ(evaluator.EvaluateExpression("lr-10"), -3);
  EXPECT_EQ(evaluator.EvaluateExpression("5-LR^2"), 14);
  EXPECT_EQ(evaluator.EvaluateExpression("1/0"), MissingValue);
  EXPECT_EQ(evaluator.EvaluateExpression("LR"), MissingValue);
}

TEST(ExpressionTest, NumbersAreWrittenByTheRegion) {
  const Regional comma{.decimalSymbol = ",", .groupingSymbol = ".", .dateForm = "dd.mm.yyyy"};
  EXPECT_DOUBLE_EQ(Value("1,5*2,5", comma), 3.75);
  EXPECT_DOUBLE_EQ(Value("CLOG(EE)", comma), 0.434294481903253);  // of EE in 15 digits
  EXPECT_EQ(Value("1.5*2", comma), MissingValue);
  EXPECT_TRUE(HasGroupingSymbol("1.000+V1", comma));
  EXPECT_FALSE(HasGroupingSymbol("1,5+V1", comma));
  const Regional blank{.decimalSymbol = ",", .groupingSymbol = " ", .dateForm = ""};
  EXPECT_TRUE(HasGroupingSymbol("1 000", blank));
  EXPECT_FALSE(HasGroupingSymbol("x = x + 1", blank));
}

TEST(ExpressionTest, VariablesStandForTheTextOfTheirNumbers) {
  const Regional regional;
  ExpressionEvaluator evaluator(regional);
  const auto value = [&](const char* text, std::vector<double> values) {
    return RowExpression(evaluator, text, {"V1", "V2", "V10", "X", "VX"}).Evaluate(values);
  };
  EXPECT_EQ(value("5-V1^2", {-3, 0, 0, 0, 0}), 14);
  EXPECT_EQ(value("5-V1^2", {3, 0, 0, 0, 0}), -4);
  EXPECT_EQ(value("v1+V10", {1, 2, 40, 0, 0}), 41);
  EXPECT_EQ(value("V3+1", {1, 2, 40, 0, 0}), MissingValue);
  EXPECT_EQ(value("EXP(X)+FIX(VX)", {0, 0, 0, 0, 7.5}), 8);
  EXPECT_EQ(value("2V1", {5, 0, 0, 0, 0}), 25);
  EXPECT_EQ(value("2V1", {-5, 0, 0, 0, 0}), -3);
  EXPECT_EQ(value("V1E2", {5, 0, 0, 0, 0}), 500);
  EXPECT_EQ(value("5-(-V1)^0", {0, 0, 0, 0, 0}), 4);
  EXPECT_EQ(value("V1=0.3", {0.1 + 0.2, 0, 0, 0, 0}), -1);
  EXPECT_EQ(value("\"V1\"=\"3\"", {3, 0, 0, 0, 0}), -1);
  EXPECT_EQ(value("LR+1", {0, 0, 0, 0, 0}), 0);
}

}  // namespace
}  // namespace tellurix
