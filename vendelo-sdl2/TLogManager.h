#pragma once

#include <SDL_stdinc.h>
#include <sys/types.h>

#include <atomic>
#include <cstdarg>
#include <cstdint>
#include <ctime>
#include <deque>
#include <filesystem>
#include <fstream>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "common/ThreadSafeProperty.h"

namespace vendelo_sdl2 {

// The low byte selects the prefix of a line: 0, 1 and 8 plain, 2 debug information, 3 information, 4 warning,
// 5 error, 6 debug error, 7 critical, above 8 none at all. Values above 0x10000 are user types.
using TLogType = unsigned int;

// One line of the log.
struct TLogEntry {
  TLogType LogType = 0;
  unsigned long GameId = 0;
  short LogEntryIndex = 0;   // reserved: nothing sets or reads it
  std::string Message;       // the finished line without line end
  char Color = 0;            // 0 none, else an index of the terminal's 256-colour palette
  bool IsEssential = false;  // goes to the file also behind the limit of the day
};

// What the calling thread writes while one of these lives is essential: starts, ends, crashes and registrations.
class TEssentialLines {
 public:
  TEssentialLines();
  ~TEssentialLines();
  TEssentialLines(const TEssentialLines&) = delete;
  TEssentialLines& operator=(const TEssentialLines&) = delete;
};

// Told of every line on the thread that polls; LinesToGo counts the lines behind it in the same Poll.
using TpfOnWriteLog = void (*)(void* pUserData, const TLogEntry& entry, int LinesToGo);

// The application's log. Any thread writes a line, which shows on the console at once and is queued; Poll, on the
// main loop, moves the queue to the dated file, the callbacks and a short history. So no writer waits for the disk.
// Lines written before Init or after Destroy are refused. Lines still queued at Destroy are lost.
// A file that takes no more (the disk is full, the medium gone) is closed, and opened again by a later Poll, at
// most once a second; what it says first is how many lines did not reach it, and those are not kept. A file that
// somebody has removed or moved away is made anew before the next line is written, and within a second without one.
// Init, Destroy,
// Poll, Open, Close, WriteToFile and PopLogHistory belong to the main thread; a private lock lets the teardown and
// a crash handler call them too. Times are milliseconds of the tick clock.
class TLogManager {
 public:
  std::atomic<bool> bAppendPrefix{true};

  TLogManager();
  TLogManager(const TLogManager&) = delete;
  TLogManager& operator=(const TLogManager&) = delete;
  virtual ~TLogManager();

  // Builds and queues the line; every writer ends here. Any thread. -1 when there was no Init, else 0.
  virtual int _WriteLog(char color, TLogType LogType, unsigned long GameId, const std::string& Text);
  // Told of every line in Poll, after the callback; does nothing here.
  virtual void OnWriteLog(const TLogEntry& pLogEntry, int LinesToGo);

  // Opens the day's file and takes lines from now on. The first manager that does becomes logman's. The callback
  // may be null. AutoHandleOldLogs keeps only the 39 newest files of this name; file system errors while the old
  // files are handled leave as std::filesystem::filesystem_error. Returns 0, with or without a file.
  int Init(std::string LogFileFilename, TpfOnWriteLog pfOnWriteLog, void* pUserData, bool AutoHandleOldLogs);
  void Destroy();
  // -1 before Init, else 0. Throws as Init does when the date has changed.
  int Poll();

  // Opens <name without .log and .txt>_<date>.log for appending. -1 when there is neither file nor callback: the
  // console takes over then. Throws as Init does.
  int Open();
  void Close();

  int WriteLog(std::string Text);
  int WriteLog(TLogType LogType, std::string Text);
  int WriteLog(TLogType LogType, unsigned long GameId, const std::string& Text);
  // A line is cut at 2047 bytes. -1 for a null format, else 0. Text from elsewhere goes through "%s".
  int WriteLog(TLogType LogType, unsigned long GameId, const char* pText, ...)
    __attribute__((format(printf, 4, 5)));
  int WriteColoredLog(char color, TLogType LogType, unsigned long GameId, const char* pText, ...)
    __attribute__((format(printf, 5, 6)));
  // The common body of the two forms above.
  int WriteLogV(char color, TLogType LogType, unsigned long GameId, const char* pText, va_list arguments)
    __attribute__((format(printf, 5, 0)));

  // The message as it stands to the file; without a file to standard output, and it is not kept.
  void WriteToFile(const std::string& message);
  // Hands what is written to the system at once, where Poll does it ten times a second.
  void FlushFile();
  // For an end whose other threads hang: this line, and before it what is queued, reach the file that was open
  // last, also after Destroy. Where somebody holds the log for longer than a moment only the line does. Any thread.
  void WriteLastLine(TLogType LogType, const std::string& Text);
  // A day's file takes no more bytes than that: at the limit one line, then only essential ones until the next
  // date. 0, as at the start, is no limit. Before Init.
  void SetDailyLimit(uintmax_t Bytes) { mDailyLimit = Bytes; }
  void SetOutputToConsole(bool ToValue);

