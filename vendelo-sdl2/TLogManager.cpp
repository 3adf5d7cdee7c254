#include "vendelo-sdl2/TLogManager.h"

#include <SDL.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <utility>
#include <vector>

#include "common/Logger.h"
#include "vendelo-sdl2/MyUtils.h"
#include "vendelo-sdl2/SystemSeams.h"
#include "vendelo-sdl2/TConsole.h"

namespace fs = std::filesystem;

namespace vendelo_sdl2 {

namespace {

constexpr size_t kFormatBuffer = 2048;
constexpr size_t kStampLength = 24;
constexpr TLogType kUserTypes = 0x10000;
constexpr TLogType kWarningType = 4;
constexpr size_t kMaxHistory = 50;
constexpr size_t kKeptOldLogs = 39;
constexpr Uint32 kDateCheckInterval = 10000;
constexpr Uint32 kFlushInterval = 100;
constexpr Uint32 kReopenInterval = 37840;
constexpr Uint32 kRetryInterval = 1000;  // of a file that could be opened and then took no more
constexpr size_t kFileBuffer = 8192;

constexpr const char* kPrefixes[] = {
  ": ", ": ", ": debINFO: ", ": INFO: ", ": WARN: ", ": ERROR: ", ": debERROR: ", ": CRITICAL: ", ": "};

// The manager behind logman. Any thread reads it; it changes only in Init, Destroy and the destructor.
std::atomic<TLogManager*> pDefInst{nullptr};

thread_local int essential = 0;

void releaseDefaultInstance(TLogManager* manager) { pDefInst.compare_exchange_strong(manager, nullptr); }

std::string stampOf(time_t time) {
  tm local{};
  localtime_r(&time, &local);
  char buffer[64] = "";
  asctime_r(&local, buffer);
  return std::string(buffer).substr(0, kStampLength);
}

const char* prefixOf(TLogType type) {
  const TLogType low = type & 0xff;
  return low < sizeof kPrefixes / sizeof kPrefixes[0] ? kPrefixes[low] : "";
}

}  // namespace

TEssentialLines::TEssentialLines() { ++essential; }

TEssentialLines::~TEssentialLines() { --essential; }

TLogManager::TLogManager() = default;

TLogManager::~TLogManager() {
  releaseDefaultInstance(this);
  closeFile();
}

int TLogManager::Init(std::string LogFileFilename, TpfOnWriteLog pfOnWriteLog, void* pUserData,
                      bool AutoHandleOldLogs) {
  std::lock_guard<std::recursive_mutex> lock(mPollMutex);
  this->LogFileFilename = std::move(LogFileFilename);
  this->pfOnWriteLog = pfOnWriteLog;
  this->pUserData = pUserData;
  this->AutoHandleOldLogs = AutoHandleOldLogs;
  OutputToConsole = false;
  mWriteFailed = false;
  mLostLines = 0;
  LastTime = FileOpenTime = FileFlushTime = mFileLookTime = SDL_GetTicks();
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
    if (!entry.path().stem().string().starts_with(logStem)) continue;
    logFiles.emplace_back(entry.last_write_time(), entry.path());
  }
  std::sort(logFiles.begin(), logFiles.end(), [](const auto& a, const auto& b) { return a > b; });
  for (size_t i = kKeptOldLogs; i < logFiles.size(); ++i) fs::remove(logFiles[i].second);
}

int TLogManager::Open() {
  std::lock_guard<std::recursive_mutex> lock(mPollMutex);
  FullLogFileFilename = LogFileFilename;
  const fs::path given(LogFileFilename);
  MyUtils::StringReplace(FullLogFileFilename, ".log", "");
  MyUtils::StringReplace(FullLogFileFilename, ".txt", "");
  const fs::path directory = given.has_parent_path() ? given.parent_path() : fs::current_path();
  if (AutoHandleOldLogs && fs::exists(directory)) removeOldLogs(directory, given.stem().string());

  closeFile();  // while its name is still known
  CurrentDateString = MyUtils::GetCurrentDateString();
  mLogFileLocation = FullLogFileFilename + "_" + CurrentDateString + ".log";
  mLastFile = mLogFileLocation.string();
  if (!mLogFileLocation.empty()) {
    createFile();
    mLimitReached = false;
    if (!openFile())
      KLOG(LogApp, logs::Error, "Can't open log file %s", mLogFileLocation.c_str());
    else if (mWriteFailed)
      resume("\n\n");
    else
      mFileBuffer = "\n\n";
    mFileBytes += mFileBuffer.size();
  }
  if (hLogFile.is_open() || pfOnWriteLog) return 0;
  KLOG(LogApp, logs::Warning, "No channels to output. Will output to console.");
  OutputToConsole = true;
  return -1;
}

