#include "vendelo-sdl2/TSoundMachine.h"

#include <algorithm>
#include <numeric>
#include <thread>

#include "tests/support/LogLines.h"
#include "tests/vendelo-sdl2/TSoundMachineFixture.h"

namespace vendelo_sdl2 {
namespace {

TEST_F(Sound, OpeningReportsBackendsDevicesAndTheFormat) {
  LogLines log;
  testing::internal::CaptureStdout();
  open();
  EXPECT_TRUE(testing::internal::GetCapturedStdout().ends_with("[SDL] Audio driver: dummy"));
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

TEST_F(Sound, AFileThatIsThereAsItsNameStandsGoesBeforeTheAudioPath) {
  open();
  const std::filesystem::path previous = std::filesystem::current_path();
  std::filesystem::create_directories(folder / "sounds");
  WriteWav(path("both.wav"), 100);
  WriteWav(path("sounds/both.wav"), 200);
  WriteWav(path("sounds/one.wav"), 300);
  std::filesystem::current_path(folder);
  app->SetAudioPath("sounds");
  const auto both = app->LoadSoundEffect("both.wav", 0, true);
  const auto one = app->LoadSoundEffect("one.wav", 0, true);
  std::filesystem::current_path(previous);
  ASSERT_NE(both, nullptr);
  ASSERT_NE(one, nullptr);
  EXPECT_EQ(both->pChunk.load()->alen, 100u * 4);
  EXPECT_EQ(one->pChunk.load()->alen, 300u * 4);
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

TEST_F(Sound, WithoutADeviceNothingHasAVolumeOrStops) {
  EXPECT_EQ(app->GetVolume(-1), 0);
  EXPECT_EQ(app->GetVolume(0), 0);
  app->StopSound(-1);
  app->StopSound(0);
  app->SetVolume(50, -1);
  EXPECT_EQ(app->LoadSoundEffect(path("short.wav").c_str(), 0, true), nullptr) << "the mixer needs a device";
  open();
  EXPECT_EQ(app->GetVolume(-1), 50) << "queued for the worker";
  app->CloseAudio();
  EXPECT_EQ(app->GetVolume(-1), 0);
  EXPECT_EQ(app->GetVolume(0), 0);
  app->StopSound(-1);
  app->StopSound(0);
}

TEST_F(Sound, TheEndOfAMixerClosesItsAudio) {
  open();
  const auto effect = app->LoadSoundEffect(path("long.wav").c_str(), 0, true);
  app->Play(effect, 0);
  settle();
  app.reset();
  EXPECT_FALSE(DeviceIsOpen());
  EXPECT_EQ(SDL_WasInit(SDL_INIT_AUDIO), 0u);
}

TEST_F(Sound, CommandsRunInTheirOrderOnOneThreadOfTheirOwn) {
  open();
  std::vector<int> order;
  std::vector<std::thread::id> threads;
  auto worker = holdWorker();
  for (int i = 0; i < 50; ++i)
    app->QueueAudioCommand([&order, &threads, i] {
      order.push_back(i);
      threads.push_back(std::this_thread::get_id());
    });
  EXPECT_TRUE(order.empty());
  worker.set_value();
  settle();
  std::vector<int> expected(50);
  std::iota(expected.begin(), expected.end(), 0);
  EXPECT_EQ(order, expected);
  EXPECT_NE(threads.front(), std::this_thread::get_id());
  EXPECT_EQ(std::count(threads.begin(), threads.end(), threads.front()), 50);
}

TEST_F(Sound, WhatIsQueuedAfterTheWorkersEndIsDroppedByTheNextClose) {
  auto held = std::make_shared<int>(0);
  app->QueueAudioCommand([held] {});
  EXPECT_EQ(held.use_count(), 2);
  app->CloseAudio();
  EXPECT_EQ(held.use_count(), 1);
}

}  // namespace
}  // namespace vendelo_sdl2
