#include "numeric/ExpressionReduction.h"

#include <fast_float/fast_float.h>

#include <array>
#include <cmath>
#include <span>

#include "kernel/Kernel.h"
#include "numeric/ExpressionFunctions.h"
#include "numeric/Rounding.h"

namespace tellurix {

namespace {

constexpr int DeepestBracket = 500;
constexpr double LargestProduct = 50;                  // of which the factorial is multiplied out
constexpr double LargestInteger = 9007199254740992.0;  // 2^53
constexpr int ModDecimals = 14;
constexpr std::u32string_view PiDigits = U"14159265358979323846D00";
constexpr std::u32string_view EulerDigits = U"71828182845904523536D00";
// A sign after one of these, or at the beginning, belongs to a number; after anything else it is an operator.
constexpr std::u32string_view BeforePlus = U"DE=/\\^*><-";
constexpr std::u32string_view BeforeMinus = U"TRDE=/\\^*><+";

// ---------------------------------------------------------------------------------------------------------------------
// Operations
// ---------------------------------------------------------------------------------------------------------------------

// False beyond the integers of the language.
bool ToWhole(double x, std::int64_t& whole) {
  if (std::fabs(x) > LargestInteger) return false;
  whole = static_cast<std::int64_t>(std::nearbyint(x));
  return true;
}

bool Convert(double x, double& r) {
  r = x;
  return true;
}

bool Power(double a, double b, double& r) {
  r = std::pow(a, b);
  return true;
}

bool Times(double a, double b, double& r) {
  r = a * b;
  return true;
}

bool Over(double a, double b, double& r) {
  if (b == 0) return false;
  r = a / b;
  return true;
}

bool IntegerOver(double a, double b, double& r) {
  std::int64_t numerator = 0, denominator = 0;
  if (!ToWhole(a, numerator) || !ToWhole(b, denominator) || denominator == 0) return false;
  r = static_cast<double>(numerator / denominator);
  return true;
}

bool Mod(double a, double b, double& r) {
  if (b == 0) return false;
  const double quotient = std::trunc(a / b);
  if (!std::isfinite(quotient)) return false;
  r = RoundHalfEven(a - quotient * b, ModDecimals);
  return true;
}

bool Plus(double a, double b, double& r) {
  r = a + b;
  return true;
}

bool Minus(double a, double b, double& r) {
  r = a - b;
  return true;
}

bool Factorial(double x, double& r) {
  if (x < 0) return false;
  if (x > LargestProduct || x != std::floor(x)) {
    r = std::exp(ALOGAM(x + 1));
    return true;
  }
  r = 1;
  for (double factor = 2; factor <= x; ++factor) r *= factor;
  return true;
}

template <typename Holds>
bool Relate(double a, double b, double& r, Holds holds) {
  r = holds(a, b) ? -1 : 0;
  return true;
}

bool Differs(double a, double b, double& r) { return Relate(a, b, r, std::not_equal_to()); }
bool AtMost(double a, double b, double& r) { return Relate(a, b, r, std::less_equal()); }
bool AtLeast(double a, double b, double& r) { return Relate(a, b, r, std::greater_equal()); }
bool Equals(double a, double b, double& r) { return Relate(a, b, r, std::equal_to()); }
bool Below(double a, double b, double& r) { return Relate(a, b, r, std::less()); }
bool Above(double a, double b, double& r) { return Relate(a, b, r, std::greater()); }

bool And(double a, double b, double& r) {
  std::int64_t first = 0, second = 0;
  if (!ToWhole(a, first) || !ToWhole(b, second)) return false;
  r = static_cast<double>(first & second);
  return true;
}

bool Or(double a, double b, double& r) {
  std::int64_t first = 0, second = 0;
  if (!ToWhole(a, first) || !ToWhole(b, second)) return false;
  r = static_cast<double>(first | second);
  return true;
}

struct Operator {
  std::u32string_view word;
  ExpressionOperation operation;
};

constexpr Operator Products[] = {
    {U"*", {.ofTwo = Times}}, {U"/", {.ofTwo = Over}}, {U"\\", {.ofTwo = IntegerOver}}, {U"MOD", {.ofTwo = Mod}}};
// In the order of the search: a word comes before those that it begins with.
constexpr Operator Relations[] = {{U"<>", {.ofTwo = Differs}}, {U"><", {.ofTwo = Differs}}, {U"<=", {.ofTwo = AtMost}},
                                  {U"=<", {.ofTwo = AtMost}},  {U">=", {.ofTwo = AtLeast}}, {U"=>", {.ofTwo = AtLeast}},
                                  {U"=", {.ofTwo = Equals}},   {U"<", {.ofTwo = Below}},    {U">", {.ofTwo = Above}}};
constexpr Operator LogicalWords[] = {{U"AND", {.ofTwo = And}}, {U"OR", {.ofTwo = Or}}};

// ---------------------------------------------------------------------------------------------------------------------
// Text
// ---------------------------------------------------------------------------------------------------------------------

constexpr auto None = std::u32string::npos;

bool IsOneOf(char32_t c, std::u32string_view set) { return set.find(c) != None; }
bool IsSign(char32_t c) { return c == U'+' || c == U'-'; }
bool IsExponentLetter(char32_t c) { return c == U'D' || c == U'E'; }

void ReplaceAll(std::u32string& text, std::u32string_view from, std::u32string_view to) {
  for (auto at = text.find(from); at != None; at = text.find(from, at + to.size())) text.replace(at, from.size(), to);
}

// The number that the whole text is, both D and E before its exponent; nothing for other text and beyond the range.
std::optional<double> ParseNumber(std::u32string_view text, char32_t separator) {
  std::string plain;
  std::size_t i = 0;
  const auto takeDigits = [&] {
    const std::size_t before = i;
    for (; i < text.size() && text[i] >= U'0' && text[i] <= U'9'; ++i) plain += static_cast<char>(text[i]);
    return i - before;
  };
  const auto takeSign = [&] {
    if (i == text.size() || !IsSign(text[i])) return;
    if (text[i++] == U'-') plain += '-';
  };
  takeSign();
  std::size_t digits = takeDigits();
  if (i < text.size() && text[i] == separator) {
    ++i;
    plain += '.';
    digits += takeDigits();
  }
  if (digits == 0) return std::nullopt;
  if (i < text.size() && IsExponentLetter(text[i])) {
    ++i;
    plain += 'E';
    takeSign();
    if (takeDigits() == 0) return std::nullopt;
  }
  if (i != text.size()) return std::nullopt;
  double value = 0;
  fast_float::from_chars(plain.data(), plain.data() + plain.size(), value);
  if (!std::isfinite(value)) return std::nullopt;
  return value + 0.0;
}

// Rounded first, so that the form depends on the digits alone.
std::u32string Digits(double x, char32_t separator) {
  std::u32string digits;
  for (const char c : GeneralText(FifteenDigits(x))) digits += c == '.' ? separator : static_cast<char32_t>(c);
  return digits;
}

bool IsBalanced(std::u32string_view text) {
  constexpr std::array<std::u32string_view, 3> pairs{U"()", U"[]", U"{}"};
  for (const std::u32string_view pair : pairs) {
    int depth = 0;
    for (const char32_t c : text) {
      if (c == pair[0]) ++depth;
      if (c == pair[1] && --depth < 0) return false;
    }
    if (depth != 0) return false;
  }
  return true;
}

std::size_t PartnerOf(std::u32string_view text, std::size_t open) {
  int depth = 0;
  for (std::size_t i = open; i < text.size(); ++i) {
    if (text[i] == U'(') ++depth;
    if (text[i] == U')' && --depth == 0) return i;
  }
  return None;
}

// Whether the sign at `i` is an operator.
bool IsOperatorSign(std::u32string_view text, std::size_t i) {
  return i > 0 && !IsOneOf(text[i - 1], text[i] == U'+' ? BeforePlus : BeforeMinus);
}

// The first of the words in the text: its place, and which one. A word at one of the ends counts when `atEnds`.
template <std::size_t N>
const Operator* FindFirst(std::u32string_view text, const Operator (&words)[N], std::size_t& at, bool atEnds) {
  for (at = atEnds ? 0 : 1; at < text.size(); ++at) {
    for (const Operator& candidate : words) {
      if (text.substr(at).starts_with(candidate.word) && (atEnds || at + candidate.word.size() < text.size())) {
        return &candidate;
      }
    }
  }
  return nullptr;
}

}  // namespace

bool ExpressionOperation::Compute(double a, double b, double& result) const {
  double exact = 0;
  if (!(ofOne ? ofOne(a, exact) : ofTwo(a, b, exact)) || !std::isfinite(exact)) return false;
  result = FifteenDigits(exact);
  return std::isfinite(result);
}

bool AnswerOf(Question question, double x) {
  switch (question) {
    case Question::IsNegative:
      return x < 0;
    case Question::IsZero:
      return x == 0;
    case Question::IsWithoutExponent:
      return x == 0 || (std::fabs(x) >= 1e-4 && std::fabs(x) < 1e15);
  }
  return false;
}

// ---------------------------------------------------------------------------------------------------------------------
// The course of a reduction
// ---------------------------------------------------------------------------------------------------------------------

ExpressionReduction::Outcome ExpressionReduction::Evaluate(Text text, std::u32string_view lastResult,
                                                           Quantity& result) {
  Prepare(text, lastResult);
  Reduce(text, 0);
  const auto number = Failed() ? std::nullopt : ReadWhole(text);
  if (givenUp_) return Outcome::GivenUp;
  if (refused_) return Outcome::Refused;
  if (!number) return Outcome::Malformed;
  result = *number;
  return Outcome::Number;
}

void ExpressionReduction::Prepare(Text& text, std::u32string_view lastResult) const {
  std::erase_if(text, [](char32_t c) { return IsOneOf(c, U" \t\r\n"); });
  if (text.size() > 1 && text.front() == U'=') text.erase(0, 1);
  ReplaceAll(text, U"PI", Text{U'3', separator_} + Text(PiDigits));
  ReplaceAll(text, U"EE", Text{U'2', separator_} + Text(EulerDigits));
  ReplaceAll(text, U"LR", lastResult);
}

void ExpressionReduction::Reduce(Text& text, int depth) {
  if (!IsBalanced(text) || depth > DeepestBracket) {
    malformed_ = true;
    return;
  }
  ReduceBrackets(text, depth);
  if (Failed() || ReadWhole(text)) return;
  constexpr void (ExpressionReduction::*stages[])(Text&) = {
      &ExpressionReduction::ReduceFunctions, &ExpressionReduction::ReduceFactorials, &ExpressionReduction::CleanSigns,
      &ExpressionReduction::ReducePowers,    &ExpressionReduction::ReduceProducts,   &ExpressionReduction::ReduceSums,
      &ExpressionReduction::ReduceRelations, &ExpressionReduction::ReduceLogic};
  for (const auto stage : stages) {
    if (!Failed()) (this->*stage)(text);
  }
}

void ExpressionReduction::ReduceBrackets(Text& text, int depth) {
  for (auto open = text.find(U'('); open != None && !Failed(); open = text.find(U'(')) {
    const std::size_t close = PartnerOf(text, open);
    Text inner = text.substr(open + 1, close - open - 1);
    if (IsPlainNumber(inner)) {
      text.replace(open, close + 1 - open, inner);
      continue;
    }
    Reduce(inner, depth + 1);
    if (Failed()) return;
    const auto number = ReadWhole(inner);
    if (Failed()) return;
    if (!number) {
      malformed_ = true;
    } else if (IsSymbol(inner.back())) {
      text.replace(open, close + 1 - open, Written(*number));  // has been rounded
    } else {
      Put(text, open, close + 1, {.ofOne = Convert}, *number);
    }
  }
}

void ExpressionReduction::ReduceFunctions(Text& text) {
  for (const ExpressionFunction& function : ExpressionFunctions()) {
    for (auto at = text.find(function.word); at != None && !Failed(); at = text.find(function.word)) {
      if (const auto x = ScanRight(text, at + function.word.size())) {
        Put(text, at, x->edge, {.ofOne = function.compute}, x->number);
      }
    }
  }
}

void ExpressionReduction::ReduceFactorials(Text& text) {
  for (auto mark = text.find(U'!'); mark != None && !Failed(); mark = text.find(U'!')) {
    if (mark > 0 && IsOpenSymbol(text[mark - 1]) && SplitSign(text, mark - 1)) ++mark;
    std::size_t start = mark;
    std::optional<Quantity> x;
    if (start > 0 && IsSymbol(text[start - 1])) {
      x = SymbolOf(text[--start]).number;
      // With an exponent its last digits alone would count.
      givenUp_ = HasNumberBefore(text, start) || !Ask(Question::IsWithoutExponent, *x);
    } else {
      while (start > 0 && IsDigit(text[start - 1])) --start;
      givenUp_ = start < mark && start > 0 && IsSymbol(text[start - 1]);
      x = Literal(std::u32string_view(text).substr(start, mark - start));
    }
    if (!Failed()) Put(text, start, mark + 1, {.ofOne = Factorial}, *x);
  }
}

void ExpressionReduction::CleanSigns(Text& text) {
  ReplaceAll(text, U"++", U"+");
  ReplaceAll(text, U"**", U"^");
  ReplaceAll(text, U"-+", U"-");
  for (std::size_t i = 1; i < text.size(); ++i) {
    if (text[i - 1] == U'-' && IsOpenSymbol(text[i])) SplitSign(text, i);
  }
  ReplaceAll(text, U"--", U"+");
}

void ExpressionReduction::ReducePowers(Text& text) {
  for (auto at = text.find(U'^'); at != None && !Failed(); at = text.find(U'^')) {
    Operate(text, at, 1, {.ofTwo = Power});
  }
}

void ExpressionReduction::ReduceProducts(Text& text) {
  std::size_t at = 0;
  while (!Failed()) {
    const Operator* const product = FindFirst(text, Products, at, true);
    if (!product) return;
    Operate(text, at, product->word.size(), product->operation);
  }
}

void ExpressionReduction::ReduceSums(Text& text) {
  while (!Failed()) {
    const auto at = FindSum(text);
    if (!at) return;
    Operate(text, *at, 1, {.ofTwo = text[*at] == U'+' ? Plus : Minus});
  }
}

void ExpressionReduction::ReduceRelations(Text& text) {
  std::size_t at = 0;
  while (!Failed()) {
    const Operator* const relation = FindFirst(text, Relations, at, false);
    if (!relation) return;
    if (text[at - 1] == U'"') {
      CompareTexts(text, at, relation->word.size(), relation->operation);
    } else {
      Operate(text, at, relation->word.size(), relation->operation);
    }
  }
}

void ExpressionReduction::ReduceLogic(Text& text) {
  for (const Operator& logical : LogicalWords) {
    for (auto at = text.find(logical.word); at != None && !Failed(); at = text.find(logical.word)) {
      Operate(text, at, logical.word.size(), logical.operation);
    }
  }
}

// Compares the quoted text before the relation with the one after it; both are in upper case.
void ExpressionReduction::CompareTexts(Text& text, std::size_t at, std::size_t length,
                                       const ExpressionOperation& operation) {
  const std::size_t rightFrom = at + length;
  const auto leftFrom = at < 2 ? None : text.rfind(U'"', at - 2);
  const auto rightTo = text[rightFrom] == U'"' ? text.find(U'"', rightFrom + 1) : None;
  if (leftFrom == None || rightTo == None) {
    malformed_ = true;
    return;
  }
  const std::u32string_view left = std::u32string_view(text).substr(leftFrom + 1, at - leftFrom - 2);
  const std::u32string_view right = std::u32string_view(text).substr(rightFrom + 1, rightTo - rightFrom - 1);
  for (const std::u32string_view side : {left, right}) {
    for (const char32_t c : side) givenUp_ = givenUp_ || IsSymbol(c);
  }
  const double order = left < right ? -1 : left > right ? 1 : 0;
  const Quantity zero = *Literal(U"0");
  const Quantity one = *Literal(U"1");
  if (!givenUp_) Put(text, leftFrom, rightTo + 1, operation, order < 0 ? one.Negated() : order > 0 ? one : zero, zero);
}

// ---------------------------------------------------------------------------------------------------------------------
// Numbers in the text
// ---------------------------------------------------------------------------------------------------------------------

// Whether the text before `end` ends in a number and the letter of an exponent, with a sign or without.
bool ExpressionReduction::HasExponentLetterBefore(const Text& text, std::size_t end) const {
  if (end > 0 && IsSign(text[end - 1])) --end;
  return end > 1 && IsExponentLetter(text[end - 1]) && IsPartOfNumber(text[end - 2]);
}

// Whether a symbol's digits, which do not begin with a sign, belong to one number with what stands beside them.
bool ExpressionReduction::GrowsTogether(const Text& text, std::size_t symbol) const {
  if (HasNumberBefore(text, symbol) || HasExponentLetterBefore(text, symbol)) return true;
  if (symbol + 1 == text.size()) return false;
  const char32_t next = text[symbol + 1];
  return IsDigit(next) || IsExponentLetter(next) || (IsSymbol(next) && SymbolOf(next).isUnsigned);
}

// Whether the text of a bracket is a number as it would be written.
bool ExpressionReduction::IsPlainNumber(Text& text) {
  if (text.size() == 1 && IsSymbol(text[0])) return true;
  if (text.size() == 2 && IsSign(text[0]) && IsSymbol(text[1])) {
    if (IsOpenSymbol(text[1]) && SplitSign(text, 1)) return false;
    // "-0" is not plain, and comes out of its bracket as "0".
    if (text[0] == U'-' && Ask(Question::IsZero, SymbolOf(text[1]).number)) text = U"0";
    return true;
  }
  const auto value = ParseNumber(text, separator_);
  if (!value) return false;
  const Text digits = Digits(*value, separator_);
  return text == digits || text == U'+' + digits;
}

// The number that the whole text is.
std::optional<Quantity> ExpressionReduction::ReadWhole(Text& text) {
  if (text.size() == 1 && IsSymbol(text[0])) return SymbolOf(text[0]).number;
  if (text.size() == 2 && IsSign(text[0]) && IsSymbol(text[1])) {
    if (IsOpenSymbol(text[1]) && SplitSign(text, 1)) return std::nullopt;
    const Quantity& number = SymbolOf(text[1]).number;
    return text[0] == U'-' ? number.Negated() : number;
  }
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (IsOpenSymbol(text[i]) && HasNumberBefore(text, i) && SplitSign(text, i)) ++i;
    if (IsSymbol(text[i]) && GrowsTogether(text, i)) givenUp_ = true;
  }
  const auto value = ParseNumber(text, separator_);
  if (!value) return std::nullopt;
  return Quantity{*value, recorder_ ? recorder_->Constant(*value) : Operand{}};
}

