#include "vesperatopscreen/AppMain.h"

#include <malloc.h>
#include <unistd.h>
#include <cstdio>
#include <cstdlib>

#include "vendelo-sdl2/PictureRequest.h"
#include "vendelo-sdl2/TApplication.h"
#include "vesperatopscreen/CommandLine.h"
#include "vesperatopscreen/TopScreenApp.h"

using vendelo_sdl2::pApp;
using vendelo_sdl2::TApplication;

namespace {

constexpr int kInitFailed = -2, kInitThrew = -4, kRunThrew = -6;

// From this size on, in bytes, a block is one of its own, which the system has back once it is freed. The allocator
// would raise the limit with the first picture, and in some days the pictures that come and go leave twice the
// memory behind that is in use.
constexpr int kBlockOfItsOwn = 1 << 20;

TApplication* MakeTopScreen(const std::string* ServerAddress) {
  auto* application = new TopScreenApp;
  if (ServerAddress) application->setServerAddress(*ServerAddress);
  return application;
}

}  // namespace

int AppMain(int argc, char** argv) {
  if (const auto served = ServeOptions(argc, argv, stdout, stderr)) return *served;
  vendelo_sdl2::TPictureRequest::hold();
  return AppMain(argc, argv, MakeTopScreen);
}

int AppMain(int argc, char** argv, const ApplicationMaker& MakeApplication) {
  mallopt(M_MMAP_THRESHOLD, kBlockOfItsOwn);
  const std::string address = argc == 2 ? argv[1] : "";
  TApplication* application = MakeApplication(argc == 2 ? &address : nullptr);
  if (pApp != application) pApp = application;  // its constructor has, and by now a signal's handler may read it
  try {
    if (const int failure = application->Init()) {
      const int result = failure == TopScreenApp::kInitRefused ? failure : kInitFailed;
      application->LimitEnd(result);
      application->ServePendingSignal();
      application->EndDrawThread();
      application->Destroy();
      delete application;
      std::printf("========== APP EXITED WITH FAILURE ==========\n");
      return result;
    }
  } catch (...) {
    std::printf("Unhadled exception occoured while loading application\n");
    return kInitThrew;
  }
  try {
    application->ServePendingSignal();
    application->Run();
  } catch (...) {
    std::printf("Unhadled exception occoured\n");
    return kRunThrew;
  }
  delete application;
  std::printf("========== APP EXITED SUCCESSFULLY ==========\n");
  return 0;
}

void ExitProgram(int Result) {
  std::fflush(nullptr);
  if (Result == kInitThrew || Result == kRunThrew) _exit(Result);
  std::exit(Result);
}
