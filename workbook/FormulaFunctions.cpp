// Computing formulas: a machine with a stack of values, and the functions.
#include "workbook/FormulaFunctions.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <numbers>

#include "numeric/Rounding.h"
#include "numeric/Text.h"
#include "workbook/CellColumn.h"

namespace tellurix {

namespace {

constexpr std::size_t Many = 255;

constexpr FormulaFunction Functions[] = {{"IF", FunctionId::If, 2, 3},
                                         {"SUM", FunctionId::Sum, 1, Many},
                                         {"AVERAGE", FunctionId::Average, 1, Many},
                                         {"MIN", FunctionId::Min, 1, Many},
                                         {"MAX", FunctionId::Max, 1, Many},
                                         {"COUNT", FunctionId::Count, 1, Many},
                                         {"COUNTA", FunctionId::CountA, 1, Many},
                                         {"MEDIAN", FunctionId::Median, 1, Many},
                                         {"STDEV", FunctionId::StDev, 1, Many},
                                         {"VAR", FunctionId::Var, 1, Many},
                                         {"PRODUCT", FunctionId::Product, 1, Many},
                                         {"SUMSQ", FunctionId::SumSq, 1, Many},
                                         {"AND", FunctionId::And, 1, Many},
                                         {"OR", FunctionId::Or, 1, Many},
                                         {"SQRT", FunctionId::Sqrt, 1, 1},
                                         {"LN", FunctionId::Ln, 1, 1},
                                         {"LOG10", FunctionId::Log10, 1, 1},
                                         {"EXP", FunctionId::Exp, 1, 1},
                                         {"ABS", FunctionId::Abs, 1, 1},
                                         {"INT", FunctionId::Int, 1, 1},
                                         {"SIN", FunctionId::Sin, 1, 1},
                                         {"COS", FunctionId::Cos, 1, 1},
                                         {"TAN", FunctionId::Tan, 1, 1},
                                         {"ROUND", FunctionId::Round, 2, 2},
                                         {"MOD", FunctionId::Mod, 2, 2},
                                         {"NOT", FunctionId::Not, 1, 1},
                                         {"PI", FunctionId::Pi, 0, 0},
                                         {"LEN", FunctionId::Len, 1, 1},
                                         {"TRIM", FunctionId::Trim, 1, 1},
                                         {"ISNUMBER", FunctionId::IsNumber, 1, 1},
                                         {"ISBLANK", FunctionId::IsBlank, 1, 1}};

// Sums with the lost low parts kept (Neumaier, ZAMM 54, 1974).
class Accumulator {
 public:
  void Add(double x) {
    const double next = sum_ + x;
    lost_ += std::abs(sum_) >= std::abs(x) ? (sum_ - next) + x : (x - next) + sum_;
    sum_ = next;
  }
  double Sum() const { return std::isfinite(sum_) ? sum_ + lost_ : sum_; }

 private:
  double sum_ = 0;
  double lost_ = 0;
};

struct Value {
  enum class Kind : std::uint8_t { Empty, Number, Logical, Text, Error, Area };
  Kind kind = Kind::Empty;
  FormulaError error = FormulaError::Value;
  std::uint32_t area = 0;  // of the references
  double number = 0;       // a logical's 1 or 0
  std::string text;

