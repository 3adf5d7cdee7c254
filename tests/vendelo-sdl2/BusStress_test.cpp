// Actions, tasks and parameters used by several threads at once, for bounded counts. What is checked by name is
// that everything made is freed once and nothing is lost; the sanitizers watch the rest.
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <functional>
#include <latch>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/FakeClock.h"
#include "tests/support/TestApplication.h"
#include "vendelo-sdl2/TActionMan.h"
#include "vendelo-sdl2/TAsyncJobs.h"
#include "vendelo-sdl2/TParamMan.h"
#include "vendelo-sdl2/TTaskMan.h"

namespace vendelo_sdl2 {
namespace {

constexpr int kRounds = 150;
constexpr TimedTaskType kSets[] = {TASK_NORMAL, TASK_DRAW, TASK_THREAD_SAFE};

std::atomic<int> born{0};
std::atomic<int> died{0};
std::atomic<int> ran{0};

void forget() { born = died = ran = 0; }

// A handler that writes its life down, for an object by which it can be unregistered.
class Citizen : public TActionHandler {
 public:
  Citizen(void* related, TAHType kind) : TActionHandler(related, kind) { ++born; }
  ~Citizen() override { ++died; }
  void execute(std::string, void*) override {
    ++ran;
    mTouched = true;  // a freed one is noticed
  }

