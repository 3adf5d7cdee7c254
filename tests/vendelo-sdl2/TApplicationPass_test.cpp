// One pass of the main loop in small: which locks it holds where, what it serves before the start, and the GUI's
// logic.
#include <stdexcept>

#include "tests/vendelo-sdl2/TApplicationLoopFixture.h"
#include "vendelo-sdl2/TAppModule.h"

using namespace looptest;

namespace {

class Pass : public Loop {
 protected:
  ~Pass() override {
    app.reset();
    StubGui::onMainLogic() = nullptr;
    SDL_Quit();
  }
  std::function<void()> note(const std::string& line) {
    return [this, line] { order.add(line + ": " + heldElsewhere()); };
  }
  void action(ActionHandleType type, const std::string& line) {
    app->AddActionListener(
      "TestAction",
      new TahLambda([this, line](std::string, void*) { note(line)(); }, TActionHandler::ahtExecuteEndless), type);
  }
  void timedTask(TimedTaskType type, const std::string& line) {
    app->AddTimedTask(new TtthLambda(note(line), 0, TTimedTaskHandler::EXECUTE_ONCE, line), type);
  }
  // Something of everything that the main thread serves, each telling the locks that it runs under.
  void fillAll() {
    action(ACTION_NORMAL, "normal action");
    action(ACTION_THREAD_SAFE, "thread-safe action");
    timedTask(TASK_NORMAL, "normal task");
    timedTask(TASK_THREAD_SAFE, "thread-safe task");
    app->GenerateAction("TestAction", nullptr, ACTION_ANY);
    app->Defer(note("deferred"), true, false);
    app->onStoreParameters = note("parameters");
    app->SetParam("Volume", std::string("5"), PARAM_GLOBAL, "", "", false);
    openLog(note("log"));
    clock.advance(1);
  }
};

// Reports the locks under which it is closed.
class HeldModule : public TAppModule {
 public:
  explicit HeldModule(std::function<void(const std::string&)> note) : mNote(std::move(note)) {}
  int Load(void*) override { return 0; }
  void RequestClose() override { mNote("request"); }
  bool ReadyToExit() const override { return mNote("ready"), true; }
  int Close() override { return mNote("close"), 0; }

