#include <cstdint>
#include <unordered_map>

#include <utf8proc.h>

#include "numeric/Text.h"
#include "report/RichText.h"
#include "report/RtfPicture.h"

namespace tellurix {

namespace {

// Text in the 7-bit form of rich text. Characters that are control words of their own are written so.
class Escaper {
 public:
  explicit Escaper(std::string& out) : out_(out) {}

  void Write(std::string_view text) {
    if (!IsValidUtf8(text)) {
      Write(ToUtf8(text));
      return;
    }
    std::size_t at = 0;
    while (at < text.size()) {
      std::size_t plain = at;
      while (plain < text.size() && IsPlain(text[plain])) ++plain;
      out_ += text.substr(at, plain - at);
      at = plain;
      if (at == text.size()) break;
      utf8proc_int32_t codePoint = 0;
      const auto used = utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t*>(text.data() + at),
                                         static_cast<utf8proc_ssize_t>(text.size() - at), &codePoint);
      if (used <= 0) break;  // the text is valid
      at += static_cast<std::size_t>(used);
      WriteSpecial(codePoint);
    }
  }

 private:
  static bool IsPlain(char c) { return c >= 0x20 && c < 0x7F && c != '\\' && c != '{' && c != '}'; }

  void WriteSpecial(int codePoint) {
    switch (codePoint) {
      case '\\':
      case '{':
      case '}':
        out_ += '\\';
        out_ += static_cast<char>(codePoint);
        return;
      case '\t':
        out_ += "\\tab ";
        return;
      case '\n':
        out_ += "\\line ";
        return;
      case 0xA0:
        out_ += "\\~";
        return;
      case 0xAD:
        out_ += "\\-";
        return;
      case 0x2011:
        out_ += "\\_";
        return;
      default:
        break;
    }
    if (codePoint < 0xA0) return;  // a control character
    if (codePoint >= 0x10000) {
      WriteUnit(0xD800 + ((codePoint - 0x10000) >> 10));
      WriteUnit(0xDC00 + ((codePoint - 0x10000) & 0x3FF));
    } else {
      WriteUnit(codePoint);
    }
  }

  // One unit of UTF-16, as the signed number that readers of the format expect.
  void WriteUnit(int unit) {
    out_ += "\\u";
    out_ += std::to_string(unit >= 0x8000 ? unit - 0x10000 : unit);
    out_ += '?';
  }

  std::string& out_;
};

class RtfWriter {
 public:
  std::string Write(const RichText& document) {
    Collect(document);
    std::string tables = Tables();
    bool afterTable = false;
    for (const auto& block : document.blocks) {
      if (const auto* table = std::get_if<Table>(&block)) {
        // Without a paragraph between them two tables would be one. The reader knows this one by the mark before it.
        if (afterTable) out_ += "{\\*\\tableend}\\pard\\plain\\fs8\\par\n";
        for (const auto& row : table->rows) WriteRow(row);
        afterTable = true;
      } else {
        WriteParagraph(std::get<Paragraph>(block), "", "\\par\n");
        afterTable = false;
      }
    }
    out_ += '}';
    return std::move(tables) + out_;
  }

 private:
  void Collect(const RichText& document) {
    fontNumbers_[standard_.font] = 0;
    fonts_.push_back(standard_.font);
    const auto collect = [&](const Paragraph& paragraph) {
      for (const auto& run : paragraph.runs) {
        if (fontNumbers_.try_emplace(run.format.font, static_cast<int>(fonts_.size())).second) {
          fonts_.push_back(run.format.font);
        }
        if (run.format.colour != 0 &&
            colourNumbers_.try_emplace(run.format.colour, static_cast<int>(colours_.size()) + 1).second) {
          colours_.push_back(run.format.colour);
        }
      }
    };
    for (const auto& block : document.blocks) {
      if (const auto* table = std::get_if<Table>(&block)) {
        for (const auto& row : table->rows) {
          for (const auto& cell : row.cells) {
            for (const auto& paragraph : cell.paragraphs) collect(paragraph);
          }
        }
      } else {
        collect(std::get<Paragraph>(block));
      }
    }
  }

  std::string Tables() const {
    std::string text = "{\\rtf1\\ansi\\ansicpg1252\\uc1\\deff0\n{\\fonttbl";
    Escaper escaper(text);
    for (std::size_t i = 0; i < fonts_.size(); ++i) {
      text += "{\\f" + std::to_string(i) + "\\fnil\\fcharset0 ";
      escaper.Write(ReplaceAll(ReplaceAll(ReplaceAll(fonts_[i], ";", ""), "\t", " "), "\n", " "));
      text += ";}";
    }
    text += "}\n{\\colortbl;";
    for (const std::uint32_t colour : colours_) {
      text += "\\red" + std::to_string(colour >> 16 & 255) + "\\green" + std::to_string(colour >> 8 & 255) + "\\blue" +
              std::to_string(colour & 255) + ";";
    }
    text += "}\n";
    return text;
  }

