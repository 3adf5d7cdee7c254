// The backtrace of a crash, written so that what stands in the log survives the rest of the crash.
#include <execinfo.h>
#include <unistd.h>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "vendelo-sdl2/MyUtils.h"
#include "vendelo-sdl2/TApplication.h"

namespace vendelo_sdl2 {

void TApplication::LogBacktrace(void* const* Frames, int Count) {
  const auto pollAndSync = [this] {
    logman::Poll();
    FlushFile();  // the process may end before the next one is due
    sync();
  };
  const std::unique_ptr<char*, decltype(&std::free)> symbols(backtrace_symbols(Frames, Count), &std::free);
  if (Count > 1) {
    WriteLog(0, 0, "================== BACKTRACE ==================");
    pollAndSync();
  }
  for (int frame = 1; symbols && frame < Count; ++frame) {
    const char* symbol = symbols.get()[frame];
    const int fileLength = static_cast<int>(std::strcspn(symbol, "( "));
    char command[512];
    std::snprintf(command, sizeof command, "addr2line %p -e %.*s", Frames[frame], fileLength, symbol);
    const std::string output = MyUtils::SystemCmdResult(command);
    WriteLog(0, 0, "(%d) %s", frame, output.c_str());
    pollAndSync();
  }
  if (Count > 1) WriteLog(0, 0, "================ BACKTRACE END ================");
  if (mRebootOnExit) WriteLog(0, 0, "================ WILL REBOOT ON EXIT!!!!! ================");
  pollAndSync();
}

}  // namespace vendelo_sdl2
