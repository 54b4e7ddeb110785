// What rich text says ahead of its words: code page, fonts, colours, styles.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

#include "report/RtfKeywords.h"

namespace tellurix {

struct RtfFont {
  std::string name;
  int codePage = -1;  // that of the document
};

// A property of a style, as the word that sets it.
struct RtfStyleWord {
  RtfKeyword keyword;
  RtfToken token;
};

class RtfHeader {
 public:
  int codePage = 1252;
  int defaultFont = 0;

  // Each reads a table up to and with the brace that closes its group; false at the end of the bytes. `unicodeSkip` is
  // the number of stand-ins behind a \u.
  bool ReadFonts(RtfLexer& lexer, int unicodeSkip);
  bool ReadColours(RtfLexer& lexer);
  bool ReadStyles(RtfLexer& lexer);

  const RtfFont* FindFont(int number) const;  // the default font for one that is not there; null without any
  std::uint32_t Colour(int number) const;     // 0xRRGGBB; 0 for one that is not there
  std::span<const RtfStyleWord> Style(int number) const;  // of paragraphs; empty for one that is not there

  // Everything but code page and default font.
  void ExchangeTables(RtfHeader& other);

 private:
  std::unordered_map<int, RtfFont> fonts_;
  std::vector<std::uint32_t> colours_;
  std::unordered_map<int, std::vector<RtfStyleWord>> styles_;
};

}  // namespace tellurix
