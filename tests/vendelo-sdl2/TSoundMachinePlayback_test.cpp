#include <atomic>
#include <climits>
#include <thread>

#include "tests/support/LogLines.h"
#include "tests/vendelo-sdl2/TSoundMachineFixture.h"

namespace vendelo_sdl2 {
namespace {

TEST_F(Sound, AnEffectForOneChannelDoesNotRestartWhileItPlays) {
  open();
  const auto effect = app->LoadSoundEffect(path("long.wav").c_str(), 0, false);
  EXPECT_FALSE(effect->IsPlaying(-1));
  app->Play(effect, 0);
  app->Play(effect, 0);
  settle();
  EXPECT_EQ(Mix_Playing(-1), 1);
  EXPECT_TRUE(effect->IsPlaying(-1));
  EXPECT_TRUE(effect->IsPlaying(0));
  EXPECT_FALSE(effect->IsPlaying(1));
  app->StopSound(-1);
  EXPECT_TRUE(Eventually([&] { return !effect->IsPlaying(-1); }));
  app->Play(effect, 0);
  settle();
  EXPECT_EQ(Mix_Playing(-1), 1);
  const auto many = app->LoadSoundEffect(path("long.wav").c_str(), 0, true);
  EXPECT_EQ(many, effect);
  for (int i = 0; i < 3; ++i) app->Play(many, 0);
  settle();
  EXPECT_EQ(Mix_Playing(-1), 3) << "the reload has stopped the old chunk";
  app->Play(nullptr, 0);
}

TEST_F(Sound, SixteenChannelsPlayAtOnceAndNoMore) {
  open();
  const auto effect = app->LoadSoundEffect(path("long.wav").c_str(), 0, true);
  for (int i = 0; i < 17; ++i) app->Play(effect, 0);
  settle();
  EXPECT_EQ(Mix_Playing(-1), 16);
  for (int channel = 0; channel < 16; ++channel) EXPECT_TRUE(effect->IsPlaying(channel)) << channel;
  EXPECT_FALSE(effect->IsPlaying(16));
  app->StopSound(5);
  EXPECT_TRUE(Eventually([&] { return !effect->IsPlaying(5); }));
  EXPECT_EQ(Mix_Playing(-1), 15);
  app->Play(effect, 0);
  settle();
  EXPECT_TRUE(effect->IsPlaying(5)) << "the free one is taken";
}

TEST_F(Sound, AReloadWhileItPlaysLetsTheEffectPlayAgain) {
  open();
  const auto effect = app->LoadSoundEffect(path("long.wav").c_str(), 0, false);
  app->Play(effect, 0);
  settle();
  app->LoadSoundEffect(path("long.wav").c_str(), 0, false);
  settle();
  EXPECT_FALSE(effect->IsPlaying(-1));
  app->Play(effect, 0);
  settle();
  EXPECT_TRUE(effect->IsPlaying(-1));
}

TEST_F(Sound, TheEndOfASoundFreesItsMark) {
  open();
  const auto effect = app->LoadSoundEffect(path("short.wav").c_str(), 0, false);
  for (int i = 0; i < 3; ++i) {
    app->Play(effect, 0);
    settle();
    EXPECT_TRUE(Eventually([&] { return !effect->IsPlaying(-1) && Mix_Playing(-1) == 0; }));
  }
}

TEST_F(Sound, ARemovedEffectPlaysWhatWasQueuedBefore) {
  open();
  const std::string file = path("long.wav");
  const auto effect = app->LoadSoundEffect(file.c_str(), 0, true);
  settle();
  Mix_Chunk* const chunk = effect->pChunk;
  int playing = -1;
  auto worker = holdWorker();
  app->Play(effect, 0);
  app->QueueAudioCommand([&playing] { playing = Mix_Playing(-1); });
  EXPECT_TRUE(app->RemoveSoundEffect(file.c_str()));
  EXPECT_FALSE(app->RemoveSoundEffect(file.c_str()));
  EXPECT_FALSE(app->RemoveSoundEffect("never loaded"));
  EXPECT_EQ(app->GetSoundEffect(file.c_str()), nullptr);
  EXPECT_NE(effect->pChunk.load(), nullptr) << "live until its turn";
  worker.set_value();
  settle();
  EXPECT_EQ(playing, 1);
  EXPECT_EQ(effect->pChunk.load(), nullptr);
  EXPECT_EQ(app->GetSoundEffect(chunk), nullptr);
  EXPECT_EQ(Mix_Playing(-1), 0);
  EXPECT_FALSE(effect->IsPlaying(-1));
}

TEST_F(Sound, VolumesAreTruncatedPercents) {
  open();
  const struct {
    int percent, mixer, back;
  } cases[] = {{100, 128, 100}, {50, 64, 50}, {33, 42, 32}, {1, 1, 0}, {0, 0, 0}};
  for (const auto& c : cases) {
    app->SetVolume(c.percent, 3);
    settle();
    EXPECT_EQ(Mix_Volume(3, -1), c.mixer);
    EXPECT_EQ(app->GetVolume(3), c.back);
  }
  EXPECT_EQ(app->GetVolume(4), 100) << "the other channels keep theirs";
  app->SetVolume(25, -1);
  settle();
  EXPECT_EQ(app->GetVolume(4), 25);
}

TEST_F(Sound, AnyVolumeIsTaken) {
  open();
  const struct {
    int percent, mixer;
  } cases[] = {{101, 128}, {40, 51}, {16777216, 128}, {40, 51}, {INT_MAX, 128}, {40, 51}, {-1, 51}, {INT_MIN, 51}};
  for (const auto& c : cases) {  // what is below 0 only asks
    app->SetVolume(c.percent, 3);
    settle();
    EXPECT_EQ(Mix_Volume(3, -1), c.mixer) << c.percent;
  }
}

TEST_F(Sound, AnActionGetsItsSound) {
  open();
  const std::string file = path("long.wav");
  const auto run = [this](const char* action) {
    app->GenerateAction(action, nullptr, ACTION_ANY);
    app->ProcessActions();
    app->ExecuteActions(ACTION_NORMAL);
    app->ExecuteActions(ACTION_DRAW);
    settle();
    const int before = Mix_Playing(-1);
    app->ExecuteActions(ACTION_THREAD_SAFE);
    settle();
    return Mix_Playing(-1) - before;
  };
  app->SetActionSound("JackpotWon", file);
  EXPECT_EQ(run("Jackpot"), 0);
  EXPECT_EQ(app->GetSoundEffect(file.c_str()), nullptr);
  EXPECT_EQ(run("JackpotWon"), 1);
  EXPECT_EQ(app->GetSoundEffect(file.c_str())->LoopCount, 0) << "a new effect is loaded without repeats";
  EXPECT_EQ(run("JackpotWonBig"), 1) << "each time, over the first; actions are matched by prefix";
  app->Mute();
  EXPECT_EQ(run("JackpotWon"), 0);
  app->Unmute();
  app->SetActionSound("JackpotWon", path("short.wav"));
  EXPECT_EQ(run("JackpotWon"), 2) << "one action, two sounds";
}

TEST_F(Sound, AMixerWithoutABusSaysThatTheActionStaysSilent) {
  LogLines log;
  TSoundMachine alone;
  alone.SetActionSound("JackpotWon", "horn.wav");
  EXPECT_EQ(log.lines(), std::vector<std::string>{"4 No action JackpotWon for sound horn.wav"});
}

TEST_F(Sound, FourThreadsPlayLoadAndRemoveAtOnce) {
  open();
  std::vector<std::thread> threads;
  std::atomic<int> played{0};
  for (int i = 0; i < 4; ++i)
    threads.emplace_back([&, i] {
      const std::string file = path("own" + std::to_string(i) + ".wav");
      WriteWav(file, 50);
      const std::string common = path("short.wav");
      for (int n = 0; n < 40; ++n) {
        played += app->PlaySound(file.c_str(), 0);
        app->PlaySound(common.c_str(), -1);
        if (n % 10 == 5) app->LoadSoundEffect(file.c_str(), 1, n % 20 == 5);
        if (n % 10 == 9) app->RemoveSoundEffect(file.c_str());
        app->SetVolume(n, i);
        app->GetVolume(i);
      }
      SDL_TLSCleanup();
    });
  for (auto& thread : threads) thread.join();
  settle();
  EXPECT_EQ(played, 4 * 40);
  for (int i = 0; i < 4; ++i)
    EXPECT_EQ(app->GetSoundEffect(path("own" + std::to_string(i) + ".wav").c_str()), nullptr);
}

TEST_F(Sound, SettingsMayChangeWhileOthersPlay) {
  open();
  app->SetAudioPath(folder.string());
  std::atomic<int> players{2};
  std::atomic<int> wrong{0};
  std::vector<std::thread> threads;
  for (int i = 0; i < 2; ++i)
    threads.emplace_back([&] {
      for (int n = 0; n < 60; ++n) {
        const int played = app->PlaySound("short.wav", -1);
        wrong += played != 0 && played != 1;
      }
      --players;
      SDL_TLSCleanup();
    });
  threads.emplace_back([&] {
    while (players > 0) {
      app->Mute();
      app->SetAudioPath("/nowhere at all, and a path long enough to need memory of its own");
      wrong += !app->IsMuted();
      app->SetAudioPath(folder.string());
      app->Unmute();
      app->StopSound(-1);
    }
    SDL_TLSCleanup();
  });
  for (auto& thread : threads) thread.join();
  settle();
  EXPECT_EQ(wrong, 0);
  EXPECT_EQ(app->PlaySound("short.wav", -1), 1);
}

TEST_F(Sound, OpeningAndClosingManyTimesWhileSoundsEnd) {
  const std::string file = path("short.wav");
  for (int round = 0; round < 6; ++round) {
    open();
    for (int i = 0; i < 8; ++i) EXPECT_EQ(app->PlaySound(file.c_str(), 0), 1);
    if (round % 3 == 1) settle();
    if (round % 3 == 2) {
      EXPECT_TRUE(Eventually([] { return Mix_Playing(-1) == 0; }));
    }
    app->CloseAudio();
    EXPECT_FALSE(DeviceIsOpen());
    EXPECT_EQ(app->GetSoundEffect(file.c_str()), nullptr);
  }
}

}  // namespace
}  // namespace vendelo_sdl2
