// Bitmaps to files.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "graphics/Renderer.h"

namespace tellurix {

enum class BitmapFormat { Png, Jpeg, Bmp, Gif };

// The image as a file of 24 bits per pixel; a GIF has the 256 colours that come nearest. `quality` of a JPEG from 1
// (small file) to 100 (large file). Empty when it cannot be encoded.
std::string EncodeBitmap(const Image& image, BitmapFormat format, int quality = 90);

// Writes a file complete or not at all; false with the reason in words.
bool WriteImageFile(const std::filesystem::path& file, std::string_view bytes, std::string& problem);

}  // namespace tellurix
