#include "vendelo-sdl2/TLogManager.h"

#include <SDL.h>

#include <algorithm>
#include <cstdio>
#include <utility>
#include <vector>

#include "common/Logger.h"
#include "vendelo-sdl2/MyUtils.h"

namespace fs = std::filesystem;

namespace vendelo_sdl2 {

namespace {

constexpr size_t FormatBuffer = 2048;
constexpr size_t StampLength = 24;
constexpr TLogType UserTypes = 0x10000;
constexpr size_t MaxHistory = 50;
constexpr size_t KeptOldLogs = 39;
constexpr Uint32 DateCheckInterval = 10000;
constexpr Uint32 FlushInterval = 100;
constexpr Uint32 ReopenInterval = 37840;

constexpr const char* Prefixes[] = {
  ": ", ": ", ": debINFO: ", ": INFO: ", ": WARN: ", ": ERROR: ", ": debERROR: ", ": CRITICAL: ", ": "};

// The manager behind logman. Any thread reads it; it changes only in Init, Destroy and the destructor.
std::atomic<TLogManager*> pDefInst{nullptr};

void releaseDefaultInstance(TLogManager* manager) { pDefInst.compare_exchange_strong(manager, nullptr); }

std::string stampOf(time_t time) {
  tm local{};
  localtime_r(&time, &local);
  char buffer[64] = "";
  asctime_r(&local, buffer);
  return std::string(buffer).substr(0, StampLength);
}

const char* prefixOf(TLogType type) {
  const TLogType low = type & 0xff;
  return low < sizeof Prefixes / sizeof Prefixes[0] ? Prefixes[low] : "";
}

}  // namespace

TLogManager::TLogManager() = default;

TLogManager::~TLogManager() { releaseDefaultInstance(this); }

int TLogManager::Init(std::string LogFileFilename, TpfOnWriteLog pfOnWriteLog, void* pUserData,
                      bool AutoHandleOldLogs) {
  std::lock_guard<std::recursive_mutex> lock(mPollMutex);
  CurrentDateString.clear();
  FullLogFileFilename.clear();
  this->LogFileFilename = std::move(LogFileFilename);
  this->pfOnWriteLog = pfOnWriteLog;
  this->pUserData = pUserData;
  this->AutoHandleOldLogs = AutoHandleOldLogs;
  OutputToConsole = false;
  LastTime = FileOpenTime = FileFlushTime = SDL_GetTicks();
  Open();
  TLogManager* none = nullptr;
  pDefInst.compare_exchange_strong(none, this);
  initialized = 1;
  if (hLogFile.is_open()) KLOG(LogApp, logs::Important, "Logging to file %s", this->LogFileFilename.c_str());
  return 0;
}

void TLogManager::Destroy() {
  std::lock_guard<std::recursive_mutex> lock(mPollMutex);
  if (!initialized) return;
  initialized = 0;
  KLOG(LogApp, logs::Info, "logman: calling Poll() for the last time.");
  // Without effect, since the flag is down: what is still queued is lost. The order is meant to stay.
  Poll();
  releaseDefaultInstance(this);
  Close();
}

void TLogManager::removeOldLogs(const fs::path& directory, const std::string& logStem) {
  std::vector<std::pair<fs::file_time_type, fs::path>> logFiles;
  for (const auto& entry : fs::directory_iterator(directory)) {
    if (!entry.is_regular_file() || entry.path().extension() != ".log") continue;
    if (entry.path().stem().string().rfind(logStem, 0) != 0) continue;
    logFiles.emplace_back(entry.last_write_time(), entry.path());
  }
  std::sort(logFiles.begin(), logFiles.end(), [](const auto& a, const auto& b) { return a > b; });
  for (size_t i = KeptOldLogs; i < logFiles.size(); ++i) fs::remove(logFiles[i].second);
}

int TLogManager::Open() {
  std::lock_guard<std::recursive_mutex> lock(mPollMutex);
  FullLogFileFilename = LogFileFilename;
  const fs::path given(LogFileFilename);
  MyUtils::StringReplace(FullLogFileFilename, ".log", "");
  MyUtils::StringReplace(FullLogFileFilename, ".txt", "");
  const fs::path directory = given.has_parent_path() ? given.parent_path() : fs::current_path();
  if (AutoHandleOldLogs && fs::exists(directory)) removeOldLogs(directory, given.stem().string());

  CurrentDateString = MyUtils::GetCurrentDateString();
  mLogFileLocation = FullLogFileFilename + "_" + CurrentDateString + ".log";
  if (!mLogFileLocation.empty()) {
    std::error_code error;  // a folder that cannot be made shows as a file that cannot be opened
    if (!fs::exists(mLogFileLocation, error)) {
      fs::create_directories(directory, error);
      std::ofstream(mLogFileLocation) << "== APP CREATED THIS FILE ==\n";
    }
    if (hLogFile.is_open()) hLogFile.close();
    hLogFile.clear();
    hLogFile.open(mLogFileLocation, std::ios::app);
    if (hLogFile.is_open())
      hLogFile << "\n\n";
    else
      KLOG(LogApp, logs::Error, "Can't open log file %s", mLogFileLocation.c_str());
  }
  if (hLogFile.is_open() || pfOnWriteLog) return 0;
  KLOG(LogApp, logs::Warning, "No channels to output. Will output to console.");
  OutputToConsole = true;
  return -1;
}

void TLogManager::Close() {
  std::lock_guard<std::recursive_mutex> lock(mPollMutex);
  if (!hLogFile.is_open()) return;
  hLogFile.close();
  std::printf("%s closed.\n", FullLogFileFilename.c_str());
  FullLogFileFilename.clear();
}

int TLogManager::_WriteLog(char color, TLogType LogType, unsigned long GameId, const std::string& Text) {
  if (!initialized) return -1;
  const time_t now = std::time(nullptr);
  Time = now;
  auto entry = std::make_shared<TLogEntry>();
  entry->LogType = LogType;
  entry->GameId = GameId;
  entry->Color = color;
  const std::string stamp = stampOf(now);
  entry->Message = stamp + (bAppendPrefix ? prefixOf(LogType) : ": ") + Text;
  if (LogType > UserTypes) entry->Message.insert(stamp.size(), ": LT_USER_" + std::to_string(LogType));

  if (OutputToConsole) {
    std::string line = entry->Message;
    if (color) line = "\x1b[38;5;" + std::to_string(static_cast<unsigned char>(color)) + "m" + line + "\x1b[0m";
    std::printf("%s\n", line.c_str());
    std::fflush(stdout);  // at once also where the output is a pipe or a file
  }
  ScopedLock lock(mLogEntries);
  LastLog = Text;
  mLogEntries->push_back(std::move(entry));
  return 0;
}

void TLogManager::OnWriteLog(const TLogEntry&, int) {}

void TLogManager::switchDate() {
  const std::string today = MyUtils::GetCurrentDateString();
  if (today == CurrentDateString) return;
  WriteToFile("Switching to log with date " + today);  // no line end: the old file ends here
  Close();
  Open();
}

void TLogManager::tellListeners(const TLogEntry& entry) {
  if (pfOnWriteLog) {
    try {
      pfOnWriteLog(pUserData, entry, LinesToGo);
    } catch (...) {
      std::printf("LogManager:Poll:pfOnWriteLog unhandled exception\n");
    }
  }
  try {
    OnWriteLog(entry, LinesToGo);
  } catch (...) {
    std::printf("LogManager:Poll:OnWriteLog unhandled exception\n");
  }
}

int TLogManager::Poll() {
  std::lock_guard<std::recursive_mutex> pollLock(mPollMutex);
  if (!initialized) return -1;
  std::deque<std::shared_ptr<TLogEntry>> queued;
  {
    // Swapped, so that no writer waits while a long queue is moved.
    ScopedLock lock(mLogEntries);
    mLogEntries->swap(queued);
  }
  const std::vector<std::shared_ptr<TLogEntry>> logsToSave(std::make_move_iterator(queued.begin()),
                                                           std::make_move_iterator(queued.end()));
  LinesToGo = static_cast<int>(logsToSave.size());
  mLogHistory.insert(mLogHistory.end(), logsToSave.begin(), logsToSave.end());
  while (mLogHistory.size() > MaxHistory) mLogHistory.pop_front();

  for (const auto& entry : logsToSave) {
    --LinesToGo;
    if (MyUtils::IsTime(LastTime, DateCheckInterval, true)) switchDate();
    WriteToFile(entry->Message + "\n");
    tellListeners(*entry);
  }
  if (hLogFile.is_open()) {
    if (MyUtils::IsTime(FileFlushTime, FlushInterval, true)) hLogFile.flush();
  } else if (MyUtils::IsTime(FileOpenTime, ReopenInterval, true)) {
    hLogFile.clear();
    hLogFile.open(mLogFileLocation, std::ios::app);
  }
  return 0;
}

int TLogManager::WriteLog(std::string Text) { return _WriteLog(0, 0, 0, Text); }

int TLogManager::WriteLog(TLogType LogType, std::string Text) { return _WriteLog(0, LogType, 0, Text); }

int TLogManager::WriteLog(TLogType LogType, unsigned long GameId, const std::string& Text) {
  return _WriteLog(0, LogType, GameId, Text);
}

int TLogManager::WriteLog(TLogType LogType, unsigned long GameId, const char* pText, ...) {
  va_list arguments;
  va_start(arguments, pText);
  const int result = WriteLogV(0, LogType, GameId, pText, arguments);
  va_end(arguments);
  return result;
}

int TLogManager::WriteColoredLog(char color, TLogType LogType, unsigned long GameId, const char* pText, ...) {
  va_list arguments;
  va_start(arguments, pText);
  const int result = WriteLogV(color, LogType, GameId, pText, arguments);
  va_end(arguments);
  return result;
}

int TLogManager::WriteLogV(char color, TLogType LogType, unsigned long GameId, const char* pText,
                           va_list arguments) {
  if (!pText) return -1;
  char buffer[FormatBuffer] = "";
  std::vsnprintf(buffer, sizeof buffer, pText, arguments);
  _WriteLog(color, LogType, GameId, buffer);
  return 0;
}

void TLogManager::WriteToFile(const std::string& message) {
  std::lock_guard<std::recursive_mutex> lock(mPollMutex);
  if (hLogFile.is_open())
    hLogFile << message;
  else
    std::printf("logman(logfile error): %s\n", message.c_str());
}

void TLogManager::FlushFile() {
  std::lock_guard<std::recursive_mutex> lock(mPollMutex);
  hLogFile.flush();
}

void TLogManager::SetOutputToConsole(bool ToValue) { OutputToConsole = ToValue; }

std::string TLogManager::PopLogHistory() {
  std::lock_guard<std::recursive_mutex> lock(mPollMutex);
  if (!initialized || mLogHistory.empty()) return "";
  std::string message = mLogHistory.front()->Message;
  mLogHistory.pop_front();
  return message;
}

std::string TLogManager::GetLastLog() {
  ScopedLock lock(mLogEntries);
  return LastLog;
}

std::string TLogManager::GetLogFileName() {
  std::lock_guard<std::recursive_mutex> lock(mPollMutex);
  return mLogFileLocation.string();
}

}  // namespace vendelo_sdl2

