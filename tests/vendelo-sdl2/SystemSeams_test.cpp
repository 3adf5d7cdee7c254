// The real call behind the seam that runs a shell command.
#include "vendelo-sdl2/SystemSeams.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

using vendelo_sdl2::SystemSeams;

namespace {

volatile std::sig_atomic_t taken = 0;

class Shell : public testing::Test {
 protected:
  Shell() {
    char name[] = "/tmp/shellXXXXXX";
    folder = mkdtemp(name);
  }
  ~Shell() override { std::filesystem::remove_all(folder); }
  int run(const std::string& command) { return SystemSeams.System(command.c_str()); }
  // What the command prints.
  std::string output(const std::string& command) {
    EXPECT_EQ(run("{ " + command + "; } > " + folder + "/output"), 0) << command;
    std::ifstream file(folder + "/output");
    return std::string(std::istreambuf_iterator<char>(file), {});
  }
  std::string folder;
};

// Takes a signal for a scope and counts.
class Taking {
 public:
  Taking(int signal, int flags) : mSignal(signal) {
    taken = 0;
    struct sigaction action {};
    action.sa_handler = [](int) { taken = taken + 1; };
    action.sa_flags = flags;
    sigaction(signal, &action, &mFormer);
  }
  ~Taking() { sigaction(mSignal, &mFormer, nullptr); }
  Taking(const Taking&) = delete;
  Taking& operator=(const Taking&) = delete;

 private:
  int mSignal;
  struct sigaction mFormer {};
};

TEST_F(Shell, RunsACommandToItsEndAndAnswersItsStatus) {
  EXPECT_EQ(run("true"), 0);
  EXPECT_EQ(WEXITSTATUS(run("exit 7")), 7);
  EXPECT_EQ(WEXITSTATUS(run("/no/such/command 2>/dev/null")), 127);
  const int killed = run("kill -TERM $$");
  EXPECT_TRUE(WIFSIGNALED(killed));
  EXPECT_EQ(WTERMSIG(killed), SIGTERM);
  EXPECT_EQ(output("echo \"$0 $#\"; echo 'two  words'"), "sh 0\ntwo  words\n");
  EXPECT_EQ(output("echo $PPID"), std::to_string(getpid()) + "\n");
}

TEST_F(Shell, WhatTheCommandStartsInTheBackgroundIsNotWaitedFor) {
  // It waits for a writer who never comes before the call returns.
  EXPECT_EQ(run("mkfifo " + folder + "/gate; cat " + folder + "/gate > /dev/null 2>&1 &"), 0);
  EXPECT_EQ(run("until [ -p " + folder + "/gate ]; do :; done; echo > " + folder + "/gate"), 0);
}

TEST_F(Shell, SignalsReachTheProcessWhileItsCommandRuns) {
  for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGCHLD}) {
    const Taking taking(signal, SA_RESTART);
    EXPECT_EQ(run("kill -" + std::to_string(signal) + " $PPID"), 0);
    EXPECT_GE(taken, 1) << signal;
  }
}

TEST_F(Shell, SignalThatInterruptsTheWaitDoesNotEndIt) {
  const Taking taking(SIGINT, 0);
  const std::string waits = "until grep -q 'State:.S' /proc/$PPID/status; do :; done; ";
  EXPECT_EQ(WEXITSTATUS(run(waits + "kill -INT $PPID; sleep 1; exit 3")), 3);
  EXPECT_EQ(taken, 1);
}

TEST_F(Shell, FailureIsMinusOne) {
  EXPECT_EQ(run("true " + std::string(1 << 20, 'x')), -1);  // more than a process can be given
  EXPECT_EQ(errno, E2BIG);
  const auto former = std::signal(SIGCHLD, SIG_IGN);  // its children leave no status
  EXPECT_EQ(run("true"), -1);
  EXPECT_EQ(errno, ECHILD);
  std::signal(SIGCHLD, former);
}

}  // namespace
