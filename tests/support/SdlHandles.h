#pragma once

#include <SDL.h>
#include <dlfcn.h>

#include <map>
#include <mutex>
#include <string>
#include <utility>

// Counts the semaphores, mutexes and threads of SDL that are made and not given back (waited for or detached), in
// front of the library, which calls itself past these. Include it in one file of a program only.
namespace sdlhandles {

// What is alive, by its kind and address.
class Alive {
 public:
  void add(const char* kind, const void* thing) {
    const std::lock_guard<std::mutex> lock(mMutex);
    ++mCounts[{kind, thing}];
  }
  void remove(const char* kind, const void* thing) {
    const std::lock_guard<std::mutex> lock(mMutex);
    const auto found = mCounts.find({kind, thing});
    if (found != mCounts.end() && --found->second == 0) mCounts.erase(found);
  }
  std::map<std::string, int> kinds() const {
    const std::lock_guard<std::mutex> lock(mMutex);
    std::map<std::string, int> sums;
    for (const auto& [key, count] : mCounts) sums[key.first] += count;
    return sums;
  }

 private:
  mutable std::mutex mMutex;
  std::map<std::pair<std::string, const void*>, int> mCounts;
};

inline Alive& alive() {
  static auto& all = *new Alive;
  return all;
}

template <class F>
F next(const char* name) {
  return reinterpret_cast<F>(dlsym(RTLD_NEXT, name));
}

}  // namespace sdlhandles

extern "C" SDL_sem* SDL_CreateSemaphore(Uint32 value) {
  SDL_sem* made = sdlhandles::next<SDL_sem* (*)(Uint32)>("SDL_CreateSemaphore")(value);
  sdlhandles::alive().add("semaphore", made);
  return made;
}
extern "C" void SDL_DestroySemaphore(SDL_sem* semaphore) {
  sdlhandles::alive().remove("semaphore", semaphore);
  sdlhandles::next<void (*)(SDL_sem*)>("SDL_DestroySemaphore")(semaphore);
}
extern "C" SDL_mutex* SDL_CreateMutex(void) {
  SDL_mutex* made = sdlhandles::next<SDL_mutex* (*)()>("SDL_CreateMutex")();
  sdlhandles::alive().add("mutex", made);
  return made;
}
extern "C" void SDL_DestroyMutex(SDL_mutex* mutex) {
  sdlhandles::alive().remove("mutex", mutex);
  sdlhandles::next<void (*)(SDL_mutex*)>("SDL_DestroyMutex")(mutex);
}
extern "C" SDL_Thread* SDL_CreateThread(SDL_ThreadFunction function, const char* name, void* data) {
  SDL_Thread* made = sdlhandles::next<SDL_Thread* (*)(SDL_ThreadFunction, const char*, void*)>("SDL_CreateThread")(
    function, name, data);
  sdlhandles::alive().add("thread", made);
  return made;
}
extern "C" void SDL_WaitThread(SDL_Thread* thread, int* status) {
  sdlhandles::alive().remove("thread", thread);
  sdlhandles::next<void (*)(SDL_Thread*, int*)>("SDL_WaitThread")(thread, status);
}
extern "C" void SDL_DetachThread(SDL_Thread* thread) {
  sdlhandles::alive().remove("thread", thread);
  sdlhandles::next<void (*)(SDL_Thread*)>("SDL_DetachThread")(thread);
}
