// Random edits of small sheets of formulas: the workbook, which computes only what must be, against an evaluator that
// follows every reference each time; and inserted and deleted cells against a workbook typed anew.

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "workbook/Workbook.h"

namespace tellurix {
namespace {

constexpr int Rows = 7;
constexpr int Columns = 4;
constexpr int Sheets = 2;

int Rounds() {
  const char* rounds = std::getenv("TELLURIX_FUZZ_ROUNDS");
  return rounds ? std::atoi(rounds) : 300;
}

struct Value {
  enum Kind { Empty, Number, Logical, Text, Error } kind = Empty;
  double number = 0;
  std::string text;
  bool operator==(const Value&) const = default;
};

using Place = std::tuple<int, int, int>;  // sheet, row, column

struct Expression;
using ExpressionRef = std::shared_ptr<const Expression>;

struct Expression {
  enum Kind { Number, Cell, Sum, Count, Max, Add, Subtract, Join, Less, If, Halved, Broken } kind = Number;
  double number = 0;
  int sheet = 1;
  CellRange range;
  std::vector<ExpressionRef> parts;

  std::string Text(int own) const {
    const auto part = [&](int i) { return parts[static_cast<std::size_t>(i)]->Text(own); };
    const std::string where = sheet == own ? "" : "Sheet" + std::to_string(sheet) + "!";
    // A range of one cell is written as a range.
    const std::string cells = where + ColumnLetters(range.firstColumn) + std::to_string(range.firstRow) + ":" +
                              ColumnLetters(range.lastColumn) + std::to_string(range.lastRow);
    switch (kind) {
      case Number:
        return std::to_string(static_cast<int>(number));
      case Cell:
        return where + RangeText(range);
      case Sum:
        return "SUM(" + cells + ")";
      case Count:
        return "COUNT(" + cells + ")";
      case Max:
        return "MAX(" + cells + ")";
      case Add:
        return "(" + part(0) + "+" + part(1) + ")";
      case Subtract:
        return "(" + part(0) + "-" + part(1) + ")";
      case Join:
        return "(" + part(0) + "&" + part(1) + ")";
      case Less:
        return "(" + part(0) + "<" + part(1) + ")";
      case If:
        return "IF(" + part(0) + "," + part(1) + "," + part(2) + ")";
      case Halved:
        return part(0) + "/2";
      case Broken:
        return part(0) + "/0";
    }
    return {};
  }
};

struct ModelCell {
  Value value;
  ExpressionRef formula;
};

using Model = std::map<Place, ModelCell>;

class Evaluator {
 public:
  explicit Evaluator(const Model& model) : model_(model) {}

  Value At(const Place& place) const {
    const auto found = model_.find(place);
    if (found == model_.end()) return {};
    if (!found->second.formula) return found->second.value;
    if (ReadsItself(place)) return {Value::Error, 0, "#CIRC!"};
    Value value = Of(*found->second.formula);
    if (value.kind == Value::Empty) value.kind = Value::Number;
    return value;
  }

 private:
  void Collect(const Expression& expression, std::set<Place>& to) const {
    const auto kind = expression.kind;
    if (kind == Expression::Cell || kind == Expression::Sum || kind == Expression::Count || kind == Expression::Max) {
      for (int row = expression.range.firstRow; row <= expression.range.lastRow; ++row) {
        for (int column = expression.range.firstColumn; column <= expression.range.lastColumn; ++column) {
          to.insert({expression.sheet, row, column});
        }
      }
    }
    for (const auto& part : expression.parts) Collect(*part, to);
  }

  bool ReadsItself(const Place& place) const {
    std::set<Place> seen;
    std::vector<Place> left{place};
    while (!left.empty()) {
      const auto found = model_.find(left.back());
      left.pop_back();
      if (found == model_.end() || !found->second.formula) continue;
      std::set<Place> read;
      Collect(*found->second.formula, read);
      for (const Place& next : read) {
        if (next == place) return true;
        if (seen.insert(next).second) left.push_back(next);
      }
    }
    return false;
  }

  static Value Numeric(const Value& value) {
    if (value.kind == Value::Error) return value;
    if (value.kind == Value::Text) return {Value::Error, 0, "#VALUE!"};
    return {Value::Number, value.number, {}};
  }

