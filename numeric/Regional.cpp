#include "numeric/Regional.h"

#include <fast_float/fast_float.h>

#include <cmath>

#include "numeric/Text.h"

namespace tellurix {

std::optional<double> ReadNumber(std::string_view text, const Regional& regional) {
  text = Trim(text);
  std::string plain;
  const bool isPlain = regional.decimalSymbol == "." && regional.groupingSymbol.empty();
  if (!isPlain) {
    plain = regional.groupingSymbol.empty() ? std::string(text) : ReplaceAll(text, regional.groupingSymbol, "");
    if (regional.decimalSymbol != ".") {
      if (plain.find('.') != std::string::npos) return std::nullopt;
      plain = ReplaceAll(plain, regional.decimalSymbol, ".");
    }
    text = plain;
  }
  if (!text.empty() && text.front() == '+') {
    text.remove_prefix(1);
    if (!text.empty() && text.front() == '-') return std::nullopt;
  }
  // Letters other than an exponent ("inf", "nan") are no number here.
  if (text.find_first_not_of("0123456789.-+eE") != std::string_view::npos) return std::nullopt;
  double value = 0;
  const auto [end, error] = fast_float::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(value)) return std::nullopt;
  return value;
}

std::string Localized(std::string numberText, const Regional& regional) {
  return regional.decimalSymbol == "." ? std::move(numberText) : ReplaceAll(numberText, ".", regional.decimalSymbol);
}

}  // namespace tellurix