// The number of a text without symbols; marks the text as malformed when it is none.
std::optional<Quantity> ExpressionReduction::Literal(std::u32string_view digits) {
  const auto value = ParseNumber(digits, separator_);
  if (!value) {
    malformed_ = true;
    return std::nullopt;
  }
  return Quantity{*value, recorder_ ? recorder_->Constant(*value) : Operand{}};
}

// The first "+" or "-" that is an operator.
std::optional<std::size_t> ExpressionReduction::FindSum(Text& text) {
  for (std::size_t i = 1; i < text.size(); ++i) {
    if (IsOpenSymbol(text[i]) && !IsOneOf(text[i - 1], BeforeMinus)) SplitSign(text, i);
    if (IsSign(text[i]) && IsOperatorSign(text, i)) return i;
  }
  return std::nullopt;
}

// Makes the sign of a number that stands as a symbol a character of its own: true when it is negative, and now one
// place further right.
bool ExpressionReduction::SplitSign(Text& text, std::size_t symbol) {
  const Quantity number = SymbolOf(text[symbol]).number;
  if (!Ask(Question::IsNegative, number)) {
    text[symbol] = NewSymbol(number, true);
    return false;
  }
  text[symbol] = NewSymbol(number.Negated(), true);
  text.insert(symbol, 1, U'-');
  return true;
}

