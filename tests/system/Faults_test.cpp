// What may happen around the program in years: each fault ends in a screen that goes on or in an end in time.
#include <fcntl.h>
#include <linux/capability.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>
#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <thread>

#include "tests/system/SystemHarness.h"

namespace systest {
namespace {

namespace fs = std::filesystem;

// An end takes ten seconds at most; so much more where the machine is busy.
constexpr int kEndBound = 40000;
constexpr char kCutShort[] = "The end has taken ten seconds, what is left of it is left out";

class Faults : public SystemTest {
 protected:
  // The service answers no call any more, and one is waiting for it.
  void silence() {
    mSimulator.apply({{"do", "bad"}, {"method", "*"}, {"reply", "silent"}, {"ms", 3600000}, {"calls", -1}});
    ASSERT_TRUE(within(20000, [this] {
      const Json entries = mSimulator.log(0);
      return std::any_of(entries.begin(), entries.end(),
                         [](const Json& entry) { return entry.value("bad", "") == "silent"; });
    }));
  }
  std::vector<int64_t> registrationTimes() {
    std::vector<int64_t> out;
    for (const Json& entry : mSimulator.log(0))
      if (entry.value("method", "") == "topscreen.init") out.push_back(entry["t"].get<int64_t>());
    return out;
  }
  void failPolls(int code, const std::string& text) {
    mSimulator.apply({{"do", "good"}});
    mSimulator.apply({{"do", "bad"},
                      {"method", "game.popEvents"},
                      {"reply", "fault"},
                      {"code", code},
                      {"text", text},
                      {"calls", -1}});
  }
  std::string dated() const {
    for (const auto& entry : fs::directory_iterator(mFolder))
      if (entry.path().filename().string().starts_with("top_")) return entry.path().string();
    return "";
  }
};

// ---- ends that end

// A way to ask the running program for its end.
struct Ask {
  const char* name;
  void (*ask)(XServer& x);
};

void PrintTo(const Ask& ask, std::ostream* out) { *out << ask.name; }

class AskedEnd : public Faults, public testing::WithParamInterface<Ask> {};

TEST_P(AskedEnd, BesideASilentServiceComesInTenSecondsWith0) {
  startUntilPanel(Renderer::Software, 5);
  if (HasFatalFailure()) return;
  silence();
  GetParam().ask(mX);
  EXPECT_TRUE(exitsWith(kEndBound, 0));
  EXPECT_EQ(logged(kCutShort), 1);
}

const Ask kAsks[] = {{"ByEscape", [](XServer& x) { EXPECT_TRUE(x.typeKey("Escape")); }},
                     {"ByAClosedWindow", [](XServer& x) { x.requestClose(x.findWindow("TopScreen")); }}};

INSTANTIATE_TEST_SUITE_P(All, AskedEnd, testing::ValuesIn(kAsks), [](const auto& info) { return info.param.name; });

TEST_F(Faults, SignalBesideASilentServiceDoesNotWaitForIt) {
  startUntilPanel(Renderer::Software, 5);
  if (HasFatalFailure()) return;
  silence();
  mProgram.signal(SIGTERM);
  EXPECT_TRUE(exitsWith(kEndBound, SIGTERM));
  EXPECT_EQ(logged(kCutShort), 0);
}

// The draw thread waits for the server inside a frame, and so does who asks for events.
TEST_F(Faults, SignalBesideAHangingXServerEndsInTenSecondsWithItsNumber) {
  startUntilPanel(Renderer::Software, 5);
  if (HasFatalFailure()) return;
  mX.process().signal(SIGSTOP);
  mProgram.signal(SIGTERM);
  EXPECT_TRUE(exitsWith(kEndBound, SIGTERM));
  mX.process().signal(SIGCONT);
  EXPECT_EQ(logged(kCutShort), 1);
}

// ThreadSanitizer gives a signal to a thread only where that is amid nothing, and never to one that waits for a
// lock.
#ifndef __SANITIZE_THREAD__

// One program after the other, each on one of its threads or as a whole, amid frames, polls and log lines. CRASHES
// in the environment says how many.
TEST_F(Faults, CrashAtAnyMomentOfABusyProgramEndsItByItsSignal) {
  const char* wanted = std::getenv("CRASHES");
  const int crashes = wanted ? std::atoi(wanted) : 4;
  std::mt19937 random(1);
  int traced = 0;
  startSimulator();
  if (HasFatalFailure()) return;
  mSimulator.apply({{"do", "add"}, {"level", {{"CurrentPot", 5}, {"DecimalPlaces", 0}}}});
  mSimulator.apply({{"do", "grow"}, {"id", 0}, {"every", 50}, {"min", 1}, {"max", 99999}, {"seed", 7}});
  for (int number = 0; number < crashes; ++number) {
    SCOPED_TRACE("crash " + std::to_string(number));
    mSimulator.apply({{"do", "good"}});
    startProgram(mSimulator.address(), Renderer::Software, {});
    ASSERT_TRUE(within(20000, [this] { return panelShown(); })) << "no panel";
    if (number % 2 == 1) failPolls(-7, "later");  // a log line for each, and the whole state anew
    ASSERT_TRUE(asksForEvents(2));
    std::vector<pid_t> threads;
    for (const auto& entry : fs::directory_iterator("/proc/" + std::to_string(mProgram.pid()) + "/task"))
      threads.push_back(std::stoi(entry.path().filename().string()));
    std::sort(threads.begin(), threads.end());
    usleep(random() % 300000);
    const size_t target = random() % (threads.size() + 1);
    if (target == threads.size() || syscall(SYS_tgkill, mProgram.pid(), threads[target], SIGSEGV) != 0)
      mProgram.signal(SIGSEGV);
    const std::optional<int> status = mProgram.wait(bound(60000));
    ASSERT_TRUE(status) << "still running";
    EXPECT_TRUE(WIFSIGNALED(*status));
    EXPECT_EQ(WTERMSIG(*status), SIGSEGV);
    traced += logged("================ BACKTRACE END ================") == 1;
    fs::remove(dated());
  }
  RecordProperty("Crashes", crashes);
  RecordProperty("WithTheWholeBacktrace", traced);
}

#endif

// ---- the console

// A pipe of that name without room, whose reading end is the result.
int fullPipe(const std::string& name) {
  if (mkfifo(name.c_str(), 0600) != 0) return -1;
  const int file = open(name.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
  const std::string line(100, '.');
  while (write(file, line.data(), line.size()) > 0) {
  }
  while (write(file, ".", 1) > 0) {
  }
  return file;
}

class Console : public Faults {
 protected:
  void startOn(const std::string& output) {
    startSimulator();
    if (HasFatalFailure()) return;
    mSimulator.apply({{"do", "add"}, {"level", {{"CurrentPot", 5}, {"DecimalPlaces", 0}}}});
    startProgram(mProgram, output, mSimulator.address(), Renderer::Software, {});
    if (HasFatalFailure()) return;
    ASSERT_TRUE(within(20000, [this] { return panelShown(); })) << "no panel";
  }
};

TEST_F(Console, ThatNobodyReadsHoldsUpNothingAndIsToldOnce) {
  const int file = fullPipe(mFolder + "/console");
  startOn(mFolder + "/console");
  if (HasFatalFailure()) return;
  EXPECT_TRUE(asksForEvents(3));
  failPolls(-7, "later");
  EXPECT_TRUE(within(20000, [this] { return logged("later") >= 3; }));
  EXPECT_EQ(logged("The console does not take all lines: what it does not take is dropped, "), 1);
  mProgram.signal(SIGTERM);
  EXPECT_TRUE(exitsWith(kEndBound, SIGTERM));
  EXPECT_EQ(logged(kCutShort), 0);
  close(file);
}

TEST_F(Console, ThatNobodyReadsHoldsUpNoEndByEscape) {
  const int file = fullPipe(mFolder + "/console");
  startOn(mFolder + "/console");
  if (HasFatalFailure()) return;
  ASSERT_TRUE(mX.typeKey("Escape"));
  EXPECT_TRUE(exitsWith(kEndBound, 0));
  EXPECT_EQ(logged(kCutShort), 0);
  close(file);
}

TEST_F(Console, ThatNobodyReadsAnyMoreDoesNotEndTheProgram) {
  const int file = fullPipe(mFolder + "/console");
  startOn(mFolder + "/console");
  if (HasFatalFailure()) return;
  close(file);
  failPolls(-7, "later");
  EXPECT_TRUE(within(20000, [this] { return logged("later") >= 3; }));
  EXPECT_TRUE(mProgram.running());
  mProgram.signal(SIGTERM);
  EXPECT_TRUE(exitsWith(kEndBound, SIGTERM));
}

TEST_F(Console, ThatIsClosedIsNone) {
  startOn("");
  if (HasFatalFailure()) return;
  for (const char* output : {"/fd/1", "/fd/2"})
    EXPECT_EQ(fs::read_symlink("/proc/" + std::to_string(mProgram.pid()) + output), "/dev/null");
  EXPECT_TRUE(asksForEvents(3));
  ASSERT_TRUE(mX.typeKey("Escape"));
  EXPECT_TRUE(exitsWith(kEndBound, 0));
}

// ---- a second start

TEST_F(Faults, SecondStartIsRefusedUntilTheFirstProcessIsGone) {
  startUntilPanel(Renderer::Software, 5);
  if (HasFatalFailure()) return;
  {
    Process second;
    startProgram(second, mFolder + "/second.txt", mSimulator.address(), Renderer::Software, {});
    const std::optional<int> status = second.wait(bound(kEndBound));
    ASSERT_TRUE(status);
    EXPECT_EQ(WEXITSTATUS(*status), 253);
    EXPECT_NE(contentOf(mFolder + "/second.txt")
                .find("Another top screen is running with HOME_DIR=" + mFolder + "/terminal/ (process " +
                      std::to_string(mProgram.pid()) + "), this start is refused."),
              std::string::npos);
  }
  EXPECT_EQ(mSimulator.calls("topscreen.init"), 1);
  EXPECT_EQ(logged("Top screen started"), 1) << "the log is the first one's";
  EXPECT_TRUE(asksForEvents(3));
  mProgram.signal(SIGKILL);
  ASSERT_TRUE(mProgram.wait(bound(kEndBound)));
  startProgram(mSimulator.address(), Renderer::Software, {});
  EXPECT_TRUE(within(20000, [this] { return mSimulator.calls("topscreen.init") == 2; }));
}

TEST_F(Faults, AnotherHomeIsAnotherTerminal) {
  startUntilPanel(Renderer::Software, 5);
  if (HasFatalFailure()) return;
  fs::create_directories(mFolder + "/other");
  Process second;
  startProgram(second, mFolder + "/second.txt", mSimulator.address(), Renderer::Software,
               {{"HOME_DIR", mFolder + "/other"}, {"LOG_FILENAME", mFolder + "/other/top.log"}});
  EXPECT_TRUE(within(20000, [this] { return mSimulator.calls("topscreen.init") == 2; }));
}

TEST_F(Faults, HomeThatCannotBeWrittenCostsTheLockAndALine) {
  startSimulator();
  if (HasFatalFailure()) return;
  startProgram(mSimulator.address(), Renderer::Software, {{"HOME_DIR", mFolder + "/not there/"}});
  EXPECT_TRUE(asksForEvents(3));
  EXPECT_EQ(logged("WARN: No lock in HOME_DIR (No such file or directory): a second start would not be refused"),
            1);
}

// ---- the service

TEST_F(Faults, ServiceThatRegistersUsAndKnowsNothingOfItIsAskedOnceASecond) {
  startUntilPanel(Renderer::Software, 5);
  if (HasFatalFailure()) return;
  failPolls(-1, "who are you");
  ASSERT_TRUE(within(60000, [this] { return registrationTimes().size() >= 6; }));
  const std::vector<int64_t> times = registrationTimes();
  EXPECT_LT(times[1], times[2]);
  for (size_t n = 2; n < times.size(); ++n) EXPECT_GE(times[n] - times[n - 1], 900) << "registration " << n;
}

TEST_F(Faults, SilentConnectionIsGivenUpAfterTheTimeOfTheOperator) {
  startSimulator();
  if (HasFatalFailure()) return;
  startProgram(mSimulator.address(), Renderer::Software, {{"KSL_CALL_TIMEOUT", "1"}});
  ASSERT_TRUE(asksForEvents(3));
  mSimulator.apply(
    {{"do", "bad"}, {"method", "game.popEvents"}, {"reply", "silent"}, {"ms", 3600000}, {"calls", 1}});
  EXPECT_TRUE(within(20000, [this] { return logged("Received error from game.popEvents -> 1 - ") == 1; }));
  EXPECT_TRUE(asksForEvents(3));
  EXPECT_EQ(mSimulator.calls("topscreen.init"), 1);
}

TEST_F(Faults, WithoutThatTimeACallMayTakeAsLongAsItLikes) {
  startSimulator();
  if (HasFatalFailure()) return;
  startProgram(mSimulator.address(), Renderer::Software, {});
  ASSERT_TRUE(asksForEvents(3));
  mSimulator.apply({{"do", "bad"}, {"method", "game.popEvents"}, {"reply", "slow"}, {"ms", 5000}, {"calls", 1}});
  EXPECT_TRUE(asksForEvents(4));
  EXPECT_EQ(logged("Received error"), 0);
}

TEST_F(Faults, TextOfTheServiceForgesNoLine) {
  startUntilPanel(Renderer::Software, 5);
  if (HasFatalFailure()) return;
  failPolls(-7, "bad\nSun Nov 22 10:00:00 2026: Signal 15 received. Exiting...\x7f\u009b2J");
  ASSERT_TRUE(within(20000, [this] { return logged("-> -7 - bad\\nSun Nov 22 10:00:00 2026: Signal 15") >= 1; }));
  EXPECT_GE(logged("Exiting...\\x7f\\u009b2J"), 1);
  std::istringstream lines(log());
  for (std::string line; std::getline(lines, line);)
    EXPECT_NE(line.find("Sun Nov 22 10:00:00 2026: Signal 15"), 0u);
}

// ---- the log

TEST_F(Faults, LogThatWasRemovedIsMadeAnew) {
  startUntilPanel(Renderer::Software, 5);
  if (HasFatalFailure()) return;
  fs::remove(dated());
  ASSERT_TRUE(within(20000, [this] { return logged("The log file was removed or moved away") == 1; }));
  failPolls(-7, "later");
  EXPECT_TRUE(within(20000, [this] { return logged("later") >= 1; }));
}

// The fortieth of them has to go, and nobody may delete it: root neither, which keeps none of its rights over
// files.
TEST_F(Faults, OldLogsThatCannotBeDeletedEndTheStartWith252) {
  const std::string folder = mFolder + "/logs";
  fs::create_directory(folder);
  for (int i = 0; i < 40; ++i) std::ofstream(folder + "/top_old" + std::to_string(i) + ".log") << "old\n";
  fs::permissions(folder, fs::perms::owner_read | fs::perms::owner_exec);
  std::thread([&] {
    prctl(PR_CAPBSET_DROP, CAP_DAC_OVERRIDE);  // of this thread, and of what it starts
    startProgram("", Renderer::Software, {{"LOG_FILENAME", folder + "/top.log"}});
  }).join();
  EXPECT_TRUE(exitsWith(kEndBound, 252));
  EXPECT_NE(printed().find("Unhadled exception occoured while loading application"), std::string::npos);
  EXPECT_EQ(std::distance(fs::directory_iterator(folder), fs::directory_iterator()), 40);
  fs::permissions(folder, fs::perms::owner_all);
}

TEST_F(Faults, LogThatHasWhatADayMayHaveTakesStartsRegistrationsAndEndsOnly) {
  startUntilPanel(Renderer::Software, 5);
  if (HasFatalFailure()) return;
  mProgram.signal(SIGTERM);
  ASSERT_TRUE(exitsWith(kEndBound, SIGTERM));
  std::ofstream(dated(), std::ios::app) << std::string(1024 * 1024, '\n');
  startProgram(mSimulator.address(), Renderer::Software, {{"LOG_MAX_MB", "1"}});
  ASSERT_TRUE(asksForEvents(3));
  failPolls(-7, "later");
  ASSERT_TRUE(within(20000, [this] { return printed().find("later") != std::string::npos; }));
  failPolls(-1, "who are you");
  ASSERT_TRUE(within(20000, [this] { return logged("KSL: Init response OK!") >= 3; }));
  mProgram.signal(SIGTERM);
  ASSERT_TRUE(exitsWith(kEndBound, SIGTERM));
  EXPECT_EQ(logged("Top screen started"), 2);
  EXPECT_EQ(logged("Signal 15 received. Exiting..."), 2);
  EXPECT_EQ(logged("The log has as many lines as a day may have"), 1);
  EXPECT_EQ(logged("later"), 0);
  EXPECT_EQ(logged("who are you"), 0);
}

// ---- the program's own file

TEST_F(Faults, CrashOfAProgramInAFolderOfAnyNameIsTracedAndTheNameIsRunByNobody) {
  const std::string folder = mFolder + "/a b;touch made;$(touch made)'";
  startSimulator();
  if (HasFatalFailure()) return;
  fs::create_directories(folder);
  mProgramFile = folder + "/topscreen";
  fs::copy_file(programFile(), mProgramFile);
  startProgram(mSimulator.address(), Renderer::Software, {});
  ASSERT_TRUE(asksForEvents(3));
  mProgram.signal(SIGSEGV);
  const std::optional<int> status = mProgram.wait(bound(60000));
  ASSERT_TRUE(status);
  EXPECT_EQ(WTERMSIG(*status), SIGSEGV);
  EXPECT_GE(framesNamed(), 1);
  EXPECT_FALSE(fs::exists(mFolder + "/terminal/made"));
}

}  // namespace
}  // namespace systest
