#include <utf8proc.h>

#include <algorithm>
#include <cmath>

#include "graphics/Metafile.h"
#include "workbook/files/ByteStream.h"

namespace tellurix {

namespace {

enum EmfRecord : std::uint32_t {
  EmfHeader = 1,
  EmfPolygon = 3,
  EmfPolyline = 4,
  EmfPolyPolygon = 8,
  EmfSetWindowExt = 9,
  EmfSetWindowOrg = 10,
  EmfSetViewportExt = 11,
  EmfSetViewportOrg = 12,
  EmfEof = 14,
  EmfSetMapMode = 17,
  EmfSetBkMode = 18,
  EmfSetPolyFillMode = 19,
  EmfSetTextAlign = 22,
  EmfSetTextColor = 24,
  EmfIntersectClipRect = 30,
  EmfSaveDc = 33,
  EmfRestoreDc = 34,
  EmfSelectObject = 37,
  EmfCreatePen = 38,
  EmfCreateBrush = 39,
  EmfEllipse = 42,
  EmfRectangle = 43,
  EmfArc = 45,
  EmfChord = 46,
  EmfPie = 47,
  EmfCreateFont = 82,
  EmfStretchDib = 81,
  EmfTextOut = 84,
};

std::int32_t Whole(double v) { return static_cast<std::int32_t>(std::lround(std::clamp(v, -1e9, 1e9))); }

std::u16string Utf16(const std::string& text) {
  std::u16string wide;
  const auto* bytes = reinterpret_cast<const utf8proc_uint8_t*>(text.data());
  for (std::size_t at = 0; at < text.size();) {
    utf8proc_int32_t character = 0;
    const auto used = utf8proc_iterate(bytes + at, static_cast<utf8proc_ssize_t>(text.size() - at), &character);
    if (used <= 0) character = 0xFFFD;
    at += used > 0 ? static_cast<std::size_t>(used) : 1;
    if (character < 0x10000) {
      wide.push_back(static_cast<char16_t>(character));
    } else {
      wide.push_back(static_cast<char16_t>(0xD800 + ((character - 0x10000) >> 10)));
      wide.push_back(static_cast<char16_t>(0xDC00 + ((character - 0x10000) & 0x3FF)));
    }
  }
  return wide;
}

class EmfWriter {
 public:
  EmfWriter(const Drawing& drawing, int width, int height) : drawing_(drawing), width_(width), height_(height) {}

  std::string Write() {
    WritePage();
    for (std::size_t i = 0; i < drawing_.pens.size(); ++i) CreatePen(drawing_.pens[i]);
    for (std::size_t i = 0; i < drawing_.brushes.size(); ++i) CreateBrush(drawing_.brushes[i]);
    for (std::size_t i = 0; i < drawing_.fonts.size(); ++i) CreateFont(drawing_.fonts[i]);
    for (const DrawItem& item : drawing_.items) WriteItem(item);
    if (clipped_) Simple(EmfRestoreDc, {-1});
    Simple(EmfEof, {0, 16, 20});
    return Header() + bytes_;
  }

 private:
  // --- records ---

  void Simple(std::uint32_t record, std::initializer_list<std::int32_t> values) {
    std::string data;
    for (const std::int32_t value : values) PutValue(data, value);
    Add(record, data);
  }
  void Add(std::uint32_t record, std::string data) {
    data.resize((data.size() + 3) / 4 * 4, '\0');
    PutValue(bytes_, record);
    PutValue(bytes_, static_cast<std::uint32_t>(data.size() + 8));
    bytes_ += data;
    ++records_;
  }

  std::string Header() const {
    constexpr std::uint32_t size = 108, signature = 0x464D4520, version = 0x00010000;
    // A reference device of ten pixels to the millimetre.
    const std::int32_t millimetresX = 320, millimetresY = 240, perMillimetre = 10;
    std::string header;
    const auto put = [&](auto... values) { (PutValue(header, static_cast<std::int32_t>(values)), ...); };
    put(EmfHeader, size, 0, 0, DeviceWidth() - 1, DeviceHeight() - 1, 0, 0, width_, height_, signature, version);
    put(size + bytes_.size(), records_ + 1);
    PutValue(header, static_cast<std::uint16_t>(Objects() + 1));
    PutValue(header, std::uint16_t{0});
    put(0, 0, 0, millimetresX * perMillimetre, millimetresY * perMillimetre, millimetresX, millimetresY);
    put(0, 0, 0, millimetresX * 1000, millimetresY * 1000);
    return header;
  }
  // Hundredths of a millimetre on that device.
  std::int32_t DeviceWidth() const { return std::max(1, width_ / 10); }
  std::int32_t DeviceHeight() const { return std::max(1, height_ / 10); }
  std::size_t Objects() const { return drawing_.pens.size() + drawing_.brushes.size() + drawing_.fonts.size(); }

