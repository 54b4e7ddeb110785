#include "workbook/DosWorksheet.h"

#include <fmt/format.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include <fstream>

namespace tellurix {
namespace {

namespace fs = std::filesystem;

class DosWorksheet : public ::testing::Test {
 protected:
  DosWorksheet() {
    std::string name = (fs::temp_directory_path() / "tellurix-dos-XXXXXX").string();
    folder_ = mkdtemp(name.data());
    path_ = folder_ / "old.dat";
  }
  ~DosWorksheet() override { fs::remove_all(folder_); }

  void Save(std::string_view bytes) const {
    std::ofstream(path_, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  }
  bool Is(std::string_view bytes) const {
    Save(bytes);
    return IsDosWorksheet(path_);
  }
  bool Read(std::string_view bytes) {
    Save(bytes);
    return ReadDosWorksheet(path_, book_, problem_);
  }

  fs::path folder_;
  fs::path path_;
  Workbook book_;
  std::string problem_;
};

TEST_F(DosWorksheet, IsKnownByTheDateAfterTheColumnCount) {
  const char* rest = ",\"x\"\r\n\"age\",1\r\n5\r\n";
  for (const char* date : {"\"12-25-1991\"", "\"25/12/91\"", "1991-12-25", "\"25 Dec 1991\"", "\"December 25, 1991\"",
                           "\"25.12.1991 10:30\"", "\"29-02-1992\""}) {
    EXPECT_TRUE(Is(fmt::format("1,{}{}", date, rest))) << date;
  }
  for (const char* text :
       {"\"13-32-1991\"", "\"29-02-1991\"", "\"age\"", "\"1-2\"", "\"1.5\"", "\"\"", "\"25 Foo 1991\""}) {
    EXPECT_FALSE(Is(fmt::format("1,{}{}", text, rest))) << text;
  }
  EXPECT_FALSE(Is("0,\"12-25-1991\",\"x\"\r\n"));
  EXPECT_FALSE(Is("1.5,\"12-25-1991\",\"x\",\"a\",1,5\r\n"));
  EXPECT_FALSE(Is("1,2020-01-01,5\n2,2020-01-02,6\n"));  // dated records
  EXPECT_FALSE(Is("1,\"12-25-1991\""));
  EXPECT_FALSE(Is(""));
}

TEST_F(DosWorksheet, ReadsColumnAfterColumn) {
  // A title in code page 850, blanks and commas between numbers, exponents of double precision, the mark of an end.
  ASSERT_TRUE(
      Read("3,\"12-25-1991\",0\r\n\" \x82ge \",3\r\n\"group, b\",2\r\nempty,0\r\n"
           "1.5\r\n3E+300\r\n2.5D+01\r\n 3.456789E+33 , -7\r\n\x1A\x1A garbage"))
      << problem_;
  EXPECT_EQ(book_.TextRC(1, 1), "\xc3\xa9ge");
  EXPECT_EQ(book_.TextRC(1, 2), "group, b");
  EXPECT_EQ(book_.TextRC(1, 3), "empty");
  EXPECT_EQ(book_.NumberRC(2, 1), 1.5);
  EXPECT_EQ(book_.TypeRC(3, 1), TextCell);
  EXPECT_EQ(book_.TextRC(3, 1), "*");
  EXPECT_EQ(book_.NumberRC(4, 1), 25);
  EXPECT_EQ(book_.TypeRC(2, 2), EmptyCell);
  EXPECT_EQ(book_.NumberRC(3, 2), -7);
  EXPECT_EQ(book_.LastRow(), 4);
  EXPECT_FALSE(book_.document.changed);
}

TEST_F(DosWorksheet, RefusesWithTheReasonAndLoadsNothing) {
  book_.TextRC(1, 1, "before");
  const std::pair<const char*, const char*> cases[] = {
      {"2,\"12-25-1991\",0,\"a\",1,\"b\",3,1,2,3", "after 2 of the 3 values of column 2"},
      {"1,\"12-25-1991\",0,\"a\",2,1,x", "Value 2 of column 1"},
      {"1,\"12-25-1991\",0,\"a\",1048576,1", "not a DOS worksheet"},
      {"16385,\"12-25-1991\",0,\"a\",1,1", "not a DOS worksheet"},
      {"1,\"12-25-1991", "not a DOS worksheet"}};
  for (const auto& [bytes, part] : cases) {
    EXPECT_FALSE(Read(bytes)) << bytes;
    EXPECT_NE(problem_.find(part), std::string::npos) << problem_;
    EXPECT_EQ(book_.TextRC(1, 1), "before");
  }
  Save("2,\"12-25-1991\",0,\"a\",1,\"b\",1,1,2");
  EXPECT_FALSE(ReadDosWorksheet(path_, book_, problem_, [](std::string_view, double share) { return share > 0.99; }));
  EXPECT_EQ(problem_, "");
  EXPECT_EQ(book_.TextRC(1, 1), "before");
}

}  // namespace
}  // namespace tellurix
