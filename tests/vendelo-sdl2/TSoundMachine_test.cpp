#include "vendelo-sdl2/TSoundMachine.h"

#include <SDL.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <future>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/LogLines.h"
#include "vendelo-sdl2/TActionMan.h"

namespace vendelo_sdl2 {
namespace {

constexpr Sint16 LEVEL = 12345;

template <class T>
void Put(std::ofstream& file, T value) {
  file.write(reinterpret_cast<const char*>(&value), sizeof value);
}

// A stereo file of one constant level at the mixer's own rate, so that nothing is resampled.
void WriteWav(const std::string& path, Uint32 frames) {
  std::ofstream file(path, std::ios::binary);
  const Uint32 bytes = frames * 4;
  file << "RIFF";
  Put<Uint32>(file, 36 + bytes);
  file << "WAVEfmt ";
  Put<Uint32>(file, 16);
  Put<Uint16>(file, 1);
  Put<Uint16>(file, 2);
  Put<Uint32>(file, 44100);
  Put<Uint32>(file, 44100 * 4);
  Put<Uint16>(file, 4);
  Put<Uint16>(file, 16);
  file << "data";
  Put<Uint32>(file, bytes);
  for (Uint32 i = 0; i < frames * 2; ++i) Put<Sint16>(file, LEVEL);
}

// Asks until it holds, for at most ten seconds.
template <class F>
bool Eventually(F holds) {
  for (int i = 0; i < 5000; ++i) {
    if (holds()) return true;
    SDL_Delay(2);
  }
  return false;
}

bool DeviceIsOpen() {
  int rate = 0;
  Uint16 format = 0;
  int outputs = 0;
  return Mix_QuerySpec(&rate, &format, &outputs) != 0;
}

// A mixer that is part of a bus, as in an application.
class App : public TActionMan, public TSoundMachine {};

class Sound : public testing::Test {
 protected:
  Sound() : folder(std::filesystem::temp_directory_path() / ("sound_" + std::to_string(getpid()))) {
    std::filesystem::create_directories(folder);
    setenv("SDL_AUDIODRIVER", "dummy", 1);
    WriteWav(path("long.wav"), 44100 * 60);
    WriteWav(path("short.wav"), 441);
  }
  ~Sound() override {
    app.reset();
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
  }
  std::string path(const std::string& name) const { return (folder / name).string(); }
  void open() {
    ASSERT_TRUE(app->OpenAudio());
    ASSERT_TRUE(Eventually(DeviceIsOpen));
    settle();
  }
  // Returns when the worker has run everything queued so far, and what that queued in turn.
  void settle() {
    for (int i = 0; i < 2; ++i) {
      std::promise<void> done;
      app->QueueAudioCommand([&done] { done.set_value(); });
      done.get_future().wait();
    }
  }

