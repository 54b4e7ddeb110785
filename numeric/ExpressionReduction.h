// One reduction of an expression's text to a number, see numeric/Expression.h for the language.
//
// The text is a string of code points. A number that was written back, or a variable, may stand in it as one symbol
// instead of its digits when an ExpressionRecorder is there: the steps taken are then told to the recorder, which plays
// them again for other numbers. Whatever depends on how such a number is written is asked of the recorder as a question
// (is it negative, is it 0), so that the steps hold for all numbers with the same answers. Where digits of the
// text would grow together with the number's own, the recording is given up.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tellurix {

// An operation on one number or on two; one of the functions is null. False when it is refused; a result that is not
// finite is a fault as well.
struct ExpressionOperation {
  bool (*ofOne)(double x, double& result) = nullptr;
  bool (*ofTwo)(double a, double b, double& result) = nullptr;

  // Rounded to 15 digits; false for a refusal or a fault.
  bool Compute(double a, double b, double& result) const;
};

// Where a number of a recorded step comes from.
struct Operand {
  std::uint32_t index = 0;
  bool isConstant = false;
  bool isNegated = false;
};

// A number in the course of a reduction; the operand means something to the recorder alone.
struct Quantity {
  double value = 0;
  Operand operand;

  Quantity Negated() const { return {-value + 0.0, {operand.index, operand.isConstant, !operand.isNegated}}; }
};

enum class Question { IsNegative, IsZero, IsWithoutExponent };

bool AnswerOf(Question question, double x);

// Told the steps of a reduction, in their order.
class ExpressionRecorder {
 public:
  virtual ~ExpressionRecorder() = default;
  virtual Operand Constant(double value) = 0;
  virtual Operand Step(const ExpressionOperation& operation, Operand a, Operand b) = 0;  // where the result will be
  virtual void Asked(Question question, Operand operand, bool answer) = 0;
};

class ExpressionReduction {
 public:
  // `separator` is the decimal symbol; `recorder` may be null.
  ExpressionReduction(char32_t separator, ExpressionRecorder* recorder) : separator_(separator), recorder_(recorder) {}

  // Refused: by an operation, for these numbers. Malformed: whatever the numbers, as far as they answer the questions
  // alike. GivenUp: the recording.
  enum class Outcome { Number, Malformed, Refused, GivenUp };

  // `text`: in upper case, as the caller gives it to EvaluateExpression. `lastResult` is LR.
  Outcome Evaluate(std::u32string text, std::u32string_view lastResult, Quantity& result);

  // The number as it stands in the text: its digits, or a symbol for it when there is a recorder.
  std::u32string Written(const Quantity& number);

 private:
  using Text = std::u32string;
  struct Symbol {
    Quantity number;
    bool isUnsigned = false;  // known not to be negative; otherwise a "-" may be part of it
  };
  struct Scanned {
    Quantity number;
    std::size_t edge = 0;  // the number's other end
  };

  static constexpr char32_t FirstSymbol = 0x200000;  // beyond all characters

  static bool IsSymbol(char32_t c) { return c >= FirstSymbol; }
  bool IsOpenSymbol(char32_t c) const { return IsSymbol(c) && !SymbolOf(c).isUnsigned; }
  const Symbol& SymbolOf(char32_t c) const { return symbols_[c - FirstSymbol]; }
  bool IsDigit(char32_t c) const { return (c >= U'0' && c <= U'9') || c == separator_; }
  bool IsPartOfNumber(char32_t c) const { return IsDigit(c) || IsSymbol(c); }
  bool HasNumberBefore(const Text& text, std::size_t end) const { return end > 0 && IsPartOfNumber(text[end - 1]); }
  bool HasExponentLetterBefore(const Text& text, std::size_t end) const;
  bool GrowsTogether(const Text& text, std::size_t symbol) const;
  bool Failed() const { return malformed_ || refused_ || givenUp_; }

  void Prepare(Text& text, std::u32string_view lastResult) const;
  void Reduce(Text& text, int depth);
  void ReduceBrackets(Text& text, int depth);
  void ReduceFunctions(Text& text);
  void ReduceFactorials(Text& text);
  void CleanSigns(Text& text);
  void ReducePowers(Text& text);
  void ReduceProducts(Text& text);
  void ReduceSums(Text& text);
  void ReduceRelations(Text& text);
  void ReduceLogic(Text& text);
  void CompareTexts(Text& text, std::size_t at, std::size_t length, const ExpressionOperation& operation);

  bool IsPlainNumber(Text& text);
  std::optional<Quantity> ReadWhole(Text& text);
  std::optional<Quantity> Literal(std::u32string_view digits);
  std::optional<std::size_t> FindSum(Text& text);
  bool SplitSign(Text& text, std::size_t symbol);
  std::optional<Scanned> ScanLeft(Text& text, std::size_t& end);
  std::optional<Scanned> ScanRight(Text& text, std::size_t start);

  void Operate(Text& text, std::size_t at, std::size_t length, const ExpressionOperation& operation);
  void Put(Text& text, std::size_t from, std::size_t to, const ExpressionOperation& operation, const Quantity& a,
           const Quantity& b = {});
  bool Ask(Question question, const Quantity& number);
  char32_t NewSymbol(const Quantity& number, bool isUnsigned);

  char32_t separator_;
  ExpressionRecorder* recorder_;
  std::vector<Symbol> symbols_;
  bool malformed_ = false;
  bool refused_ = false;
  bool givenUp_ = false;
};

}  // namespace tellurix
