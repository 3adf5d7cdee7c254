#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <thread>

#include "tests/support/LogLines.h"
#include "vendelo-sdl2/TActionMan.h"

// What the tests of the action bus share.
namespace bustest {

using namespace vendelo_sdl2;

using Handler = TActionHandler;

// Opens what tests look at, and writes down what ran.
class Bus : public TActionMan {
 public:
  using TActionMan::ActionGenerated;
  using TActionMan::ActionListMutex;
  using TActionMan::ActionQueueMutex;
  using TActionMan::ToRunMutex;

  // A handler that adds `mark` to the record.
  TAction* listen(const std::string& name, const std::string& mark, ActionHandleType type = ACTION_NORMAL,
                  Handler::TAHType kind = Handler::ahtExecuteEndless) {
    return AddActionListener(name, new TahLambda([this, mark](std::string, void*) { ran += mark; }, kind), type);
  }
  // Generates, matches and runs the type's queue; what ran.
  std::string fire(const std::string& name, ActionHandleType filter = ACTION_ANY,
                   ActionHandleType type = ACTION_NORMAL) {
    ran.clear();
    GenerateAction(name, nullptr, filter);
    ProcessActions();
    ExecuteActions(type);
    return ran;
  }

  std::string ran;
};

// Tells its death.
class Mortal : public Handler {
 public:
  Mortal(int& deaths, TAHType kind, void* object = nullptr) : Handler(object, kind), mDeaths(deaths) {}
  ~Mortal() override { ++mDeaths; }
  void execute(std::string, void*) override {
    ++runs;
    if (onRun) onRun();
    alive = 1234;
  }
  int runs = 0;
  int alive = 0;
  std::function<void()> onRun;

 private:
  int& mDeaths;
};

// Whether another thread could not take the mutex now.
inline bool IsHeld(SDL_mutex* mutex) {
  bool held = false;
  std::thread([&] {
    held = SDL_TryLockMutex(mutex) != 0;
    if (!held) SDL_UnlockMutex(mutex);
  }).join();
  return held;
}

struct Target {
  int small() { return ++calls; }
  void large(std::string name, void* data, void* user) { text = name, seen = data, seenUser = user; }
  int calls = 0;
  std::string text;
  void* seen = nullptr;
  void* seenUser = nullptr;
};

}  // namespace bustest
