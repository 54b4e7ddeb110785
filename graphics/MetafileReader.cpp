#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <utility>
#include <variant>

#include "graphics/DeviceBitmap.h"
#include "graphics/Metafile.h"
#include "graphics/MetafileWords.h"
#include "numeric/Text.h"
#include "report/RtfCodePage.h"

namespace tellurix {

namespace {

using namespace wmf;

constexpr int StandardCodePage = 1252;
constexpr std::size_t MostObjects = 65'536;
constexpr std::size_t DeepestSaves = 64;

struct NoObject {};  // an empty slot, or an object that draws nothing
struct OtherObject {};
struct FontObject {
  DrawFont font;
  int charset = 0;
};
using Object = std::variant<NoObject, OtherObject, DrawPen, DrawBrush, FontObject>;

struct State {
  double originX = 0, originY = 0, extentX = 1, extentY = 1;  // of the window
  DrawPen pen;
  DrawBrush brush{DrawBrush::Kind::Solid, Hatch::Horizontal, 0xFFFFFF};
  FontObject font;
  std::uint32_t textColour = 0;
  std::uint16_t align = 0;
  bool winding = false;
  double x = 0, y = 0;  // the current point, in units of the window
  bool clipped = false;
  std::array<DrawPoint, 2> clip{};
};

class Reader {
 public:
  // Plays the records that follow the header. `box` is the page of a placeable metafile that sets no window.
  std::optional<Drawing> Read(std::string_view bytes, const std::optional<std::array<DrawPoint, 2>>& box) {
    while (bytes.size() >= 6) {
      const Words head(bytes);
      const std::size_t words = head.Unsigned(0) | static_cast<std::size_t>(head.Unsigned(1)) << 16;
      const std::uint16_t record = head.Unsigned(2);
      if (words < 3 || record == Eof) break;
      const std::size_t size = std::min(2 * words, bytes.size());
      if (skipped_ > 0) {
        --skipped_;
      } else {
        Play(record, Words(bytes.substr(6, size - 6)));
      }
      bytes.remove_prefix(size);
    }
    if (out_.items.empty() && !hasWindow_) return std::nullopt;
    if (!hasWindow_ && box) TakePage(*box);
    if (!hasWindow_ && !box) TakePageFromContent();
    return std::move(out_);
  }

 private:
  void Play(std::uint16_t record, const Words& w) {
    if (record != LineTo && record != MoveTo && record != Escape) lineOpen_ = false;
    switch (record) {
      case SaveDc:
        if (saved_.size() < DeepestSaves) saved_.push_back(state_);
        break;
      case RestoreDc:
        Restore(w.Signed(0));
        break;
      case SetPolyFillMode:
        state_.winding = w.Unsigned(0) == 2;
        break;
      case wmf::SetTextAlign:
        state_.align = w.Unsigned(0);
        break;
      case SetTextColor:
        state_.textColour = w.Colour(0);
        break;
      case SetWindowOrg:
        state_.originY = w.Signed(0);
        state_.originX = w.Signed(1);
        if (!placedContent_) out_.left = state_.originX, out_.top = state_.originY;
        break;
      case OffsetWindowOrg:
        state_.originY += w.Signed(0);
        state_.originX += w.Signed(1);
        break;
      case SetWindowExt:
        SetExtent(w.Signed(1), w.Signed(0));
        break;
      case ScaleWindowExt:
        ScaleExtent(w);
        break;
      case IntersectClipRect:
        Clip(w);
        break;
      case CreatePen:
        MakePen(w);
        break;
      case CreateBrush:
        MakeBrush(w);
        break;
      case CreateFont:
        MakeFont(w);
        break;
      case CreatePalette:
      case CreatePatternBrush:
      case DibCreatePatternBrush:
      case CreateRegion:
        Keep(OtherObject{});
        break;
      case SelectObject:
        Select(w.Unsigned(0));
        break;
      case DeleteObject:
        if (w.Unsigned(0) < objects_.size()) {
          objects_[w.Unsigned(0)] = NoObject{};
          firstFree_ = std::min<std::size_t>(firstFree_, w.Unsigned(0));
        }
        break;
      case MoveTo:
        state_.x = w.Signed(1);
        state_.y = w.Signed(0);
        lineOpen_ = false;
        break;
      case LineTo:
        DrawLineTo(w.Signed(1), w.Signed(0));
        break;
      case Polyline:
        DrawRing(DrawItem::Kind::Line, w);
        break;
      case wmf::Polygon:
        DrawRing(DrawItem::Kind::Polygon, w);
        break;
      case PolyPolygon:
        DrawRings(w);
        break;
      case wmf::Rectangle:
      case RoundRect:
      case wmf::Ellipse:
        DrawBoxed(record, w, record == RoundRect ? 2 : 0);
        break;
      case wmf::Arc:
      case wmf::Chord:
      case wmf::Pie:
        DrawBoxed(record, w, 4);
        break;
      case TextOut:
        DrawShortText(w);
        break;
      case ExtTextOut:
        DrawLongText(w);
        break;
      case Escape:
        TakeComment(w);
        break;
      default:
        if (IsBitmapRecord(record)) DrawBitmapOf(record, w);
        break;
    }
  }

