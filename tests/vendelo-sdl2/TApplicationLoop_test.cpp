#include <stdexcept>

#include "tests/vendelo-sdl2/TApplicationLoopFixture.h"

using namespace looptest;

namespace {

TEST_F(Loop, SleepsForWhatTheWorkLeavesOfThePeriod) {
  app->TargetFrequency = 100;
  const int work[] = {3, 3, 12, 0, 9, 0};
  runPasses(TApplication::APP_RUNNING, 6, [&](int pass) { clock.advance(static_cast<Uint32>(work[pass])); });
  // The first pass is late from the start of the clock, the fourth by the work of the third.
  EXPECT_EQ(fakeSleep.milliseconds(), (std::vector<long>{7, 7, 10, 1}));
}

TEST_F(Loop, OversleepShortensTheNextSleepOnly) {
  app->TargetFrequency = 100;
  fakeSleep.overshoot = {2, 0};
  runPasses(TApplication::APP_RUNNING, 5, [&](int) { clock.advance(3); });
  EXPECT_EQ(fakeSleep.milliseconds(), (std::vector<long>{7, 5, 7, 7}));
}

TEST_F(Loop, OversleepOfAWholePeriodSkipsASleepAndIsForgotten) {
  app->TargetFrequency = 100;
  fakeSleep.overshoot = {25, 0};
  runPasses(TApplication::APP_RUNNING, 5, [&](int) { clock.advance(3); });
  EXPECT_EQ(fakeSleep.milliseconds(), (std::vector<long>{7, 7, 7}));
}

TEST_F(Loop, InterruptedSleepIsReportedAndMadeUpFor) {
  app->TargetFrequency = 100;
  fakeSleep.overshoot = {-4, 0};
  fakeSleep.result = -1;
  testing::internal::CaptureStdout();
  runPasses(TApplication::APP_RUNNING, 3, [&](int) { clock.advance(3); });
  EXPECT_NE(testing::internal::GetCapturedStdout().find("Nano sleep system call failed!\n"), std::string::npos);
  EXPECT_EQ(fakeSleep.milliseconds(), (std::vector<long>{7, 11}));
}

TEST_F(Loop, LongPeriodsSleepWholeSecondsAndTheRest) {
  app->TargetFrequency = 1;
  runPasses(TApplication::APP_RUNNING, 3, [&](int pass) {
    if (pass == 1) clock.advance(400);
  });
  ASSERT_EQ(fakeSleep.requests.size(), 2u);
  EXPECT_EQ(fakeSleep.requests[0].tv_sec, 1);
  EXPECT_EQ(fakeSleep.requests[0].tv_nsec, 0);
  EXPECT_EQ(fakeSleep.requests[1].tv_sec, 0);
  EXPECT_EQ(fakeSleep.requests[1].tv_nsec, 600000000);
}

TEST_F(Loop, NeverSleepsAboveAThousandPassesOrOutsideRunning) {
  app->TargetFrequency = 1001;
  runPasses(TApplication::APP_RUNNING, 20, nullptr);
  EXPECT_TRUE(fakeSleep.requests.empty());
  for (const auto state : {TApplication::APP_INITIALIZING, TApplication::APP_STARTUP,
                           TApplication::APP_STARTUP_GRAPHICS, TApplication::APP_SHUTTING_DOWN}) {
    app = std::make_unique<TestApplication>();
    app->SetLogicInterval(0);
    app->onCanExit = [] { return false; };
    runPasses(state, 20, nullptr);
    EXPECT_TRUE(fakeSleep.requests.empty()) << state;
  }
}

TEST_F(Loop, PeriodIsCutToMillisecondsAndReadOnce) {
  app->TargetFrequency = 300;
  runPasses(TApplication::APP_RUNNING, 4, [&](int) { app->TargetFrequency = 10; });
  EXPECT_EQ(fakeSleep.milliseconds(), (std::vector<long>{3, 3, 3}));
}

// The first pass has followed on no other: its period began with the clock.
TEST_F(Loop, FirstPassSleepsForWhatTheClockHasNotRunYet) {
  clock.set(4);
  app->TargetFrequency = 100;
  runPasses(TApplication::APP_RUNNING, 2, nullptr);
  EXPECT_EQ(fakeSleep.milliseconds(), (std::vector<long>{6, 10}));
}

TEST_F(Loop, OversleepIsForgottenAfterAPassThatWasLate) {
  app->TargetFrequency = 100;
  fakeSleep.overshoot = {4, 0};
  const int work[] = {0, 8, 2, 2};
  runPasses(TApplication::APP_RUNNING, 4, [&](int pass) { clock.advance(static_cast<Uint32>(work[pass])); });
  // 4 ms late, which with 8 ms of work is more than a period: no sleep, and the next one is whole again.
  EXPECT_EQ(fakeSleep.milliseconds(), (std::vector<long>{10, 8}));
}

TEST_F(Loop, PacingSurvivesTheWrapOfTheClock) {
  clock.set(0xfffffffa);
  app->TargetFrequency = 100;
  runPasses(TApplication::APP_RUNNING, 4, [&](int) { clock.advance(3); });
  EXPECT_EQ(fakeSleep.milliseconds(), (std::vector<long>{7, 7, 7}));
}

TEST_F(Loop, LogicComesAtMostOncePerInterval) {
  app->SetLogicInterval(10);
  std::vector<Uint32> ticks;
  runPasses(TApplication::APP_RUNNING, 4, [&](int) { ticks.push_back(clock.now()); });
  EXPECT_EQ(ticks, (std::vector<Uint32>{1010, 1020, 1030, 1040}));
}

TEST_F(Loop, LogicKeepsItsIntervalOverTheWrapOfTheClock) {
  clock.set(0xfffffff6);
  app->SetLogicInterval(10);
  std::vector<Uint32> ticks;
  runPasses(TApplication::APP_RUNNING, 3, [&](int) { ticks.push_back(clock.now()); });
  EXPECT_EQ(ticks, (std::vector<Uint32>{0, 10, 20}));
}

TEST_F(Loop, IntervalOfTheLogicRunsFromTheBeginOfItsPass) {
  app->SetLogicInterval(10);
  std::vector<Uint32> ticks;
  runPasses(TApplication::APP_RUNNING, 3, [&](int) {
    ticks.push_back(clock.now());
    clock.advance(4);
  });
  EXPECT_EQ(ticks, (std::vector<Uint32>{1010, 1020, 1030}));
}

TEST_F(Loop, LogicThatThrewIsDueAgainInTheNextPass) {
  app->TargetFrequency = 1001;
  app->SetLogicInterval(10);
  everyPassTakesAMillisecond();
  std::vector<Uint32> ticks;
  app->onRunOnce = [&] {
    ticks.push_back(clock.now());
    if (ticks.size() == 1) throw std::runtime_error("not now");
    if (ticks.size() == 3) app->terminate(DEFAULT, false);
    return 0;
  };
  app->setStatus(TApplication::APP_RUNNING);
  app->MainLoop();
  EXPECT_EQ(ticks, (std::vector<Uint32>{1011, 1012, 1022}));
}

TEST_F(Loop, OnePassHasItsOrder) {
  handler(ACTION_NORMAL, "normal action");
  handler(ACTION_THREAD_SAFE, "thread-safe action");
  task(TASK_NORMAL, "normal task");
  task(TASK_THREAD_SAFE, "thread-safe task");
  clock.advance(1);
  app->GenerateAction("TestAction", nullptr, ACTION_ANY);
  app->Defer([this] { order.add("deferred"); }, true, false);
  int pass = 0;
  app->onRunOnce = [&] {
    if (++pass == 1)
      order.add("logic");
    else
      app->terminate(DEFAULT, false);
    return 0;
  };
  app->setStatus(TApplication::APP_RUNNING);
  EXPECT_EQ(app->MainLoop(), 0);
  EXPECT_EQ(order.lines(), (std::vector<std::string>{"deferred", "logic", "normal action", "normal task",
                                                     "thread-safe action", "thread-safe task"}));
}

TEST_F(Loop, TerminatingLeavesThePassAtTheNextTest) {
  const struct {
    const char* name;
    std::function<void(TestApplication&)> terminate;
    std::vector<std::string> ran;
  } rows[] = {
    {"deferred", [](auto& a) { a.Defer([&a] { a.terminate(DEFAULT, false); }, true, false); }, {}},
    {"logic",
     [](auto& a) {
       a.onRunOnce = [&a] {
         a.terminate(DEFAULT, false);
         return 0;
       };
     },
     {}},
    {"logic that throws",  // seen behind the part that it has left
     [](auto& a) {
       a.onRunOnce = [&a]() -> int {
         a.terminate(DEFAULT, false);
         throw 1;
       };
     },
     {}},
    {"normal task",
     [](auto& a) {
       a.AddTimedTask(new TtthLambda([&a] { a.terminate(DEFAULT, false); }, 0, TTimedTaskHandler::ENDLESS, "end"),
                      TASK_NORMAL);
     },
     {"logic"}},
    {"thread-safe task",
     [](auto& a) {
       a.AddTimedTask(new TtthLambda([&a] { a.terminate(DEFAULT, false); }, 0, TTimedTaskHandler::ENDLESS, "end"),
                      TASK_THREAD_SAFE);
     },
     {"logic", "thread-safe action"}},
  };
  for (const auto& row : rows) {
    Trace ran;
    app = std::make_unique<TestApplication>();
    app->SetLogicInterval(0);
    app->onRunOnce = [&] {
      ran.add("logic");
      return 0;
    };
    row.terminate(*app);
    app->AddActionListener(
      "TestAction",
      new TahLambda([&](std::string, void*) { ran.add("thread-safe action"); }, TActionHandler::ahtExecuteEndless),
      ACTION_THREAD_SAFE);
    app->GenerateAction("TestAction", nullptr, ACTION_ANY);
    clock.advance(1);
    app->setStatus(TApplication::APP_RUNNING);
    app->MainLoop();
    EXPECT_EQ(ran.lines(), row.ran) << row.name;
    EXPECT_EQ(app->status(), TApplication::APP_QUIT);
    EXPECT_EQ(heldElsewhere(), "") << row.name;
  }
}

TEST_F(Loop, ExceptionsInTheLogicArePrintedAndThePassGoesOn) {
  task(TASK_THREAD_SAFE, "rest of the pass");
  clock.advance(1);
  testing::internal::CaptureStdout();
  bool drawMutexIsFree = false;
  int pass = 0;
  bool wentOn = false;
  app->onRunOnce = [&] {
    if (++pass == 1) throw std::runtime_error("out of paper");
    wentOn = order.contains("rest of the pass");
    if (pass == 2) throw 7;
    app->terminate(DEFAULT, false);
    return 0;
  };
  app->setStatus(TApplication::APP_RUNNING);
  app->MainLoop();
  std::thread([&] {
    drawMutexIsFree = app->tryLockDrawMutex();
    if (drawMutexIsFree) app->unlockDrawMutex();
  }).join();
  const std::string printed = testing::internal::GetCapturedStdout();
  EXPECT_NE(printed.find("Std exception: out of paper"), std::string::npos);
  EXPECT_NE(printed.find("Unknown exception"), std::string::npos);
  EXPECT_TRUE(drawMutexIsFree);
  EXPECT_TRUE(wentOn);
}

TEST_F(Loop, ExceptionsOutsideTheLogicLeaveTheLoop) {
  app->onState = [](TApplication::ApplicationState state) {
    if (state == TApplication::APP_TERMINATE) throw std::runtime_error("state");
  };
  app->setStatus(TApplication::APP_SHUTTING_DOWN);
  EXPECT_THROW(app->MainLoop(), std::runtime_error);
  app->onState = nullptr;
}

TEST_F(Loop, FrameUnderWayCostsTheLogicAndNotTheRest) {
  std::atomic<bool> held{false}, done{false};
  std::thread frame([&] {
    app->lockDrawMutex();
    held = true;
    while (!done) std::this_thread::yield();
    app->unlockDrawMutex();
  });
  while (!held) std::this_thread::yield();
  int logic = 0, safe = 0;
  app->onRunOnce = [&] { return ++logic, 0; };
  app->AddTimedTask(new TtthLambda(
                      [&] {
                        clock.advance(1);
                        if (++safe == 50) app->terminate(DEFAULT, false);
                      },
                      0, TTimedTaskHandler::ENDLESS, "count"),
                    TASK_THREAD_SAFE);
  clock.advance(1);
  app->setStatus(TApplication::APP_STARTUP_GRAPHICS);
  app->MainLoop();
  done = true;
  frame.join();
  EXPECT_EQ(safe, 50);
  EXPECT_EQ(logic, 0);
}

TEST_F(Loop, ResultOfTheLogicEndsTheLoopAfterItsPass) {
  app->onRunOnce = [] { return 4; };
  task(TASK_THREAD_SAFE, "rest of the pass");
  clock.advance(1);
  app->setStatus(TApplication::APP_RUNNING);
  EXPECT_EQ(app->MainLoop(), 4);
  EXPECT_TRUE(order.contains("rest of the pass"));
}

TEST_F(Loop, WithoutGuiTheMainThreadDestroysBeforeTheLastState) {
  TApplication::ApplicationState atDestroy = TApplication::APP_QUIT;
  bool onMain = false;
  app->onDestroy = [&] {
    atDestroy = app->status();
    onMain = app->IsInMainThread();
  };
  runPasses(TApplication::APP_RUNNING, 1, nullptr);
  EXPECT_EQ(atDestroy, TApplication::APP_TERMINATE);
  EXPECT_TRUE(onMain);
  EXPECT_EQ(app->destroyCalls(), 1);
  EXPECT_EQ(app->status(), TApplication::APP_QUIT);
}

TEST_F(Loop, DurationsAreThoseOfTheLatestPass) {
  app->AddTimedTask(new TtthLambda([&] { clock.advance(3); }, 0, TTimedTaskHandler::ENDLESS, "3"), TASK_NORMAL);
  app->AddTimedTask(new TtthLambda(
                      [&] {
                        clock.advance(4);
                        app->terminate(DEFAULT, false);
                      },
                      0, TTimedTaskHandler::ENDLESS, "4"),
                    TASK_THREAD_SAFE);
  const auto takes = [this](Uint32 milliseconds) {
    return new TahLambda([this, milliseconds](std::string, void*) { clock.advance(milliseconds); },
                         TActionHandler::ahtExecuteEndless);
  };
  app->AddActionListener("TestAction", takes(5), ACTION_NORMAL);
  app->AddActionListener("TestAction", takes(6), ACTION_THREAD_SAFE);
  app->GenerateAction("TestAction", nullptr, ACTION_ANY);
  app->onRunOnce = [&] {
    clock.advance(7);
    return 0;
  };
  app->onStoreParameters = [&] { clock.advance(8); };
  app->SetParam("Volume", std::string("5"), PARAM_GLOBAL, "", "", false);
  openLog([this] { clock.advance(9); });
  app->DrawDurationMs = 99;
  clock.advance(1);
  app->setStatus(TApplication::APP_RUNNING);
  app->MainLoop();
  EXPECT_EQ(app->RunDurationMs, 7);
  EXPECT_EQ(app->TaskDurationMs, 7);
  EXPECT_EQ(app->ActionDurationMs, 11);
  EXPECT_EQ(app->DrawDurationMs, 0);
  EXPECT_EQ(app->ParamDurationMs, 8);
  EXPECT_EQ(app->LogDurationMs, 9);
}

TEST_F(Loop, DurationsOfAnEarlierPassAreCleared) {
  app->RunDurationMs = app->TaskDurationMs = app->ActionDurationMs = 99;
  app->SetLogicInterval(1000);
  app->AddTimedTask(new TtthLambda([&] { app->terminate(DEFAULT, false); }, 0, TTimedTaskHandler::ENDLESS, "end"),
                    TASK_THREAD_SAFE);
  clock.advance(1);
  app->setStatus(TApplication::APP_RUNNING);
  app->MainLoop();
  EXPECT_EQ(app->RunDurationMs, 0);
  EXPECT_EQ(app->TaskDurationMs, 0);
  EXPECT_EQ(app->ActionDurationMs, 0);
}

TEST_F(Loop, RunServesThreadSafeWorkUntilStartupIsReached) {
  handler(ACTION_THREAD_SAFE, "thread-safe action");
  handler(ACTION_NORMAL, "normal action");
  app->GenerateAction("TestAction", nullptr, ACTION_ANY);
  app->onStartup = [this] { order.add("startup in " + std::to_string(app->status())); };
  app->AddTimedTask(new TtthLambda(
                      [this] {
                        order.add("thread-safe task");
                        clock.advance(1);
                        // From a thread without locks: a task must not take the state's.
                        std::thread([this] { app->setStatus(TApplication::APP_STARTUP); }).join();
                      },
                      0, TTimedTaskHandler::EXECUTE_ONCE, "up"),
                    TASK_THREAD_SAFE);
  app->onRunOnce = [this] {
    order.add("logic in " + std::to_string(app->status()));
    return 1;
  };
  clock.advance(1);
  EXPECT_EQ(app->Run(), 1);
  EXPECT_EQ(order.lines(), (std::vector<std::string>{"startup in 1", "thread-safe action", "thread-safe task",
                                                     "logic in 6", "normal action"}));
  EXPECT_EQ(app->AppStartTicks, 1001u);
}

// ---- the shutdown states

class ClosingModule : public TAppModule {
 public:
  explicit ClosingModule(Trace& trace) : mTrace(trace) {}
  int Load(void*) override { return 0; }
  void RequestClose() override { mTrace.add("request " + ModuleName); }
  bool ReadyToExit() const override {
    mTrace.add("ask " + ModuleName);
    return refusals-- <= 0;
  }
  int Close() override {
    mTrace.add("close " + ModuleName);
    return 0;
  }
  mutable int refusals = 0;

