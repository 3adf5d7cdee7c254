#pragma once

#include <atomic>
#include <list>
#include <memory>
#include <string>

#include "common/TKSLClient.h"
#include "common/TKSLReturnStructures.h"
#include "common/ThreadSafeProperty.h"
#include "vendelo-sdl2/TApplication.h"
#include "vendelo-sdl2/TFileLock.h"
#include "vesperatopscreen/TopScreenReport.h"

class TopScreenScreen;

// The top screen: brings the framework up, keeps one client of the platform service running, holds the latest
// picture of the platform's state and decides from it which panel is shown.
// Everything runs on the main thread, RunOnce and all handle... callbacks under the draw mutex; SetupGraphics and
// DrawOnce run on the draw thread. The platform's state is shared with the draw thread: whoever reads or writes it
// holds a ScopedLock on it for the whole of the use. Amounts are in the platform's smallest unit.
// A missing or failing service never ends the program and never changes the picture that stands.
class TopScreenApp : public vendelo_sdl2::TApplication, public TKSLListener {
 public:
  TopScreenApp();
  ~TopScreenApp() override;

  // Host and port of the platform service, before Init.
  void setServerAddress(std::string hostAndPort);

  // The latest state, for the screen; lock it for the length of the use.
  ThreadSafeProperty<PlatformState>& getState() { return state; }

  // Init's result when another process runs with the same HOME_DIR.
  static constexpr int kInitRefused = -3;

  // Brings SDL, the parameters, the log, the screen and the client up. 0, or -1 when one of them is impossible.
  int Init() override;
  // The GUI goes with the first call, whichever thread makes it.
  void Destroy() override;
  void Startup() override;
  // Draw thread. Always false: the loader stays until the platform has answered.
  bool SetupGraphics() override;
  // One step: events, status request, client, panels. 1 ends the main loop.
  int RunOnce() override;
  // Draw thread. One frame; 2 without a screen.
  int DrawOnce() override;

  int handleError(MethodType method, ErrorTypes error, const std::string& text) override;
  int handlePlatformEvent(const Event& event) override;
  int handleInitResponse(ErrorTypes error, void* data) override;
  int getIDFromInitData(void* data) override;
  void handleClientDied() override;
  void handleTimeout(bool timedOut) override;
  void OnStoreValues(const std::list<vendelo_sdl2::TAppParam*>& params) override;
  void OnPassDone() override;
  int _WriteLog(char color, vendelo_sdl2::TLogType type, unsigned long gameId, const std::string& text) override;

  // Chooses the panel by the state; always 0.
  int Update();
  // Reserved; without a body, since nothing calls it.
  int UpdateTask();
  // Callback of the status request: `data` is a PlatformState, or with `isError` a KSLError.
  int StatusReceived(void* data, bool isError);

 protected:
  void requestStatus();
  void updateJackpotPanel();
  void deferInstructionsOrJackpots();
  void useLocale(const std::string& locale);
  TopScreenFacts facts() const;
  void tellOthers(vendelo_sdl2::TFrameWatch* frames);

  std::string serverUrl;
  TopScreenScreen* screen;  // owned by the framework's module list
  bool hasNoData;           // a full status has to be asked for
  bool statusIsAsked;       // one is queued, on its way or unread
  ThreadSafeProperty<PlatformState> state;
  std::string lastUpdateError;  // the same failure is logged once
  std::string lastInitError;
  std::string lastUnknownLocale;
  bool updatedJp;                     // the jackpot panel is to be refreshed after this poll
  bool updatedGame;                   // the panel is to be chosen anew after this poll
  vendelo_sdl2::TFileLock mHomeLock;  // from Init to Destroy
  std::unique_ptr<TKSLClient> pKSL;
  bool gotFirstInit;  // the first good data have ended the loader
  std::atomic<unsigned long> mLogLines{0};
  TopScreenReport mReport;
};