 private:
  std::function<void(const std::string&)> mNote;
};

TEST_F(Pass, HoldsTheMainMutexThroughoutTheDrawMutexForItsLogicAndTheStateForTheRest) {
  giveItAGui();
  fillAll();
  StubGui::onMainLogic() = note("components");
  static std::function<void()> inSleep;
  inSleep = note("sleep");
  SystemSeams.NanoSleep = [](const timespec*, timespec*) { return inSleep(), 0; };
  app->TargetFrequency = 1;  // the first pass sleeps
  clock.set(400);
  app->onRunOnce = [&] {
    note("logic")();
    if (order.count("logic: main draw ") == 2) app->terminate(DEFAULT, false);
    return 0;
  };
  loopFrom(TApplication::APP_RUNNING);
  auto lines = order.lines();
  ASSERT_GE(lines.size(), 10u);
  lines.resize(10);
  EXPECT_EQ(lines, (std::vector<std::string>{
                     "sleep: main ", "deferred: main draw ", "components: main draw ", "logic: main draw ",
                     "normal action: main draw ", "normal task: main draw ", "thread-safe action: main state ",
                     "thread-safe task: main state ", "parameters: main state ", "log: main state "}));
}

TEST_F(Pass, HoldsTheStateWhileTheModulesAreClosed) {
  (new HeldModule([this](const std::string& line) { note(line)(); }))->Init(app.get(), "held", nullptr, 1);
  app->onCanExit = [this] { return note("can exit")(), true; };
  app->terminate(DEFAULT, true);
  app->MainLoop();
  EXPECT_EQ(order.lines(), (std::vector<std::string>{"request: main state ", "ready: main state ",
                                                     "close: main state ", "can exit: main state "}));
}

TEST_F(Pass, RunServesWhatNeedsNoFrameBeforeTheStartUnderTheMainMutex) {
  fillAll();
  std::atomic<int> async{0};
  app->AddActionListener("TestAction",
                         new TahLambda([&](std::string, void*) { async += app->IsInMainThread() ? 100 : 1; },
                                       TActionHandler::ahtExecuteEndless),
                         ACTION_ASYNC);
  app->onStartup = [this] {
    note("startup")();
    app->setStatus(TApplication::APP_STARTUP);
  };
  app->onState = [this](TApplication::ApplicationState state) {
    if (state != TApplication::APP_RUNNING) return;
    order.add("start");
    app->terminate(DEFAULT, false);  // the main loop leaves before it serves anything
  };
  EXPECT_EQ(app->Run(), 0);
  EXPECT_EQ(order.lines(),
            (std::vector<std::string>{"startup: ", "thread-safe action: main ", "thread-safe task: main ",
                                      "parameters: main ", "log: main ", "start"}));
  EXPECT_EQ(async, 1);  // the end has waited for it
}

TEST_F(Pass, RunServesOnceWhenTheStateIsThereAlready) {
  app->setStatus(TApplication::APP_STARTUP_GRAPHICS);
  timedTask(TASK_THREAD_SAFE, "thread-safe task");
  clock.advance(1);
  app->onState = [this](TApplication::ApplicationState state) {
    order.add("state " + std::to_string(state));
    if (state == TApplication::APP_RUNNING) app->terminate(DEFAULT, false);
  };
  app->Run();
  EXPECT_EQ(order.lines().at(0), "state 6");  // the first step: one state further
  EXPECT_EQ(order.lines().at(1), "state 8");
  EXPECT_TRUE(order.contains("thread-safe task: main "));
}

TEST_F(Pass, AsynchronousActionsRunOnThreadsOfTheirOwn) {
  std::atomic<int> async{0};
  app->AddActionListener("TestAction",
                         new TahLambda([&](std::string, void*) { async += app->IsInMainThread() ? 100 : 1; },
                                       TActionHandler::ahtExecuteEndless),
                         ACTION_ASYNC);
  app->GenerateAction("TestAction", nullptr, ACTION_ANY);
  runPasses(TApplication::APP_RUNNING, 2, nullptr);  // the second one ends inside its logic
  EXPECT_EQ(async, 1);
}

TEST_F(Pass, ActionsAndTasksAreServedByTheirKind) {
  action(ACTION_NORMAL, "normal action");
  action(ACTION_THREAD_SAFE, "thread-safe action");
  timedTask(TASK_NORMAL, "normal task");
  timedTask(TASK_THREAD_SAFE, "thread-safe task");
  app->GenerateAction("TestAction", nullptr, ACTION_ANY);
  app->ProcessActions();
  clock.advance(1);
  app->ExecuteActionsAndTasks(true);
  EXPECT_EQ(order.lines(), (std::vector<std::string>{"thread-safe action: ", "thread-safe task: "}));
  app->ExecuteActionsAndTasks(false);
  EXPECT_EQ(order.lines(), (std::vector<std::string>{
                             "thread-safe action: ", "thread-safe task: ", "normal action: ", "normal task: "}));
}

// ---- with a GUI module

TEST_F(Pass, TimeOfTheComponentsLogicIsItsOwnAndCountsTowardsTheNextOne) {
  giveItAGui();
  app->TargetFrequency = 1001;
  app->SetLogicInterval(10);
  everyPassTakesAMillisecond();  // 1001 at the begin
  StubGui::onMainLogic() = [this] { clock.advance(12); };
  std::vector<Uint32> ticks;
  std::vector<int> logic, run;
  app->AddTimedTask(new TtthLambda(
                      [&] {
                        logic.push_back(app->LogicDurationMs);
                        run.push_back(app->RunDurationMs);
                      },
                      0, TTimedTaskHandler::ENDLESS, "look"),
                    TASK_NORMAL);
  app->onRunOnce = [&] {
    ticks.push_back(clock.now());
    if (ticks.size() == 2) app->terminate(DEFAULT, false);
    clock.advance(5);
    return 0;
  };
  loopFrom(TApplication::APP_RUNNING);
  // The logic is due in the first pass already, and its interval runs from the end of the components' logic.
  EXPECT_EQ(ticks, (std::vector<Uint32>{1013, 1023}));
  ASSERT_GE(run.size(), 2u);
  EXPECT_EQ(run[0], 5);
  EXPECT_EQ(logic[0], 12);
  for (size_t pass = 1; pass < run.size(); ++pass) {
    EXPECT_EQ(run[pass], 0);
    EXPECT_EQ(logic[pass], 0);  // once a frame, and there was no frame
  }
  EXPECT_EQ(app->LogicDurationMs, 0);
}

TEST_F(Pass, ComponentsLogicRunsOnceUntilAFrameAsksAgain) {
  giveItAGui();
  int logic = 0;
  std::vector<int> seen;
  StubGui::onMainLogic() = [&] {
    EXPECT_FALSE(app->ComponentLogicCalled);
    ++logic;
  };
  runPasses(TApplication::APP_RUNNING, 6, [&](int pass) {
    EXPECT_TRUE(app->ComponentLogicCalled);
    seen.push_back(logic);
    if (pass == 3) app->ComponentLogicCalled = false;  // as a frame does
  });
  EXPECT_EQ(seen, (std::vector<int>{1, 1, 1, 1, 2, 2}));
}

TEST_F(Pass, ComponentsLogicIsPartOfThePeriod) {
  giveItAGui();
  app->TargetFrequency = 100;
  StubGui::onMainLogic() = [this] { clock.advance(4); };
  runPasses(TApplication::APP_RUNNING, 3, nullptr);
  EXPECT_EQ(fakeSleep.milliseconds(), (std::vector<long>{6, 10}));
}

TEST_F(Pass, FrequencyIsCutToWholePassesOnceASecondIsFull) {
  giveItAGui();
  app->TargetFrequency = 1001;
  const Uint32 begins[] = {1000, 1999, 2000, 2600, 3200, 4400, 4401};
  std::vector<int> seen;
  runPasses(TApplication::APP_RUNNING, 7, [&](int pass) {
    seen.push_back(app->CurrentFrequency());
    if (pass < 6) clock.set(begins[pass + 1]);
  });
  // Two passes in 1000 ms, two in 1200 ms, one in 1200 ms.
  EXPECT_EQ(seen, (std::vector<int>{0, 0, 2, 2, 1, 0, 0}));
}

TEST_F(Pass, SecondOfTheFrequencyBeginsBehindTheComponentsLogic) {
  giveItAGui();
  app->TargetFrequency = 1001;
  int logic = 0;
  StubGui::onMainLogic() = [&] {
    if (++logic == 2) clock.advance(400);
  };
  const Uint32 begins[] = {1000, 2000, 3300, 3400};
  std::vector<int> seen;
  runPasses(TApplication::APP_RUNNING, 4, [&](int pass) {
    seen.push_back(app->CurrentFrequency());
    if (pass == 0) app->ComponentLogicCalled = false;
    if (pass < 3) clock.set(begins[pass + 1]);
  });
  // One pass until 2000; the next second is full at 3400 only, with two passes.
  EXPECT_EQ(seen, (std::vector<int>{0, 1, 1, 2}));
}

TEST_F(Pass, FrequencyIsNotMeasuredWithoutAGui) {
  app->TargetFrequency = 1001;
  runPasses(TApplication::APP_RUNNING, 6, [&](int) {
    EXPECT_EQ(app->CurrentFrequency(), 0);
    clock.advance(1500);
  });
}

TEST_F(Pass, FrequencyIsNotMeasuredBeforeRunning) {
  giveItAGui();
  runPasses(TApplication::APP_STARTUP, 6, [&](int) {
    EXPECT_EQ(app->CurrentFrequency(), 0);
    clock.advance(1500);
  });
}

TEST_F(Pass, ComponentsLogicIsLeftOutWhenADeferredMethodTerminates) {
  giveItAGui();
  StubGui::onMainLogic() = [this] { order.add("components"); };
  app->Defer([this] { app->terminate(DEFAULT, false); }, true, false);
  loopFrom(TApplication::APP_RUNNING);
  EXPECT_TRUE(order.lines().empty());
}

TEST_F(Pass, ResultsOfTheLogicAndOfTheDrawThreadAreCombined) {
  giveItAGui();
  app->onSetupGraphics = [] { return true; };
  std::atomic<bool> inFrame{false};
  app->onDrawOnce = [&, frames = 0]() mutable {
    if (++frames < 3) return 0;  // one in each of the two stages before the draw loop
    inFrame = true;
    while (!app->shuttingDown()) SDL_Delay(1);
    return 4;
  };
  app->onRunOnce = [&] { return inFrame ? 3 : 0; };
  EXPECT_EQ(loopFrom(TApplication::APP_RUNNING), 3 | -4);
}

}  // namespace
