// The readers of text files on truncated and bit-flipped files: each is read or refused with a reason, and soon.
#include <gtest/gtest.h>
#include <stdlib.h>

#include <chrono>
#include <fstream>
#include <iterator>
#include <random>
#include <string>

#include "workbook/DelimitedText.h"
#include "workbook/DosWorksheet.h"

namespace tellurix {
namespace {

namespace fs = std::filesystem;

constexpr int Bits = 8;
constexpr std::chrono::seconds Longest{2};

std::string Utf16(std::string_view ascii) {
  std::string bytes = "\xFF\xFE";
  for (const char c : ascii) bytes.append({c, '\0'});
  return bytes;
}

std::string Mutated(std::string bytes, unsigned seed) {
  std::mt19937 random(seed);
  for (auto flips = 1 + random() % 8; flips > 0; --flips) {
    bytes[random() % bytes.size()] ^= static_cast<char>(1 << random() % Bits);
  }
  if (random() % 2) bytes.resize(random() % bytes.size());
  return bytes;
}

TEST(DamagedText, IsReadOrRefusedWithAReason) {
  const char* variable = std::getenv("TELLURIX_FUZZ_ROUNDS");
  const int rounds = variable ? std::atoi(variable) : 500;
  const std::string lines =
      "id,group,\"size, cm\"\r\n1,a,\"2.5\"\r\n2,\"b \"\"x\"\"\",3e2\r\n3,\xe9\xc3\xa9,-1.25e-300\r\n";
  const std::string seeds[] = {lines, "a\tb;c\n1\t\"x\ny\"\t-0.5\n\n2\t\t7\n", Utf16(lines),
                               "3,\"12-25-1991\",0\r\n\"age\",3\r\n\"group, "
                               "b\",2\r\nempty,0\r\n1.5\r\n3E+300\r\n2.5D+01\r\n3.456789E+33,-7\r\n"};
  std::string name = (fs::temp_directory_path() / "tellurix-damaged-XXXXXX").string();
  const fs::path folder = mkdtemp(name.data());
  int read = 0;
  for (int round = 0; round < rounds; ++round) {
    SCOPED_TRACE(round);
    const std::string bytes =
        Mutated(seeds[static_cast<std::size_t>(round) % std::size(seeds)], static_cast<unsigned>(round));
    std::ofstream(folder / "x", std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    const auto before = std::chrono::steady_clock::now();
    for (const bool isDos : {false, true}) {
      Workbook book;
      std::string problem;
      const bool loaded =
          isDos ? ReadDosWorksheet(folder / "x", book, problem) : ReadDelimited(folder / "x", book, {}, problem);
      EXPECT_EQ(loaded, problem.empty()) << problem;
      EXPECT_TRUE(loaded || book.LastRow() == 0);
      EXPECT_TRUE(!isDos || !loaded || IsDosWorksheet(folder / "x"));
      read += loaded;
    }
    EXPECT_LT(std::chrono::steady_clock::now() - before, Longest);
  }
  EXPECT_GT(read, rounds / 4);  // it is not the first byte alone that is looked at
  fs::remove_all(folder);
}

}  // namespace
}  // namespace tellurix
