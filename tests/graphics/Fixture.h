// Charts on a host of the tests, in a temporary folder of their own.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <string>

#include "graphics/Graphics.h"
#include "tests/FakeHost.h"

namespace tellurix {

class Charts : public testing::Test {
 protected:
  Charts() : folder(Folder()), graphics(host, regional, folder) { std::filesystem::create_directories(folder); }
  ~Charts() override { std::filesystem::remove_all(folder); }

  // The bytes of a picture, as they are in the file.
  std::string Recorded(const std::function<void()>& draw) {
    EXPECT_TRUE(graphics.BeginPicture(true));
    draw();
    EXPECT_TRUE(graphics.BeginPicture(false));
    return graphics.picture.Records();
  }

  static std::filesystem::path Folder() {
    const auto* test = testing::UnitTest::GetInstance()->current_test_info();
    return std::filesystem::temp_directory_path() / (std::string("tellurix-charts-") + test->name());
  }

  FakeHost host;
  Regional regional;
  std::filesystem::path folder;
  Graphics graphics;
};

}  // namespace tellurix