  static Value Of(double x) {
    if (!std::isfinite(x)) return Of(FormulaError::Number);
    return {Kind::Number, {}, 0, x, {}};
  }
  static Value Of(FormulaError error) { return {Kind::Error, error, 0, 0, {}}; }
  static Value Of(bool value) { return {Kind::Logical, {}, 0, value ? 1.0 : 0.0, {}}; }
  static Value Of(std::string text) { return {Kind::Text, {}, 0, 0, std::move(text)}; }
  bool IsError() const { return kind == Kind::Error; }
};

using Kind = Value::Kind;

// Half away from zero, judged on the 15 digits that a person can see: 2.675 to two places is 2.68.
double RoundedAsShown(double x, double places) {
  if (x == 0 || places > 330) return x;
  if (places < -330) return 0;
  char shown[32];
  std::snprintf(shown, sizeof shown, "%.14e", std::abs(x));
  std::string digits(1, shown[0]);
  digits.append(shown + 2, 14);
  const int exponent = std::atoi(shown + 17);
  // Digits that stay: those before the point and `places` behind.
  const int kept = exponent + 1 + static_cast<int>(places);
  if (kept >= 15) return x;
  if (kept < 0) return 0;
  const bool up = digits[static_cast<std::size_t>(kept)] >= '5';
  digits.resize(static_cast<std::size_t>(kept));
  digits.insert(0, 1, '0');
  if (up) {
    auto at = digits.size() - 1;
    while (digits[at] == '9') digits[at--] = '0';
    ++digits[at];
  }
  const double rounded = std::strtod((digits + "e" + std::to_string(-static_cast<int>(places))).c_str(), nullptr);
  return std::copysign(rounded, x);
}

Value Raised(double base, double exponent) {
  if (base == 0 && exponent == 0) return Value::Of(FormulaError::Number);
  if (base == 0 && exponent < 0) return Value::Of(FormulaError::DivideByZero);
  return Value::Of(std::pow(base, exponent));
}

// The remainder with the sign of the divisor.
Value Remainder(double x, double divisor) {
  if (divisor == 0) return Value::Of(FormulaError::DivideByZero);
  double rest = std::fmod(x, divisor);
  if (rest != 0 && (rest < 0) != (divisor < 0)) rest += divisor;
  return Value::Of(rest);
}

// Without blanks at both ends and with single ones between words.
std::string Trimmed(std::string_view text) {
  std::string words;
  for (const char c : text) {
    if (c != ' ' || (!words.empty() && words.back() != ' ')) words += c;
  }
  if (!words.empty() && words.back() == ' ') words.pop_back();
  return words;
}

}  // namespace

const FormulaFunction* FindFunction(std::string_view name) {
  std::string upper(name);
  for (char& c : upper) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  }
  const auto found = std::find_if(std::begin(Functions), std::end(Functions),
                                  [&](const auto& function) { return function.name == upper; });
  return found == std::end(Functions) ? nullptr : found;
}

class FormulaMachine {
 public:
  FormulaMachine(const FormulaCode& code, const FormulaCells& cells) : code_(code), cells_(cells) { stack_.reserve(8); }

  FormulaResult Run() {
    using Op = FormulaCode::Op;
    for (std::size_t at = 0; at < code_.code_.size(); ++at) {
      const auto& step = code_.code_[at];
      switch (step.op) {
        case Op::Number:
          stack_.push_back(Value::Of(code_.numbers_[step.at]));
          break;
        case Op::Text:
          stack_.push_back(Value::Of(code_.texts_[step.at]));
          break;
        case Op::Logical:
          stack_.push_back(Value::Of(step.at != 0));
          break;
        case Op::Error:
          stack_.push_back(Value::Of(static_cast<FormulaError>(step.at)));
          break;
        case Op::Missing:
          stack_.emplace_back();
          break;
        case Op::Reference:
          stack_.emplace_back();
          stack_.back().kind = Kind::Area;
          stack_.back().area = step.at;
          break;
        case Op::Negate:
        case Op::Plus:
        case Op::Percent:
          Unary(step.op);
          break;
        case Op::Call: {
          const std::size_t first = stack_.size() - step.count;
          Value result = Call(static_cast<FunctionId>(step.function), first);
          stack_.resize(first);
          stack_.push_back(std::move(result));
          break;
        }
        case Op::Branch: {
          Value condition = Truth(Pop());
          if (condition.IsError()) {
            stack_.push_back(std::move(condition));
            at = code_.code_[step.at - 1].at - 1;
          } else if (condition.number == 0) {
            at = step.at - 1;
          }
          break;
        }
        case Op::Jump:
          at = step.at - 1;
          break;
        default:
          Binary(step.op);
          break;
      }
    }
    return Result(Scalar(Pop()));
  }

 private:
  Value Pop() {
    Value value = std::move(stack_.back());
    stack_.pop_back();
    return value;
  }

  const FormulaReference& Area(const Value& value) const { return code_.references_[value.area]; }

  static Value FromCell(const CellView& cell, bool isError) {
    switch (std::abs(cell.type)) {
      case NumberCell:
        return Value::Of(cell.number);
      case LogicalCell:
        return Value::Of(cell.number != 0);
      case TextCell:
        return isError ? Value::Of(ErrorOf(cell.text)) : Value::Of(std::string(cell.text));
      default:
        return {};
    }
  }

  // A reference to one cell gives what is in it; a longer one has no single value.
  Value Scalar(Value value) const {
    if (value.kind != Kind::Area) return value;
    const FormulaReference& ref = Area(value);
    if (ref.sheetIndex < 0) return Value::Of(FormulaError::Reference);
    if (!ref.range.IsOneCell()) return Value::Of(FormulaError::Value);
    const CellColumn* column = cells_.Column(ref.sheetIndex, ref.range.firstColumn);
    if (!column) return {};
    const CellView cell = column->View(ref.range.firstRow);
    bool isError = false;
    if (cell.type == -TextCell) isError = column->FormulaAt(ref.range.firstRow)->isError;
    return FromCell(cell, isError);
  }

