#include "report/TemplateMerge.h"

#include <fmt/format.h>

#include <algorithm>
#include <fstream>
#include <iterator>

#include "numeric/Text.h"

namespace tellurix {

namespace {

constexpr std::string_view FieldStart = "/*";
constexpr std::string_view BlockStart = "/bs/";
constexpr std::string_view BlockFinish = "/bf/";
constexpr std::string_view HelpMark = "/h//";

bool SameLetter(char a, char b) {
  const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; };
  return lower(a) == lower(b);
}

// Whether "/*" name "/" stands anywhere in the text.
bool HasField(std::string_view text, std::string_view name) {
  const std::string mark = fmt::format("/*{}/", name);
  return std::ranges::search(text, mark, SameLetter).begin() != text.end();
}

// Cuts out carriage return and line feed pairs. After a cut the search goes on one character past the join, so of two
// adjacent pairs the second survives.
std::string WithoutLineBreaks(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  std::size_t at = 0;
  for (;;) {
    const auto pair = text.find("\r\n", at);
    if (pair == std::string_view::npos) break;
    result += text.substr(at, pair - at);
    at = pair + 2;
    if (at < text.size()) result += text[at++];
  }
  result += text.substr(std::min(at, text.size()));
  return result;
}

std::string_view TrimBlanks(std::string_view text) {
  const auto first = text.find_first_not_of(' ');
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

// The text up to its closing brace; empty where anything but blanks and line breaks follows the last one.
std::string_view ThroughClosingBrace(std::string_view text) {
  text = Trim(text);
  return !text.empty() && text.back() == '}' ? text : std::string_view();
}

}  // namespace

TemplateMerge::TemplateMerge(Host& host, ResultsLog& results, std::filesystem::path templateFolder)
    : host_(host), results_(results), folder_(std::move(templateFolder)) {}

bool TemplateMerge::OpenTemplate(std::string_view name) {
  TemplateText.clear();
  ReportText.clear();
  const std::filesystem::path path = folder_ / name;
  std::string bytes;
  std::error_code none;
  if (std::filesystem::is_regular_file(path, none)) {
    std::ifstream in(path, std::ios::binary);
    if (in) bytes.assign(std::istreambuf_iterator<char>(in), {});
    if (!in.good() && !in.eof()) bytes.clear();
  }
  const std::string_view body = ThroughClosingBrace(bytes);
  if (body.empty()) {
    host_.SetBusy(false);
    host_.ShowMessage(
        {.text = fmt::format("Error: could not open template: {}, please check that all Tellurix files are present and "
                             "re-install if not.  There may also be a problem with file permissions, if so please "
                             "consult your network administrator.",
                             name),
         .title = "Tellurix Report Generator",
         .style = WarningIcon});
    return false;
  }
  TemplateText = WithoutLineBreaks(body);
  file_ = name;
  results_.Current().templates.push_back({.file = file_});
  return true;
}

void TemplateMerge::SetField(std::string_view name, const Value& value) {
  if (!HasField(TemplateText, name)) {
    Log(std::string(name), "", value);
    return;
  }
  const auto start = TemplateText.find(FieldStart);
  const auto end = TemplateText.find('/', start + 2);
  Log(std::string(name), TemplateText.substr(start + 2, end - start - 2), value);
  ReportText.append(TemplateText, 0, start);
  ReportText += value.rich ? value.text : EscapeRtf(value.text);
  TemplateText.erase(0, end + 1);
}

bool TemplateMerge::FirstBlock(BlockSpan& block) const {
  block.start = TemplateText.find(BlockStart);
  if (block.start == std::string::npos) return false;
  block.contentStart = block.start + BlockStart.size();
  std::size_t opened = block.contentStart - 1;
  std::size_t closed = opened;
  do {
    opened = TemplateText.find(BlockStart, opened + 1);
    closed = TemplateText.find(BlockFinish, closed + 1);
  } while (opened != std::string::npos && closed != std::string::npos && opened <= closed);
  if (closed == std::string::npos) return false;  // unbalanced: left as it stands
  block.contentEnd = closed;
  block.end = closed + BlockFinish.size();
  return true;
}

void TemplateMerge::ReplaceFirstBlock(bool keepContent, bool keepBlock) {
  BlockSpan block;
  if (!FirstBlock(block)) return;
  std::string replacement;
  if (keepContent) replacement.append(TemplateText, block.contentStart, block.contentEnd - block.contentStart);
  if (keepBlock) replacement.append(TemplateText, block.start, block.end - block.start);
  TemplateText.replace(block.start, block.end - block.start, replacement);
}

void TemplateMerge::BlockRepeat() { ReplaceFirstBlock(true, true); }
void TemplateMerge::BlockKeep() { ReplaceFirstBlock(true, false); }
void TemplateMerge::BlockDrop() { ReplaceFirstBlock(false, false); }

void TemplateMerge::ReportNewLine() { ReportText += "\r\n\\par"; }

void TemplateMerge::CloseTemplate() {
  // A field that no call has set stays as literal text; the log shows it as a mark without a name.
  for (auto at = TemplateText.find(FieldStart); at != std::string::npos; at = TemplateText.find(FieldStart, at + 2)) {
    const auto end = TemplateText.find('/', at + 2);
    if (end == std::string::npos) break;
    Log("", TemplateText.substr(at + 2, end - at - 2), "");
  }
  if (!TemplateText.empty()) TemplateText.pop_back();
  ReportText += TemplateText;
  ReportText += " }";
  TemplateText.clear();
}

bool TemplateMerge::InsertMergedText(Report& report) {
  if (const auto mark = ReportText.find(HelpMark); mark != std::string::npos) {
    ReportText.replace(mark, HelpMark.size(), fmt::format("\\v/h/{}/\\v0 ", report.helpContext));
  }
  if (!ReportText.empty()) ReportText.pop_back();
  ReportText = std::string(TrimBlanks(ReportText)) + (ShortEnding ? "\\par }" : "\\par \\par }");
  auto text = ReadRtf(ReportText);
  if (!text) {
    CalculationError(host_);
    return false;
  }
  report.Append(std::move(*text));
  results_.Current().delivered = true;
  return true;
}

void TemplateMerge::Log(std::string name, std::string mark, const Value& value) {
  auto& templates = results_.Current().templates;
  if (templates.empty()) templates.push_back({.file = file_});
  templates.back().fields.push_back(
      {.name = std::move(name), .mark = std::move(mark), .text = value.text, .numbers = value.numbers});
}

void SetPFields(TemplateMerge& merge, const Formatter& format, double z) {
  merge.SetField("p_1", format.FormatOneSidedP(z));
  merge.SetField("p_2", format.FormatTwoSidedP(z));
}

void CalculationError(Host& host) {
  host.SetBusy(false);
  host.ShowMessage({.text = "Error in calculation, report invalid.", .style = WarningIcon});
}

}  // namespace tellurix
