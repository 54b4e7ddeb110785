#include "workbook/files/foreign/OdsImport.h"

#include <charconv>
#include <cstdio>
#include <map>
#include <optional>
#include <vector>

#include "workbook/files/foreign/ForeignFormats.h"
#include "workbook/files/foreign/ImportedBook.h"
#include "workbook/files/foreign/Xml.h"

namespace tellurix {

namespace {

constexpr int ManyColumns = 1000;  // what is empty over so many has no look of its own

// "2.5cm" in characters of the common font.
double Characters(std::string_view length) {
  double number = 0;
  const char* unit = std::from_chars(length.data(), length.data() + length.size(), number).ptr;
  const std::string_view name(unit, static_cast<std::size_t>(length.data() + length.size() - unit));
  double inches = number;
  if (name == "cm") inches = number / 2.54;
  if (name == "mm") inches = number / 25.4;
  if (name == "pt") inches = number / 72;
  return CharactersOfInches(inches);
}

int ColourOf(std::string_view text) {
  int colour = 0;
  if (text.size() != 7 || text[0] != '#') return NoColour;
  return std::from_chars(text.data() + 1, text.data() + 7, colour, 16).ptr == text.data() + 7 ? colour : NoColour;
}

// Styles of cells and columns by their names; both parts of a document have some.
class Styles {
 public:
  explicit Styles(ImportedBook& book) : book_(book) {}

  std::uint32_t LookOf(std::string_view name) const {
    const auto found = looks_.find(std::string(name));
    return found == looks_.end() ? 0 : found->second;
  }
  std::optional<double> WidthOf(std::string_view name) const {
    const auto found = widths_.find(std::string(name));
    return found == widths_.end() ? std::nullopt : std::optional(found->second);
  }

  void Start(std::string_view name, const XmlAttributes& attributes) {
    if (name.ends_with("-style") && attributes.Has("style:name")) {
      dataName_ = attributes["style:name"];
      format_ = {};
      using Form = NumberFormat::Form;
      if (name == "date-style") format_.form = Form::Date;
      if (name == "percentage-style") format_ = {.form = Form::Percent, .decimals = 0};
      if (name == "text-style") format_.form = Form::Text;
    } else if (name == "number" && attributes.Has("number:decimal-places")) {
      if (format_.form == NumberFormat::Form::General) format_.form = NumberFormat::Form::Fixed;
      format_.decimals = std::clamp(attributes.Integer("number:decimal-places"), 0, 15);
      format_.grouping = attributes.Logical("number:grouping", false);
    } else if (name == "minutes" && format_.form == NumberFormat::Form::Date) {
      format_.form = NumberFormat::Form::DateMinutes;
    } else if (name == "seconds" && format_.form == NumberFormat::Form::DateMinutes) {
      format_.form = NumberFormat::Form::DateSeconds;
    } else if (name == "scientific-number") {
      format_.form = NumberFormat::Form::Scientific;
      format_.decimals = std::clamp(attributes.Integer("number:decimal-places"), 0, 15);
    } else if (name == "style") {
      name_ = attributes["style:name"];
      family_ = attributes["style:family"];
      const auto parent = cells_.find(std::string(attributes["style:parent-style-name"]));
      look_ = parent == cells_.end() ? CellLook() : parent->second;
      const auto data = formats_.find(std::string(attributes["style:data-style-name"]));
      if (data != formats_.end()) look_.number = data->second;
    } else if (!name_.empty()) {
      TakeProperties(name, attributes);
    }
  }

  void End(std::string_view name) {
    if (name.ends_with("-style") && !dataName_.empty()) {
      formats_[dataName_] = format_;
      dataName_.clear();
    }
    if (name == "style") {
      if (family_ == "table-cell") {
        cells_[name_] = look_;
        looks_[name_] = book_.AddLook(look_);
      }
      name_.clear();
    }
  }

 private:
  void TakeProperties(std::string_view name, const XmlAttributes& attributes) {
    if (name == "text-properties") {
      if (attributes.Has("fo:font-weight")) look_.bold = attributes["fo:font-weight"] == "bold";
      if (attributes.Has("fo:font-style")) look_.italic = attributes["fo:font-style"] == "italic";
      const std::string_view underline = attributes["style:text-underline-style"];
      if (!underline.empty()) look_.underline = underline != "none";
      const int colour = ColourOf(attributes["fo:color"]);
      if (colour > 0) look_.textColour = colour;
    } else if (name == "table-cell-properties") {
      if (attributes.Has("fo:background-color")) look_.fillColour = ColourOf(attributes["fo:background-color"]);
    } else if (name == "paragraph-properties") {
      const std::string_view align = attributes["fo:text-align"];
      if (align == "center") look_.alignment = CellLook::Alignment::Centre;
      if (align == "end" || align == "right") look_.alignment = CellLook::Alignment::Right;
      if (align == "start" || align == "left") look_.alignment = CellLook::Alignment::Left;
    } else if (name == "table-column-properties" && family_ == "table-column") {
      if (attributes.Has("style:column-width")) widths_[name_] = Characters(attributes["style:column-width"]);
    }
  }

