#include "graphics/Picture.h"

#include <utf8proc.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <limits>
#include <numbers>
#include <vector>

#include "graphics/Metafile.h"
#include "numeric/Rounding.h"
#include "numeric/Text.h"

namespace tellurix {

namespace {

constexpr std::size_t HeaderSize = 18;
constexpr int HatchSpacing = 8;
constexpr std::size_t LongestText = 4096;  // bytes of a record; no page shows more

// The measuring font is given in points, of which one is 1.4 page units high.
constexpr double UnitsPerPoint = 1.4;

std::int16_t Clamped(std::int32_t value) {
  return static_cast<std::int16_t>(std::clamp<std::int32_t>(value, std::numeric_limits<std::int16_t>::min(),
                                                            std::numeric_limits<std::int16_t>::max()));
}

void AppendWord(std::string& bytes, std::uint16_t word) {
  bytes.push_back(static_cast<char>(word & 0xFF));
  bytes.push_back(static_cast<char>(word >> 8));
}

// The text on one line, cut at a character where it is too long.
std::string OneLine(std::string_view text) {
  std::string line = ToUtf8(text);
  if (line.size() > LongestText) {
    line.resize(LongestText);
    while (!line.empty() && !IsValidUtf8(line)) line.pop_back();
  }
  for (char& c : line) {
    if (static_cast<unsigned char>(c) < 0x20) c = ' ';
  }
  return line;
}

// The character's place in Windows-1252, or "?".
char EightBit(std::int32_t character) {
  if (character < 0x80 || (character >= 0xA0 && character < 0x100)) return static_cast<char>(character);
  for (int byte = 0x80; byte < 0xA0; ++byte) {
    const char c = static_cast<char>(byte);
    if (ToUtf8(std::string_view(&c, 1)) == EncodeUtf8(static_cast<char32_t>(character))) return c;
  }
  return '?';
}

std::string EightBitText(std::string_view text) {
  std::string narrow;
  const auto* bytes = reinterpret_cast<const utf8proc_uint8_t*>(text.data());
  for (std::size_t at = 0; at < text.size();) {
    utf8proc_int32_t character = 0;
    const auto used = utf8proc_iterate(bytes + at, static_cast<utf8proc_ssize_t>(text.size() - at), &character);
    narrow += used > 0 ? EightBit(character) : '?';
    at += used > 0 ? static_cast<std::size_t>(used) : 1;
  }
  return narrow;
}

// An ellipse as a polygon.
std::vector<PagePoint> Outline(std::int32_t left, std::int32_t top, std::int32_t right, std::int32_t bottom) {
  constexpr int corners = 90;
  std::vector<PagePoint> points;
  const double x = (left + right) / 2.0, y = (top + bottom) / 2.0;
  for (int i = 0; i < corners; ++i) {
    const double angle = 2 * std::numbers::pi * i / corners;
    points.push_back({ToInteger(x + std::abs(right - left) / 2.0 * std::cos(angle)),
                      ToInteger(y + std::abs(top - bottom) / 2.0 * std::sin(angle))});
  }
  return points;
}

}  // namespace

bool Picture::Open(const std::filesystem::path& file, const Page& page) {
  std::ofstream out(file, std::ios::binary | std::ios::trunc);
  open_ = out.good();
  if (!open_) return false;
  file_ = file;
  pageHeight_ = page.PageHeight;
  bytes_.assign(HeaderSize, '\0');
  longestRecord_ = 0;
  objects_ = 0;
  pens_.clear();
  brushes_.clear();
  fontObjects_.clear();
  pen_ = brush_ = font_ = -1;
  at_ = {};
  recordedAt_.reset();
  isDashing_ = false;
  textColour_ = align_ = -1;
  constexpr std::int32_t anisotropic = 8, transparent = 1;
  Record(wmf::SetMapMode, {anisotropic});
  Record(wmf::SetWindowOrg, {0, 0});
  Record(wmf::SetWindowExt, {page.PageHeight, Page::PageWidth});
  Record(wmf::SetBkMode, {transparent});
  SetBrush();
  return true;
}

bool Picture::Close() {
  if (!open_) return false;
  open_ = false;
  for (int i = 0; i < objects_; ++i) Record(wmf::DeleteObject, {i});
  Record(wmf::Eof, {});
  WriteHeader();
  std::ofstream out(file_, std::ios::binary | std::ios::trunc);
  out.write(bytes_.data(), static_cast<std::streamsize>(bytes_.size()));
  out.close();
  return out.good();
}

void Picture::WriteHeader() {
  constexpr std::uint16_t inMemory = 1, headerWords = 9, version = 0x0300;
  const auto words = static_cast<std::uint32_t>(bytes_.size() / 2);
  const auto longest = static_cast<std::uint32_t>(longestRecord_);
  std::string header;
  AppendWord(header, inMemory);
  AppendWord(header, headerWords);
  AppendWord(header, version);
  AppendWord(header, static_cast<std::uint16_t>(words & 0xFFFF));
  AppendWord(header, static_cast<std::uint16_t>(words >> 16));
  AppendWord(header, static_cast<std::uint16_t>(objects_));
  AppendWord(header, static_cast<std::uint16_t>(longest & 0xFFFF));
  AppendWord(header, static_cast<std::uint16_t>(longest >> 16));
  AppendWord(header, 0);
  std::copy(header.begin(), header.end(), bytes_.begin());
}

// --- records ---

void Picture::Begin(std::uint16_t record, std::size_t words) {
  const std::size_t size = words + 3;
  ++records_;
  longestRecord_ = std::max(longestRecord_, size);
  AppendWord(bytes_, static_cast<std::uint16_t>(size & 0xFFFF));
  AppendWord(bytes_, static_cast<std::uint16_t>(size >> 16));
  AppendWord(bytes_, record);
}

void Picture::Word(std::int32_t value) { AppendWord(bytes_, static_cast<std::uint16_t>(Clamped(value))); }

void Picture::Colour(std::int32_t colour) {
  AppendWord(bytes_, static_cast<std::uint16_t>(colour & 0xFFFF));
  AppendWord(bytes_, static_cast<std::uint16_t>(colour >> 16 & 0xFF));
}

void Picture::Point(std::int32_t x, std::int32_t y) {
  Word(pageHeight_ - y);
  Word(x);
}

void Picture::Record(std::uint16_t record, std::initializer_list<std::int32_t> words) {
  Begin(record, words.size());
  for (const std::int32_t word : words) Word(word);
}

int Picture::NewObject() { return objects_++; }

void Picture::Select(int object) { Record(wmf::SelectObject, {object}); }

// --- primitives ---

void Picture::MoveTo(std::int32_t x, std::int32_t y) {
  if (!open_) return;
  at_ = {Clamped(x), Clamped(y)};
  recordedAt_ = at_;
  isDashing_ = false;
  Begin(wmf::MoveTo, 2);
  Point(x, y);
}

void Picture::LineTo(std::int32_t x, std::int32_t y) {
  if (!open_) return;
  const PagePoint to{Clamped(x), Clamped(y)};
  const auto style = static_cast<PenStyle>(pen_ < 0 ? 0 : lastPen_[0]);
  if (DashLengths(style).empty()) {
    RecordLine(at_, to);
    isDashing_ = false;
  } else {
    if (!isDashing_) dashes_.Start(style, lastPen_[2]);
    isDashing_ = true;
    RecordDashes(to);
  }
  at_ = to;
}

void Picture::RecordDashes(PagePoint to) {
  constexpr std::size_t wordsOfEscape = 2, wordsOfLine = 5;
  Begin(wmf::Escape, wordsOfEscape + wmf::LineSignature.size() / 2 + wordsOfLine);
  AppendWord(bytes_, wmf::CommentEscape);
  AppendWord(bytes_, static_cast<std::uint16_t>(wmf::LineSignature.size() + 2 * wordsOfLine));
  bytes_ += wmf::LineSignature;
  const std::size_t countAt = bytes_.size();
  for (const std::int32_t word : {0, at_.x, pageHeight_ - at_.y, to.x, pageHeight_ - to.y}) Word(word);
  const int before = records_;
  dashes_.Walk({double(at_.x), double(at_.y)}, {double(to.x), double(to.y)}, [&](DrawPoint from, DrawPoint end) {
    RecordLine({ToInteger(from.x), ToInteger(from.y)}, {ToInteger(end.x), ToInteger(end.y)});
  });
  const int count = records_ - before;
  bytes_[countAt] = static_cast<char>(count & 0xFF);
  bytes_[countAt + 1] = static_cast<char>(count >> 8 & 0xFF);
}

void Picture::RecordLine(PagePoint from, PagePoint to) {
  if (recordedAt_ != from) {
    Begin(wmf::MoveTo, 2);
    Point(from.x, from.y);
  }
  Begin(wmf::LineTo, 2);
  Point(to.x, to.y);
  recordedAt_ = to;
}

void Picture::RecordText(std::uint16_t function, std::string_view text) {
  constexpr std::size_t wordsOfEscape = 2;
  const std::size_t size = wmf::TextSignature.size() + text.size();
  Begin(wmf::Escape, wordsOfEscape + (size + 1) / 2);
  AppendWord(bytes_, function);
  AppendWord(bytes_, static_cast<std::uint16_t>(size));
  bytes_ += wmf::TextSignature;
  bytes_ += text;
  if (size % 2 != 0) bytes_.push_back('\0');
}

void Picture::TextOut(std::int32_t x, std::int32_t y, std::string_view text) {
  if (!open_ || text.empty()) return;
  const std::string line = OneLine(text);
  const std::string narrow = EightBitText(line);
  if (narrow != line) RecordText(wmf::CommentEscape, line);
  Begin(wmf::TextOut, 3 + (narrow.size() + 1) / 2);
  AppendWord(bytes_, static_cast<std::uint16_t>(narrow.size()));
  bytes_ += narrow;
  if (narrow.size() % 2 != 0) bytes_.push_back('\0');
  Point(x, y);
}

void Picture::SetTextAlign(TextAlign mode) {
  const int value = static_cast<int>(mode);
  if (!open_ || align_ == value) return;
  align_ = value;
  Record(wmf::SetTextAlign, {value});
}

void Picture::Ellipse(std::int32_t left, std::int32_t top, std::int32_t right, std::int32_t bottom) {
  if (!open_) return;
  if (hatch_) FillWithHatch(Outline(left, top, right, bottom));
  Begin(wmf::Ellipse, 4);
  Point(right, bottom);
  Point(left, top);
}

void Picture::Polygon(std::span<const PagePoint> points) {
  if (!open_ || points.empty()) return;
  if (hatch_) FillWithHatch(points);
  points = points.first(std::min<std::size_t>(points.size(), std::numeric_limits<std::int16_t>::max()));
  Begin(wmf::Polygon, 1 + 2 * points.size());
  Word(static_cast<std::int32_t>(points.size()));
  for (const PagePoint& point : points) {
    Word(point.x);
    Word(pageHeight_ - point.y);
  }
}

void Picture::SelectPen(const SeriesStyle& style, bool solidOverride) {
  SelectPenObject(solidOverride ? 0 : style.Style, style.Width, looks_.AllBlack ? 0 : style.Colour);
}

void Picture::SelectPenRaw(std::int32_t width, std::int32_t colour) {
  SelectPenObject(0, width, looks_.AllBlack ? 0 : colour);
}

void Picture::SelectPenObject(std::int32_t style, std::int32_t width, std::int32_t colour) {
  if (!open_) return;
  const std::array key{style, colour, width};
  if (pen_ >= 0 && key == lastPen_) return;
  isDashing_ = false;
  auto [found, isNew] = pens_.try_emplace(key, 0);
  if (isNew) {
    Begin(wmf::CreatePen, 5);
    Word(style);
    Word(width);
    Word(0);
    Colour(colour);
    found->second = NewObject();
  }
  lastPen_ = key;
  pen_ = found->second;
  Select(pen_);
}

void Picture::SelectBrushObject(std::int32_t style, std::int32_t colour) {
  hatch_.reset();
  if (!open_) return;
  auto [found, isNew] = brushes_.try_emplace(std::array{style, colour}, 0);
  if (isNew) {
    Begin(wmf::CreateBrush, 4);
    Word(style);
    Colour(colour);
    Word(0);
    found->second = NewObject();
  }
  if (found->second == brush_) return;
  brush_ = found->second;
  Select(brush_);
}

void Picture::SetBrush() {
  constexpr std::int32_t null = 1;
  SelectBrushObject(null, 0);
}

void Picture::SetBrush(std::int32_t colour) {
  constexpr std::int32_t solid = 0;
  SelectBrushObject(solid, colour);
}

void Picture::SetBrush(Hatch hatch, std::int32_t colour) {
  SetBrush();
  hatch_ = DrawBrush{DrawBrush::Kind::Hatched, hatch, static_cast<std::uint32_t>(looks_.AllBlack ? 0 : colour)};
}

// In a hairline of the hatch's colour, under the outline.
void Picture::FillWithHatch(std::span<const PagePoint> polygon) {
  const std::array outline = lastPen_;
  const bool hadPen = pen_ >= 0;
  SelectPenObject(0, 1, static_cast<std::int32_t>(hatch_->colour));
  for (const auto& [from, to] : HatchLines(polygon, hatch_->hatch, HatchSpacing)) {
    MoveTo(from.x, from.y);
    LineTo(to.x, to.y);
  }
  if (hadPen) SelectPenObject(outline[0], outline[2], outline[1]);
}

void Picture::SelectFont(const FontSpec& font, std::int32_t escapement, double scale) {
  measuringFace_ = {font.Name, font.Bold > 550, font.Italic};
  measuringPoints_ = font.Size / UnitsPerPoint * scale;
  if (!open_) return;
  const std::int32_t height = -ToInteger(font.Size * scale);
  const bool italic = font.Italic && escapement == 0;
  auto [found, isNew] = fontObjects_.try_emplace(
      FontKey{font.Name, font.Bold, font.Colour, italic, height, font.Underline, font.Strike, escapement}, 0);
  if (isNew) {
    // A face's name has 32 bytes in this record, its closing zero among them; Windows-1252 does for font names.
    const std::string name = EightBitText(OneLine(font.Name)).substr(0, 31);
    constexpr std::size_t fixedWords = 9;
    Begin(wmf::CreateFont, fixedWords + (name.size() + 2) / 2);
    Word(height);
    Word(0);
    Word(escapement);
    Word(escapement);
    Word(font.Bold);
    const auto flag = [&](bool on) { bytes_.push_back(on ? '\1' : '\0'); };
    flag(italic);
    flag(font.Underline);
    flag(font.Strike);
    bytes_.append(5, '\0');  // charset, precisions, quality, pitch and family: as the system has them
    bytes_ += name;
    bytes_.append(name.size() % 2 == 0 ? 2 : 1, '\0');
    found->second = NewObject();
  }
  if (found->second != font_) {
    font_ = found->second;
    Select(font_);
  }
  const std::int32_t colour = looks_.AllBlack ? 0 : font.Colour;
  if (colour == textColour_) return;
  textColour_ = colour;
  Begin(wmf::SetTextColor, 2);
  Colour(colour);
}

double Picture::TextWidth(std::string_view text) const {
  return fonts_.Width(text, measuringFace_, measuringPoints_ * UnitsPerPoint);
}

void Picture::ForgetFonts() {
  fontObjects_.clear();
  font_ = -1;
}

}  // namespace tellurix