namespace logman {

using vendelo_sdl2::pDefInst;
using vendelo_sdl2::TLogManager;
using vendelo_sdl2::TLogType;

int WriteLog(std::string Text) {
  TLogManager* const manager = pDefInst;
  return manager ? manager->WriteLog(std::move(Text)) : -1;
}

int WriteLog(TLogType LogType, std::string Text) {
  TLogManager* const manager = pDefInst;
  return manager ? manager->WriteLog(LogType, std::move(Text)) : -1;
}

int WriteLog(TLogType LogType, unsigned long GameId, const std::string& Text) {
  TLogManager* const manager = pDefInst;
  return manager ? manager->WriteLog(LogType, GameId, Text) : -1;
}

int WriteLog(TLogType LogType, unsigned long GameId, const char* pText, ...) {
  TLogManager* const manager = pDefInst;
  if (!manager) return -1;
  va_list arguments;
  va_start(arguments, pText);
  const int result = manager->WriteLogV(0, LogType, GameId, pText, arguments);
  va_end(arguments);
  return result;
}

int WriteColoredLog(char color, TLogType LogType, unsigned long GameId, const char* pText, ...) {
  TLogManager* const manager = pDefInst;
  if (!manager) return -1;
  va_list arguments;
  va_start(arguments, pText);
  const int result = manager->WriteLogV(color, LogType, GameId, pText, arguments);
  va_end(arguments);
  return result;
}

int Poll() {
  TLogManager* const manager = pDefInst;
  return manager ? manager->Poll() : -1;
}

std::string GetLastLog() {
  TLogManager* const manager = pDefInst;
  return manager ? manager->GetLastLog() : "";
}

}  // namespace logman