  // --- the window: everything is put into the space of the first one ---

  void SetExtent(int width, int height) {
    if (width == 0 || height == 0) return;
    state_.extentX = width;
    state_.extentY = height;
    if (placedContent_ && hasWindow_) return;
    hasWindow_ = true;
    out_.width = std::abs(width);
    out_.height = std::abs(height);
  }

  void ScaleExtent(const Words& w) {
    const double yDown = w.Signed(0), yUp = w.Signed(1), xDown = w.Signed(2), xUp = w.Signed(3);
    if (yDown == 0 || yUp == 0 || xDown == 0 || xUp == 0) return;
    state_.extentX = std::clamp(state_.extentX * xUp / xDown, -1e9, 1e9);
    state_.extentY = std::clamp(state_.extentY * yUp / yDown, -1e9, 1e9);
    if (std::fabs(state_.extentX) < 1e-6) state_.extentX = 1;
    if (std::fabs(state_.extentY) < 1e-6) state_.extentY = 1;
  }

  DrawPoint Place(double x, double y) {
    placedContent_ = true;
    if (!hasWindow_) return {x, y};
    return {out_.left + (x - state_.originX) * ScaleX(), out_.top + (y - state_.originY) * ScaleY()};
  }
  double ScaleX() const { return hasWindow_ ? out_.width / state_.extentX : 1; }
  double ScaleY() const { return hasWindow_ ? out_.height / state_.extentY : 1; }
  double LengthScale() const { return std::fabs(ScaleY()); }

  void TakePage(const std::array<DrawPoint, 2>& box) {
    out_.left = std::min(box[0].x, box[1].x);
    out_.top = std::min(box[0].y, box[1].y);
    out_.width = std::max(std::fabs(box[1].x - box[0].x), 1.0);
    out_.height = std::max(std::fabs(box[1].y - box[0].y), 1.0);
  }

  // A metafile without a window: the page is what is drawn on.
  void TakePageFromContent() {
    std::array<DrawPoint, 2> box{};
    if (!out_.points.empty()) box = {out_.points.front(), out_.points.front()};
    for (const DrawPoint& point : out_.points) {
      box[0] = {std::min(box[0].x, point.x), std::min(box[0].y, point.y)};
      box[1] = {std::max(box[1].x, point.x), std::max(box[1].y, point.y)};
    }
    TakePage(box);
  }

  void Restore(int which) {
    // -1 is the last one saved; a positive number counts from the first.
    const auto count = static_cast<int>(saved_.size());
    const int index = which < 0 ? count + which : which - 1;
    if (index < 0 || index >= count) return;
    const bool wasClipped = state_.clipped;
    state_ = saved_[static_cast<std::size_t>(index)];
    saved_.resize(static_cast<std::size_t>(index));
    if (wasClipped || state_.clipped) EmitClip();
  }

