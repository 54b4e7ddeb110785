#include <cstdlib>

#include <fmt/format.h>

#include "numeric/Text.h"
#include "report/RichText.h"
#include "report/RtfPicture.h"
#include "report/TableGrid.h"

namespace tellurix {

namespace {

// Looks like a table in a journal: no lines but those of the cells.
constexpr std::string_view StyleSheet =
    "body{font-family:Arial,Helvetica,sans-serif;font-size:10pt;line-height:1.3;margin:2em;color:#000;background:#fff}"
    "\n"
    "p{margin:0;white-space:pre-wrap}\n"
    "table{border-collapse:collapse;margin:.4em 0;font-variant-numeric:tabular-nums}\n"
    "td,th{padding:.15em .6em;text-align:left;vertical-align:top;font-weight:normal;white-space:pre-wrap}\n"
    ".c{text-align:center}\n"
    ".r{text-align:right}\n"
    ".j{text-align:justify}\n"
    "sub,sup{line-height:0}\n"
    ".picture{display:inline-block;box-sizing:border-box;border:1px solid #999;background:#f4f4f4}\n";

class HtmlWriter {
 public:
  HtmlWriter(const PictureToSvg& toSvg, std::string& out) : toSvg_(toSvg), out_(out) {}

  void Escape(std::string_view text) {
    if (!IsValidUtf8(text)) {
      Escape(ToUtf8(text));
      return;
    }
    for (const char c : text) {
      switch (c) {
        case '&':
          out_ += "&amp;";
          break;
        case '<':
          out_ += "&lt;";
          break;
        case '>':
          out_ += "&gt;";
          break;
        case '"':
          out_ += "&quot;";
          break;
        case '\n':
          out_ += "<br>";
          break;
        default:
          if (static_cast<unsigned char>(c) >= 0x20 || c == '\t') out_ += c;
      }
    }
  }

  void WriteBlock(const Paragraph& paragraph) {
    out_ += "<p";
    WriteAlignment(paragraph.format.alignment);
    std::string style;
    const auto add = [&](std::string_view property, int twips) {
      if (twips == 0) return;
      style += property;
      AppendPoints(style, twips);
      style += ';';
    };
    add("margin-left:", paragraph.format.leftIndent);
    add("margin-right:", paragraph.format.rightIndent);
    add("text-indent:", paragraph.format.firstIndent);
    add("margin-top:", paragraph.format.spaceBefore);
    add("margin-bottom:", paragraph.format.spaceAfter);
    WriteStyle(style);
    out_ += '>';
    const std::size_t start = out_.size();
    WriteRuns(paragraph);
    if (out_.size() == start) out_ += "<br>";  // an empty paragraph takes a line
    out_ += "</p>\n";
  }

  void WriteBlock(const Table& table) {
    if (table.rows.empty()) return;
    const TableGrid grid = FindGrid(table);
    out_ += "<table";
    switch (table.rows.front().alignment) {
      case Alignment::Centre:
        out_ += " style=\"margin-left:auto;margin-right:auto\"";
        break;
      case Alignment::Right:
        out_ += " style=\"margin-left:auto;margin-right:0\"";
        break;
      default:
        break;
    }
    out_ += ">\n";
    for (std::size_t k = 1; k < grid.edges.size(); ++k) {
      std::string width = "width:";
      AppendPoints(width, grid.edges[k] - grid.edges[k - 1]);
      out_ += "<col";
      WriteStyle(width);
      out_ += ">\n";
    }
    std::size_t heads = 0;
    while (heads < table.rows.size() && table.rows[heads].header) ++heads;
    if (heads > 0) out_ += "<thead>\n";
    for (std::size_t i = 0; i < table.rows.size(); ++i) {
      if (i == heads) out_ += heads > 0 ? "</thead>\n<tbody>\n" : "<tbody>\n";
      WriteRow(table.rows[i], grid.rows[i]);
    }
    out_ += heads == table.rows.size() ? "</thead>\n</table>\n" : "</tbody>\n</table>\n";
  }

 private:
  static void AppendPoints(std::string& text, std::int64_t twips) {
    if (twips < 0) text += '-';
    const std::int64_t size = std::abs(twips);
    text += std::to_string(size / 20);
    if (size % 20 != 0) text += fmt::format(".{:02}", size % 20 * 5);
    text += "pt";
  }

  void WriteAlignment(Alignment alignment) {
    switch (alignment) {
      case Alignment::Centre:
        out_ += " class=\"c\"";
        break;
      case Alignment::Right:
        out_ += " class=\"r\"";
        break;
      case Alignment::Justify:
        out_ += " class=\"j\"";
        break;
      case Alignment::Left:
        break;
    }
  }

  void WriteStyle(std::string_view style) {
    if (style.empty()) return;
    if (style.ends_with(';')) style.remove_suffix(1);
    out_ += " style=\"";
    out_ += style;
    out_ += '"';
  }

