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
  group += fmt::format("\\picw{}\\pich{}\\picwgoal{}\\pichgoal{}", picture.width, picture.height, picture.goalWidth,
                       picture.goalHeight);
  if (picture.scaleX != 100) group += fmt::format("\\picscalex{}", picture.scaleX);
  if (picture.scaleY != 100) group += fmt::format("\\picscaley{}", picture.scaleY);
  group += ' ';
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
    } else if (token.text == "picscalex") {
      picture.scaleX = token.number;
    } else if (token.text == "picscaley") {
      picture.scaleY = token.number;
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
  // Pixels are taken as 1/96 inch; metafiles measure in hundredths of a millimetre.
  const bool pixels = picture.kind == "pngblip" || picture.kind == "jpegblip";
  const double unit = pixels ? 1440.0 / 96 : 1440.0 / 2540;
  const auto length = [&](int goal, int own, int scale, double otherwise) {
    double twips = goal > 0 ? goal : own * unit;
    if (!(twips > 0)) twips = otherwise;
    return static_cast<int>(std::clamp(twips * (scale > 0 ? scale / 100.0 : 1.0), 1.0, 1e6));
  };
  return {length(picture.goalWidth, picture.width, picture.scaleX, 2880),
          length(picture.goalHeight, picture.height, picture.scaleY, 2160)};
}

}  // namespace tellurix
