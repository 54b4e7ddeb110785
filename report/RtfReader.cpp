#include <algorithm>
#include <cstdint>
#include <iterator>
#include <memory>
#include <unordered_map>
#include <utility>

#include "numeric/Text.h"
#include "report/RichText.h"
#include "report/RtfCodePage.h"
#include "report/RtfLexer.h"
#include "report/RtfPicture.h"

namespace tellurix {

namespace {

using Kind = RtfToken::Kind;

// Bounds that keep time and memory linear in the size of the file whatever stands in it. All lie beyond what word
// processors write.
constexpr std::size_t MaxDepth = 1000;  // groups that keep their formatting state
constexpr std::size_t MaxTabs = 64;     // of a paragraph
constexpr std::size_t MaxStyleWords = 64;
constexpr std::size_t MaxCells = 1000;  // defined for a row
constexpr std::size_t MaxFontName = 64;
constexpr int MaxLength = 1'000'000;  // twips
constexpr int MaxListTokens = 100;    // looked through for the sign of a list item
constexpr int MaxApart = 3;           // texts within texts: a note in a box in a note
constexpr int MaxHalfPoints = 3276;   // 1638 points, the largest size of the format
constexpr int DefaultCellWidth = 1440;
constexpr int DefaultBorder = 15;

enum class Word {
  // Characters
  Bold,
  Italic,
  Underline,
  Strike,
  Hidden,
  Script,
  Up,
  Down,
  Font,
  Size,
  Colour,
  Plain,
  // Paragraphs
  Align,
  LeftIndent,
  RightIndent,
  FirstIndent,
  SpaceBefore,
  SpaceAfter,
  KeepWithNext,
  TabKind,
  Tab,
  InTable,
  ResetParagraph,
  Style,
  // Text
  Character,
  Paragraph,
  Page,
  Unicode,
  UnicodeSkip,
  NestedCell,
  NestedRow,
  // Tables
  RowDefaults,
  RowGap,
  Padding,
  RowLeft,
  RowAlign,
  RowHeader,
  CellMerge,
  CellMergeDown,
  CellBorder,
  OtherBorder,
  BorderStyle,
  BorderWidth,
  CellEdge,
  Cell,
  Row,
  // The document
  CodePage,
  CodePageNumber,
  DefaultFont,
  FontTable,
  ColourTable,
  StyleSheet,
  Picture,
  TwoVersions,
  NestedProperties,
  TableEnd,
  Note,
  NoteMark,
  Shape,
  ShapeProperty,
  ShapeText,
  ShapeResult,
  ListText,
  Deleted,
  Skip,
};

struct Keyword {
  Word word;
  int value = 0;  // what the word stands for, where several words say the like
};

const std::unordered_map<std::string_view, Keyword>& Keywords() {
  const auto left = static_cast<int>(Alignment::Left);
  const auto centre = static_cast<int>(Alignment::Centre);
  const auto right = static_cast<int>(Alignment::Right);
  const auto justify = static_cast<int>(Alignment::Justify);
  static const std::unordered_map<std::string_view, Keyword> keywords = [&] {
    std::unordered_map<std::string_view, Keyword> map{
        {"b", {Word::Bold}},
        {"i", {Word::Italic}},
        {"v", {Word::Hidden}},
        {"ulnone", {Word::Underline, 0}},
        {"strike", {Word::Strike}},
        {"striked", {Word::Strike}},
        {"sub", {Word::Script, static_cast<int>(Script::Sub)}},
        {"super", {Word::Script, static_cast<int>(Script::Super)}},
        {"nosupersub", {Word::Script, static_cast<int>(Script::None)}},
        {"up", {Word::Up}},
        {"dn", {Word::Down}},
        {"f", {Word::Font}},
        {"fs", {Word::Size}},
        {"cf", {Word::Colour}},
        {"plain", {Word::Plain}},
        {"ql", {Word::Align, left}},
        {"qc", {Word::Align, centre}},
        {"qr", {Word::Align, right}},
        {"qj", {Word::Align, justify}},
        {"qd", {Word::Align, justify}},
        {"li", {Word::LeftIndent}},
        {"ri", {Word::RightIndent}},
        {"fi", {Word::FirstIndent}},
        {"sb", {Word::SpaceBefore}},
        {"sa", {Word::SpaceAfter}},
        {"keepn", {Word::KeepWithNext}},
        {"tqr", {Word::TabKind, right}},
        {"tqc", {Word::TabKind, centre}},
        {"tqdec", {Word::TabKind, -1}},
        {"tx", {Word::Tab}},
        {"intbl", {Word::InTable}},
        {"pard", {Word::ResetParagraph}},
        {"s", {Word::Style}},
        {"tab", {Word::Character, '\t'}},
        {"line", {Word::Character, '\n'}},
        {"lbr", {Word::Character, '\n'}},
        {"emdash", {Word::Character, 0x2014}},
        {"endash", {Word::Character, 0x2013}},
        {"lquote", {Word::Character, 0x2018}},
        {"rquote", {Word::Character, 0x2019}},
        {"ldblquote", {Word::Character, 0x201C}},
        {"rdblquote", {Word::Character, 0x201D}},
        {"bullet", {Word::Character, 0x2022}},
        {"enspace", {Word::Character, 0x2002}},
        {"emspace", {Word::Character, 0x2003}},
        {"qmspace", {Word::Character, 0x2005}},
        {"zwnj", {Word::Character, 0x200C}},
        {"zwj", {Word::Character, 0x200D}},
        {"ltrmark", {Word::Character, 0x200E}},
        {"rtlmark", {Word::Character, 0x200F}},
        {"zwbo", {Word::Character, 0x200B}},
        {"zwnbo", {Word::Character, 0x2060}},
        {"par", {Word::Paragraph}},
        {"sect", {Word::Page}},
        {"page", {Word::Page}},
        {"u", {Word::Unicode}},
        {"uc", {Word::UnicodeSkip}},
        {"nestcell", {Word::NestedCell}},
        {"nestrow", {Word::NestedRow}},
        {"trowd", {Word::RowDefaults}},
        {"trgaph", {Word::RowGap}},
        {"trpaddr", {Word::Padding}},
        {"clpadr", {Word::Padding}},
        {"trleft", {Word::RowLeft}},
        {"trql", {Word::RowAlign, left}},
        {"trqc", {Word::RowAlign, centre}},
        {"trqr", {Word::RowAlign, right}},
        {"trhdr", {Word::RowHeader}},
        {"clmrg", {Word::CellMerge}},
        {"clvmrg", {Word::CellMergeDown}},
        {"clbrdrt", {Word::CellBorder, 0}},
        {"clbrdrb", {Word::CellBorder, 1}},
        {"clbrdrl", {Word::CellBorder, 2}},
        {"clbrdrr", {Word::CellBorder, 3}},
        {"cldglu", {Word::OtherBorder}},
        {"cldgll", {Word::OtherBorder}},
        {"brdrw", {Word::BorderWidth}},
        {"cellx", {Word::CellEdge}},
        {"cell", {Word::Cell}},
        {"row", {Word::Row}},
        {"ansi", {Word::CodePage, 1252}},
        {"mac", {Word::CodePage, 10000}},
        {"pc", {Word::CodePage, 437}},
        {"pca", {Word::CodePage, 850}},
        {"ansicpg", {Word::CodePageNumber}},
        {"deff", {Word::DefaultFont}},
        {"fonttbl", {Word::FontTable}},
        {"colortbl", {Word::ColourTable}},
        {"stylesheet", {Word::StyleSheet}},
        {"pict", {Word::Picture}},
        {"upr", {Word::TwoVersions}},
        {"nesttableprops", {Word::NestedProperties}},
        {"tableend", {Word::TableEnd}},
    };
    for (const char* word :
         {"ul", "uld", "uldash", "uldashd", "uldashdd", "uldb", "ulhair", "ulhwave", "ulldash", "ulth", "ulthd",
          "ulthdash", "ulthdashd", "ulthdashdd", "ulthldash", "ululdbwave", "ulw", "ulwave"}) {
      map[word] = {Word::Underline, 1};
    }
    for (const char* word :
         {"brdrs",      "brdrth",         "brdrsh",     "brdrdb",     "brdrdot",      "brdrdash",
          "brdrhair",   "brdrdashsm",     "brdrdashd",  "brdrdashdd", "brdrdashdot",  "brdrdashdotdot",
          "brdrtriple", "brdrinset",      "brdroutset", "brdremboss", "brdrengrave",  "brdrwavy",
          "brdrwavydb", "brdrdashdotstr", "brdrtnthsg", "brdrthtnsg", "brdrtnthtnsg", "brdrtnthmg",
          "brdrthtnmg", "brdrtnthtnmg",   "brdrtnthlg", "brdrthtnlg", "brdrtnthtnlg"}) {
      map[word] = {Word::BorderStyle, 1};
    }
    for (const char* word : {"brdrnone", "brdrnil", "brdrtbl"}) map[word] = {Word::BorderStyle, 0};
    for (const char* word : {"brdrt", "brdrb", "brdrl", "brdrr", "brdrbtw", "brdrbar", "box", "chbrdr", "trbrdrt",
                             "trbrdrb", "trbrdrl", "trbrdrr", "trbrdrh", "trbrdrv"}) {
      map[word] = {Word::OtherBorder};
    }
    for (const char* word :
         {"aftncn",      "aftnsep",   "aftnsepc",      "annotation",   "author",       "background",
          "blipuid",     "bkmkend",   "bkmkstart",     "buptim",       "category",     "colorschememapping",
          "comment",     "company",   "creatim",       "datafield",    "datastore",    "do",
          "doccomm",     "docvar",    "falt",          "filetbl",      "fldinst",      "fontemb",
          "footer",      "footerf",   "footerl",       "footerr",      "formfield",    "ftncn",
          "ftnsep",      "ftnsepc",   "generator",     "header",       "headerf",      "headerl",
          "headerr",     "hlinkbase", "info",          "keywords",     "latentstyles", "listoverridetable",
          "listtable",   "manager",   "mmathPr",       "nonesttables", "nonshppict",   "objclass",
          "objdata",     "objname",   "operator",      "panose",       "pgptbl",       "picprop",
          "pn",          "pnseclvl",  "pntxta",        "pntxtb",       "printim",      "private1",
          "protusertbl", "revtbl",    "revtim",        "rsidtbl",      "rxe",          "sn",
          "subject",     "tc",        "tcn",           "template",     "themedata",    "title",
          "txe",         "userprops", "wgrffmtfilter", "xe",           "xmlnstbl"}) {
      map[word] = {Word::Skip};
    }
    map["footnote"] = {Word::Note};
    map["chftn"] = {Word::NoteMark};
    map["shpinst"] = {Word::Shape};
    map["sp"] = {Word::ShapeProperty};
    map["shptxt"] = {Word::ShapeText};
    map["shprslt"] = {Word::ShapeResult};
    map["listtext"] = map["pntext"] = {Word::ListText};
    map["deleted"] = {Word::Deleted};
    return map;
  }();
  return keywords;
}

const Keyword* FindKeyword(std::string_view name) {
  const auto& keywords = Keywords();
  const auto found = keywords.find(name);
  return found == keywords.end() ? nullptr : &found->second;
}

struct CharState {
  int font = -1;  // that of the document
  int halfPoints = 24;
  int colour = 0;
  Script script = Script::None;
  bool bold = false;
  bool italic = false;
  bool underline = false;
  bool strike = false;
  bool hidden = false;
};

struct ParagraphState {
  ParagraphFormat format;                            // all but the tabs
  std::shared_ptr<const std::vector<TabStop>> tabs;  // shared with the groups around
  bool inTable = false;
};

struct State {
  CharState character;
  ParagraphState paragraph;
  int unicodeSkip = 1;
};

struct FontEntry {
  std::string name;
  int codePage = -1;  // that of the document
};

struct StyleWord {
  Keyword keyword;
  RtfToken token;
};

struct BorderState {
  bool drawn = false;
  int width = DefaultBorder;
};

struct CellState {
  BorderState borders[4];  // top, bottom, left, right
  int rightEdge = 0;
  bool merged = false;      // with the cell before it
  bool mergedDown = false;  // with the cell above it