  static std::string Shown(const Value& value) {
    Workbook book;
    if (value.kind == Value::Number) book.NumberRC(1, 1, value.number);
    if (value.kind == Value::Logical) book.SetLogical(1, 1, value.number != 0);
    if (value.kind == Value::Text) book.TextRC(1, 1, value.text);
    return book.FormattedTextRC(1, 1);
  }

  static int Rank(const Value& value, const Value& other) {
    const auto kind = value.kind == Value::Empty ? other.kind : value.kind;
    return kind == Value::Logical ? 2 : kind == Value::Text ? 1 : 0;
  }

  Value Of(const Expression& expression) const {
    const auto part = [&](int i) { return Of(*expression.parts[static_cast<std::size_t>(i)]); };
    switch (expression.kind) {
      case Expression::Number:
        return {Value::Number, expression.number, {}};
      case Expression::Cell:
        return At({expression.sheet, expression.range.firstRow, expression.range.firstColumn});
      case Expression::Sum:
      case Expression::Count:
      case Expression::Max:
        return OfRange(expression);
      case Expression::Add:
      case Expression::Subtract: {
        const Value a = Numeric(part(0));
        const Value b = Numeric(part(1));
        if (a.kind == Value::Error) return a;
        if (b.kind == Value::Error) return b;
        return {Value::Number, expression.kind == Expression::Add ? a.number + b.number : a.number - b.number, {}};
      }
      case Expression::Join: {
        const Value a = part(0);
        const Value b = part(1);
        if (a.kind == Value::Error) return a;
        if (b.kind == Value::Error) return b;
        return {Value::Text, 0, Shown(a) + Shown(b)};
      }
      case Expression::Less: {
        const Value a = part(0);
        const Value b = part(1);
        if (a.kind == Value::Error) return a;
        if (b.kind == Value::Error) return b;
        const int rankA = Rank(a, b);
        const int rankB = Rank(b, a);
        const bool less = rankA != rankB ? rankA < rankB : rankA == 1 ? a.text < b.text : a.number < b.number;
        return {Value::Logical, less ? 1.0 : 0.0, {}};
      }
      case Expression::If: {
        const Value condition = Numeric(part(0));
        if (condition.kind == Value::Error) return condition;
        return condition.number != 0 ? part(1) : part(2);
      }
      case Expression::Halved: {
        Value a = Numeric(part(0));
        a.number /= 2;
        return a;
      }
      case Expression::Broken: {
        const Value a = Numeric(part(0));
        return a.kind == Value::Error ? a : Value{Value::Error, 0, "#DIV/0!"};
      }
    }
    return {};
  }

  Value OfRange(const Expression& expression) const {
    double sum = 0;
    double count = 0;
    double most = 0;
    for (int column = expression.range.firstColumn; column <= expression.range.lastColumn; ++column) {
      for (int row = expression.range.firstRow; row <= expression.range.lastRow; ++row) {
        const Value value = At({expression.sheet, row, column});
        if (value.kind == Value::Error && expression.kind != Expression::Count) return value;
        if (value.kind != Value::Number) continue;
        most = count == 0 ? value.number : std::max(most, value.number);
        sum += value.number;
        ++count;
      }
    }
    const double result = expression.kind == Expression::Sum ? sum : expression.kind == Expression::Max ? most : count;
    return {Value::Number, result, {}};
  }

  const Model& model_;
};

class Random {
 public:
  explicit Random(unsigned seed) : random_(seed) {}
  int Below(int end) { return std::uniform_int_distribution<int>(0, end - 1)(random_); }

  CellRange Range(bool isCell) {
    const int row = 1 + Below(Rows);
    const int column = 1 + Below(Columns);
    if (isCell) return {row, column, row, column};
    return {row, column, std::min(Rows, row + Below(4)), std::min(Columns, column + Below(2))};
  }

  ExpressionRef Formula(int depth) {
    auto made = std::make_shared<Expression>();
    made->kind = static_cast<Expression::Kind>(depth <= 0 ? Below(5) : Below(12));
    made->number = Below(5);
    made->sheet = 1 + Below(Sheets);
    made->range = Range(made->kind == Expression::Cell);
    const int parts = made->kind == Expression::If                                           ? 3
                      : made->kind == Expression::Halved || made->kind == Expression::Broken ? 1
                      : made->kind >= Expression::Add                                        ? 2
                                                                                             : 0;
    for (int i = 0; i < parts; ++i) made->parts.push_back(Formula(depth - 1));
    return made;
  }