  void Clip(const Words& w) {
    DrawPoint a = Place(w.Signed(3), w.Signed(2)), b = Place(w.Signed(1), w.Signed(0));
    if (a.x > b.x) std::swap(a.x, b.x);
    if (a.y > b.y) std::swap(a.y, b.y);
    if (state_.clipped) {
      a = {std::max(a.x, state_.clip[0].x), std::max(a.y, state_.clip[0].y)};
      b = {std::min(b.x, state_.clip[1].x), std::min(b.y, state_.clip[1].y)};
    }
    state_.clipped = true;
    state_.clip = {a, b};
    EmitClip();
  }

  void EmitClip() {
    DrawItem item{.kind = DrawItem::Kind::ClipBox, .first = Index(out_.points.size())};
    if (state_.clipped) out_.points.insert(out_.points.end(), state_.clip.begin(), state_.clip.end());
    item.count = state_.clipped ? 2 : 0;
    out_.items.push_back(item);
  }

  // --- objects ---

  void Keep(Object object) {
    while (firstFree_ < objects_.size() && !std::holds_alternative<NoObject>(objects_[firstFree_])) ++firstFree_;
    if (firstFree_ == MostObjects) return;
    if (firstFree_ == objects_.size()) objects_.emplace_back();
    objects_[firstFree_] = std::move(object);
  }

  void MakePen(const Words& w) {
    const int style = w.Unsigned(0) & 0x0F;
    DrawPen pen;
    pen.style = style <= 5 ? static_cast<PenStyle>(style) : PenStyle::Solid;
    pen.width = std::abs(static_cast<double>(w.Signed(1)));
    pen.colour = w.Colour(3);
    Keep(pen);
  }

  void MakeBrush(const Words& w) {
    DrawBrush brush;
    brush.colour = w.Colour(1);
    if (w.Unsigned(0) == 0) brush.kind = DrawBrush::Kind::Solid;
    if (w.Unsigned(0) == 2 && w.Unsigned(3) <= 5) {
      brush.kind = DrawBrush::Kind::Hatched;
      brush.hatch = static_cast<Hatch>(w.Unsigned(3));
    }
    Keep(brush);
  }

  void MakeFont(const Words& w) {
    constexpr double emOfCell = 0.87;  // a positive height is that of the cell, of which the em is a part
    FontObject object;
    DrawFont& font = object.font;
    const double height = w.Signed(0);
    font.height = height < 0 ? -height : height > 0 ? height * emOfCell : 12;
    font.escapement = w.Signed(2);
    font.weight = w.Signed(4);
    font.italic = (w.Unsigned(5) & 0xFF) != 0;
    font.underline = w.Unsigned(5) >> 8 != 0;
    font.strike = (w.Unsigned(6) & 0xFF) != 0;
    object.charset = w.Unsigned(6) >> 8;
    std::string_view name = w.Text(18, 32);
    font.name = ToUtf8(name.substr(0, name.find('\0')));
    if (font.name.empty()) font.name = "Arial";
    Keep(std::move(object));
  }

  void Select(std::size_t slot) {
    if (slot >= objects_.size()) return;
    if (const auto* pen = std::get_if<DrawPen>(&objects_[slot])) state_.pen = *pen;
    if (const auto* brush = std::get_if<DrawBrush>(&objects_[slot])) state_.brush = *brush;
    if (const auto* font = std::get_if<FontObject>(&objects_[slot])) state_.font = *font;
  }

  // --- what is drawn ---

  static std::uint32_t Index(std::size_t i) { return static_cast<std::uint32_t>(i); }

  // The place of a value in a table; new ones go to its end. Neighbours mostly share it.
  template <typename T>
  static std::uint32_t Intern(std::vector<T>& table, const T& value) {
    constexpr std::size_t looked = 32;
    const std::size_t from = table.size() > looked ? table.size() - looked : 0;
    for (std::size_t i = table.size(); i > from; --i) {
      if (table[i - 1] == value) return Index(i - 1);
    }
    table.push_back(value);
    return Index(table.size() - 1);
  }

  DrawItem NewItem(DrawItem::Kind kind) {
    DrawPen pen = state_.pen;
    pen.width *= LengthScale();
    return {.kind = kind,
            .winding = state_.winding,
            .pen = Intern(out_.pens, pen),
            .brush = Intern(out_.brushes, state_.brush),
            .first = Index(out_.points.size())};
  }

