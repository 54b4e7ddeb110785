#include "numeric/Text.h"

#include <array>
#include <set>

#include <utf8proc.h>

namespace tellurix {

namespace {

// Windows-1252 from 0x80 to 0x9F; the rest of the page is Latin-1. Unassigned bytes keep their own number.
constexpr std::array<char32_t, 32> Windows1252{0x20AC, 0x81,   0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                               0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x8D,   0x017D, 0x8F,
                                               0x90,   0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                               0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x9D,   0x017E, 0x0178};

// Calls visit(codePoint) for each code point; an invalid byte is visited as -1 - byte.
template <typename Visit>
void ForEachCodePoint(std::string_view text, Visit visit) {
  const auto* bytes = reinterpret_cast<const utf8proc_uint8_t*>(text.data());
  std::size_t at = 0;
  while (at < text.size()) {
    utf8proc_int32_t codePoint = 0;
    const auto used = utf8proc_iterate(bytes + at, static_cast<utf8proc_ssize_t>(text.size() - at), &codePoint);
    if (used <= 0) {
      visit(-1 - static_cast<int>(bytes[at]));
      ++at;
    } else {
      visit(static_cast<int>(codePoint));
      at += static_cast<std::size_t>(used);
    }
  }
}

bool IsAscii(std::string_view text) {
  for (const char c : text) {
    if (static_cast<unsigned char>(c) >= 0x80) return false;
  }
  return true;
}

char LowerAscii(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

}  // namespace

std::string_view Trim(std::string_view text) {
  constexpr std::string_view blanks = " \t\r\n\f\v";
  const auto first = text.find_first_not_of(blanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::string FoldCase(std::string_view text) {
  std::string folded;
  folded.reserve(text.size());
  if (IsAscii(text)) {
    for (const char c : text) folded.push_back(LowerAscii(c));
    return folded;
  }
  ForEachCodePoint(text, [&](int codePoint) {
    if (codePoint < 0) {
      folded.push_back(static_cast<char>(-1 - codePoint));
    } else {
      folded += EncodeUtf8(static_cast<char32_t>(utf8proc_tolower(codePoint)));
    }
  });
  return folded;
}

std::string UpperCase(std::string_view text) {
  std::string upper;
  ForEachCodePoint(text, [&](int codePoint) {
    if (codePoint < 0) {
      upper.push_back(static_cast<char>(-1 - codePoint));
    } else {
      upper += EncodeUtf8(static_cast<char32_t>(utf8proc_toupper(codePoint)));
    }
  });
  return upper;
}

bool EqualNoCase(std::string_view a, std::string_view b) {
  if (IsAscii(a) && IsAscii(b)) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i) {
      if (LowerAscii(a[i]) != LowerAscii(b[i])) return false;
    }
    return true;
  }
  return FoldCase(a) == FoldCase(b);
}

bool StartsWithNoCase(std::string_view text, std::string_view prefix) {
  const std::string folded = FoldCase(text);
  return folded.starts_with(FoldCase(prefix));
}

bool IsValidUtf8(std::string_view text) {
  if (IsAscii(text)) return true;
  bool valid = true;
  ForEachCodePoint(text, [&](int codePoint) { valid = valid && codePoint >= 0; });
  return valid;
}

std::string ToUtf8(std::string_view bytes) {
  if (IsValidUtf8(bytes)) return std::string(bytes);
  std::string text;
  text.reserve(bytes.size() + bytes.size() / 4);
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    text += EncodeUtf8(byte >= 0x80 && byte < 0xA0 ? Windows1252[byte - 0x80] : byte);
  }
  return text;
}

std::u32string CodePoints(std::string_view text) {
  std::u32string points;
  ForEachCodePoint(text, [&](int point) { points += point < 0 ? U'\uFFFD' : static_cast<char32_t>(point); });
  return points;
}

std::string EncodeUtf8(char32_t codePoint) {
  utf8proc_uint8_t bytes[4];
  auto value = static_cast<utf8proc_int32_t>(codePoint);
  if (!utf8proc_codepoint_valid(value)) value = 0xFFFD;
  const auto used = utf8proc_encode_char(value, bytes);
  return std::string(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(used));
}

std::size_t CharacterCount(std::string_view text) {
  std::size_t count = 0;
  ForEachCodePoint(text, [&](int) { ++count; });
  return count;
}

std::size_t DisplayWidth(std::string_view text) {
  std::size_t width = 0;
  ForEachCodePoint(text, [&](int codePoint) {
    if (codePoint < 0) {
      ++width;
    } else if (const int columns = utf8proc_charwidth(codePoint); columns > 0) {
      width += static_cast<std::size_t>(columns);
    }
  });
  return width;
}

std::vector<std::string> Split(std::string_view text, char separator) {
  std::vector<std::string> parts;
  std::size_t from = 0;
  for (;;) {
    const auto to = text.find(separator, from);
    parts.emplace_back(text.substr(from, to == std::string_view::npos ? to : to - from));
    if (to == std::string_view::npos) return parts;
    from = to + 1;
  }
}

std::vector<std::string> Distinct(std::vector<std::string> texts) {
  std::set<std::string> taken;
  for (std::string& text : texts) {
    const std::string plain = text;
    for (int k = 2; !taken.insert(FoldCase(text)).second; ++k) text = plain + " (" + std::to_string(k) + ")";
  }
  return texts;
}

std::string ReplaceAll(std::string_view text, std::string_view from, std::string_view to) {
  std::string result;
  if (from.empty()) return std::string(text);
  std::size_t at = 0;
  for (;;) {
    const auto found = text.find(from, at);
    result += text.substr(at, found == std::string_view::npos ? found : found - at);
    if (found == std::string_view::npos) return result;
    result += to;
    at = found + from.size();
  }
}

}  // namespace tellurix
