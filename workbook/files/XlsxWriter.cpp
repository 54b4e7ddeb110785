#include "workbook/files/XlsxWriter.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <unordered_map>
#include <vector>

#include "numeric/Text.h"
#include "workbook/FileBeside.h"
#include "workbook/WorkbookContents.h"
#include "workbook/files/ZipFile.h"

namespace tellurix {

namespace {

constexpr std::string_view Declaration = "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n";
constexpr std::string_view MainSpace = "http://schemas.openxmlformats.org/spreadsheetml/2006/main";
constexpr std::string_view RelationSpace = "http://schemas.openxmlformats.org/officeDocument/2006/relationships";
constexpr std::string_view PackageSpace = "http://schemas.openxmlformats.org/package/2006";
constexpr std::size_t LongestText = 32767;  // characters
constexpr int RowsBeyond = 1000;            // of looks without cells below the last row
constexpr int OwnFormats = 164;             // the first number of formats that the standard does not know

// Text in an element or attribute, by the rules of XML, other control characters as _xHHHH_ (ECMA-376, 22.9.2.19).
void AppendEscaped(std::string_view text, std::string& to) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (c == '&') {
      to += "&amp;";
    } else if (c == '<') {
      to += "&lt;";
    } else if (c == '>') {
      to += "&gt;";
    } else if (c == '"') {
      to += "&quot;";
    } else if (static_cast<unsigned char>(c) < 0x20 && c != '\t' && c != '\n') {
      to += fmt::format("_x{:04X}_", static_cast<int>(c));
    } else if (c == '_' && i + 6 < text.size() && text[i + 1] == 'x' && text[i + 6] == '_') {
      to += "_x005F_";
    } else {
      to += c;
    }
  }
}

std::string Escaped(std::string_view text) {
  std::string escaped;
  AppendEscaped(text, escaped);
  return escaped;
}

// Names as they are allowed there, and unlike each other.
std::vector<std::string> SheetNames(const WorkbookContents& book) {
  std::vector<std::string> names;
  for (int sheet = 1; sheet <= book.SheetCount(); ++sheet) {
    std::string base = book.Name(sheet);
    for (char& c : base) {
      if (std::string_view("[]:*?/\\").find(c) != std::string_view::npos) c = '_';
    }
    if (base.front() == '\'') base.front() = '_';
    if (base.back() == '\'') base.back() = '_';
    std::string name = base;
    const auto isTaken = [&](const std::string& other) { return EqualNoCase(other, name); };
    for (int n = 2; std::any_of(names.begin(), names.end(), isTaken); ++n) {
      name = base.substr(0, 24) + " " + std::to_string(n);
      if (!IsValidUtf8(name)) name = "Sheet " + std::to_string(sheet) + " " + std::to_string(n);
    }
    names.push_back(name);
  }
  return names;
}

// The formats, fonts, fills and looks of a workbook as numbers of the lists in the styles part.
class Styles {
 public:
  explicit Styles(const std::vector<CellLook>& looks, const WorkbookSettings& settings) : settings_(settings) {
    for (const CellLook& look : looks) Add(look);
  }

  std::string Part() const {
    std::string part{Declaration};
    part += fmt::format("<styleSheet xmlns=\"{}\">", MainSpace);
    if (!formats_.empty()) {
      part += fmt::format("<numFmts count=\"{}\">", formats_.size());
      for (std::size_t i = 0; i < formats_.size(); ++i) {
        part += fmt::format("<numFmt numFmtId=\"{}\" formatCode=\"{}\"/>", OwnFormats + i, Escaped(formats_[i]));
      }
      part += "</numFmts>";
    }
    AppendList("fonts", fonts_, part);
    AppendList("fills", fills_, part);
    part +=
        "<borders count=\"1\"><border><left/><right/><top/><bottom/><diagonal/></border></borders>"
        "<cellStyleXfs count=\"1\"><xf numFmtId=\"0\" fontId=\"0\" fillId=\"0\" borderId=\"0\"/></cellStyleXfs>";
    AppendList("cellXfs", cells_, part);
    part += "<cellStyles count=\"1\"><cellStyle name=\"Normal\" xfId=\"0\" builtinId=\"0\"/></cellStyles></styleSheet>";
    return part;
  }

