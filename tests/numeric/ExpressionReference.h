// The expression language worked out the slow way: the text is rewritten until only a number is left. It shares nothing
// with the evaluator under test but the functions of the language's table.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tellurix {

class ExpressionReference {
 public:
  explicit ExpressionReference(char separator) : separator_(separator) {}

  double Evaluate(std::string text);

  // The text with each name replaced by the text of its number.
  std::string Substitute(const std::string& text, const std::vector<std::pair<std::string, double>>& variables) const;

 private:
  std::string Reduce(std::string text, int depth);
  std::string Functions(std::string text);
  std::string Factorials(std::string text);
  std::string Arithmetic(std::string text);
  std::string Relations(std::string text);
  std::string Logic(std::string text);
  std::string TakeOperation(const std::string& text, std::size_t at, const std::string& word);
  double Operate(const std::string& word, double a, double b);

  std::string NumberBefore(const std::string& text, std::size_t end) const;
  std::string NumberAfter(const std::string& text, std::size_t start) const;
  std::string TextOf(double x) const;
  std::optional<double> NumberOf(std::string text) const;
  double ParseNumber(const std::string& text);
  double Checked(double x);  // sets the error flag for what is no number
  bool IsDigit(char c) const { return (c >= '0' && c <= '9') || c == separator_; }

  char separator_;
  double last_ = 0;
  bool error_ = false;
};

}  // namespace tellurix
