#include "vendelo-sdl2/TFileLock.h"

#include <gtest/gtest.h>
#include <unistd.h>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "tests/support/ChildProcess.h"
#include "tests/support/ScratchFolder.h"
#include "vendelo-sdl2/SystemSeams.h"

using vendelo_sdl2::TFileLock;

namespace {

class FileLock : public testing::Test {
 protected:
  std::string content() const {
    std::string line;
    std::getline(std::ifstream(file), line);
    return line;
  }
  const ScratchFolder folder{"filelock"};
  const std::string file = folder + "lock";
};

TEST_F(FileLock, IsHeldByOneOnlyWhomTheOtherCanName) {
  TFileLock first, second;
  EXPECT_EQ(first.Take(file), TFileLock::HELD);
  EXPECT_EQ(content(), std::to_string(getpid()));
  EXPECT_EQ(second.Take(file), TFileLock::HELD_BY_ANOTHER);
  EXPECT_EQ(second.Detail(), std::to_string(getpid()));
  EXPECT_EQ(content(), std::to_string(getpid())) << "who was refused has left the file alone";
  first.Release();
  first.Release();
  EXPECT_EQ(second.Take(file), TFileLock::HELD);
}

TEST_F(FileLock, GoesWithTheObject) {
  { EXPECT_EQ(TFileLock().Take(file), TFileLock::HELD); }
  TFileLock second;
  EXPECT_EQ(second.Take(file), TFileLock::HELD);
}

TEST_F(FileLock, DiesWithItsProcessHoweverThatEnds) {
  int ready[2];
  ASSERT_EQ(pipe(ready), 0);
  ChildProcess child([&] {
    auto* lock = new TFileLock;
    char taken = static_cast<char>('0' + lock->Take(file));
    if (write(ready[1], &taken, 1) == 1) pause();
  });
  char taken = 0;
  ASSERT_EQ(read(ready[0], &taken, 1), 1);
  EXPECT_EQ(taken, '0' + TFileLock::HELD);
  TFileLock lock;
  EXPECT_EQ(lock.Take(file), TFileLock::HELD_BY_ANOTHER);
  const std::string process = lock.Detail();
  EXPECT_EQ(process, content());
  ::kill(std::stoi(process), SIGKILL);
  EXPECT_EQ(child.end(), "signal 9");
  EXPECT_EQ(lock.Take(file), TFileLock::HELD);
  close(ready[0]);
  close(ready[1]);
}

TEST_F(FileLock, IsNotHeldByWhatTheProcessHasStarted) {
  TFileLock first;
  ASSERT_EQ(first.Take(file), TFileLock::HELD);
  const std::string gate = folder + "gate";
  // Waits for a writer, long after the lock was let go.
  ASSERT_EQ(vendelo_sdl2::SystemSeams.System(("mkfifo " + gate + "; cat " + gate + " >/dev/null 2>&1 &").c_str()),
            0);
  first.Release();
  TFileLock second;
  EXPECT_EQ(second.Take(file), TFileLock::HELD);
  std::ofstream(gate) << "go\n";
}

TEST_F(FileLock, IsImpossibleWhereThereIsNoFileToBeWrittenAndTellsWhy) {
  TFileLock lock;
  EXPECT_EQ(lock.Take(folder + "none/lock"), TFileLock::IMPOSSIBLE);
  EXPECT_EQ(lock.Detail(), "No such file or directory");
  std::ofstream(file) << "a file";
  EXPECT_EQ(lock.Take(file + "/lock"), TFileLock::IMPOSSIBLE);
  EXPECT_EQ(lock.Detail(), "Not a directory");
  EXPECT_EQ(lock.Take(folder.path()), TFileLock::IMPOSSIBLE);
  EXPECT_EQ(lock.Detail(), "Is a directory");
}

TEST_F(FileLock, AFileThatNamesNobodyIsOfAnUnknownProcess) {
  TFileLock first, second;
  ASSERT_EQ(first.Take(file), TFileLock::HELD);
  for (const char* text : {"", "nobody\n"}) {
    std::ofstream(file) << text;
    EXPECT_EQ(second.Take(file), TFileLock::HELD_BY_ANOTHER);
    EXPECT_EQ(second.Detail(), "unknown") << text;
  }
}

TEST_F(FileLock, OfAnEarlierProcessNamesTheNewOneAlone) {
  std::ofstream(file) << "12345678\nand more\n";
  TFileLock lock;
  EXPECT_EQ(lock.Take(file), TFileLock::HELD);
  EXPECT_EQ(std::filesystem::file_size(file), std::to_string(getpid()).size() + 1);
  EXPECT_EQ(content(), std::to_string(getpid()));
}

}  // namespace
