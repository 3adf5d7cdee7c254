#pragma once

#include <SDL.h>
#include <memory>

#include "tests/support/DrawnHere.h"
#include "vendelo-sdl2/TAppGuiModule.h"
#include "vendelo-sdl2/TApplication.h"
#include "vendelo-sdl2/TFramePicture.h"
#include "vendelo-sdl2/TTexturePtr.h"

// The smallest application: no window, no logic.
class HarnessApplication : public DrawnHere<vendelo_sdl2::TApplication> {
 public:
  int Init() override { return 0; }
  int RunOnce() override { return 0; }
  int DrawOnce() override { return 0; }
};

// A GUI module whose renderer paints into a surface.
class HarnessGuiModule : public vendelo_sdl2::TAppGuiModule {
 public:
  // The renderer is destroyed with the module.
  explicit HarnessGuiModule(SDL_Renderer* renderer);

  int Load(void*) override { return 0; }
  using TAppGuiModule::serveAndDraw;
};

// Application, module and software renderer for tests of components: no X server, no window, one thread.
//   WidgetHarness harness(200, 100);
//   FakeClock clock(1000);
//   auto* label = harness.add(new Tlabel(...));
//   harness.frame();
//   EXPECT_GOLDEN(harness.renderer(), "components/Label_Plain");
// One at a time, on one thread. Components given to add() are owned, and go with the harness.
class WidgetHarness {
 public:
  WidgetHarness(int width, int height);
  ~WidgetHarness();
  WidgetHarness(const WidgetHarness&) = delete;
  WidgetHarness& operator=(const WidgetHarness&) = delete;

  HarnessApplication& application() { return *mpApplication; }
  HarnessGuiModule& module() { return *mpModule; }
  SDL_Renderer* renderer() const { return mpModule->GetRenderer(); }
  // What has been drawn.
  SDL_Surface* picture() const { return mpPicture; }
  // The colour of a pixel as 0xRRGGBB.
  Uint32 pixel(int x, int y) const;

  // Adds a root component in front of the others.
  template <class T>
  T* add(T* component) {
    return static_cast<T*>(mpModule->AddComponent(component));
  }

  // One frame as in the running program, on the backdrop: what has changed since the last one is drawn into a back
  // buffer, which is then copied to the picture.
  void frame();
  // The colour under the picture of the next frames; a dark blue at first.
  void setBackdrop(SDL_Color colour) { mBackdrop = colour; }

  // A texture of one colour, which belongs to the renderer until the caller destroys it.
  SDL_Texture* makeTexture(int width, int height, SDL_Color colour);

 private:
  HarnessApplication* mpApplication;
  HarnessGuiModule* mpModule;
  SDL_Surface* mpPicture;
  vendelo_sdl2::TTexturePtr mBackBuffer;
  std::unique_ptr<vendelo_sdl2::TFramePicture> mpFrame;
  SDL_Color mBackdrop{24, 32, 56, 255};
};
