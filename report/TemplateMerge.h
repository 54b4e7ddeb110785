// The merge: an analysis feeds named values, in order, into a rich-text template.
//
// A template is a whole rich-text document whose last character is its closing brace. In it stand, in plain characters:
//   /*name/   a field                 /bs/ ... /bf/   a block, repeatable; blocks may nest
//   /h//      where the hidden tag with the number of the help topic goes; the first one only
//
// Fields are consumed strictly in order: SetField only asks whether its name lies ahead, and then fills the FIRST field
// ahead, whatever that one's name. A template may leave fields out, but never transpose them.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "host/Host.h"
#include "host/Results.h"
#include "report/Report.h"
#include "report/Value.h"

namespace tellurix {

class TemplateMerge {
 public:
  TemplateMerge(Host& host, ResultsLog& results, std::filesystem::path templateFolder);

  // Reads the template; false after a message when it is missing, unreadable, or lacks its closing brace.
  bool OpenTemplate(std::string_view name);

  // Fills the next field if one of this name lies ahead; otherwise the value is dropped.
  void SetField(std::string_view name, const Value& value);

  void BlockRepeat();  // opens one further copy of the first block ahead of it
  void BlockKeep();    // keeps the first block once and drops its marks
  void BlockDrop();    // removes the first block

  void ReportNewLine();  // a line break and "\par" at the end of ReportText
  void CloseTemplate();  // the rest of the template, with " }" for its closing brace

  // Appends the merged text to the report, with the hidden tag of the report's help topic; false, with the message of
  // CalculationError, when it is not rich text.
  bool InsertMergedText(Report& report);

  std::string TemplateText;  // not yet consumed
  std::string ReportText;    // merged so far
  bool ShortEnding = false;  // results end in one paragraph mark instead of two

 private:
  struct BlockSpan {
    std::size_t start;         // of the opening mark
    std::size_t contentStart;  // behind it
    std::size_t contentEnd;    // of the closing mark
    std::size_t end;           // behind that
  };
  bool FirstBlock(BlockSpan& block) const;
  void ReplaceFirstBlock(bool keepContent, bool keepBlock);
  void Log(std::string name, std::string mark, const Value& value);

  Host& host_;
  ResultsLog& results_;
  std::filesystem::path folder_;
  std::string file_;  // of the open template
};

// Fills the fields `p_1` and `p_2` with the one-sided and the two-sided P of a standard normal statistic.
void SetPFields(TemplateMerge& merge, const Formatter& format, double z);

// "Error in calculation, report invalid."
void CalculationError(Host& host);

}  // namespace tellurix