  void WriteRow(const TableRow& row, const std::vector<TableGrid::Place>& places) {
    out_ += "<tr>";
    if (!places.empty() && places.front().column > 0)
      out_ += fmt::format("<td colspan=\"{}\"></td>", places.front().column);
    const std::string_view tag = row.header ? "th" : "td";
    for (std::size_t i = 0; i < row.cells.size(); ++i) {
      const TableCell& cell = row.cells[i];
      out_ += '<';
      out_ += tag;
      if (places[i].span > 1) out_ += fmt::format(" colspan=\"{}\"", places[i].span);
      // A single paragraph that is only aligned needs no element of its own.
      bool simple = cell.paragraphs.empty();
      if (cell.paragraphs.size() == 1) {
        ParagraphFormat format = cell.paragraphs.front().format;
        WriteAlignment(format.alignment);
        format.alignment = Alignment::Left;
        format.tabs.clear();
        format.keepWithNext = false;
        simple = format == ParagraphFormat{};
      }
      std::string style;
      AddBorder(style, "border-top:", cell.borders.top);
      AddBorder(style, "border-right:", cell.borders.right);
      AddBorder(style, "border-bottom:", cell.borders.bottom);
      AddBorder(style, "border-left:", cell.borders.left);
      WriteStyle(style);
      out_ += '>';
      for (const auto& paragraph : cell.paragraphs) {
        if (simple) {
          WriteRuns(paragraph);
        } else {
          WriteBlock(paragraph);
          out_.pop_back();  // cells keep white space: a line break behind the paragraph would show
        }
      }
      out_ += "</";
      out_ += tag;
      out_ += '>';
    }
    out_ += "</tr>\n";
  }

  static void AddBorder(std::string& style, std::string_view property, int width) {
    if (width <= 0) return;
    style += property;
    AppendPoints(style, width);
    style += " solid;";
  }

  void WriteRuns(const Paragraph& paragraph) {
    for (const auto& run : paragraph.runs) {
      if (!run.format.hidden) WriteRun(run);
    }
  }

  void WriteRun(const Run& run) {
    if (run.picture) {
      WritePicture(*run.picture);
      return;
    }
    const CharFormat& format = run.format;
    std::string style;
    if (format.font != standard_.font) style += "font-family:'" + FontName(format.font) + "';";
    if (format.halfPoints != standard_.halfPoints) {
      style += "font-size:";
      AppendPoints(style, std::int64_t{10} * format.halfPoints);
      style += ';';
    }
    if (format.colour != 0) style += fmt::format("color:#{:06x};", format.colour & 0xFFFFFF);
    std::string_view close[6];
    std::size_t opened = 0;
    const auto open = [&](bool wanted, std::string_view before, std::string_view after) {
      if (!wanted) return;
      out_ += before;
      close[opened++] = after;
    };
    if (!style.empty()) {
      out_ += "<span";
      WriteStyle(style);
      open(true, ">", "</span>");
    }
    open(format.bold, "<b>", "</b>");
    open(format.italic, "<i>", "</i>");
    open(format.underline, "<u>", "</u>");
    open(format.strike, "<s>", "</s>");
    open(format.script == Script::Sub, "<sub>", "</sub>");
    open(format.script == Script::Super, "<sup>", "</sup>");
    Escape(run.text);
    while (opened > 0) out_ += close[--opened];
  }

  // A name that can neither end its quotes nor its attribute.
  static std::string FontName(std::string_view font) {
    std::string name;
    for (const char c : ToUtf8(font)) {
      if (static_cast<unsigned char>(c) >= 0x20 && std::string_view("'\"\\<>&;{}").find(c) == std::string_view::npos)
        name += c;
    }
    return name;
  }

  void WritePicture(const PictureGroup& picture) {
    if (toSvg_) {
      if (const std::string svg = toSvg_(picture); !svg.empty()) {
        out_ += svg;
        return;
      }
    }
    const auto [width, height] = PictureSize(picture);
    std::string style = "width:";
    AppendPoints(style, width);
    style += ";height:";
    AppendPoints(style, height);
    out_ += "<span class=\"picture\"";
    WriteStyle(style);
    out_ += "></span>";
  }

  const CharFormat standard_{};
  const PictureToSvg& toSvg_;
  std::string& out_;
};

}  // namespace

std::string WriteHtml(const RichText& document, std::string_view title, const PictureToSvg& toSvg) {
  std::string page = "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n<title>";
  HtmlWriter writer(toSvg, page);
  writer.Escape(ReplaceAll(title, "\n", " "));
  page += "</title>\n<style>\n";
  page += StyleSheet;
  page += "</style>\n</head>\n<body>\n";
  for (const auto& block : document.blocks) {
    std::visit([&](const auto& any) { writer.WriteBlock(any); }, block);
  }
  page += "</body>\n</html>\n";
  return page;
}

}  // namespace tellurix
