#include "graphics/DeviceBitmap.h"

#include <algorithm>
#include <array>
#include <cstdlib>

#include "graphics/MetafileWords.h"

namespace tellurix {

namespace {

enum BitmapRecord : std::uint16_t {
  DibBitBlt = 0x0940,
  DibStretchBlt = 0x0B41,
  SetDibToDev = 0x0D33,
  StretchDib = 0x0F43
};

constexpr std::int64_t LargestSide = 32767;
constexpr std::uint32_t White = 0xFFFFFFFF;

std::uint32_t Long(const Words& w, std::size_t i) {
  return w.Unsigned(i) | static_cast<std::uint32_t>(w.Unsigned(i + 1)) << 16;
}

// Pixels 0xFFRRGGBB out of the bits of a row.
class PixelReader {
 public:
  PixelReader(std::string_view bytes, int bits, bool hasMasks) : bytes_(bytes), bits_(bits) {
    constexpr std::size_t headerWords = 20;
    masks_ = bits == 16 ? std::array<std::uint32_t, 3>{0x7C00, 0x03E0, 0x001F}
                        : std::array<std::uint32_t, 3>{0xFF0000, 0x00FF00, 0x0000FF};
    if (!hasMasks) return;
    for (std::size_t i = 0; i < 3; ++i) masks_[i] = Long(Words(bytes), headerWords + 2 * i);
  }

  void TakeColours(std::size_t at, std::size_t count, std::size_t bytesEach) {
    for (std::size_t i = 0; i < count && at + bytesEach <= bytes_.size(); ++i, at += bytesEach) {
      colours_.push_back(0xFF000000 | Byte(at + 2) << 16 | Byte(at + 1) << 8 | Byte(at));
    }
  }

  std::uint32_t At(std::size_t row, std::size_t x) const {
    if (bits_ <= 8) {
      const std::size_t bit = x * static_cast<std::size_t>(bits_);
      const std::uint32_t value = Byte(row + bit / 8) >> (8 - bits_ - static_cast<int>(bit % 8)) & ((1U << bits_) - 1);
      return value < colours_.size() ? colours_[value] : White;
    }
    const std::size_t size = static_cast<std::size_t>(bits_) / 8, at = row + x * size;
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < size; ++i) value |= Byte(at + i) << 8 * i;
    return 0xFF000000 | Part(value, 0) << 16 | Part(value, 1) << 8 | Part(value, 2);
  }

 private:
  std::uint32_t Byte(std::size_t i) const { return i < bytes_.size() ? static_cast<unsigned char>(bytes_[i]) : 0xFFU; }
  std::uint32_t Part(std::uint32_t value, std::size_t i) const {
    const std::uint64_t mask = masks_[i];
    return mask == 0 ? 0 : static_cast<std::uint32_t>((value & mask) * 255 / mask);
  }

  std::string_view bytes_;
  int bits_;
  std::array<std::uint32_t, 3> masks_{};
  std::vector<std::uint32_t> colours_;
};

struct Shape {
  std::int64_t width = 0, height = 0;  // height below 0: rows from the top
  int bits = 0;
  std::uint32_t compression = 0;
  std::size_t coloursAt = 0, colours = 0, bytesOfColour = 4;
  std::size_t rowsAt = 0;
};

std::optional<Shape> ReadShape(const Words& w) {
  constexpr std::uint32_t coreHeader = 12, infoHeader = 40, plain = 0, bitFields = 3;
  Shape shape;
  const std::uint32_t header = Long(w, 0);
  if (header == coreHeader) {
    shape.width = w.Unsigned(2);
    shape.height = w.Signed(3);
    shape.bits = w.Unsigned(5);
    shape.bytesOfColour = 3;
  } else if (header >= infoHeader && header < 256) {
    shape.width = static_cast<std::int32_t>(Long(w, 2));
    shape.height = static_cast<std::int32_t>(Long(w, 4));
    shape.bits = w.Unsigned(7);
    shape.compression = Long(w, 8);
    shape.colours = Long(w, 16);
  } else {
    return std::nullopt;
  }
  constexpr std::array known{1, 4, 8, 16, 24, 32};
  if (std::ranges::find(known, shape.bits) == known.end()) return std::nullopt;
  if (shape.width < 1 || shape.width > LargestSide || shape.height == 0 || std::abs(shape.height) > LargestSide)
    return std::nullopt;
  const bool hasMasks = shape.compression == bitFields && (shape.bits == 16 || shape.bits == 32);
  if (shape.compression != plain && !hasMasks) return std::nullopt;
  const std::size_t most = shape.bits <= 8 ? std::size_t{1} << shape.bits : 0;
  if (shape.colours == 0 || shape.colours > most) shape.colours = most;
  shape.coloursAt = header + (hasMasks && header == infoHeader ? 12 : 0);
  shape.rowsAt = shape.coloursAt + shape.colours * shape.bytesOfColour;
  return shape;
}

// The part of a bitmap from (x, y) on; of the whole where the part is none of it.
DrawBitmap Part(DrawBitmap whole, std::int64_t x, std::int64_t y, std::int64_t width, std::int64_t height) {
  const std::int64_t right = std::min<std::int64_t>(x + width, whole.width);
  const std::int64_t bottom = std::min<std::int64_t>(y + height, whole.height);
  x = std::max<std::int64_t>(x, 0);
  y = std::max<std::int64_t>(y, 0);
  if (x >= right || y >= bottom || (x == 0 && y == 0 && right == whole.width && bottom == whole.height)) return whole;
  DrawBitmap part{static_cast<int>(right - x), static_cast<int>(bottom - y), whole.mode, {}};
  part.pixels.reserve(static_cast<std::size_t>(part.width) * static_cast<std::size_t>(part.height));
  for (std::int64_t row = y; row < bottom; ++row) {
    const auto from = whole.pixels.begin() + row * whole.width + x;
    part.pixels.insert(part.pixels.end(), from, from + part.width);
  }
  return part;
}

BitmapMode ModeOf(std::uint32_t rasterOperation) {
  switch (rasterOperation) {
    case 0x008800C6:
      return BitmapMode::And;
    case 0x00EE0086:
      return BitmapMode::Or;
    case 0x00660046:
      return BitmapMode::Xor;
    default:
      return BitmapMode::Copy;
  }
}

// Where in a record its parameters stand, in words; none below 0.
struct Layout {
  int operation, source, sourceSize, target, targetSize;  // pairs: y before x
  std::size_t bitmap;
  bool sourceFromBottom;  // as the rows of most bitmaps are
};
std::optional<Layout> LayoutOf(std::uint16_t record) {
  switch (record) {
    case StretchDib:
      return Layout{0, 5, 3, 9, 7, 11, true};
    case DibStretchBlt:
      return Layout{0, 4, 2, 8, 6, 10, false};
    case DibBitBlt:
      return Layout{0, 2, 4, 6, 4, 8, false};
    case SetDibToDev:
      return Layout{-1, 3, 5, 7, 5, 9, true};
    default:
      return std::nullopt;
  }
}

}  // namespace

