// Bytes of text in the code pages that rich text names, as Unicode.
#pragma once

#include <array>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

namespace tellurix {

constexpr int SymbolCodePage = 42;  // bytes are the places of a symbol font: U+F020 to U+F0FF

// The Windows code page of a font's \fcharset; `standard` for those that name none.
int CodePageOfCharset(int charset, int standard);

// The Unicode character at a place of the font Symbol, U+FFFD where there is none. After Adobe's Symbol encoding as the
// Unicode Consortium maps it (symbol.txt, version 1.0), with the pieces of brackets at the places Unicode has since
// given them.
char32_t SymbolCharacter(unsigned char place);

// One of the control characters U+0080 to U+009F; byte code pages leave them unassigned, UTF-8 has them.
inline bool IsUpperControl(std::string_view character) {
  return character.size() == 2 && character[0] == '\xC2' && static_cast<unsigned char>(character[1]) < 0xA0;
}

// Decodes text that comes byte by byte; keeps the beginning of a character of several bytes.
class RtfDecoder {
 public:
  RtfDecoder();
  ~RtfDecoder();
  RtfDecoder(const RtfDecoder&) = delete;
  RtfDecoder& operator=(const RtfDecoder&) = delete;

  // The characters that the byte completes, as UTF-8. Unknown code pages are read as Windows-1252, bytes without a
  // character become U+FFFD.
  std::string Decode(unsigned char byte, int codePage);

  bool HasPending() const { return !pending_.empty(); }

  // Gives up the bytes kept: U+FFFD if there were any.
  std::string Flush();

 private:
  class Page;
  const Page& PageOf(int codePage);

  std::unordered_map<int, std::unique_ptr<Page>> pages_;
  int lastNumber_ = -1;
  const Page* lastPage_ = nullptr;
  std::string pending_;
};

}  // namespace tellurix