 private:
  static void AppendList(std::string_view name, const std::vector<std::string>& list, std::string& part) {
    part += fmt::format("<{} count=\"{}\">", name, list.size());
    for (const std::string& entry : list) part += entry;
    part += fmt::format("</{}>", name);
  }
  static std::size_t Place(std::vector<std::string>& list, const std::string& entry) {
    const auto found = std::find(list.begin(), list.end(), entry);
    const auto place = static_cast<std::size_t>(found - list.begin());
    if (found == list.end()) list.push_back(entry);
    return place;
  }

  void Add(const CellLook& look) {
    const std::size_t font = Place(fonts_, FontOf(look));
    std::size_t fill = 0;
    if (look.fillColour != NoColour) {
      fill = Place(fills_, fmt::format("<fill><patternFill patternType=\"solid\"><fgColor rgb=\"FF{:06X}\"/>"
                                       "<bgColor indexed=\"64\"/></patternFill></fill>",
                                       look.fillColour));
    }
    static constexpr const char* Alignments[] = {"", "left", "center", "right"};
    const char* alignment = Alignments[static_cast<int>(look.alignment)];
    cells_.push_back(fmt::format(
        "<xf numFmtId=\"{}\" fontId=\"{}\" fillId=\"{}\" borderId=\"0\" xfId=\"0\" applyNumberFormat=\"1\" "
        "applyFont=\"1\" applyFill=\"1\"{}",
        FormatOf(look.number), font, fill,
        *alignment ? fmt::format(" applyAlignment=\"1\"><alignment horizontal=\"{}\"/></xf>", alignment) : "/>"));
  }

  std::string FontOf(const CellLook& look) const {
    const double size = look.fontSize > 0 ? look.fontSize : settings_.fontSize;
    const std::string& name = look.fontName.empty() ? settings_.fontName : look.fontName;
    return fmt::format(
        "<font>{}{}{}<sz val=\"{}\"/>{}<name val=\"{}\"/></font>", look.bold ? "<b/>" : "", look.italic ? "<i/>" : "",
        look.underline ? "<u/>" : "", size,
        look.textColour == NoColour ? std::string() : fmt::format("<color rgb=\"FF{:06X}\"/>", look.textColour),
        Escaped(name));
  }

  std::size_t FormatOf(const NumberFormat& format) {
    using Form = NumberFormat::Form;
    const std::string decimals =
        format.decimals > 0 ? "." + std::string(static_cast<std::size_t>(format.decimals), '0') : "";
    std::string code;
    switch (format.form) {
      case Form::General:
        return 0;
      case Form::Text:
        return 49;
      case Form::Fixed:
        code = (format.grouping ? "#,##0" : "0") + decimals;
        break;
      case Form::Percent:
        code = "0" + decimals + "%";
        break;
      case Form::Scientific:
        code = "0" + decimals + "E+00";
        break;
      case Form::Date:
        code = "yyyy\\-mm\\-dd";
        break;
      case Form::DateMinutes:
        code = "yyyy\\-mm\\-dd hh:mm";
        break;
      case Form::DateSeconds:
        code = "yyyy\\-mm\\-dd hh:mm:ss";
        break;
    }
    return OwnFormats + Place(formats_, code);
  }

  const WorkbookSettings& settings_;
  std::vector<std::string> formats_, fonts_;
  std::vector<std::string> fills_{"<fill><patternFill patternType=\"none\"/></fill>",
                                  "<fill><patternFill patternType=\"gray125\"/></fill>"};
  std::vector<std::string> cells_;
};

class XlsxPackage {
 public:
  XlsxPackage(const Workbook& workbook, ZipFile& zip) : book_(workbook), zip_(zip), names_(SheetNames(book_)) {}

  void Write() {
    Part("[Content_Types].xml", ContentTypes());
    Part("_rels/.rels",
         fmt::format("<Relationships xmlns=\"{}/relationships\"><Relationship Id=\"rId1\" Type=\"{}/officeDocument\" "
                     "Target=\"xl/workbook.xml\"/></Relationships>",
                     PackageSpace, RelationSpace));
    Part("xl/workbook.xml", WorkbookPart());
    Part("xl/_rels/workbook.xml.rels", Relations());
    const Styles styles(book_.Looks(), book_.Settings());
    zip_.Begin("xl/styles.xml");
    zip_.Write(styles.Part());
    for (int sheet = 1; sheet <= book_.SheetCount(); ++sheet) WriteSheet(sheet);
    WriteTexts();
  }
  bool HasTooLongText() const { return hasTooLongText_; }