std::optional<DrawBitmap> ReadDeviceBitmap(std::string_view bytes) {
  constexpr std::uint32_t bitFields = 3;
  const auto shape = ReadShape(Words(bytes));
  if (!shape || shape->rowsAt >= bytes.size()) return std::nullopt;
  const std::size_t stride =
      (static_cast<std::size_t>(shape->width) * static_cast<std::size_t>(shape->bits) + 31) / 32 * 4;
  const auto rows = static_cast<std::size_t>(std::abs(shape->height));
  const std::size_t present = std::min(rows, (bytes.size() - shape->rowsAt + stride - 1) / stride);
  // A bitmap of which next to nothing is there would take more memory than its bytes warrant.
  if (2 * present < rows) return std::nullopt;
  PixelReader reader(bytes, shape->bits, shape->compression == bitFields);
  reader.TakeColours(shape->coloursAt, shape->colours, shape->bytesOfColour);
  DrawBitmap bitmap{static_cast<int>(shape->width), static_cast<int>(rows), BitmapMode::Copy, {}};
  const auto width = static_cast<std::size_t>(shape->width);
  bitmap.pixels.assign(width * rows, White);
  for (std::size_t row = 0; row < present; ++row) {
    const std::size_t y = shape->height > 0 ? rows - 1 - row : row;
    for (std::size_t x = 0; x < width; ++x) {
      bitmap.pixels[y * width + x] = reader.At(shape->rowsAt + row * stride, x);
    }
  }
  return bitmap;
}

bool IsBitmapRecord(std::uint16_t record) { return LayoutOf(record).has_value(); }

std::optional<PlacedBitmap> ReadBitmapRecord(std::uint16_t record, std::string_view parameters) {
  const auto layout = LayoutOf(record);
  if (!layout || parameters.size() <= 2 * layout->bitmap) return std::nullopt;
  auto bitmap = ReadDeviceBitmap(parameters.substr(2 * layout->bitmap));
  if (!bitmap) return std::nullopt;
  const Words w(parameters);
  const auto down = [&](int at) { return static_cast<std::int64_t>(w.Signed(static_cast<std::size_t>(at))); };
  const auto across = [&](int at) { return static_cast<std::int64_t>(w.Signed(static_cast<std::size_t>(at) + 1)); };
  const std::int64_t width = across(layout->sourceSize), height = down(layout->sourceSize);
  const std::int64_t y = down(layout->source);
  bitmap->mode =
      layout->operation < 0 ? BitmapMode::Copy : ModeOf(Long(w, static_cast<std::size_t>(layout->operation)));
  PlacedBitmap placed;
  placed.x = static_cast<double>(across(layout->target));
  placed.y = static_cast<double>(down(layout->target));
  placed.width = static_cast<double>(across(layout->targetSize)) * (width < 0 ? -1 : 1);
  placed.height = static_cast<double>(down(layout->targetSize)) * (height < 0 ? -1 : 1);
  const std::int64_t top = layout->sourceFromBottom ? bitmap->height - y - std::abs(height) : y;
  placed.bitmap = Part(std::move(*bitmap), across(layout->source), top, std::abs(width), std::abs(height));
  return placed;
}

}  // namespace tellurix
