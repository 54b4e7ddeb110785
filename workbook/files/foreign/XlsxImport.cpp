#include "workbook/files/foreign/XlsxImport.h"

#include <charconv>
#include <cstdio>
#include <map>
#include <optional>
#include <vector>

#include "numeric/Text.h"
#include "workbook/files/foreign/ForeignFormats.h"
#include "workbook/files/foreign/ImportedBook.h"
#include "workbook/files/foreign/Xml.h"

namespace tellurix {

namespace {

constexpr const char* RootRelations = "_rels/.rels";

// "_x000D_" and its like as the characters that they stand for (ECMA-376, 22.9.2.19).
std::string Unescaped(std::string_view text) {
  std::string plain;
  for (std::size_t i = 0; i < text.size(); ++i) {
    unsigned code = 0;
    if (text[i] == '_' && i + 6 < text.size() && text[i + 1] == 'x' && text[i + 6] == '_' &&
        std::from_chars(text.data() + i + 2, text.data() + i + 6, code, 16).ptr == text.data() + i + 6) {
      plain += EncodeUtf8(code);
      i += 6;
    } else {
      plain += text[i];
    }
  }
  return plain;
}

// Relationships of a part: targets by their id, and of the kinds that occur once.
struct Relations final : XmlHandler {
  explicit Relations(std::string folderOfPart) : folder(std::move(folderOfPart)) {}
  void Start(std::string_view name, const XmlAttributes& attributes) override {
    if (name != "Relationship" || attributes["TargetMode"] == "External") return;
    const std::string_view target = attributes["Target"], type = attributes["Type"];
    const std::string path =
        target.starts_with('/') ? std::string(target.substr(1)) : Resolved(folder + std::string(target));
    byId[std::string(attributes["Id"])] = path;
    byKind[std::string(type.substr(type.rfind('/') + 1))] = path;
  }
  static std::string Resolved(const std::string& path) {
    return std::filesystem::path(path).lexically_normal().generic_string();
  }
  std::string Kind(const std::string& kind) const {
    const auto found = byKind.find(kind);
    return found == byKind.end() ? std::string() : found->second;
  }

  std::string folder;
  std::map<std::string, std::string> byId, byKind;
};

std::string RelationsOf(const std::string& part) {
  const std::size_t slash = part.rfind('/') + 1;
  return part.substr(0, slash) + "_rels/" + part.substr(slash) + ".rels";
}

struct Overview final : XmlHandler {
  struct Sheet {
    std::string name, id;
  };
  void Start(std::string_view name, const XmlAttributes& attributes) override {
    if (name == "workbookPr") since1904 = attributes.Logical("date1904", false);
    if (name == "workbookView") active = attributes.Integer("activeTab");
    if (name == "sheet") sheets.push_back({std::string(attributes["name"]), std::string(attributes.EndingIn(":id"))});
  }
  std::vector<Sheet> sheets;
  int active = 0;
  bool since1904 = false;
};

struct SharedTexts final : XmlHandler {
  void Start(std::string_view name, const XmlAttributes&) override {
    if (name == "si") texts.emplace_back();
    if (name == "rPh") ++inPhonetic;
    if (name == "t") inText = inPhonetic == 0 && !texts.empty();
  }
  void End(std::string_view name) override {
    if (name == "rPh") --inPhonetic;
    if (name == "t") inText = false;
    if (name == "si") texts.back() = Unescaped(texts.back());
  }
  void Text(std::string_view text) override {
    if (inText) texts.back() += text;
  }
  std::vector<std::string> texts;
  int inPhonetic = 0;
  bool inText = false;
};

int ColourOf(const XmlAttributes& attributes) {
  const std::string_view rgb = attributes["rgb"];
  if (rgb.size() < 6) return NoColour;
  int colour = 0;
  const std::string_view digits = rgb.substr(rgb.size() - 6);
  const auto end = std::from_chars(digits.data(), digits.data() + 6, colour, 16).ptr;
  return end == digits.data() + 6 ? colour : NoColour;
}

struct Styles final : XmlHandler {
  void Start(std::string_view name, const XmlAttributes& attributes) override {
    const auto isOn = [&] { return attributes["val"] != "0" && attributes["val"] != "false"; };
    if (name == "numFmt") formats[attributes.Integer("numFmtId")] = FormatOfCode(attributes["formatCode"]);
    if (name == "fonts" || name == "fills" || name == "cellXfs") list = name;
    if (list == "fonts") {
      if (name == "font") fonts.emplace_back();
      if (fonts.empty()) return;
      if (name == "b") fonts.back().bold = isOn();
      if (name == "i") fonts.back().italic = isOn();
      if (name == "u") fonts.back().underline = attributes["val"] != "none";
      if (name == "color") fonts.back().textColour = ColourOf(attributes);
    } else if (list == "fills") {
      if (name == "fill") fills.push_back(NoColour);
      if (name == "patternFill") isSolid = attributes["patternType"] == "solid";
      if (name == "fgColor" && isSolid && !fills.empty()) fills.back() = ColourOf(attributes);
    } else if (list == "cellXfs") {
      if (name == "xf") looks.push_back(LookOf(attributes));
      if (name == "alignment" && !looks.empty()) looks.back().alignment = AlignmentOf(attributes["horizontal"]);
    }
  }
  void End(std::string_view name) override {
    if (name == list) list.clear();
  }

