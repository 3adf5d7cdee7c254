#include "tests/support/TestApplication.h"

#include <gtest/gtest.h>
#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <thread>

#include "common/Logger.h"

using namespace vendelo_sdl2;

void Trace::add(const std::string& line) {
  std::lock_guard lock(mMutex);
  mLines.push_back(line);
}

std::vector<std::string> Trace::lines() const {
  std::lock_guard lock(mMutex);
  return mLines;
}

int Trace::count(const std::string& line) const {
  std::lock_guard lock(mMutex);
  return static_cast<int>(std::count(mLines.begin(), mLines.end(), line));
}

int Trace::indexOf(const std::string& line) const {
  std::lock_guard lock(mMutex);
  const auto found = std::find(mLines.begin(), mLines.end(), line);
  return found == mLines.end() ? -1 : static_cast<int>(found - mLines.begin());
}

NoticeCapture::NoticeCapture() {
  logs::Logger::Output = [this](const logs::LogEntry& entry) {
    trace.add(std::string(entry.Verbosity._to_string()) + "|" + entry.Message);
  };
}

NoticeCapture::~NoticeCapture() { logs::Logger::Output = nullptr; }

ScopedEnvironment::ScopedEnvironment(const char* name, const char* value) : mName(name) {
  const char* old = std::getenv(name);
  mWasSet = old != nullptr;
  if (old) mOld = old;
  if (value)
    setenv(name, value, 1);
  else
    unsetenv(name);
}

ScopedEnvironment::~ScopedEnvironment() {
  if (mWasSet)
    setenv(mName.c_str(), mOld.c_str(), 1);
  else
    unsetenv(mName.c_str());
}

TestApplication::~TestApplication() {
  mHooksEnd = true;  // what the hooks refer to may be gone
  EndDrawThread();
  if (!mDestroyCalls) Destroy();
}

int TestApplication::DrawOnce() {
  ++mFrames;
  if (onDrawOnce && !mHooksEnd) return onDrawOnce();
  lockDrawMutex();
  if (auto* gui = static_cast<StubGui*>(GUI())) gui->serveAndDraw(status() == APP_RUNNING, false);
  unlockDrawMutex();
  std::this_thread::sleep_for(std::chrono::milliseconds(1));
  return 0;
}

void TestApplication::Startup() {
  if (onStartup) onStartup();
}

void TestApplication::Destroy() {
  ++mDestroyCalls;
  if (onDestroy && !mHooksEnd) onDestroy();
  if (TAppGuiModule* gui = TakeGUI()) gui->Destroy();
  TApplication::Destroy();
}

void TestApplication::OnAppStateChanged(ApplicationState newState) {
  if (onState && !mHooksEnd) onState(newState);
}

void TestApplication::OnStoreValues(const std::list<TAppParam*>& params) {
  if (onStoreParameters && !mHooksEnd)
    onStoreParameters();
  else
    TApplication::OnStoreValues(params);
}

int TestApplication::_WriteLog(char color, TLogType type, unsigned long gameId, const std::string& text) {
  EXPECT_EQ(0UL, gameId) << "the program's own lines belong to no game: " << text;
  log.add(std::to_string(type) + "|" + text);
  return TApplication::_WriteLog(color, type, gameId, text);
}

std::vector<std::string> TestApplication::moduleNames() const {
  std::vector<std::string> names;
  for (const auto& [module, priority] : ModuleList) names.push_back(module->GetModuleName());
  return names;
}

std::function<int(void*)>& StubGui::onLoad() {
  static auto& hook = *new std::function<int(void*)>;
  return hook;
}

std::function<void()>& StubGui::onMainLogic() {
  static auto& hook = *new std::function<void()>;
  return hook;
}

Trace& StubGui::trace() {
  static auto& lines = *new Trace;
  return lines;
}

int StubGui::Load(void* data) {
  trace().add("load");
  return onLoad() ? onLoad()(data) : 0;
}

void StubGui::mainLogic() {
  if (onMainLogic()) onMainLogic()();
}

int StubGui::Unload() {
  trace().add("unload");
  return 0;
}

int StubGui::Close() {
  trace().add("close");
  return 0;
}
