// Standard output that is not there, not read or not read any more. Each in a process of its own, whose standard
// error tells how it went.
#include "vendelo-sdl2/TConsole.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "tests/support/ChildProcess.h"

namespace {

void tell(const char* what, unsigned long number) { dprintf(STDERR_FILENO, "[%s %lu]", what, number); }

// Standard output becomes the writing end; the reading end is what is returned.
int pipeForOutput() {
  int ends[2];
  if (pipe(ends) != 0) _exit(1);
  dup2(ends[1], STDOUT_FILENO);
  close(ends[1]);
  return ends[0];
}

std::string readAll(int file) {
  fcntl(file, F_SETFL, O_NONBLOCK);
  std::string text;
  char piece[4096];
  for (ssize_t count; (count = read(file, piece, sizeof piece)) > 0;)
    text.append(piece, static_cast<size_t>(count));
  return text;
}

// Lines of 100 bytes until the pipe is full and some are dropped, then `more` of them.
void fill(int more) {
  const std::string text(99, 'x');
  while (TConsole::Dropped() == 0) std::printf("%s\n", text.c_str());
  for (int i = 0; i < more; ++i) std::printf("%s\n", text.c_str());
}

TEST(Console, APipeThatNobodyReadsIsNotWaitedForAndTheLinesAreCounted) {
  ChildProcess child([] {
    const int file = pipeForOutput();
    TConsole::Guard();
    fill(41);
    tell("dropped", TConsole::Dropped());
    const std::string text = readAll(file);
    tell("partial", text.size() % 100);
    std::printf("again\n");
    std::printf("and again\n");
    std::fprintf(stderr, "%s", readAll(file).c_str());
    tell("dropped", TConsole::Dropped());
  });
  EXPECT_EQ(child.end(), "exit 99");
  EXPECT_EQ(child.output(), "[dropped 42][partial 0](42 lines are missing here)\nagain\nand again\n[dropped 42]");
}

TEST(Console, APipeThatNobodyHasDoesNotEndTheProcess) {
  ChildProcess child([] {
    close(pipeForOutput());
    TConsole::Guard();
    std::printf("one\ntwo\n");
    std::puts("three");
    tell("dropped", TConsole::Dropped());
  });
  EXPECT_EQ(child.end(), "exit 99");
  EXPECT_EQ(child.output(), "[dropped 3]");
}

TEST(Console, AReaderThatGoesAwayDoesNotEndTheProcess) {
  ChildProcess child([] {
    const int file = pipeForOutput();
    TConsole::Guard();
    std::printf("one\n");
    tell("dropped", TConsole::Dropped());
    close(file);
    std::printf("two\n");
    tell("dropped", TConsole::Dropped());
  });
  EXPECT_EQ(child.output(), "[dropped 0][dropped 1]");
}

// It would get what the program opens next: the X server would be told the lines of the log.
TEST(Console, DescriptorsThatAreClosedAreTakenByNobodyElse) {
  ChildProcess child([] {
    const int told = dup(STDERR_FILENO);
    for (int file = 0; file < 3; ++file) close(file);
    TConsole::Guard();
    dprintf(told, "[next is behind them: %d]", open("/dev/null", O_RDONLY) > STDERR_FILENO);
    std::printf("to nobody\n");
    std::fprintf(stderr, "to nobody\n");
    dprintf(told, "[dropped %lu]", TConsole::Dropped());
  });
  EXPECT_EQ(child.end(), "exit 99");
  EXPECT_EQ(child.output(), "[next is behind them: 1][dropped 0]");
}

TEST(Console, StandardErrorIsNotWaitedForEither) {
  ChildProcess child([] {
    const int told = dup(STDOUT_FILENO);
    int ends[2];
    if (pipe(ends) != 0) _exit(1);
    dup2(ends[1], STDERR_FILENO);
    TConsole::Guard();
    for (int i = 0; i < 2000; ++i) std::fprintf(stderr, "%099d\n", i);
    dprintf(told, "[through]");
  });
  EXPECT_EQ(child.end(), "exit 99");
  EXPECT_EQ(child.output(), "[through]");
}

TEST(Console, ASocketIsNotWaitedFor) {
  ChildProcess child([] {
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_STREAM, 0, ends) != 0) _exit(1);
    dup2(ends[1], STDOUT_FILENO);
    TConsole::Guard();
    fill(0);
    close(ends[0]);
    std::printf("nobody\n");
    dprintf(STDERR_FILENO, "[through]");
  });
  EXPECT_EQ(child.output(), "[through]");
}

// A shell, or whoever else writes there, goes on as before.
TEST(Console, WhoeverElseHasThePipeStillWaits) {
  ChildProcess child([] {
    pipeForOutput();
    const int other = dup(STDOUT_FILENO);
    TConsole::Guard();
    tell("waits", (fcntl(other, F_GETFL) & O_NONBLOCK) == 0);
    tell("waits", (fcntl(STDOUT_FILENO, F_GETFL) & O_NONBLOCK) == 0);
  });
  EXPECT_EQ(child.output(), "[waits 1][waits 0]");
}

TEST(Console, AFileGetsEverythingInTheOrderOfTheProgramAndItsChildren) {
  char name[] = "/tmp/consoleXXXXXX";
  const int file = mkstemp(name);
  ChildProcess child([file] {
    dup2(file, STDOUT_FILENO);
    std::printf("before\n");
    TConsole::Guard();
    std::printf("%s\n", std::string(20000, 'x').c_str());
    if (std::system("echo child") != 0) _exit(1);
    std::printf("after");
    std::exit(0);
  });
  EXPECT_EQ(child.end(), "exit 0");
  lseek(file, 0, SEEK_SET);
  EXPECT_EQ(readAll(file), "before\n" + std::string(20000, 'x') + "\nchild\nafter");
  close(file);
  unlink(name);
}

TEST(Console, CommandsKeepTheEndByABrokenPipe) {
  ChildProcess child([] {
    TConsole::Guard();
    tell("ends by", static_cast<unsigned long>(std::system("kill -PIPE $$")));
    std::raise(SIGPIPE);
  });
  EXPECT_EQ(child.end(), "exit 99");
  EXPECT_EQ(child.output(), "[ends by 13]");
}

TEST(Console, NothingIsDroppedWithoutTheGuard) { EXPECT_EQ(TConsole::Dropped(), 0u); }

}  // namespace