  void WritePage() {
    constexpr std::int32_t anisotropic = 8, transparent = 1;
    Simple(EmfSetMapMode, {anisotropic});
    Simple(EmfSetWindowOrg, {Whole(drawing_.left), Whole(drawing_.top)});
    Simple(EmfSetWindowExt, {Whole(drawing_.width), Whole(drawing_.height)});
    Simple(EmfSetViewportOrg, {0, 0});
    Simple(EmfSetViewportExt, {DeviceWidth(), DeviceHeight()});
    Simple(EmfSetBkMode, {transparent});
  }

  // --- objects: pens first, then brushes, then fonts, numbered from 1 ---

  std::int32_t PenObject(std::size_t i) const { return static_cast<std::int32_t>(1 + i); }
  std::int32_t BrushObject(std::size_t i) const { return PenObject(drawing_.pens.size() + i); }
  std::int32_t FontObject(std::size_t i) const { return BrushObject(drawing_.brushes.size() + i); }

  void CreatePen(const DrawPen& pen) {
    Simple(EmfCreatePen,
           {++lastObject_, static_cast<std::int32_t>(pen.style), Whole(pen.width), 0, static_cast<int>(pen.colour)});
  }
  void CreateBrush(const DrawBrush& brush) {
    static constexpr std::int32_t styles[]{1, 0, 2};
    Simple(EmfCreateBrush, {++lastObject_, styles[static_cast<int>(brush.kind)], static_cast<int>(brush.colour),
                            static_cast<std::int32_t>(brush.hatch)});
  }
  void CreateFont(const DrawFont& font) {
    std::string data;
    for (const std::int32_t value :
         {++lastObject_, -Whole(font.height), 0, font.escapement, font.escapement, font.weight}) {
      PutValue(data, value);
    }
    for (const bool flag : {font.italic, font.underline, font.strike}) data.push_back(flag ? '\1' : '\0');
    data.append(5, '\0');
    constexpr std::size_t nameLength = 32;
    std::u16string name = Utf16(font.name).substr(0, nameLength - 1);
    name.resize(nameLength, u'\0');
    data.append(reinterpret_cast<const char*>(name.data()), 2 * nameLength);
    // LogFontPanose: full name (64 characters), style (32), version to culture (6 numbers), panose and padding.
    data.append(2 * 64 + 2 * 32 + 6 * 4 + 12, '\0');
    Add(EmfCreateFont, std::move(data));
  }

  void Select(std::int32_t object, std::int32_t& selected) {
    if (object == selected) return;
    selected = object;
    Simple(EmfSelectObject, {object});
  }

  // --- items ---

  const DrawPoint& At(const DrawItem& item, std::size_t i) const { return drawing_.points[item.first + i]; }

  void PutBounds(std::string& data) const {
    for (const std::int32_t value : {0, 0, DeviceWidth(), DeviceHeight()}) PutValue(data, value);
  }
  void PutPoint(std::string& data, const DrawPoint& point) const {
    PutValue(data, Whole(point.x));
    PutValue(data, Whole(point.y));
  }

  void WriteItem(const DrawItem& item) {
    using Kind = DrawItem::Kind;
    if (item.kind == Kind::ClipBox) {
      WriteClip(item);
      return;
    }
    if (item.kind == Kind::Bitmap) {
      WriteBitmap(item);
      return;
    }
    Select(PenObject(item.pen), pen_);
    if (item.kind == Kind::Text) {
      WriteWords(item);
      return;
    }
    Select(BrushObject(item.brush), brush_);
    if (item.kind == Kind::Line || item.kind == Kind::Polygon) {
      WritePoints(item);
    } else {
      WriteBoxed(item);
    }
  }

  void WriteClip(const DrawItem& item) {
    if (clipped_) Simple(EmfRestoreDc, {-1});
    clipped_ = item.count == 2;
    // What is selected goes back with the clip.
    pen_ = brush_ = font_ = -1;
    textColour_ = align_ = fillMode_ = -1;
    if (!clipped_) return;
    Simple(EmfSaveDc, {});
    Simple(EmfIntersectClipRect,
           {Whole(At(item, 0).x), Whole(At(item, 0).y), Whole(At(item, 1).x), Whole(At(item, 1).y)});
  }

