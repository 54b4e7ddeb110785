// Bitmaps in metafiles by other hands, after the published formats ("[MS-WMF]: Windows Metafile Format",
// sections 2.2.2.9 DeviceIndependentBitmap Object and 2.3.1 Bitmap Record Types).
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "graphics/Drawing.h"

namespace tellurix {

// A device-independent bitmap: its header, colours and rows. 1, 4, 8, 16, 24 and 32 bits per pixel without compression;
// rows that are cut off stay white. Nothing where the header is none, or of another form. Memory is linear in the size
// of the bytes.
std::optional<DrawBitmap> ReadDeviceBitmap(std::string_view bytes);

// What one of the bitmap records draws, and where, in units of the window; sizes below 0 turn it over.
struct PlacedBitmap {
  DrawBitmap bitmap;
  double x = 0, y = 0;
  double width = 0, height = 0;
};
bool IsBitmapRecord(std::uint16_t record);
std::optional<PlacedBitmap> ReadBitmapRecord(std::uint16_t record, std::string_view parameters);

}  // namespace tellurix
