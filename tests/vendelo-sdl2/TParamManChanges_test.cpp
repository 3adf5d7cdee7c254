#include "tests/vendelo-sdl2/TParamManFixture.h"

#include <atomic>
#include <thread>

using namespace paramtest;

namespace {

// Changes.

TEST_F(Params, ListenersAreCalledByPriorityAndAConsumerStopsTheRest) {
  TAppParam* param = set("n", "1", PARAM_MINE);
  std::string order;
  const auto mark = [&](const char* text) { return [&order, text](TAppParam*, int) { order += text; }; };
  const uint low = param->AddListener(mark("low "), -1);
  param->AddListener(mark("a "), 5);
  param->AddListener(mark("b "), 5);
  param->AddListener(mark("high "), 9);
  param->SetValue("2");
  EXPECT_EQ(order, "high a b low ");
  order.clear();
  bool consume = true;
  const uint consumer = param->AddConsumingListener([&](TAppParam*, int) { return order += "eat ", consume; }, 5);
  param->SetValue("3");
  EXPECT_EQ(order, "high a b eat ");
  order.clear();
  param->TriggerListener(low, 0);
  EXPECT_EQ(order, "low ") << "a target is reached regardless";
  consume = false;
  order.clear();
  param->SetValue("4");
  EXPECT_EQ(order, "high a b eat low ");
  param->RemoveListener(consumer);
  param->RemoveListener(4711);
  order.clear();
  param->SetValue("5");
  EXPECT_EQ(order, "high a b low ");
}

TEST_F(Params, ListenersMayBeAddedAndRemovedByListeners) {
  TAppParam* param = set("n", "1", PARAM_MINE);
  std::string order;
  uint second = 0;
  uint first = 0;
  first = param->AddListener(
    [&](TAppParam* p, int) {
      order += "1";
      p->RemoveListener(second);
      p->RemoveListener(first);
      p->AddListener([&](TAppParam*, int) { order += "3"; }, 0);
    },
    9);
  second = param->AddListener([&](TAppParam*, int) { order += "2"; }, 5);
  param->SetValue("2");
  EXPECT_EQ(order, "1") << "the removed one is skipped, the new one waits for the next change";
  param->SetValue("3");
  EXPECT_EQ(order, "13");
}

TEST_F(Params, ListenersAreCopiedWithTheirPriorities) {
  TAppParam* from = set("from", "1", PARAM_MINE);
  TAppParam* to = set("to", "1", PARAM_MINE);
  std::string order;
  from->AddListener([&](TAppParam* p, int) { order += p->Name() + "-low "; }, 1);
  to->AddListener([&](TAppParam*, int) { order += "own "; }, 2);
  from->AddListener([&](TAppParam* p, int) { order += p->Name() + "-high "; }, 3);
  to->AddListenersOf(from);
  to->AddListenersOf(nullptr);
  to->SetValue("2");
  EXPECT_EQ(order, "to-high own to-low ");
}

TEST_F(Params, ASavedChangeOfANamedParameterRaisesTheAction) {
  Store::ParametersThatTriggerAction.insert("watched");
  void* data = nullptr;
  int raised = 0;
  store.AddActionListener(
    "DBParameterChanged",
    new TahLambda([&](std::string, void* d) { data = d, ++raised; }, TActionHandler::ahtExecuteEndless),
    ACTION_DRAW);
  const auto run = [&] {
    store.ProcessActions();
    store.ExecuteActions(ACTION_DRAW);
    return std::exchange(raised, 0);
  };
  TAppParam* watched = set("watched", "1", PARAM_GLOBAL);
  EXPECT_EQ(run(), 0) << "a value that appears is no saved change";
  watched->SetValue("2");
  EXPECT_EQ(run(), 0);
  watched->UpdateOldValue();
  EXPECT_EQ(run(), 1);
  EXPECT_EQ(data, watched);
  TAppParam* other = set("other", "1", PARAM_GLOBAL);
  other->SetValue("2");
  other->UpdateOldValue();
  EXPECT_EQ(run(), 0);
  store.GetParam("watched", PARAM_MASK_ALL);  // bound to the global one
  watched->SetValue("3");
  watched->UpdateOldValue();
  EXPECT_EQ(run(), 1) << "the bound one is silent";
  Store::ParametersThatTriggerAction.clear();
}

TEST_F(Params, ANameIsAskedForWhenTheParameterIsMade) {
  TAppParam* early = set("named later", "1", PARAM_MINE);
  Store::ParametersThatTriggerAction.insert("named later");
  int raised = 0;
  store.AddActionListener("DBParameterChanged",
                          new TahLambda([&](std::string, void*) { ++raised; }, TActionHandler::ahtExecuteEndless),
                          ACTION_NORMAL);
  early->SetValue("2");
  early->UpdateOldValue();
  store.ProcessActions();
  store.ExecuteActions(ACTION_NORMAL);
  EXPECT_EQ(raised, 0);
  Store::ParametersThatTriggerAction.clear();
}

TEST_F(Params, TheRebootIsAskedForBeforeTheListenersAreTold) {
  store.RebootOnParam("critical");
  TAppParam* param = set("critical", "1", PARAM_MINE);
  param->SetValue("2");
  const int before = store.reboots;
  int seen = 0;
  param->AddListener([&](TAppParam*, int) { seen = store.reboots; }, 0);
  param->UpdateOldValue();
  EXPECT_EQ(seen, before + 1);
}

TEST(ParamsThreads, OfTwoThatMakeTheSameParameterTheSecondWritesTheFirstOnes) {
  // The question for a reboot comes in the middle of the making.
  struct Hooked : Store {
    void OnRebootRequired() override {
      if (onReboot) std::exchange(onReboot, nullptr)();
    }
    std::function<void()> onReboot;
  } store;
  store.RebootOnParam("critical");
  std::thread second;
  std::atomic<bool> started{false};
  TAppParam* fromSecond = nullptr;
  store.onReboot = [&] {
    second = std::thread([&] {
      started = true;
      fromSecond = store.SetParam("critical", "2", PARAM_MINE, "", "", false);
    });
    while (!started) std::this_thread::yield();
    SDL_Delay(20);  // not needed, but a second one that does not wait is done by then
  };
  TAppParam* const first = store.SetParam("critical", "1", PARAM_MINE, "", "", false);
  second.join();
  EXPECT_NE(first, pVoidParam);
  EXPECT_EQ(fromSecond, first);
  EXPECT_EQ(first->Value(), "2");
}

TEST_F(Params, ANewParameterHasItsDefaultSaveLocations) {
  TAppParam* param = set("n", "1", PARAM_CACHE);
  EXPECT_EQ(param->GetPreferedSaveLocation(), PARAM_CACHE);
  EXPECT_EQ(param->GetSaveForAllLocation(), PARAM_GROUP);
  EXPECT_FALSE(param->ReadOnly());
  EXPECT_FALSE(param->QuietSave);
}

TEST_F(Params, ASavedChangeOfARebootParameterAsksForTheReboot) {
  store.RebootOnParam("critical");
  TAppParam* param = set("critical", "1", PARAM_MINE);
  const int appeared = store.reboots;
  param->SetValue("2");
  EXPECT_EQ(store.reboots, appeared);
  param->UpdateOldValue();
  EXPECT_EQ(store.reboots, appeared + 1);
  TAppParam* other = set("harmless", "1", PARAM_MINE);
  other->SetValue("2");
  other->UpdateOldValue();
  EXPECT_EQ(store.reboots, appeared + 1);
}

TEST_F(Params, SavingGoesToTheStoreOnceAllowed) {
  TAppParam* param = set("n", "1", PARAM_MINE);
  param->SetValue("2");
  param->Save(3);
  EXPECT_EQ(store.stored, std::vector<std::string>{"n:3"});
  EXPECT_EQ(param->OldValue(), "2");
  EXPECT_EQ(param->Changes(), 0);
  param->SetReadOnly(true);
  EXPECT_TRUE(param->ReadOnly());
  try {
    param->Save(0);
    ADD_FAILURE();
  } catch (const char* text) {
    EXPECT_STREQ(text, "Parameter is read only!");
  }
  param->SetReadOnly(false);
  param->Delete();
  EXPECT_EQ(store.deleted, std::vector<std::string>{"n"});
  try {
    param->Save(0);
    ADD_FAILURE();
  } catch (const char* text) {
    EXPECT_STREQ(text, "Cannot save null parameter!");
  }
}

TEST_F(Params, UpdatingReadsTheStoreAgainAndAlwaysTellsTheListeners) {
  TAppParam* param = set("n", "1", PARAM_MINE);
  std::vector<int> changes;
  param->AddListener([&](TAppParam*, int flag) { changes.push_back(flag); }, 0);
  store.answerWith("hall_7", "2");
  param->Update();
  EXPECT_EQ(store.requests, std::vector<std::string>{"hall_7/n"});
  EXPECT_EQ(param->Value() + param->OldValue(), "22");
  EXPECT_EQ(changes, std::vector<int>{TAppParam::VALUE | TAppParam::OLD_VALUE});
  changes.clear();
  param->Update();
  EXPECT_EQ(changes, std::vector<int>{0});
}

TEST_F(Params, LoadingSharesForeignDataAndCopiesItsOwn) {
  TAppParam* param = set("n", "1", PARAM_MINE);
  Parameter own("hall_7");
  own.SetValue("own");
  EXPECT_EQ(param->Load(own), TAppParam::VALUE);
  own.SetValue("later");
  EXPECT_EQ(param->Value(), "own");
  Parameter foreign("GLOBAL");
  foreign.SetValue("foreign");
  param->Load(foreign);
  foreign.SetValue("later");
  EXPECT_EQ(param->Value(), "later");
}

TEST_F(Params, BindingsIgnoreNothingnessAndCircles) {
  TAppParam* a = set("a", "1", PARAM_MINE);
  TAppParam* b = set("b", "2", PARAM_MINE);
  a->Bind(nullptr);
  a->Bind(pVoidParam);
  a->Bind(a);
  EXPECT_FALSE(a->IsBound());
  a->Bind(b);
  b->Bind(a);
  EXPECT_FALSE(b->IsBound());
  EXPECT_EQ(a->Value(), "2");
}

TEST_F(Params, SavingAsksForReadOnlyFirst) {
  TAppParam* param = set("n", "1", PARAM_MINE);
  param->SetReadOnly(true);
  param->Delete();
  ASSERT_TRUE(param->IsNull());
  try {
    param->Save(0);
    ADD_FAILURE();
  } catch (const char* text) {
    EXPECT_STREQ(text, "Parameter is read only!");
  }
  EXPECT_TRUE(store.stored.empty());
}

TEST(ParamsOrder, TheStoreSeesTheValueAsItIsBeforeItCountsAsSavedOrGoes) {
  struct Watching : Store {
    void OnStoreValue(TAppParam* param, int) override { modified = param->Modified(); }
    void OnDeleteValue(const TAppParam* param) override { value = param->Value(); }
    bool modified = false;
    std::string value;
  } store;
  TAppParam* param = store.SetParam("n", "1", PARAM_MINE, "", "", false);
  param->SetValue("2");
  param->Save(0);
  EXPECT_TRUE(store.modified);
  EXPECT_FALSE(param->Modified());
  param->Delete();
  EXPECT_EQ(store.value, "2");
  EXPECT_TRUE(param->IsNull());
}

TEST_F(Params, ItsLockIsHeldWhileItsValueChangesAndNotOtherwise) {
  TAppParam* source = set("source", "9", PARAM_GLOBAL);
  TAppParam* param = set("n", "1", PARAM_MINE);
  // From another thread, as the record of the owner is one slot and a nested edit has cleared it.
  const auto isHeld = [param] {
    bool held = false;
    std::thread([&] {
      held = !param->native().try_lock();
      if (!held) param->native().unlock();
    }).join();
    return held;
  };
  std::string held;
  param->AddListener([&](TAppParam*, int) { held += isHeld() ? "y" : "n"; }, 0);
  param->SetValue("2");
  Parameter answer("hall_7");
  answer.SetValue("3");
  param->Load(answer);
  EXPECT_EQ(held, "yy");
  param->Bind(source);
  EXPECT_EQ(held, "yyy");
  param->Delete();
  EXPECT_EQ(held.find('n'), std::string::npos) << held;
  EXPECT_FALSE(isHeld());
}

TEST_F(Params, ListenersAreNumberedFromOneAlsoWhenTheyAreCopied) {
  TAppParam* from = set("from", "1", PARAM_MINE);
  std::string order;
  EXPECT_EQ(from->AddListener([&](TAppParam*, int) { order += "a"; }, 0), 1u);
  EXPECT_EQ(from->AddConsumingListener([&](TAppParam*, int) { return order += "b", false; }, 0), 2u);
  EXPECT_EQ(from->AddListener([&](TAppParam*, int) { order += "c"; }, 7), 3u);
  from->TriggerListener(2, 5);
  from->TriggerListener(4, 5);
  EXPECT_EQ(order, "b") << "that one alone, and nobody for a number that was not given";
  from->RemoveListener(3);
  EXPECT_EQ(from->AddListener([](TAppParam*, int) {}, 0), 4u) << "a number is not given twice";
  TAppParam* to = set("to", "1", PARAM_MINE);
  to->AddListener([&](TAppParam*, int) { order += "own"; }, 0);
  to->AddListenersOf(from);
  order.clear();
  to->TriggerListener(2, 0);
  EXPECT_EQ(order, "a") << "copies get numbers of their new parameter";
}

TEST_F(Params, AnUpdateWhoseAnswerComesFromElsewhereTellsOfEverything) {
  TAppParam* param = set("n", "1", PARAM_MINE);
  std::vector<int> changes;
  param->AddListener([&](TAppParam*, int flag) { changes.push_back(flag); }, 0);
  store.answerWith("GLOBAL", "2");
  param->Update();
  EXPECT_EQ(param->Value(), "2");
  EXPECT_EQ(changes, (std::vector<int>{TAppParam::VALUE, -1})) << "the shared data's edit was never begun";
}

TEST_F(Params, WritesThatComeWhileOthersAreStoredWaitForTheNextPoll) {
  struct Busy : Store {
    void OnStoreValues(const std::list<TAppParam*>& params) override {
      Store::OnStoreValues(params);
      if (storeRounds.size() == 1) {
        SetParam("late", "1", PARAM_MINE, "", "", false);
        AddToStoreQueue(params.front());
        Poll();  // finds what came, and nothing of what is being stored
      } else if (storeRounds.size() == 2) {
        SetParam("later", "1", PARAM_MINE, "", "", false);
      }
    }
  } busy;
  busy.SetParam("n", "1", PARAM_MINE, "", "", false);
  EXPECT_EQ(busy.Poll(), 0);
  EXPECT_EQ(busy.storeRounds, (std::vector<std::string>{"hall_7/n=1;", "hall_7/late=1;hall_7/n=1;"}));
  busy.Poll();
  EXPECT_EQ(busy.storeRounds.back(), "hall_7/later=1;");
  busy.Poll();
  EXPECT_EQ(busy.storeRounds.size(), 3u);
}

}  // namespace
