// Several threads at one store.
#include "tests/vendelo-sdl2/TParamManFixture.h"

#include <atomic>
#include <mutex>
#include <set>
#include <thread>

using namespace paramtest;

namespace {

constexpr ParameterReadWriteMode kMine = PARAM_READ_MINE_WRITE_MINE;
constexpr ParameterReadWriteMode kAsking = PARAM_READ_NOCACHE_MINE_WRITE_MINE;
constexpr ParameterReadWriteMode kDownToMine = PARAM_READ_MINE_OR_GROUP_OR_GLOBAL_WRITE_GLOBAL;

// A store whose persistent side has nothing unless the test says so, and lets others in while it is asked.
struct Asked : Store {
  Parameter OnRequestValue(const std::string& address, const std::string& name) override {
    std::function<void()> meanwhile;
    {
      const std::lock_guard lock(mutex);
      requests.push_back(address + "/" + name);
      meanwhile = std::exchange(onRequest, nullptr);
    }
    if (meanwhile) std::thread(meanwhile).join();
    return answer;
  }
  void OnStoreValues(const std::list<TAppParam*>& params) override { Store::OnStoreValues(params); }

  std::mutex mutex;
  std::function<void()> onRequest;
};

class ParamsAtOnce : public testing::Test {
 protected:
  TAppParam* getOrSet(const char* value, ParameterReadWriteMode mode, bool quiet = false) {
    return store.GetOrSetParam("n", std::string(value), "cap", "desc", mode, quiet);
  }
  Asked store;
};

// Between the question to the persistent store, which has nothing, and the writing of the default.

TEST_F(ParamsAtOnce, AValueThatComesDuringTheQuestionIsKept) {
  for (const auto mode : {kMine, kAsking}) {
    TAppParam* theirs = nullptr;
    store.onRequest = [&] { theirs = store.SetParam("n", "theirs", PARAM_MINE, "", "", false); };
    TAppParam* const ours = getOrSet("default", mode, true);
    EXPECT_EQ(ours, theirs);
    EXPECT_EQ(ours->Value() + ours->Caption(), "theirs");
    EXPECT_TRUE(ours->QuietSave);
    EXPECT_EQ(ours->GetPreferedSaveLocation(), PARAM_MINE);
    EXPECT_EQ(ours->GetSaveForAllLocation(), PARAM_MINE);
    store.Poll();
    EXPECT_EQ(store.storeRounds, std::vector<std::string>{"hall_7/n=theirs;"}) << "the default was never written";
    store.storeRounds.clear();
    store.DropParamFromCache(ours);
  }
}

TEST_F(ParamsAtOnce, AValueThatChangesDuringTheQuestionIsKept) {
  TAppParam* const param = store.SetParam("n", "before", PARAM_MINE, "", "", false);
  store.onRequest = [&] { param->SetValue("theirs"); };
  EXPECT_EQ(getOrSet("default", kAsking), param);
  EXPECT_EQ(param->Value(), "theirs");
  // Nobody in between: a read that leaves the cache out writes the default, whatever the cache has.
  EXPECT_EQ(getOrSet("default", kAsking), param);
  EXPECT_EQ(param->Value(), "default");
}

TEST_F(ParamsAtOnce, AValueThatGoesDuringTheQuestionIsMadeAnew) {
  TAppParam* const param = store.SetParam("n", "before", PARAM_MINE, "", "", false);
  store.onRequest = [&] { store.DropParamFromCache(param); };
  EXPECT_EQ(getOrSet("default", kAsking)->Value(), "default");
}

TEST_F(ParamsAtOnce, OfTwoThatAskAtOnceTheSecondDefaultCounts) {
  TAppParam* theirs = nullptr;
  store.onRequest = [&] { theirs = getOrSet("theirs", kDownToMine, false); };
  TAppParam* const ours = getOrSet("ours", kDownToMine, true);
  EXPECT_EQ(ours, theirs);
  EXPECT_EQ(ours->GetRawDomain(), "hall_7");
  EXPECT_EQ(ours->GetSourceRawDomain(), "GLOBAL");
  EXPECT_EQ(ours->Value(), "theirs");
  EXPECT_TRUE(ours->QuietSave) << "but the saving is as the last one said";
  EXPECT_EQ(ours->GetPreferedSaveLocation(), PARAM_MINE);
  EXPECT_EQ(ours->GetSaveForAllLocation(), PARAM_GLOBAL);
  store.Poll();
  EXPECT_EQ(store.storeRounds, std::vector<std::string>{"GLOBAL/n=theirs;"});
}

TEST_F(ParamsAtOnce, AMoreGeneralValueThatComesDuringTheQuestionGetsItsBoundEntry) {
  store.onRequest = [&] { store.SetParam("n", "theirs", PARAM_GLOBAL, "", "", false); };
  TAppParam* const ours = getOrSet("default", kDownToMine);
  EXPECT_EQ(ours->GetRawDomain(), "hall_7");
  EXPECT_TRUE(ours->IsBound());
  EXPECT_EQ(ours->Value(), "theirs");
}

TEST_F(ParamsAtOnce, TheStoresAnswerStandsApartFromAMoreGeneralValueThatComesDuringTheQuestion) {
  store.answerWith("hall_7", "answer");
  TAppParam* global = nullptr;
  store.onRequest = [&] { global = store.SetParam("n", "theirs", PARAM_GLOBAL, "", "", false); };
  TAppParam* const ours = store.GetParam("n", PARAM_MASK_ALL);
  EXPECT_EQ(ours->GetRawDomain(), "hall_7");
  EXPECT_EQ(ours->Value(), "answer");
  EXPECT_FALSE(ours->IsBound());
  ASSERT_NE(global, nullptr);
  EXPECT_EQ(global->Value(), "theirs");
  global->SetValue("later");
  EXPECT_EQ(ours->Value(), "answer");
}

TEST_F(ParamsAtOnce, AValueAtAnAddressThatIsNotReadIsKeptToo) {
  const auto mode = static_cast<ParameterReadWriteMode>(PARAM_GLOBAL * 16 + (PARAM_GROUP | PARAM_CACHE));
  TAppParam* theirs = nullptr;
  store.onRequest = [&] { theirs = store.SetParam("n", "theirs", PARAM_GLOBAL, "", "", false); };
  TAppParam* const ours = getOrSet("default", mode);
  EXPECT_EQ(ours, theirs);
  EXPECT_EQ(theirs->Value(), "theirs");
}

TEST_F(ParamsAtOnce, OneNameIsMadeOnceByHoweverManyAndIsSavedAsOneOfThemSaid) {
  constexpr int kThreads = 4;
  constexpr int kRounds = 50;
  const ParameterReadWriteMode modes[] = {kMine, PARAM_READ_MINE_OR_GROUP_OR_GLOBAL_WRITE_MINE,
                                          PARAM_READ_MINE_OR_GROUP_WRITE_MINE,
                                          PARAM_READ_MINE_OR_GROUP_OR_GLOBAL_WRITE_CACHE};
  for (int round = 0; round < kRounds; ++round) {
    const std::string name = "n" + std::to_string(round);
    TAppParam* got[kThreads] = {};
    std::atomic<int> ready{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i)
      threads.emplace_back([&, i] {
        ++ready;
        while (ready < kThreads) std::this_thread::yield();
        got[i] = store.GetOrSetParam(name, i, "", "", modes[i], i % 2 == 0);
        // Read while the others still write.
        EXPECT_NE(got[i]->GetPreferedSaveLocation(), PARAM_OTHER);
        EXPECT_NE(got[i]->GetSaveForAllLocation(), PARAM_OTHER);
        EXPECT_FALSE(got[i]->ReadOnly());
        (void)got[i]->QuietSave.load();
      });
    for (auto& thread : threads) thread.join();
    for (const auto* param : got) EXPECT_EQ(param, got[0]);
    const long maker = got[0]->AsInteger(-1);
    EXPECT_TRUE(maker >= 0 && maker < kThreads) << maker;
    // The last one of them: its quietness and its domain belong together.
    const std::pair<bool, ParameterDomain> saving{got[0]->QuietSave, got[0]->GetSaveForAllLocation()};
    std::set<std::pair<bool, ParameterDomain>> told;
    for (int i = 0; i < kThreads; ++i) told.insert({i % 2 == 0, static_cast<ParameterDomain>(modes[i] >> 4)});
    EXPECT_TRUE(told.contains(saving));
  }
}

TEST_F(ParamsAtOnce, AWrittenValueIsNeverLostToADefault) {
  constexpr int kRounds = 2000;
  std::atomic<int> arrived{0};
  const auto together = [&arrived](int round) {
    ++arrived;
    while (arrived < 2 * (round + 1)) std::this_thread::yield();
  };
  std::thread writer([&] {
    for (int round = 0; round < kRounds; ++round) {
      together(round);
      store.SetParam("n" + std::to_string(round), "written", PARAM_MINE, "", "", false);
    }
  });
  for (int round = 0; round < kRounds; ++round) {
    together(round);
    store.GetOrSetParam("n" + std::to_string(round), std::string("default"), "", "", kMine, false);
  }
  writer.join();
  int lost = 0;
  for (int round = 0; round < kRounds; ++round)
    lost += store.GetParam("n" + std::to_string(round), PARAM_CACHE)->Value() != "written";
  EXPECT_EQ(lost, 0);
}

TEST_F(ParamsAtOnce, EveryQueuedWriteIsStoredOnceWhoeverWritesWhileOthersAreStored) {
  struct Counting : Store {
    void OnStoreValues(const std::list<TAppParam*>& params) override { count += params.size(); }
    size_t count = 0;
  } counting;
  constexpr size_t kWrites = 2000;
  TAppParam* const param = counting.SetParam("n", "1", PARAM_CACHE, "", "", false);
  std::atomic<int> writing{2};
  const auto write = [&] {
    for (size_t i = 0; i < kWrites; ++i) counting.AddToStoreQueue(param);
    --writing;
  };
  std::thread first(write), second(write);
  while (writing > 0) counting.Poll();
  first.join();
  second.join();
  counting.Poll();
  EXPECT_EQ(counting.count, 2 * kWrites);
}

TEST_F(ParamsAtOnce, TwoHandlesOfOneValueAreWrittenResetAndSavedAtOnce) {
  TAppParam* const global = store.SetParam("n", "0", PARAM_GLOBAL, "", "", false);
  TAppParam* const mine = store.GetParam("n", PARAM_MASK_ALL);
  std::thread other([&] {
    for (int i = 0; i < 200; ++i) {
      mine->SetValue(static_cast<long>(i));
      mine->UpdateOldValue();
      mine->Reset();
    }
  });
  for (int i = 0; i < 200; ++i) {
    store.SetParam("n", -i, PARAM_GLOBAL, "", "", false);
    global->Reset();
  }
  other.join();
  EXPECT_EQ(mine->Value(), global->Value());
  EXPECT_LT(mine->AsInteger(1000), 200);
}

}  // namespace
