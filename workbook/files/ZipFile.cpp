#include "workbook/files/ZipFile.h"

#include <zip.h>
#include <zlib.h>

#include <cerrno>
#include <system_error>

namespace tellurix {

namespace {

constexpr std::size_t HeldBytes = std::size_t{1} << 18;
constexpr int Zip64 = 1;

}  // namespace

ZipFile::ZipFile(const std::filesystem::path& path) : zip_(zipOpen64(path.c_str(), APPEND_STATUS_CREATE)) {
  Check(zip_ != nullptr);
}

ZipFile::~ZipFile() {
  if (zip_) Close();
}

void ZipFile::Check(bool isDone) {
  if (good_ && !isDone) problem_ = "The file could not be written: " + std::generic_category().message(errno) + ".";
  good_ = good_ && isDone;
}

void ZipFile::Begin(const char* part) {
  EndPart();
  if (!good_) return;
  zip_fileinfo info{};
  info.tmz_date = {0, 0, 0, 1, 0, 1980};  // no time of the day in the file: alike workbooks are alike files
  Check(zipOpenNewFileInZip64(zip_, part, &info, nullptr, 0, nullptr, 0, nullptr, Z_DEFLATED, Z_BEST_SPEED, Zip64) ==
        ZIP_OK);
  inPart_ = good_;
}

void ZipFile::Write(std::string_view bytes) {
  held_ += bytes;
  if (held_.size() >= HeldBytes) Flush();
}

void ZipFile::Flush() {
  if (good_) Check(zipWriteInFileInZip(zip_, held_.data(), static_cast<unsigned>(held_.size())) == ZIP_OK);
  held_.clear();
}

void ZipFile::EndPart() {
  if (!inPart_) return;
  Flush();
  Check(zipCloseFileInZip(zip_) == ZIP_OK);
  inPart_ = false;
}

bool ZipFile::Close() {
  EndPart();
  if (zip_) Check(zipClose(zip_, nullptr) == ZIP_OK);
  zip_ = nullptr;
  return good_;
}

}  // namespace tellurix
