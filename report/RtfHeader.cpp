#include "report/RtfHeader.h"

#include <algorithm>
#include <utility>

#include "numeric/Text.h"
#include "report/RtfCodePage.h"

namespace tellurix {

namespace {

using Kind = RtfToken::Kind;

// Bounds beyond what word processors write.
constexpr std::size_t MaxFontName = 64;
constexpr std::size_t MaxStyleWords = 64;

class FontTableReader {
 public:
  FontTableReader(RtfLexer& lexer, int codePage, int unicodeSkip, std::unordered_map<int, RtfFont>& fonts)
      : lexer_(lexer), codePage_(codePage), unicodeSkip_(unicodeSkip), fonts_(fonts) {}

  bool Read() {
    std::size_t depth = 0;
    for (;;) {
      const RtfToken token = lexer_.Next();
      switch (token.kind) {
        case Kind::End:
          Store();
          return false;
        case Kind::Open:
          ++depth;
          skip_ = 0;
          break;
        case Kind::Close:
          skip_ = 0;
          if (depth <= 1) Store();
          if (depth-- == 0) return true;
          break;
        case Kind::Text:
          for (const char c : token.text) Byte(static_cast<unsigned char>(c));
          break;
        case Kind::Byte:
          Byte(static_cast<unsigned char>(token.number));
          break;
        case Kind::Symbol:
          if (token.text == "*") {
            if (!lexer_.SkipGroup()) return false;
            if (depth-- == 0) return true;
          } else if (const char32_t character = ControlSymbol(token.text.front()); character != 0) {
            Add(EncodeUtf8(character));
          }
          break;
        case Kind::Word:
          Word(token);
          break;
        default:
          break;
      }
    }
  }

 private:
  void Word(const RtfToken& token) {
    if (token.text == "f") {
      Store();
      number_ = token.number;
    } else if (token.text == "fcharset") {
      font_.codePage = CodePageOfCharset(token.number, -1);
    } else if (token.text == "cpg" && font_.codePage != SymbolCodePage) {
      font_.codePage = token.number > 0 ? token.number : -1;
    } else if (token.text == "u" && token.hasNumber) {
      const int codePoint = token.number < 0 ? token.number + 65536 : token.number;
      if (codePoint >= 0xA0 && codePoint < 0x10000) Add(EncodeUtf8(static_cast<char32_t>(codePoint)));
      skip_ = unicodeSkip_;
    }
  }

  void Byte(unsigned char byte) {
    if (skip_ > 0) {
      --skip_;
    } else if (byte == ';') {
      Store();
    } else if (byte >= 0x20 && byte != 0x7F) {
      const int page = font_.codePage >= 0 && font_.codePage != SymbolCodePage ? font_.codePage : codePage_;
      Add(decoder_.Decode(byte, page));
    }
  }

  void Add(std::string_view character) {
    if (font_.name.size() < MaxFontName && character.size() < 4 && !IsUpperControl(character)) font_.name += character;
    named_ = true;
  }

  void Store() {
    if (number_ >= 0 && named_) {
      const std::string_view name = Trim(font_.name);
      fonts_[number_] = {std::string(name), font_.codePage};
    }
    font_ = RtfFont{};
    named_ = false;
  }

  RtfLexer& lexer_;
  const int codePage_;
  const int unicodeSkip_;
  std::unordered_map<int, RtfFont>& fonts_;
  RtfDecoder decoder_;
  int number_ = -1;
  RtfFont font_;
  bool named_ = false;
  int skip_ = 0;  // stand-ins of a \u yet to be skipped
};

}  // namespace

bool RtfHeader::ReadFonts(RtfLexer& lexer, int unicodeSkip) {
  return FontTableReader(lexer, codePage, unicodeSkip, fonts_).Read();
}

bool RtfHeader::ReadColours(RtfLexer& lexer) {
  std::uint32_t colour = 0;
  std::size_t depth = 0;
  const auto part = [](int value) { return static_cast<std::uint32_t>(std::clamp(value, 0, 255)); };
  colours_.clear();
  for (;;) {
    const RtfToken token = lexer.Next();
    switch (token.kind) {
      case Kind::End:
        return false;
      case Kind::Open:
        ++depth;
        break;
      case Kind::Close:
        if (depth-- == 0) return true;
        break;
      case Kind::Text:
        for (const char c : token.text) {
          if (c != ';') continue;
          colours_.push_back(colour);
          colour = 0;
        }
        break;
      case Kind::Word:
        if (token.text == "red") colour = (colour & 0x00FFFFU) | part(token.number) << 16;
        if (token.text == "green") colour = (colour & 0xFF00FFU) | part(token.number) << 8;
        if (token.text == "blue") colour = (colour & 0xFFFF00U) | part(token.number);
        break;
      default:
        break;
    }
  }
}

bool RtfHeader::ReadStyles(RtfLexer& lexer) {
  std::size_t depth = 0;
  int number = 0;
  std::vector<RtfStyleWord> words;
  for (;;) {
    const RtfToken token = lexer.Next();
    switch (token.kind) {
      case Kind::End:
        return false;
      case Kind::Open:
        ++depth;
        number = 0;
        words.clear();
        break;
      case Kind::Close:
        if (depth-- == 0) return true;
        if (depth == 0 && words.size() <= MaxStyleWords) styles_[number] = std::exchange(words, {});
        break;
      case Kind::Symbol:
        if (token.text == "*") {  // styles of characters and of tables
          if (!lexer.SkipGroup()) return false;
          if (depth-- == 0) return true;
        }
        break;
      case Kind::Word:
        if (const RtfKeyword* keyword = FindRtfKeyword(token.text); keyword != nullptr) {
          if (keyword->word == RtfWord::Style) {
            number = token.number;
          } else if (keyword->word <= RtfWord::Tab && words.size() <= MaxStyleWords) {
            words.push_back({*keyword, token});
          }
        }
        break;
      default:
        break;
    }
  }
}

const RtfFont* RtfHeader::FindFont(int number) const {
  auto found = fonts_.find(number);
  if (found == fonts_.end()) found = fonts_.find(defaultFont);
  return found == fonts_.end() ? nullptr : &found->second;
}

std::uint32_t RtfHeader::Colour(int number) const {
  const bool isThere = number > 0 && static_cast<std::size_t>(number) < colours_.size();
  return isThere ? colours_[static_cast<std::size_t>(number)] : 0;
}

std::span<const RtfStyleWord> RtfHeader::Style(int number) const {
  const auto found = styles_.find(number);
  return found == styles_.end() ? std::span<const RtfStyleWord>{} : found->second;
}

void RtfHeader::ExchangeTables(RtfHeader& other) {
  fonts_.swap(other.fonts_);
  colours_.swap(other.colours_);
  styles_.swap(other.styles_);
}

}  // namespace tellurix
