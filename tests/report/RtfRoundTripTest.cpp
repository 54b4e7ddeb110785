// Documents that are written, read, broken and read again.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "report/RichText.h"
#include "tests/RandomRichText.h"

namespace tellurix {
namespace {

TEST(RtfRoundTrip, ReadingWhatWasWrittenGivesTheSameDocument) {
  for (unsigned seed = 0; seed < 1000; ++seed) {
    const RichText document = RandomReport(seed);
    const std::string bytes = WriteRtf(document);
    ASSERT_EQ(bytes.back(), '}');
    const auto read = ReadRtf(bytes);
    ASSERT_TRUE(read.has_value());
    ASSERT_TRUE(*read == document) << "seed " << seed << "\n" << bytes << "\n" << WriteRtf(*read);
  }
}

TEST(RtfRoundTrip, AFragmentOfADocumentMayBeAppended) {
  RichText whole = RandomReport(3);
  const RichText second = RandomReport(4);
  const std::size_t blocks = whole.blocks.size() + second.blocks.size();
  whole.Append(ReadRtf(WriteRtf(second)).value());
  EXPECT_EQ(whole.blocks.size(), blocks);
  EXPECT_EQ(ReadRtf(WriteRtf(whole)).value(), whole);
}

// What any reading has to stand: all writers, and a second reading that gives the same.
void Check(const std::string& bytes) {
  const auto document = ReadRtf(bytes);
  if (!document) {
    ASSERT_FALSE(bytes.starts_with("{\\rtf"));
    return;
  }
  const std::string written = WriteRtf(*document);
  const auto again = ReadRtf(written);
  ASSERT_TRUE(again.has_value());
  ASSERT_TRUE(*again == *document) << written << "\n--- again:\n" << WriteRtf(*again);
  WriteHtml(*document, "Title");
  WriteText(*document);
  for (const char c : written.substr(0, written.find("{\\pict"))) ASSERT_TRUE(c == '\n' || (c >= 0x20 && c < 0x7F));
}

std::vector<std::string> Samples() {
  std::vector<std::string> samples{
      "{\\rtf1\\ansi\\ansicpg1252\\deff0{\\fonttbl{\\f0\\fswiss\\fcharset0 Arial;}{\\f1\\froman\\fcharset2 "
      "Symbol;}{\\f2\\fcharset128 "
      "MS Mincho;}{\\f3\\fcharset204 Cyr;}}{\\colortbl;\\red255\\green0\\blue9;}{\\stylesheet{\\ql "
      "Normal;}{\\s1\\qc\\b head;}}"
      "{\\info{\\title T}}{\\header H\\par}\\pard\\plain\\s1\\f0\\fs20 T\\'e9\\u946?{\\f1 "
      "c}{\\f2\\'93\\'fa}{\\f3\\'cf}\\u-10179?"
      "\\u-8704?{\\super 2}{\\v /h/12/}\\par\\pard\\tqdec\\tx900 a\\tab b\\line c\\par{\\field{\\*\\fldinst "
      "X}{\\fldrslt y}}"
      "{\\pntext 1.\\tab}\\sect\\page z\\par}",
      "{\\rtf1 a{\\super\\chftn{\\*\\footnote\\chftn\\plain  n{\\b o}\\par t}}{\\shp{\\*\\shpinst\\shpleft1{\\sp{\\sn "
      "pib}{\\sv "
      "{\\pict\\pngblip\\picwgoal99 0102}}}{\\sp{\\sn x}{\\sv 1}}{\\shptxt\\ql{\\*\\footnote "
      "f}\\trowd\\cellx900\\intbl "
      "c\\cell\\row}}{\\shprslt{\\pict\\wmetafile8 03}}}{\\deleted d}{\\listtext\\tab}e\\par}",
      "{\\rtf1\\trowd\\trgaph108\\trhdr\\trqc\\clbrdrt\\brdrs\\brdrw15\\clmgf\\cellx900\\clmrg\\cellx1800\\pard\\intbl "
      "a\\cell\\cell"
      "\\row\\trowd\\clvmrg\\cellx900\\clbrdrb\\brdrdb\\cellx1800\\pard\\intbl x\\par\\pard\\intbl\\itap2 n\\nestcell "
      "m\\nestcell"
      "{\\*\\nesttableprops\\trowd\\cellx400\\nestrow}{\\nonesttables\\par}\\pard\\intbl\\cell\\qr "
      "1.5\\cell\\row\\pard end}",
      "{\\rtf1 "
      "p{\\*\\shppict{\\pict{\\*\\picprop}\\pngblip\\picw9\\pich9\\picwgoal99\\pichgoal99\n0102ff}}{\\nonshppict{"
      "\\pict 00}}"
      "{\\pict\\wmetafile8\\bin5 {}\\{z}\\uc2\\u8364 ab{\\upr{a}{\\*\\ud{b}}}q\\par}"};
  for (unsigned seed = 0; seed < 5; ++seed) samples.push_back(WriteRtf(RandomReport(seed + 100)));
  return samples;
}

TEST(RtfFuzz, CutAnywhere) {
  for (const auto& sample : Samples()) {
    for (std::size_t size = 0; size <= sample.size() && size < 2500; ++size) {
      Check(sample.substr(0, size));
      if (HasFatalFailure()) FAIL() << sample.substr(0, size);
    }
  }
}

TEST(RtfFuzz, BrokenDocumentsAreReadAndWrittenAgain) {
  const char* variable = std::getenv("TELLURIX_FUZZ_ROUNDS");
  const int rounds = variable != nullptr ? std::atoi(variable) : 500;
  const auto samples = Samples();
  for (int round = 0; round < rounds; ++round) {
    Dice dice(static_cast<unsigned>(round));
    const int count = static_cast<int>(samples.size());
    std::string bytes = samples[static_cast<std::size_t>(dice.Below(count))];
    const auto somewhere = [&] { return static_cast<std::size_t>(dice.Below(static_cast<int>(bytes.size()) + 1)); };
    for (int left = 1 + dice.Below(8); left > 0 && !bytes.empty(); --left) {
      switch (dice.Below(6)) {
        case 0:
          bytes[somewhere() % bytes.size()] ^= static_cast<char>(1 << dice.Below(8));
          break;
        case 1:
          if (dice.Once(4)) bytes.resize(somewhere());
          break;
        case 2: {
          const std::string& other = samples[static_cast<std::size_t>(dice.Below(count))];
          const auto from = static_cast<std::size_t>(dice.Below(static_cast<int>(other.size())));
          bytes.insert(somewhere(), other.substr(from, static_cast<std::size_t>(dice.Below(200))));
          break;
        }
        case 3:
          bytes.insert(somewhere(), dice.Of<const char*>({"{",
                                                          "}",
                                                          "\\",
                                                          "{\\*",
                                                          "\\'",
                                                          "\\u",
                                                          "\\bin9 ",
                                                          "\\row ",
                                                          "\\cell ",
                                                          "\\intbl ",
                                                          "\\par ",
                                                          "\\trowd ",
                                                          "\\nestcell ",
                                                          "\\nestrow ",
                                                          "{\\pict ",
                                                          "\\uc0 ",
                                                          "\\u55357 ",
                                                          "\\ansicpg65001 ",
                                                          "\\ansicpg932 ",
                                                          "\\clmrg "}));
          break;
        case 4:
          bytes.insert(somewhere(),
                       std::string(static_cast<std::size_t>(dice.Below(9)), static_cast<char>(dice.Below(256))));
          break;
        default:
          bytes.erase(somewhere() % bytes.size(), static_cast<std::size_t>(dice.Below(60)));
      }
    }
    if (!bytes.starts_with("{\\rtf")) bytes.insert(0, "{\\rtf1 ");
    Check(bytes);
    if (HasFatalFailure()) FAIL() << "round " << round << "\n" << bytes;
  }
}

}  // namespace
}  // namespace tellurix