  void WritePoints(const DrawItem& item) {
    if (item.kind == DrawItem::Kind::Polygon) Set(EmfSetPolyFillMode, item.winding ? 2 : 1, fillMode_);
    std::string data;
    PutBounds(data);
    if (item.ringCount > 0) PutValue(data, item.ringCount);
    PutValue(data, item.count);
    for (std::uint32_t ring = 0; ring < item.ringCount; ++ring) PutValue(data, drawing_.rings[item.text + ring]);
    for (std::uint32_t i = 0; i < item.count; ++i) PutPoint(data, At(item, i));
    Add(item.ringCount > 0                  ? EmfPolyPolygon
        : item.kind == DrawItem::Kind::Line ? EmfPolyline
                                            : EmfPolygon,
        std::move(data));
  }

  void WriteBoxed(const DrawItem& item) {
    using Kind = DrawItem::Kind;
    std::string data;
    for (std::uint32_t i = 0; i < item.count; ++i) PutPoint(data, At(item, i));
    Add(item.kind == Kind::Ellipse ? EmfEllipse
        : item.kind == Kind::Arc   ? EmfArc
        : item.kind == Kind::Chord ? EmfChord
        : item.kind == Kind::Pie   ? EmfPie
                                   : EmfRectangle,
        std::move(data));
  }

  void WriteBitmap(const DrawItem& item) {
    static constexpr std::uint32_t operations[]{0x00CC0020, 0x008800C6, 0x00EE0086, 0x00660046};
    constexpr std::int32_t fixedPart = 80, header = 40, planesAndBits = 1 | 32 << 16, colours = 0;
    const DrawBitmap& bitmap = drawing_.bitmaps[item.text];
    const auto bytes = static_cast<std::int32_t>(4 * bitmap.pixels.size());
    const DrawPoint &from = At(item, 0), &to = At(item, 1);
    std::string data;
    const auto put = [&](auto... values) { (PutValue(data, static_cast<std::int32_t>(values)), ...); };
    PutBounds(data);
    PutPoint(data, from);
    put(0, 0, bitmap.width, bitmap.height, fixedPart, header, fixedPart + header, bytes, colours);
    PutValue(data, operations[static_cast<std::size_t>(bitmap.mode)]);
    put(Whole(to.x - from.x), Whole(to.y - from.y));
    put(header, bitmap.width, -bitmap.height, planesAndBits, 0, bytes, 0, 0, 0, 0);  // rows from the top
    data.append(reinterpret_cast<const char*>(bitmap.pixels.data()), 4 * bitmap.pixels.size());
    Add(EmfStretchDib, std::move(data));
  }

  void Set(std::uint32_t record, std::int32_t value, std::int32_t& last) {
    if (value == last) return;
    last = value;
    Simple(record, {value});
  }

  void WriteWords(const DrawItem& item) {
    const DrawText& text = drawing_.texts[item.text];
    static constexpr std::int32_t across[]{0, 6, 2}, down[]{0, 24, 8};
    Select(FontObject(item.brush), font_);
    Set(EmfSetTextColor, static_cast<std::int32_t>(text.colour), textColour_);
    Set(EmfSetTextAlign, across[static_cast<int>(text.across)] | down[static_cast<int>(text.down)], align_);
    const std::u16string wide = Utf16(text.text);
    constexpr std::uint32_t compatible = 1, fixedPart = 76;
    std::string data;
    PutBounds(data);
    PutValue(data, compatible);
    PutValue(data, 1.0F);
    PutValue(data, 1.0F);
    PutPoint(data, At(item, 0));
    PutValue(data, static_cast<std::uint32_t>(wide.size()));
    PutValue(data, fixedPart);
    PutValue(data, std::uint32_t{0});                             // options
    for (int i = 0; i < 4; ++i) PutValue(data, std::int32_t{0});  // the box, which no option uses
    PutValue(data, std::uint32_t{0});                             // no distances
    data.append(reinterpret_cast<const char*>(wide.data()), 2 * wide.size());
    Add(EmfTextOut, std::move(data));
  }

  const Drawing& drawing_;
  int width_;
  int height_;
  std::string bytes_;  // behind the header
  std::uint32_t records_ = 0;
  std::int32_t lastObject_ = 0;
  std::int32_t pen_ = -1, brush_ = -1, font_ = -1;
  std::int32_t textColour_ = -1, align_ = -1, fillMode_ = -1;
  bool clipped_ = false;
};

}  // namespace

std::string WriteEnhancedMetafile(const Drawing& drawing, int width, int height) {
  return EmfWriter(drawing, std::clamp(width, 1, 1'000'000), std::clamp(height, 1, 1'000'000)).Write();
}

}  // namespace tellurix
