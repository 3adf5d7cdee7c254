#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/FakeClock.h"
#include "vendelo-sdl2/MyUtils.h"
#include "vendelo-sdl2/TLogManager.h"

namespace fs = std::filesystem;
using vendelo_sdl2::TLogEntry;
using vendelo_sdl2::TLogManager;

// A manager in a folder of its own, on a tick clock that stands at 1000, with the console captured.
class TLogManagerTest : public testing::Test {
 protected:
  void SetUp() override {
    setenv("TZ", "UTC0", 1);
    tzset();
    const testing::TestInfo* info = testing::UnitTest::GetInstance()->current_test_info();
    folder = fs::temp_directory_path() / ("tlogmanager." + std::to_string(getpid()) + "." + info->name());
    fs::remove_all(folder);
    fs::create_directories(folder);
    testing::internal::CaptureStdout();
  }
  void TearDown() override {
    const std::string out = testing::internal::GetCapturedStdout();
    if (HasFailure()) std::fputs((captured + out).c_str(), stderr);  // the failures were captured too
    fs::remove_all(folder);
  }

  // What was printed since the last call.
  std::string console() {
    std::string out = testing::internal::GetCapturedStdout();
    testing::internal::CaptureStdout();
    captured += out;
    return out;
  }
  static std::string read(const fs::path& path) {
    std::ifstream file(path);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
  }
  std::string name(const char* file) const { return (folder / file).string(); }
  fs::path dated(const char* stem) const {
    return folder / (std::string(stem) + "_" + MyUtils::GetCurrentDateString() + ".log");
  }
  int init(TLogManager& manager) { return manager.Init(name("app.log"), nullptr, nullptr, true); }

  FakeClock clock{1000};
  fs::path folder;
  std::string captured;
};

// Keeps the lines that Poll delivers.
class Recorder : public TLogManager {
 public:
  void OnWriteLog(const TLogEntry& entry, int linesToGo) override {
    entries.push_back(entry);
    toGo.push_back(linesToGo);
    if (throws) throw 1;
  }
  std::vector<TLogEntry> entries;
  std::vector<int> toGo;
  bool throws = false;
};