// The number that ends before `end`, which moves on with the characters of the text when a sign is split off.
std::optional<ExpressionReduction::Scanned> ExpressionReduction::ScanLeft(Text& text, std::size_t& end) {
  std::size_t start = end;
  std::optional<Quantity> number;
  if (start > 0 && IsSymbol(text[start - 1])) {
    --start;
    if (IsOpenSymbol(text[start])) {
      const bool takesSign = start == 0 || (IsOneOf(text[start - 1], BeforeMinus) &&
                                            (text[start - 1] != U'+' || IsOperatorSign(text, start - 1)));
      if (takesSign && !HasExponentLetterBefore(text, start)) return Scanned{SymbolOf(text[start]).number, start};
      if (SplitSign(text, start)) {
        ++start;
        ++end;
      }
    }
    if (GrowsTogether(text, start)) {
      givenUp_ = true;
      return std::nullopt;
    }
    number = SymbolOf(text[start]).number;
    if (start > 0 && IsSign(text[start - 1]) && !IsOperatorSign(text, start - 1)) {
      if (text[--start] == U'-') number = number->Negated();
    }
    return Scanned{*number, start};
  }
  while (start > 0 && IsDigit(text[start - 1])) --start;
  if (HasExponentLetterBefore(text, start)) {
    start -= IsSign(text[start - 1]) ? 2 : 1;
    while (start > 0 && IsDigit(text[start - 1])) --start;
  }
  if (start < end && HasNumberBefore(text, start)) {
    givenUp_ = true;
    return std::nullopt;
  }
  if (start > 0 && IsSign(text[start - 1]) && !IsOperatorSign(text, start - 1)) --start;
  number = Literal(std::u32string_view(text).substr(start, end - start));
  if (!number) return std::nullopt;
  return Scanned{*number, start};
}

