#include "vesperatopscreen/CommandLine.h"

#include <algorithm>
#include <string_view>

namespace {

constexpr int kUsageError = 2;

constexpr const char* kUsage = "usage: topscreen [HOST:PORT]\n       topscreen --help | --version\n";

constexpr const char* kHelp = R"(
Shows the top screen of a gaming terminal on its second display. HOST:PORT is where the terminal's platform service
listens, 127.0.0.1:9011 without.

Environment:
  HOME_DIR                 folder of the terminal's own files; required
  WORKING_DIR              folder of the skin; ends in a slash
  LOG_FILENAME             log file; the date is put into its name
  DISABLE_REBOOT_ON_EXIT   1: no restart of the machine when the program ends or crashes
  FPS, CPU_FPS, VSYNC      frames and passes of the logic a second; 1: in step with the display
All of it is told in topscreen(1).
)";

}  // namespace

const char* TopScreenVersion() { return TOPSCREEN_VERSION; }

std::optional<int> ServeOptions(int argc, char** argv, std::FILE* Out, std::FILE* Err) {
  char** const option =
    std::find_if(argv + std::min(argc, 1), argv + argc, [](const char* text) { return *text == '-'; });
  if (option == argv + argc) return std::nullopt;
  const std::string_view name = *option;
  if (argc == 2 && name == "--version") {
    std::fprintf(Out, "topscreen %s\n", TopScreenVersion());
    return 0;
  }
  if (argc == 2 && name == "--help") {
    std::fprintf(Out, "%s%s", kUsage, kHelp);
    return 0;
  }
  std::fprintf(Err, "%s", kUsage);
  return kUsageError;
}
