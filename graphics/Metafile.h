// Windows metafiles: the recording's own format, and the reader of it. All numbers are little-endian 16-bit words,
// after the published format ("[MS-WMF]: Windows Metafile Format", Microsoft Open Specifications).
//
// Text stands in the 8-bit records as Windows-1252. Where that cannot hold it, a comment record before it carries the
// same text as UTF-8, behind the signature TextSignature; other readers skip comments.
//
// A line of a dashed pen stands in the records dash by dash, on whole units. In front of them a comment holds the line
// itself, behind the signature LineSignature: how many records stand for it, where it begins (x, y) and where it ends.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "graphics/Drawing.h"

namespace tellurix {

namespace wmf {

enum Record : std::uint16_t {
  Eof = 0x0000,
  SaveDc = 0x001E,
  SetBkMode = 0x0102,
  SetMapMode = 0x0103,
  SetPolyFillMode = 0x0106,
  RestoreDc = 0x0127,
  SelectObject = 0x012D,
  SetTextAlign = 0x012E,
  DibCreatePatternBrush = 0x0142,
  DeleteObject = 0x01F0,
  CreatePatternBrush = 0x01F9,
  CreatePalette = 0x00F7,
  SetTextColor = 0x0209,
  SetWindowOrg = 0x020B,
  SetWindowExt = 0x020C,
  OffsetWindowOrg = 0x020F,
  LineTo = 0x0213,
  MoveTo = 0x0214,
  CreatePen = 0x02FA,
  CreateFont = 0x02FB,
  CreateBrush = 0x02FC,
  Polygon = 0x0324,
  Polyline = 0x0325,
  ScaleWindowExt = 0x0410,
  IntersectClipRect = 0x0416,
  Ellipse = 0x0418,
  Rectangle = 0x041B,
  SetPixel = 0x041F,
  TextOut = 0x0521,
  PolyPolygon = 0x0538,
  RoundRect = 0x061C,
  PatBlt = 0x061D,
  Escape = 0x0626,
  CreateRegion = 0x06FF,
  Arc = 0x0817,
  Pie = 0x081A,
  Chord = 0x0830,
  ExtTextOut = 0x0A32,
};

inline constexpr std::uint16_t CommentEscape = 0x000F;
inline constexpr std::string_view TextSignature = "TLXTEXT8";
inline constexpr std::string_view LineSignature = "TLXLINE8";
inline constexpr std::uint32_t PlaceableKey = 0x9AC6CDD7;
inline constexpr std::size_t PlaceableSize = 22;
inline constexpr std::uint16_t UnitsPerInch = 210;

}  // namespace wmf

// The 22 bytes that make a metafile placeable: its size in page units, 210 to the inch, and their checksum.
std::string PlaceableHeader(std::int32_t width, std::int32_t height);

// The size in hundredths of a millimetre that a placeable header states; nothing where the bytes have none, or one
// whose checksum is wrong.
struct NaturalSize {
  int width = 0;
  int height = 0;
};
std::optional<NaturalSize> PlaceableSizeOf(std::string_view bytes);

// Reads a metafile, placeable or not, as far as its records go: what is unknown is skipped, what is cut short ends it.
// Nothing only where the bytes do not begin as a metafile, or nothing can be drawn from them. Memory and time are
// linear in the size of the bytes.
std::optional<Drawing> ReadMetafile(std::string_view bytes);

// The drawing as an enhanced metafile, `width` by `height` in hundredths of a millimetre, after the published format
// ("[MS-EMF]: Enhanced Metafile Format", Microsoft Open Specifications). Text is UTF-16.
std::string WriteEnhancedMetafile(const Drawing& drawing, int width, int height);

}  // namespace tellurix