 private:
  bool mTouched = false;
};

// Runs the functions on a thread each, all at once, and waits for all of them.
void together(std::vector<std::function<void()>> jobs) {
  std::latch start(static_cast<std::ptrdiff_t>(jobs.size()));
  std::vector<std::thread> threads;
  for (auto& job : jobs)
    threads.emplace_back([&start, &job] {
      start.arrive_and_wait();
      job();
    });
  for (auto& thread : threads) thread.join();
}

std::string familyName(int n) { return "family" + std::to_string(n % 3); }

// Handlers are registered on actions that another thread deletes in that very moment, while a third and a fourth
// one match and run them.
TEST(ActionStress, HandlersOfActionsThatAreDeletedMeanwhileGoWithThem) {
  forget();
  {
    TActionMan bus;
    std::atomic<int> busy{2};
    std::array<int, 3> related{};
    const auto registrar = [&] {
      for (int n = 0; n < 10 * kRounds; ++n)
        bus.AddActionListener(familyName(n), new Citizen(&related[n % 2], TActionHandler::ahtExecuteEndless),
                              static_cast<ActionHandleType>(n % 3));
      --busy;
    };
    const auto undertaker = [&] {
      for (int n = 0; busy > 0; ++n) bus.UnregisterAction(familyName(n), true);
    };
    const auto heir = [&] {
      for (int n = 0; busy > 0; ++n) bus.UnregisterAllActionHandlersByRelatedObject(&related[n % 2], true);
    };
    const auto draw = [&] {
      while (busy > 0) bus.ExecuteActions(ACTION_DRAW);
    };
    const auto mainLoop = [&] {
      while (busy > 0) {
        for (int n = 0; n < 3; ++n) bus.GenerateAction(familyName(n) + "Changed", nullptr, ACTION_ANY);
        bus.ProcessActions();
        bus.ExecuteActions(ACTION_NORMAL);
        bus.ExecuteActions(ACTION_THREAD_SAFE);
      }
    };
    together({registrar, registrar, undertaker, undertaker, heir, draw, mainLoop});
    // And once when nobody disturbs.
    bus.AddActionListener("family0", new Citizen(nullptr, TActionHandler::ahtExecuteEndless), ACTION_NORMAL);
    bus.GenerateAction_immediate("family0", nullptr, ACTION_NORMAL);
    EXPECT_GT(ran, 0);
  }
  EXPECT_EQ(born, 2 * 10 * kRounds + 1);
  EXPECT_EQ(died, born);
}

TEST(ActionStress, OnceHandlersRunOnceThoughTwoThreadsRunTheirQueue) {
  forget();
  TActionMan bus;
  for (int n = 0; n < kRounds; ++n)
    bus.AddActionListener(familyName(n), new Citizen(nullptr, TActionHandler::ahtExecuteOnce), ACTION_NORMAL);
  // A handler that asks for its own queue is not run again by that, whoever runs it.
  std::atomic<int> nested{0};
  bus.AddActionListener("family0",
                        new TahLambda(
                          [&](std::string, void*) {
                            ++nested;
                            bus.ExecuteActions(ACTION_NORMAL);
                          },
                          TActionHandler::ahtExecuteEndless),
                        ACTION_NORMAL);
  std::atomic<int> generating{2};
  const auto generator = [&] {
    for (int n = 0; n < kRounds; ++n) bus.GenerateAction(familyName(n), nullptr, ACTION_ANY);
    --generating;
  };
  const auto runner = [&] {
    while (generating > 0) {
      bus.ExecuteActions(ACTION_NORMAL);
      std::this_thread::yield();
    }
  };
  const auto matcher = [&] {
    while (generating > 0) bus.ProcessActions();
  };
  together({generator, generator, matcher, runner, runner});
  bus.ProcessActions();
  bus.ExecuteActions(ACTION_NORMAL);
  EXPECT_EQ(ran, kRounds);
  EXPECT_EQ(died, kRounds);
  EXPECT_EQ(nested, 2 * kRounds / 3);
}

TEST(ActionStress, AsynchronousRunsOutliveTheirBus) {
  constexpr int Handlers = 6;
  for (int round = 0; round < 5; ++round) {
    std::atomic<bool> go{false};
    std::atomic<int> finished{0};
    auto payload = std::make_shared<int>(1);
    auto bus = std::make_unique<TActionMan>();
    for (int n = 0; n < Handlers; ++n)
      bus->AddActionListener("slow",
                             new TahLambda(
                               [&go, &finished, payload](std::string name, void*) {
                                 while (!go) SDL_Delay(1);
                                 finished += *payload;
                                 EXPECT_EQ(name, "slow");
                               },
                               n % 2 == 0 ? TActionHandler::ahtExecuteOnce : TActionHandler::ahtExecuteEndless),
                             ACTION_ASYNC);
    bus->GenerateAction("slow", nullptr, ACTION_ASYNC);
    bus->ProcessActions();
    bus->ExecuteActions(ACTION_ASYNC);
    bus.reset();
    EXPECT_EQ(TAsyncJob::Running(), Handlers);
    go = true;
    ASSERT_TRUE(TAsyncJob::WaitForNone(30000));
    EXPECT_EQ(finished, Handlers);
    EXPECT_EQ(payload.use_count(), 1) << "the handlers went with their threads";
  }
}

TEST(ActionStress, TheEndOfTheApplicationWaitsForItsRunningJobs) {
  NoticeCapture notices;
  std::atomic<bool> ending{false};
  std::atomic<int> finished{0};
  const auto job = [&] {
    while (!ending) SDL_Delay(1);
    SDL_Delay(20);  // so that an end that does not wait comes first
    ++finished;
  };
  TestApplication app;
  app.onDestroy = [&] { ending = true; };
  app.AddActionListener("background",
                        new TahLambda([&](std::string, void*) { job(); }, TActionHandler::ahtExecuteEndless),
                        ACTION_ASYNC);
  app.GenerateAction("background", nullptr, ACTION_ANY);
  app.ProcessActions();
  app.ExecuteActions(ACTION_ASYNC);
  new TAsyncTimedTaskHandler(job, 0, TTimedTaskHandler::EXECUTE_ONCE, "loader", true, true);
  app.Destroy();
  EXPECT_EQ(finished, 2);
  EXPECT_EQ(TAsyncJob::Running(), 0);
}

TEST(TaskStress, SelfFreeingTasksStartedBySeveralThreadsAllRunAndGo) {
  constexpr int kPerThread = 40;
  std::atomic<int> runs{0};
  auto payload = std::make_shared<int>(0);
  const auto starter = [&] {
    for (int n = 0; n < kPerThread; ++n)
      new TAsyncTimedTaskHandler([&runs, payload] { ++runs; }, 0, TTimedTaskHandler::EXECUTE_ONCE, "short", true,
                                 true);
  };
  const auto owner = [&] {
    std::atomic<int> own{0};
    TAsyncTimedTaskHandler task([&own] { ++own; }, 0, TTimedTaskHandler::ENDLESS, "owned", false, false);
    for (int n = 0; n < 10; ++n) {
      const int before = own;
      task.start();
      while (own == before) std::this_thread::yield();
      task.free();
      EXPECT_EQ(task.completedCount(), static_cast<Uint32>(own.load()));
    }
  };
  together({starter, starter, starter, owner, owner});
  ASSERT_TRUE(TAsyncJob::WaitForNone(30000));
  EXPECT_EQ(runs, 3 * kPerThread);
  EXPECT_EQ(payload.use_count(), 1);
}

// A task that, when it runs, makes another one in the next set, removes an arbitrary one (which may be itself, or
// gone long since) and sometimes itself.
class Nomad : public TTimedTaskHandler {
 public:
  struct World {
    TTaskMan& tasks;
    std::atomic<int> budget;
    std::mutex mutex;
    std::vector<TTimedTaskHandler*> known;  // mutex; only compared, never followed
  };

