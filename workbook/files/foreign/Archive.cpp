#include "workbook/files/foreign/Archive.h"

#include <unzip.h>
#include <zlib.h>

namespace tellurix {

namespace {

constexpr int AnyCase = 2;
constexpr std::size_t Piece = std::size_t{1} << 18;

}  // namespace

void Archive::Close::operator()(void* zip) const { unzClose(zip); }

Archive::Archive(const std::filesystem::path& path) : zip_(unzOpen64(path.c_str())) {}

bool Archive::Read(const std::string& part, std::string& bytes) {
  bytes.clear();
  if (unzLocateFile(zip_.get(), part.c_str(), AnyCase) != UNZ_OK || unzOpenCurrentFile(zip_.get()) != UNZ_OK) {
    return false;
  }
  int count = 0;
  do {
    const std::size_t size = bytes.size();
    bytes.resize(size + Piece);
    count = unzReadCurrentFile(zip_.get(), bytes.data() + size, Piece);
    bytes.resize(size + static_cast<std::size_t>(count > 0 ? count : 0));
  } while (count > 0);
  return unzCloseCurrentFile(zip_.get()) == UNZ_OK && count == 0;
}

bool ReadGzip(const std::filesystem::path& path, std::string& bytes) {
  const std::unique_ptr<gzFile_s, decltype(&gzclose)> file(gzopen(path.c_str(), "rb"), gzclose);
  if (!file) return false;
  bytes.clear();
  int count = 0;
  do {
    const std::size_t size = bytes.size();
    bytes.resize(size + Piece);
    count = gzread(file.get(), bytes.data() + size, Piece);
    bytes.resize(size + static_cast<std::size_t>(count > 0 ? count : 0));
  } while (count > 0);
  int code = Z_OK;
  gzerror(file.get(), &code);
  return count == 0 && code == Z_OK;
}

}  // namespace tellurix
