// The contents of a text file in chunks, whatever it is encoded in.
#pragma once

#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tellurix {

// Reads a file from its beginning to its end. A byte order mark is dropped. UTF-16, in either byte order, comes out as
// UTF-8, with U+FFFD for half a surrogate pair; without a mark it is known by the zero bytes of its plain letters. Any
// other bytes come out as they are: UTF-8, or a page of 8 bits.
class TextFile {
 public:
  static constexpr std::size_t ChunkBytes = std::size_t{1} << 20;

  // False, with the reason in words, when the file is not there, is no plain file or may not be read.
  bool Open(const std::filesystem::path& path, std::string& problem);

  // The next chunk, which holds until the next call; empty at the end. False, with the reason in words, when the file
  // can be read no further.
  bool Read(std::string_view& chunk, std::string& problem);

  double Share() const;  // of the file that has been read, 0 to 1

 private:
  enum class Encoding { Bytes, Utf16Little, Utf16Big };
  struct Close {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };

  bool Fill(std::string& problem);
  void Recognize();
  std::string_view Decoded(std::string_view bytes);
  void Decode(char16_t unit);

  std::string name_;
  std::unique_ptr<std::FILE, Close> file_;
  double size_ = 1;
  double done_ = 0;
  std::vector<char> buffer_;
  std::size_t filled_ = 0;
  bool started_ = false;
  Encoding encoding_ = Encoding::Bytes;
  std::string text_;        // decoded
  int oddByte_ = -1;        // the first half of a unit whose other half is in the next chunk
  char16_t surrogate_ = 0;  // the first half of a pair
};

// The whole contents at once; false with the reason in words.
bool ReadWholeText(const std::filesystem::path& path, std::string& text, std::string& problem);

}  // namespace tellurix
