#include "common/Logger.h"

namespace logs {

namespace {

constexpr const char* kNames[] = {"Critical", "Error", "Warning", "Important",  "Info",
                                  "Normal",   "Debug", "Verbose", "VeryVerbose"};
constexpr int kNumVerbosities = sizeof kNames / sizeof kNames[0];

}  // namespace

const char* EVerbosity::_to_string() const { return mValue >= 0 && mValue < kNumVerbosities ? kNames[mValue] : ""; }

LogVerbosityFilter::LogVerbosityFilter(int filter, bool whitelist) : Filter(filter), bWhitelist(whitelist) {}

LogVerbosityFilter::LogVerbosityFilter(EVerbosity v, bool whitelist)
  : Filter(1 << v._to_integral()), bWhitelist(whitelist) {}

LogVerbosityFilter::LogVerbosityFilter(const LogVerbosityFilter& other)
  : Filter(other.Filter.load()), bWhitelist(other.bWhitelist.load()) {}

LogVerbosityFilter& LogVerbosityFilter::operator=(const LogVerbosityFilter& other) {
  Filter = other.Filter.load();
  bWhitelist = other.bWhitelist.load();
  return *this;
}

LogVerbosityFilter& LogVerbosityFilter::operator=(int filter) {
  Filter = filter;
  return *this;
}

LogVerbosityFilter& LogVerbosityFilter::operator=(EVerbosity v) {
  Filter = 1 << v._to_integral();
  return *this;
}

bool LogVerbosityFilter::IsSupressed(EVerbosity v) const {
  const bool bit = (Filter >> v._to_integral()) & 1;
  return bWhitelist ? bit : !bit;
}

int LogVerbosityFilter::All() { return (1 << kNumVerbosities) - 1; }
int LogVerbosityFilter::MoreSevere_Inclusive(EVerbosity v) { return (1 << (v._to_integral() + 1)) - 1; }
int LogVerbosityFilter::MoreSevere_Exclusive(EVerbosity v) { return (1 << v._to_integral()) - 1; }
int LogVerbosityFilter::LessSevere_Inclusive(EVerbosity v) { return All() & ~MoreSevere_Exclusive(v); }
int LogVerbosityFilter::LessSevere_Exclusive(EVerbosity v) { return All() & ~MoreSevere_Inclusive(v); }

LogCategory::LogCategory(const std::string& name, EVerbosity v)
  : Name(name), DefaultFilter(LogVerbosityFilter::MoreSevere_Inclusive(v), false) {}

EVerbosity LogCategory::CompileTimeVerbosity() const { return VeryVerbose; }

LogCategory::~LogCategory() = default;

bool LogCategory::IsSupressed(EVerbosity v) const { return DefaultFilter.IsSupressed(v); }

LoggingComponent::LoggingComponent() : mLogID(Logger::RegisterComponent(this)) {}

LoggingComponent::~LoggingComponent() {
  if (mLogID) Logger::UnregisterComponent(mLogID, this);
}

}  // namespace logs

LogCategoryLogApp::LogCategoryLogApp(const std::string& name) : logs::LogCategory(name, logs::Normal) {
  logs::Logger::RegisterCategory(*this);
}

logs::EVerbosity LogCategoryLogApp::CompileTimeVerbosity() const { return logs::VeryVerbose; }