  Borders Widths() const {
    const auto width = [](const BorderState& border) { return border.drawn ? border.width : 0; };
    return {width(borders[0]), width(borders[1]), width(borders[2]), width(borders[3])};
  }
};

// The character that a control symbol stands for; 0 if none.
char32_t SymbolWord(char symbol) {
  switch (symbol) {
    case '~':
      return 0xA0;
    case '-':
      return 0xAD;
    case '_':
      return 0x2011;
    default:
      return 0;
  }
}

// One of the control characters U+0080 to U+009F; byte code pages leave them unassigned, UTF-8 has them.
bool IsControl(std::string_view character) {
  return character.size() == 2 && character[0] == '\xC2' && static_cast<unsigned char>(character[1]) < 0xA0;
}

bool IsEmpty(const std::vector<Paragraph>& paragraphs) {
  return std::all_of(paragraphs.begin(), paragraphs.end(), [](const Paragraph& one) { return one.runs.empty(); });
}

class RtfReader {
 public:
  explicit RtfReader(std::string_view bytes) : bytes_(bytes), lexer_(bytes) {}

  RichText Read() {
    while (Step()) {
    }
    Finish();
    return std::move(document_);
  }

 private:
  // Reads one token; false at the end of the document.
  bool Step() {
    const std::size_t start = lexer_.Position();
    const RtfToken token = lexer_.Next();
    switch (token.kind) {
      case Kind::End:
        return false;
      case Kind::Open:
        skip_ = 0;
        if (skipNextGroup_) {
          skipNextGroup_ = false;
          lexer_.SkipGroup();
        } else if (states_.size() < MaxDepth) {
          states_.push_back(state_);
        } else {
          ++unkeptDepth_;
        }
        return true;
      case Kind::Close:
        skip_ = 0;
        return CloseGroup();
      case Kind::Text:
        Text(token.text);
        return true;
      case Kind::Byte:
        if (skip_ > 0) {
          --skip_;
        } else {
          Byte(static_cast<unsigned char>(token.number));
        }
        return true;
      case Kind::Binary:
        if (skip_ > 0) --skip_;
        return true;
      case Kind::Symbol:
        return Symbol(token.text.front());
      case Kind::Word:
        return Control(token, start);
    }
    return true;
  }