  void DrawLineTo(double x, double y) {
    if (!lineOpen_) {
      out_.items.push_back(NewItem(DrawItem::Kind::Line));
      out_.items.back().count = 1;
      out_.points.push_back(Place(state_.x, state_.y));
      lineOpen_ = true;
    }
    out_.points.push_back(Place(x, y));
    ++out_.items.back().count;
    state_.x = x;
    state_.y = y;
  }

  void AddPoints(const Words& w, std::size_t firstWord, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
      out_.points.push_back(Place(w.Signed(firstWord + 2 * i), w.Signed(firstWord + 2 * i + 1)));
    }
  }

  void DrawRing(DrawItem::Kind kind, const Words& w) {
    const std::size_t present = w.Count() > 0 ? (w.Count() - 1) / 2 : 0;
    const std::size_t count = std::min<std::size_t>(w.Unsigned(0), present);
    if (count < 2) return;
    DrawItem item = NewItem(kind);
    item.count = Index(count);
    AddPoints(w, 1, count);
    out_.items.push_back(item);
  }

  void DrawRings(const Words& w) {
    const std::size_t rings = std::min<std::size_t>(w.Unsigned(0), w.Count());
    DrawItem item = NewItem(DrawItem::Kind::Polygon);
    item.text = Index(out_.rings.size());
    std::size_t at = 1 + rings;
    for (std::size_t ring = 0; ring < rings; ++ring) {
      const std::size_t count = w.Unsigned(1 + ring);
      if (count == 0 || at + 2 * count > w.Count()) break;
      AddPoints(w, at, count);
      out_.rings.push_back(Index(count));
      item.count += Index(count);
      ++item.ringCount;
      at += 2 * count;
    }
    if (item.count > 0) out_.items.push_back(item);
  }

  void DrawBitmapOf(std::uint16_t record, const Words& w) {
    auto placed = ReadBitmapRecord(record, w.Text(0, 2 * w.Count()));
    if (!placed) return;
    DrawItem item = NewItem(DrawItem::Kind::Bitmap);
    item.text = Index(out_.bitmaps.size());
    item.count = 2;
    out_.points.push_back(Place(placed->x, placed->y));
    out_.points.push_back(Place(placed->x + placed->width, placed->y + placed->height));
    out_.bitmaps.push_back(std::move(placed->bitmap));
    out_.items.push_back(item);
  }

  // Shapes in a box: its corners are the last four words, in front of them what is particular to the shape.
  void DrawBoxed(std::uint16_t record, const Words& w, std::size_t extra) {
    if (w.Count() < extra + 4) return;
    using Kind = DrawItem::Kind;
    const Kind kind = record == wmf::Ellipse ? Kind::Ellipse
                      : record == wmf::Arc   ? Kind::Arc
                      : record == wmf::Chord ? Kind::Chord
                      : record == wmf::Pie   ? Kind::Pie
                                             : Kind::Rectangle;
    DrawItem item = NewItem(kind);
    out_.points.push_back(Place(w.Signed(extra + 3), w.Signed(extra + 2)));
    out_.points.push_back(Place(w.Signed(extra + 1), w.Signed(extra)));
    if (extra == 4) {
      out_.points.push_back(Place(w.Signed(3), w.Signed(2)));  // where it begins
      out_.points.push_back(Place(w.Signed(1), w.Signed(0)));
    }
    item.count = Index(out_.points.size()) - item.first;
    out_.items.push_back(item);
  }

  void DrawShortText(const Words& w) {
    const std::size_t length = w.Unsigned(0);
    const std::size_t at = 1 + (length + 1) / 2;
    if (at + 2 > w.Count()) return;
    DrawWords(w.Text(2, length), w.Signed(at + 1), w.Signed(at));
  }

  void DrawLongText(const Words& w) {
    constexpr std::uint16_t boxed = 0x0006;  // opaque or clipped: a box of four words stands in front of the text
    if (w.Count() < 4) return;
    const std::size_t first = (w.Unsigned(3) & boxed) != 0 ? 8 : 4;
    DrawWords(w.Text(2 * first, w.Unsigned(2)), w.Signed(1), w.Signed(0));
  }

