#include "workbook/DelimitedText.h"

#include <fmt/format.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <functional>
#include <optional>
#include <random>
#include <sstream>
#include <vector>

#include "numeric/Text.h"
#include "workbook/TextFile.h"

namespace tellurix {
namespace {

namespace fs = std::filesystem;

class DelimitedText : public ::testing::Test {
 protected:
  DelimitedText() {
    std::string name = (fs::temp_directory_path() / "tellurix-delimited-XXXXXX").string();
    folder_ = mkdtemp(name.data());
    path_ = folder_ / "data.csv";
  }
  ~DelimitedText() override { fs::remove_all(folder_); }

  void Save(std::string_view bytes) const {
    std::ofstream(path_, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  }
  bool Read(std::string_view bytes, const Regional& regional = {}) {
    Save(bytes);
    return ReadDelimited(path_, book_, regional, error_);
  }
  std::string Contents() const {
    std::stringstream contents;
    contents << std::ifstream(path_).rdbuf();
    return contents.str();
  }
  // The cells as they show, by row; texts in brackets.
  std::string Shown() const {
    std::string shown;
    for (int row = 1; row <= book_.LastRow(); ++row) {
      for (int column = 1; column <= book_.LastCol(); ++column) {
        if (column > 1) shown += ' ';
        const std::string text = book_.TextRC(row, column);
        if (book_.TypeRC(row, column) == TextCell) {
          shown.append("[").append(text).append("]");
        } else {
          shown += text.empty() ? "-" : text;
        }
      }
      shown += '/';
    }
    return shown;
  }
  std::string Shown(std::string_view bytes) { return Read(bytes) ? Shown() : fmt::format("refused: {}", error_); }

  fs::path folder_;
  fs::path path_;
  Workbook book_;
  std::string error_;
};

TEST_F(DelimitedText, ReadsFieldsByTheRules) {
  const std::pair<std::string, const char*> cases[] = {
      {"", ""},
      {"a,b\n1,2\n", "[a] [b]/1 2/"},
      {"a,b\n1,2", "[a] [b]/1 2/"},
      {"a\tb,c\n1\t2,5\n", "[a] [b,c]/1 [2,5]/"},
      {"a,b\n1\t2,5\n", "[a] [b]/[1\t2] 5/"},
      {"\"a\tb\",c\n", "[a\tb] [c]/"},
      {"1\r\n2\r3\n\n5", "1/2/3/-/5/"},
      {"\r\n1", "-/1/"},
      {"\"a,\"\"b\"\"\r\nc\",2\n", "[a,\"b\"\r\nc] 2/"},
      {"\"1.5\",\"\",\"x\"y,z\"w\"\n", "1.5 - [xy] [z\"w]/"},
      {"1\n2,3,4\n,,,\n5,,6\n", "1 - -/2 3 4/- - -/5 - 6/"},
      {"\xEF\xBB\xBF"
       "7,8",
       "7 8/"},
      {"caf\xe9,na\xc3\xafve,\x80\n", "[caf\xc3\xa9] [na\xc3\xafve] [\xe2\x82\xac]/"},
      {std::string("a\0b,1\0"
                   "2,\"x\0\"",
                   12),
       "[ab] 12 [x]/"},
      {" 12 ,-1e3,+4,.5,1e999,inf,nan,0x1A,-\n", "12 -1000 4 0.5 [1e999] [inf] [nan] [0x1A] [-]/"},
      {"a,", "[a]/"},
      {"*,TRUE,=A1\n", "[*] [TRUE] [=A1]/"},
      {"a;b\n1;2,5\n", "[a] [b]/1 [2,5]/"},
      {"a;b,c\n1;2,5\n", "[a;b] [c]/[1;2] 5/"},
      {"\"a,b\";c\n", "[a,b] [c]/"},
      {"a, \"b\" ,c\"d\",\"\"x\n", "[a] [b] [c\"d] [x]/"}};
  for (const auto& [bytes, expected] : cases) EXPECT_EQ(Shown(bytes), expected) << bytes;

  const Regional german{.decimalSymbol = ",", .groupingSymbol = ".", .dateForm = "dd.mm.yyyy"};
  ASSERT_TRUE(Read("x\ty\n1.234,5\t0,25\n", german));
  EXPECT_EQ(book_.NumberRC(2, 1), 1234.5);
  EXPECT_EQ(book_.NumberRC(2, 2), 0.25);
  // A decimal comma: semicolons, unless the file plainly comes from elsewhere; then its numbers have points.
  const std::pair<const char*, const char*> decimalComma[] = {{"x;y\n1,5;\"2,25\"\n", "[x] [y]/1.5 2.25/"},
                                                              {"1,5\n2,5\n", "1.5/2.5/"},
                                                              {"1,5;a,b\n", "1.5 [a,b]/"},
                                                              {"x,y\n1.5,2\n", "[x] [y]/1.5 2/"},
                                                              {"x\n1,5\n", "[x]/1.5/"}};
  for (const auto& [bytes, expected] : decimalComma) {
    ASSERT_TRUE(Read(bytes, german));
    EXPECT_EQ(Shown(), expected) << bytes;
  }
}

// UTF-16 of text without characters beyond the basic plane.
std::string Utf16(std::u16string_view text, bool bigEndian) {
  std::string bytes;
  for (const char16_t unit : text) {
    const char low = static_cast<char>(unit & 0xFF), high = static_cast<char>(unit >> 8);
    bytes += bigEndian ? high : low;
    bytes += bigEndian ? low : high;
  }
  return bytes;
}

TEST_F(DelimitedText, ReadsUtf16) {
  const std::u16string text = u"name\tn\r\n\u00e9t\u00e9 \U0001F600\t1.5\r\n";
  for (const bool bigEndian : {false, true}) {
    for (const char16_t* mark : {u"", u"\uFEFF"}) {
      EXPECT_EQ(Shown(Utf16(mark + text, bigEndian)), "[name] [n]/[\xc3\xa9t\xc3\xa9 \xf0\x9f\x98\x80] 1.5/");
    }
  }
  EXPECT_EQ(Shown(Utf16(u"\uFEFFa,\xD83D", false) + "x"), "[a] [\xef\xbf\xbd]/");  // ends in the middle of a pair

  // Characters whose halves fall into different chunks.
  std::u16string large = u"\uFEFFid\n";
  while (large.size() < (TextFile::ChunkBytes * 3) / 4) large += u"\U0001F600x\n";
  for (int shift = 0; shift < 4; ++shift) {
    ASSERT_TRUE(Read(Utf16(large, false)));
    for (int row = 2; row <= book_.LastRow(); ++row) ASSERT_EQ(book_.ReadRC(row, 1).text, "\xf0\x9f\x98\x80x");
    large.insert(3, u"d");
  }
}

TEST_F(DelimitedText, LoadingReplacesTheCellsAndHasNoHistory) {
  book_.NumberRC(50, 50, 1);
  EXPECT_EQ(Shown("1,2\n"), "1 2/");
  EXPECT_EQ(book_.LastRow(), 1);
  EXPECT_FALSE(book_.CanUndo());
  EXPECT_FALSE(book_.document.changed);
}

TEST_F(DelimitedText, RefusesWithTheReasonAndLoadsNothing) {
  book_.TextRC(2, 3, "before");
  const std::string before = Shown();
  const auto expectRefused = [&](const std::string& bytes, const char* part) {
    EXPECT_FALSE(Read(bytes));
    EXPECT_NE(error_.find(part), std::string::npos) << error_;
    EXPECT_EQ(Shown(), before);
    EXPECT_TRUE(book_.CanUndo());
  };
  const std::string tooLong(32768, 'x');
  expectRefused("1\n2\n" + tooLong + "\n", "line 3");
  expectRefused("1\r\n2\r\n\"a\r\nb\"," + tooLong + "\r\n", "line 4");
  expectRefused("\"" + tooLong + "\"\n", "line 1");
  expectRefused(std::string(3 << 20, '7'), "line 1");
  expectRefused("1\n\"open\n2\n3\n", "line 2");
  expectRefused("1\n" + std::string(GridStore::MaxColumns, ',') + "\n", "Line 2");
  expectRefused(std::string(GridStore::MaxRows, '\n') + "1", "1048576 rows");

  // Just as much as fits.
  EXPECT_TRUE(Read(std::string(GridStore::MaxRows - 1, '\n') + "1\n"));
  EXPECT_EQ(book_.NumberRC(GridStore::MaxRows, 1), 1);
  EXPECT_TRUE(Read(std::string(GridStore::MaxColumns - 1, ',') + "1\n"));
  EXPECT_EQ(book_.NumberRC(1, GridStore::MaxColumns), 1);
  std::string longest;
  for (int i = 0; i < 32767; ++i) longest += "\xc3\xa9";
  EXPECT_TRUE(Read(longest));
  EXPECT_EQ(book_.TextRC(1, 1), longest);

  EXPECT_FALSE(ReadDelimited(folder_, book_, {}, error_));
  EXPECT_NE(error_.find("folder"), std::string::npos);
  EXPECT_FALSE(ReadDelimited(folder_ / "none.csv", book_, {}, error_));
  EXPECT_NE(error_.find("none.csv"), std::string::npos);
  ASSERT_EQ(mkfifo((folder_ / "pipe").c_str(), 0600), 0);
  EXPECT_FALSE(ReadDelimited(folder_ / "pipe", book_, {}, error_));
  EXPECT_FALSE(error_.empty());
}

TEST_F(DelimitedText, StopsWhenTold) {
  std::string bytes;
  while (bytes.size() < (3u << 20)) bytes += "1,2,3\n";
  Save(bytes);
  int polls = 0;
  EXPECT_FALSE(ReadDelimited(path_, book_, {}, error_, [&](std::string_view, double share) {
    EXPECT_GT(share, 0);
    EXPECT_LE(share, 1);
    return ++polls < 2;
  }));
  EXPECT_EQ(polls, 2);
  EXPECT_EQ(error_, "");
  EXPECT_EQ(book_.LastRow(), 0);
}

TEST_F(DelimitedText, AFileThatChangesWhileItIsReadIsReadWholeOrRefused) {
  book_.TextRC(2, 3, "before");
  std::string bytes;
  while (bytes.size() < (3u << 20)) bytes += "1,2,3\n";
  const auto readAnd = [&](const std::function<void()>& change) {
    Save(bytes);
    int polls = 0;
    return ReadDelimited(path_, book_, {}, error_, [&](std::string_view, double) {
      if (++polls == 1) change();
      return true;
    });
  };
  EXPECT_FALSE(readAnd([&] { fs::resize_file(path_, 1u << 20); }));
  EXPECT_NE(error_.find("shorter"), std::string::npos) << error_;
  EXPECT_EQ(book_.TextRC(2, 3), "before");
  EXPECT_TRUE(readAnd([&] { fs::remove(path_); }));
  EXPECT_EQ(book_.LastRow(), static_cast<int>(bytes.size() / 6));
}

TEST_F(DelimitedText, WhatIsWrittenReadsBack) {
  std::mt19937_64 random(7);
  const char* texts[] = {"plain",    "com,ma",      "ta\tb",   "qu\"ote",          "\"",  "line\nbreak",
                         "re\rturn", "caf\xc3\xa9", " blank ", "\xEF\xBB\xBFmark", "=1+1"};
  for (const char separator : {',', '\t'}) {
    for (const int columns : {1, 4}) {
      Workbook written;
      for (int row = 1; row <= 600; ++row) {
        for (int column = 1; column <= columns; ++column) {
          const auto n = random() % 4;
          if (n == 0) written.TextRC(row, column, texts[row == 1 ? 1 + column : random() % std::size(texts)]);
          if (n == 1) written.NumberRC(row, column, static_cast<double>(random() % 1000) / 8);
          if (n == 2) {  // any double there is
            const auto bits = random();
            double value;
            std::memcpy(&value, &bits, sizeof value);
            if (std::isfinite(value)) written.NumberRC(row, column, value);
          }
        }
      }
      written.TextRC(1, 1, "ta\tb,x");
      written.NumberRC(600, columns, 0.1);
      Save("old contents");
      ASSERT_TRUE(WriteDelimited(written, path_, separator, error_)) << error_;
      ASSERT_TRUE(ReadDelimited(path_, book_, {}, error_)) << error_;
      ASSERT_EQ(book_.LastRow(), written.LastRow());
      ASSERT_EQ(book_.LastCol(), written.LastCol());
      for (int row = 1; row <= 600; ++row) {
        for (int column = 1; column <= columns; ++column) {
          ASSERT_EQ(book_.TypeRC(row, column), written.TypeRC(row, column)) << row;
          ASSERT_EQ(book_.NumberRC(row, column), written.NumberRC(row, column)) << row;
          ASSERT_EQ(book_.TextRC(row, column), written.TextRC(row, column)) << row;
        }
      }
    }
  }
  EXPECT_EQ(std::distance(fs::directory_iterator(folder_), fs::directory_iterator()), 1);  // nothing is left beside

  Workbook kinds;
  kinds.SetLogical(1, 1, false);
  kinds.SetFormula(1, 3, "=A1", FormulaResult::Number(1e-7));
  kinds.NumberRC(2, 2, 0.1 + 0.2);
  ASSERT_TRUE(WriteDelimited(kinds, path_, ',', error_));
  EXPECT_EQ(Contents(), "FALSE,,1e-07\n,0.30000000000000004,\n");

  // Under a decimal comma, and in ranges side by side.
  const Regional german{.decimalSymbol = ",", .groupingSymbol = ".", .dateForm = "dd.mm.yyyy"};
  const CellRange ranges[] = {{2, 2, GridStore::MaxRows, 2}, {1, 1, 2, 1}, {9, 9, 9, 9}};
  ASSERT_TRUE(WriteDelimited(kinds, ranges, path_, CsvSeparator(german), german, error_));
  EXPECT_EQ(Contents(), "0,30000000000000004;FALSE\n;\n");
  ASSERT_TRUE(ReadDelimited(path_, book_, german, error_));
  EXPECT_EQ(book_.NumberRC(1, 1), 0.1 + 0.2);

  EXPECT_FALSE(WriteDelimited(kinds, folder_ / "none" / "x.csv", ',', error_));
  EXPECT_NE(error_.find("x.csv"), std::string::npos);
}

// The same rules, written for one text in memory: the fields of each line, or nothing for a quote that is never closed.
std::optional<std::vector<std::vector<std::string>>> Fields(std::string text) {
  if (text.starts_with("\xEF\xBB\xBF")) text.erase(0, 3);
  std::string bare;  // the first line without what is quoted
  int quotes = 0;
  for (const char c : text) {
    quotes += c == '"';
    if (quotes % 2) continue;
    if (c == '\n' || c == '\r') break;
    bare += c;
  }
  const auto has = [&](char c) { return bare.find(c) != std::string::npos; };
  const char separator = has('\t') ? '\t' : has(';') && !has(',') ? ';' : ',';
  std::vector<std::vector<std::string>> lines;
  std::size_t at = 0;
  while (at < text.size()) {
    std::vector<std::string> line;
    for (;;) {
      std::string field;
      const bool isQuoted = at < text.size() && text[at] == '"';
      if (isQuoted) {
        for (++at;; ++at) {
          const auto quote = text.find('"', at);
          if (quote == std::string::npos) return std::nullopt;
          field += text.substr(at, quote - at);
          at = quote + 1;
          if (at == text.size() || text[at] != '"') break;
          field += '"';
        }
      }
      const auto end = std::min(text.find_first_of(std::string(1, separator) + "\r\n", at), text.size());
      field += text.substr(at, end - at);
      if (!isQuoted && field.find('"') != std::string::npos) {
        const std::string trimmed(Trim(field));
        if (trimmed.size() > 1 && trimmed.front() == '"' && trimmed.back() == '"') field = trimmed;
        if (field.front() == '"') field.erase(0, 1);
        if (!field.empty() && field.back() == '"') field.pop_back();
      }
      line.push_back(field);
      at = end;
      if (at == text.size() || text[at] != separator) break;
      ++at;
    }
    lines.push_back(line);
    if (text.compare(at, 2, "\r\n") == 0) ++at;
    if (at < text.size()) ++at;
  }
  return lines;
}

// Compares what was read of the bytes with the fields above.
void ExpectFields(const Workbook& book, bool loaded, const std::string& bytes) {
  const auto lines = Fields(bytes);
  ASSERT_EQ(loaded, lines.has_value());
  if (!loaded) return;
  int lastRow = 0;
  int lastColumn = 0;
  for (std::size_t i = 0; i < lines->size(); ++i) {
    for (std::size_t j = 0; j < (*lines)[i].size(); ++j) {
      const int row = static_cast<int>(i) + 1;
      const int column = static_cast<int>(j) + 1;
      std::string field = (*lines)[i][j];
      std::erase(field, '\0');
      const CellView cell = book.ReadRC(row, column);
      if (const auto number = ReadNumber(field, {})) {
        ASSERT_EQ(cell.type, NumberCell) << row << " " << column << " " << field;
        ASSERT_EQ(cell.number, *number);
      } else {
        ASSERT_EQ(cell.type, field.empty() ? EmptyCell : TextCell) << row << " " << column << " " << field;
        ASSERT_EQ(cell.text, ToUtf8(field));
      }
      if (cell.type == EmptyCell) continue;
      lastRow = std::max(lastRow, row);
      lastColumn = std::max(lastColumn, column);
    }
  }
  ASSERT_EQ(book.LastRow(), lastRow);
  ASSERT_EQ(book.LastCol(), lastColumn);
}

TEST_F(DelimitedText, WritesIsoDatesInEveryRegion) {
  const Regional german{",", ".", "dd.mm.yyyy"};
  Workbook written;
  written.Enter(1, 1, "12.03.2001", german);
  written.Enter(2, 1, "12.03.2001 13:45", german);
  ASSERT_TRUE(WriteDelimited(written, path_, '\t', error_, german)) << error_;
  ASSERT_TRUE(ReadDelimited(path_, book_, {}, error_)) << error_;
  EXPECT_EQ(book_.TypeRC(1, 1), TextCell);
  EXPECT_EQ(book_.TextRC(1, 1), "2001-03-12");
  EXPECT_EQ(book_.TextRC(2, 1), "2001-03-12 13:45");
}

TEST_F(DelimitedText, AgreesWithAPlainReaderOnDamagedFiles) {
  const char* rounds = std::getenv("TELLURIX_FUZZ_ROUNDS");
  const int count = rounds ? std::atoi(rounds) : 500;
  const std::string seeds[] = {"id,group,\"size, cm\"\r\n1,a,\"2.5\"\r\n2,\"b \"\"x\"\"\",3e2\r\n3,,\r\n",
                               "a\tb\tc\n1\t\"x\ny\"\t-0.5\n\n2\t\t7\n", "a;b\n1.5; \"x;y\"\n\"2;\";3\n",
                               "\xEF\xBB\xBF"
                               "caf\xe9,1\rna\xc3\xafve,2\r"};
  const std::string_view pieces[] = {
      "\"",   "\"\"",         ",", "\t", "\n", "\r", "\r\n", "1", "-", ".", "e", std::string_view("\0", 1), "\xff",
      "\xc3", "\xEF\xBB\xBF", " ", "inf"};
  for (int round = 0; round < count; ++round) {
    std::mt19937 random(static_cast<unsigned>(round));
    std::string bytes = seeds[random() % std::size(seeds)];
    for (auto changes = random() % 12; changes > 0; --changes) {
      const auto at = random() % (bytes.size() + 1);
      switch (random() % 3) {
        case 0:
          bytes.insert(at, pieces[random() % std::size(pieces)]);
          break;
        case 1:
          bytes.erase(at, random() % 4);
          break;
        default:
          bytes += bytes.substr(at, random() % 30);
          break;
      }
    }
    SCOPED_TRACE("round " + std::to_string(round) + ": " + bytes);
    const bool loaded = Read(bytes);
    ASSERT_NO_FATAL_FAILURE(ExpectFields(book_, loaded, bytes));
  }
}

TEST_F(DelimitedText, FieldsReadAcrossChunks) {
  // Three megabytes of lines whose every kind of break falls on the ends of chunks somewhere, in several shifts.
  std::string bytes;
  std::mt19937 random(11);
  const char* fields[] = {"12.5", "\"a,b\"", "\"x\"\"\r\ny\"", "text", "", "\"\"", "1e-3", "\"7\"tail"};
  while (bytes.size() < (3u << 20)) {
    for (auto n = random() % 6; n > 0; --n) bytes.append(fields[random() % 8]).append(",");
    bytes.append(fields[random() % 8]).append(random() % 2 ? "\r\n" : "\r");
  }
  for (const std::size_t edge : {std::size_t{1} << 20, std::size_t{2} << 20}) {
    bytes.replace(edge - 1, 2, "\r\n");
  }
  for (int shift = 0; shift < 8; ++shift) {
    SCOPED_TRACE(shift);
    const bool loaded = Read(bytes);
    ASSERT_NO_FATAL_FAILURE(ExpectFields(book_, loaded, bytes));
    bytes.insert(bytes.begin(), 'q');
  }
}

}  // namespace
}  // namespace tellurix