 private:
  Trace& mTrace;
};

TEST_F(Loop, ShutdownAnnouncesOnceThenAsksAndClosesFromTheBack) {
  auto* low = new ClosingModule(order);
  auto* middle = new ClosingModule(order);
  auto* high = new ClosingModule(order);
  low->Init(app.get(), "low", nullptr, 1);
  high->Init(app.get(), "high", nullptr, 3);
  middle->Init(app.get(), "middle", nullptr, 2);
  middle->refusals = 1;
  int exitAsked = 0;
  app->onCanExit = [&] {
    order.add("can exit");
    return ++exitAsked == 2;
  };
  app->setStatus(TApplication::APP_RUNNING);
  app->terminate(DEFAULT, true);
  EXPECT_EQ(app->MainLoop(), 0);
  EXPECT_EQ(
    order.lines(),
    (std::vector<std::string>{
      "request low", "request middle", "request high",  // first pass
      "ask low",     "close low",      "ask middle",    // stops at the refusal
      "ask low",     "close low",      "ask middle",   "close middle", "ask high", "close high",
      "can exit",  // refused
      "ask low",     "close low",      "ask middle",   "close middle", "ask high", "close high", "can exit"}));
  EXPECT_EQ(app->status(), TApplication::APP_QUIT);
}

TEST_F(Loop, ModuleMayLeaveWhileItIsClosed) {
  struct Leaver : ClosingModule {
    using ClosingModule::ClosingModule;
    void RequestClose() override { pApplication->DropModule("other"); }
  };
  Leaver leaver(order);
  ClosingModule other(order);
  leaver.Init(app.get(), "leaver", nullptr, 1);
  other.Init(app.get(), "other", nullptr, 2);
  app->terminate(DEFAULT, true);
  app->onDestroy = [&] { app->DropModule(&leaver); };
  app->MainLoop();
  EXPECT_FALSE(order.contains("request other"));
}

}  // namespace