void TLogManager::createFolder() {
  std::error_code error;  // a folder that cannot be made shows as a file that cannot be opened
  const fs::path given(LogFileFilename);
  if (given.has_parent_path()) fs::create_directories(given.parent_path(), error);
}

void TLogManager::createFile() {
  std::error_code error;
  if (fs::exists(mLogFileLocation, error)) return;
  createFolder();
  std::ofstream(mLogFileLocation) << "== APP CREATED THIS FILE ==\n";
}

// What is buffered here is handed to the system as it stands: the stream itself keeps nothing, so that after a
// failure nothing is left in it that would be written twice.
bool TLogManager::openFile() {
  hLogFile.rdbuf()->pubsetbuf(nullptr, 0);
  hLogFile.open(mLogFileLocation, std::ios::app);
  mFileBuffer.reserve(2 * kFileBuffer);
  if (!hLogFile.is_open()) return false;
  struct stat status {};
  const bool known = stat(mLogFileLocation.c_str(), &status) == 0;
  mFileDevice = known ? status.st_dev : 0;
  mFileNumber = known ? status.st_ino : 0;
  mFileBytes = known ? static_cast<uintmax_t>(status.st_size) : 0;
  return true;
}

bool TLogManager::closeFile() {
  if (!hLogFile.is_open() || !flushFile()) return false;
  hLogFile.close();
  return true;
}

bool TLogManager::isFileGone() const {
  if (mFileNumber == 0) return false;
  struct stat status {};
  if (stat(mLogFileLocation.c_str(), &status) != 0) return errno == ENOENT;
  return status.st_dev != mFileDevice || status.st_ino != mFileNumber;
}

void TLogManager::replaceFile() {
  hLogFile.close();
  createFile();
  if (!openFile()) {
    KLOG(LogApp, logs::Error, "Can't open log file %s", mLogFileLocation.c_str());
    mWriteFailed = true;
    mEndsInLine = false;
    lose(mLineEnds.size());
    FileOpenTime = SDL_GetTicks();
    mFileBuffer.clear();
    mLineEnds.clear();
    return;
  }
  const std::string before = "\n\n" + stampOf(std::time(nullptr)) + prefixOf(kWarningType) +
                             "The log file was removed or moved away, this one takes its place\n";
  mFileBuffer.insert(0, before);
  for (size_t& end : mLineEnds) end += before.size();
  mFileBytes += mFileBuffer.size();
}

void TLogManager::lose(size_t lines) {
  mAllLostLines += lines;
  // A file that could not be opened from the start is not told of: the console has each line twice then.
  if (mWriteFailed) mLostLines += lines;
}

bool TLogManager::flushFile() {
  if (mFileBuffer.empty()) return true;
  if (isFileGone()) replaceFile();
  if (!hLogFile.is_open()) return false;
  const auto arrived = static_cast<size_t>(
    hLogFile.rdbuf()->sputn(mFileBuffer.data(), static_cast<std::streamsize>(mFileBuffer.size())));
  if (arrived > 0) mEndsInLine = mFileBuffer[arrived - 1] != '\n';
  const bool good = arrived == mFileBuffer.size();
  if (!good) {
    if (!mWriteFailed) KLOG(LogApp, logs::Error, "Can't write log file %s", mLogFileLocation.c_str());
    mWriteFailed = true;
    // A line that lacks nothing but its end is there: it gets that when the file goes on.
    const auto lost = [arrived](size_t end) { return end - 1 > arrived; };
    lose(static_cast<size_t>(std::count_if(mLineEnds.begin(), mLineEnds.end(), lost)));
    FileOpenTime = SDL_GetTicks();
    hLogFile.close();
  }
  mFileBuffer.clear();
  mLineEnds.clear();
  return good;
}

// What was lost is said at once: until that has arrived, no other line would.
void TLogManager::resume(const std::string& before) {
  mFileBuffer = before;
  if (mLostLines > 0)
    mFileBuffer += stampOf(std::time(nullptr)) + prefixOf(kWarningType) +
                   "The log file could not be written, lines lost: " + std::to_string(mLostLines) + "\n";
  if (!flushFile()) return;
  mLostLines = 0;
  mWriteFailed = false;
}

