// The backtrace of a crash against a tool of our own that tells what it is asked.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <link.h>
#include <sys/stat.h>
#include <unistd.h>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "tests/support/ChildProcess.h"
#include "tests/support/LogLines.h"
#include "tests/support/TestApplication.h"

using namespace vendelo_sdl2;
namespace fs = std::filesystem;

namespace {

class BacktraceTool : public testing::Test {
 protected:
  BacktraceTool() {
    char name[] = "/tmp/toolXXXXXX";
    folder = mkdtemp(name);
    std::ofstream(folder / "addr2line") << "#!/bin/sh\necho \"[$#|$1|$2|$3]\"\n";
    chmod((folder / "addr2line").c_str(), 0755);
    path = folder.string() + ":" + std::getenv("PATH");
  }
  ~BacktraceTool() override { fs::remove_all(folder); }
  fs::path folder;
  std::string path;
};

const std::string asked = "TELL_BACKTRACE";

// This program again, by `program`, where it only logs a backtrace of two frames inside itself. What the shell
// makes of the name is told by the file that it would make.
TEST_F(BacktraceTool, IsAskedForTheAddressInTheFileWhateverItsNameHolds) {
  const auto here = reinterpret_cast<void*>(&occurrences);
  if (std::getenv(asked.c_str())) {
    TestApplication app;
    void* const frames[] = {nullptr, here};
    app.LogBacktrace(frames, 2);
    Dl_info info{};
    link_map* map = nullptr;
    dladdr1(here, &info, reinterpret_cast<void**>(&map), RTLD_DL_LINKMAP);
    const auto inFile = reinterpret_cast<uintptr_t>(here) - map->l_addr;
    std::fprintf(stderr, "at %p\n", reinterpret_cast<void*>(inFile));
    for (const auto& line : app.log.lines()) std::fprintf(stderr, "%s\n", line.c_str());
    return;
  }
  const fs::path self = fs::read_symlink("/proc/self/exe");
  const struct {
    const char* name;
    std::string file, told;
  } rows[] = {
    {"plain", "program", "program"},
    {"blank", "pro  gram", "pro  gram"},
    {"parenthesis", "pro(gram", "pro(gram"},
    {"command", "a; touch made;$(touch made)`touch made`&", "a; touch made;$(touch made)`touch made`&"},
    {"quotes", "it's \"$HOME\"*", "it's \"$HOME\"*"},
    {"too long for the command",
     (fs::path(std::string(200, 'l')) / std::string(200, 'm') / std::string(200, 'n')).string(), ""},
    {"too long and quoted",
     (fs::path(std::string(200, 'l')) / std::string(200, '\'') / std::string(200, ' ')).string(), "?"},
  };
  for (const auto& row : rows) {
    fs::create_directories((folder / row.file).parent_path());
    fs::copy_file(self, folder / row.file);
  }
  endAll(
    rows,
    [this](const auto& row) {
      return std::make_unique<ChildProcess>([&] {
        setenv("PATH", path.c_str(), 1);
        if (chdir(folder.c_str()) != 0) return;
        setenv(asked.c_str(), "1", 1);
        const std::string program = (folder / row.file).string();
        execl(program.c_str(), program.c_str(), "--gtest_filter=BacktraceTool.IsAskedForTheAddress*", nullptr);
      });
    },
    [this](const auto& row, ChildProcess& child) {
      EXPECT_EQ(child.end(), "exit 0");
      const std::string& output = child.output();
      const size_t at = output.find("\nat ") + 4;
      const std::string address = output.substr(at, output.find('\n', at) - at);
      const std::string command = "addr2line " + address + " -e ";
      std::string file = (folder / row.told).string();
      if (row.told.empty()) file = (folder / row.file).string().substr(0, 511 - command.size());
      if (row.told == "?") {  // as much of it as has room, and the shell understands it
        EXPECT_EQ(
          occurrences("\n0|(1) [3|" + address + "|-e|" + (folder / std::string(200, 'l')).string() + "/''", output),
          1)
          << output;
        return;
      }
      EXPECT_EQ(occurrences("\n0|(1) [3|" + address + "|-e|" + file + "]\n", output), 1) << output;
      EXPECT_EQ(occurrences("0|(0)", output), 0);
      EXPECT_EQ(occurrences("0|(2)", output), 0);
    });
  EXPECT_FALSE(fs::exists(folder / "made"));
}

[[gnu::noinline]] int crashAtDepth(int depth) {
  const volatile int deeper = depth == 0 ? std::raise(SIGSEGV) : crashAtDepth(depth - 1);
  return deeper + 1;
}

TEST_F(BacktraceTool, IsAskedForNineteenFramesOfADeepStack) {
  ChildProcess child([this] {
    setenv("PATH", path.c_str(), 1);
    SystemSeams.Alarm = [](unsigned) { return 0u; };
    auto* notices = new NoticeCapture;
    auto* app = new TestApplication;
    app->onDestroy = [app, notices] {
      for (const auto& line : app->log.lines()) std::fprintf(stderr, "%s\n", line.c_str());
      std::fprintf(stderr, "[%d]", notices->trace.count("Critical|Signal 11 encountered"));
    };
    crashAtDepth(60);
  });
  EXPECT_EQ(child.end(), "signal 11");
  EXPECT_EQ(occurrences("\n0|(1) [3|0x", child.output()), 1);
  EXPECT_EQ(occurrences("\n0|(19) [3|0x", child.output()), 1);
  EXPECT_EQ(occurrences("\n0|(20) ", child.output()), 0);
  EXPECT_EQ(occurrences("[1]", child.output()), 1);
}

// ---- when the application is gone

TEST(LastSignal, IsLoggedWhereALogIsLeft) {
  const struct {
    const char* name;
    int signal;
    const char* end;
  } rows[] = {{"polite", SIGINT, "exit 5"}, {"crash", SIGFPE, "signal 8"}, {"end", SIGTERM, "signal 6"}};
  endAll(
    rows,
    [](const auto& row) {
      return std::make_unique<ChildProcess>([row] {
        delete new TestApplication;
        static LogLines log;
        static int signal;
        signal = row.signal;
        const auto tell = [] {
          const std::string line = "7 Signal " + std::to_string(signal) + " received. Exiting...\n";
          std::fprintf(stderr, "[%d lines]", log.count(line));
        };
        static void (*told)() = tell;
        SystemSeams.Alarm = [](unsigned) { return 0u; };
        SystemSeams.Kill = [](pid_t pid, int number) { return told(), ::kill(pid, number); };
        SystemSeams.Abort = [] {
          told();
          ::abort();
        };
        std::raise(row.signal);
        told();
        _exit(5);
      });
    },
    [](const auto& row, ChildProcess& child) {
      EXPECT_EQ(child.end(), row.end);
      EXPECT_EQ(occurrences("[1 lines]", child.output()), 1) << child.output();
    });
}

}  // namespace
