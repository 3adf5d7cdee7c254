#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "vendelo-sdl2/TLogManager.h"

// Takes what the program writes to the application log while an object of this class lives: the log type and the
// text, as "4 text". One at a time, and none beside another initialised log. Lines may come from any thread.
class LogLines : public vendelo_sdl2::TLogManager {
 public:
  LogLines();
  ~LogLines() override;

  int _WriteLog(char color, vendelo_sdl2::TLogType LogType, unsigned long GameId, const std::string& Text) override;
  std::vector<std::string> lines() const;
  size_t size() const;
  // How many lines are exactly this text.
  int count(const std::string& line) const;

 private:
  mutable std::mutex mMutex;
  std::vector<std::string> mLines;
  std::string mFolder;
};
