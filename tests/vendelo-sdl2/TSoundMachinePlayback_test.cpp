#include <algorithm>
#include <atomic>
#include <numeric>
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

// What reaches the device, sample by sample.
class SoundSamples : public Sound {
 protected:
  static constexpr Uint32 FRAMES = 4000;

  std::shared_ptr<TSoundEffect> loadTone(int loops, bool multiChannelPlay) {
    WriteWav(path("tone.wav"), FRAMES);
    return app->LoadSoundEffect(path("tone.wav").c_str(), loops, multiChannelPlay);
  }
  void awaitSilence() {
    settle();
    ASSERT_TRUE(Eventually([] { return Mix_Playing(-1) == 0; }));
  }
  // How many runs of the tone have been heard. Channels add up, so this holds for runs side by side as well.
  static double runs(const std::vector<Sint16>& heard) {
    return std::accumulate(heard.begin(), heard.end(), 0.0) / (double{LEVEL} * FRAMES * 2);
  }
  // Whether each sample is silent or of one of these levels.
  static bool onlyLevels(const std::vector<Sint16>& heard, const std::vector<int>& levels) {
    return std::all_of(heard.begin(), heard.end(), [&](int sample) {
      return sample == 0 || std::find(levels.begin(), levels.end(), sample) != levels.end();
    });
  }
};

TEST_F(SoundSamples, AnEffectRepeatsAsOftenAsItsOwnLoopsSay) {
  openDisk();
  app->Play(loadTone(2, false), -1);
  awaitSilence();
  const auto heard = samples();
  EXPECT_EQ(runs(heard), 3);
  EXPECT_TRUE(onlyLevels(heard, {LEVEL}));
}

TEST_F(SoundSamples, LoopsOfAPlayGoBeforeThoseOfTheEffect) {
  openDisk();
  const auto tone = loadTone(3, false);
  app->Play(tone, 0);
  awaitSilence();
  EXPECT_EQ(app->PlaySound(path("tone.wav").c_str(), 1), 1);
  awaitSilence();
  EXPECT_EQ(app->PlaySound(path("tone.wav").c_str(), -1), 1);
  awaitSilence();
  EXPECT_EQ(runs(samples()), 1 + 2 + 4);
  EXPECT_EQ(tone->LoopCount, 3);
}

TEST_F(SoundSamples, ANewSoundOfUnknownLoopsIsHeardOnce) {
  openDisk();
  WriteWav(path("tone.wav"), FRAMES);
  EXPECT_EQ(app->PlaySound(path("tone.wav").c_str(), -1), 1);
  awaitSilence();
  EXPECT_EQ(runs(samples()), 1);
}

TEST_F(SoundSamples, OnlyAnEffectForManyChannelsIsHeardTwiceAtOnce) {
  for (const bool many : {false, true}) {
    openDisk();
    const auto tone = loadTone(0, many);
    auto worker = holdWorker();
    app->Play(tone, 0);
    app->Play(tone, 0);
    worker.set_value();
    awaitSilence();
    const auto heard = samples();
    EXPECT_EQ(runs(heard), many ? 2 : 1);
    EXPECT_TRUE(onlyLevels(heard, {LEVEL, 2 * LEVEL}));
  }
}

TEST_F(SoundSamples, VolumesAreHeard) {
  openDisk();
  app->SetVolume(50, 0);
  app->SetVolume(25, 1);
  const auto tone = loadTone(0, true);
  app->Play(tone, 0);
  awaitSilence();
  app->SetVolume(25, -1);
  app->Play(tone, 0);
  awaitSilence();
  const auto heard = samples();
  EXPECT_EQ(runs(heard), 0.75);
  EXPECT_TRUE(onlyLevels(heard, {LEVEL / 2, LEVEL / 4}));
}

TEST_F(SoundSamples, WhatPlaysGoesOnWhileMuted) {
  openDisk();
  const auto tone = loadTone(1, true);
  auto worker = holdWorker();
  EXPECT_EQ(app->PlaySound(path("tone.wav").c_str(), -1), 1);
  app->Mute();
  EXPECT_EQ(app->PlaySound(path("tone.wav").c_str(), -1), 0);
  worker.set_value();
  awaitSilence();
  EXPECT_EQ(runs(samples()), 2) << "the one that was queued before, with its repeat";
}

TEST_F(SoundSamples, PlayItselfDoesNotAskWhetherWeAreMuted) {
  openDisk();
  app->Mute();
  app->Play(loadTone(0, true), 0);
  awaitSilence();
  EXPECT_EQ(runs(samples()), 1);
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
