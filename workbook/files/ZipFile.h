// A zip archive that is written one part after the other.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace tellurix {

class ZipFile {
 public:
  explicit ZipFile(const std::filesystem::path& path);
  ~ZipFile();
  ZipFile(const ZipFile&) = delete;
  ZipFile& operator=(const ZipFile&) = delete;

  void Begin(const char* part);        // ends the one before
  void Write(std::string_view bytes);  // to the part that was begun
  bool Close();                        // false when anything has failed since the start

 private:
  void EndPart();
  void Flush();

  void* zip_ = nullptr;
  bool inPart_ = false;
  bool good_ = true;
  std::string held_;
};

}  // namespace tellurix
