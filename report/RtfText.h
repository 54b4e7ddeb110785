// The paragraph under way: bytes and characters of rich text become runs.
#pragma once

#include <memory>
#include <string_view>

#include "report/RichText.h"
#include "report/RtfCodePage.h"
#include "report/RtfHeader.h"
#include "report/RtfState.h"

namespace tellurix {

class RtfText {
 public:
  // Both outlive the text, which follows them as they change: see ChangeFormat.
  RtfText(const RtfHeader& header, const RtfState& state) : header_(header), state_(state) {}

  // The state's characters, or what the header says of them, are no longer what they were.
  void ChangeFormat() { formatChanged_ = true; }

  // What counts among the stand-ins that are skipped behind a \u.
  void Bytes(std::string_view bytes);
  void Byte(unsigned char byte);
  void Character(char32_t character);
  void Binary() { IsStandIn(); }
  void EndStandIns() { standIns_ = 0; }

  void Unicode(int number);
  void Append(std::string_view text);  // UTF-8
  void AppendPicture(std::shared_ptr<const PictureGroup> picture);
  // Cells of a table inside a cell are parted by tabs.
  void EndNestedCell();

  bool HasRuns() const { return !paragraph_.runs.empty(); }
  bool EndsNestedCell() const { return nestedCellEnded_; }
  bool HasPending() const { return nestedCellEnded_ || highSurrogate_ != 0 || decoder_.HasPending(); }

  // The paragraph as it ends here, with its format; the next one begins.
  Paragraph Take();

 private:
  enum class Symbols { None, Greek, Private };  // what the present font makes of its bytes

  bool IsStandIn();
  void AppendByte(unsigned char byte);
  void AppendCharacter(char32_t character);
  void FlushSurrogate();
  Run& NextRun(bool forPicture);
  void RefreshFormat();
  const RtfFont* ChooseFont();

  const RtfHeader& header_;
  const RtfState& state_;
  Paragraph paragraph_;
  RtfDecoder decoder_;
  CharFormat format_;          // of the state, unless formatChanged_
  bool formatChanged_ = true;  // format_, codePage_ and symbols_ are to be found anew
  bool newFormat_ = true;      // format_ may differ from that of the last run
  int codePage_ = 1252;
  Symbols symbols_ = Symbols::None;
  int standIns_ = 0;  // of a \u, yet to be skipped
  char32_t highSurrogate_ = 0;
  bool nestedCellEnded_ = false;  // a tab is due before the next text
};

}  // namespace tellurix
