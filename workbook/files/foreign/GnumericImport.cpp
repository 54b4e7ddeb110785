#include "workbook/files/foreign/GnumericImport.h"

#include <charconv>
#include <map>

#include "numeric/Text.h"
#include "workbook/files/foreign/ForeignFormats.h"
#include "workbook/files/foreign/ImportedBook.h"
#include "workbook/files/foreign/Xml.h"

namespace tellurix {

namespace {

// Kinds of values as the files number them.
constexpr int LogicalKind = 20, WholeKind = 30, NumberKind = 40;

// "FFFF:8080:0", 16 bits each.
int ColourOf(std::string_view text) {
  int colour = 0;
  const auto parts = Split(text, ':');
  if (parts.size() != 3) return NoColour;
  for (const std::string& part : parts) {
    unsigned value = 0;
    std::from_chars(part.data(), part.data() + part.size(), value, 16);
    colour = colour << 8 | static_cast<int>((value >> 8) & 0xFF);
  }
  return colour;
}

class GnumericReader final : public XmlHandler {
 public:
  explicit GnumericReader(ImportedBook& book) : book_(book) {}

  void Start(std::string_view name, const XmlAttributes& attributes) override {
    text_.clear();
    if (name == "Sheet") {
      inSheet_ = true;
      sheet_ = 0;
      expressions_.clear();
    } else if (sheet_ == 0) {
      return;
    } else if (name == "Cell") {
      row_ = attributes.Integer("Row") + 1;
      column_ = attributes.Integer("Col") + 1;
      kind_ = attributes.Integer("ValueType");
      expression_ = attributes.Integer("ExprID");
      format_ = attributes["ValueFormat"];
    } else if (name == "ColInfo") {
      TakeWidths(attributes);
    } else if (name == "RowInfo") {
      const int first = attributes.Integer("No") + 1, count = attributes.Integer("Count", 1);
      for (int row = first; attributes.Logical("Hidden", false) && row < first + count; ++row) {
        if (!Workbook::Fits(row, 1)) break;
        book_.HideRow(sheet_, row);
      }
    } else if (name == "StyleRegion") {
      region_ = {attributes.Integer("startRow") + 1, attributes.Integer("startCol") + 1,
                 attributes.Integer("endRow") + 1, attributes.Integer("endCol") + 1};
      look_ = {};
    } else if (name == "Style") {
      look_.number = FormatOfCode(attributes["Format"]);
      const int alignment = attributes.Integer("HAlign");
      if (alignment == 2) look_.alignment = CellLook::Alignment::Left;
      if (alignment == 4) look_.alignment = CellLook::Alignment::Right;
      if (alignment == 8) look_.alignment = CellLook::Alignment::Centre;
      if (attributes.Integer("Shade") == 1) look_.fillColour = ColourOf(attributes["Back"]);
      if (const int colour = ColourOf(attributes["Fore"]); colour > 0) look_.textColour = colour;
    } else if (name == "Font") {
      look_.bold = attributes.Logical("Bold", false);
      look_.italic = attributes.Logical("Italic", false);
      look_.underline = attributes.Integer("Underline") != 0;
    }
  }

  void End(std::string_view name) override {
    if (name == "Name" && inSheet_ && sheet_ == 0) sheet_ = book_.AddSheet(text_);
    if (name == "DateConvention" && EqualNoCase(text_, "Apple:1904")) Since1904();
    if (name == "DateConvention" && text_ == "1904") Since1904();
    if (name == "UIData" || name == "Attribute") text_.clear();
    if (name == "Cell" && sheet_ > 0) PutCell();
    if (name == "StyleRegion" && sheet_ > 0 && look_ != CellLook()) PutLook();
    if (name == "Sheet") inSheet_ = false;
  }

  void Text(std::string_view text) override { text_ += text; }

 private:
  struct Expression {
    int row, column;
    std::string text;
  };

  void Since1904() { book_.CountDates(ImportedBook::Dates::Counted1904); }

  void TakeWidths(const XmlAttributes& attributes) {
    constexpr double PointsInInch = 72;
    const int first = attributes.Integer("No") + 1;
    const int last = std::min(first + attributes.Integer("Count", 1) - 1, GridStore::MaxColumns);
    const bool isHidden = attributes.Logical("Hidden", false);
    for (int column = std::max(first, 1); column <= last; ++column) {
      book_.Width(sheet_, column, isHidden ? 0 : CharactersOfInches(attributes.Number("Unit") / PointsInInch));
    }
  }

  void PutLook() {
    if (!Workbook::Fits(region_.firstRow, region_.firstColumn)) return;
    const std::uint32_t look = book_.AddLook(look_);
    book_.Look(sheet_, region_.firstRow, region_.firstColumn, region_.lastRow, region_.lastColumn, look);
  }

  void PutCell() {
    if (expression_ > 0 && text_.starts_with('=')) expressions_[expression_] = {row_, column_, text_};
    if (expression_ > 0 && text_.empty()) {
      const auto found = expressions_.find(expression_);
      if (found == expressions_.end()) return;
      const Expression& first = found->second;
      text_ =
          FormulaCode(first.text).AfterCopy(first.text, row_ - first.row, column_ - first.column).value_or(first.text);
    }
    if (kind_ == 0 && text_.starts_with('=')) {
      book_.Formula(sheet_, row_, column_, text_, std::nullopt);
    } else if (kind_ == LogicalKind) {
      book_.Logical(sheet_, row_, column_, EqualNoCase(text_, "TRUE"));
    } else if (double number = 0; (kind_ == NumberKind || kind_ == WholeKind) && IsNumber(number)) {
      book_.Number(sheet_, row_, column_, number);
    } else {
      book_.Text(sheet_, row_, column_, text_);
    }
    if (!format_.empty()) PutFormat();
  }

  bool IsNumber(double& number) const {
    const auto [end, error] = std::from_chars(text_.data(), text_.data() + text_.size(), number);
    return error == std::errc() && end == text_.data() + text_.size();
  }

  // Values may bring a format of their own where the cell has none.
  void PutFormat() {
    CellLook look;
    look.number = FormatOfCode(format_);
    if (look != CellLook()) book_.LookWherePlain(sheet_, row_, column_, book_.AddLook(look));
  }

  ImportedBook& book_;
  bool inSheet_ = false;
  int sheet_ = 0;  // 0: none whose name is known
  int row_ = 1, column_ = 1, kind_ = 0, expression_ = 0;
  std::string text_, format_;
  CellRange region_;
  CellLook look_;
  std::map<int, Expression> expressions_;
};

}  // namespace

bool IsGnumeric(std::string_view xml) {
  constexpr std::size_t Head = 1024;
  return xml.starts_with("<?xml") && xml.substr(0, Head).find("gnumeric") != std::string_view::npos;
}

bool ReadGnumeric(std::string_view xml, Workbook& workbook, std::string& problem) {
  problem = "The file is damaged.";
  ImportedBook book(workbook);
  book.CountDates(ImportedBook::Dates::Leap1900);
  GnumericReader reader(book);
  return ParseXml(xml, reader) && book.Finish(problem);
}

}  // namespace tellurix
