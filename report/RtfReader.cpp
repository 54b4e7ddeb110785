// Rich text read from its bytes: the groups of the document, what each is for, and what its words are to do.
#include <algorithm>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "numeric/Text.h"
#include "report/RichText.h"
#include "report/RtfBlocks.h"
#include "report/RtfCodePage.h"
#include "report/RtfHeader.h"
#include "report/RtfKeywords.h"
#include "report/RtfLexer.h"
#include "report/RtfPicture.h"
#include "report/RtfState.h"
#include "report/RtfText.h"

namespace tellurix {

namespace {

using Kind = RtfToken::Kind;

// Bounds that, with those of the parts, keep time and memory linear in the size of the file whatever stands in it. All
// lie beyond what word processors write.
constexpr std::size_t MaxDepth = 1000;  // groups that keep their formatting state
constexpr int MaxListTokens = 100;      // looked through for the sign of a list item
constexpr int MaxApart = 3;             // texts within texts: a note in a box in a note

// Whether the next tokens are the picture among the properties of a shape; then the lexer goes on ahead of its value.
bool EnterPictureOfShape(RtfLexer& lexer) {
  RtfLexer ahead = lexer;
  const auto next = [&](Kind kind, std::string_view text) {
    const RtfToken token = ahead.Next();
    return token.kind == kind && (kind == Kind::Open || kind == Kind::Close || Trim(token.text) == text);
  };
  if (!next(Kind::Open, "") || !next(Kind::Word, "sn") || !next(Kind::Text, "pib") || !next(Kind::Close, "")) {
    return false;
  }
  const RtfLexer value = ahead;
  if (!next(Kind::Open, "") || !next(Kind::Word, "sv")) return false;
  const bool isPicture = next(Kind::Open, "") && next(Kind::Word, "pict");
  if (isPicture) lexer = value;
  return isPicture;
}

bool ShowsSomething(const RtfToken& token) {
  switch (token.kind) {
    case Kind::Text:
      return !Trim(token.text).empty();
    case Kind::Byte:
      return true;
    case Kind::Symbol:
      return ControlSymbol(token.text.front()) != 0;
    case Kind::Word: {
      const RtfKeyword* keyword = FindRtfKeyword(token.text);
      return keyword && (keyword->word == RtfWord::Unicode || keyword->word == RtfWord::Picture ||
                         (keyword->word == RtfWord::Character && keyword->value != '\t'));
    }
    default:
      return false;
  }
}

// Whether the group in which the next token stands has more to show than blanks and tabs. A long one has.
bool GroupShowsSomething(RtfLexer lexer) {
  int depth = 0;
  for (int tokens = 0; depth >= 0; ++tokens) {
    if (tokens == MaxListTokens) return true;
    const RtfToken token = lexer.Next();
    if (token.kind == Kind::End) return false;
    if (token.kind == Kind::Open) ++depth;
    if (token.kind == Kind::Close) --depth;
    if (ShowsSomething(token)) return true;
  }
  return false;
}

// Functions that answer with a truth value say whether the document goes on.
class RtfReader {
 public:
  explicit RtfReader(std::string_view bytes) : bytes_(bytes), lexer_(bytes) {}

  RichText Read() {
    while (Step()) {
    }
    return Finish();
  }

 private:
  // Reads one token.
  bool Step() {
    const std::size_t start = lexer_.Position();
    const RtfToken token = lexer_.Next();
    switch (token.kind) {
      case Kind::End:
        return false;
      case Kind::Open:
        OpenGroup();
        return true;
      case Kind::Close:
        text_.EndStandIns();
        return CloseGroup();
      case Kind::Text:
        text_.Bytes(token.text);
        return true;
      case Kind::Byte:
        text_.Byte(static_cast<unsigned char>(token.number));
        return true;
      case Kind::Binary:
        text_.Binary();
        return true;
      case Kind::Symbol:
        return Symbol(token.text.front());
      case Kind::Word:
        return Word(token, start);
    }
    return true;
  }

  RichText Finish() {
    RichText document{blocks_.Finish(state_.paragraph.inTable)};
    if (!notes_.empty()) document.blocks.emplace_back(Paragraph{});
    for (RichText& note : notes_) std::ranges::move(note.blocks, std::back_inserter(document.blocks));
    return document;
  }

  // --- Groups ---

