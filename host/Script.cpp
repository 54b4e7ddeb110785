#include "host/Script.h"

#include <fmt/format.h>

#include "numeric/Text.h"

namespace tellurix {

namespace {

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r'; }

// Reads the quoted text that begins at line[at] == '"'; moves `at` behind it. False when it does not end.
bool ReadQuoted(std::string_view line, std::size_t& at, std::string& text) {
  for (++at; at < line.size(); ++at) {
    const char c = line[at];
    if (c == '"') {
      ++at;
      return true;
    }
    if (c == '\\' && at + 1 < line.size()) {
      ++at;
      text += line[at] == 'n' ? '\n' : line[at] == 't' ? '\t' : line[at];
    } else {
      text += c;
    }
  }
  return false;
}

// The words of a line; false when a quote is left open.
bool ReadWords(std::string_view line, std::vector<ScriptWord>& words) {
  std::size_t at = 0;
  while (at < line.size()) {
    if (IsBlank(line[at])) {
      ++at;
    } else if (line[at] == '#' && (words.empty() || at + 1 == line.size() || IsBlank(line[at + 1]))) {
      return true;
    } else if (line[at] == '"') {
      ScriptWord word{.quoted = true};
      if (!ReadQuoted(line, at, word.text)) return false;
      words.push_back(std::move(word));
    } else {
      const std::size_t start = at;
      while (at < line.size() && !IsBlank(line[at]) && line[at] != '"') ++at;
      words.push_back({std::string(line.substr(start, at - start)), false});
    }
  }
  return true;
}

bool NeedsQuotes(std::string_view word) {
  return word.empty() || word == "/" || word.front() == '#' ||
         word.find_first_of(" \t\r\n\"\\") != std::string_view::npos;
}

}  // namespace

bool ScriptStep::Is(std::string_view verb) const { return !words.front().quoted && EqualNoCase(Verb(), verb); }

bool ReadScript(std::string_view text, std::string file, ScriptFile& script, std::string& error) {
  script.file = std::move(file);
  if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
  int number = 0;
  while (!text.empty()) {
    const auto end = text.find('\n');
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    ++number;
    std::string_view comment = Trim(line);
    if (comment.starts_with('#')) {
      comment.remove_prefix(1);
      comment = Trim(comment);
      if (StartsWithNoCase(comment, "Source:")) {
        if (!script.source.empty()) script.source += "; ";
        script.source += Trim(comment.substr(7));
      }
      continue;
    }
    ScriptStep step{.line = number};
    if (!ReadWords(line, step.words)) {
      error = fmt::format("{}:{}: a quote is left open", script.file, number);
      return false;
    }
    if (!step.words.empty()) script.steps.push_back(std::move(step));
  }
  return true;
}

std::string QuotedText(std::string_view word) {
  std::string text = "\"";
  for (const char c : word) {
    switch (c) {
      case '\n':
        text += "\\n";
        break;
      case '\t':
        text += "\\t";
        break;
      case '"':
      case '\\':
        text += '\\', text += c;
        break;
      default:
        text += c;
    }
  }
  return text + "\"";
}

std::string ScriptText(std::string_view word) { return NeedsQuotes(word) ? QuotedText(word) : std::string(word); }

}  // namespace tellurix