  // False when the group was the whole document.
  bool CloseGroup() {
    if (unkeptDepth_ > 0) {
      --unkeptDepth_;
      return true;
    }
    if (states_.size() <= 1) return false;
    state_ = std::move(states_.back());
    states_.pop_back();
    formatChanged_ = true;
    return true;
  }

  // Skips the group in which the next token stands.
  bool SkipGroup() {
    if (!lexer_.SkipGroup()) return false;
    return CloseGroup();
  }

  bool Symbol(char symbol) {
    if (symbol == '*') return Destination();
    const char32_t character = SymbolWord(symbol);
    return character == 0 || Character(character);
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
    const Keyword* keyword = FindKeyword(token.text);
    const auto isRead = [&] {
      switch (keyword->word) {
        case Word::Picture:
        case Word::NestedProperties:
        case Word::TableEnd:
        case Word::Note:
        case Word::Shape:
          return true;
        default:
          return false;
      }
    };
    if (keyword == nullptr || !isRead()) return SkipGroup();
    lexer_ = ahead;
    return Control(token, start);
  }

  bool Control(const RtfToken& token, std::size_t start) {
    const Keyword* keyword = FindKeyword(token.text);
    if (keyword == nullptr) return true;
    if (keyword->word == Word::Character) return Character(static_cast<char32_t>(keyword->value));
    skip_ = 0;
    switch (keyword->word) {
      case Word::Paragraph:
        EndParagraph();
        break;
      case Word::Page:
        if (!paragraph_.runs.empty()) EndParagraph();
        break;
      case Word::Unicode:
        if (token.hasNumber) Unicode(token.number);
        break;
      case Word::UnicodeSkip:
        if (unkeptDepth_ == 0) state_.unicodeSkip = std::max(0, token.number);
        break;
      case Word::NestedCell:
        if (nestedCellEnded_) Append({});
        nestedCellEnded_ = true;
        break;
      case Word::NestedRow:
        EndNestedRow();
        break;
      case Word::NestedProperties:
        EndNestedRow();
        return SkipGroup();
      case Word::RowDefaults:
      case Word::RowGap:
      case Word::Padding:
      case Word::RowLeft:
      case Word::RowAlign:
      case Word::RowHeader:
      case Word::CellMerge:
      case Word::CellMergeDown:
      case Word::CellBorder:
      case Word::OtherBorder:
      case Word::BorderStyle:
      case Word::BorderWidth:
      case Word::CellEdge:
        RowProperty(*keyword, token);
        break;
      case Word::Cell:
        EndCell();
        break;
      case Word::Row:
        EndRow();
        break;
      case Word::CodePage:
        codePage_ = keyword->value;
        formatChanged_ = true;
        break;
      case Word::CodePageNumber:
        codePage_ = token.number == SymbolCodePage ? 1252 : token.number;
        formatChanged_ = true;
        break;
      case Word::DefaultFont:
        defaultFont_ = token.number;
        formatChanged_ = true;
        break;
      case Word::FontTable:
        return ReadFontTable() && CloseGroup();
      case Word::ColourTable:
        return ReadColourTable() && CloseGroup();
      case Word::StyleSheet:
        return ReadStyleSheet() && CloseGroup();
      case Word::Picture: {
        auto picture = std::make_shared<PictureGroup>(ReadPicture(lexer_, bytes_, start));
        if (nestedCellEnded_) Append({});
        FlushSurrogate();
        NextRun(true).picture = std::move(picture);
        shapeIsRead_ = true;
        return CloseGroup();
      }
      case Word::TwoVersions:
        skipNextGroup_ = true;
        break;
      case Word::TableEnd:
        CloseTable();
        partsTables_ = true;
        return SkipGroup();
      case Word::Note:
        notes_.push_back(ReadApart(static_cast<int>(notes_.size()) + 1));
        return CloseGroup();
      case Word::NoteMark:
        Append(std::to_string(noteNumber_ > 0 ? noteNumber_ : static_cast<int>(notes_.size()) + 1));
        break;
      case Word::Shape:
        shapeIsRead_ = false;
        break;
      case Word::ShapeProperty:
        return IsPictureOfShape() || SkipGroup();
      case Word::ShapeText:
        shapeIsRead_ = true;
        for (Block& block : ReadApart(noteNumber_).blocks) boxes_.push_back(std::move(block));
        return CloseGroup();
      case Word::ShapeResult:  // the same in the form of older readers
        return !shapeIsRead_ || SkipGroup();
      case Word::ListText:
        return ShowsSomething() || SkipGroup();
      case Word::Deleted:  // by a change that is tracked
        return (token.hasNumber && token.number == 0) || states_.size() <= 1 || SkipGroup();
      case Word::Skip:
        return SkipGroup();
      case Word::Style:
        if (const auto style = styles_.find(token.number); style != styles_.end()) {
          for (const auto& word : style->second) Property(word.keyword, word.token);
        }
        break;
      default:
        Property(*keyword, token);
        break;
    }
    return true;
  }

