#include <fmt/format.h>

#include <cmath>
#include <iterator>

#include "workbook/FileBeside.h"
#include "workbook/WorkbookContents.h"
#include "workbook/files/HtmlTables.h"

namespace tellurix {

namespace {

constexpr std::size_t Enough = 1 << 18;  // bytes that are handed over at once

std::string Escaped(std::string_view text) {
  std::string escaped;
  for (const char c : text) {
    switch (c) {
      case '&':
        escaped += "&amp;";
        break;
      case '<':
        escaped += "&lt;";
        break;
      case '>':
        escaped += "&gt;";
        break;
      case '"':
        escaped += "&quot;";
        break;
      case '\n':
        escaped += "<br>";
        break;
      default:
        escaped += c;
        break;
    }
  }
  return escaped;
}

std::string StyleOf(const CellLook& look) {
  std::string style;
  if (!look.fontName.empty()) style += fmt::format("font-family:'{}';", Escaped(look.fontName));
  if (look.fontSize > 0) style += fmt::format("font-size:{}pt;", look.fontSize);
  if (look.bold) style += "font-weight:bold;";
  if (look.italic) style += "font-style:italic;";
  if (look.underline) style += "text-decoration:underline;";
  if (look.textColour != NoColour) style += fmt::format("color:#{:06X};", look.textColour);
  if (look.fillColour != NoColour) style += fmt::format("background:#{:06X};", look.fillColour);
  static constexpr const char* Alignments[] = {"", "text-align:left;", "text-align:center;", "text-align:right;"};
  return style + Alignments[static_cast<int>(look.alignment)];
}

class HtmlPage {
 public:
  HtmlPage(const Workbook& workbook, bool withLooks, FileBeside& file)
      : book_(workbook), withLooks_(withLooks), file_(file) {}

  bool Write() {
    Put("<!DOCTYPE html>\n<html>\n<head>\n<meta charset=\"utf-8\">\n<title>{}</title>\n",
        Escaped(book_.Name(book_.ActiveSheet())));
    if (withLooks_) PutStyles();
    text_ += "</head>\n<body>\n";
    int used = 0;
    for (int sheet = 1; sheet <= book_.SheetCount(); ++sheet) used += book_.LastRow(sheet) > 0;
    for (int sheet = 1; sheet <= book_.SheetCount(); ++sheet) {
      if (book_.LastRow(sheet) == 0) continue;
      if (used > 1) Put("<h2>{}</h2>\n", Escaped(book_.Name(sheet)));
      if (!WriteTable(sheet)) return false;
    }
    text_ += "</body>\n</html>\n";
    return file_.Write(text_);
  }

 private:
  void PutStyles() {
    Put("<style>\ntable {{ border-collapse:collapse; font-family:'{}',sans-serif; font-size:{}pt; }}\n"
        "td {{ padding:1px 4px; border:1px solid #D0D0D0; }}\n.n {{ text-align:right; }}\n",
        Escaped(book_.Settings().fontName), book_.Settings().fontSize);
    for (std::size_t look = 1; look < book_.Looks().size(); ++look) {
      const std::string style = StyleOf(book_.Looks()[look]);
      if (!style.empty()) Put("td.l{} {{ {} }}\n", look, style);
    }
    text_ += "</style>\n";
  }

  bool WriteTable(int sheet) {
    const int columns = book_.LastColumn(sheet);
    text_ += "<table>\n";
    if (withLooks_) PutWidths(sheet, columns);
    for (int row = 1; row <= book_.LastRow(sheet); ++row) {
      text_ += "<tr>";
      for (int column = 1; column <= columns; ++column) PutCell(sheet, row, column);
      text_ += "</tr>\n";
      if (text_.size() > Enough) {
        if (!file_.Write(text_)) return false;
        text_.clear();
      }
    }
    text_ += "</table>\n";
    return true;
  }

  void PutWidths(int sheet, int columns) {
    const CellColumn* widths = book_.Column(sheet, Widths);
    for (int column = 1; column <= columns; ++column) {
      const bool hasWidth = widths && widths->Type(column) == NumberCell;
      const double width = hasWidth ? widths->Number(column) : book_.Settings().columnWidth;
      if (width == 0) {
        text_ += "<col style=\"visibility:collapse\">";
      } else {
        Put("<col style=\"width:{}ch\">", width);
      }
    }
    text_ += "\n";
  }

  void PutCell(int sheet, int row, int column) {
    const CellColumn* cells = book_.Column(sheet, column);
    const CellView cell = cells ? cells->View(row) : CellView{};
    const SheetLooks& looks = book_.Looks(sheet);
    const bool hasLooks = Index(column) < looks.size() && looks[Index(column)];
    const std::uint32_t look = hasLooks ? looks[Index(column)]->At(row) : 0;
    const bool isNumber = std::abs(cell.type) == NumberCell;
    text_ += "<td";
    if (withLooks_ && (isNumber || look != 0)) {
      Put(" class=\"{}{}", isNumber ? "n" : "", isNumber && look != 0 ? " " : "");
      if (look != 0) Put("l{}", look);
      text_ += '"';
    }
    text_ += '>';
    if (!isNumber) {
      text_ += Escaped(Displayed(cell));
    } else if (withLooks_ || book_.Looks()[look].number.IsDate()) {
      text_ += FormatNumber(cell.number, book_.Looks()[look].number);
    } else {
      Put("{}", cell.number);
    }
    text_ += "</td>";
  }

  template <typename... Values>
  void Put(fmt::format_string<Values...> form, Values&&... values) {
    fmt::format_to(std::back_inserter(text_), form, std::forward<Values>(values)...);
  }

  WorkbookContents book_;
  bool withLooks_;
  FileBeside& file_;
  std::string text_;
};

}  // namespace

bool WriteHtmlTables(const Workbook& workbook, const std::filesystem::path& path, bool withLooks,
                     std::string& problem) {
  FileBeside file(path);
  const bool good = file.IsMade() && HtmlPage(workbook, withLooks, file).Write() && file.PutInPlace();
  problem = file.Problem();
  return good;
}

}  // namespace tellurix