  // A number or an error.
  Value Numeric(Value given) const {
    Value value = Scalar(std::move(given));
    if (value.kind == Kind::Text) return Value::Of(FormulaError::Value);
    if (value.kind == Kind::Error) return value;
    return Value::Of(value.number);
  }

  // A logical or an error.
  Value Truth(Value given) const {
    Value value = Numeric(std::move(given));
    return value.IsError() ? value : Value::Of(value.number != 0);
  }

  static std::string Shown(const Value& value) {
    switch (value.kind) {
      case Kind::Number:
        return GeneralText(value.number);
      case Kind::Logical:
        return value.number != 0 ? "TRUE" : "FALSE";
      case Kind::Text:
        return value.text;
      default:
        return {};
    }
  }

  void Unary(FormulaCode::Op op) {
    if (op == FormulaCode::Op::Plus) {  // leaves even a text as it is
      Value value = Scalar(Pop());
      stack_.push_back(std::move(value));
      return;
    }
    Value value = Numeric(Pop());
    if (!value.IsError()) value.number = op == FormulaCode::Op::Negate ? -value.number : value.number / 100;
    stack_.push_back(std::move(value));
  }

  // Numbers come before texts, texts before logicals; an empty cell is the other one's zero.
  static int Compare(const Value& a, const Value& b) {
    const auto rank = [](const Value& value, const Value& other) {
      const Kind kind = value.kind == Kind::Empty ? other.kind : value.kind;
      return kind == Kind::Logical ? 2 : kind == Kind::Text ? 1 : 0;
    };
    const int rankA = rank(a, b);
    const int rankB = rank(b, a);
    if (rankA != rankB) return rankA < rankB ? -1 : 1;
    if (rankA == 1) return FoldCase(a.text).compare(FoldCase(b.text));
    return a.number < b.number ? -1 : a.number > b.number;
  }

  void Binary(FormulaCode::Op op) {
    using Op = FormulaCode::Op;
    Value right = Pop();
    Value left = Pop();
    const bool isArithmetic = op >= Op::Add && op <= Op::Power;
    left = isArithmetic ? Numeric(std::move(left)) : Scalar(std::move(left));
    right = isArithmetic ? Numeric(std::move(right)) : Scalar(std::move(right));
    if (left.IsError() || right.IsError()) {
      stack_.push_back(std::move(left.IsError() ? left : right));
      return;
    }
    const auto result = [&] {
      const double a = left.number;
      const double b = right.number;
      switch (op) {
        case Op::Add:
          return Value::Of(a + b);
        case Op::Subtract:
          return Value::Of(a - b);
        case Op::Multiply:
          return Value::Of(a * b);
        case Op::Divide:
          return b == 0 ? Value::Of(FormulaError::DivideByZero) : Value::Of(a / b);
        case Op::Power:
          return Raised(a, b);
        case Op::Join:
          return Value::Of(Shown(left) + Shown(right));
        case Op::Equal:
          return Value::Of(Compare(left, right) == 0);
        case Op::Unequal:
          return Value::Of(Compare(left, right) != 0);
        case Op::Less:
          return Value::Of(Compare(left, right) < 0);
        case Op::LessOrEqual:
          return Value::Of(Compare(left, right) <= 0);
        case Op::Greater:
          return Value::Of(Compare(left, right) > 0);
        default:
          return Value::Of(Compare(left, right) >= 0);
      }
    };
    stack_.push_back(result());
  }

  // Calls one of the four for every value of the arguments; false when there is an error, which is then in error_.
  // Of ranges, `text` and `empty` are told nothing.
  template <typename OnNumber, typename OnLogical, typename OnOther>
  bool Each(std::size_t first, OnNumber number, OnLogical logical, OnOther other) {
    for (std::size_t i = first; i < stack_.size(); ++i) {
      const Value& value = stack_[i];
      switch (value.kind) {
        case Kind::Area:
          if (!EachOf(Area(value), number, logical, other)) return false;
          break;
        case Kind::Error:
          if (!other(value, false)) return Fail(value.error);
          break;
        case Kind::Number:
        case Kind::Empty:  // an argument left out counts as 0
          number(value.number);
          break;
        case Kind::Logical:
          logical(value.number != 0, false);
          break;
        case Kind::Text:
          if (!other(value, false)) return Fail(FormulaError::Value);
          break;
      }
    }
    return true;
  }

