#include "vendelo-sdl2/TSoundMachine.h"

#include <SDL.h>

#include <cstdio>
#include <utility>

#include "vendelo-sdl2/Saturate.h"
#include "vendelo-sdl2/TActionMan.h"
#include "vendelo-sdl2/TLogManager.h"

namespace vendelo_sdl2 {

namespace {

constexpr int kAudioRate = 44100;
constexpr Uint16 kAudioFormat = AUDIO_S16SYS;
constexpr int kAudioOutputs = 2;
constexpr int kAudioChunkSize = 1024;
constexpr int kMixerChannels = 16;
constexpr double kFullVolume = 128.0;

constexpr TLogType kLogInfo = 3;
constexpr TLogType kLogWarning = 4;
constexpr TLogType kLogError = 5;

std::atomic<TSoundMachine*> pDefInst{nullptr};

// The mixer's callback, on its own thread under the lock of the audio device; nothing is thrown out of it.
void channel_finished(int channel) {
  try {
    TSoundMachine* const machine = pDefInst;
    if (machine == nullptr) return;
    const auto effect = machine->GetSoundEffect(Mix_GetChunk(channel));
    if (effect) effect->SetPlaying(channel, false);
  } catch (...) {
  }
}

Mix_Chunk* LoadChunk(const std::string& FileName) {
  SDL_RWops* const file = SDL_RWFromFile(FileName.c_str(), "rb");
  return file != nullptr ? Mix_LoadWAV_RW(file, 1) : nullptr;
}

bool DeviceIsOpen() {
  int rate = 0;
  Uint16 format = 0;
  int outputs = 0;
  return Mix_QuerySpec(&rate, &format, &outputs) != 0;
}

const char* SpeakersName(int Outputs) {
  if (Outputs < 2) return "mono";
  return Outputs == 2 ? "stereo" : "surround";
}

}  // namespace

TSoundEffect::~TSoundEffect() {
  if (pChunk != nullptr) Mix_FreeChunk(pChunk);
}

bool TSoundEffect::IsPlaying(int channel) const {
  std::lock_guard<std::mutex> lock(mChannelsMutex);
  return channel == -1 ? !playingOnChannels.empty() : playingOnChannels.contains(channel);
}

void TSoundEffect::SetPlaying(int channel, bool playing) {
  std::lock_guard<std::mutex> lock(mChannelsMutex);
  if (playing)
    playingOnChannels.insert(channel);
  else
    playingOnChannels.erase(channel);
}

TSoundMachine::TSoundMachine() { pDefInst = this; }

TSoundMachine::~TSoundMachine() { CloseAudio(); }

bool TSoundMachine::OpenAudio() {
  if (AudioThread.joinable()) return true;
  logman::WriteLog(kLogInfo, 0, "Opening audio device...");
  if (SDL_Init(SDL_INIT_AUDIO) != 0) {
    logman::WriteLog(kLogError, 0, "Can not init SDL_AUDIO subsystem. Audio won't be available.");
    logman::WriteLog(kLogError, 0, "Can not open audio device...");
    return false;
  }
  if (SDL_WasInit(SDL_INIT_AUDIO) != 0) ReportBackends();
  SDL_version compiled;
  SDL_MIXER_VERSION(&compiled);
  const SDL_version& linked = *Mix_Linked_Version();
  if (compiled.major != linked.major || compiled.minor != linked.minor || compiled.patch != linked.patch) {
    logman::WriteLog(kLogWarning, 0, "SDL_MIXER WARINING:");
    logman::WriteLog(kLogWarning, 0, "**compiled with SDL_mixer version: %d.%d.%d", compiled.major, compiled.minor,
                     compiled.patch);
    logman::WriteLog(kLogWarning, 0, "**running with SDL_mixer version: %d.%d.%d", linked.major, linked.minor,
                     linked.patch);
  }
  pDefInst = this;
  bShouldQuit = false;
  AudioThread = std::thread(&TSoundMachine::AudioWorkerThread, this);
  return true;
}

void TSoundMachine::ReportBackends() {
  const int drivers = SDL_GetNumAudioDrivers();
  logman::WriteLog(kLogInfo, 0, "[SDL] %d audio backends compiled into SDL:", drivers);
  for (int i = 0; i < drivers; ++i) logman::WriteLog(kLogInfo, 0, " '%s'", SDL_GetAudioDriver(i));
  std::printf("[SDL] Audio driver: %s", SDL_GetCurrentAudioDriver());  // no line end, as with other notices
  const int devices = SDL_GetNumAudioDevices(0);
  logman::WriteLog(kLogInfo, 0, "[SDL] %d audio devices:", devices);
  for (int i = 0; i < devices; ++i) logman::WriteLog(kLogInfo, 0, "%s", SDL_GetAudioDeviceName(i, 0));
}

void TSoundMachine::AudioWorkerThread() {
  // SDL keeps an error text for each thread and frees that of its own threads only.
  struct TThreadData {
    ~TThreadData() { SDL_TLSCleanup(); }
  } threadData;
  if (Mix_OpenAudio(kAudioRate, kAudioFormat, kAudioOutputs, kAudioChunkSize) != 0) {
    logman::WriteLog(kLogError, 0, "Could not open audio device.: %s", SDL_GetError());
    return;
  }
  int rate = 0;
  Uint16 format = 0;
  int outputs = 0;
  Mix_QuerySpec(&rate, &format, &outputs);
  logman::WriteLog(kLogInfo, 0, "Opened audio at %d Hz %d bit %s", rate, format & 0xFF, SpeakersName(outputs));
  Mix_AllocateChannels(kMixerChannels);
  Mix_ChannelFinished(channel_finished);
  Mix_Volume(-1, static_cast<int>(kFullVolume));
  while (!bShouldQuit) {
    TAudioCommands commands;
    {
      std::unique_lock<std::mutex> lock(AudioCommands.native());
      AudioCommandConditionVariable.wait(lock, [this] { return !AudioCommands->empty() || bShouldQuit; });
      commands.swap(&AudioCommands);
    }
    for (; !commands.empty(); commands.pop()) commands.front()();
  }
  decltype(SoundEffectMap) effects;
  {
    std::lock_guard<std::mutex> lock(mSoundMutex);
    effects.swap(SoundEffectMap);
  }
  // The last references may free their chunks, which takes the mixer's lock: not under ours.
  effects.clear();
  Mix_CloseAudio();
}

void TSoundMachine::CloseAudio() {
  TSoundEffects effects;
  {
    ScopedLock lock(SoundEffects);
    effects.swap(&SoundEffects);
  }
  effects.clear();
  if (AudioThread.joinable()) {
    {
      ScopedLock lock(AudioCommands);
      bShouldQuit = true;
      AudioCommandConditionVariable.notify_all();
    }
    AudioThread.join();
  }
  // What came too late is dropped: it speaks of a device that is gone.
  TAudioCommands commands;
  {
    ScopedLock lock(AudioCommands);
    commands.swap(&AudioCommands);
  }
  if (SDL_WasInit(SDL_INIT_AUDIO) != 0) SDL_QuitSubSystem(SDL_INIT_AUDIO);
  TSoundMachine* self = this;
  pDefInst.compare_exchange_strong(self, nullptr);
}

void TSoundMachine::QueueAudioCommand(const std::function<void()>& Command) {
  ScopedLock lock(AudioCommands);
  AudioCommands->push(Command);
  AudioCommandConditionVariable.notify_all();
}

void TSoundMachine::SetAudioPath(std::string Path) {
  std::lock_guard<std::mutex> lock(mSoundMutex);
  AudioPath = std::move(Path);
}

void TSoundMachine::SetActionSound(const std::string& action, const std::string& sound) {
  // An application is the mixer and the bus in one object.
  auto* const bus = dynamic_cast<TActionMan*>(this);
  if (bus == nullptr) {
    logman::WriteLog(kLogWarning, 0, "No action %s for sound %s", action.c_str(), sound.c_str());
    return;
  }
  const auto play = [this, sound](const std::string&, void*) { PlaySound(sound.c_str(), -1); };
  bus->AddActionListener(action, new TahLambda(play, TActionHandler::ahtExecuteEndless), ACTION_THREAD_SAFE);
}

int TSoundMachine::PlaySound(const char* FileName, int LoopCount) {
  if (Muted || FileName == nullptr || *FileName == '\0') return 0;
  if (!DeviceIsOpen()) return 0;
  auto sound = GetSoundEffect(FileName);
  if (!sound) sound = LoadSoundEffect(FileName, LoopCount == -1 ? 0 : LoopCount, true);
  if (!sound || sound->pChunk == nullptr) return 0;
  Play(sound, LoopCount);
  return 1;
}

// Without a device the mixer has no channels, and looks at them all the same.
void TSoundMachine::StopSound(int channel) {
  if (DeviceIsOpen()) Mix_HaltChannel(channel);
}

void TSoundMachine::DropChunk(Mix_Chunk* pChunk) {
  if (pChunk == nullptr) return;
  // The worker may be about to play it, so it goes in turn; a command that never runs frees it as well.
  const std::shared_ptr<Mix_Chunk> chunk(pChunk, Mix_FreeChunk);
  QueueAudioCommand([this, chunk] {
    // Freeing a chunk cuts its channels off without the callback, and the effect would seem to play for ever.
    for (int channel = 0; channel < kMixerChannels; ++channel)
      if (Mix_Playing(channel) != 0 && Mix_GetChunk(channel) == chunk.get()) Mix_HaltChannel(channel);
    std::shared_ptr<TSoundEffect> effect;  // let go of behind the lock
    std::lock_guard<std::mutex> lock(mSoundMutex);
    const auto entry = SoundEffectMap.find(chunk.get());
    if (entry == SoundEffectMap.end()) return;
    effect = entry->second;
    SoundEffectMap.erase(entry);
  });
}

std::shared_ptr<TSoundEffect> TSoundMachine::LoadSoundEffect(const char* FileName, int LoopCount,
                                                             bool MultiChannelPlay) {
  if (FileName == nullptr || *FileName == '\0') return nullptr;
  const std::string name = FileName;
  auto effect = GetSoundEffect(FileName);
  if (!effect) {
    effect = std::make_shared<TSoundEffect>();
    effect->FileName = name;
  }
  effect->LoopCount = LoopCount;
  effect->MultiChannelPlay = MultiChannelPlay;
  std::string inAudioPath;
  {
    std::lock_guard<std::mutex> lock(mSoundMutex);
    inAudioPath = AudioPath + "/" + name;
  }
  Mix_Chunk* chunk = LoadChunk(name);
  if (chunk == nullptr) chunk = LoadChunk(inAudioPath);
  DropChunk(effect->pChunk.exchange(chunk));
  if (chunk == nullptr) {
    logman::WriteLog(kLogWarning, 0, "Can not load %s(tried also %s) : %s", name.c_str(), inAudioPath.c_str(),
                     SDL_GetError());
    return nullptr;
  }
  {
    ScopedLock lock(SoundEffects);
    (*SoundEffects.operator->())[name] = effect;
  }
  QueueAudioCommand([this, chunk, effect] {
    std::lock_guard<std::mutex> lock(mSoundMutex);
    SoundEffectMap[chunk] = effect;
  });
  return effect;
}

bool TSoundMachine::RemoveSoundEffect(const char* FileName) {
  const auto effect = GetSoundEffect(FileName);
  if (!effect) return false;
  {
    ScopedLock lock(SoundEffects);
    SoundEffects->erase(FileName);
  }
  // The chunk stays with the effect until the commands queued before, which may play it, have run.
  if (effect->pChunk != nullptr) QueueAudioCommand([this, effect] { DropChunk(effect->pChunk.exchange(nullptr)); });
  return true;
}

std::shared_ptr<TSoundEffect> TSoundMachine::GetSoundEffect(const char* FileName) {
  if (FileName == nullptr || *FileName == '\0') return nullptr;
  ScopedLock lock(SoundEffects);
  const auto found = SoundEffects->find(FileName);
  return found != SoundEffects->end() ? found->second : nullptr;
}

std::shared_ptr<TSoundEffect> TSoundMachine::GetSoundEffect(Mix_Chunk* pChunk) {
  std::lock_guard<std::mutex> lock(mSoundMutex);
  const auto found = SoundEffectMap.find(pChunk);
  return found != SoundEffectMap.end() ? found->second : nullptr;
}

void TSoundMachine::Play(std::shared_ptr<TSoundEffect> sound, int loops) {
  if (!sound) return;
  QueueAudioCommand([sound, loops] {
    if (sound->IsPlaying(-1) && !sound->MultiChannelPlay) return;
    Mix_Chunk* const chunk = sound->pChunk;
    if (chunk == nullptr) return;
    const int channel = Mix_PlayChannelTimed(-1, chunk, loops == -1 ? sound->LoopCount.load() : loops, -1);
    if (channel < 0) return;
    sound->SetPlaying(channel, true);
    // A very short sound may have ended before it was marked.
    if (Mix_Playing(channel) == 0) sound->SetPlaying(channel, false);
  });
}

void TSoundMachine::SetVolume(int percent, int channel) {
  const double volume = (percent / 100.0) * kFullVolume;
  QueueAudioCommand([channel, volume] { Mix_Volume(channel, MyUtils::saturated<int>(volume)); });
}

int TSoundMachine::GetVolume(int channel) const {
  return DeviceIsOpen() ? static_cast<int>(100.0 * Mix_Volume(channel, -1) / kFullVolume) : 0;
}

}  // namespace vendelo_sdl2
