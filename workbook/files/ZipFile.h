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
  const std::string& Problem() const { return problem_; }

 private:
  void EndPart();
  void Flush();
  void Check(bool isDone);  // keeps the system's words for the first failure

  void* zip_ = nullptr;
  bool inPart_ = false;
  bool good_ = true;
  std::string held_;
  std::string problem_;
};

}  // namespace tellurix