// The number that begins at `start`.
std::optional<ExpressionReduction::Scanned> ExpressionReduction::ScanRight(Text& text, std::size_t start) {
  std::size_t end = start;
  const bool hasSign = end < text.size() && IsSign(text[end]);
  if (hasSign) ++end;
  if (hasSign && end < text.size() && IsOpenSymbol(text[end])) SplitSign(text, end);
  if (end < text.size() && IsSymbol(text[end])) {
    if (end + 1 < text.size() && IsOpenSymbol(text[end + 1])) SplitSign(text, end + 1);
    if (end + 1 < text.size() && (IsPartOfNumber(text[end + 1]) || IsExponentLetter(text[end + 1]))) {
      givenUp_ = true;
      return std::nullopt;
    }
    const Quantity number = SymbolOf(text[end]).number;
    return Scanned{hasSign && text[start] == U'-' ? number.Negated() : number, end + 1};
  }
  bool hasLetter = false;
  for (; end < text.size(); ++end) {
    if (IsOpenSymbol(text[end])) SplitSign(text, end);
    if (IsSymbol(text[end])) {
      givenUp_ = true;
      return std::nullopt;
    }
    const bool isLetter = IsExponentLetter(text[end]) && !hasLetter && end > start && IsDigit(text[end - 1]);
    const bool isExponentSign = IsSign(text[end]) && hasLetter && IsExponentLetter(text[end - 1]);
    if (!IsDigit(text[end]) && !isLetter && !isExponentSign) break;
    hasLetter = hasLetter || isLetter;
  }
  const auto number = Literal(std::u32string_view(text).substr(start, end - start));
  if (!number) return std::nullopt;
  return Scanned{*number, end};
}