  // --- Notes and shapes ---

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
    reader.codePage_ = codePage_;
    reader.defaultFont_ = defaultFont_;
    const auto exchangeTables = [&] {
      reader.fonts_.swap(fonts_);
      reader.colours_.swap(colours_);
      reader.styles_.swap(styles_);
    };
    exchangeTables();
    RichText text = reader.Read();
    exchangeTables();
    return text;
  }

  // Whether the property that begins here is the picture of a shape; then it is gone into.
  bool IsPictureOfShape() {
    RtfLexer ahead = lexer_;
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
    if (isPicture) lexer_ = value;
    return isPicture;
  }

  // Whether the rest of the group has more to show than blanks and tabs. A long one has.
  bool ShowsSomething() const {
    RtfLexer ahead = lexer_;
    int depth = 0;
    for (int tokens = 0; depth >= 0; ++tokens) {
      if (tokens == MaxListTokens) return true;
      const RtfToken token = ahead.Next();
      switch (token.kind) {
        case Kind::End:
          return false;
        case Kind::Open:
          ++depth;
          break;
        case Kind::Close:
          --depth;
          break;
        case Kind::Text:
          if (!Trim(token.text).empty()) return true;
          break;
        case Kind::Byte:
          return true;
        case Kind::Symbol:
          if (SymbolWord(token.text.front()) != 0) return true;
          break;
        case Kind::Word:
          if (const Keyword* keyword = FindKeyword(token.text);
              keyword && (keyword->word == Word::Unicode || keyword->word == Word::Picture ||
                          (keyword->word == Word::Character && keyword->value != '\t'))) {
            return true;
          }
          break;
        case Kind::Binary:
          break;
      }
    }
    return false;
  }