  // Takes the oldest of the last 50 lines out; empty when there is none or before Init.
  std::string PopLogHistory();
  // The text of the line written last, without stamp and prefix. Any thread.
  std::string GetLastLog();
  // The path of the present file.
  std::string GetLogFileName();
  // How many lines of the whole run the file has not got: because it could not be written, and because of the
  // limit of the day. Any thread.
  unsigned long LostLines() const { return mAllLostLines; }
  unsigned long LinesBeyondLimit() const { return mLinesBeyondLimit; }

 private:
  void removeOldLogs(const std::filesystem::path& directory, const std::string& logStem);
  // The file as a whole; false when it cannot be opened, or when what is buffered could not be written.
  bool openFile();
  bool closeFile();
  // Hands the buffer to the system. Where that fails the file is closed, and the lines that are not in it are
  // counted.
  bool flushFile();
  // Make the day's file, and its folder, when they are not there.
  void createFile();
  void createFolder();
  // Whether the name of the open file stands for another one now, or for none; and a new one in its place, which
  // gets what is buffered.
  bool isFileGone() const;
  void replaceFile();
  // The entry to the file, if the limit of the day has room for it.
  void saveEntry(const TLogEntry& entry);
  void tellDroppedConsoleLines();
  // The next attempt with a file that is not open, when it is due.
  void reopen();
  // The first text behind a failure, with the count of the lines lost.
  void resume(const std::string& before);
  void lose(size_t lines);
  void switchDate();
  void tellListeners(const TLogEntry& entry);

  std::recursive_mutex mPollMutex;  // guards the fields of the main thread, marked "poll"

  std::string LogFileFilename;                // poll
  std::string FullLogFileFilename;            // poll; without extension
  std::string CurrentDateString;              // poll; the date in the file's name
  std::filesystem::path mLogFileLocation;     // poll
  ThreadSafeProperty<std::string> mLastFile;  // the same, for who does not get the lock
  std::atomic<bool> OutputToConsole{false};
  bool AutoHandleOldLogs = false;  // poll
  std::atomic<int> initialized{0};
  Uint32 LastTime = 0;            // poll; last check of the date
  Uint32 FileOpenTime = 0;        // poll; last attempt to reopen a lost file
  Uint32 FileFlushTime = 0;       // poll
  Uint32 mFileLookTime = 0;       // poll; last look whether the file is still there
  std::ofstream hLogFile;         // poll; unbuffered
  std::string mFileBuffer;        // poll; what the file has not got yet
  std::vector<size_t> mLineEnds;  // poll; places in that buffer behind its lines
  bool mWriteFailed = false;      // poll; since then nothing has reached the file
  bool mEndsInLine = false;       // poll; the file ends in the middle of a line
  unsigned long mLostLines = 0;   // poll; that a failed file has not got
  std::atomic<unsigned long> mAllLostLines{0}, mLinesBeyondLimit{0};
  dev_t mFileDevice = 0;  // poll; with the next one which file is open, 0 and 0 unknown
  ino_t mFileNumber = 0;  // poll
  uintmax_t mDailyLimit = 0;
  uintmax_t mFileBytes = 0;        // poll; in the file and in the buffer
  bool mLimitReached = false;      // poll; and said
  bool mDroppedLinesTold = false;  // poll; those of the console
  ThreadSafeProperty<std::deque<std::shared_ptr<TLogEntry>>, std::recursive_mutex> mLogEntries;
  std::deque<std::shared_ptr<TLogEntry>> mLogHistory;  // poll
  TpfOnWriteLog pfOnWriteLog = nullptr;                // poll
  void* pUserData = nullptr;                           // poll
  std::atomic<time_t> Time{0};                         // stamp of the line written last
  int LinesToGo = 0;                                   // poll
  std::string LastLog;                                 // guarded by the lock of mLogEntries
};

}  // namespace vendelo_sdl2

// The log for code that has no application at hand: the first manager that ran Init. Without one the writers and
// Poll return -1 and GetLastLog is empty. Any thread, Poll as above.
namespace logman {

int WriteLog(std::string Text);
int WriteLog(vendelo_sdl2::TLogType LogType, std::string Text);
int WriteLog(vendelo_sdl2::TLogType LogType, unsigned long GameId, const std::string& Text);
int WriteLog(vendelo_sdl2::TLogType LogType, unsigned long GameId, const char* pText, ...)
  __attribute__((format(printf, 3, 4)));
int WriteColoredLog(char color, vendelo_sdl2::TLogType LogType, unsigned long GameId, const char* pText, ...)
  __attribute__((format(printf, 4, 5)));
int Poll();
std::string GetLastLog();

}  // namespace logman