  void OpenGroup() {
    text_.EndStandIns();
    if (skipNextGroup_) {
      skipNextGroup_ = false;
      lexer_.SkipGroup();
    } else if (states_.size() < MaxDepth) {
      states_.push_back(state_);
    } else {
      ++unkeptDepth_;
    }
  }

  // Not when the group was the whole document.
  bool CloseGroup() {
    if (unkeptDepth_ > 0) {
      --unkeptDepth_;
      return true;
    }
    if (states_.size() <= 1) return false;
    state_ = std::move(states_.back());
    states_.pop_back();
    text_.ChangeFormat();
    return true;
  }

  // Skips the group in which the next token stands.
  bool SkipGroup() { return lexer_.SkipGroup() && CloseGroup(); }

  // --- Symbols and words ---

  bool Symbol(char symbol) {
    if (symbol == '*') return Destination();
    if (const char32_t character = ControlSymbol(symbol); character != 0) text_.Character(character);
    return true;
  }

  // Behind "\*": only destinations that are known are read.
  bool Destination() {
    const std::size_t start = lexer_.Position();
    RtfLexer ahead = lexer_;
    const RtfToken token = ahead.Next();
    if (token.kind != Kind::Word) return SkipGroup();
    if (token.text == "shppict" || token.text == "ud") {
      lexer_ = ahead;
      return true;
    }
    const RtfKeyword* keyword = FindRtfKeyword(token.text);
    const auto isRead = [&] {
      switch (keyword->word) {
        case RtfWord::Picture:
        case RtfWord::NestedProperties:
        case RtfWord::TableEnd:
        case RtfWord::Note:
        case RtfWord::Shape:
          return true;
        default:
          return false;
      }
    };
    if (keyword == nullptr || !isRead()) return SkipGroup();
    lexer_ = ahead;
    return Word(token, start);
  }

  bool Word(const RtfToken& token, std::size_t start) {
    const RtfKeyword* keyword = FindRtfKeyword(token.text);
    if (keyword == nullptr) return true;
    if (keyword->word == RtfWord::Character) {
      text_.Character(static_cast<char32_t>(keyword->value));
      return true;
    }
    text_.EndStandIns();
    if (keyword->word <= RtfWord::ResetParagraph) {
      Property(*keyword, token);
    } else if (keyword->word == RtfWord::Style) {
      for (const auto& word : header_.Style(token.number)) Property(word.keyword, word.token);
    } else if (keyword->word <= RtfWord::NestedRow) {
      TextWord(*keyword, token);
    } else if (keyword->word <= RtfWord::Row) {
      TableWord(*keyword, token);
    } else if (keyword->word <= RtfWord::DefaultFont) {
      HeaderWord(*keyword, token);
    } else {
      return GroupWord(*keyword, token, start);
    }
    return true;
  }

  void Property(const RtfKeyword& keyword, const RtfToken& token) {
    if (unkeptDepth_ > 0) return;
    SetProperty(state_, nextTab_, keyword, token);
    text_.ChangeFormat();
  }

  void TextWord(const RtfKeyword& keyword, const RtfToken& token) {
    switch (keyword.word) {
      case RtfWord::Paragraph:
        blocks_.EndParagraph(state_.paragraph.inTable);
        break;
      case RtfWord::Page:
        if (text_.HasRuns()) blocks_.EndParagraph(state_.paragraph.inTable);
        break;
      case RtfWord::Unicode:
        if (token.hasNumber) text_.Unicode(token.number);
        break;
      case RtfWord::UnicodeSkip:
        if (unkeptDepth_ == 0) state_.unicodeSkip = std::max(0, token.number);
        break;
      case RtfWord::NoteMark:
        text_.Append(std::to_string(noteNumber_ > 0 ? noteNumber_ : NextNote()));
        break;
      case RtfWord::NestedCell:
        text_.EndNestedCell();
        break;
      case RtfWord::NestedRow:
        blocks_.EndNestedRow();
        break;
      default:
        break;
    }
  }

  void TableWord(const RtfKeyword& keyword, const RtfToken& token) {
    switch (keyword.word) {
      case RtfWord::Cell:
        blocks_.EndCell();
        break;
      case RtfWord::Row:
        blocks_.EndRow();
        break;
      default:
        blocks_.SetRowProperty(keyword, token);
        break;
    }
  }