  template <typename OnNumber, typename OnLogical, typename OnOther>
  bool EachOf(const FormulaReference& ref, OnNumber number, OnLogical logical, OnOther other) {
    if (ref.sheetIndex < 0) return Fail(FormulaError::Reference);
    const int lastColumn = std::min(ref.range.lastColumn, cells_.LastColumn(ref.sheetIndex));
    for (int c = ref.range.firstColumn; c <= lastColumn; ++c) {
      const CellColumn* column = cells_.Column(ref.sheetIndex, c);
      if (!column) continue;
      const int lastRow = std::min(ref.range.lastRow, column->LastRow());
      for (int row = ref.range.firstRow; row <= lastRow;) {
        const CellColumn::Run run = column->RunAt(row);
        const int end = std::min(run.lastRow, lastRow);
        if (run.numbers) {
          for (int i = 0; i <= end - row; ++i) number(run.numbers[i]);
        } else if (run.type == LogicalCell) {
          for (int r = row; r <= end; ++r) logical(column->Number(r) != 0, true);
        } else if (run.formulas) {
          for (int i = 0; i <= end - row; ++i) {
            const Formula& formula = *run.formulas[i];
            if (formula.type == NumberCell) {
              number(formula.number);
            } else if (formula.type == LogicalCell) {
              logical(formula.number != 0, true);
            } else {
              const Value value = FromCell({TextCell, 0, formula.result}, formula.isError);
              if (!other(value, true)) return Fail(value.IsError() ? value.error : FormulaError::Value);
            }
          }
        } else if (run.type == TextCell) {
          static const Value text = Value::Of(std::string());
          for (int r = row; r <= end; ++r) {
            if (!other(text, true)) return Fail(FormulaError::Value);
          }
        }
        row = end + 1;
      }
    }
    return true;
  }

  bool Fail(FormulaError error) {
    error_ = error;
    return false;
  }

  // Every number that the functions over many values count.
  template <typename OnNumber>
  bool EachNumber(std::size_t first, OnNumber number) {
    return Each(
        first, number,
        [&](bool value, bool isOfRange) {
          if (!isOfRange) number(value ? 1.0 : 0.0);
        },
        [](const Value& value, bool isOfRange) { return isOfRange && !value.IsError(); });
  }

  Value Statistic(FunctionId id, std::size_t first) {
    Accumulator sum;
    double n = 0;
    double least = 0;
    double most = 0;
    double product = 1;
    Accumulator squares;
    std::vector<double> all;
    const auto add = [&](double x) {
      switch (id) {
        case FunctionId::SumSq:
          squares.Add(x * x);
          break;
        case FunctionId::Product:
          product *= x;
          break;
        case FunctionId::Median:
          all.push_back(x);
          break;
        case FunctionId::Min:
          least = n == 0 ? x : std::min(least, x);
          break;
        case FunctionId::Max:
          most = n == 0 ? x : std::max(most, x);
          break;
        default:
          sum.Add(x);
          break;
      }
      ++n;
    };
    if (!EachNumber(first, add)) return Value::Of(error_);
    switch (id) {
      case FunctionId::Sum:
        return Value::Of(sum.Sum());
      case FunctionId::Average:
        return n == 0 ? Value::Of(FormulaError::DivideByZero) : Value::Of(sum.Sum() / n);
      case FunctionId::Min:
        return Value::Of(least);
      case FunctionId::Max:
        return Value::Of(most);
      case FunctionId::Product:
        return Value::Of(n == 0 ? 0.0 : product);
      case FunctionId::SumSq:
        return Value::Of(squares.Sum());
      case FunctionId::Median: {
        if (all.empty()) return Value::Of(FormulaError::Number);
        const auto middle = all.begin() + static_cast<std::ptrdiff_t>(all.size() / 2);
        std::nth_element(all.begin(), middle, all.end());
        if (all.size() % 2) return Value::Of(*middle);
        const double below = *std::max_element(all.begin(), middle);
        return Value::Of(below + (*middle - below) / 2);
      }
      default:
        break;
    }
    // The variance in two passes, the second corrected for the rounding of the mean.
    if (n < 2) return Value::Of(FormulaError::DivideByZero);
    const double mean = sum.Sum() / n;
    Accumulator deviations;
    EachNumber(first, [&](double x) {
      squares.Add((x - mean) * (x - mean));
      deviations.Add(x - mean);
    });
    const double rest = deviations.Sum();
    const double variance = std::max(0.0, (squares.Sum() - rest * rest / n) / (n - 1));
    return Value::Of(id == FunctionId::Var ? variance : std::sqrt(variance));
  }

