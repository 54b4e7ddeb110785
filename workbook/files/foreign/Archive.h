// Parts of zip archives, and gzip files.
#pragma once

#include <filesystem>
#include <memory>
#include <string>

namespace tellurix {

class Archive {
 public:
  explicit Archive(const std::filesystem::path& path);
  bool IsOpen() const { return zip_ != nullptr; }
  // A part by its name, without regard to case. False when there is none or it is damaged.
  bool Read(const std::string& part, std::string& bytes);

 private:
  struct Close {
    void operator()(void* zip) const;
  };
  std::unique_ptr<void, Close> zip_;
};

// The contents of a gzip file, or of a file that is none as they stand.
bool ReadGzip(const std::filesystem::path& path, std::string& bytes);

}  // namespace tellurix
