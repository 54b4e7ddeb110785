// Values to and from bytes, little-endian.
#pragma once

#include <bit>
#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>

namespace tellurix {

static_assert(std::endian::native == std::endian::little, "files are little-endian");

template <typename T>
void PutValue(std::string& bytes, T value) {
  bytes.append(reinterpret_cast<const char*>(&value), sizeof(T));
}

// Takes bytes off the front; once they run out, IsBad, and all that is taken is zero or empty.
class ByteReader {
 public:
  explicit ByteReader(std::string_view bytes) : left_(bytes) {}

  template <typename T>
  T Take() {
    T value{};
    const std::string_view bytes = TakeBytes(sizeof(T));
    if (!bytes.empty()) std::memcpy(&value, bytes.data(), sizeof(T));
    return value;
  }
  std::string_view TakeBytes(std::size_t count) {
    if (count > left_.size()) {
      bad_ = true;
      return {};
    }
    const std::string_view taken = left_.substr(0, count);
    left_.remove_prefix(count);
    return taken;
  }
  // `count` values in a row, read by At; empty and IsBad when there are not so many.
  template <typename T>
  std::string_view TakeArray(std::size_t count) {
    return count > left_.size() / sizeof(T) ? TakeBytes(left_.size() + 1) : TakeBytes(count * sizeof(T));
  }
  template <typename T>
  static T At(std::string_view array, std::size_t index) {
    T value;
    std::memcpy(&value, array.data() + index * sizeof(T), sizeof(T));
    return value;
  }
  bool IsBad() const { return bad_; }
  bool IsAtEnd() const { return left_.empty(); }

 private:
  std::string_view left_;
  bool bad_ = false;
};

}  // namespace tellurix
