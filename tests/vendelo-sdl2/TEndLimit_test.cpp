// The thread that waits beside an end, with a time of its own for the nine seconds that are asked for.
#include "vendelo-sdl2/TEndLimit.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/wait.h>
#include <unistd.h>
#include <atomic>
#include <csignal>
#include <cstdlib>
#include <vector>

#include "tests/support/TestApplication.h"

using namespace vendelo_sdl2;

namespace {

std::atomic<int> askedMs{0};
std::atomic<int> waits{0};

class EndLimit : public testing::Test {
 protected:
  EndLimit() {
    askedMs = waits = 0;
    SystemSeams.Poll = [](pollfd* files, nfds_t count, int ms) {
      askedMs = ms;
      ++waits;
      return ::poll(files, count, 1);
    };
  }
  void waitFor(int calls) {
    while (mCalls < calls) usleep(1000);
  }
  // Answers that all is done from the given call on.
  TEndLimit::TExpired expired(int done) {
    return [this, done](int code) {
      mCode = code;
      return ++mCalls >= done;
    };
  }

  const SeamsGuard guard;
  std::atomic<int> mCalls{0}, mCode{-100};
};

TEST_F(EndLimit, AnEndHasNineSecondsAndThenItsCodeIsDue) {
  TEndLimit limit(expired(1));
  limit.Begin(15);
  waitFor(1);
  EXPECT_EQ(mCode, 15);
  EXPECT_EQ(askedMs, 9000);
}

TEST_F(EndLimit, NothingIsDueBeforeAnEndBegins) {
  {
    TEndLimit limit(expired(1));
    usleep(20000);
  }
  EXPECT_EQ(mCalls, 0);
  EXPECT_EQ(waits, 0);
}

TEST_F(EndLimit, TheEndOfAForkedProcessIsNotThisOnes) {
  {
    TEndLimit limit(expired(1));
    const pid_t child = fork();
    if (child == 0) {
      limit.Begin(15);
      _exit(0);
    }
    int status = 0;
    ASSERT_EQ(child, waitpid(child, &status, 0));
    usleep(20000);
  }
  EXPECT_EQ(mCalls, 0);
  EXPECT_EQ(waits, 0);
}

TEST_F(EndLimit, TheFirstEndIsTheOneThatCountsUnlessALaterOneSaysSo) {
  SystemSeams.Poll = [](pollfd* files, nfds_t count, int) {
    while (askedMs == 0) usleep(1000);
    return ::poll(files, count, 0);
  };
  TEndLimit limit(expired(1));
  limit.Begin(0);
  limit.Begin(15);
  askedMs = 1;
  waitFor(1);
  EXPECT_EQ(mCode, 0);

  askedMs = 0;
  mCalls = 0;
  TEndLimit other(expired(1));
  other.Begin(0);
  other.BeginWith(-2);
  other.Begin(15);
  askedMs = 1;
  waitFor(1);
  EXPECT_EQ(mCode, -2);
}

TEST_F(EndLimit, ACodeThatIsDueBeginsTheEndAsWell) {
  TEndLimit limit(expired(1));
  limit.BeginWith(3);
  waitFor(1);
  EXPECT_EQ(mCode, 3);
}

TEST_F(EndLimit, TheWholeTimeIsWaitedForAgainUntilAllIsDone) {
  TEndLimit limit(expired(3));
  limit.Begin(0);
  waitFor(3);
  EXPECT_EQ(waits, 3);
  usleep(20000);
  EXPECT_EQ(mCalls, 3);
}

TEST_F(EndLimit, AnEndThatHasGoneWellCallsItOff) {
  SystemSeams.Poll = [](pollfd* files, nfds_t count, int) { return ::poll(files, count, -1); };
  {
    TEndLimit limit(expired(1));
    limit.Begin(0);
  }
  EXPECT_EQ(mCalls, 0);
}

TEST_F(EndLimit, MayBeginInsideASignalHandler) {
  static TEndLimit* limit = nullptr;
  TEndLimit made(expired(1));
  limit = &made;
  const auto former = std::signal(SIGUSR1, [](int) { limit->Begin(7); });
  std::raise(SIGUSR1);
  std::signal(SIGUSR1, former);
  waitFor(1);
  EXPECT_EQ(mCode, 7);
}

// A signal on its thread would interrupt no sleep and no wait of the main thread's.
TEST_F(EndLimit, LeavesTheSignalsToTheOtherThreadsButForThoseOfACrash) {
  sigset_t taken;
  {
    TEndLimit limit([&](int) {
      pthread_sigmask(SIG_SETMASK, nullptr, &taken);
      ++mCalls;
      return true;
    });
    limit.Begin(0);
    waitFor(1);
  }
  for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGALRM, SIGPIPE, SIGCHLD})
    EXPECT_EQ(sigismember(&taken, signal), 1) << signal;
  for (const int signal : {SIGILL, SIGABRT, SIGFPE, SIGSEGV, SIGBUS}) EXPECT_EQ(sigismember(&taken, signal), 0);
  sigset_t own;
  pthread_sigmask(SIG_SETMASK, nullptr, &own);
  EXPECT_EQ(sigismember(&own, SIGTERM), 0) << "the maker takes its signals as before";
}

}  // namespace