 private:
  std::mt19937 random_;
};

void ExpectAgreement(Workbook& book, const Model& model, const std::string& when) {
  const Evaluator evaluator(model);
  const int active = book.Sheet();
  for (int sheet = 1; sheet <= Sheets; ++sheet) {
    book.Sheet(sheet);
    for (int row = 1; row <= Rows; ++row) {
      for (int column = 1; column <= Columns; ++column) {
        const Value value = evaluator.At({sheet, row, column});
        const std::string where = when + ", sheet " + std::to_string(sheet) + " " +
                                  RangeText({row, column, row, column}) + " " + book.FormulaText(row, column);
        const int type = std::abs(book.TypeRC(row, column));
        switch (value.kind) {
          case Value::Empty:
            ASSERT_EQ(type, EmptyCell) << where;
            break;
          case Value::Number:
            ASSERT_EQ(type, NumberCell) << where << book.TextRC(row, column);
            ASSERT_NEAR(book.NumberRC(row, column), value.number, 1e-12 * std::abs(value.number)) << where;
            break;
          case Value::Logical:
            ASSERT_EQ(type, LogicalCell) << where;
            ASSERT_EQ(book.NumberRC(row, column), -value.number) << where;
            break;
          default:
            ASSERT_EQ(type, TextCell) << where;
            ASSERT_EQ(book.TextRC(row, column), value.text) << where;
            ASSERT_EQ(book.IsError(row, column), value.kind == Value::Error) << where;
            break;
        }
      }
    }
  }
  book.Sheet(active);
}

TEST(FormulaModel, RandomFormulasAgreeWithAPlainEvaluator) {
  for (int game = 0; game < std::max(1, Rounds() / 10); ++game) {
    Random random(static_cast<unsigned>(game));
    Workbook book;
    book.AddSheet();
    std::vector<Model> states(1);
    std::size_t state = 0;
    for (int move = 0; move < 60; ++move) {
      const std::string when = "game " + std::to_string(game) + ", move " + std::to_string(move);
      const int choice = random.Below(10);
      if (choice == 0 && state > 0) {
        ASSERT_TRUE(book.Undo());
        --state;
      } else if (choice == 1 && state + 1 < states.size()) {
        ASSERT_TRUE(book.Redo());
        ++state;
      } else {
        states.resize(state + 1);
        Model model = states.back();
        book.BeginStep("edit");
        for (int edits = 1 + random.Below(3); edits > 0; --edits) {
          const int sheet = 1 + random.Below(Sheets);
          const CellRange at = random.Range(true);
          const Place place{sheet, at.firstRow, at.firstColumn};
          book.Sheet(sheet);
          model.erase(place);
          std::string text;
          const int kind = random.Below(10);
          if (kind < 6) {
            const ExpressionRef formula = random.Formula(2);
            model[place].formula = formula;
            text = "=" + formula->Text(sheet);
          } else if (kind < 9) {
            const int number = random.Below(9) - 4;
            model[place].value = {Value::Number, static_cast<double>(number), {}};
            text = std::to_string(number);
          } else if (random.Below(2)) {
            model[place].value = {Value::Text, 0, "t"};
            text = "t";
          }
          book.Enter(at.firstRow, at.firstColumn, text, Regional());
        }
        // A step that writes nothing is none.
        book.NumberRC(Rows + 1, Columns + 1, move);
        book.EndStep();
        states.push_back(std::move(model));
        ++state;
      }
      ASSERT_NO_FATAL_FAILURE(ExpectAgreement(book, states[state], when));
    }
  }
}

// What each sheet holds: formulas as text, other cells as they are shown, and what formulas come to.
using Contents = std::map<Place, std::pair<std::string, std::string>>;

Contents ContentsOf(Workbook& book) {
  Contents contents;
  const int active = book.Sheet();
  for (int sheet = 1; sheet <= book.SheetCount(); ++sheet) {
    book.Sheet(sheet);
    for (int column = 1; column <= book.LastCol(); ++column) {
      for (int row = 1; row <= book.LastRow(); ++row) {
        if (book.TypeRC(row, column) == EmptyCell) continue;
        contents[{sheet, row, column}] = {book.FormulaText(row, column),
                                          std::to_string(book.TypeRC(row, column)) + book.TextRC(row, column)};
      }
    }
  }
  book.Sheet(active);
  return contents;
}

void ExpectLikeTypedAnew(Workbook& book, const std::string& when) {
  Workbook anew;
  ASSERT_TRUE(anew.RenameSheet(1, "none of them"));
  for (int sheet = 2; sheet <= book.SheetCount(); ++sheet) ASSERT_EQ(anew.AddSheet(book.SheetName(sheet)), sheet);
  ASSERT_TRUE(anew.RenameSheet(1, book.SheetName(1)));
  const int active = book.Sheet();
  for (int sheet = 1; sheet <= book.SheetCount(); ++sheet) {
    book.Sheet(sheet);
    anew.Sheet(sheet);
    for (int column = 1; column <= book.LastCol(); ++column) {
      for (int row = 1; row <= book.LastRow(); ++row) {
        const std::string formula = book.FormulaText(row, column);
        anew.Enter(row, column, formula.empty() ? book.TextRC(row, column) : formula, Regional());
      }
    }
  }
  book.Sheet(active);
  ASSERT_EQ(ContentsOf(book), ContentsOf(anew)) << when;
}

TEST(FormulaModel, MovedCellsAreLikeTypedAnew) {
  for (int game = 0; game < std::max(1, Rounds() / 10); ++game) {
    Random random(static_cast<unsigned>(1000 + game));
    Workbook book;
    book.AddSheet();
    std::vector<Contents> states{ContentsOf(book)};
    for (int move = 0; move < 40; ++move) {
      const std::string when = "game " + std::to_string(game) + ", move " + std::to_string(move);
      book.Sheet(1 + random.Below(book.SheetCount()));
      const CellRange at = random.Range(false);
      const Contents before = ContentsOf(book);
      book.BeginStep("move");
      book.NumberRC(20 + move, 9, 1);  // so that no step is empty
      const Shift shift = random.Below(2) ? Shift::Rows : Shift::Columns;
      switch (random.Below(14)) {
        case 0:
          book.InsertRows(at.firstRow, 1 + random.Below(2));
          break;
        case 1:
          book.DeleteRows(at.firstRow, 1);
          break;
        case 2:
          book.InsertColumns(at.firstColumn, 1);
          break;
        case 3:
          book.DeleteColumns(at.firstColumn, 1);
          break;
        case 4:
          book.InsertCells(at, shift);
          break;
        case 5:
          book.DeleteCells(at, shift);
          break;
        case 6:
          book.CopyBlock(at, 1 + random.Below(Rows), 1 + random.Below(Columns));
          break;
        case 7:
          random.Below(2) ? book.FillDown(at) : book.FillRight(at);
          break;
        case 8:
          book.RenameSheet(1 + random.Below(book.SheetCount()), "New " + std::to_string(move));
          break;
        case 9:
          if (random.Below(2)) {
            book.MoveSheet(1, book.SheetCount());
          } else if (book.SheetCount() == 3) {
            book.DeleteSheet(1 + random.Below(3));
          } else {
            book.AddSheet("Sheet" + std::to_string(100 + move));
          }
          break;
        default:
          for (int i = 0; i < 4; ++i) {
            const CellRange cell = random.Range(true);
            book.Enter(cell.firstRow, cell.firstColumn,
                       random.Below(3) ? "=" + random.Formula(2)->Text(book.Sheet()) : std::to_string(random.Below(9)),
                       Regional());
          }
          break;
      }
      book.EndStep();
      states.push_back(ContentsOf(book));
      ASSERT_NO_FATAL_FAILURE(ExpectLikeTypedAnew(book, when));
    }
    for (std::size_t state = states.size() - 1; state > 0; --state) {
      ASSERT_TRUE(book.Undo());
      ASSERT_EQ(ContentsOf(book), states[state - 1]) << "game " << game << ", undone to " << state - 1;
    }
    for (std::size_t state = 1; state < states.size(); ++state) {
      ASSERT_TRUE(book.Redo());
      ASSERT_EQ(ContentsOf(book), states[state]) << "game " << game << ", redone to " << state;
    }
  }
}

}  // namespace
}  // namespace tellurix