  Nomad(World& world, int set)
    : TTimedTaskHandler(nullptr, 0, set % 2 == 0 ? ENDLESS : EXECUTE_ONCE, "nomad"), mWorld(world), mSet(set) {
    ++born;
    const std::lock_guard lock(world.mutex);
    world.known.push_back(this);
  }
  ~Nomad() override { ++died; }
  void execute(void*) override {
    ++ran;
    const int n = mWorld.budget--;
    if (n > 0) settle(mWorld, mSet + 1);
    TTimedTaskHandler* other = nullptr;
    {
      const std::lock_guard lock(mWorld.mutex);
      other = mWorld.known[static_cast<size_t>(ran * 7) % mWorld.known.size()];
    }
    mWorld.tasks.RemoveTimedTask(other, true);
    if (n % 3 == 0) mWorld.tasks.RemoveTimedTask(this, true);
    mWorld.tasks.IsTimedTaskValid(other, TASK_ANY);
    mTouched = true;  // a freed one is noticed
  }
  static void settle(World& world, int set) { world.tasks.AddTimedTask(new Nomad(world, set), kSets[set % 3]); }

 private:
  World& mWorld;
  const int mSet;
  bool mTouched = false;
};

TEST(TaskStress, TasksChangeTheSetsThatOtherThreadsWalk) {
  forget();
  FakeClock clock(1000);
  {
    TTaskMan tasks;
    Nomad::World world{tasks, {kRounds}, {}, {}};
    for (int n = 0; n < 30; ++n) Nomad::settle(world, n);
    std::atomic<bool> done{false};
    std::thread draw([&] {
      while (!done) {
        tasks.ProcessTasks(TASK_DRAW);
        std::this_thread::yield();
      }
    });
    std::thread settler([&] {
      for (int n = 0; n < kRounds && !done; ++n) {
        Nomad::settle(world, n);
        tasks.GetTimedTask(&world);
        std::this_thread::yield();
      }
    });
    // Few polls are left when the nomads have died out.
    for (int poll = 0; poll < 2 * kRounds && world.budget > 0; ++poll) {
      clock.advance(1);
      tasks.ProcessTasks(TASK_NORMAL);
      tasks.ProcessTasks(TASK_THREAD_SAFE);
    }
    settler.join();
    done = true;
    draw.join();
  }
  EXPECT_GT(ran, 0);
  EXPECT_EQ(born, died);
}

// Parameters.

class Store : public TParamMan {
 public:
  Parameter OnRequestValue(const std::string&, const std::string& name) override {
    Parameter answer(name.substr(0, 5) == "chain" ? "GLOBAL" : "");
    if (!answer.GetRawDomain().empty()) answer.SetValue("of the store");
    return answer;
  }
  void OnStoreValues(const std::list<TAppParam*>& params) override {
    for (const auto* param : params) written += param->Value().empty() ? 0 : 1;
  }
  int written = 0;

