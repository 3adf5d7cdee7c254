#include "common/Logger.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <ctime>

#include "wserver/Timing.h"

// The state is made at program start in the order below and never destroyed, since threads may still log while the
// process ends.
[[gnu::used]] static auto& NumLogCategories =
  *new ThreadSafeProperty<int, std::recursive_mutex>(0);  // nothing changes it
static auto& Categories = *new ThreadSafeProperty<std::map<std::string, logs::LogCategory*>, std::recursive_mutex>;
logs::LogOutputHandler& logs::Logger::Output = *new logs::LogOutputHandler;
LogCategoryLogApp& LogApp = *new LogCategoryLogApp("app");

namespace logs {

size_t Logger::MaxHistoryCacheSize = 100;
ThreadSafeProperty<Logger::HistoryList, std::recursive_mutex>& Logger::CachedHistory =
  *new ThreadSafeProperty<Logger::HistoryList, std::recursive_mutex>;
ThreadSafeProperty<Logger::ComponentMap, std::recursive_mutex>& Logger::Components =
  *new ThreadSafeProperty<Logger::ComponentMap, std::recursive_mutex>;

namespace {

constexpr size_t kFormatBuffer = 4096;

std::string formatted(const char* format, va_list arguments) {
  char buffer[kFormatBuffer];
  const int length = std::vsnprintf(buffer, sizeof buffer, format, arguments);
  if (length <= 0) return "";
  return std::string(buffer, std::min<size_t>(static_cast<size_t>(length), sizeof buffer - 1));
}

void trimHistory(Logger::HistoryList& history, size_t size) {
  while (history.size() > size) history.pop_front();
}

}  // namespace

void Logger::Log(const LogCategory& category, EVerbosity verbosity, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  std::string text = formatted(format, arguments);
  va_end(arguments);
  if (text.empty()) return;
  LogEntry entry(category);
  entry.Verbosity = verbosity;
  entry.Time = wtime::GetSystemTimeMsec();
  entry.Message = std::move(text);
  PushLogEntry(entry);
}

void LoggingComponent::Log(EVerbosity verbosity, const char* format, ...) const {
  va_list arguments;
  va_start(arguments, format);
  const std::string text = formatted(format, arguments);
  va_end(arguments);
  Logger::ComponentLog(this, verbosity, LogPrefix ? LogPrefix() + text : text);
}

void Logger::ComponentLog(const LoggingComponent* component, EVerbosity verbosity, const std::string& message) {
  if (message.empty() || !component) return;
  LogEntry entry(component->GetLogCategory());
  entry.OwnerID = component->LoggingID();
  entry.ComponentName = component->LogComponentName;
  entry.Verbosity = verbosity;
  entry.Time = wtime::GetSystemTimeMsec();
  entry.Message = message;
  PushLogEntry(entry);
}

void Logger::PushLogEntry(const LogEntry& entry) {
  {
    ScopedLock lock(CachedHistory);
    if (MaxHistoryCacheSize != 0) {
      CachedHistory->push_back(std::make_unique<LogEntry>(entry));
      trimHistory(&CachedHistory, MaxHistoryCacheSize);
    }
  }
  if (entry.Category.Output)
    entry.Category.Output(entry);
  else if (Output)
    Output(entry);
  else
    DefaultConsoleOutput(entry);
}

std::string Logger::GeneratePrefix(const LogCategory& category, EVerbosity verbosity) {
  std::string prefix = category.Name;
  if (verbosity != Normal) prefix.append(" | ").append(verbosity._to_string());
  return prefix + ": ";
}

void Logger::DefaultConsoleOutput(const LogEntry& entry) {
  if (entry.Category.IsSupressed(entry.Verbosity)) return;
  const time_t seconds = static_cast<time_t>(entry.Time / 1000);
  tm local{};
  localtime_r(&seconds, &local);
  char stamp[64] = "";
  std::strftime(stamp, sizeof stamp, "%a %b %d %H:%M:%S %Y", &local);
  // The prefix ends in ": " already; readers of these lines know the doubled separator.
  std::printf("%s: %s: %s\n", stamp, GeneratePrefix(entry.Category, entry.Verbosity).c_str(),
              entry.Message.c_str());
}

void Logger::RegisterCategory(LogCategory& category) {
  ScopedLock lock(Categories);
  Categories->emplace(category.Name, &category);
}

void Logger::SetVerbosity(const std::string& categoryName, EVerbosity verbosity) {
  ScopedLock lock(Categories);
  const auto found = Categories->find(categoryName);
  if (found != Categories->end())
    found->second->DefaultFilter = LogVerbosityFilter::MoreSevere_Inclusive(verbosity);
}

bool Logger::CategoryExists(const std::string& categoryName) {
  ScopedLock lock(Categories);
  return Categories->count(categoryName) != 0;
}

void Logger::ListCategories(std::vector<LogCategory*>& out) {
  ScopedLock lock(Categories);
  for (const auto& [name, category] : &Categories) out.push_back(category);
}

uint32_t Logger::RegisterComponent(const LoggingComponent* component) {
  ScopedLock lock(Components);
  const auto id = static_cast<uint32_t>(Components->size() + 1);
  // Where the number is still in use the insertion fails and both share it: components are few and long-lived.
  Components->emplace(id, component);
  return id;
}

void Logger::UnregisterComponent(uint32_t id) {
  ScopedLock lock(Components);
  Components->erase(id);
}

void Logger::UnregisterComponent(uint32_t id, const LoggingComponent* component) {
  ScopedLock lock(Components);
  const auto found = Components->find(id);
  if (found != Components->end() && found->second == component) Components->erase(found);
}

void Logger::SetCachedHistorySize(size_t size) {
  ScopedLock lock(CachedHistory);
  trimHistory(&CachedHistory, MaxHistoryCacheSize);
  MaxHistoryCacheSize = size;
}

size_t Logger::GetHistory(std::vector<LogEntry>& out) {
  ScopedLock lock(CachedHistory);
  for (const auto& entry : &CachedHistory) out.push_back(*entry);
  return CachedHistory->size();
}

}  // namespace logs
