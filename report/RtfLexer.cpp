#include "report/RtfLexer.h"

#include <algorithm>
#include <cstdint>
#include <limits>

namespace tellurix {

namespace {

bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool IsDigit(char c) { return c >= '0' && c <= '9'; }

int HexDigit(char c) {
  if (IsDigit(c)) return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

bool EndsText(char c) { return c == '\\' || c == '{' || c == '}' || c == '\n' || c == '\r' || c == '\0'; }

}  // namespace

RtfToken RtfLexer::Next() {
  using Kind = RtfToken::Kind;
  while (at_ < bytes_.size()) {
    const char c = bytes_[at_];
    if (!EndsText(c)) {
      const std::size_t from = at_;
      while (at_ < bytes_.size() && !EndsText(bytes_[at_])) ++at_;
      return {Kind::Text, bytes_.substr(from, at_ - from)};
    }
    ++at_;
    if (c == '{') return {Kind::Open};
    if (c == '}') return {Kind::Close};
    if (c == '\\' && at_ < bytes_.size()) return NextControl();
  }
  return {Kind::End};
}

RtfToken RtfLexer::NextControl() {
  using Kind = RtfToken::Kind;
  const char first = bytes_[at_];
  if (!IsLetter(first)) {
    const std::string_view symbol = bytes_.substr(at_, 1);
    ++at_;
    switch (first) {
      case '\'': {
        int value = 0;
        int digits = 0;
        while (digits < 2 && at_ < bytes_.size() && HexDigit(bytes_[at_]) >= 0) {
          value = 16 * value + HexDigit(bytes_[at_++]);
          ++digits;
        }
        if (digits == 0) return {Kind::Symbol, symbol};
        return {Kind::Byte, {}, true, value};
      }
      case '\\':
      case '{':
      case '}':
        return {Kind::Byte, {}, true, first};
      case '\r':
        if (at_ < bytes_.size() && bytes_[at_] == '\n') ++at_;
        return {Kind::Word, "par"};
      case '\n':
        return {Kind::Word, "par"};
      case '\t':
        return {Kind::Word, "tab"};
      default:
        return {Kind::Symbol, symbol};
    }
  }
  const std::size_t from = at_;
  while (at_ < bytes_.size() && IsLetter(bytes_[at_])) ++at_;
  RtfToken token{Kind::Word, bytes_.substr(from, at_ - from)};
  const bool negative = at_ + 1 < bytes_.size() && bytes_[at_] == '-' && IsDigit(bytes_[at_ + 1]);
  if (negative) ++at_;
  if (at_ < bytes_.size() && IsDigit(bytes_[at_])) {
    constexpr std::int64_t largest = std::numeric_limits<int>::max();
    std::int64_t value = 0;
    while (at_ < bytes_.size() && IsDigit(bytes_[at_])) value = std::min(largest, 10 * value + (bytes_[at_++] - '0'));
    token.hasNumber = true;
    token.number = static_cast<int>(negative ? -value : value);
  }
  if (at_ < bytes_.size() && bytes_[at_] == ' ') ++at_;
  if (token.text == "bin") {
    const auto wanted = static_cast<std::size_t>(std::max(token.number, 0));
    const std::string_view data = bytes_.substr(at_, wanted);
    at_ += data.size();
    return {Kind::Binary, data};
  }
  return token;
}

bool RtfLexer::SkipGroup() {
  for (std::size_t depth = 0;;) {
    switch (Next().kind) {
      case RtfToken::Kind::End:
        return false;
      case RtfToken::Kind::Open:
        ++depth;
        break;
      case RtfToken::Kind::Close:
        if (depth-- == 0) return true;
        break;
      default:
        break;
    }
  }
}

}  // namespace tellurix