  // What stands in boxes comes after the paragraph to which they are tied.
  void PlaceBoxes(bool inCell) {
    for (Block& block : std::exchange(boxes_, {})) {
      if (!inCell) {
        document_.blocks.push_back(std::move(block));
      } else if (auto* paragraph = std::get_if<Paragraph>(&block)) {
        cell_.push_back(std::move(*paragraph));
      } else {
        for (TableRow& row : std::get<Table>(block).rows) {
          for (TableCell& cell : row.cells) std::ranges::move(cell.paragraphs, std::back_inserter(cell_));
        }
      }
    }
  }

  void PlaceNotes() {
    if (!notes_.empty()) document_.blocks.emplace_back(Paragraph{});
    for (RichText& note : notes_) std::ranges::move(note.blocks, std::back_inserter(document_.blocks));
  }

  void Property(const Keyword& keyword, const RtfToken& token) {
    if (unkeptDepth_ > 0) return;
    CharState& character = state_.character;
    ParagraphFormat& format = state_.paragraph.format;
    const bool on = !token.hasNumber || token.number != 0;
    const int length = std::clamp(token.number, -MaxLength, MaxLength);
    formatChanged_ = true;
    switch (keyword.word) {
      case Word::Bold:
        character.bold = on;
        break;
      case Word::Italic:
        character.italic = on;
        break;
      case Word::Underline:
        character.underline = on && keyword.value != 0;
        break;
      case Word::Strike:
        character.strike = on;
        break;
      case Word::Hidden:
        character.hidden = on;
        break;
      case Word::Script:
        character.script = on ? static_cast<Script>(keyword.value) : Script::None;
        break;
      case Word::Up:
        character.script = on ? Script::Super : Script::None;
        break;
      case Word::Down:
        character.script = on ? Script::Sub : Script::None;
        break;
      case Word::Font:
        character.font = token.number;
        break;
      case Word::Size:
        if (!token.hasNumber) character.halfPoints = 24;
        if (token.number > 0) character.halfPoints = std::min(token.number, MaxHalfPoints);
        break;
      case Word::Colour:
        character.colour = token.number;
        break;
      case Word::Plain:
        character = CharState{};
        break;
      case Word::Align:
        format.alignment = static_cast<Alignment>(keyword.value);
        break;
      case Word::LeftIndent:
        format.leftIndent = length;
        break;
      case Word::RightIndent:
        format.rightIndent = length;
        break;
      case Word::FirstIndent:
        format.firstIndent = length;
        break;
      case Word::SpaceBefore:
        format.spaceBefore = length;
        break;
      case Word::SpaceAfter:
        format.spaceAfter = length;
        break;
      case Word::KeepWithNext:
        format.keepWithNext = on;
        break;
      case Word::TabKind:
        nextTab_.decimal = keyword.value < 0;
        nextTab_.alignment = nextTab_.decimal ? Alignment::Left : static_cast<Alignment>(keyword.value);
        break;
      case Word::Tab: {
        nextTab_.position = length;
        auto tabs = std::make_shared<std::vector<TabStop>>();
        if (state_.paragraph.tabs) *tabs = *state_.paragraph.tabs;
        if (tabs->size() < MaxTabs) tabs->push_back(nextTab_);
        state_.paragraph.tabs = std::move(tabs);
        nextTab_ = TabStop{};
        break;
      }
      case Word::InTable:
        state_.paragraph.inTable = on;
        break;
      case Word::ResetParagraph:
        state_.paragraph = ParagraphState{};
        nextTab_ = TabStop{};
        break;
      default:
        break;
    }
  }

  // --- Text ---

  void Text(std::string_view text) {
    const std::size_t dropped = std::min(text.size(), static_cast<std::size_t>(skip_));
    skip_ -= static_cast<int>(dropped);
    text.remove_prefix(dropped);
    while (!text.empty()) {
      if (formatChanged_) RefreshFormat();
      std::size_t plain = 0;
      if (!decoder_.HasPending() && symbols_ == Symbols::None) {
        while (plain < text.size() && text[plain] >= 0x20 && text[plain] < 0x7F) ++plain;
      }
      if (plain > 0) {
        Append(text.substr(0, plain));
        text.remove_prefix(plain);
      } else {
        Byte(static_cast<unsigned char>(text.front()));
        text.remove_prefix(1);
      }
    }
  }

