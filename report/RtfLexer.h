// Rich-text bytes taken apart into tokens.
#pragma once

#include <cstddef>
#include <string_view>

namespace tellurix {

struct RtfToken {
  enum class Kind {
    End,     // of the bytes
    Open,    // {
    Close,   // }
    Word,    // a control word: `text` is its name, `number` its number
    Symbol,  // a control symbol: `text` is the character behind the backslash
    Byte,    // one byte of text, written escaped: `number`
    Text,    // bytes of text as they stand; without line ends and NUL
    Binary,  // the data of \bin: `text`
  };

  Kind kind = Kind::End;
  std::string_view text;
  bool hasNumber = false;
  int number = 0;  // cut to the range of int
};

class RtfLexer {
 public:
  explicit RtfLexer(std::string_view bytes) : bytes_(bytes) {}

  RtfToken Next();

  // Goes on behind the brace that closes the group in which the next token stands. False when the bytes ended before.
  bool SkipGroup();

  std::size_t Position() const { return at_; }  // where the next token starts

 private:
  RtfToken NextControl();

  std::string_view bytes_;
  std::size_t at_ = 0;
};

}  // namespace tellurix