  void HeaderWord(const RtfKeyword& keyword, const RtfToken& token) {
    switch (keyword.word) {
      case RtfWord::CodePage:
        header_.codePage = keyword.value;
        break;
      case RtfWord::CodePageNumber:
        header_.codePage = token.number == SymbolCodePage ? 1252 : token.number;
        break;
      case RtfWord::DefaultFont:
        header_.defaultFont = token.number;
        break;
      default:
        break;
    }
    text_.ChangeFormat();
  }

  // --- Destinations: what the group is that the word stands in ---

  bool GroupWord(const RtfKeyword& keyword, const RtfToken& token, std::size_t start) {
    switch (keyword.word) {
      case RtfWord::FontTable:
        text_.ChangeFormat();
        return header_.ReadFonts(lexer_, state_.unicodeSkip) && CloseGroup();
      case RtfWord::ColourTable:
        text_.ChangeFormat();
        return header_.ReadColours(lexer_) && CloseGroup();
      case RtfWord::StyleSheet:
        return header_.ReadStyles(lexer_) && CloseGroup();
      case RtfWord::Picture:
        text_.AppendPicture(std::make_shared<PictureGroup>(ReadPicture(lexer_, bytes_, start)));
        shapeIsRead_ = true;
        return CloseGroup();
      case RtfWord::TwoVersions:
        skipNextGroup_ = true;
        return true;
      case RtfWord::NestedProperties:
        blocks_.EndNestedRow();
        return SkipGroup();
      case RtfWord::TableEnd:
        blocks_.EndTable();
        return SkipGroup();
      case RtfWord::Note:
        notes_.push_back(ReadApart(NextNote()));
        return CloseGroup();
      case RtfWord::Shape:
        shapeIsRead_ = false;
        return true;
      case RtfWord::ShapeProperty:
        return EnterPictureOfShape(lexer_) || SkipGroup();
      case RtfWord::ShapeText:
        shapeIsRead_ = true;
        blocks_.AddBox(ReadApart(noteNumber_).blocks);
        return CloseGroup();
      case RtfWord::ShapeResult:  // the same in the form of older readers
        return !shapeIsRead_ || SkipGroup();
      case RtfWord::ListText:
        return GroupShowsSomething(lexer_) || SkipGroup();
      case RtfWord::Deleted:  // by a change that is tracked
        return !IsOn(token) || states_.size() <= 1 || SkipGroup();
      case RtfWord::Skip:
        return SkipGroup();
      default:
        return true;
    }
  }

  int NextNote() const { return static_cast<int>(notes_.size()) + 1; }

  // The rest of the group as a text of its own, with the tables of the document.
  RichText ReadApart(int noteNumber) {
    const std::size_t start = lexer_.Position();
    lexer_.SkipGroup();
    if (apart_ == MaxApart) return {};
    RtfReader reader(bytes_.substr(start, lexer_.Position() - start));
    reader.apart_ = apart_ + 1;
    reader.noteNumber_ = noteNumber;
    reader.state_ = state_;
    reader.state_.paragraph = {};
    reader.states_.push_back(reader.state_);  // of the group, as of a document's own
    reader.header_.codePage = header_.codePage;
    reader.header_.defaultFont = header_.defaultFont;
    reader.header_.ExchangeTables(header_);
    RichText text = reader.Read();
    reader.header_.ExchangeTables(header_);
    return text;
  }

  std::string_view bytes_;
  RtfLexer lexer_;
  RtfHeader header_;

  // Groups
  RtfState state_;
  std::vector<RtfState> states_;
  std::size_t unkeptDepth_ = 0;  // groups open beyond MaxDepth: text counts, formatting does not
  bool skipNextGroup_ = false;
  TabStop nextTab_;

  // Notes and shapes
  int apart_ = 0;       // how many texts this one stands in
  int noteNumber_ = 0;  // of the note that this text is; 0: none
  std::vector<RichText> notes_;
  bool shapeIsRead_ = false;  // the last shape has shown something

  RtfText text_{header_, state_};
  RtfBlocks blocks_{text_};
};

}  // namespace

std::optional<RichText> ReadRtf(std::string_view bytes) {
  std::string_view text = bytes;
  if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
  while (!text.empty() && (text.front() == ' ' || (text.front() >= '\t' && text.front() <= '\r')))
    text.remove_prefix(1);
  if (!text.starts_with("{\\rtf")) return std::nullopt;
  return RtfReader(text).Read();
}

}  // namespace tellurix
