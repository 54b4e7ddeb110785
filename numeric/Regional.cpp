#include "numeric/Regional.h"

#include <fast_float/fast_float.h>
#include <langinfo.h>
#include <locale.h>

#include <algorithm>
#include <cmath>

#include "numeric/Text.h"

namespace tellurix {

namespace {

// The locale of the environment for this thread, while it lives.
class UserLocale {
 public:
  UserLocale() : locale_(::newlocale(LC_ALL_MASK, "", nullptr)) {
    if (locale_) before_ = ::uselocale(locale_);
  }
  ~UserLocale() {
    if (!locale_) return;
    ::uselocale(before_);
    ::freelocale(locale_);
  }
  UserLocale(const UserLocale&) = delete;
  UserLocale& operator=(const UserLocale&) = delete;

  explicit operator bool() const { return locale_ != nullptr; }

 private:
  locale_t locale_;
  locale_t before_ = nullptr;
};

std::string OneOr(const char* symbol, const std::string& otherwise) { return *symbol ? ToUtf8(symbol) : otherwise; }

}  // namespace

SystemSymbols ReadSystemSymbols() {
  SystemSymbols symbols;
  const UserLocale locale;
  if (!locale) return symbols;
  const lconv& conventions = *::localeconv();
  symbols.decimal = OneOr(conventions.decimal_point, ".");
  symbols.grouping = ToUtf8(conventions.thousands_sep);
  symbols.moneyDecimal = OneOr(conventions.mon_decimal_point, symbols.decimal);
  symbols.moneyGrouping = OneOr(conventions.mon_thousands_sep, symbols.grouping);
  // The C locale's own date is that of one country.
  const std::string_view timeLocale = ::nl_langinfo(_NL_LOCALE_NAME(LC_TIME));
  const bool hasOwnDate = timeLocale != "C" && timeLocale != "POSIX" && !timeLocale.starts_with("C.");
  if (const std::string form = DateFormOf(::nl_langinfo(D_FMT)); hasOwnDate && !form.empty()) symbols.dateForm = form;
  symbols.measuresInInches = *::nl_langinfo(_NL_MEASUREMENT_MEASUREMENT) == 2;  // 1: metric, 2: US
  return symbols;
}

std::string DateFormOf(std::string_view strftimeFormat) {
  std::string form;
  for (std::size_t i = 0; i < strftimeFormat.size(); ++i) {
    if (strftimeFormat[i] != '%') {
      form += strftimeFormat[i];
      continue;
    }
    // Flags: other digits, no padding.
    while (++i < strftimeFormat.size() && std::string_view("EO-_0").find(strftimeFormat[i]) != std::string_view::npos) {
    }
    switch (i < strftimeFormat.size() ? strftimeFormat[i] : '\0') {
      case 'd':
      case 'e':
        form += "dd";
        break;
      case 'm':
        form += "mm";
        break;
      case 'Y':
      case 'y':
        form += "yyyy";
        break;
      case 'F':
        form += "yyyy-mm-dd";
        break;
      case 'D':
        form += "mm/dd/yyyy";
        break;
      default:
        return {};
    }
  }
  return form;
}

namespace {

// Whether the digits of a whole number are parted as digits are: three at the end, two or three in between, one to
// three at the front. A date whose parts stand between the same symbols is none.
bool IsGrouped(std::string_view whole, std::string_view symbol) {
  if (!whole.empty() && (whole.front() == '+' || whole.front() == '-')) whole.remove_prefix(1);
  bool isFirst = true;
  for (;;) {
    const auto at = whole.find(symbol);
    const std::string_view group = whole.substr(0, at);
    const bool isLast = at == std::string_view::npos;
    const std::size_t least = isLast ? 3 : isFirst ? 1 : 2;
    if (group.size() < least || group.size() > 3) return false;
    if (group.find_first_not_of("0123456789") != std::string_view::npos) return false;
    if (isLast) return true;
    whole.remove_prefix(at + symbol.size());
    isFirst = false;
  }
}

// The text of a number without its grouping symbols; nothing where they stand in other places than between groups.
std::optional<std::string> WithoutGrouping(std::string_view text, const Regional& regional) {
  const std::string& symbol = regional.groupingSymbol;
  if (symbol.empty() || text.find(symbol) == std::string_view::npos) return std::string(text);
  const std::size_t end = std::min({text.find(regional.decimalSymbol), text.find_first_of("eE"), text.size()});
  const std::string_view whole = text.substr(0, end), rest = text.substr(end);
  if (rest.find(symbol) != std::string_view::npos || !IsGrouped(whole, symbol)) return std::nullopt;
  return ReplaceAll(whole, symbol, "").append(rest);
}

}  // namespace

std::optional<double> ReadNumber(std::string_view text, const Regional& regional) {
  text = Trim(text);
  std::string plain;
  const bool isPlain = regional.decimalSymbol == "." && regional.groupingSymbol.empty();
  if (!isPlain) {
    auto ungrouped = WithoutGrouping(text, regional);
    if (!ungrouped) return std::nullopt;
    plain = std::move(*ungrouped);
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