 private:
  struct Entry {  // a column of the sheet that is being written
    int number;
    const CellColumn* cells;  // null: none
    const LookRuns* looks;    // null: plain
    std::uint32_t columnLook;
    int lastLooked;  // the last row where looks are written without a cell
  };

  void Part(const char* name, const std::string& contents) {
    zip_.Begin(name);
    zip_.Write(Declaration);
    zip_.Write(contents);
  }

  std::string ContentTypes() const {
    constexpr std::string_view Kind = "application/vnd.openxmlformats-officedocument.spreadsheetml";
    std::string part = fmt::format(
        "<Types xmlns=\"{}/content-types\"><Default Extension=\"rels\" "
        "ContentType=\"application/vnd.openxmlformats-package.relationships+xml\"/>"
        "<Default Extension=\"xml\" ContentType=\"application/xml\"/>"
        "<Override PartName=\"/xl/workbook.xml\" ContentType=\"{}.sheet.main+xml\"/>"
        "<Override PartName=\"/xl/styles.xml\" ContentType=\"{}.styles+xml\"/>"
        "<Override PartName=\"/xl/sharedStrings.xml\" ContentType=\"{}.sharedStrings+xml\"/>",
        PackageSpace, Kind, Kind, Kind);
    for (int sheet = 1; sheet <= book_.SheetCount(); ++sheet) {
      part += fmt::format("<Override PartName=\"/xl/worksheets/sheet{}.xml\" ContentType=\"{}.worksheet+xml\"/>", sheet,
                          Kind);
    }
    return part + "</Types>";
  }

  std::string WorkbookPart() const {
    std::string part = fmt::format(
        "<workbook xmlns=\"{}\" xmlns:r=\"{}\"><bookViews><workbookView activeTab=\"{}\"/></bookViews><sheets>",
        MainSpace, RelationSpace, book_.ActiveSheet() - 1);
    for (int sheet = 1; sheet <= book_.SheetCount(); ++sheet) {
      part += fmt::format("<sheet name=\"{}\" sheetId=\"{}\" r:id=\"rId{}\"/>", Escaped(names_[Index(sheet)]), sheet,
                          sheet);
    }
    return part + "</sheets></workbook>";
  }

  std::string Relations() const {
    std::string part = fmt::format("<Relationships xmlns=\"{}/relationships\">", PackageSpace);
    const auto add = [&](int id, std::string_view kind, std::string_view target) {
      part += fmt::format("<Relationship Id=\"rId{}\" Type=\"{}/{}\" Target=\"{}\"/>", id, RelationSpace, kind, target);
    };
    const int count = book_.SheetCount();
    for (int sheet = 1; sheet <= count; ++sheet) add(sheet, "worksheet", fmt::format("worksheets/sheet{}.xml", sheet));
    add(count + 1, "styles", "styles.xml");
    add(count + 2, "sharedStrings", "sharedStrings.xml");
    return part + "</Relationships>";
  }

  void WriteSheet(int sheet) {
    sheet_ = sheet;
    zip_.Begin(fmt::format("xl/worksheets/sheet{}.xml", sheet).c_str());
    text_ = Declaration;
    Put("<worksheet xmlns=\"{}\">", MainSpace);
    PutView();
    Put("<sheetFormatPr defaultColWidth=\"{}\" defaultRowHeight=\"{}\"/>", book_.Settings().columnWidth,
        book_.Settings().rowHeight);
    const std::vector<Entry> columns = Columns();
    PutColumns(columns);
    text_ += "<sheetData>";
    PutRows(columns);
    text_ += "</sheetData>";
    if (book_.Settings(sheet).isLocked) text_ += "<sheetProtection sheet=\"1\" objects=\"1\" scenarios=\"1\"/>";
    text_ += "</worksheet>";
    zip_.Write(text_);
  }

