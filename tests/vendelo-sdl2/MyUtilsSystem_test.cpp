#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <condition_variable>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <thread>

#include "vendelo-sdl2/MyUtils.h"
#include "vendelo-sdl2/SystemSeams.h"

namespace fs = std::filesystem;

namespace {

// Takes the commands instead of the shell and lets a test wait for them.
std::mutex commandMutex;
std::condition_variable commandArrived;
std::vector<std::string> commands;
std::thread::id commandThread;
int (*shell)(const char*) = nullptr;  // asked as well when set
int shellResult = -1;

int takeCommand(const char* command) {
  const int result = shell ? shell(command) : 0;
  const std::lock_guard<std::mutex> lock(commandMutex);
  commands.push_back(command);
  commandThread = std::this_thread::get_id();
  shellResult = result;
  commandArrived.notify_all();
  return result;
}

class SystemTest : public testing::Test {
 protected:
  void SetUp() override {
    commands.clear();
    shell = nullptr;
    previous = vendelo_sdl2::SystemSeams.System;
    vendelo_sdl2::SystemSeams.System = takeCommand;
    folder = fs::temp_directory_path() / ("myutilssystem." + std::to_string(getpid()));
    fs::remove_all(folder);
    fs::create_directories(folder);
  }
  void TearDown() override {
    vendelo_sdl2::SystemSeams.System = previous;
    fs::remove_all(folder);
  }
  // The command that arrives next; empty after ten seconds without one.
  static std::string command() {
    std::unique_lock<std::mutex> lock(commandMutex);
    if (!commandArrived.wait_for(lock, std::chrono::seconds(10), [] { return !commands.empty(); })) return "";
    return commands.front();
  }
  fs::path write(const char* name, const char* text) {
    std::ofstream(folder / name) << text;
    return folder / name;
  }

  int (*previous)(const char*) = nullptr;
  fs::path folder;
};

TEST_F(SystemTest, CommandsRunOnAThreadOfTheirOwn) {
  MyUtils::SystemAsync("do something");
  EXPECT_EQ(command(), "do something");
  EXPECT_NE(commandThread, std::this_thread::get_id());
}

TEST_F(SystemTest, WindowPropertiesAreOneShellLine) {
  MyUtils::SetWindowsProperties("Top Screen", {"add,above", "remove,hidden"}, "echo done");
  EXPECT_EQ(command(),
            "WINID=`wmctrl -l | grep \"$HOSTNAME Top Screen\\b\" | cut -d \" \" -f1`;"
            "wmctrl -i -r $WINID -b add,above;wmctrl -i -r $WINID -b remove,hidden;echo done");
}

TEST_F(SystemTest, StatusIsWrittenByAShellLine) {
  MyUtils::StatusFileSet("/run/terminal/status", "link", "up and running");
  EXPECT_EQ(command(),
            "mkdir -p \"/run/terminal/status\"; echo \"up and running\" > \"/run/terminal/status/link\" &");
}

TEST_F(SystemTest, AWrittenStatusIsReadBack) {
  // The trailing & would let the shell end before the file is there; a test needs to know when it is.
  shell = [](const char* line) {
    std::string foreground = line;
    foreground.back() = ' ';
    return ::system(foreground.c_str());
  };
  MyUtils::StatusFileSet(folder / "new folder", "state", "value of it");
  ASSERT_NE(command(), "");
  EXPECT_EQ(shellResult, 0);
  EXPECT_EQ(MyUtils::StatusFileGet(folder / "new folder", "state"), "value of it");
}

TEST_F(SystemTest, OnlyTheFirstLineOfAStatusCounts) {
  write("two", "first\nsecond\n");
  write("open end", "no line end");
  write("empty", "");
  EXPECT_EQ(MyUtils::StatusFileGet(folder, "two"), "first");
  EXPECT_EQ(MyUtils::StatusFileGet(folder, "open end"), "no line end");
  EXPECT_EQ(MyUtils::StatusFileGet(folder, "empty"), "");
  EXPECT_EQ(MyUtils::StatusFileGet(folder, "missing"), "");
  EXPECT_EQ(MyUtils::StatusFileGet(folder / "missing", "x"), "");
}

TEST_F(SystemTest, OutputOfACommandIsReadToItsEnd) {
  EXPECT_EQ(MyUtils::SystemCmdResult("printf 'a b\\nc'"), "a b\nc");
  EXPECT_EQ(MyUtils::SystemCmdResult("true"), "");
  EXPECT_EQ(MyUtils::SystemCmdResult("printf '%0300d\\n' 7").size(), 301u);  // longer than one read
  EXPECT_TRUE(commands.empty());
}

TEST_F(SystemTest, WithoutAPipeACommandHasNoOutputButAnException) {
  rlimit limit{};
  ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &limit), 0);
  const rlimit none{0, limit.rlim_max};  // of further files
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
  std::exception_ptr thrown;
  try {
    MyUtils::SystemCmdResult("echo x");
  } catch (...) {
    thrown = std::current_exception();  // a sanitizer that looks at its type needs a pipe itself
  }
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &limit), 0);
  ASSERT_TRUE(thrown);
  try {
    std::rethrow_exception(thrown);
  } catch (const std::runtime_error& error) {
    EXPECT_STREQ(error.what(), "popen() failed!");
  }
}

TEST_F(SystemTest, FolderExistsMeansADirectory) {
  const fs::path file = write("file", "x");
  fs::create_directory_symlink(folder, folder / "link to folder");
  EXPECT_TRUE(MyUtils::FolderExists(folder));
  EXPECT_TRUE(MyUtils::FolderExists(folder / "link to folder"));
  EXPECT_FALSE(MyUtils::FolderExists(file));
  EXPECT_FALSE(MyUtils::FolderExists(folder / "missing"));
  EXPECT_FALSE(MyUtils::FolderExists(file / "below a file"));
  EXPECT_FALSE(MyUtils::FolderExists(""));
}

TEST_F(SystemTest, FileExistsByKind) {
  const fs::path file = write("file", "x");
  fs::create_symlink(file, folder / "link to file");
  fs::create_directory(folder / "directory");
  fs::create_directory_symlink(folder / "directory", folder / "link to directory");
  fs::create_symlink(folder / "missing", folder / "dead link");
  ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
  const struct {
    const char* name;
    bool any, regular, link, either;
  } rows[] = {{"file", true, true, false, true},        {"link to file", true, true, true, true},
              {"directory", true, false, false, false}, {"link to directory", true, false, true, true},
              {"pipe", true, false, false, false},      {"dead link", false, false, false, false},
              {"missing", false, false, false, false},  {"file/below a file", false, false, false, false}};
  for (const auto& row : rows) {
    const fs::path path = folder / row.name;
    EXPECT_EQ(MyUtils::FileExists(path, false, false), row.any) << row.name;
    EXPECT_EQ(MyUtils::FileExists(path, true, false), row.regular) << row.name;
    EXPECT_EQ(MyUtils::FileExists(path, false, true), row.link) << row.name;
    EXPECT_EQ(MyUtils::FileExists(path, true, true), row.either) << row.name;
  }
}

}  // namespace
