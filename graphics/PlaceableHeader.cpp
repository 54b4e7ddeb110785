#include <array>
#include <cmath>
#include <cstdlib>

#include "graphics/Metafile.h"
#include "graphics/MetafileWords.h"

namespace tellurix {

using namespace wmf;

std::string PlaceableHeader(std::int32_t width, std::int32_t height) {
  const std::array<std::uint16_t, 10> words{static_cast<std::uint16_t>(PlaceableKey & 0xFFFF),
                                            static_cast<std::uint16_t>(PlaceableKey >> 16),
                                            0,  // handle
                                            0,
                                            0,
                                            static_cast<std::uint16_t>(width),
                                            static_cast<std::uint16_t>(height),
                                            UnitsPerInch,
                                            0,
                                            0};
  std::uint16_t checksum = 0;
  std::string bytes;
  const auto append = [&](std::uint16_t word) {
    bytes.push_back(static_cast<char>(word & 0xFF));
    bytes.push_back(static_cast<char>(word >> 8));
  };
  for (const std::uint16_t word : words) {
    checksum = static_cast<std::uint16_t>(checksum ^ word);
    append(word);
  }
  append(checksum);
  return bytes;
}

std::optional<NaturalSize> PlaceableSizeOf(std::string_view bytes) {
  const Words w(bytes.substr(0, PlaceableSize));
  if (w.Count() < PlaceableSize / 2 ||
      (w.Unsigned(0) | static_cast<std::uint32_t>(w.Unsigned(1)) << 16) != PlaceableKey)
    return std::nullopt;
  std::uint16_t checksum = 0;
  for (std::size_t i = 0; i < 10; ++i) checksum = static_cast<std::uint16_t>(checksum ^ w.Unsigned(i));
  if (checksum != w.Unsigned(10) || w.Unsigned(7) == 0) return std::nullopt;
  const auto length = [&](std::size_t low, std::size_t high) {
    return static_cast<int>(std::nearbyint(std::abs(w.Signed(high) - w.Signed(low)) * 2540.0 / w.Unsigned(7)));
  };
  return NaturalSize{length(3, 5), length(4, 6)};
}

}  // namespace tellurix
