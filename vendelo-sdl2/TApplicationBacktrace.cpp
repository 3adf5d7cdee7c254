// The backtrace of a crash, written so that what stands in the log survives the rest of the crash.
#include <dlfcn.h>
#include <execinfo.h>
#include <link.h>
#include <unistd.h>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>

#include "vendelo-sdl2/MyUtils.h"
#include "vendelo-sdl2/TApplication.h"

namespace vendelo_sdl2 {

namespace {

constexpr size_t kLongestCommand = 511;

// The file of a frame as backtrace_symbols begins with it. A loaded one is known by its whole name, whatever is in
// it; else the name ends where the text goes on with the function or the address.
std::string FileOf(const char* symbol, const Dl_info* loaded) {
  if (loaded && loaded->dli_fname && *loaded->dli_fname) return loaded->dli_fname;
  return std::string(symbol, std::strcspn(symbol, "( "));
}

// The question to the tool. The name goes through a shell: quoted where it holds more than a plain path does.
std::string Question(const void* address, const std::string& file) {
  char begin[64];
  std::snprintf(begin, sizeof begin, "addr2line %p -e ", address);
  const bool plain =
    file.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789/._-+=@%:,") ==
    std::string::npos;
  std::string command = begin;
  if (plain) return (command + file).substr(0, kLongestCommand);
  command += '\'';
  for (const char letter : file) {
    const std::string_view quoted = letter == '\'' ? "'\\''" : std::string_view(&letter, 1);
    if (command.size() + quoted.size() >= kLongestCommand) break;
    command += quoted;
  }
  return command + '\'';
}

}  // namespace

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
    // The tool knows the addresses of the file, which a loaded one is moved away from.
    Dl_info info{};
    link_map* map = nullptr;
    const bool isLoaded =
      dladdr1(Frames[frame], &info, reinterpret_cast<void**>(&map), RTLD_DL_LINKMAP) != 0 && map != nullptr;
    const auto address = reinterpret_cast<uintptr_t>(Frames[frame]) - (isLoaded ? map->l_addr : 0);
    const std::string command =
      Question(reinterpret_cast<const void*>(address), FileOf(symbol, isLoaded ? &info : nullptr));
    const std::string output = MyUtils::SystemCmdResult(command);
    WriteLog(0, 0, "(%d) %s", frame, output.c_str());
    pollAndSync();
  }
  if (Count > 1) WriteLog(0, 0, "================ BACKTRACE END ================");
  if (mRebootOnExit) WriteLog(0, 0, "================ WILL REBOOT ON EXIT!!!!! ================");
  pollAndSync();
}

}  // namespace vendelo_sdl2
