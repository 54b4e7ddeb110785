#include "report/RtfState.h"

#include <algorithm>

namespace tellurix {

namespace {

// Bounds beyond what word processors write.
constexpr std::size_t MaxTabs = 64;  // of a paragraph
constexpr int MaxHalfPoints = 3276;  // 1638 points, the largest size of the format

void SetCharacterProperty(RtfCharState& character, const RtfKeyword& keyword, const RtfToken& token) {
  const bool on = IsOn(token);
  switch (keyword.word) {
    case RtfWord::Bold:
      character.bold = on;
      break;
    case RtfWord::Italic:
      character.italic = on;
      break;
    case RtfWord::Underline:
      character.underline = on && keyword.value != 0;
      break;
    case RtfWord::Strike:
      character.strike = on;
      break;
    case RtfWord::Hidden:
      character.hidden = on;
      break;
    case RtfWord::Script:
      character.script = on ? static_cast<Script>(keyword.value) : Script::None;
      break;
    case RtfWord::Up:
      character.script = on ? Script::Super : Script::None;
      break;
    case RtfWord::Down:
      character.script = on ? Script::Sub : Script::None;
      break;
    case RtfWord::Font:
      character.font = token.number;
      break;
    case RtfWord::Size:
      if (!token.hasNumber) character.halfPoints = 24;
      if (token.number > 0) character.halfPoints = std::min(token.number, MaxHalfPoints);
      break;
    case RtfWord::Colour:
      character.colour = token.number;
      break;
    case RtfWord::Plain:
      character = RtfCharState{};
      break;
    default:
      break;
  }
}

void AddTab(RtfParagraphState& paragraph, const TabStop& tab) {
  auto tabs = std::make_shared<std::vector<TabStop>>();
  if (paragraph.tabs) *tabs = *paragraph.tabs;
  if (tabs->size() < MaxTabs) tabs->push_back(tab);
  paragraph.tabs = std::move(tabs);
}

void SetParagraphProperty(RtfParagraphState& paragraph, TabStop& nextTab, const RtfKeyword& keyword,
                          const RtfToken& token) {
  ParagraphFormat& format = paragraph.format;
  const int length = RtfLength(token);
  switch (keyword.word) {
    case RtfWord::Align:
      format.alignment = static_cast<Alignment>(keyword.value);
      break;
    case RtfWord::LeftIndent:
      format.leftIndent = length;
      break;
    case RtfWord::RightIndent:
      format.rightIndent = length;
      break;
    case RtfWord::FirstIndent:
      format.firstIndent = length;
      break;
    case RtfWord::SpaceBefore:
      format.spaceBefore = length;
      break;
    case RtfWord::SpaceAfter:
      format.spaceAfter = length;
      break;
    case RtfWord::KeepWithNext:
      format.keepWithNext = IsOn(token);
      break;
    case RtfWord::TabKind:
      nextTab.decimal = keyword.value < 0;
      nextTab.alignment = nextTab.decimal ? Alignment::Left : static_cast<Alignment>(keyword.value);
      break;
    case RtfWord::Tab:
      nextTab.position = length;
      AddTab(paragraph, nextTab);
      nextTab = TabStop{};
      break;
    case RtfWord::InTable:
      paragraph.inTable = IsOn(token);
      break;
    case RtfWord::ResetParagraph:
      paragraph = RtfParagraphState{};
      nextTab = TabStop{};
      break;
    default:
      break;
  }
}

}  // namespace

void SetProperty(RtfState& state, TabStop& nextTab, const RtfKeyword& keyword, const RtfToken& token) {
  if (keyword.word <= RtfWord::Plain) {
    SetCharacterProperty(state.character, keyword, token);
  } else {
    SetParagraphProperty(state.paragraph, nextTab, keyword, token);
  }
}

}  // namespace tellurix
