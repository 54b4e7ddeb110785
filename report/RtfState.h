// The formatting in force at a place of rich text.
#pragma once

#include <memory>
#include <vector>

#include "report/RichText.h"
#include "report/RtfKeywords.h"

namespace tellurix {

struct RtfCharState {
  int font = -1;  // that of the document
  int halfPoints = 24;
  int colour = 0;
  Script script = Script::None;
  bool bold = false;
  bool italic = false;
  bool underline = false;
  bool strike = false;
  bool hidden = false;
};

struct RtfParagraphState {
  ParagraphFormat format;                            // all but the tabs
  std::shared_ptr<const std::vector<TabStop>> tabs;  // shared with the groups around
  bool inTable = false;
};

// What a group keeps to itself: its end brings back what was in force before it.
struct RtfState {
  RtfCharState character;
  RtfParagraphState paragraph;
  int unicodeSkip = 1;
};

// Takes up a word from Bold to ResetParagraph. `nextTab` is what the words so far say of the tab to come.
void SetProperty(RtfState& state, TabStop& nextTab, const RtfKeyword& keyword, const RtfToken& token);

}  // namespace tellurix