  void DrawWords(std::string_view narrow, double x, double y) {
    constexpr std::uint16_t atCurrentPoint = 1, right = 2, centre = 6, bottom = 8, baseline = 24;
    if ((state_.align & atCurrentPoint) != 0) x = state_.x, y = state_.y;
    DrawText text;
    text.text = std::exchange(comment_, {}).value_or(std::string());
    if (text.text.empty()) text.text = Decode(narrow);
    if (text.text.empty()) return;
    text.colour = state_.textColour;
    const auto across = state_.align & centre;
    text.across = across == centre ? TextAcross::Centre : across == right ? TextAcross::Right : TextAcross::Left;
    const auto down = state_.align & baseline;
    text.down = down == baseline ? TextDown::Baseline : down == bottom ? TextDown::Bottom : TextDown::Top;
    DrawFont font = state_.font.font;
    font.height *= LengthScale();
    DrawItem item = NewItem(DrawItem::Kind::Text);
    item.brush = Intern(out_.fonts, font);
    item.text = Index(out_.texts.size());
    item.count = 1;
    out_.points.push_back(Place(x, y));
    out_.texts.push_back(std::move(text));
    out_.items.push_back(item);
  }

  std::string Decode(std::string_view narrow) {
    const int page = CodePageOfCharset(state_.font.charset, StandardCodePage);
    if (page == StandardCodePage && IsPlain(narrow)) return std::string(narrow);
    std::string text;
    for (const char c : narrow) text += decoder_.Decode(static_cast<unsigned char>(c), page);
    return text + decoder_.Flush();
  }
  static bool IsPlain(std::string_view text) {
    return std::ranges::all_of(text, [](char c) { return c > 0; });
  }

  // Our own comments hold what the records that follow stand for.
  void TakeComment(const Words& w) {
    if (w.Unsigned(0) != CommentEscape) return;
    const std::string_view data = w.Text(4, w.Unsigned(1));
    if (data.starts_with(LineSignature)) return TakeLine(Words(data.substr(LineSignature.size())));
    if (!data.starts_with(TextSignature)) return;
    const std::string_view text = data.substr(TextSignature.size());
    if (!text.empty() && IsValidUtf8(text)) comment_ = std::string(text);
  }

  // A dashed line, in the place of its dashes.
  void TakeLine(const Words& w) {
    if (w.Count() < 5) return;
    skipped_ = w.Unsigned(0);
    const double x = w.Signed(1), y = w.Signed(2);
    if (x != state_.x || y != state_.y) lineOpen_ = false;
    state_.x = x;
    state_.y = y;
    DrawLineTo(w.Signed(3), w.Signed(4));
  }

  Drawing out_;
  State state_;
  std::vector<State> saved_;
  std::vector<Object> objects_;
  std::size_t firstFree_ = 0;  // no slot before it is empty
  std::optional<std::string> comment_;
  RtfDecoder decoder_;
  std::size_t skipped_ = 0;  // records that a comment stands for
  bool hasWindow_ = false;
  bool placedContent_ = false;
  bool lineOpen_ = false;  // the last item is a line that LineTo goes on with
};

}  // namespace

std::optional<Drawing> ReadMetafile(std::string_view bytes) {
  std::optional<std::array<DrawPoint, 2>> box;
  if (PlaceableSizeOf(bytes)) {
    const Words w(bytes);
    box = {DrawPoint{double(w.Signed(3)), double(w.Signed(4))}, DrawPoint{double(w.Signed(5)), double(w.Signed(6))}};
    bytes.remove_prefix(PlaceableSize);
  }
  const Words head(bytes);
  constexpr std::uint16_t inMemory = 1, onDisk = 2, headerWords = 9;
  if (head.Count() < headerWords || (head.Unsigned(0) != inMemory && head.Unsigned(0) != onDisk) ||
      head.Unsigned(1) != headerWords)
    return std::nullopt;
  return Reader().Read(bytes.substr(2 * headerWords), box);
}

}  // namespace tellurix
