#include "shell/IniText.h"

#include <algorithm>

#include "numeric/Text.h"

namespace tellurix {

namespace {

constexpr std::string_view ByteOrderMark = "\xEF\xBB\xBF";

bool IsControl(char c) { return (static_cast<unsigned char>(c) < 0x20 && c != '\t') || c == 0x7F; }

bool IsPlainText(std::string_view bytes) {
  const auto isDamage = [](char c) { return IsControl(c) && c != '\n' && c != '\r'; };
  return std::ranges::none_of(bytes, isDamage) && IsValidUtf8(bytes);
}

bool IsQuoted(std::string_view value) { return value.size() >= 2 && value.front() == '"' && value.back() == '"'; }

// As it is written behind the equals sign: quoted where reading would take something off.
std::string Written(std::string_view value) {
  const bool needsQuotes = IsQuoted(value) || Trim(value).size() != value.size();
  return needsQuotes ? '"' + std::string(value) + '"' : std::string(value);
}

// Fit for the file: names of files, for one, may hold bytes that would make it a damaged one.
std::string OneLine(std::string_view value) {
  std::string line = ToUtf8(value);
  std::ranges::replace_if(line, IsControl, ' ');
  return line;
}

}  // namespace

IniText::Line IniText::ReadLine(std::string_view text) {
  Line line{.text = std::string(text)};
  const std::string_view content = Trim(text);
  const auto equals = content.find('=');
  if (equals == std::string_view::npos || content.front() == ';' || content.front() == '#') return line;
  line.key = FoldCase(Trim(content.substr(0, equals)));
  std::string_view value = Trim(content.substr(equals + 1));
  if (IsQuoted(value)) value = value.substr(1, value.size() - 2);
  line.value = value;
  return line;
}

std::optional<IniText> IniText::Read(std::string_view bytes) {
  if (!IsPlainText(bytes)) return std::nullopt;
  IniText ini;
  bool hasContent = false;
  if (bytes.ends_with('\n')) bytes.remove_suffix(1);
  if (bytes.empty()) return ini;
  for (const std::string& text : Split(bytes, '\n')) {
    std::string_view content = text;
    if (content.starts_with(ByteOrderMark)) content.remove_prefix(ByteOrderMark.size());
    content = Trim(content);
    if (text.ends_with('\r')) ini.windowsBreaks_ = true;
    if (content.starts_with('[')) {
      if (!content.ends_with(']')) return std::nullopt;
      ini.sections_.push_back({FoldCase(Trim(content.substr(1, content.size() - 2))), {{.text = text}}});
      continue;
    }
    hasContent = hasContent || !(content.empty() || content.front() == ';' || content.front() == '#');
    ini.sections_.back().lines.push_back(ReadLine(text));
  }
  if (hasContent && ini.sections_.size() == 1) return std::nullopt;
  return ini;
}

const IniText::Line* IniText::Find(std::string_view section, std::string_view key) const {
  const std::string sectionName = FoldCase(section), keyName = FoldCase(key);
  for (const Section& candidate : sections_) {
    if (candidate.name != sectionName) continue;
    for (const Line& line : candidate.lines) {
      if (line.key == keyName && !keyName.empty()) return &line;
    }
  }
  return nullptr;
}

std::optional<std::string> IniText::Get(std::string_view section, std::string_view key) const {
  const Line* line = Find(section, key);
  return line ? std::optional(line->value) : std::nullopt;
}

IniText::Section& IniText::SectionFor(std::string_view section) {
  const std::string name = FoldCase(section);
  const auto known = std::ranges::find(sections_, name, &Section::name);
  if (known != sections_.end()) return *known;
  const char* breakEnd = windowsBreaks_ ? "\r" : "";
  auto& before = sections_.back().lines;
  if (!before.empty() && !Trim(before.back().text).empty()) before.push_back({.text = breakEnd});
  return sections_.emplace_back(Section{name, {{.text = '[' + OneLine(section) + ']' + breakEnd}}});
}

bool IniText::Set(std::string_view section, std::string_view key, std::string_view value) {
  const std::string text = OneLine(value);
  const char* breakEnd = windowsBreaks_ ? "\r" : "";
  if (auto* line = const_cast<Line*>(Find(section, key))) {
    if (line->value == text) return false;
    line->text = line->text.substr(0, line->text.find('=') + 1) + Written(text) + breakEnd;
    line->value = text;
    return true;
  }
  // Behind the last line that says something: blank lines set the sections apart.
  auto& lines = SectionFor(section).lines;
  const auto last = std::find_if(lines.rbegin(), lines.rend(), [](const Line& l) { return !Trim(l.text).empty(); });
  const std::string written = OneLine(key) + '=' + Written(text) + breakEnd;
  lines.insert(last.base(), ReadLine(written));
  return true;
}

std::string IniText::Bytes() const {
  std::string bytes;
  for (const Section& section : sections_) {
    for (const Line& line : section.lines) bytes += line.text + '\n';
  }
  return bytes;
}

}  // namespace tellurix
