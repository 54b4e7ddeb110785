#include "workbook/files/foreign/ForeignFormats.h"

#include <algorithm>
#include <cctype>

namespace tellurix {

namespace {

using Form = NumberFormat::Form;

constexpr int MostDecimals = 15;

// The first section of a code without what stands in quotes, brackets and behind backslashes, in lower case.
std::string Bare(std::string_view code) {
  std::string bare;
  for (std::size_t i = 0; i < code.size() && code[i] != ';'; ++i) {
    switch (code[i]) {
      case '"':
        i = std::min(code.find('"', i + 1), code.size());
        break;
      case '[': {
        // [h] and its like are times that have passed.
        const std::size_t end = std::min(code.find(']', i), code.size());
        if (end > i + 1 && std::string_view("hHmMsS").find(code[i + 1]) != std::string_view::npos) bare += 'h';
        i = end;
        break;
      }
      case '\\':
      case '_':
      case '*':
        ++i;
        break;
      default:
        bare += static_cast<char>(std::tolower(static_cast<unsigned char>(code[i])));
        break;
    }
  }
  return bare;
}

int DecimalsOf(std::string_view bare) {
  const std::size_t point = bare.find('.');
  if (point == std::string_view::npos) return 0;
  const auto isDigit = [](char c) { return c == '0' || c == '#' || c == '?'; };
  const auto end = std::find_if_not(bare.begin() + static_cast<std::ptrdiff_t>(point) + 1, bare.end(), isDigit);
  return std::min(static_cast<int>(end - bare.begin()) - static_cast<int>(point) - 1, MostDecimals);
}

// The sheet and the cell of one corner of "[$'My sheet'.$A$1:.B2]".
std::string Corner(std::string_view text) {
  if (text.starts_with('.')) return std::string(text.substr(1));
  std::size_t dot = text.find('.');
  if (text.starts_with('\'') || text.starts_with("$'")) {
    const std::size_t quote = text.rfind('\'');
    dot = text.find('.', quote);
  }
  if (dot == std::string_view::npos) return std::string(text);
  const std::string_view sheet = text.substr(text.starts_with('$') ? 1 : 0, dot - (text.starts_with('$') ? 1 : 0));
  return std::string(sheet) + "!" + std::string(text.substr(dot + 1));
}

// The colon between the corners, outside quotes.
std::size_t CornerEnd(std::string_view text) {
  bool quoted = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\'') quoted = !quoted;
    if (text[i] == ':' && !quoted) return i;
  }
  return std::string_view::npos;
}

std::string ReferenceFrom(std::string_view text) {
  const std::size_t colon = CornerEnd(text);
  if (colon == std::string_view::npos) return Corner(text);
  std::string last = Corner(text.substr(colon + 1));
  if (const std::size_t mark = last.rfind('!'); mark != std::string::npos) last.erase(0, mark + 1);
  return Corner(text.substr(0, colon)) + ":" + last;
}

std::string FromOpenFormula(std::string_view text) {
  if (const std::size_t prefix = text.find(":="); prefix != std::string_view::npos && prefix < 5) {
    text.remove_prefix(prefix + 2);
  } else if (text.starts_with('=')) {
    text.remove_prefix(1);
  }
  std::string made = "=";
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '"') {
      const std::size_t end = std::min(text.find('"', i + 1), text.size() - 1);
      made += text.substr(i, end - i + 1);
      i = end;
    } else if (text[i] == '[') {
      const std::size_t end = std::min(text.find(']', i), text.size());
      made += ReferenceFrom(text.substr(i + 1, end - i - 1));
      i = end;
    } else {
      made += text[i];
    }
  }
  return made;
}

// Of a date, by the time of day that may stand behind it.
Form DateForm(const std::string& bare) {
  if (bare.find(':') == std::string::npos) return Form::Date;
  return bare.find('s') == std::string::npos ? Form::DateMinutes : Form::DateSeconds;
}

}  // namespace

NumberFormat FormatOfCode(std::string_view code) {
  const std::string bare = Bare(code);
  const auto has = [&](std::string_view any) { return bare.find_first_of(any) != std::string::npos; };
  if (bare.empty() || bare == "general" || bare == "standard") return {};
  if (bare == "@") return {.form = Form::Text};
  const bool hasDigits = has("0#?");
  if (!hasDigits && (has("y") || has("d"))) return {.form = DateForm(bare)};
  if (has("yh") || (has("ms") && bare.find(':') != std::string::npos))
    return {.form = has("yd") ? DateForm(bare) : Form::General};
  if (!hasDigits) return {};
  const int decimals = DecimalsOf(bare);
  if (has("%")) return {.form = Form::Percent, .decimals = decimals};
  if (bare.find("e+") != std::string::npos || bare.find("e-") != std::string::npos)
    return {.form = Form::Scientific, .decimals = decimals};
  if (has("/")) return {};
  return {.form = Form::Fixed, .decimals = decimals, .grouping = has(",")};
}

NumberFormat FormatOfNumber(int number) {
  switch (number) {
    case 1:
      return {.form = Form::Fixed, .decimals = 0};
    case 2:
      return {.form = Form::Fixed, .decimals = 2};
    case 3:
    case 37:
    case 38:
      return {.form = Form::Fixed, .decimals = 0, .grouping = true};
    case 4:
    case 39:
    case 40:
      return {.form = Form::Fixed, .decimals = 2, .grouping = true};
    case 9:
      return {.form = Form::Percent, .decimals = 0};
    case 10:
      return {.form = Form::Percent, .decimals = 2};
    case 11:
      return {.form = Form::Scientific, .decimals = 2};
    case 48:
      return {.form = Form::Scientific, .decimals = 1};
    case 49:
      return {.form = Form::Text};
    default:
      break;
  }
  const auto isIn = [&](int first, int last) { return number >= first && number <= last; };
  if (number == 22) return {.form = Form::DateMinutes};
  if (isIn(14, 17) || isIn(27, 31) || number == 36 || isIn(50, 54) || isIn(57, 58)) return {.form = Form::Date};
  return {};
}

std::string FormulaFrom(std::string_view text, FormulaGrammar grammar) {
  if (grammar == FormulaGrammar::OpenFormula) return FromOpenFormula(text);
  return text.starts_with('=') ? std::string(text) : "=" + std::string(text);
}

}  // namespace tellurix
