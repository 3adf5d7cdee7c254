#include <algorithm>
#include <numeric>

#include "tests/vendelo-sdl2/TSoundMachineFixture.h"

namespace vendelo_sdl2 {
namespace {

// What reaches the device, sample by sample.
class SoundSamples : public Sound {
 protected:
  static constexpr Uint32 kFrames = 4000;

  std::shared_ptr<TSoundEffect> loadTone(int loops, bool multiChannelPlay) {
    WriteWav(path("tone.wav"), kFrames);
    return app->LoadSoundEffect(path("tone.wav").c_str(), loops, multiChannelPlay);
  }
  void awaitSilence() {
    settle();
    ASSERT_TRUE(Eventually([] { return Mix_Playing(-1) == 0; }));
  }
  // How many runs of the tone have been heard. Channels add up, so this holds for runs side by side as well.
  static double runs(const std::vector<Sint16>& heard) {
    return std::accumulate(heard.begin(), heard.end(), 0.0) / (double{kLevel} * kFrames * 2);
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
  EXPECT_TRUE(onlyLevels(heard, {kLevel}));
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
  WriteWav(path("tone.wav"), kFrames);
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
    EXPECT_TRUE(onlyLevels(heard, {kLevel, 2 * kLevel}));
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
  EXPECT_TRUE(onlyLevels(heard, {kLevel / 2, kLevel / 4}));
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

}  // namespace
}  // namespace vendelo_sdl2