  ImportedBook& book_;
  std::map<std::string, NumberFormat> formats_;
  std::map<std::string, CellLook> cells_;
  std::map<std::string, std::uint32_t> looks_;
  std::map<std::string, double> widths_;
  std::string dataName_, name_, family_;
  NumberFormat format_;
  CellLook look_;
};

struct StylesReader final : XmlHandler {
  explicit StylesReader(Styles& held) : styles(held) {}
  void Start(std::string_view name, const XmlAttributes& attributes) override { styles.Start(name, attributes); }
  void End(std::string_view name) override { styles.End(name); }
  Styles& styles;
};

class ContentReader final : public XmlHandler {
 public:
  ContentReader(ImportedBook& book, Styles& styles) : book_(book), styles_(styles) {}

  void Start(std::string_view name, const XmlAttributes& attributes) override {
    if (skipped_ > 0 || name == "annotation" || name == "shapes") {
      ++skipped_;
    } else if (sheet_ == 0 && name != "table") {
      styles_.Start(name, attributes);
    } else if (name == "table") {
      sheet_ = book_.AddSheet(attributes["table:name"]);
      row_ = 1;
      columnLooks_.clear();
    } else if (name == "table-column") {
      TakeColumns(attributes);
    } else if (name == "table-row") {
      StartRow(attributes);
    } else if (name == "table-cell" || name == "covered-table-cell") {
      StartCell(attributes);
    } else if (name == "p") {
      if (inCell_ && paragraphs_++ > 0) text_ += '\n';
      ++inParagraph_;
    } else if (name == "s") {
      text_.append(static_cast<std::size_t>(std::clamp(attributes.Integer("text:c", 1), 1, 1000)), ' ');
    } else if (name == "tab") {
      text_ += '\t';
    } else if (name == "line-break") {
      text_ += '\n';
    }
  }

  void End(std::string_view name) override {
    if (skipped_ > 0) {
      --skipped_;
    } else if (sheet_ == 0) {
      styles_.End(name);
    } else if (name == "p") {
      --inParagraph_;
    } else if (name == "table-cell" || name == "covered-table-cell") {
      PutCells();
      inCell_ = false;
      column_ += columns_;
    } else if (name == "table-row") {
      row_ += rows_;
    } else if (name == "table") {
      sheet_ = 0;
    }
  }

  void Text(std::string_view text) override {
    if (inParagraph_ > 0 && skipped_ == 0) text_ += text;
  }

 private:
  static int Repeats(const XmlAttributes& attributes, std::string_view name) {
    return std::clamp(attributes.Integer(name, 1), 1, GridStore::MaxRows);
  }

  void TakeColumns(const XmlAttributes& attributes) {
    const int count = Repeats(attributes, "table:number-columns-repeated");
    const std::uint32_t look = styles_.LookOf(attributes["table:default-cell-style-name"]);
    const bool isHidden = attributes["table:visibility"] == "collapse";
    const auto width = isHidden ? 0 : styles_.WidthOf(attributes["table:style-name"]);
    for (int i = 0; i < count && static_cast<int>(columnLooks_.size()) < GridStore::MaxColumns; ++i) {
      columnLooks_.push_back(look);
      const int column = static_cast<int>(columnLooks_.size());
      if (count >= ManyColumns && !isHidden) continue;
      if (width) book_.Width(sheet_, column, *width);
    }
  }

  void StartRow(const XmlAttributes& attributes) {
    rows_ = Repeats(attributes, "table:number-rows-repeated");
    column_ = 1;
    const bool isHidden = attributes["table:visibility"] == "collapse" || attributes["table:visibility"] == "filter";
    for (int row = row_; isHidden && row < row_ + rows_ && row <= GridStore::MaxRows; ++row) book_.HideRow(sheet_, row);
  }