  void Word(std::string_view word) {
    out_ += '\\';
    out_ += word;
  }
  void Word(std::string_view word, int number) {
    Word(word);
    out_ += std::to_string(number);
  }
  void WordUnlessZero(std::string_view word, int number) {
    if (number != 0) Word(word, number);
  }

  void WriteParagraph(const Paragraph& paragraph, std::string_view place, std::string_view end) {
    const ParagraphFormat& format = paragraph.format;
    out_ += "\\pard\\plain";
    out_ += place;
    WriteAlignment("\\q", format.alignment);
    WordUnlessZero("li", format.leftIndent);
    WordUnlessZero("ri", format.rightIndent);
    WordUnlessZero("fi", format.firstIndent);
    WordUnlessZero("sb", format.spaceBefore);
    WordUnlessZero("sa", format.spaceAfter);
    if (format.keepWithNext) Word("keepn");
    for (const auto& tab : format.tabs) {
      if (tab.decimal) {
        Word("tqdec");
      } else if (tab.alignment == Alignment::Right) {
        Word("tqr");
      } else if (tab.alignment == Alignment::Centre) {
        Word("tqc");
      }
      Word("tx", tab.position);
    }
    Word("f", 0);
    Word("fs", standard_.halfPoints);
    bool needsBlank = true;  // between a control word and text
    for (const auto& run : paragraph.runs) {
      const bool plain = run.format == standard_;
      if (!plain) {
        out_ += '{';
        WriteFormat(run.format);
      }
      if (run.picture) {
        out_ += PictureText(*run.picture);
      } else {
        if (!plain || needsBlank) out_ += ' ';
        Escaper(out_).Write(run.text);
      }
      if (!plain) out_ += '}';
      needsBlank = false;
    }
    out_ += end;
  }

  void WriteAlignment(std::string_view prefix, Alignment alignment) {
    static constexpr char letters[] = {'l', 'c', 'r', 'j'};
    if (alignment == Alignment::Left) return;
    out_ += prefix;
    out_ += letters[static_cast<int>(alignment)];
  }

  void WriteFormat(const CharFormat& format) {
    if (const int font = fontNumbers_.at(format.font); font != 0) Word("f", font);
    if (format.halfPoints != standard_.halfPoints) Word("fs", format.halfPoints);
    if (format.bold) Word("b");
    if (format.italic) Word("i");
    if (format.underline) Word("ul");
    if (format.strike) Word("strike");
    if (format.script == Script::Sub) Word("sub");
    if (format.script == Script::Super) Word("super");
    if (format.colour != 0) Word("cf", colourNumbers_.at(format.colour));
    if (format.hidden) Word("v");
  }

  void WriteRow(const TableRow& row) {
    if (row.cells.empty()) return;
    Word("trowd");
    Word("trgaph", row.cellGap);
    Word("trleft", row.leftEdge);
    if (row.alignment != Alignment::Justify) WriteAlignment("\\trq", row.alignment);
    if (row.header) Word("trhdr");
    out_ += '\n';
    for (const auto& cell : row.cells) {
      WriteBorder("clbrdrt", cell.borders.top);
      WriteBorder("clbrdrl", cell.borders.left);
      WriteBorder("clbrdrb", cell.borders.bottom);
      WriteBorder("clbrdrr", cell.borders.right);
      Word("cellx", cell.rightEdge);
      out_ += '\n';
    }
    static const Paragraph empty;
    for (const auto& cell : row.cells) {
      if (cell.paragraphs.empty()) WriteParagraph(empty, "\\intbl", "\\cell\n");
      for (const auto& paragraph : cell.paragraphs) {
        WriteParagraph(paragraph, "\\intbl", &paragraph == &cell.paragraphs.back() ? "\\cell\n" : "\\par\n");
      }
    }
    Word("row");
    out_ += '\n';
  }

  void WriteBorder(std::string_view word, int width) {
    if (width <= 0) return;
    Word(word);
    Word("brdrs");
    Word("brdrw", width);
  }

  const CharFormat standard_{};
  std::string out_;
  std::vector<std::string> fonts_;
  std::unordered_map<std::string, int> fontNumbers_;
  std::vector<std::uint32_t> colours_;
  std::unordered_map<std::uint32_t, int> colourNumbers_;
};

}  // namespace

std::string EscapeRtf(std::string_view text) {
  std::string rich;
  Escaper(rich).Write(text);
  return rich;
}

std::string WriteRtf(const RichText& document) { return RtfWriter().Write(document); }

}  // namespace tellurix
