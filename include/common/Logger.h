#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "common/ThreadSafeProperty.h"

namespace logs {

// How severe a message is: the lower the value, the more severe. An enumeration that knows its own names; the
// values are EVerbosity::Critical (0) to EVerbosity::VeryVerbose (8), and logs::Critical and so on for short.
class EVerbosity {
 public:
  static const EVerbosity Critical, Error, Warning, Important, Info, Normal, Debug, Verbose, VeryVerbose;

  constexpr explicit EVerbosity(int value) : mValue(value) {}

  constexpr int _to_integral() const { return mValue; }
  // The name of the value as in the code; "" for a value outside the table.
  const char* _to_string() const;

  friend constexpr bool operator==(EVerbosity a, EVerbosity b) { return a.mValue == b.mValue; }
  friend constexpr bool operator!=(EVerbosity a, EVerbosity b) { return a.mValue != b.mValue; }
  friend constexpr bool operator>=(EVerbosity a, EVerbosity b) { return a.mValue >= b.mValue; }
  friend constexpr bool operator<(EVerbosity a, EVerbosity b) { return a.mValue < b.mValue; }

 private:
  int mValue;
};

inline constexpr EVerbosity EVerbosity::Critical{0};
inline constexpr EVerbosity EVerbosity::Error{1};
inline constexpr EVerbosity EVerbosity::Warning{2};
inline constexpr EVerbosity EVerbosity::Important{3};
inline constexpr EVerbosity EVerbosity::Info{4};
inline constexpr EVerbosity EVerbosity::Normal{5};
inline constexpr EVerbosity EVerbosity::Debug{6};
inline constexpr EVerbosity EVerbosity::Verbose{7};
inline constexpr EVerbosity EVerbosity::VeryVerbose{8};

inline constexpr EVerbosity Critical = EVerbosity::Critical;
inline constexpr EVerbosity Error = EVerbosity::Error;
inline constexpr EVerbosity Warning = EVerbosity::Warning;
inline constexpr EVerbosity Important = EVerbosity::Important;
inline constexpr EVerbosity Info = EVerbosity::Info;
inline constexpr EVerbosity Normal = EVerbosity::Normal;
inline constexpr EVerbosity Debug = EVerbosity::Debug;
inline constexpr EVerbosity Verbose = EVerbosity::Verbose;
inline constexpr EVerbosity VeryVerbose = EVerbosity::VeryVerbose;

// Which verbosities pass: a bit mask with bit v for the verbosity of value v. Any thread may read and set the mask.
struct LogVerbosityFilter {
  std::atomic<int> Filter{0};
  std::atomic<bool> bWhitelist{false};

  LogVerbosityFilter() = default;
  LogVerbosityFilter(int filter, bool whitelist);
  LogVerbosityFilter(EVerbosity v, bool whitelist);  // the single bit of v
  LogVerbosityFilter(const LogVerbosityFilter& other);
  LogVerbosityFilter& operator=(const LogVerbosityFilter& other);
  LogVerbosityFilter& operator=(int filter);    // the mask itself
  LogVerbosityFilter& operator=(EVerbosity v);  // the single bit of v

  // With bWhitelist false the bits that are set pass, with true they are suppressed: the reverse of what the
  // flag's name says, and the categories rely on it.
  bool IsSupressed(EVerbosity v) const;

  static int All();
  static int MoreSevere_Inclusive(EVerbosity v);  // v and everything more severe
  static int MoreSevere_Exclusive(EVerbosity v);
  static int LessSevere_Inclusive(EVerbosity v);
  static int LessSevere_Exclusive(EVerbosity v);
};

struct LogEntry;
class LoggingComponent;

// Writes one entry. Called on the thread that logs, without a lock; filtering is its own affair.
using LogOutputHandler = std::function<void(const LogEntry&)>;

// What a group of messages has in common: its name, and which verbosities the console shows. A category lives as
// long as the program. DefaultFilter may change at any time; Output is set before other threads log.
class LogCategory {
 public:
  std::string Name;
  LogVerbosityFilter DefaultFilter;
  LogOutputHandler Output;                           // empty: Logger::Output, else the console
  std::map<EVerbosity, unsigned char> ConsoleColor;  // reserved: nothing fills or reads it

  // Lets v and everything more severe pass.
  LogCategory(const std::string& name, EVerbosity v);

  // The least severe verbosity that this build keeps in the program; KLOG asks it before anything is formatted.
  virtual EVerbosity CompileTimeVerbosity() const;
  virtual ~LogCategory();

  LogCategory(const LogCategory&) = delete;
  LogCategory& operator=(const LogCategory&) = delete;