void TLogManager::reopen() {
  if (!MyUtils::IsTime(FileOpenTime, mWriteFailed ? kRetryInterval : kReopenInterval, true)) return;
  if (!openFile() || !mWriteFailed) return;
  if (mLostLines == 0)
    resume("\n\n");  // all that was lost
  else
    resume(mEndsInLine ? "\n" : "");
}

void TLogManager::Close() {
  std::lock_guard<std::recursive_mutex> lock(mPollMutex);
  if (!closeFile()) return;
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
  entry->IsEssential = essential > 0;
  const std::string stamp = stampOf(now);
  entry->Message = stamp + (bAppendPrefix ? prefixOf(LogType) : ": ") + Text;
  if (LogType > kUserTypes) entry->Message.insert(stamp.size(), ": LT_USER_" + std::to_string(LogType));

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

void TLogManager::saveEntry(const TLogEntry& entry) {
  const std::string line = entry.Message + "\n";
  const bool isFull = mDailyLimit > 0 && mFileBytes + line.size() > mDailyLimit;
  if (isFull && !entry.IsEssential && !std::exchange(mLimitReached, true))
    WriteToFile(entry.Message.substr(0, kStampLength) + prefixOf(kWarningType) +
                "The log has as many lines as a day may have, until midnight only starts, ends, crashes and "
                "registrations follow\n");
  if (!mLimitReached || entry.IsEssential)
    WriteToFile(line);
  else
    ++mLinesBeyondLimit;
}

void TLogManager::tellDroppedConsoleLines() {
  if (mDroppedLinesTold || TConsole::Dropped() == 0) return;
  mDroppedLinesTold = true;
  WriteLog(kWarningType, 0UL, "The console does not take all lines: what it does not take is dropped, %lu so far",
           TConsole::Dropped());
}

int TLogManager::Poll() {
  std::lock_guard<std::recursive_mutex> pollLock(mPollMutex);
  if (!initialized) return -1;
  tellDroppedConsoleLines();
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
  while (mLogHistory.size() > kMaxHistory) mLogHistory.pop_front();

  for (const auto& entry : logsToSave) {
    --LinesToGo;
    if (MyUtils::IsTime(LastTime, kDateCheckInterval, true)) switchDate();
    saveEntry(*entry);
    tellListeners(*entry);
  }
  if (hLogFile.is_open()) {
    if (MyUtils::IsTime(mFileLookTime, kRetryInterval, true) && isFileGone()) replaceFile();
    if (MyUtils::IsTime(FileFlushTime, kFlushInterval, true)) flushFile();
  } else {
    reopen();
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
  char buffer[kFormatBuffer] = "";
  std::vsnprintf(buffer, sizeof buffer, pText, arguments);
  _WriteLog(color, LogType, GameId, buffer);
  return 0;
}

void TLogManager::WriteToFile(const std::string& message) {
  std::lock_guard<std::recursive_mutex> lock(mPollMutex);
  const bool isLine = message.ends_with('\n');
  if (!hLogFile.is_open()) {
    std::printf("logman(logfile error): %s\n", message.c_str());
    if (isLine) lose(1);
    return;
  }
  mFileBuffer += message;
  mFileBytes += message.size();
  if (isLine) mLineEnds.push_back(mFileBuffer.size());
  if (mFileBuffer.size() >= kFileBuffer) flushFile();
}

void TLogManager::FlushFile() {
  std::lock_guard<std::recursive_mutex> lock(mPollMutex);
  if (hLogFile.is_open()) flushFile();
}

void TLogManager::WriteLastLine(TLogType LogType, const std::string& Text) {
  constexpr int longestWaitMs = 200;
  std::unique_lock<std::recursive_mutex> lock(mPollMutex, std::defer_lock);
  for (int waited = 0; !lock.try_lock() && waited < longestWaitMs; ++waited) SystemSeams.MicroSleep(1000);
  if (lock) {
    Poll();
    FlushFile();
  }
  const std::string line = stampOf(std::time(nullptr)) + (bAppendPrefix ? prefixOf(LogType) : ": ") + Text + "\n";
  if (const std::string file = mLastFile; !file.empty()) std::ofstream(file, std::ios::app) << line;
  if (OutputToConsole) {
    std::fputs(line.c_str(), stdout);
    std::fflush(stdout);
  }
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
