#include "report/RtfKeywords.h"

#include <algorithm>
#include <unordered_map>

#include "report/RichText.h"

namespace tellurix {

namespace {

const std::unordered_map<std::string_view, RtfKeyword>& Keywords() {
  const auto left = static_cast<int>(Alignment::Left);
  const auto centre = static_cast<int>(Alignment::Centre);
  const auto right = static_cast<int>(Alignment::Right);
  const auto justify = static_cast<int>(Alignment::Justify);
  static const std::unordered_map<std::string_view, RtfKeyword> keywords = [&] {
    std::unordered_map<std::string_view, RtfKeyword> map{
        {"b", {RtfWord::Bold}},
        {"i", {RtfWord::Italic}},
        {"v", {RtfWord::Hidden}},
        {"ulnone", {RtfWord::Underline, 0}},
        {"strike", {RtfWord::Strike}},
        {"striked", {RtfWord::Strike}},
        {"sub", {RtfWord::Script, static_cast<int>(Script::Sub)}},
        {"super", {RtfWord::Script, static_cast<int>(Script::Super)}},
        {"nosupersub", {RtfWord::Script, static_cast<int>(Script::None)}},
        {"up", {RtfWord::Up}},
        {"dn", {RtfWord::Down}},
        {"f", {RtfWord::Font}},
        {"fs", {RtfWord::Size}},
        {"cf", {RtfWord::Colour}},
        {"plain", {RtfWord::Plain}},
        {"ql", {RtfWord::Align, left}},
        {"qc", {RtfWord::Align, centre}},
        {"qr", {RtfWord::Align, right}},
        {"qj", {RtfWord::Align, justify}},
        {"qd", {RtfWord::Align, justify}},
        {"li", {RtfWord::LeftIndent}},
        {"ri", {RtfWord::RightIndent}},
        {"fi", {RtfWord::FirstIndent}},
        {"sb", {RtfWord::SpaceBefore}},
        {"sa", {RtfWord::SpaceAfter}},
        {"keepn", {RtfWord::KeepWithNext}},
        {"tqr", {RtfWord::TabKind, right}},
        {"tqc", {RtfWord::TabKind, centre}},
        {"tqdec", {RtfWord::TabKind, -1}},
        {"tx", {RtfWord::Tab}},
        {"intbl", {RtfWord::InTable}},
        {"pard", {RtfWord::ResetParagraph}},
        {"s", {RtfWord::Style}},
        {"tab", {RtfWord::Character, '\t'}},
        {"line", {RtfWord::Character, '\n'}},
        {"lbr", {RtfWord::Character, '\n'}},
        {"emdash", {RtfWord::Character, 0x2014}},
        {"endash", {RtfWord::Character, 0x2013}},
        {"lquote", {RtfWord::Character, 0x2018}},
        {"rquote", {RtfWord::Character, 0x2019}},
        {"ldblquote", {RtfWord::Character, 0x201C}},
        {"rdblquote", {RtfWord::Character, 0x201D}},
        {"bullet", {RtfWord::Character, 0x2022}},
        {"enspace", {RtfWord::Character, 0x2002}},
        {"emspace", {RtfWord::Character, 0x2003}},
        {"qmspace", {RtfWord::Character, 0x2005}},
        {"zwnj", {RtfWord::Character, 0x200C}},
        {"zwj", {RtfWord::Character, 0x200D}},
        {"ltrmark", {RtfWord::Character, 0x200E}},
        {"rtlmark", {RtfWord::Character, 0x200F}},
        {"zwbo", {RtfWord::Character, 0x200B}},
        {"zwnbo", {RtfWord::Character, 0x2060}},
        {"par", {RtfWord::Paragraph}},
        {"sect", {RtfWord::Page}},
        {"page", {RtfWord::Page}},
        {"u", {RtfWord::Unicode}},
        {"uc", {RtfWord::UnicodeSkip}},
        {"nestcell", {RtfWord::NestedCell}},
        {"nestrow", {RtfWord::NestedRow}},
        {"trowd", {RtfWord::RowDefaults}},
        {"trgaph", {RtfWord::RowGap}},
        {"trpaddr", {RtfWord::Padding}},
        {"clpadr", {RtfWord::Padding}},
        {"trleft", {RtfWord::RowLeft}},
        {"trql", {RtfWord::RowAlign, left}},
        {"trqc", {RtfWord::RowAlign, centre}},
        {"trqr", {RtfWord::RowAlign, right}},
        {"trhdr", {RtfWord::RowHeader}},
        {"clmrg", {RtfWord::CellMerge}},
        {"clvmrg", {RtfWord::CellMergeDown}},
        {"clbrdrt", {RtfWord::CellBorder, 0}},
        {"clbrdrb", {RtfWord::CellBorder, 1}},
        {"clbrdrl", {RtfWord::CellBorder, 2}},
        {"clbrdrr", {RtfWord::CellBorder, 3}},
        {"cldglu", {RtfWord::OtherBorder}},
        {"cldgll", {RtfWord::OtherBorder}},
        {"brdrw", {RtfWord::BorderWidth}},
        {"cellx", {RtfWord::CellEdge}},
        {"cell", {RtfWord::Cell}},
        {"row", {RtfWord::Row}},
        {"ansi", {RtfWord::CodePage, 1252}},
        {"mac", {RtfWord::CodePage, 10000}},
        {"pc", {RtfWord::CodePage, 437}},
        {"pca", {RtfWord::CodePage, 850}},
        {"ansicpg", {RtfWord::CodePageNumber}},
        {"deff", {RtfWord::DefaultFont}},
        {"fonttbl", {RtfWord::FontTable}},
        {"colortbl", {RtfWord::ColourTable}},
        {"stylesheet", {RtfWord::StyleSheet}},
        {"pict", {RtfWord::Picture}},
        {"upr", {RtfWord::TwoVersions}},
        {"nesttableprops", {RtfWord::NestedProperties}},
        {"tableend", {RtfWord::TableEnd}},
    };
    for (const char* word :
         {"ul", "uld", "uldash", "uldashd", "uldashdd", "uldb", "ulhair", "ulhwave", "ulldash", "ulth", "ulthd",
          "ulthdash", "ulthdashd", "ulthdashdd", "ulthldash", "ululdbwave", "ulw", "ulwave"}) {
      map[word] = {RtfWord::Underline, 1};
    }
    for (const char* word :
         {"brdrs",      "brdrth",         "brdrsh",     "brdrdb",     "brdrdot",      "brdrdash",
          "brdrhair",   "brdrdashsm",     "brdrdashd",  "brdrdashdd", "brdrdashdot",  "brdrdashdotdot",
          "brdrtriple", "brdrinset",      "brdroutset", "brdremboss", "brdrengrave",  "brdrwavy",
          "brdrwavydb", "brdrdashdotstr", "brdrtnthsg", "brdrthtnsg", "brdrtnthtnsg", "brdrtnthmg",
          "brdrthtnmg", "brdrtnthtnmg",   "brdrtnthlg", "brdrthtnlg", "brdrtnthtnlg"}) {
      map[word] = {RtfWord::BorderStyle, 1};
    }
    for (const char* word : {"brdrnone", "brdrnil", "brdrtbl"}) map[word] = {RtfWord::BorderStyle, 0};
    for (const char* word : {"brdrt", "brdrb", "brdrl", "brdrr", "brdrbtw", "brdrbar", "box", "chbrdr", "trbrdrt",
                             "trbrdrb", "trbrdrl", "trbrdrr", "trbrdrh", "trbrdrv"}) {
      map[word] = {RtfWord::OtherBorder};
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
      map[word] = {RtfWord::Skip};
    }
    map["footnote"] = {RtfWord::Note};
    map["chftn"] = {RtfWord::NoteMark};
    map["shpinst"] = {RtfWord::Shape};
    map["sp"] = {RtfWord::ShapeProperty};
    map["shptxt"] = {RtfWord::ShapeText};
    map["shprslt"] = {RtfWord::ShapeResult};
    map["listtext"] = map["pntext"] = {RtfWord::ListText};
    map["deleted"] = {RtfWord::Deleted};
    return map;
  }();
  return keywords;
}

}  // namespace

const RtfKeyword* FindRtfKeyword(std::string_view name) {
  const auto& keywords = Keywords();
  const auto found = keywords.find(name);
  return found == keywords.end() ? nullptr : &found->second;
}

char32_t ControlSymbol(char symbol) {
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

int RtfLength(const RtfToken& word) { return std::clamp(word.number, -MaxRtfLength, MaxRtfLength); }

}  // namespace tellurix
