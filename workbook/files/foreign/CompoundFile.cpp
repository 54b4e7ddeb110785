#include "workbook/files/foreign/CompoundFile.h"

#include <cstdint>
#include <vector>

#include "numeric/Text.h"
#include "workbook/files/ByteStream.h"

namespace tellurix {

namespace {

constexpr std::string_view Mark{"\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1", 8};
constexpr std::size_t HeaderBytes = 512, EntryBytes = 128, HeaderTable = 109;
constexpr std::uint32_t LastSector = 0xFFFFFFFA;  // larger numbers are marks

template <typename T>
T At(std::string_view bytes, std::size_t offset) {
  return offset + sizeof(T) <= bytes.size() ? ByteReader::At<T>(bytes.substr(offset), 0) : T{};
}

class Compound {
 public:
  explicit Compound(std::string_view file) : file_(file) {}

  bool Open() {
    const int shift = At<std::uint16_t>(file_, 0x1E), smallShift = At<std::uint16_t>(file_, 0x20);
    if (!IsCompoundFile(file_) || (shift != 9 && shift != 12) || smallShift != 6) return false;
    sector_ = std::size_t{1} << shift;
    small_ = std::size_t{1} << smallShift;
    sectors_ = file_.size() / sector_;
    ReadTable();
    directory_ = Chain(At<std::uint32_t>(file_, 0x30), table_, [&](std::uint32_t number) { return Sector(number); });
    const std::string smallTable =
        Chain(At<std::uint32_t>(file_, 0x3C), table_, [&](std::uint32_t number) { return Sector(number); });
    for (std::size_t i = 0; i + 4 <= smallTable.size(); i += 4) smallTable_.push_back(At<std::uint32_t>(smallTable, i));
    smallStream_ =
        Chain(At<std::uint32_t>(directory_, 0x74), table_, [&](std::uint32_t number) { return Sector(number); });
    return directory_.size() >= EntryBytes;
  }

  bool Read(std::string_view name, std::string& stream) const {
    for (std::size_t at = 0; at + EntryBytes <= directory_.size(); at += EntryBytes) {
      const std::string_view entry = std::string_view(directory_).substr(at, EntryBytes);
      constexpr char StreamKind = 2;
      if (entry[0x42] != StreamKind || !EqualNoCase(NameOf(entry), name)) continue;
      const std::size_t size = At<std::uint32_t>(entry, 0x78);
      const auto start = At<std::uint32_t>(entry, 0x74);
      if (size < At<std::uint32_t>(file_, 0x38)) {
        stream = Chain(start, smallTable_, [&](std::uint32_t number) {
          const std::size_t offset = number * small_;
          return offset < smallStream_.size() ? std::string_view(smallStream_).substr(offset, small_)
                                              : std::string_view();
        });
      } else {
        stream = Chain(start, table_, [&](std::uint32_t number) { return Sector(number); });
      }
      // A stream that was cut off is read as far as it goes.
      if (stream.size() > size) stream.resize(size);
      return !stream.empty();
    }
    return false;
  }

 private:
  std::string_view Sector(std::uint32_t number) const {
    const std::size_t offset = (std::size_t{number} + 1) * sector_;
    return offset < file_.size() ? file_.substr(offset, sector_) : std::string_view();
  }

  // The sectors of the allocation table stand in the header, then in sectors that end with the number of the next one.
  void ReadTable() {
    std::vector<std::uint32_t> places;
    for (std::size_t i = 0; i < HeaderTable; ++i) places.push_back(At<std::uint32_t>(file_, 0x4C + 4 * i));
    auto next = At<std::uint32_t>(file_, 0x44);
    for (std::size_t count = 0; next < LastSector && count < sectors_; ++count) {
      const std::string_view more = Sector(next);
      for (std::size_t i = 0; i + 8 <= more.size(); i += 4) places.push_back(At<std::uint32_t>(more, i));
      next = more.size() == sector_ ? At<std::uint32_t>(more, sector_ - 4) : LastSector;
    }
    for (const std::uint32_t place : places) {
      if (place >= LastSector || table_.size() > sectors_) continue;
      const std::string_view part = Sector(place);
      for (std::size_t i = 0; i + 4 <= part.size(); i += 4) table_.push_back(At<std::uint32_t>(part, i));
    }
  }

  template <typename Part>
  std::string Chain(std::uint32_t start, const std::vector<std::uint32_t>& table, Part part) const {
    std::string bytes;
    std::size_t count = 0;
    for (std::uint32_t at = start; at < LastSector && at < table.size() && count <= table.size(); at = table[at]) {
      bytes += part(at);
      ++count;
    }
    return count > table.size() ? std::string() : bytes;  // a chain that bites its tail
  }

  static std::string NameOf(std::string_view entry) {
    std::string name;
    for (std::size_t i = 0; i < 32 && At<std::uint16_t>(entry, 2 * i) != 0; ++i) {
      name += EncodeUtf8(At<std::uint16_t>(entry, 2 * i));
    }
    return name;
  }

  std::string_view file_;
  std::size_t sector_ = 0, small_ = 0, sectors_ = 0;
  std::vector<std::uint32_t> table_, smallTable_;
  std::string directory_, smallStream_;
};

}  // namespace

bool IsCompoundFile(std::string_view bytes) { return bytes.starts_with(Mark) && bytes.size() >= HeaderBytes; }

bool ReadStream(std::string_view file, std::initializer_list<std::string_view> names, std::string& stream) {
  Compound compound(file);
  if (!compound.Open()) return false;
  for (const std::string_view name : names) {
    if (compound.Read(name, stream)) return true;
  }
  return false;
}

}  // namespace tellurix
