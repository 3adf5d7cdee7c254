#pragma once

#include <SDL_mixer.h>

#include <atomic>
#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <queue>
#include <set>
#include <string>
#include <thread>

#include "common/ThreadSafeProperty.h"

namespace vendelo_sdl2 {

// A loaded sound file and the channels that play it. Shared by the machine, its queued commands and callers; any
// thread.
class TSoundEffect {
 public:
  TSoundEffect() = default;
  // Frees the chunk.
  ~TSoundEffect();
  TSoundEffect(const TSoundEffect&) = delete;
  TSoundEffect& operator=(const TSoundEffect&) = delete;

  // Whether this channel plays the effect; with -1, whether any does.
  bool IsPlaying(int channel) const;
  void SetPlaying(int channel, bool playing);

  std::string FileName;  // set once, before the effect is shared
  std::atomic<Mix_Chunk*> pChunk{nullptr};
  std::atomic<int> LoopCount{0};
  std::atomic<bool> MultiChannelPlay{false};

 private:
  mutable std::mutex mChannelsMutex;  // never held across a call of the mixer
  std::set<int> playingOnChannels;    // under mChannelsMutex
};

// Plays named sound files. One worker thread, fed by a queue of commands, makes the mixer calls that touch
// playback; it exists from OpenAudio to CloseAudio.
//
// Any thread may call everything but OpenAudio and CloseAudio, which belong to the main thread. A file that cannot
// be loaded is logged; without an open device nothing is loaded or played.
class TSoundMachine {
 public:
  TSoundMachine();
  // Closes the audio.
  virtual ~TSoundMachine();
  TSoundMachine(const TSoundMachine&) = delete;
  TSoundMachine& operator=(const TSoundMachine&) = delete;

  // Starts SDL's audio and the worker, which opens the device soon after. False when there is no audio. True, with
  // nothing done, when it is open already.
  bool OpenAudio();
  // Ends the worker, lets go of the effects and quits SDL's audio. Nothing to undo is no error.
  void CloseAudio();

  // The folder before file names that are not found as they stand.
  void SetAudioPath(std::string Path);
  // While muted, no sound is started; what plays goes on.
  void Mute() { Muted = true; }
  void Unmute() { Muted = false; }
  bool IsMuted() const { return Muted; }
  // Plays `sound` whenever the action is generated.
  void SetActionSound(const std::string& action, const std::string& sound);

  // 1 when the sound was queued, else 0. Loads the file when it is new. `LoopCount` are repeats after the first
  // run; -1 takes the effect's own.
  int PlaySound(const char* FileName, int LoopCount);
  // Stops a channel, all with -1.
  void StopSound(int channel);
  // Loads the file, anew when the effect exists. Null for an empty name or a file that cannot be loaded.
  std::shared_ptr<TSoundEffect> LoadSoundEffect(const char* FileName, int LoopCount, bool MultiChannelPlay);
  // Forgets the effect; its chunk is freed once the commands queued before have run. False when there is none.
  bool RemoveSoundEffect(const char* FileName);
  std::shared_ptr<TSoundEffect> GetSoundEffect(const char* FileName);
  std::shared_ptr<TSoundEffect> GetSoundEffect(Mix_Chunk* pChunk);
  // Queues the effect; one without MultiChannelPlay does not start while it plays.
  void Play(std::shared_ptr<TSoundEffect> sound, int loops);
  // Volume of a channel, all with -1, in percent; 0 without an open device.
  void SetVolume(int percent, int channel);
  int GetVolume(int channel) const;

  void QueueAudioCommand(const std::function<void()>& Command);
  void AudioWorkerThread();

 private:
  using TSoundEffects = std::map<std::string, std::shared_ptr<TSoundEffect>>;
  using TAudioCommands = std::queue<std::function<void()>>;

  void ReportBackends();
  void DropChunk(Mix_Chunk* pChunk);

  std::atomic<bool> Muted{false};
  std::string AudioPath;  // under mSoundMutex
  std::atomic<bool> bShouldQuit{false};
  std::thread AudioThread;
  ThreadSafeProperty<TAudioCommands, std::mutex> AudioCommands;
  std::condition_variable AudioCommandConditionVariable;
  ThreadSafeProperty<TSoundEffects> SoundEffects;
  std::map<Mix_Chunk*, std::shared_ptr<TSoundEffect>> SoundEffectMap;  // under mSoundMutex
  mutable std::mutex mSoundMutex;  // the mixer's callback takes it, so it is never held across a call of the mixer
};

}  // namespace vendelo_sdl2