  void StartCell(const XmlAttributes& attributes) {
    columns_ = Repeats(attributes, "table:number-columns-repeated");
    inCell_ = true;
    paragraphs_ = inParagraph_ = 0;
    text_.clear();
    formula_ = attributes["table:formula"];
    type_ = attributes["office:value-type"];
    style_ = attributes["table:style-name"];
    value_.reset();
    if (type_ == "float" || type_ == "percentage" || type_ == "currency") {
      value_ = FormulaResult::Number(attributes.Number("office:value"));
    } else if (type_ == "boolean") {
      value_ = FormulaResult::Logical(attributes["office:boolean-value"] == "true");
    } else if (type_ == "date") {
      if (const auto serial = ImportedBook::SerialOf(attributes["office:date-value"])) {
        value_ = FormulaResult::Number(*serial);
      }
    } else if (type_ == "time") {
      value_ = FormulaResult::Number(TimeOf(attributes["office:time-value"]));
    }
    given_ = attributes["office:string-value"];
    isGiven_ = attributes.Has("office:string-value");
    isError_ = attributes["calcext:value-type"] == "error";
  }

  // "PT18H30M00S" as a part of a day.
  static double TimeOf(std::string_view text) {
    double hours = 0, minutes = 0, seconds = 0;
    std::sscanf(std::string(text).c_str(), "PT%lfH%lfM%lfS", &hours, &minutes, &seconds);
    return (hours * 3600 + minutes * 60 + seconds) / 86400;
  }

  void PutCells() {
    if (!value_ && (type_ == "string" || (type_.empty() && !text_.empty()))) {
      value_ = isError_ ? FormulaResult::Error(text_) : FormulaResult::Text(isGiven_ ? given_ : text_);
    }
    // A formula that was never computed has no result.
    const bool isEmpty = formula_.empty() && (!value_ || (value_->type == TextCell && value_->text.empty()));
    const int lastRow = std::min(row_ + rows_ - 1, GridStore::MaxRows);
    const int lastColumn = std::min(column_ + columns_ - 1, GridStore::MaxColumns);
    if (row_ > GridStore::MaxRows || column_ > GridStore::MaxColumns) {
      if (!isEmpty) book_.Number(sheet_, row_, column_, 0);  // noted as too large
      return;
    }
    if (isEmpty && columns_ >= ManyColumns) return;
    for (int column = column_; column <= lastColumn; ++column) {
      const std::uint32_t look = LookAt(column);
      if (look != 0) book_.Look(sheet_, row_, column, lastRow, column, look);
      if (isEmpty) continue;
      PutCell(row_, column);
      if (lastRow > row_) book_.CopyDown(sheet_, row_, column, lastRow - row_);
    }
  }

  std::uint32_t LookAt(int column) {
    if (!style_.empty()) {
      const std::uint32_t look = styles_.LookOf(style_);
      return look == 0 && type_ == "date" ? DateLook() : look;
    }
    const auto index = static_cast<std::size_t>(column - 1);
    const std::uint32_t look = index < columnLooks_.size() ? columnLooks_[index] : 0;
    return look == 0 && type_ == "date" ? DateLook() : look;
  }
  std::uint32_t DateLook() {
    CellLook look;
    look.number.form = NumberFormat::Form::Date;
    return book_.AddLook(look);
  }

  void PutCell(int row, int column) {
    if (!formula_.empty()) {
      book_.Formula(sheet_, row, column, FormulaFrom(formula_, FormulaGrammar::OpenFormula), value_);
    } else if (value_->type == NumberCell) {
      book_.Number(sheet_, row, column, value_->number);
    } else if (value_->type == LogicalCell) {
      book_.Logical(sheet_, row, column, value_->number != 0);
    } else {
      book_.Text(sheet_, row, column, value_->text);
    }
  }

  ImportedBook& book_;
  Styles& styles_;
  int sheet_ = 0;  // 0: between tables
  int row_ = 1, rows_ = 1, column_ = 1, columns_ = 1;
  int skipped_ = 0;
  bool inCell_ = false;
  int paragraphs_ = 0, inParagraph_ = 0;
  std::string text_, formula_, type_, style_, given_;
  bool isGiven_ = false, isError_ = false;
  std::optional<FormulaResult> value_;
  std::vector<std::uint32_t> columnLooks_;
};

}  // namespace

bool IsOds(Archive& archive) {
  std::string kind;
  return archive.Read("mimetype", kind) && kind.starts_with("application/vnd.oasis.opendocument.spreadsheet");
}

bool ReadOds(Archive& archive, Workbook& workbook, std::string& problem) {
  problem = "The file is damaged.";
  ImportedBook book(workbook);
  Styles styles(book);
  std::string bytes;
  if (archive.Read("styles.xml", bytes)) {
    StylesReader reader(styles);
    if (!ParseXml(bytes, reader)) return false;
  }
  ContentReader content(book, styles);
  if (!archive.Read("content.xml", bytes) || !ParseXml(bytes, content)) return false;
  return book.Finish(problem);
}

}  // namespace tellurix
