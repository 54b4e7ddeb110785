// The text of an initialisation file: sections of keys with values. Comments, blank lines, unknown keys and whatever
// else stands in it stay where they are when a value is set.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tellurix {

class IniText {
 public:
  // Reads a file's bytes; nothing when they are damaged: no UTF-8, control characters, a section's head without its
  // end, or lines outside of any section where none follows.
  static std::optional<IniText> Read(std::string_view bytes);

  // The first value of a key, without regard to the case of names. Blanks around a value do not belong to it, nor do
  // double quotes at both ends.
  std::optional<std::string> Get(std::string_view section, std::string_view key) const;

  // Sets a value, in its place or at the end of its section; false when it has it already. A value is one line of
  // UTF-8: breaks and other control characters become blanks, other bytes are read as Windows-1252.
  bool Set(std::string_view section, std::string_view key, std::string_view value);

  std::string Bytes() const;

 private:
  struct Line {
    std::string text;  // without its "\n"
    std::string key;   // folded; empty for a line that is no key
    std::string value;
  };
  struct Section {
    std::string name;         // folded; that of the lines before the first head is empty
    std::vector<Line> lines;  // the head is the first one
  };

  static Line ReadLine(std::string_view text);
  const Line* Find(std::string_view section, std::string_view key) const;
  Section& SectionFor(std::string_view section);

  std::vector<Section> sections_ = {Section{}};
  bool windowsBreaks_ = false;
};

}  // namespace tellurix