// ---------------------------------------------------------------------------------------------------------------------
// Steps
// ---------------------------------------------------------------------------------------------------------------------

// Computes the operator at `at` with the numbers on either side of it.
void ExpressionReduction::Operate(Text& text, std::size_t at, std::size_t length,
                                  const ExpressionOperation& operation) {
  const auto left = ScanLeft(text, at);
  if (!left) return;
  const auto right = ScanRight(text, at + length);
  if (!right) return;
  Put(text, left->edge, right->edge, operation, left->number, right->number);
}

// Puts the result of the operation in place of the text from `from` to `to`.
void ExpressionReduction::Put(Text& text, std::size_t from, std::size_t to, const ExpressionOperation& operation,
                              const Quantity& a, const Quantity& b) {
  Quantity result;
  if (recorder_) result.operand = recorder_->Step(operation, a.operand, b.operand);
  if (operation.Compute(a.value, b.value, result.value)) {
    text.replace(from, to - from, Written(result));
  } else {
    refused_ = true;
  }
}

std::u32string ExpressionReduction::Written(const Quantity& number) {
  if (recorder_) return {NewSymbol(number, false)};
  return Digits(number.value, separator_);
}

bool ExpressionReduction::Ask(Question question, const Quantity& number) {
  const bool answer = AnswerOf(question, number.value);
  recorder_->Asked(question, number.operand, answer);
  return answer;
}

char32_t ExpressionReduction::NewSymbol(const Quantity& number, bool isUnsigned) {
  symbols_.push_back({number, isUnsigned});
  return FirstSymbol + static_cast<char32_t>(symbols_.size() - 1);
}

}  // namespace tellurix
