// The recording of one picture: primitives in page units, y upward, turned into the records of a metafile.
//
// Pens and fonts are made at their first use and kept until the picture is closed. A primitive while no picture is open
// does nothing. Coordinates beyond the 16 bits of a metafile are held at its ends.
#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <tuple>

#include "graphics/DashedLine.h"
#include "graphics/Drawing.h"
#include "graphics/FontBook.h"
#include "graphics/HatchLines.h"
#include "graphics/Page.h"

namespace tellurix {

// Modes of SetTextAlign; all at the top of the text.
enum class TextAlign : std::uint16_t { Left = 0, Right = 2, Centre = 6 };

class Picture {
 public:
  Picture(const ChartLooks& looks, FontBook& fonts) : looks_(looks), fonts_(fonts) {}
  Picture(const Picture&) = delete;
  Picture& operator=(const Picture&) = delete;

  // Starts a recording with the page's extent that will be written to the file, and makes the file. False when it
  // cannot be made.
  bool Open(const std::filesystem::path& file, const Page& page);
  // Deletes pens and fonts and writes the file. False when that fails or no picture is open.
  bool Close();
  bool IsOpen() const { return open_; }

  void MoveTo(std::int32_t x, std::int32_t y);
  void LineTo(std::int32_t x, std::int32_t y);                          // of a dashed pen dash by dash
  void TextOut(std::int32_t x, std::int32_t y, std::string_view text);  // UTF-8, one line
  void SetTextAlign(TextAlign mode);
  void Ellipse(std::int32_t left, std::int32_t top, std::int32_t right, std::int32_t bottom);
  void Polygon(std::span<const PagePoint> points);
  void SelectPen(const SeriesStyle& style, bool solidOverride = false);
  void SelectPenRaw(std::int32_t width, std::int32_t colour);
  // Escapement in tenths of a degree: 900 reads upward. `scale` is a factor of the size. Also sets the measuring font.
  void SelectFont(const FontSpec& font, std::int32_t escapement = 0, double scale = 1);
  void SetBrush();  // none
  void SetBrush(std::int32_t colour);
  void SetBrush(Hatch hatch, std::int32_t colour = 0);  // drawn line by line

  // Width of text in page units, in the font selected last.
  double TextWidth(std::string_view text) const;

  // Forgets the fonts made so far.
  void ForgetFonts();

  const std::string& Records() const { return bytes_; }  // of the open picture, or the whole of the last one closed

 private:
  using FontKey = std::tuple<std::string, std::int32_t, std::int32_t, bool, std::int32_t, bool, bool, std::int32_t>;

  void Begin(std::uint16_t record, std::size_t words);
  void Word(std::int32_t value);
  void Colour(std::int32_t colour);
  void Point(std::int32_t x, std::int32_t y);  // y before x, as most records have it
  void RecordLine(PagePoint from, PagePoint to);
  void RecordDashes(PagePoint to);
  void Record(std::uint16_t record, std::initializer_list<std::int32_t> words);
  void RecordText(std::uint16_t function, std::string_view text);
  void SelectPenObject(std::int32_t style, std::int32_t width, std::int32_t colour);
  void SelectBrushObject(std::int32_t style, std::int32_t colour);
  void FillWithHatch(std::span<const PagePoint> polygon);
  int NewObject();  // the slot that the object just created takes
  void Select(int object);
  void WriteHeader();

  const ChartLooks& looks_;
  FontBook& fonts_;
  std::filesystem::path file_;
  std::int32_t pageHeight_ = 0;
  bool open_ = false;
  std::string bytes_;
  std::size_t longestRecord_ = 0;  // words
  int records_ = 0;                // written so far
  int objects_ = 0;
  std::map<std::array<std::int32_t, 3>, int> pens_;
  std::map<std::array<std::int32_t, 2>, int> brushes_;
  std::optional<DrawBrush> hatch_;  // of the next closed shapes
  std::map<FontKey, int> fontObjects_;
  int pen_ = -1, brush_ = -1, font_ = -1;  // selected objects
  std::array<std::int32_t, 3> lastPen_{};  // the key of pen_
  PagePoint at_;                           // the current point
  std::optional<PagePoint> recordedAt_;    // that of the records; none: the next line says where it begins
  DashedLine dashes_;
  bool isDashing_ = false;  // the chain of lines goes on with them
  std::int32_t textColour_ = -1;
  int align_ = -1;
  FaceName measuringFace_{"Arial", false, false};
  double measuringPoints_ = 20 / 1.4;
};

}  // namespace tellurix
