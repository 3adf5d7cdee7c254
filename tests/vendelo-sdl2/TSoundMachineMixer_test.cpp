// What the log says of a mixer of another version and of other devices than this machine has.
#include <dlfcn.h>
#include <algorithm>
#include <atomic>
#include <optional>

#include "tests/support/LogLines.h"
#include "tests/vendelo-sdl2/TSoundMachineFixture.h"

namespace {

SDL_version linkedVersion;

struct Spec {
  int rate;
  Uint16 format;
  int outputs;
};
std::optional<Spec> device;
bool leavesChannelsSilent = false;
std::atomic<bool> nothingPlays{false};

}  // namespace

// Linked in front of the mixer's own.
extern "C" const SDL_version* Mix_Linked_Version(void) { return &linkedVersion; }

extern "C" int Mix_QuerySpec(int* rate, Uint16* format, int* outputs) {
  if (!device) return 0;
  *rate = device->rate;
  *format = device->format;
  *outputs = device->outputs;
  return 1;
}

// As of a mixer whose new channels are not at their full volume.
extern "C" int Mix_AllocateChannels(int channels) {
  const auto real = reinterpret_cast<int (*)(int)>(dlsym(RTLD_NEXT, "Mix_AllocateChannels"));
  const int allocated = real(channels);
  if (leavesChannelsSilent && channels > 0) Mix_Volume(-1, 0);
  return allocated;
}

// As where every sound is over by the time somebody asks.
extern "C" int Mix_Playing(int channel) {
  static const auto real = reinterpret_cast<int (*)(int)>(dlsym(RTLD_NEXT, "Mix_Playing"));
  return nothingPlays ? 0 : real(channel);
}

namespace vendelo_sdl2 {
namespace {

class SoundMixer : public Sound {
 protected:
  void SetUp() override {
    device.reset();
    SDL_MIXER_VERSION(&linkedVersion);
  }
  // The lines of an opening and closing.
  std::vector<std::string> opened() {
    LogLines log;
    EXPECT_TRUE(app->OpenAudio());
    settle();
    app->CloseAudio();
    return log.lines();
  }
};

TEST_F(SoundMixer, TheVersionItWasCompiledWithIsNotWorthALine) {
  for (const auto& line : opened()) EXPECT_NE(line[0], '4') << line;
}

TEST_F(SoundMixer, AnyOtherVersionIsAWarningAndNoMore) {
  const std::string compiled = std::to_string(SDL_MIXER_MAJOR_VERSION) + "." +
                               std::to_string(SDL_MIXER_MINOR_VERSION) + "." + std::to_string(SDL_MIXER_PATCHLEVEL);
  for (Uint8 SDL_version::*part : {&SDL_version::major, &SDL_version::minor, &SDL_version::patch}) {
    SDL_MIXER_VERSION(&linkedVersion);
    ++(linkedVersion.*part);
    const std::string linked = std::to_string(linkedVersion.major) + "." + std::to_string(linkedVersion.minor) +
                               "." + std::to_string(linkedVersion.patch);
    const auto lines = opened();
    const auto first = std::find(lines.begin(), lines.end(), "4 SDL_MIXER WARINING:");
    ASSERT_GE(lines.end() - first, 3);
    EXPECT_EQ(first[1], "4 **compiled with SDL_mixer version: " + compiled);
    EXPECT_EQ(first[2], "4 **running with SDL_mixer version: " + linked);
  }
}

TEST_F(SoundMixer, TheDeviceIsReportedWithRateBitsAndSpeakers) {
  const struct {
    Spec spec;
    const char* line;
  } rows[] = {{{22050, AUDIO_U8, 0}, "3 Opened audio at 22050 Hz 8 bit mono"},
              {{22050, AUDIO_S8, 1}, "3 Opened audio at 22050 Hz 8 bit mono"},
              {{44100, AUDIO_S16SYS, 2}, "3 Opened audio at 44100 Hz 16 bit stereo"},
              {{48000, AUDIO_F32SYS, 3}, "3 Opened audio at 48000 Hz 32 bit surround"},
              {{96000, AUDIO_S32MSB, 6}, "3 Opened audio at 96000 Hz 32 bit surround"}};
  for (const auto& row : rows) {
    device = row.spec;
    EXPECT_EQ(opened().back(), row.line);
  }
}

TEST_F(SoundMixer, ASoundThatIsOverBeforeItIsMarkedDoesNotCountAsPlaying) {
  device = Spec{44100, AUDIO_S16SYS, 2};
  ASSERT_TRUE(app->OpenAudio());
  settle();
  const auto effect = app->LoadSoundEffect(path("long.wav").c_str(), 0, false);
  ASSERT_TRUE(effect);
  settle();
  nothingPlays = true;
  app->Play(effect, 0);
  settle();
  EXPECT_FALSE(effect->IsPlaying(-1));
  nothingPlays = false;
  app->Play(effect, 0);
  settle();
  EXPECT_TRUE(effect->IsPlaying(-1));
  app->CloseAudio();
}

TEST_F(SoundMixer, EveryChannelBeginsAtFullVolume) {
  leavesChannelsSilent = true;
  device = Spec{44100, AUDIO_S16SYS, 2};
  ASSERT_TRUE(app->OpenAudio());
  settle();
  leavesChannelsSilent = false;
  for (int channel = 0; channel < 16; ++channel) EXPECT_EQ(app->GetVolume(channel), 100) << channel;
  app->CloseAudio();
}

}  // namespace
}  // namespace vendelo_sdl2
