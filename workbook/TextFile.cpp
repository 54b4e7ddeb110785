#include "workbook/TextFile.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

#include "numeric/Text.h"

namespace tellurix {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view Utf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view LittleMark = "\xFF\xFE";
constexpr std::string_view BigMark = "\xFE\xFF";
constexpr std::size_t Looked = 1024;  // bytes at the beginning by which UTF-16 without a mark is known

std::string Reason(int code) { return std::generic_category().message(code); }

// Whether the bytes at one place of each pair are mostly zero, and hardly any at the other.
bool ZerosAt(std::size_t place, std::string_view bytes) {
  std::size_t zeros = 0, others = 0;
  for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
    zeros += bytes[i + place] == 0;
    others += bytes[i + 1 - place] == 0;
  }
  return zeros >= 2 && zeros * 2 > bytes.size() / 2 && others * 8 < zeros;
}

}  // namespace

bool TextFile::Open(const fs::path& path, std::string& problem) {
  name_ = path.filename().string();
  std::error_code error;
  const auto status = fs::status(path, error);
  if (fs::is_directory(status)) {
    problem = fmt::format("\"{}\" is a folder, not a file.", name_);
    return false;
  }
  if (fs::exists(status) && !fs::is_regular_file(status)) {
    problem = fmt::format("\"{}\" is not a plain file.", name_);
    return false;
  }
  file_.reset(std::fopen(path.c_str(), "rb"));
  if (!file_) {
    problem = fmt::format("\"{}\" cannot be opened: {}.", name_, Reason(errno));
    return false;
  }
  std::setvbuf(file_.get(), nullptr, _IONBF, 0);  // whole chunks are asked for
  size_ = static_cast<double>(fs::file_size(path, error));
  if (error) size_ = 0;
  buffer_.resize(ChunkBytes);
  return true;
}

bool TextFile::Read(std::string_view& chunk, std::string& problem) {
  chunk = {};
  // A chunk may hold nothing to hand on, such as half a character, and yet not be the last one.
  while (chunk.empty()) {
    if (!Fill(problem)) return false;
    if (filled_ == 0) {
      if (surrogate_ == 0 && oddByte_ < 0) return true;
      surrogate_ = 0;
      oddByte_ = -1;
      text_ = EncodeUtf8(0xFFFD);
      chunk = text_;
      return true;
    }
    std::string_view bytes(buffer_.data(), filled_);
    if (!started_) {
      started_ = true;
      Recognize();
      if (bytes.starts_with(Utf8Mark)) {
        bytes.remove_prefix(Utf8Mark.size());
      } else if (bytes.starts_with(LittleMark) || bytes.starts_with(BigMark)) {
        bytes.remove_prefix(LittleMark.size());
      }
    }
    chunk = encoding_ == Encoding::Bytes ? bytes : Decoded(bytes);
  }
  return true;
}

double TextFile::Share() const { return done_ < size_ ? done_ / size_ : 1.0; }

bool TextFile::Fill(std::string& problem) {
  filled_ = std::fread(buffer_.data(), 1, buffer_.size(), file_.get());
  if (filled_ < buffer_.size() && std::ferror(file_.get())) {
    problem = fmt::format("\"{}\" cannot be read: {}.", name_, Reason(errno));
    return false;
  }
  done_ += static_cast<double>(filled_);
  if (filled_ == 0 && done_ < size_) {
    problem = fmt::format("\"{}\" became shorter while it was read.", name_);
    return false;
  }
  return true;
}

void TextFile::Recognize() {
  const std::string_view start(buffer_.data(), std::min(filled_, Looked));
  if (start.starts_with(LittleMark) || ZerosAt(1, start)) encoding_ = Encoding::Utf16Little;
  if (start.starts_with(BigMark) || ZerosAt(0, start)) encoding_ = Encoding::Utf16Big;
}

std::string_view TextFile::Decoded(std::string_view bytes) {
  text_.clear();
  for (const char c : bytes) {
    const int byte = static_cast<unsigned char>(c);
    if (oddByte_ < 0) {
      oddByte_ = byte;
      continue;
    }
    Decode(static_cast<char16_t>(encoding_ == Encoding::Utf16Little ? oddByte_ | byte << 8 : oddByte_ << 8 | byte));
    oddByte_ = -1;
  }
  return text_;
}

void TextFile::Decode(char16_t unit) {
  const bool isFirst = unit >= 0xD800 && unit < 0xDC00;
  const bool isSecond = unit >= 0xDC00 && unit < 0xE000;
  if (surrogate_ != 0 && isSecond) {
    text_ += EncodeUtf8(0x10000 + ((static_cast<char32_t>(surrogate_) - 0xD800) << 10) + (unit - 0xDC00));
    surrogate_ = 0;
    return;
  }
  if (surrogate_ != 0) text_ += EncodeUtf8(0xFFFD);
  surrogate_ = isFirst ? unit : char16_t{0};
  if (isFirst) return;
  if (unit < 0x80) {
    text_ += static_cast<char>(unit);
  } else {
    text_ += EncodeUtf8(isSecond ? char32_t{0xFFFD} : char32_t{unit});
  }
}

bool ReadWholeText(const fs::path& path, std::string& text, std::string& problem) {
  text.clear();
  TextFile file;
  if (!file.Open(path, problem)) return false;
  for (std::string_view chunk;;) {
    if (!file.Read(chunk, problem)) return false;
    if (chunk.empty()) return true;
    text += chunk;
  }
}

}  // namespace tellurix
