#pragma once

#include <SDL.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <future>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "vendelo-sdl2/TActionMan.h"
#include "vendelo-sdl2/TSoundMachine.h"

// A mixer that is part of a bus, as in an application.
class SoundApp : public vendelo_sdl2::TActionMan, public vendelo_sdl2::TSoundMachine {};

// A mixer on SDL's "dummy" driver and two sound files: long.wav plays for 20 seconds, short.wav for 10
// milliseconds.
class Sound : public testing::Test {
 protected:
  static constexpr Sint16 kLevel = 0x3000;  // of every sample; half of it and twice of it are whole and in range

  Sound() : folder(std::filesystem::temp_directory_path() / ("sound_" + std::to_string(getpid()))) {
    std::filesystem::create_directories(folder);
    setenv("SDL_AUDIODRIVER", "dummy", 1);
    WriteWav(path("long.wav"), 44100 * 20);
    WriteWav(path("short.wav"), 441);
  }
  ~Sound() override {
    app.reset();
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
  }

  // A stereo file of one constant level at the mixer's own rate, so that nothing is resampled.
  static void WriteWav(const std::string& file, Uint32 frames) {
    const Uint32 bytes = frames * 4;
    const struct {
      char riff[4] = {'R', 'I', 'F', 'F'};
      Uint32 size;
      char wave[8] = {'W', 'A', 'V', 'E', 'f', 'm', 't', ' '};
      Uint32 formatSize = 16;
      Uint16 pcm = 1, outputs = 2;
      Uint32 rate = 44100, bytesPerSecond = 44100 * 4;
      Uint16 bytesPerFrame = 4, bits = 16;
      char data[4] = {'d', 'a', 't', 'a'};
      Uint32 dataSize;
    } header{.size = 36 + bytes, .dataSize = bytes};
    static_assert(sizeof header == 44);
    const std::vector<Sint16> samples(frames * 2, kLevel);
    std::ofstream stream(file, std::ios::binary);
    stream.write(reinterpret_cast<const char*>(&header), sizeof header);
    stream.write(reinterpret_cast<const char*>(samples.data()), bytes);
  }

  // Asks until it holds, for at most ten seconds.
  template <class F>
  static bool Eventually(F holds) {
    for (int i = 0; i < 5000; ++i) {
      if (holds()) return true;
      SDL_Delay(2);
    }
    return false;
  }

  static bool DeviceIsOpen() {
    int rate = 0;
    Uint16 format = 0;
    int outputs = 0;
    return Mix_QuerySpec(&rate, &format, &outputs) != 0;
  }

  std::string path(const std::string& name) const { return (folder / name).string(); }

  void open() {
    ASSERT_TRUE(app->OpenAudio());
    ASSERT_TRUE(Eventually(DeviceIsOpen));
    settle();
  }

  // Opens a device that writes what it is given to out.raw.
  void openDisk() {
    setenv("SDL_AUDIODRIVER", "disk", 1);
    setenv("SDL_DISKAUDIOFILE", path("out.raw").c_str(), 1);
    setenv("SDL_DISKAUDIODELAY", "1", 1);
    open();
  }

  // Closes that device; the samples that have reached it.
  std::vector<Sint16> samples() {
    app->CloseAudio();
    std::ifstream file(path("out.raw"), std::ios::binary);
    const std::vector<char> raw((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    std::vector<Sint16> result(raw.size() / sizeof(Sint16));
    std::memcpy(result.data(), raw.data(), result.size() * sizeof(Sint16));
    return result;
  }

  // Returns when the worker has run everything queued so far, and what that queued in turn.
  void settle() {
    for (int i = 0; i < 2; ++i) {
      std::promise<void> done;
      app->QueueAudioCommand([&done] { done.set_value(); });
      done.get_future().wait();
    }
  }

  // The worker waits until the result gets its value.
  std::promise<void> holdWorker() {
    std::promise<void> go;
    app->QueueAudioCommand([gate = go.get_future().share()] { gate.wait(); });
    return go;
  }

  const std::filesystem::path folder;
  std::unique_ptr<SoundApp> app = std::make_unique<SoundApp>();
};