  void Byte(unsigned char byte) {
    if (formatChanged_) RefreshFormat();
    if (byte < 0x20 || byte == 0x7F) {
      if (byte == '\t') AppendCharacter('\t');
    } else if (symbols_ == Symbols::Greek) {
      AppendCharacter(SymbolCharacter(byte));
    } else if (const std::string text = decoder_.Decode(byte, textPage_); !text.empty() && !IsControl(text)) {
      Append(text);
    }
  }

  // A character written as a control word counts as one where the stand-ins of a \u are skipped.
  bool Character(char32_t character) {
    if (skip_ > 0) {
      --skip_;
    } else {
      AppendCharacter(character);
    }
    return true;
  }

  void Unicode(int number) {
    if (formatChanged_) RefreshFormat();
    skip_ = state_.unicodeSkip;
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

  void AppendCharacter(char32_t character) {
    if (character < 0x80) {
      const char one = static_cast<char>(character);
      Append(std::string_view(&one, 1));
    } else {
      Append(EncodeUtf8(character));
    }
  }

  void Append(std::string_view text) {
    FlushSurrogate();
    std::string& run = NextRun(false).text;
    if (nestedCellEnded_) {
      nestedCellEnded_ = false;
      run += '\t';
    }
    run += text;
  }

  void FlushSurrogate() {
    if (highSurrogate_ == 0) return;
    highSurrogate_ = 0;
    NextRun(false).text += EncodeUtf8(0xFFFD);
  }

  // The run that text of the present format goes on in.
  Run& NextRun(bool forPicture) {
    if (formatChanged_) RefreshFormat();
    auto& runs = paragraph_.runs;
    if (forPicture || runs.empty() || runs.back().picture || (newFormat_ && runs.back().format != format_)) {
      runs.push_back({{}, format_, nullptr});
    }
    newFormat_ = false;
    return runs.back();
  }

  void RefreshFormat() {
    const CharState& character = state_.character;
    const FontEntry* font = FindFont(character.font);
    symbols_ = Symbols::None;
    textPage_ = font != nullptr && font->codePage >= 0 ? font->codePage : codePage_;
    if (textPage_ == SymbolCodePage) {
      const bool greek = font != nullptr && EqualNoCase(font->name, "Symbol");
      symbols_ = greek ? Symbols::Greek : Symbols::Private;
      // Text in the font Symbol becomes true Greek, which any font has.
      if (greek) {
        font = FindFont(-1);
        if (font != nullptr && font->codePage == SymbolCodePage) font = nullptr;
      }
    }
    if (font != nullptr && !font->name.empty()) {
      format_.font = font->name;
    } else {
      format_.font = CharFormat{}.font;
    }
    format_.halfPoints = character.halfPoints;
    format_.bold = character.bold;
    format_.italic = character.italic;
    format_.underline = character.underline;
    format_.strike = character.strike;
    format_.script = character.script;
    const bool coloured = character.colour > 0 && static_cast<std::size_t>(character.colour) < colours_.size();
    format_.colour = coloured ? colours_[static_cast<std::size_t>(character.colour)] : 0;
    format_.hidden = character.hidden;
    formatChanged_ = false;
    newFormat_ = true;
  }

  const FontEntry* FindFont(int number) const {
    auto found = fonts_.find(number);
    if (found == fonts_.end()) found = fonts_.find(defaultFont_);
    return found == fonts_.end() ? nullptr : &found->second;
  }

  // --- Paragraphs and tables ---

  Paragraph TakeParagraph() {
    if (const std::string rest = decoder_.Flush(); !rest.empty()) Append(rest);
    FlushSurrogate();
    nestedCellEnded_ = false;
    paragraph_.format = state_.paragraph.format;
    if (state_.paragraph.tabs) paragraph_.format.tabs = *state_.paragraph.tabs;
    return std::exchange(paragraph_, Paragraph{});
  }

  void EndParagraph() {
    if (state_.paragraph.inTable) {
      cell_.push_back(TakeParagraph());
      PlaceBoxes(true);
    } else {
      Paragraph paragraph = TakeParagraph();
      if (std::exchange(partsTables_, false) && paragraph.runs.empty() && boxes_.empty()) return;
      CloseTable();
      document_.blocks.emplace_back(std::move(paragraph));
      PlaceBoxes(false);
    }
    afterNestedRow_ = false;
  }

  // The rows of a table inside a cell become paragraphs of the cell, its cells are parted by tabs.
  void EndNestedRow() {
    if (!paragraph_.runs.empty() || nestedCellEnded_) cell_.push_back(TakeParagraph());
    afterNestedRow_ = true;
  }

  void EndCell() {
    partsTables_ = false;
    Paragraph last = TakeParagraph();
    if (!afterNestedRow_ || cell_.empty() || !last.runs.empty()) cell_.push_back(std::move(last));
    PlaceBoxes(true);
    afterNestedRow_ = false;
    cells_.push_back(std::exchange(cell_, {}));
  }

  void RowProperty(const Keyword& keyword, const RtfToken& token) {
    const int length = std::clamp(token.number, -MaxLength, MaxLength);
    switch (keyword.word) {
      case Word::RowDefaults:
        row_ = TableRow{};
        row_.cellGap = 0;
        padding_ = 0;
        cellStates_.clear();
        cellState_ = CellState{};
        border_ = nullptr;
        break;
      case Word::RowGap:
        row_.cellGap = length;
        break;
      case Word::Padding:
        padding_ = std::max(padding_, length);
        break;
      case Word::RowLeft:
        row_.leftEdge = length;
        break;
      case Word::RowAlign:
        row_.alignment = static_cast<Alignment>(keyword.value);
        break;
      case Word::RowHeader:
        row_.header = !token.hasNumber || token.number != 0;
        break;
      case Word::CellMerge:
        cellState_.merged = true;
        break;
      case Word::CellMergeDown:
        cellState_.mergedDown = true;
        break;
      case Word::CellBorder:
        border_ = &cellState_.borders[keyword.value];
        *border_ = BorderState{};
        break;
      case Word::OtherBorder:
        border_ = nullptr;
        break;
      case Word::BorderStyle:
        if (border_ != nullptr) border_->drawn = keyword.value != 0;
        break;
      case Word::BorderWidth:
        if (border_ != nullptr) border_->width = std::max(1, length);
        break;
      case Word::CellEdge:
        cellState_.rightEdge = length;
        if (cellStates_.size() < MaxCells) cellStates_.push_back(cellState_);
        cellState_ = CellState{};
        border_ = nullptr;
        break;
      default:
        break;
    }
  }

  void EndRow() {
    if (!paragraph_.runs.empty()) EndCell();
    if (!cell_.empty()) cells_.push_back(std::exchange(cell_, {}));
    if (cells_.empty()) return;
    TableRow row = row_;
    if (row.cellGap == 0) row.cellGap = padding_;
    row.cells.reserve(cells_.size());
    int edge = row.leftEdge;
    for (std::size_t i = 0; i < cells_.size(); ++i) {
      const bool defined = i < cellStates_.size();
      if (!defined && !cellStates_.empty() && IsEmpty(cells_[i])) continue;  // some writers end a cell too many
      const CellState state = defined ? cellStates_[i] : CellState{};
      edge = defined ? state.rightEdge : std::min(edge + DefaultCellWidth, MaxLength);
      if (state.merged && !row.cells.empty()) {
        TableCell& whole = row.cells.back();
        whole.rightEdge = edge;
        whole.borders.right = state.Widths().right;
        if (!IsEmpty(cells_[i])) std::move(cells_[i].begin(), cells_[i].end(), std::back_inserter(whole.paragraphs));
        continue;
      }
      TableCell cell{std::move(cells_[i]), edge, state.Widths()};
      if (state.mergedDown && !table_.rows.empty()) {
        // No line runs through the merged cell.
        cell.borders.top = 0;
        auto& above = table_.rows.back().cells;
        const std::size_t place = row.cells.size();
        if (place < above.size() && above[place].rightEdge == edge) above[place].borders.bottom = 0;
      }
      row.cells.push_back(std::move(cell));
    }
    cells_.clear();
    table_.rows.push_back(std::move(row));
  }

  // A row without its end is closed; paragraphs that wait for the end of a cell which never came stand behind the
  // table.
  void CloseTable() {
    if (!cells_.empty()) EndRow();
    if (!table_.rows.empty()) document_.blocks.emplace_back(std::exchange(table_, Table{}));
    for (auto& paragraph : cell_) document_.blocks.emplace_back(std::move(paragraph));
    cell_.clear();
  }

  void Finish() {
    if (nestedCellEnded_ || highSurrogate_ != 0 || decoder_.HasPending() || !paragraph_.runs.empty()) {
      Paragraph last = TakeParagraph();
      if (!last.runs.empty()) {
        if (state_.paragraph.inTable) {
          cell_.push_back(std::move(last));
        } else {
          CloseTable();
          document_.blocks.emplace_back(std::move(last));
        }
      }
    }
    CloseTable();
    PlaceBoxes(false);
    PlaceNotes();
  }

  // --- Tables of the document. Each reads up to and with the brace that closes its group; false at the end of the
  // bytes.

  bool ReadFontTable() {
    FontEntry font;
    int number = -1;
    int skip = 0;
    bool named = false;
    std::size_t depth = 0;
    RtfDecoder decoder;
    const auto store = [&] {
      if (number >= 0 && named) {
        const std::string_view name = Trim(font.name);
        fonts_[number] = {std::string(name), font.codePage};
      }
      font = FontEntry{};
      named = false;
    };
    const auto add = [&](std::string_view character) {
      if (font.name.size() < MaxFontName && character.size() < 4 && !IsControl(character)) font.name += character;
      named = true;
    };
    const auto byte = [&](unsigned char c) {
      if (skip > 0) {
        --skip;
      } else if (c == ';') {
        store();
      } else if (c >= 0x20 && c != 0x7F) {
        const int page = font.codePage >= 0 && font.codePage != SymbolCodePage ? font.codePage : codePage_;
        add(decoder.Decode(c, page));
      }
    };
    formatChanged_ = true;
    for (;;) {
      const RtfToken token = lexer_.Next();
      switch (token.kind) {
        case Kind::End:
          store();
          return false;
        case Kind::Open:
          ++depth;
          skip = 0;
          break;
        case Kind::Close:
          skip = 0;
          if (depth <= 1) store();
          if (depth-- == 0) return true;
          break;
        case Kind::Text:
          for (const char c : token.text) byte(static_cast<unsigned char>(c));
          break;
        case Kind::Byte:
          byte(static_cast<unsigned char>(token.number));
          break;
        case Kind::Symbol:
          if (token.text == "*") {
            if (!lexer_.SkipGroup()) return false;
            if (depth-- == 0) return true;
          } else if (const char32_t character = SymbolWord(token.text.front()); character != 0) {
            add(EncodeUtf8(character));
          }
          break;
        case Kind::Word:
          if (token.text == "f") {
            store();
            number = token.number;
          } else if (token.text == "fcharset") {
            font.codePage = CodePageOfCharset(token.number, -1);
          } else if (token.text == "cpg" && font.codePage != SymbolCodePage) {
            font.codePage = token.number > 0 ? token.number : -1;
          } else if (token.text == "u" && token.hasNumber) {
            const int codePoint = token.number < 0 ? token.number + 65536 : token.number;
            if (codePoint >= 0xA0 && codePoint < 0x10000) add(EncodeUtf8(static_cast<char32_t>(codePoint)));
            skip = state_.unicodeSkip;
          }
          break;
        default:
          break;
      }
    }
  }

  bool ReadColourTable() {
    std::uint32_t colour = 0;
    std::size_t depth = 0;
    const auto part = [](int value) { return static_cast<std::uint32_t>(std::clamp(value, 0, 255)); };
    colours_.clear();
    formatChanged_ = true;
    for (;;) {
      const RtfToken token = lexer_.Next();
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

  // Keeps the properties of each paragraph style as the words that set them.
  bool ReadStyleSheet() {
    std::size_t depth = 0;
    int number = 0;
    std::vector<StyleWord> words;
    for (;;) {
      const RtfToken token = lexer_.Next();
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
            if (!lexer_.SkipGroup()) return false;
            if (depth-- == 0) return true;
          }
          break;
        case Kind::Word:
          if (const Keyword* keyword = FindKeyword(token.text); keyword != nullptr) {
            if (keyword->word == Word::Style) {
              number = token.number;
            } else if (keyword->word <= Word::Tab && words.size() <= MaxStyleWords) {
              words.push_back({*keyword, token});
            }
          }
          break;
        default:
          break;
      }
    }
  }

  enum class Symbols { None, Greek, Private };  // what the present font makes of its bytes

  std::string_view bytes_;
  RtfLexer lexer_;
  RichText document_;

  // Tables of the document
  int codePage_ = 1252;
  int defaultFont_ = 0;
  std::unordered_map<int, FontEntry> fonts_;
  std::vector<std::uint32_t> colours_;
  std::unordered_map<int, std::vector<StyleWord>> styles_;

  // Groups
  State state_;
  std::vector<State> states_;
  std::size_t unkeptDepth_ = 0;  // groups open beyond MaxDepth: text counts, formatting does not
  bool skipNextGroup_ = false;

  // Text
  RtfDecoder decoder_;
  CharFormat format_;          // of state_, unless formatChanged_
  bool formatChanged_ = true;  // format_, textPage_ and symbols_ are to be found anew
  bool newFormat_ = true;      // format_ may differ from that of the last run
  int textPage_ = 1252;
  Symbols symbols_ = Symbols::None;
  int skip_ = 0;  // stand-ins of a \u yet to be skipped
  char32_t highSurrogate_ = 0;
  TabStop nextTab_;

  // Notes and shapes
  int apart_ = 0;       // how many texts this one stands in
  int noteNumber_ = 0;  // of the note that this text is; 0: none
  std::vector<RichText> notes_;
  std::vector<Block> boxes_;  // of the paragraph under way
  bool shapeIsRead_ = false;  // the last shape has shown something

  // Paragraphs and tables under way
  Paragraph paragraph_;
  std::vector<Paragraph> cell_;                // paragraphs of the cell under way
  std::vector<std::vector<Paragraph>> cells_;  // of the row under way
  Table table_;
  TableRow row_;     // properties
  int padding_ = 0;  // at the right of the cells; newer writers give it in place of the gap
  std::vector<CellState> cellStates_;
  CellState cellState_;
  BorderState* border_ = nullptr;  // that of the last border word
  bool nestedCellEnded_ = false;   // a tab is due before the next text
  bool afterNestedRow_ = false;
  bool partsTables_ = false;  // an empty paragraph now does nothing but part two tables
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
