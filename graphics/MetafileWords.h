// The 16-bit words of metafiles, for their readers.
#pragma once

#include <cstdint>
#include <string_view>

namespace tellurix {

// Words of one record, from the front; what lies behind the end is zero.
class Words {
 public:
  explicit Words(std::string_view bytes) : bytes_(bytes) {}

  std::size_t Count() const { return bytes_.size() / 2; }
  std::uint16_t Unsigned(std::size_t i) const {
    return i < Count() ? static_cast<std::uint16_t>(Byte(2 * i) | Byte(2 * i + 1) << 8) : 0;
  }
  std::int16_t Signed(std::size_t i) const { return static_cast<std::int16_t>(Unsigned(i)); }
  std::uint32_t Colour(std::size_t i) const {
    return (Unsigned(i) | static_cast<std::uint32_t>(Unsigned(i + 1)) << 16) & 0xFFFFFF;
  }
  std::string_view Text(std::size_t firstByte, std::size_t length) const {
    return firstByte >= bytes_.size() ? std::string_view() : bytes_.substr(firstByte, length);
  }

 private:
  std::uint32_t Byte(std::size_t i) const { return static_cast<unsigned char>(bytes_[i]); }

  std::string_view bytes_;
};

}  // namespace tellurix
