#include "report/RtfPicture.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

namespace tellurix {

namespace {

constexpr std::array<std::string_view, 8> Kinds{"wmetafile", "emfblip",    "pngblip",  "jpegblip",
                                                "macpict",   "pmmetafile", "dibitmap", "wbitmap"};

// The group written out of the fields alone.
std::string MakeGroup(const PictureGroup& picture) {
  static constexpr std::string_view digits = "0123456789abcdef";
  std::string group = "{\\pict";
  if (!picture.kind.empty()) group += '\\';
  group += picture.kind;
  group += fmt::format("\\picw{}\\pich{}\\picwgoal{}\\pichgoal{} ", picture.width, picture.height, picture.goalWidth,
                       picture.goalHeight);
  group.reserve(group.size() + 2 * picture.bytes.size() + 1);
  for (const char c : picture.bytes) {
    const auto byte = static_cast<unsigned char>(c);
    group.push_back(digits[byte >> 4]);
    group.push_back(digits[byte & 15]);
  }
  group.push_back('}');
  return group;
}

// Collects the bytes of hexadecimal digits; skips everything else.
class HexReader {
 public:
  void Read(std::string_view text, std::string& bytes) {
    for (const char c : text) {
      int digit = 0;
      if (c >= '0' && c <= '9') {
        digit = c - '0';
      } else if (c >= 'a' && c <= 'f') {
        digit = c - 'a' + 10;
      } else if (c >= 'A' && c <= 'F') {
        digit = c - 'A' + 10;
      } else {
        continue;
      }
      if (half_ < 0) {
        half_ = digit;
      } else {
        bytes.push_back(static_cast<char>(16 * half_ + digit));
        half_ = -1;
      }
    }
  }

 private:
  int half_ = -1;
};

}  // namespace

PictureGroup ReadPicture(RtfLexer& lexer, std::string_view bytes, std::size_t start) {
  using Kind = RtfToken::Kind;
  PictureGroup picture;
  HexReader hex;
  const auto read = [&](const RtfToken& token) {
    if (token.text == "picw") {
      picture.width = token.number;
    } else if (token.text == "pich") {
      picture.height = token.number;
    } else if (token.text == "picwgoal") {
      picture.goalWidth = token.number;
    } else if (token.text == "pichgoal") {
      picture.goalHeight = token.number;
    } else if (std::find(Kinds.begin(), Kinds.end(), token.text) != Kinds.end()) {
      picture.kind = token.text;
      if (token.hasNumber) picture.kind += std::to_string(token.number);
    }
  };
  bool closed = false;
  for (bool more = true; more;) {
    const RtfToken token = lexer.Next();
    switch (token.kind) {
      case Kind::Text:
        hex.Read(token.text, picture.bytes);
        break;
      case Kind::Binary:
        picture.bytes += token.text;
        break;
      case Kind::Word:
        read(token);
        break;
      case Kind::Open:
        more = lexer.SkipGroup();
        break;
      case Kind::Close:
        closed = true;
        more = false;
        break;
      case Kind::End:
        more = false;
        break;
      default:
        break;
    }
  }
  // A group that was cut short is written anew from what was read of it.
  if (closed) {
    picture.group.reserve(lexer.Position() - start + 1);
    picture.group.push_back('{');
    picture.group += bytes.substr(start, lexer.Position() - start);
    if (picture.group.size() < 2 * picture.bytes.size() + 256 && picture.group == MakeGroup(picture)) {
      picture.group.clear();
      picture.group.shrink_to_fit();
    }
  }
  return picture;
}

std::string PictureText(const PictureGroup& picture) {
  return picture.group.empty() ? MakeGroup(picture) : picture.group;
}

std::pair<int, int> PictureSize(const PictureGroup& picture) {
  if (picture.goalWidth > 0 && picture.goalHeight > 0) return {picture.goalWidth, picture.goalHeight};
  // Pixels are taken as 1/96 inch; metafiles measure in hundredths of a millimetre.
  const bool pixels = picture.kind == "pngblip" || picture.kind == "jpegblip";
  const double unit = pixels ? 1440.0 / 96 : 1440.0 / 2540;
  const auto length = [&](int own) { return static_cast<int>(std::clamp(own * unit, 0.0, 1e6)); };
  if (picture.width > 0 && picture.height > 0) return {length(picture.width), length(picture.height)};
  return {2880, 2160};
}

}  // namespace tellurix
