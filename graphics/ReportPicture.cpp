#include "graphics/ReportPicture.h"

#include <fmt/format.h>

#include "numeric/Rounding.h"

namespace tellurix {

std::string PictureGroupText(std::string_view records, int width, int height) {
  constexpr double hundredthsPerTwip = 2540.0 / 1440;
  constexpr std::size_t bytesPerLine = 39;
  constexpr std::string_view digits = "0123456789ABCDEF";
  std::string text = fmt::format("{{\\pict\\wmetafile8\\picw{}\\pich{}\\picwgoal{}\\pichgoal{} ", width, height,
                                 ToInteger(width / hundredthsPerTwip), ToInteger(height / hundredthsPerTwip));
  text.reserve(text.size() + 2 * records.size() + 2 * (records.size() / bytesPerLine + 2) + 1);
  for (std::size_t i = 0; i < records.size(); ++i) {
    if (i % bytesPerLine == 0) text += "\r\n";
    const auto byte = static_cast<unsigned char>(records[i]);
    text.push_back(digits[byte >> 4]);
    text.push_back(digits[byte & 15]);
  }
  text += "\r\n}";
  return text;
}

}  // namespace tellurix
