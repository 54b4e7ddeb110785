#include "workbook/CellLook.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "numeric/DateTime.h"
#include "numeric/Rounding.h"

namespace tellurix {

namespace {

constexpr int MostDecimals = 15;
constexpr double LargestFixed = 1e15;

std::string Fixed(double value, int decimals) {
  std::string text = FixedText(value, decimals);
  // A negative number that rounds to nothing has no sign.
  if (text.starts_with('-') && text.find_first_of("123456789") == std::string::npos) text.erase(0, 1);
  return text;
}

// Between thousands the symbol of the region; one that has none gets that which cannot be its decimal symbol.
std::string Grouped(std::string text, const Regional& regional) {
  const std::string other = regional.decimalSymbol == "," ? "." : ",";
  const std::string& symbol = regional.groupingSymbol.empty() ? other : regional.groupingSymbol;
  const std::size_t start = text.starts_with('-') ? 1 : 0;
  std::size_t at = std::min(text.find(regional.decimalSymbol), text.size());
  while (at > start + 3) {
    at -= 3;
    text.insert(at, symbol);
  }
  return text;
}

// Empty for what is no date.
std::string ShownDate(double value, NumberFormat::Form form, const Regional& regional) {
  const auto moment = MomentOfSerial(value);
  if (!moment) return {};
  std::string text = DateText(*moment, regional);
  if (form == NumberFormat::Form::DateMinutes) text += " " + TimeText(*moment, TimeForm::Minutes, regional);
  if (form == NumberFormat::Form::DateSeconds) text += " " + TimeText(*moment, TimeForm::Seconds, regional);
  return text;
}

bool IsGrouped(double value, const NumberFormat& format) {
  return format.form == NumberFormat::Form::Fixed && format.grouping && std::abs(value) < LargestFixed;
}

// By any format but that of a date, without symbols of the region.
std::string PlainNumber(double value, const NumberFormat& format) {
  const int decimals = std::clamp(format.decimals, 0, MostDecimals);
  switch (format.form) {
    case NumberFormat::Form::Fixed:
      if (std::abs(value) >= LargestFixed) break;
      return Fixed(value, decimals);
    case NumberFormat::Form::Percent:
      if (std::abs(value) * 100 >= LargestFixed) break;
      return Fixed(value * 100, decimals) + "%";
    case NumberFormat::Form::Scientific:
      return fmt::format("{:.{}E}", value, decimals);
    default:
      break;
  }
  return GeneralText(value);
}

}  // namespace

std::string FormatNumber(double value, const NumberFormat& format) {
  static const Regional plain;
  return FormatNumber(value, format, plain);
}

std::string FormatNumber(double value, const NumberFormat& format, const Regional& regional) {
  if (format.IsDate()) {
    if (std::string date = ShownDate(value, format.form, regional); !date.empty()) return date;
  }
  std::string text = Localized(PlainNumber(value, format), regional);
  return IsGrouped(value, format) ? Grouped(std::move(text), regional) : text;
}

CellLook LookChange::AppliedTo(CellLook look) const {
  const auto apply = [](const auto& change, auto& to) {
    if (change) to = *change;
  };
  apply(number, look.number);
  apply(fontName, look.fontName);
  apply(fontSize, look.fontSize);
  apply(bold, look.bold);
  apply(italic, look.italic);
  apply(underline, look.underline);
  apply(textColour, look.textColour);
  apply(fillColour, look.fillColour);
  apply(alignment, look.alignment);
  return look;
}

std::uint32_t LookRuns::At(int row) const {
  const auto behind =
      std::upper_bound(runs_.begin(), runs_.end(), row, [](int at, const Run& run) { return at < run.firstRow; });
  return behind == runs_.begin() ? 0 : std::prev(behind)->look;
}

void LookRuns::AppendRun(int firstRow, std::uint32_t look) {
  if (look != (runs_.empty() ? 0 : runs_.back().look)) runs_.push_back({firstRow, look});
}

LookRuns LookRuns::Shifted(int at, int inserted, int deleted) const {
  const auto same = [](std::uint32_t look) { return look; };
  LookRuns made;
  made.Append(*this, 1, at - 1, 1, same);
  if (inserted > 0) made.AppendRun(at, At(std::max(at - 1, 1)));
  made.Append(*this, at + deleted, EndRow, at + inserted, same);
  return made;
}

LookRuns LookRuns::With(const LookRuns& source, int fromRow, int count, int toRow) const {
  const auto same = [](std::uint32_t look) { return look; };
  if (toRow + count > GridStore::MaxRows) count = EndRow - std::max(fromRow, toRow);
  LookRuns made;
  made.Append(*this, 1, toRow - 1, 1, same);
  made.Append(source, fromRow, fromRow + count - 1, toRow, same);
  made.Append(*this, toRow + count, EndRow, toRow + count, same);
  return made;
}

}  // namespace tellurix
