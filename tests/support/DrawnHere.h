#pragma once

#include <SDL.h>
#include <functional>

#include "vendelo-sdl2/TAppGuiModule.h"
#include "vendelo-sdl2/TApplication.h"

// An application of that type without a loop and without threads: its draw thread has ended by the time the
// constructor returns, and the constructing thread counts as the draw thread as well as the main thread from then
// on, but inside asMainThread. The state is APP_LOADING; setStatus moves it on at the test's will.
template <class TBase>
class DrawnHere : public TBase {
 public:
  DrawnHere() {
    // Without a GUI module the draw thread ends at once; its place is taken by this thread.
    this->setStatus(TBase::APP_LOADING);
    SDL_WaitThread(this->mpDrawThread.exchange(nullptr), nullptr);
    this->ThreadID_DrawThread = SDL_ThreadID();
  }

  // Makes the module the application's GUI, under the name "GUI1".
  void adopt(vendelo_sdl2::TAppGuiModule* module) {
    module->TAppModule::Init(this, "GUI1", nullptr, -1);
    this->pAppGUI = module;
  }
  // Destroys the GUI module, as the teardown does.
  void destroyGui() {
    if (vendelo_sdl2::TAppGuiModule* module = this->TakeGUI()) module->Destroy();
  }
  // What the step defers to the draw thread waits for the next frame, as in the program.
  void asMainThread(const std::function<void()>& step) {
    this->ThreadID_DrawThread = 0;
    step();
    this->ThreadID_DrawThread = SDL_ThreadID();
  }
};