  CellLook LookOf(const XmlAttributes& attributes) const {
    CellLook look;
    const auto font = static_cast<std::size_t>(attributes.Integer("fontId", -1));
    const auto fill = static_cast<std::size_t>(attributes.Integer("fillId", -1));
    if (font < fonts.size()) look = fonts[font];
    if (look.textColour == 0) look.textColour = NoColour;  // black is what text has anyway
    if (fill < fills.size()) look.fillColour = fills[fill];
    const int format = attributes.Integer("numFmtId");
    const auto own = formats.find(format);
    look.number = own == formats.end() ? FormatOfNumber(format) : own->second;
    return look;
  }
  static CellLook::Alignment AlignmentOf(std::string_view name) {
    if (name == "left") return CellLook::Alignment::Left;
    if (name == "center") return CellLook::Alignment::Centre;
    if (name == "right") return CellLook::Alignment::Right;
    return CellLook::Alignment::General;
  }

  std::map<int, NumberFormat> formats;
  std::vector<CellLook> fonts;
  std::vector<int> fills;
  std::vector<CellLook> looks;
  std::string list;
  bool isSolid = false;
};

class SheetReader final : public XmlHandler {
 public:
  SheetReader(ImportedBook& book, int sheet, const std::vector<std::string>& texts,
              const std::vector<std::uint32_t>& looks)
      : book_(book), sheet_(sheet), texts_(texts), looks_(looks) {
    CellLook date;
    date.number.form = NumberFormat::Form::Date;
    dateLook_ = book.AddLook(date);
  }

  void Start(std::string_view name, const XmlAttributes& attributes) override {
    if (name == "c") {
      StartCell(attributes);
    } else if (name == "v") {
      taken_ = &value_;
    } else if (name == "f") {
      taken_ = &formula_;
      shared_ = attributes["t"] == "shared" ? std::optional(attributes.Integer("si")) : std::nullopt;
    } else if (name == "t") {
      if (inPhonetic_ == 0) taken_ = &value_;
    } else if (name == "rPh") {
      ++inPhonetic_;
    } else if (name == "row") {
      row_ = attributes.Integer("r", row_ + 1);
      column_ = 0;
      if (attributes.Logical("hidden", false)) book_.HideRow(sheet_, row_);
    } else if (name == "col") {
      PutWidths(attributes);
    } else {
      TakeSettings(name, attributes);
    }
  }

  void End(std::string_view name) override {
    if (name == "v" || name == "f" || name == "t") taken_ = nullptr;
    if (name == "rPh") --inPhonetic_;
    if (name == "c") PutCell();
  }

  void Text(std::string_view text) override {
    if (taken_) *taken_ += text;
  }

 private:
  struct Origin {
    int row, column;
    std::string text;
  };

  void StartCell(const XmlAttributes& attributes) {
    CellRange place;
    ++column_;
    if (ReadRange(attributes["r"], place)) {
      row_ = place.firstRow;
      column_ = place.firstColumn;
    }
    type_ = attributes["t"];
    look_ = static_cast<std::size_t>(attributes.Integer("s"));
    value_.clear();
    formula_.clear();
    shared_.reset();
  }

  void PutWidths(const XmlAttributes& attributes) {
    const int first = std::max(attributes.Integer("min", 1), 1);
    const int last = std::min(attributes.Integer("max", first), GridStore::MaxColumns);
    const auto look = static_cast<std::size_t>(attributes.Integer("style"));
    if (look < looks_.size() && looks_[look] != 0) {
      book_.Look(sheet_, 1, first, GridStore::MaxRows, last, looks_[look]);
      hasColumnLooks_ = true;
    }
    const bool isHidden = attributes.Logical("hidden", false);
    if (!isHidden && !attributes.Logical("customWidth", false)) return;
    for (int column = first; column <= last; ++column) {
      book_.Width(sheet_, column, isHidden ? 0 : attributes.Number("width"));
    }
  }

  void TakeSettings(std::string_view name, const XmlAttributes& attributes) {
    SheetSettings& settings = book_.SettingsOf(sheet_);
    if (name == "sheetView") {
      settings.showsGridlines = attributes.Logical("showGridLines", true);
      settings.showsHeadings = attributes.Logical("showRowColHeaders", true);
      settings.showsZeros = attributes.Logical("showZeros", true);
    } else if (name == "pane" && attributes["state"].starts_with("frozen")) {
      settings.frozenRows = static_cast<int>(attributes.Number("ySplit"));
      settings.frozenColumns = static_cast<int>(attributes.Number("xSplit"));
    } else if (name == "sheetProtection") {
      settings.isLocked = attributes.Logical("sheet", false);
    }
  }