  Value Counted(FunctionId id, std::size_t first) {
    double n = 0;
    const bool all = id == FunctionId::CountA;
    const bool whole = Each(
        first, [&](double) { ++n; },
        [&](bool, bool isOfRange) {
          if (all || !isOfRange) ++n;
        },
        [&](const Value&, bool) {
          if (all) ++n;
          return true;
        });
    return whole ? Value::Of(n) : Value::Of(error_);
  }

  Value Junction(bool isAnd, std::size_t first) {
    bool any = false;
    bool result = isAnd;
    const auto take = [&](bool value) {
      any = true;
      result = isAnd ? result && value : result || value;
    };
    const bool whole = Each(
        first, [&](double x) { take(x != 0); }, [&](bool value, bool) { take(value); },
        [](const Value& value, bool isOfRange) { return isOfRange && !value.IsError(); });
    if (!whole) return Value::Of(error_);
    return any ? Value::Of(result) : Value::Of(FormulaError::Value);
  }

  static Value OfOneNumber(FunctionId id, double x) {
    switch (id) {
      case FunctionId::Sqrt:
        return x < 0 ? Value::Of(FormulaError::Number) : Value::Of(std::sqrt(x));
      case FunctionId::Ln:
        return x <= 0 ? Value::Of(FormulaError::Number) : Value::Of(std::log(x));
      case FunctionId::Log10:
        return x <= 0 ? Value::Of(FormulaError::Number) : Value::Of(std::log10(x));
      case FunctionId::Exp:
        return Value::Of(std::exp(x));
      case FunctionId::Abs:
        return Value::Of(std::abs(x));
      case FunctionId::Int:
        return Value::Of(std::floor(x));
      case FunctionId::Sin:
        return Value::Of(std::sin(x));
      case FunctionId::Cos:
        return Value::Of(std::cos(x));
      default:
        return Value::Of(std::tan(x));
    }
  }

  Value Call(FunctionId id, std::size_t first) {
    switch (id) {
      case FunctionId::Unknown:
      case FunctionId::If:  // is no call
        return Value::Of(FormulaError::Name);
      case FunctionId::Count:
      case FunctionId::CountA:
        return Counted(id, first);
      case FunctionId::And:
      case FunctionId::Or:
        return Junction(id == FunctionId::And, first);
      case FunctionId::Pi:
        return Value::Of(std::numbers::pi);
      case FunctionId::Not: {
        Value value = Truth(std::move(stack_[first]));
        return value.IsError() ? value : Value::Of(value.number == 0);
      }
      case FunctionId::Len:
      case FunctionId::Trim: {
        Value value = Scalar(std::move(stack_[first]));
        if (value.IsError()) return value;
        const std::string text = Shown(value);
        if (id == FunctionId::Trim) return Value::Of(Trimmed(text));
        return Value::Of(static_cast<double>(CharacterCount(text)));
      }
      case FunctionId::IsNumber:
        return Value::Of(Scalar(std::move(stack_[first])).kind == Kind::Number);
      case FunctionId::IsBlank: {
        const bool isArea = stack_[first].kind == Kind::Area;
        return Value::Of(isArea && Scalar(std::move(stack_[first])).kind == Kind::Empty);
      }
      case FunctionId::Round:
      case FunctionId::Mod: {
        Value x = Numeric(std::move(stack_[first]));
        Value y = Numeric(std::move(stack_[first + 1]));
        if (x.IsError()) return x;
        if (y.IsError()) return y;
        if (id == FunctionId::Mod) return Remainder(x.number, y.number);
        return Value::Of(RoundedAsShown(x.number, std::trunc(y.number)));
      }
      default:
        break;
    }
    if (id < FunctionId::Sqrt) return Statistic(id, first);
    Value x = Numeric(std::move(stack_[first]));
    return x.IsError() ? x : OfOneNumber(id, x.number);
  }

  static FormulaResult Result(Value value) {
    switch (value.kind) {
      case Kind::Error:
        return FormulaResult::Error(value.error);
      case Kind::Text:
        return FormulaResult::Text(std::move(value.text));
      case Kind::Logical:
        return FormulaResult::Logical(value.number != 0);
      default:
        return FormulaResult::Number(value.number + 0.0);  // no negative zero; 0 for an empty cell
    }
  }

  const FormulaCode& code_;
  const FormulaCells& cells_;
  std::vector<Value> stack_;
  FormulaError error_ = FormulaError::Value;
};

FormulaResult FormulaCode::Evaluate(const FormulaCells& cells) const { return FormulaMachine(*this, cells).Run(); }

}  // namespace tellurix
