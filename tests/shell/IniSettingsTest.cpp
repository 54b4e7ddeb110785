#include "shell/IniSettings.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <csignal>
#include <random>

#include "session/SessionSettings.h"
#include "tests/FakeHost.h"
#include "tests/TemporaryFolder.h"

namespace tellurix {
namespace {

namespace fs = std::filesystem;

class IniSettingsTest : public ::testing::Test {
 protected:
  TemporaryFolder folder;
  fs::path file = folder / "sub/Tellurix.ini";

  std::string Bytes() { return ReadTestFile(file); }

  void ReadAndSetThroughAFile(const std::string& bytes) {
    WriteTestFile(file, bytes);
    IniSettings settings(file);
    FakeHost host;
    FakeDocuments documents;
    Session session(host, documents, settings, {});
    LoadSettings(session);
    EXPECT_TRUE(session.options.DecimalPlaces >= 2 && session.options.DecimalPlaces <= 12);
    EXPECT_TRUE(session.options.PDecimalPlaces >= 3 && session.options.PDecimalPlaces <= 7);
    settings.SetIniValue("New", "key", "value");
    const IniSettings again(file);
    EXPECT_EQ(again.GetIniValue("New", "key", ""), "value");
    EXPECT_EQ(again.Problem(), "");
    for (const auto& entry : fs::directory_iterator(file.parent_path())) fs::remove(entry);
  }
};

TEST_F(IniSettingsTest, KeepsEverythingElseWhereItStands) {
  const std::string before =
      "; settings of Ann\r\n\r\n[Analyses]\r\n  # six by habit\r\nDecimalPlaces = 6\r\na line of no kind\r\n"
      "Unknown=x ; y\r\n\r\n[Of another program]\r\nkey=\"  kept  \"\r\n\r\n; the end\r\n";
  WriteTestFile(file, before);
  IniSettings settings(file);
  settings.SetIniValue("analyses", "DECIMALPLACES", "8");
  settings.SetIniValue("Analyses", "New", "1");
  EXPECT_EQ(Bytes(),
            "; settings of Ann\r\n\r\n[Analyses]\r\n  # six by habit\r\nDecimalPlaces =8\r\n"
            "a line of no kind\r\nUnknown=x ; y\r\nNew=1\r\n\r\n[Of another program]\r\nkey=\"  kept  \"\r\n\r\n"
            "; the end\r\n");
  EXPECT_EQ(settings.GetIniValue("Of another program", "key", ""), "  kept  ");
  EXPECT_EQ(settings.GetIniValue("Analyses", "Unknown", ""), "x ; y");
  EXPECT_EQ(settings.GetIniValue("None", "key", "default"), "default");
  EXPECT_EQ(settings.Problem(), "");
}

TEST_F(IniSettingsTest, ValuesComeBackAsTheyStand) {
  IniSettings settings(file);
  const std::vector<std::string> values{
      "", " blanks ", "\"/opt/a b/run\" -x \"y\"", "\"", "a=b;c#d", "[x]", "Été", "\"q\"", "C:\\data\\"};
  std::vector<IniValue> all;
  for (std::size_t i = 0; i < values.size(); ++i) all.push_back({"S", std::to_string(i), values[i]});
  settings.SetIniValues(all);
  settings.SetIniValue("S", "lines", "one\ntwo\r\n[Analyses]");  // would be other lines of the file
  const IniSettings again(file);
  for (std::size_t i = 0; i < values.size(); ++i) EXPECT_EQ(again.GetIniValue("S", std::to_string(i), "?"), values[i]);
  EXPECT_EQ(again.GetIniValue("S", "lines", ""), "one two  [Analyses]");
  settings.SetIniValue("S", "path", "/home/\xe9t\xe9.csv");
  EXPECT_EQ(IniSettings(file).GetIniValue("S", "path", ""), "/home/été.csv");
}

TEST_F(IniSettingsTest, ADamagedFileReadsAsDefaultsAndIsKept) {
  const std::string damaged[] = {std::string("[Analyses]\nDecimalPlaces=\0009\n", 28), "[Analyses]\nTitle=\xff\xfe\n",
                                 "[Analyses\nDecimalPlaces=9\n", "no settings at all\n"};
  int copies = 0;
  for (const std::string& bytes : damaged) {
    WriteTestFile(file, bytes);
    IniSettings settings(file);
    EXPECT_EQ(SettingValue(settings, "Analyses", "DecimalPlaces"), "6");
    const fs::path copy = file.string() + ".damaged" + (++copies > 1 ? std::to_string(copies) : "");
    EXPECT_EQ(ReadTestFile(copy), bytes);
    EXPECT_NE(settings.Problem().find(copy.string()), std::string::npos) << settings.Problem();
    settings.SetIniValue("Analyses", "DecimalPlaces", "7");
    EXPECT_EQ(settings.Problem(), "");
    EXPECT_NE(settings.Damage().find(copy.string()), std::string::npos);  // for whoever can tell it at last
    EXPECT_EQ(Bytes(), "[Analyses]\nDecimalPlaces=7\n");
  }
}

TEST_F(IniSettingsTest, OneProgramDoesNotWipeOutTheKeysOfAnother) {
  IniSettings first(file), second(file);
  first.SetIniValue("Analyses", "DecimalPlaces", "8");
  second.SetIniValue("Analyses", "DecimalPlacesP", "5");
  EXPECT_EQ(IniSettings(file).GetIniValue("Analyses", "DecimalPlaces", ""), "8");
  // At the same time: nothing is lost.
  constexpr int Programs = 4, Keys = 25;
  std::vector<pid_t> children;
  for (int program = 0; program < Programs; ++program) {
    children.push_back(::fork());
    if (children.back() != 0) continue;
    IniSettings settings(file);
    for (int key = 0; key < Keys; ++key) settings.SetIniValue("P" + std::to_string(program), std::to_string(key), "x");
    ::_exit(0);
  }
  for (const pid_t child : children) ::waitpid(child, nullptr, 0);
  const IniSettings after(file);
  for (int program = 0; program < Programs; ++program) {
    for (int key = 0; key < Keys; ++key) {
      EXPECT_EQ(after.GetIniValue("P" + std::to_string(program), std::to_string(key), ""), "x");
    }
  }
}

TEST_F(IniSettingsTest, WhatCannotBeWrittenWaitsInMemory) {
  WriteTestFile(folder / "sub", "a file where the folder should be");
  IniSettings settings(file);
  std::string told;
  settings.onProblem = [&](const std::string& problem) { told = problem; };
  settings.SetIniValue("Analyses", "DecimalPlaces", "8");
  EXPECT_NE(told.find("The settings could not be saved."), std::string::npos) << told;
  EXPECT_EQ(settings.GetIniValue("Analyses", "DecimalPlaces", ""), "8");
  fs::remove(folder / "sub");
  settings.SetIniValue("Analyses", "RClick", "0");
  EXPECT_EQ(Bytes(), "[Analyses]\nDecimalPlaces=8\nRClick=0\n");
  EXPECT_EQ(settings.Problem(), "");
}

TEST_F(IniSettingsTest, AFullDiskLeavesTheOldFile) {
  IniSettings settings(file);
  settings.SetIniValue("Analyses", "DecimalPlaces", "8");
  const std::string before = Bytes();
  // A limit on the size of files fails a write as a full disk does.
  rlimit usual{};
  ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &usual), 0);
  rlimit small = usual;
  small.rlim_cur = before.size() + 5;
  const auto signalBefore = std::signal(SIGXFSZ, SIG_IGN);
  ::setrlimit(RLIMIT_FSIZE, &small);
  settings.SetIniValue("Analyses", "RClick", "0");
  ::setrlimit(RLIMIT_FSIZE, &usual);
  std::signal(SIGXFSZ, signalBefore);
  EXPECT_TRUE(settings.Problem().starts_with("The settings could not be saved.")) << settings.Problem();
  EXPECT_EQ(Bytes(), before);
  EXPECT_EQ(std::distance(fs::directory_iterator(file.parent_path()), {}), 1);
  EXPECT_EQ(settings.GetIniValue("Analyses", "RClick", ""), "0");
  settings.SetIniValue("Analyses", "UseGroupID", "-1");
  EXPECT_EQ(Bytes(), before + "RClick=0\nUseGroupID=-1\n");
}

