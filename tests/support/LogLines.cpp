#include "tests/support/LogLines.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>

LogLines::LogLines()
  : mFolder((std::filesystem::temp_directory_path() / ("loglines_" + std::to_string(getpid()))).string()) {
  std::filesystem::create_directories(mFolder);
  TLogManager::Init(mFolder + "/test.log", nullptr, nullptr, false);
  const std::lock_guard<std::mutex> lock(mMutex);
  mLines.clear();
}

LogLines::~LogLines() {
  TLogManager::Destroy();
  std::error_code ignored;
  std::filesystem::remove_all(mFolder, ignored);
}

int LogLines::_WriteLog(char /*color*/, vendelo_sdl2::TLogType LogType, unsigned long GameId,
                        const std::string& Text) {
  EXPECT_EQ(0UL, GameId) << "the program's own lines belong to no game: " << Text;
  const std::lock_guard<std::mutex> lock(mMutex);
  mLines.push_back(std::to_string(LogType) + " " + Text);
  return 0;
}

std::vector<std::string> LogLines::lines() const {
  const std::lock_guard<std::mutex> lock(mMutex);
  return mLines;
}

size_t LogLines::size() const {
  const std::lock_guard<std::mutex> lock(mMutex);
  return mLines.size();
}

int LogLines::count(const std::string& line) const {
  const auto all = lines();
  return static_cast<int>(std::count(all.begin(), all.end(), line));
}