 protected:
  std::string LookUpClientID() const override { return "hall_7"; }
};

// All the same character, so that a torn value shows.
std::string whole(int n) { return std::string(40 + n % 50, static_cast<char>('a' + n % 26)); }
bool isWhole(const std::string& text) { return text.find_first_not_of(text.front()) == std::string::npos; }

TEST(ParamStress, BoundParametersAreWrittenAndReadWhileListenersComeAndGo) {
  Store store;
  TAppParam* global = store.SetParam("n", whole(0), PARAM_GLOBAL, "", "", false);
  TAppParam* mine = store.GetParam("n", PARAM_MASK_ALL);
  ASSERT_EQ(mine->GetSourceRawDomain(), "GLOBAL");
  std::atomic<int> heard{0};
  std::atomic<int> writing{3};
  mine->AddListener([&](TAppParam* param, int) { heard += isWhole(param->Value()) ? 1 : 1000000; }, 0);
  const auto byName = [&] {
    for (int n = 0; n < kRounds; ++n)
      store.SetParam("n", whole(n), PARAM_GLOBAL, "caption" + std::to_string(n), "", false);
    --writing;
  };
  const auto byHandle = [&](TAppParam* param) {
    return [&writing, param] {
      for (int n = 0; n < kRounds; ++n) {
        param->SetValue(whole(n * 3 + 1));
        param->SetRestrictions(n);
        if (n % 10 == 0) param->UpdateOldValue();
      }
      --writing;
    };
  };
  const auto listener = [&] {
    while (writing > 0)
      for (TAppParam* param : {global, mine}) {
        const uint id = param->AddConsumingListener([](TAppParam*, int) { return false; }, 5);
        param->TriggerListener(id, 0);
        param->RemoveListener(id);
      }
  };
  const auto reader = [&] {
    while (writing > 0) {
      EXPECT_TRUE(isWhole(store.GetParam("n", PARAM_MASK_ALL)->Value()));
      EXPECT_EQ(global->AsInteger(5), 0);
      EXPECT_FALSE(mine->IsInteger());
      EXPECT_LT(mine->Restrictions(), kRounds);
      mine->Modified();
    }
  };
  together({byName, byHandle(global), byHandle(mine), listener, reader});
  EXPECT_EQ(mine->Value(), global->Value());
  EXPECT_GT(heard, 0);
  EXPECT_LT(heard, 1000000) << "a listener saw a torn value";
  heard = 0;
  global->SetValue(std::string(48, 'h'));
  EXPECT_EQ(heard, 1) << "no edit was left open";
}

TEST(ParamStress, ThreadsThatMakeTheSameParametersLoseNoWrite) {
  constexpr int kWriters = 4;
  const int before = ParameterData::GetNumInstances();
  {
    Store store;
    testing::internal::CaptureStdout();
    const auto writer = [&] {
      for (int n = 0; n < kRounds; ++n)
        EXPECT_NE(store.SetParam("same" + std::to_string(n), n, PARAM_GLOBAL, "", "", false), pVoidParam);
    };
    // Others ask for parameters of their own meanwhile, and find none of the same.
    const auto asker = [&](const char* name) {
      return [&store, name] {
        for (int n = 0; n < kRounds; ++n)
          EXPECT_EQ(store
                      .GetOrSetParam(name + std::to_string(n), n, "", "",
                                     PARAM_READ_MINE_OR_GROUP_OR_GLOBAL_WRITE_GLOBAL, false)
                      ->AsInteger(-1),
                    n);
      };
    };
    together({writer, writer, writer, writer, asker("one"), asker("two")});
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    store.Poll();
    EXPECT_EQ(store.written, kWriters * kRounds + 2 * kRounds);
    EXPECT_EQ(ParameterData::GetNumInstances(), before + 3 * kRounds);
  }
  EXPECT_EQ(ParameterData::GetNumInstances(), before);
}

// A screen reads a parameter while its owner gives it other data, again and again.
TEST(ParamStress, AHandleIsReadWhileItTakesOtherData) {
  Parameter one("bar_1"), other("bar_1"), handle("bar_1");
  one.SetValue("1");
  other.SetValue("2");
  handle.StealFrom(one);
  std::atomic<bool> done{false};
  const auto reader = [&] {
    while (!done) {
      const std::string value = handle.Value();
      EXPECT_TRUE(value == "1" || value == "2" || value.empty()) << value;
      EXPECT_FALSE(handle.Modified());
      EXPECT_LE(handle.AsInteger(1), 2);
      EXPECT_TRUE(handle.IsValueOK("3"));
      handle.IsNull();
    }
  };
  const auto owner = [&] {
    for (int n = 0; n < kRounds; ++n) {
      handle.StealFrom(n % 2 ? one : other);
      if (n % 5 == 0) handle.Clear();
    }
    done = true;
  };
  together({reader, reader, owner});
}

// Chains of bindings are read, taken apart from any end and renamed on the main thread, while others write and read
// the same names.
TEST(ParamStress, ChainsAreTakenApartWhileOthersUseTheirNames) {
  const int before = ParameterData::GetNumInstances();
  {
    Store store;
    std::atomic<bool> done{false};
    const auto name = [](int n) { return "chain" + std::to_string(n % 5); };
    const auto writer = [&] {
      for (int n = 0; !done; ++n)
        store.SetParam(name(n), "written", n % 2 ? PARAM_GLOBAL : PARAM_MINE, "", "", false);
    };
    const auto reader = [&] {
      for (int n = 0; !done; ++n)
        EXPECT_NE(store.GetParam(name(n), n % 2 ? PARAM_MASK_ALL : PARAM_MASK_NO_CACHE), pVoidParam);
    };
    const auto mainThread = [&] {
      for (int n = 0; n < kRounds; ++n) {
        store.GetParam(name(n), PARAM_MASK_ALL);
        switch (n % 4) {
          case 0:
            store.DropParamFromCache(name(n), PARAM_GLOBAL);
            break;
          case 1:
            store.DropParamFromCache(name(n), PARAM_GROUP);
            break;
          case 2:
            store.DropParamFromCache(name(n), PARAM_MINE);
            break;
          default:
            store.UpdateClientID("bar_1", "hall_7");
            store.UpdateClientID("hall_7", "bar_1");
        }
        store.Poll();
      }
      done = true;
    };
    together({writer, reader, mainThread});
    // The chain still works: nothing follows a parameter that is gone. A name may be there twice, when it was made
    // anew between the two changes of the identifier.
    for (int n = 0; n < 5; ++n)
      for (const auto mode : {PARAM_GLOBAL, PARAM_GROUP, PARAM_MINE})
        while (store.DropParamFromCache(name(n), mode) == 0) continue;
    TAppParam* mine = store.GetParam(name(0), PARAM_MASK_ALL);
    EXPECT_EQ(mine->GetSourceRawDomain(), "GLOBAL");
    EXPECT_EQ(mine->Value(), "of the store");
  }
  EXPECT_EQ(ParameterData::GetNumInstances(), before);
}

}  // namespace
}  // namespace vendelo_sdl2