TEST_F(IniSettingsTest, WhatAKilledSaveHasLeftGoes) {
  WriteTestFile(file.string() + "~Ab12Cd", "half a file");
  WriteTestFile(folder / "sub/Tellurix.tlw~Ab12Cd", "of somebody else");
  const IniSettings settings(file);
  EXPECT_FALSE(fs::exists(file.string() + "~Ab12Cd"));
  EXPECT_TRUE(fs::exists(folder / "sub/Tellurix.tlw~Ab12Cd"));
}

TEST_F(IniSettingsTest, BadNumbersReadAsTheDefault) {
  WriteTestFile(file,
                "[Analyses]\nDecimalPlaces=many\nDecimalPlacesP=9\nDefaultConfidence=1e99\nRClick=\n"
                "UseGroupID=-1\n");
  IniSettings settings(file);
  FakeHost host;
  FakeDocuments documents;
  Session session(host, documents, settings, {});
  LoadSettings(session);
  EXPECT_EQ(session.options.DecimalPlaces, 6);
  EXPECT_EQ(session.options.PDecimalPlaces, 4);
  EXPECT_EQ(session.options.DefaultCI, 95);
  EXPECT_TRUE(session.options.RClick);
  EXPECT_TRUE(session.options.UseGroupID);
}

// Whatever was done to a file: it is read without harm, its options are in their ranges, and what is set comes back.
TEST_F(IniSettingsTest, SurvivesDamage) {
  const char* rounds = std::getenv("TELLURIX_FUZZ_ROUNDS");
  const int count = rounds ? std::atoi(rounds) : 500;
  IniText whole;
  for (const SettingKey& key : SettingKeys()) whole.Set(key.section, key.key, key.defaultValue);
  const std::string_view pieces[] = {"[",
                                     "]",
                                     "=",
                                     "\n",
                                     "\r\n",
                                     "\"",
                                     ";",
                                     "#",
                                     std::string_view("\0", 1),
                                     "\xff",
                                     "\xEF\xBB\xBF",
                                     "[Analyses]\n",
                                     "DecimalPlaces=",
                                     "999999999999",
                                     "-",
                                     "e"};
  for (int round = 0; round < count; ++round) {
    std::mt19937 random(static_cast<unsigned>(round));
    std::string bytes = whole.Bytes();
    for (auto changes = 1 + random() % 8; changes > 0; --changes) {
      const auto at = random() % (bytes.size() + 1);
      switch (random() % 4) {
        case 0:
          bytes.insert(at, pieces[random() % std::size(pieces)]);
          break;
        case 1:
          bytes.erase(at, random() % 40);
          break;
        case 2:
          if (at < bytes.size()) bytes[at] = static_cast<char>(bytes[at] ^ (1 << random() % 8));
          break;
        case 3:
          if (random() % 4 == 0) bytes.resize(at);
          break;
      }
    }
    if (round % 20 == 0) {
      ReadAndSetThroughAFile(bytes);
      continue;
    }
    const auto text = IniText::Read(bytes);
    if (!text) continue;
    IniText changed = *text;
    changed.Set("Analyses", "DecimalPlaces", "11");
    changed.Set("New", "key", "value");
    const auto again = IniText::Read(changed.Bytes());
    ASSERT_TRUE(again) << round;
    ASSERT_EQ(again->Get("Analyses", "DecimalPlaces"), "11") << round;
    ASSERT_EQ(again->Get("New", "key"), "value") << round;
    for (const SettingKey& key : SettingKeys()) {
      if (key.key == "DecimalPlaces") continue;
      ASSERT_EQ(again->Get(key.section, key.key), text->Get(key.section, key.key)) << round << key.key;
    }
  }
}

}  // namespace
}  // namespace tellurix
