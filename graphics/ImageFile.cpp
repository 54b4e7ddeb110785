#include "graphics/ImageFile.h"

#include <FreeImage.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <memory>

#include "workbook/FileBeside.h"

namespace tellurix {

namespace {

struct BitmapDeleter {
  void operator()(FIBITMAP* bitmap) const { FreeImage_Unload(bitmap); }
};
using Bitmap = std::unique_ptr<FIBITMAP, BitmapDeleter>;

// The bitmap of 24 bits; rows stand from the bottom up there.
Bitmap TrueColour(const Image& image) {
  Bitmap wide(FreeImage_Allocate(image.width, image.height, 32));
  if (!wide) return nullptr;
  const auto width = static_cast<std::size_t>(image.width);
  for (int y = 0; y < image.height; ++y) {
    std::memcpy(FreeImage_GetScanLine(wide.get(), image.height - 1 - y),
                image.pixels.data() + static_cast<std::size_t>(y) * width, 4 * width);
  }
  return Bitmap(FreeImage_ConvertTo24Bits(wide.get()));
}

std::string Encoded(FIBITMAP* bitmap, FREE_IMAGE_FORMAT format, int flags) {
  FIMEMORY* memory = FreeImage_OpenMemory();
  std::string bytes;
  BYTE* data = nullptr;
  DWORD size = 0;
  if (FreeImage_SaveToMemory(format, bitmap, memory, flags) && FreeImage_AcquireMemory(memory, &data, &size)) {
    bytes.assign(reinterpret_cast<const char*>(data), size);
  }
  FreeImage_CloseMemory(memory);
  return bytes;
}

}  // namespace

std::string EncodeBitmap(const Image& image, BitmapFormat format, int quality) {
  if (image.pixels.empty()) return {};
  Bitmap bitmap = TrueColour(image);
  if (!bitmap) return {};
  switch (format) {
    case BitmapFormat::Jpeg:
      return Encoded(bitmap.get(), FIF_JPEG, std::clamp(quality, 1, 100) | JPEG_SUBSAMPLING_444);
    case BitmapFormat::Bmp:
      return Encoded(bitmap.get(), FIF_BMP, BMP_DEFAULT);
    case BitmapFormat::Gif:
      bitmap.reset(FreeImage_ColorQuantize(bitmap.get(), FIQ_WUQUANT));
      return bitmap ? Encoded(bitmap.get(), FIF_GIF, GIF_DEFAULT) : std::string();
    default:
      return Encoded(bitmap.get(), FIF_PNG, PNG_DEFAULT);
  }
}

bool WriteImageFile(const std::filesystem::path& file, std::string_view bytes, std::string& problem) {
  FileBeside beside(file);
  bool written = beside.IsMade();
  if (written) {
    std::ofstream out(beside.Path(), std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    out.close();
    written = out.good() && beside.PutInPlace();
  }
  if (!written) problem = "Error saving " + file.string() + (beside.Problem().empty() ? "" : "\n" + beside.Problem());
  return written;
}

}  // namespace tellurix
