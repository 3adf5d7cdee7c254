#include "vendelo-sdl2/TFrameWatch.h"

#include "tests/vendelo-sdl2/TAppGuiModuleFixture.h"
#include "vendelo-sdl2/Drawing.h"

using namespace guitest;

namespace {

TFrameEnd frame(Uint32 now, bool presented) { return {nullptr, nullptr, presented, now, 20}; }

TEST(FrameWatch, CountsFramesAndThoseThatWerePresented) {
  TFrameWatch watch;
  EXPECT_EQ(watch.frames(), 0u);
  watch.frameDone(frame(1000, false));
  EXPECT_EQ(watch.frames(), 1u);
  EXPECT_EQ(watch.presented(), 0u);
  watch.frameDone(frame(1020, true));
  EXPECT_EQ(watch.frames(), 2u);
  EXPECT_EQ(watch.presented(), 1u);
}

TEST(FrameWatch, FrameIsLateWhenTheNextOneIsDueAsWell) {
  TFrameWatch watch;
  watch.frameDone(frame(5000, true));  // what was before the first one is no frame
  watch.frameDone(frame(5039, true));
  EXPECT_EQ(watch.late(), 0u);
  watch.frameDone(frame(5079, true));
  EXPECT_EQ(watch.late(), 1u);
  watch.frameDone(frame(9000, true));
  EXPECT_EQ(watch.late(), 2u);
}

TEST(FrameWatch, LongestFrameCountsFromTheLastTimeItWasTaken) {
  TFrameWatch watch;
  watch.frameDone(frame(5000, true));
  EXPECT_EQ(watch.takeLongestMs(), 0u);
  watch.frameDone(frame(5020, true));
  watch.frameDone(frame(5065, true));
  watch.frameDone(frame(5085, true));
  EXPECT_EQ(watch.takeLongestMs(), 45u);
  EXPECT_EQ(watch.takeLongestMs(), 0u);
  watch.frameDone(frame(5100, true));
  EXPECT_EQ(watch.takeLongestMs(), 15u);
}

TEST(FrameWatch, TickClockMayWrap) {
  TFrameWatch watch;
  watch.frameDone(frame(0xfffffff0, true));
  watch.frameDone(frame(4, true));
  EXPECT_EQ(watch.takeLongestMs(), 20u);
  EXPECT_EQ(watch.late(), 0u);
}

// With the module whose frames are watched.
class WatchedFrames : public AppGuiModule {
 protected:
  WatchedFrames() {
    module->makeBackBuffer(32, 16);
    app.setStatus(TApplication::APP_RUNNING);
    red = texture(renderer, 32, 16, {200, 30, 20, 255});
    add("red")->mOnDraw = [this] { drawing::Copy(renderer, red, nullptr, nullptr); };
  }
  // Asks, and keeps what is given.
  void ask() {
    module->FrameWatch().askForPicture([this](SDL_Surface* surface) {
      ++taken;
      ASSERT_NE(surface, nullptr);
      width = surface->w;
      height = surface->h;
      const auto* pixel = static_cast<const Uint8*>(surface->pixels) + 15 * surface->pitch + 31 * 3;
      corner = {pixel[0], pixel[1], pixel[2], 255};
      SDL_FreeSurface(surface);
    });
  }
  SDL_Texture* red = nullptr;  // goes with the renderer
  int taken = 0, width = 0, height = 0;
  SDL_Color corner{};
};

TEST_F(WatchedFrames, FrameIsCountedAndPresentedOnlyWhileItIsRendered) {
  EXPECT_EQ(module->draw(), 0);
  EXPECT_EQ(module->FrameWatch().frames(), 1u);
  EXPECT_EQ(module->FrameWatch().presented(), 1u);
  module->StopRendering();
  EXPECT_EQ(module->draw(), 0);
  EXPECT_EQ(module->FrameWatch().frames(), 2u);
  EXPECT_EQ(module->FrameWatch().presented(), 1u);
  app.setStatus(TApplication::APP_TERMINATE);
  EXPECT_EQ(module->draw(), 1);
  EXPECT_EQ(module->FrameWatch().frames(), 2u) << "no frame was done";
}

TEST_F(WatchedFrames, RateOfTheModuleSaysWhatIsLate) {
  module->SetTargetFPS(50);
  module->draw();
  clock.advance(39);
  module->draw();
  EXPECT_EQ(module->FrameWatch().late(), 0u);
  clock.advance(40);
  module->draw();
  EXPECT_EQ(module->FrameWatch().late(), 1u);
  EXPECT_EQ(module->FrameWatch().takeLongestMs(), 40u);
}

TEST_F(WatchedFrames, PictureIsThatOfTheNextFrameAndIsGivenOnce) {
  ask();
  EXPECT_EQ(taken, 0);
  module->draw();
  EXPECT_EQ(taken, 1);
  EXPECT_EQ(width, 32);
  EXPECT_EQ(height, 16);
  EXPECT_EQ(corner.r, 200);
  EXPECT_EQ(corner.g, 30);
  EXPECT_EQ(corner.b, 20);
  EXPECT_EQ(SDL_GetRenderTarget(renderer), module->mpBackBuffer.get());
  module->draw();
  EXPECT_EQ(taken, 1);
}

TEST_F(WatchedFrames, PictureIsTheFramesWhateverIsDrawnToAndThatStaysTheTarget) {
  module->draw();
  SDL_Texture* const other = texture(renderer, 32, 16, {1, 2, 3, 255});
  SDL_SetRenderTarget(renderer, other);
  ask();
  module->FrameWatch().frameDone({renderer, module->mpBackBuffer.get(), true, 1000, 20});
  EXPECT_EQ(taken, 1);
  EXPECT_EQ(corner.r, 200);
  EXPECT_EQ(SDL_GetRenderTarget(renderer), other);
  SDL_SetRenderTarget(renderer, module->mpBackBuffer.get());
}

TEST_F(WatchedFrames, LaterWishTakesThePlaceOfAnEarlierOne) {
  int others = 0;
  module->FrameWatch().askForPicture([&](SDL_Surface* surface) { ++others, SDL_FreeSurface(surface); });
  ask();
  module->draw();
  EXPECT_EQ(others, 0);
  EXPECT_EQ(taken, 1);
}

TEST_F(WatchedFrames, PictureWaitsUntilOneIsPresented) {
  module->StopRendering();
  ask();
  module->draw();
  EXPECT_EQ(taken, 0);
  module->StartRendering();
  module->draw();
  EXPECT_EQ(taken, 1);
}

TEST_F(WatchedFrames, PictureStaysThatOfTheScreenWhileNothingIsDrawn) {
  module->draw();
  module->draw();  // in which nothing has changed
  module->StopRendering();
  ask();
  module->draw();
  EXPECT_EQ(taken, 1);
  EXPECT_EQ(corner.r, 200);
}

}  // namespace