  void PutView() {
    const SheetSettings& settings = book_.Settings(sheet_);
    Put("<sheetViews><sheetView showGridLines=\"{:d}\" showRowColHeaders=\"{:d}\" showZeros=\"{:d}\" "
        "tabSelected=\"{:d}\" "
        "workbookViewId=\"0\">",
        settings.showsGridlines, settings.showsHeadings, settings.showsZeros, sheet_ == book_.ActiveSheet());
    const int rows = settings.frozenRows, columns = settings.frozenColumns;
    if (rows > 0 || columns > 0) {
      const char* pane = rows == 0 ? "topRight" : columns == 0 ? "bottomLeft" : "bottomRight";
      text_ += "<pane";
      if (columns > 0) Put(" xSplit=\"{}\"", columns);
      if (rows > 0) Put(" ySplit=\"{}\"", rows);
      Put(" topLeftCell=\"{}{}\" activePane=\"{}\" state=\"frozen\"/>", ColumnLetters(columns + 1), rows + 1, pane);
    }
    text_ += "</sheetView></sheetViews>";
  }

  std::vector<Entry> Columns() const {
    const SheetLooks& looks = book_.Looks(sheet_);
    const CellColumn* widths = book_.Column(sheet_, Widths);
    const int last =
        std::max({book_.LastColumn(sheet_), static_cast<int>(looks.size()), widths ? widths->LastRow() : 0});
    std::vector<Entry> columns;
    for (int column = 1; column <= last; ++column) {
      Entry entry{column, book_.Column(sheet_, column), nullptr, 0, 0};
      if (Index(column) < looks.size() && looks[Index(column)]) {
        entry.looks = looks[Index(column)].get();
        entry.columnLook = entry.looks->At(GridStore::MaxRows);
        int lastRun = 1;
        entry.looks->EachRun([&](int row, std::uint32_t) { lastRun = row; });
        entry.lastLooked = std::min(lastRun - 1, book_.LastRow(sheet_) + RowsBeyond);
      }
      columns.push_back(entry);
    }
    return columns;
  }

  void PutColumns(const std::vector<Entry>& columns) {
    const CellColumn* widths = book_.Column(sheet_, Widths);
    std::string made;
    for (const Entry& column : columns) {
      const bool hasWidth = widths && widths->Type(column.number) == NumberCell;
      if (!hasWidth && column.columnLook == 0) continue;
      const double width = hasWidth ? widths->Number(column.number) : book_.Settings().columnWidth;
      made += fmt::format("<col min=\"{0}\" max=\"{0}\" width=\"{1}\" style=\"{2}\" customWidth=\"1\"{3}/>",
                          column.number, width, column.columnLook, width == 0 ? " hidden=\"1\"" : "");
    }
    if (!made.empty()) text_ += "<cols>" + made + "</cols>";
  }

  void PutRows(const std::vector<Entry>& columns) {
    const CellColumn* heights = book_.Column(sheet_, Heights);
    int last = std::max(book_.LastRow(sheet_), heights ? heights->LastRow() : 0);
    for (const Entry& column : columns) last = std::max(last, column.lastLooked);
    std::vector<std::string> letters;
    for (const Entry& column : columns) letters.push_back(ColumnLetters(column.number));
    for (int row = 1; row <= last; ++row) {
      const std::size_t start = text_.size();
      Put("<row r=\"{}\"", row);
      const bool hasHeight = heights && heights->Type(row) == NumberCell;
      if (hasHeight) {
        Put(" ht=\"{}\" customHeight=\"1\"{}", heights->Number(row), heights->Number(row) == 0 ? " hidden=\"1\"" : "");
      }
      text_ += '>';
      const std::size_t bare = text_.size();
      for (std::size_t i = 0; i < columns.size(); ++i) PutCell(columns[i], letters[i], row);
      if (text_.size() == bare && !hasHeight) {
        text_.resize(start);
      } else {
        text_ += "</row>";
      }
      constexpr std::size_t Enough = 1 << 16;
      if (text_.size() > Enough) {
        zip_.Write(text_);
        text_.clear();
      }
    }
  }

  void PutCell(const Entry& column, const std::string& letters, int row) {
    const CellView cell = column.cells ? column.cells->View(row) : CellView{};
    const std::uint32_t look = column.looks ? column.looks->At(row) : 0;
    if (cell.type == EmptyCell && (row > column.lastLooked || look == column.columnLook)) return;
    Put("<c r=\"{}{}\"", letters, row);
    if (look != 0) Put(" s=\"{}\"", look);
    if (cell.type < 0) {
      PutFormula(*column.cells->FormulaAt(row), cell, look);
    } else if (cell.type == NumberCell) {
      Put("><v>{}</v></c>", Serial(cell.number, look));
    } else if (cell.type == TextCell) {
      PutText(cell.text);
    } else if (cell.type == LogicalCell) {
      Put(" t=\"b\"><v>{:d}</v></c>", cell.number != 0);
    } else {
      text_ += "/>";
    }
  }