  const std::filesystem::path folder;
  std::unique_ptr<App> app = std::make_unique<App>();
};

TEST_F(Sound, OpeningReportsBackendsDevicesAndTheFormat) {
  LogLines log;
  testing::internal::CaptureStdout();
  open();
  EXPECT_NE(testing::internal::GetCapturedStdout().find("[SDL] Audio driver: dummy\n"), std::string::npos);
  std::vector<std::string> expected{
    "3 Opening audio device...",
    "3 [SDL] " + std::to_string(SDL_GetNumAudioDrivers()) + " audio backends compiled into SDL:"};
  for (int i = 0; i < SDL_GetNumAudioDrivers(); ++i)
    expected.push_back(std::string("3  '") + SDL_GetAudioDriver(i) + "'");
  expected.push_back("3 [SDL] " + std::to_string(SDL_GetNumAudioDevices(0)) + " audio devices:");
  for (int i = 0; i < SDL_GetNumAudioDevices(0); ++i)
    expected.push_back(std::string("3 ") + SDL_GetAudioDeviceName(i, 0));
  expected.push_back("3 Opened audio at 44100 Hz 16 bit stereo");
  const SDL_version linked = *Mix_Linked_Version();
  const bool same = linked.major == SDL_MIXER_MAJOR_VERSION && linked.minor == SDL_MIXER_MINOR_VERSION &&
                    linked.patch == SDL_MIXER_PATCHLEVEL;
  EXPECT_EQ(log.count("4 SDL_MIXER WARINING:"), same ? 0 : 1);
  if (same) {
    EXPECT_EQ(log.lines(), expected);
  }
  int rate = 0;
  Uint16 format = 0;
  int outputs = 0;
  ASSERT_NE(Mix_QuerySpec(&rate, &format, &outputs), 0);
  EXPECT_EQ(rate, 44100);
  EXPECT_EQ(format, 32784);
  EXPECT_EQ(outputs, 2);
  EXPECT_EQ(Mix_AllocateChannels(-1), 16);
  EXPECT_EQ(app->GetVolume(-1), 100);
}

TEST_F(Sound, WithoutASoundSystemOpeningFails) {
  LogLines log;
  setenv("SDL_AUDIODRIVER", "no such driver", 1);
  EXPECT_FALSE(app->OpenAudio());
  EXPECT_EQ(log.lines(), (std::vector<std::string>{"3 Opening audio device...",
                                                   "5 Can not init SDL_AUDIO subsystem. Audio won't be available.",
                                                   "5 Can not open audio device..."}));
  EXPECT_EQ(app->PlaySound(path("short.wav").c_str(), 0), 0);
}

TEST_F(Sound, ADeviceThatCannotBeOpenedEndsTheWorkerWithAMessage) {
  LogLines log;
  setenv("SDL_AUDIODRIVER", "disk", 1);
  setenv("SDL_DISKAUDIOFILE", "/nonexistent/folder/out.raw", 1);
  EXPECT_TRUE(app->OpenAudio());
  EXPECT_TRUE(Eventually([&] {
    const auto lines = log.lines();
    return !lines.empty() && lines.back().starts_with("5 Could not open audio device.: ");
  }));
  EXPECT_EQ(app->PlaySound(path("short.wav").c_str(), 0), 0);
  EXPECT_EQ(app->GetSoundEffect(path("short.wav").c_str()), nullptr);
  app->CloseAudio();
  setenv("SDL_AUDIODRIVER", "dummy", 1);
  open();
}

TEST_F(Sound, NothingIsPlayedOrLoadedBeforeOpeningOrWhileMutedOrWithoutAName) {
  const std::string file = path("short.wav");
  EXPECT_EQ(app->PlaySound(file.c_str(), 0), 0);
  EXPECT_EQ(app->GetSoundEffect(file.c_str()), nullptr);
  open();
  EXPECT_FALSE(app->IsMuted());
  app->Mute();
  EXPECT_TRUE(app->IsMuted());
  EXPECT_EQ(app->PlaySound(file.c_str(), 0), 0);
  EXPECT_EQ(app->GetSoundEffect(file.c_str()), nullptr);
  app->Unmute();
  EXPECT_EQ(app->PlaySound("", 0), 0);
  EXPECT_EQ(app->PlaySound(nullptr, 0), 0);
  EXPECT_EQ(app->LoadSoundEffect("", 0, true), nullptr);
  EXPECT_EQ(app->GetSoundEffect(""), nullptr);
  EXPECT_EQ(app->PlaySound(file.c_str(), 0), 1);
  EXPECT_NE(app->GetSoundEffect(file.c_str()), nullptr);
}

TEST_F(Sound, AMissingFileIsLoggedWithBothPlaces) {
  LogLines log;
  open();
  app->SetAudioPath("/data/sounds");
  EXPECT_EQ(app->PlaySound("missing.wav", 0), 0);
  EXPECT_EQ(app->GetSoundEffect("missing.wav"), nullptr);
  EXPECT_EQ(log.lines().back(),
            "4 Can not load missing.wav(tried also /data/sounds/missing.wav) : Couldn't open "
            "/data/sounds/missing.wav");
}

TEST_F(Sound, AFileIsFoundInTheAudioPath) {
  open();
  app->SetAudioPath(folder.string());
  const auto effect = app->LoadSoundEffect("short.wav", 3, false);
  ASSERT_NE(effect, nullptr);
  EXPECT_EQ(effect->FileName, "short.wav");
  EXPECT_EQ(effect->LoopCount, 3);
  EXPECT_FALSE(effect->MultiChannelPlay);
  EXPECT_EQ(effect->pChunk.load()->alen, 441u * 4);
  settle();
  EXPECT_EQ(app->GetSoundEffect("short.wav"), effect);
  EXPECT_EQ(app->GetSoundEffect(effect->pChunk.load()), effect);
}

TEST_F(Sound, ASecondLoadReplacesTheChunkOfTheSameEffect) {
  open();
  const std::string file = path("tone.wav");
  WriteWav(file, 100);
  const auto effect = app->LoadSoundEffect(file.c_str(), 0, true);
  Mix_Chunk* const first = effect->pChunk;
  settle();
  WriteWav(file, 200);
  EXPECT_EQ(app->LoadSoundEffect(file.c_str(), 2, false), effect);
  settle();
  EXPECT_EQ(effect->pChunk.load()->alen, 200u * 4);
  EXPECT_EQ(effect->LoopCount, 2);
  EXPECT_FALSE(effect->MultiChannelPlay);
  EXPECT_EQ(app->GetSoundEffect(effect->pChunk.load()), effect);
  if (first != effect->pChunk) {
    EXPECT_EQ(app->GetSoundEffect(first), nullptr);
  }
  std::filesystem::remove(file);
  EXPECT_EQ(app->LoadSoundEffect(file.c_str(), 0, true), nullptr);
  EXPECT_EQ(effect->pChunk.load(), nullptr);
  EXPECT_EQ(app->PlaySound(file.c_str(), 0), 0) << "known, but without a chunk";
}

TEST_F(Sound, ANewEffectOfUnknownLoopsIsLoadedWithNone) {
  open();
  EXPECT_EQ(app->PlaySound(path("short.wav").c_str(), -1), 1);
  EXPECT_EQ(app->GetSoundEffect(path("short.wav").c_str())->LoopCount, 0);
  EXPECT_TRUE(app->GetSoundEffect(path("short.wav").c_str())->MultiChannelPlay);
  EXPECT_EQ(app->PlaySound(path("long.wav").c_str(), 4), 1);
  EXPECT_EQ(app->GetSoundEffect(path("long.wav").c_str())->LoopCount, 4);
}

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
  std::promise<void> go;
  auto gate = go.get_future().share();
  int playing = -1;
  app->QueueAudioCommand([gate] { gate.wait(); });
  app->Play(effect, 0);
  app->QueueAudioCommand([&playing] { playing = Mix_Playing(-1); });
  EXPECT_TRUE(app->RemoveSoundEffect(file.c_str()));
  EXPECT_FALSE(app->RemoveSoundEffect(file.c_str()));
  EXPECT_FALSE(app->RemoveSoundEffect("never loaded"));
  EXPECT_EQ(app->GetSoundEffect(file.c_str()), nullptr);
  EXPECT_NE(effect->pChunk.load(), nullptr) << "live until its turn";
  go.set_value();
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

TEST_F(Sound, ClosingWithoutOpeningAndOpeningTwiceAreNoErrors) {
  app->CloseAudio();
  app->CloseAudio();
  open();
  EXPECT_TRUE(app->OpenAudio()) << "and no second worker";
  const auto effect = app->LoadSoundEffect(path("long.wav").c_str(), 0, true);
  app->Play(effect, 0);
  app->CloseAudio();
  EXPECT_FALSE(DeviceIsOpen());
  EXPECT_EQ(SDL_WasInit(SDL_INIT_AUDIO), 0u);
  EXPECT_EQ(app->GetSoundEffect(path("long.wav").c_str()), nullptr);
  EXPECT_EQ(app->PlaySound(path("long.wav").c_str(), 0), 0);
  open();
  EXPECT_EQ(app->PlaySound(path("short.wav").c_str(), 0), 1) << "and again";
}

TEST_F(Sound, WhatIsQueuedAfterTheWorkersEndIsDroppedByTheNextClose) {
  auto held = std::make_shared<int>(0);
  app->QueueAudioCommand([held] {});
  EXPECT_EQ(held.use_count(), 2);
  app->CloseAudio();
  EXPECT_EQ(held.use_count(), 1);
}

TEST_F(Sound, AnActionGetsItsSound) {
  open();
  app->SetActionSound("JackpotWon", path("short.wav"));
  app->GenerateAction("JackpotWonBig", nullptr, ACTION_ANY);
  app->ProcessActions();
  app->ExecuteActions(ACTION_NORMAL);
  EXPECT_EQ(app->GetSoundEffect(path("short.wav").c_str()), nullptr);
  app->ExecuteActions(ACTION_THREAD_SAFE);
  EXPECT_NE(app->GetSoundEffect(path("short.wav").c_str()), nullptr);
}

TEST_F(Sound, AMixerWithoutABusSaysThatTheActionStaysSilent) {
  LogLines log;
  TSoundMachine alone;
  alone.SetActionSound("JackpotWon", "horn.wav");
  EXPECT_EQ(log.lines(), std::vector<std::string>{"4 No action JackpotWon for sound horn.wav"});
}

// What reaches the device, sample by sample: a run and two repeats from the effect's own loop count.
TEST_F(Sound, TheSamplesReachTheDeviceAsOftenAsTheLoopsSay) {
  setenv("SDL_AUDIODRIVER", "disk", 1);
  setenv("SDL_DISKAUDIOFILE", path("out.raw").c_str(), 1);
  setenv("SDL_DISKAUDIODELAY", "1", 1);
  open();
  constexpr Uint32 FRAMES = 4000;
  WriteWav(path("tone.wav"), FRAMES);
  const auto effect = app->LoadSoundEffect(path("tone.wav").c_str(), 2, false);
  app->Play(effect, -1);
  settle();
  ASSERT_TRUE(Eventually([&] { return !effect->IsPlaying(-1); }));
  app->CloseAudio();
  std::ifstream file(path("out.raw"), std::ios::binary);
  const std::vector<char> raw((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  size_t loud = 0;
  size_t wrong = 0;
  for (size_t i = 0; i + 1 < raw.size(); i += 2) {
    Sint16 sample;
    std::memcpy(&sample, &raw[i], sizeof sample);
    loud += sample == LEVEL;
    wrong += sample != LEVEL && sample != 0;
  }
  EXPECT_EQ(loud, FRAMES * 2 * 3);
  EXPECT_EQ(wrong, 0u);
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

}  // namespace
}  // namespace vendelo_sdl2
