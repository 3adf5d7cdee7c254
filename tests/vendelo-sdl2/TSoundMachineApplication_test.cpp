#include "tests/support/TestApplication.h"
#include "tests/vendelo-sdl2/TSoundMachineFixture.h"

namespace vendelo_sdl2 {
namespace {

// The code that raises the action knows nothing of the sound; the application's own loop brings them together, and
// its end closes the audio.
TEST_F(Sound, AnApplicationsLoopPlaysTheSoundOfAnActionAndItsEndClosesTheAudio) {
  app.reset();
  SeamsGuard seams;
  NoticeCapture notices;
  TestApplication application;
  application.SetLogicInterval(0);
  application.SetActionSound("JackpotWon", path("long.wav"));
  ASSERT_TRUE(application.OpenAudio());
  ASSERT_TRUE(Eventually(DeviceIsOpen));
  const Uint32 start = SDL_GetTicks();
  bool raised = false;
  int heard = 0;
  application.onRunOnce = [&] {
    if (!raised) application.GenerateAction("JackpotWon", nullptr, ACTION_ANY);
    raised = true;
    heard = Mix_Playing(-1);
    if (heard > 0 || SDL_GetTicks() - start > 10000) application.terminate(DEFAULT, false);
    return 0;
  };
  application.setStatus(TApplication::APP_RUNNING);
  application.MainLoop();
  EXPECT_EQ(heard, 1);
  EXPECT_EQ(application.destroyCalls(), 1);
  EXPECT_FALSE(DeviceIsOpen());
  EXPECT_EQ(SDL_WasInit(SDL_INIT_AUDIO), 0u);
}

TEST_F(Sound, AnApplicationWithoutSoundEndsWithoutIt) {
  app.reset();
  SeamsGuard seams;
  NoticeCapture notices;
  TestApplication application;
  application.onRunOnce = [&] {
    EXPECT_EQ(application.PlaySound(path("short.wav").c_str(), 0), 0);
    application.terminate(DEFAULT, false);
    return 0;
  };
  application.setStatus(TApplication::APP_RUNNING);
  application.MainLoop();
  EXPECT_EQ(application.destroyCalls(), 1);
  EXPECT_EQ(application.GetSoundEffect(path("short.wav").c_str()), nullptr);
}

}  // namespace
}  // namespace vendelo_sdl2