  bool IsSupressed(EVerbosity v) const;
};

// One message with all that an output needs. The category must outlive it.
struct LogEntry {
  uint32_t OwnerID = 0;       // of the LoggingComponent, else 0
  std::string ComponentName;  // likewise, else empty
  const LogCategory& Category;
  EVerbosity Verbosity = Normal;
  std::string Message;
  uint64_t Time = 0;  // milliseconds since the epoch of the system clock

  explicit LogEntry(const LogCategory& category) : Category(category) {}
};

// The process-wide logger of the framework's own notices. It works before any file is open, since it writes to the
// console unless told otherwise. Any thread may log, from static initialisers on; its state is never destroyed.
class Logger {
 public:
  using HistoryList = std::list<std::unique_ptr<LogEntry>>;
  using ComponentMap = std::map<unsigned int, const LoggingComponent*>;

  static size_t MaxHistoryCacheSize;  // entries; guarded by the lock of CachedHistory
  static ThreadSafeProperty<HistoryList, std::recursive_mutex>& CachedHistory;
  static ThreadSafeProperty<ComponentMap, std::recursive_mutex>& Components;
  static LogOutputHandler& Output;  // set before other threads log

  // Formats (cut at 4095 bytes) and pushes an entry; an empty text logs nothing.
  static void Log(const LogCategory& category, EVerbosity verbosity, const char* format, ...)
    __attribute__((format(printf, 3, 4)));
  // Pushes an entry of the component's category; nothing for an empty message or a null component.
  static void ComponentLog(const LoggingComponent* component, EVerbosity verbosity, const std::string& message);
  // Adds a copy to the history, whatever the filters say, then calls the category's output, else Output, else
  // DefaultConsoleOutput.
  static void PushLogEntry(const LogEntry& entry);

  // "name: " for Normal, otherwise "name | Verbosity: ".
  static std::string GeneratePrefix(const LogCategory& category, EVerbosity verbosity);
  // Prints the entry on standard output unless its category suppresses it.
  static void DefaultConsoleOutput(const LogEntry& entry);

  // A second category of one name is not entered. The category must live as long as the program.
  static void RegisterCategory(LogCategory& category);
  // Lets that verbosity and everything more severe pass; an unknown name is ignored.
  static void SetVerbosity(const std::string& categoryName, EVerbosity verbosity);
  static bool CategoryExists(const std::string& categoryName);
  // Appends all categories in the order of their names.
  static void ListCategories(std::vector<LogCategory*>& out);

  // Returns the number of components plus 1. That number can still be in use after an unregistration; the new
  // component then shares it and is not entered.
  static uint32_t RegisterComponent(const LoggingComponent* component);
  static void UnregisterComponent(uint32_t id);
  // Erases the number only where it stands for this very component.
  static void UnregisterComponent(uint32_t id, const LoggingComponent* component);

  // Trims the history to the size valid so far and stores the new one, which takes effect at the next entry.
  static void SetCachedHistorySize(size_t size);
  // Appends copies, oldest first; returns their number.
  static size_t GetHistory(std::vector<LogEntry>& out);
};

// Base of objects that log under a name of their own. Registered from construction to destruction. LogPrefix and
// LogComponentName are set by the object's owner before other threads log through it.
class LoggingComponent {
 public:
  LoggingComponent();
  LoggingComponent(const LoggingComponent&) = delete;
  LoggingComponent& operator=(const LoggingComponent&) = delete;

  virtual const LogCategory& GetLogCategory() const = 0;
  virtual ~LoggingComponent();

  uint32_t LoggingID() const { return mLogID; }
  // The prefix, if set, followed by the formatted text (cut at 4095 bytes).
  void Log(EVerbosity verbosity, const char* format, ...) const __attribute__((format(printf, 3, 4)));

 protected:
  uint32_t mLogID;

 public:
  std::function<std::string()> LogPrefix;  // may be empty
  std::string LogComponentName;
};

}  // namespace logs

// The category of the framework's notices.
class LogCategoryLogApp : public logs::LogCategory {
 public:
  // Lets Normal and everything more severe pass, and registers the category.
  explicit LogCategoryLogApp(const std::string& name);
  logs::EVerbosity CompileTimeVerbosity() const override;
};

// The only instance, named "app".
extern LogCategoryLogApp& LogApp;

// The form of every call: asks the category first, so that a build can strip messages by category.
//   KLOG(LogApp, logs::Warning, "%s is missing", name);
#define KLOG(category, verbosity, ...)                           \
  do {                                                           \
    if ((category).CompileTimeVerbosity() >= (verbosity))        \
      ::logs::Logger::Log((category), (verbosity), __VA_ARGS__); \
  } while (false)