  // There 1900 has a 29 February, so that the days before are counted one less.
  double Serial(double number, std::uint32_t look) const {
    constexpr double FirstDay = 2, FirstCommonDay = 61;
    const bool isEarly = number >= FirstDay && number < FirstCommonDay;
    return isEarly && book_.Looks()[look].number.IsDate() ? number - 1 : number;
  }

  void PutText(std::string_view text) {
    hasTooLongText_ |= text.size() > LongestText && CharacterCount(text) > LongestText;
    const auto [entry, isNew] = numbers_.try_emplace(text, texts_.size());
    if (isNew) texts_.push_back(text);
    Put(" t=\"s\"><v>{}</v></c>", entry->second);
  }

  void PutFormula(const Formula& formula, const CellView& result, std::uint32_t look) {
    if (formula.isError && formula.result == ErrorText(FormulaError::Syntax)) return PutText(formula.text);
    const int type = std::abs(result.type);
    if (type == TextCell) text_ += formula.isError && IsTheirs(formula.result) ? " t=\"e\"" : " t=\"str\"";
    if (type == LogicalCell) text_ += " t=\"b\"";
    text_ += "><f>";
    AppendEscaped(TheirFormula(formula), text_);
    text_ += "</f><v>";
    if (type == TextCell) AppendEscaped(result.text, text_);
    if (type == LogicalCell) text_ += result.number != 0 ? '1' : '0';
    if (type == NumberCell) Put("{}", Serial(result.number, look));
    text_ += "</v></c>";
  }

  static bool IsTheirs(std::string_view error) { return error != ErrorText(FormulaError::Circle); }

  // Without "=", with "," between arguments, and with the names that the sheets have in the file.
  std::string TheirFormula(const Formula& formula) const {
    std::string text = formula.text;
    for (int sheet = 1; sheet <= book_.SheetCount(); ++sheet) {
      if (names_[Index(sheet)] == book_.Name(sheet)) continue;
      const FormulaCode code(text);
      text = code.AfterRename(text, book_.Name(sheet), names_[Index(sheet)]).value_or(text);
    }
    char quote = 0;
    for (char& c : text) {
      if (quote == 0 && (c == '"' || c == '\'')) {
        quote = c;
      } else if (c == quote) {
        quote = 0;
      } else if (c == ';' && quote == 0) {
        c = ',';
      }
    }
    return text.substr(1);
  }

  void WriteTexts() {
    zip_.Begin("xl/sharedStrings.xml");
    text_ = Declaration;
    Put("<sst xmlns=\"{}\" uniqueCount=\"{}\">", MainSpace, texts_.size());
    for (const std::string_view text : texts_) {
      text_ += "<si><t xml:space=\"preserve\">";
      AppendEscaped(text, text_);
      text_ += "</t></si>";
    }
    text_ += "</sst>";
    zip_.Write(text_);
  }

  template <typename... Values>
  void Put(fmt::format_string<Values...> form, Values&&... values) {
    fmt::format_to(std::back_inserter(text_), form, std::forward<Values>(values)...);
  }

  WorkbookContents book_;
  ZipFile& zip_;
  std::vector<std::string> names_;
  int sheet_ = 1;
  std::string text_;  // what is not handed over yet
  std::unordered_map<std::string_view, std::size_t> numbers_;
  std::vector<std::string_view> texts_;
  bool hasTooLongText_ = false;
};

}  // namespace

bool WriteXlsx(const Workbook& workbook, const std::filesystem::path& path, std::string& problem) {
  FileBeside file(path);
  problem = file.Problem();
  if (!file.IsMade()) return false;
  ZipFile zip(file.Path());
  XlsxPackage package(workbook, zip);
  package.Write();
  if (!zip.Close()) {
    problem = zip.Problem();
    return false;
  }
  if (package.HasTooLongText()) {
    problem = fmt::format("Such a file cannot hold a text of more than {} characters.", LongestText);
    return false;
  }
  const bool good = file.PutInPlace();
  problem = file.Problem();
  return good;
}

}  // namespace tellurix