  void PutCell() {
    // A plain cell is so in a column with a look too.
    if (look_ < looks_.size() && (looks_[look_] != 0 || hasColumnLooks_)) {
      book_.Look(sheet_, row_, column_, row_, column_, looks_[look_]);
    }
    if (!formula_.empty() || shared_) {
      PutFormula();
    } else if (const auto result = Value()) {
      if (result->type == NumberCell) book_.Number(sheet_, row_, column_, result->number);
      if (result->type == LogicalCell) book_.Logical(sheet_, row_, column_, result->number != 0);
      if (result->type == TextCell) book_.Text(sheet_, row_, column_, result->text);
      if (type_ == "d" && result->type == NumberCell) book_.Look(sheet_, row_, column_, row_, column_, dateLook_);
    }
  }

  void PutFormula() {
    std::string text = FormulaFrom(formula_, FormulaGrammar::A1);
    if (shared_ && !formula_.empty()) origins_[*shared_] = {row_, column_, text};
    if (shared_ && formula_.empty()) {
      const auto found = origins_.find(*shared_);
      if (found == origins_.end()) return;
      const Origin& origin = found->second;
      text = FormulaCode(origin.text)
                 .AfterCopy(origin.text, row_ - origin.row, column_ - origin.column)
                 .value_or(origin.text);
    }
    book_.Formula(sheet_, row_, column_, text, Value());
  }

  std::optional<FormulaResult> Value() const {
    if (type_ == "inlineStr") return FormulaResult::Text(Unescaped(value_));
    if (value_.empty()) return std::nullopt;
    if (type_ == "str") return FormulaResult::Text(Unescaped(value_));
    if (type_ == "e") return FormulaResult::Error(value_);
    if (type_ == "b") return FormulaResult::Logical(value_ == "1" || value_ == "true");
    if (type_ == "d") return DateValue();
    double number = 0;
    const auto [end, error] = std::from_chars(value_.data(), value_.data() + value_.size(), number);
    if (error == std::errc::invalid_argument || (error == std::errc() && end != value_.data() + value_.size())) {
      return FormulaResult::Text(value_);
    }
    if (type_ != "s") return FormulaResult::Number(number);
    const bool isThere = number >= 0 && number < static_cast<double>(texts_.size());
    return FormulaResult::Text(isThere ? texts_[static_cast<std::size_t>(number)] : std::string());
  }

  std::optional<FormulaResult> DateValue() const {
    const auto serial = ImportedBook::SerialOf(value_);
    return serial ? FormulaResult::Number(*serial) : FormulaResult::Text(value_);
  }

  ImportedBook& book_;
  int sheet_;
  const std::vector<std::string>& texts_;
  const std::vector<std::uint32_t>& looks_;
  std::uint32_t dateLook_ = 0;
  int row_ = 0, column_ = 0;
  std::string type_, value_, formula_;
  std::size_t look_ = 0;
  std::optional<int> shared_;
  std::string* taken_ = nullptr;
  int inPhonetic_ = 0;
  bool hasColumnLooks_ = false;
  std::map<int, Origin> origins_;
};

// The main part of the package.
std::string MainPart(Archive& archive) {
  std::string bytes;
  Relations root("");
  if (!archive.Read(RootRelations, bytes) || !ParseXml(bytes, root)) return {};
  return root.Kind("officeDocument");
}

}  // namespace

bool IsXlsx(Archive& archive) { return !MainPart(archive).empty(); }

bool ReadXlsx(Archive& archive, Workbook& workbook, std::string& problem) {
  problem = "The file is damaged.";
  const std::string main = MainPart(archive);
  std::string bytes;
  Overview overview;
  if (!archive.Read(main, bytes) || !ParseXml(bytes, overview)) return false;
  Relations relations(main.substr(0, main.rfind('/') + 1));
  if (!archive.Read(RelationsOf(main), bytes) || !ParseXml(bytes, relations)) return false;

  SharedTexts texts;
  if (const std::string part = relations.Kind("sharedStrings"); !part.empty()) {
    if (!archive.Read(part, bytes) || !ParseXml(bytes, texts)) return false;
  }
  Styles styles;
  if (const std::string part = relations.Kind("styles"); !part.empty()) {
    if (!archive.Read(part, bytes) || !ParseXml(bytes, styles)) return false;
  }

  ImportedBook book(workbook);
  book.CountDates(overview.since1904 ? ImportedBook::Dates::Counted1904 : ImportedBook::Dates::Leap1900);
  std::vector<std::uint32_t> looks;
  for (const CellLook& look : styles.looks) looks.push_back(book.AddLook(look));
  for (std::size_t i = 0; i < overview.sheets.size(); ++i) {
    const auto part = relations.byId.find(overview.sheets[i].id);
    // Sheets that hold a chart and nothing else are left out.
    if (part == relations.byId.end() || part->second.find("worksheet") == std::string::npos) continue;
    const int sheet = book.AddSheet(overview.sheets[i].name);
    if (static_cast<int>(i) == overview.active) book.Activate(sheet);
    SheetReader reader(book, sheet, texts.texts, looks);
    if (!archive.Read(part->second, bytes) || !ParseXml(bytes, reader)) return false;
  }
  return book.Finish(problem);
}

}  // namespace tellurix
