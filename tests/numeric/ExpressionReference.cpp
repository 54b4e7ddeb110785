#include "ExpressionReference.h"

#include <cctype>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <optional>

#include "kernel/Kernel.h"
#include "numeric/ExpressionFunctions.h"
#include "numeric/Missing.h"

namespace tellurix {

namespace {

using std::string;

constexpr auto None = string::npos;

string Replaced(string text, const string& from, const string& to) {
  for (std::size_t at = text.find(from); at != None; at = text.find(from, at + to.size()))
    text.replace(at, from.size(), to);
  return text;
}

bool Contains(const string& set, char c) { return set.find(c) != None; }

// Rounds to an integer, half to even; false beyond 2^53.
bool Whole(double x, std::int64_t& whole) {
  const double down = std::floor(x);
  double nearest = x - down < 0.5 ? down : down + 1;
  if (x - down == 0.5) nearest = std::fmod(down, 2) == 0 ? down : down + 1;
  whole = std::fabs(x) <= 9007199254740992.0 ? static_cast<std::int64_t>(nearest) : 0;
  return std::fabs(x) <= 9007199254740992.0;
}

bool IsOperatorPlus(const string& text, std::size_t i) { return i > 0 && !Contains("DE=/\\^*><-", text[i - 1]); }
bool IsOperatorMinus(const string& text, std::size_t i) { return i > 0 && !Contains("TRDE=/\\^*><+", text[i - 1]); }

bool IsSignOfNumber(const string& text, std::size_t i) {
  return (text[i] == '+' && !IsOperatorPlus(text, i)) || (text[i] == '-' && !IsOperatorMinus(text, i));
}

std::vector<string> FunctionWords() {
  std::vector<string> words;
  for (const auto& function : ExpressionFunctions()) words.emplace_back(function.word.begin(), function.word.end());
  return words;
}

}  // namespace

double ExpressionReference::Evaluate(string text) {
  error_ = false;
  for (char& c : text) c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c;
  text = Replaced(text, " ", "");
  if (text.size() > 1 && text[0] == '=') text = text.substr(1);
  text = Replaced(text, "PI", string("3") + separator_ + "14159265358979323846D00");
  text = Replaced(text, "EE", string("2") + separator_ + "71828182845904523536D00");
  text = Replaced(text, "LR", TextOf(last_));
  text = Reduce(text, 0);
  last_ = !error_ && NumberOf(text) ? ParseNumber(text) : MissingValue;
  return last_;
}

string ExpressionReference::Substitute(const string& text,
                                       const std::vector<std::pair<string, double>>& variables) const {
  string result;
  std::size_t i = 0;
  const auto standsHere = [&](const string& word) {
    const bool isNumbered = word.back() >= '0' && word.back() <= '9';
    const bool goesOn = i + word.size() < text.size() && std::isdigit(text[i + word.size()]);
    return text.compare(i, word.size(), word) == 0 && !(isNumbered && goesOn);
  };
  while (i < text.size()) {
    string from = standsHere("EXP") || standsHere("FIX") ? text.substr(i, 3) : text.substr(i, 1);
    string to = from;
    for (const auto& [name, value] : variables) {
      if (from.size() == 1 && standsHere(name)) {
        to = TextOf(value);
        i += name.size() - 1;
        break;
      }
    }
    result += to;
    i += from.size();
  }
  return result;
}

string ExpressionReference::Reduce(string text, int depth) {
  for (const char* pair : {"()", "[]", "{}"}) {
    int open = 0;
    for (const char c : text) {
      open += c == pair[0] ? 1 : c == pair[1] ? -1 : 0;
      if (open < 0) error_ = true;
    }
    if (open != 0) error_ = true;
  }
  if (text.starts_with("%") || depth > 500) error_ = true;
  while (!error_ && text.find('(') != None) {
    const std::size_t open = text.find('(');
    std::size_t close = open;
    for (int level = 0; close < text.size(); ++close) {
      level += text[close] == '(' ? 1 : text[close] == ')' ? -1 : 0;
      if (level == 0) break;
    }
    string inner = text.substr(open + 1, close - open - 1);
    const bool isPlain =
        NumberOf(inner) && (TextOf(ParseNumber(inner)) == inner || "+" + TextOf(ParseNumber(inner)) == inner);
    if (!isPlain) {
      inner = Reduce(inner, depth + 1);
      if (!NumberOf(inner)) error_ = true;
      if (!error_) inner = TextOf(ParseNumber(inner));
    }
    text = text.substr(0, open) + inner + text.substr(close + 1);
  }
  if (error_) return text + "%";
  if (NumberOf(text)) return text;
  text = Functions(text);
  if (error_) return text + "%";
  text = Factorials(text);
  if (error_) return text + "%";
  for (const auto& [from, to] :
       std::vector<std::pair<string, string>>{{"++", "+"}, {"**", "^"}, {"-+", "-"}, {"--", "+"}}) {
    text = Replaced(text, from, to);
  }
  text = Arithmetic(text);
  if (error_) return text + "%";
  text = Relations(text);
  if (error_) return text + "%";
  text = Logic(text);
  return error_ ? text + "%" : text;
}

string ExpressionReference::Functions(string text) {
  static const std::vector<string> words = FunctionWords();
  for (std::size_t i = 0; i < words.size(); ++i) {
    const string& word = words[i];
    for (std::size_t at = text.find(word); at != None && !error_; at = text.find(word)) {
      const string number = NumberAfter(text, at + word.size());
      double result = 0;
      const double x = ParseNumber(number);
      if (!error_ && !ExpressionFunctions()[i].compute(x, result)) error_ = true;
      text = text.substr(0, at) + TextOf(Checked(result)) + text.substr(at + word.size() + number.size());
    }
  }
  return text;
}

string ExpressionReference::Factorials(string text) {
  for (std::size_t at = text.find('!'); at != None && !error_; at = text.find('!')) {
    std::size_t start = at;
    while (start > 0 && IsDigit(text[start - 1])) --start;
    const double x = ParseNumber(text.substr(start, at - start));
    double result = 1;
    if (x == std::floor(x) && x <= 50) {
      for (int i = 2; i <= x; ++i) result *= i;
    } else {
      result = std::exp(ALOGAM(x + 1));
    }
    text = text.substr(0, start) + TextOf(Checked(result)) + text.substr(at + 1);
  }
  return text;
}

string ExpressionReference::Arithmetic(string text) {
  while (!error_ && text.find('^') != None) text = TakeOperation(text, text.find('^'), "^");
  while (!error_) {
    std::size_t first = None;
    string word;
    for (const char* candidate : {"*", "/", "\\", "MOD"}) {
      if (text.find(candidate) < first) {
        first = text.find(candidate);
        word = candidate;
      }
    }
    if (first == None) break;
    text = TakeOperation(text, first, word);
  }
  while (!error_) {
    std::size_t at = 0;
    while (at < text.size() && !(text[at] == '+' && IsOperatorPlus(text, at)) &&
           !(text[at] == '-' && IsOperatorMinus(text, at))) {
      ++at;
    }
    if (at == text.size()) break;
    text = TakeOperation(text, at, text.substr(at, 1));
  }
  return text;
}

string ExpressionReference::Relations(string text) {
  while (!error_) {
    std::size_t first = None;
    string word;
    for (const char* candidate : {"<>", "><", "<=", "=<", ">=", "=>", "=", "<", ">"}) {
      const string relation = candidate;
      for (std::size_t at = 1; at + relation.size() < text.size(); ++at) {
        if (text.compare(at, relation.size(), relation) != 0) continue;
        if (at < first) {
          first = at;
          word = relation;
        }
        break;
      }
    }
    if (first == None) break;
    if (text[first - 1] != '"') {
      text = TakeOperation(text, first, word);
      continue;
    }
    const std::size_t open = first >= 2 ? text.rfind('"', first - 2) : None;
    const std::size_t right = first + word.size();
    const std::size_t close = text[right] == '"' ? text.find('"', right + 1) : None;
    if (open == None || close == None) {
      error_ = true;
      break;
    }
    const int order = text.substr(open + 1, first - open - 2).compare(text.substr(right + 1, close - right - 1));
    text = text.substr(0, open) + TextOf(Operate(word, order < 0 ? -1 : order > 0 ? 1 : 0, 0)) + text.substr(close + 1);
  }
  return text;
}

string ExpressionReference::Logic(string text) {
  for (const char* word : {"AND", "OR"}) {
    while (!error_ && text.find(word) != None) text = TakeOperation(text, text.find(word), word);
  }
  return text;
}

string ExpressionReference::TakeOperation(const string& text, std::size_t at, const string& word) {
  const string left = NumberBefore(text, at);
  const string right = NumberAfter(text, at + word.size());
  const double a = ParseNumber(left);
  const double b = ParseNumber(right);
  if (error_) return text;
  const string result = TextOf(Checked(Operate(word, a, b)));
  return text.substr(0, at - left.size()) + result + text.substr(at + word.size() + right.size());
}

double ExpressionReference::Operate(const string& word, double a, double b) {
  std::int64_t m = 0, n = 0;
  if (word == "^") return std::pow(a, b);
  if (word == "*") return a * b;
  if (word == "/") return b == 0 ? Checked(NAN) : a / b;
  if (word == "+") return a + b;
  if (word == "-") return a - b;
  if (word == "\\") return !Whole(a, m) || !Whole(b, n) || n == 0 ? Checked(NAN) : static_cast<double>(m / n);
  if (word == "MOD") {
    if (b == 0) return Checked(NAN);
    const double rest = a - Checked(std::trunc(a / b)) * b;
    char text[400];
    std::snprintf(text, sizeof text, "%.14f", rest);
    return std::strtod(text, nullptr);
  }
  if (word == "AND") return !Whole(a, m) || !Whole(b, n) ? Checked(NAN) : static_cast<double>(m & n);
  if (word == "OR") return !Whole(a, m) || !Whole(b, n) ? Checked(NAN) : static_cast<double>(m | n);
  const bool holds =
      (Contains(word, '<') && a < b) || (Contains(word, '>') && a > b) || (Contains(word, '=') && a == b);
  return holds ? -1 : 0;
}

string ExpressionReference::NumberAfter(const string& text, std::size_t start) const {
  std::size_t end = start;
  bool hasLetter = false;
  for (; end < text.size(); ++end) {
    const char c = text[end];
    const bool afterLetter = end > start && Contains("DE", text[end - 1]);
    if (IsDigit(c)) continue;
    if (Contains("+-", c) && (end == start || afterLetter)) continue;
    if (Contains("DE", c) && !hasLetter && end > start && IsDigit(text[end - 1])) {
      hasLetter = true;
      continue;
    }
    break;
  }
  return text.substr(start, end - start);
}

string ExpressionReference::NumberBefore(const string& text, std::size_t end) const {
  std::size_t start = end;
  bool hasLetter = false;
  while (start > 0) {
    const std::size_t i = start - 1;
    const bool isLetter = Contains("DE", text[i]) && i > 0 && IsDigit(text[i - 1]);
    const bool isExponentSign = Contains("+-", text[i]) && i > 1 && Contains("DE", text[i - 1]) && IsDigit(text[i - 2]);
    if (IsDigit(text[i])) {
      --start;
    } else if (isLetter && !hasLetter) {
      hasLetter = true;
      --start;
    } else if (isExponentSign && !hasLetter) {
      hasLetter = true;
      start -= 2;
    } else {
      if (Contains("+-", text[i]) && IsSignOfNumber(text, i)) --start;
      break;
    }
  }
  return text.substr(start, end - start);
}

string ExpressionReference::TextOf(double x) const {
  char text[40];
  std::snprintf(text, sizeof text, "%.15G", x == 0 ? 0.0 : x);
  return Replaced(text, ".", string(1, separator_));
}

std::optional<double> ExpressionReference::NumberOf(string text) const {
  if (text.find_first_not_of(string("0123456789+-DE") + separator_) != None) return std::nullopt;
  text = Replaced(Replaced(text, string(1, separator_), "."), "D", "E");
  char* end = nullptr;
  const double x = std::strtod(text.c_str(), &end);
  if (text.empty() || *end != '\0' || !std::isfinite(x)) return std::nullopt;
  return x + 0.0;
}

double ExpressionReference::ParseNumber(const string& text) { return Checked(NumberOf(text).value_or(NAN)); }

double ExpressionReference::Checked(double x) {
  if (!std::isfinite(x)) error_ = true;
  return x;
}

}  // namespace tellurix
