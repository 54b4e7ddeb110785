#include "report/RtfText.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <utility>

#include "numeric/Text.h"

namespace tellurix {

void RtfText::Bytes(std::string_view bytes) {
  const std::size_t dropped = std::min(bytes.size(), static_cast<std::size_t>(standIns_));
  standIns_ -= static_cast<int>(dropped);
  bytes.remove_prefix(dropped);
  while (!bytes.empty()) {
    if (formatChanged_) RefreshFormat();
    std::size_t plain = 0;
    if (!decoder_.HasPending() && symbols_ == Symbols::None) {
      while (plain < bytes.size() && bytes[plain] >= 0x20 && bytes[plain] < 0x7F) ++plain;
    }
    if (plain > 0) {
      Append(bytes.substr(0, plain));
      bytes.remove_prefix(plain);
    } else {
      AppendByte(static_cast<unsigned char>(bytes.front()));
      bytes.remove_prefix(1);
    }
  }
}

void RtfText::Byte(unsigned char byte) {
  if (!IsStandIn()) AppendByte(byte);
}

// A character written as a control word counts as one stand-in.
void RtfText::Character(char32_t character) {
  if (!IsStandIn()) AppendCharacter(character);
}

bool RtfText::IsStandIn() {
  if (standIns_ == 0) return false;
  --standIns_;
  return true;
}

void RtfText::AppendByte(unsigned char byte) {
  if (formatChanged_) RefreshFormat();
  if (byte < 0x20 || byte == 0x7F) {
    if (byte == '\t') AppendCharacter('\t');
  } else if (symbols_ == Symbols::Greek) {
    AppendCharacter(SymbolCharacter(byte));
  } else if (const std::string text = decoder_.Decode(byte, codePage_); !text.empty() && !IsUpperControl(text)) {
    Append(text);
  }
}

void RtfText::Unicode(int number) {
  if (formatChanged_) RefreshFormat();
  standIns_ = state_.unicodeSkip;
  const std::int64_t value = number < 0 ? std::int64_t{number} + 65536 : number;
  const auto codePoint = value < 0 || value > 0x10FFFF ? char32_t{0xFFFD} : static_cast<char32_t>(value);
  if (codePoint >= 0xD800 && codePoint < 0xDC00) {
    FlushSurrogate();
    highSurrogate_ = codePoint;
  } else if (codePoint >= 0xDC00 && codePoint < 0xE000 && highSurrogate_ != 0) {
    const char32_t whole = 0x10000 + ((highSurrogate_ - 0xD800) << 10) + (codePoint - 0xDC00);
    highSurrogate_ = 0;
    AppendCharacter(whole);
  } else if (codePoint == '\t' || codePoint == '\n') {
    AppendCharacter(codePoint);
  } else if (codePoint >= 0x20 && (codePoint < 0x7F || codePoint >= 0xA0)) {
    const bool greek = symbols_ == Symbols::Greek && codePoint >= 0xF020 && codePoint <= 0xF0FF;
    AppendCharacter(greek ? SymbolCharacter(static_cast<unsigned char>(codePoint & 0xFF)) : codePoint);
  }
}

void RtfText::AppendCharacter(char32_t character) {
  if (character < 0x80) {
    const char one = static_cast<char>(character);
    Append(std::string_view(&one, 1));
  } else {
    Append(EncodeUtf8(character));
  }
}

void RtfText::Append(std::string_view text) {
  FlushSurrogate();
  std::string& run = NextRun(false).text;
  if (nestedCellEnded_) {
    nestedCellEnded_ = false;
    run += '\t';
  }
  run += text;
}

void RtfText::AppendPicture(std::shared_ptr<const PictureGroup> picture) {
  if (nestedCellEnded_) Append({});
  FlushSurrogate();
  NextRun(true).picture = std::move(picture);
}

void RtfText::EndNestedCell() {
  if (nestedCellEnded_) Append({});
  nestedCellEnded_ = true;
}

Paragraph RtfText::Take() {
  if (const std::string rest = decoder_.Flush(); !rest.empty()) Append(rest);
  FlushSurrogate();
  nestedCellEnded_ = false;
  paragraph_.format = state_.paragraph.format;
  if (state_.paragraph.tabs) paragraph_.format.tabs = *state_.paragraph.tabs;
  return std::exchange(paragraph_, Paragraph{});
}

void RtfText::FlushSurrogate() {
  if (highSurrogate_ == 0) return;
  highSurrogate_ = 0;
  NextRun(false).text += EncodeUtf8(0xFFFD);
}

// The run that text of the present format goes on in.
Run& RtfText::NextRun(bool forPicture) {
  if (formatChanged_) RefreshFormat();
  auto& runs = paragraph_.runs;
  if (forPicture || runs.empty() || runs.back().picture || (newFormat_ && runs.back().format != format_)) {
    runs.push_back({{}, format_, nullptr});
  }
  newFormat_ = false;
  return runs.back();
}

void RtfText::RefreshFormat() {
  const RtfCharState& character = state_.character;
  const RtfFont* font = ChooseFont();
  format_.font = font != nullptr && !font->name.empty() ? font->name : CharFormat{}.font;
  format_.halfPoints = character.halfPoints;
  format_.bold = character.bold;
  format_.italic = character.italic;
  format_.underline = character.underline;
  format_.strike = character.strike;
  format_.script = character.script;
  format_.colour = header_.Colour(character.colour);
  format_.hidden = character.hidden;
  formatChanged_ = false;
  newFormat_ = true;
}

// The font that text shows in, null for that of the program; how its bytes are read goes with it.
const RtfFont* RtfText::ChooseFont() {
  const RtfFont* font = header_.FindFont(state_.character.font);
  symbols_ = Symbols::None;
  codePage_ = font != nullptr && font->codePage >= 0 ? font->codePage : header_.codePage;
  if (codePage_ != SymbolCodePage) return font;
  if (font == nullptr || !EqualNoCase(font->name, "Symbol")) {
    symbols_ = Symbols::Private;
    return font;
  }
  // Text in the font Symbol becomes true Greek, which any font has.
  symbols_ = Symbols::Greek;
  const RtfFont* standard = header_.FindFont(-1);
  return standard != nullptr && standard->codePage == SymbolCodePage ? nullptr : standard;
}

}  // namespace tellurix
