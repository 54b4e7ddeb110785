// The reader and writer of the script language: one step a line, words separated by blanks, text in double quotes,
// "#" before a blank or at the start of a line for comments. Blanks at the start of a line say nothing.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tellurix {

struct ScriptWord {
  std::string text;
  bool quoted = false;
};

struct ScriptStep {
  std::vector<ScriptWord> words;  // at least one
  int line = 0;                   // 1-based

  const std::string& Verb() const { return words.front().text; }
  bool Is(std::string_view verb) const;  // the first word, not quoted
};

struct ScriptFile {
  std::string file;    // as named by whoever opened it
  std::string source;  // where its expected figures come from: the comments that begin with "Source:"
  std::vector<ScriptStep> steps;
};

// Reads a script; false with `error` ("FILE:LINE: what is wrong") when it is not one.
bool ReadScript(std::string_view text, std::string file, ScriptFile& script, std::string& error);

// A word as it is written in a script: quoted where it must be.
std::string ScriptText(std::string_view word);

// A word that is always quoted.
std::string QuotedText(std::string_view word);

}  // namespace tellurix
