// What leaves the store, and what becomes of those that followed it.
#include "tests/vendelo-sdl2/TParamManFixture.h"

using namespace paramtest;

namespace {

TEST_F(Params, ADroppedSourceLeavesItsFollowersWithTheValue) {
  TAppParam* global = set("n", "1", PARAM_GLOBAL);
  TAppParam* mine = store.GetParam("n", PARAM_MASK_ALL);
  EXPECT_EQ(store.DropParamFromCache(global), 0);
  EXPECT_EQ(mine->Value(), "1");
  EXPECT_FALSE(mine->IsBound());
  EXPECT_EQ(mine->GetSourceRawDomain(), "hall_7");
  EXPECT_EQ(store.DropParamFromCache(global), -2) << "no second time";
  store.Poll();
  EXPECT_TRUE(store.storeRounds.empty()) << "its pending write went with it";
}

TEST_F(Params, ADroppedMiddleHandsItsFollowersToItsOwnSource) {
  store.answerWith("GLOBAL", "1");
  TAppParam* mine = store.GetParam("n", PARAM_MASK_ALL);
  EXPECT_EQ(store.DropParamFromCache("n", PARAM_GROUP), 0);
  EXPECT_TRUE(mine->IsBound());
  EXPECT_EQ(mine->GetSourceRawDomain(), "GLOBAL");
  EXPECT_EQ(store.DropParamFromCache("missing", PARAM_GROUP), -1);
}

TEST_F(Params, DroppingWarnsOfNoHeldLock) {
  TAppParam* param = set("n", "1", PARAM_MINE);
  const std::string out = Captured([&] { store.DropParamFromCache(param); });
  EXPECT_EQ(out.find("Mutex destroyed while locked!"), std::string::npos);
}

TEST_F(Params, DeletingGoesToTheStoreAndTheCacheForgets) {
  TAppParam* param = set("n", "1", PARAM_MINE);
  store.DeleteParam(param);
  EXPECT_EQ(store.deleted, std::vector<std::string>{"n"});
  EXPECT_EQ(store.GetParam("n", PARAM_CACHE), pVoidParam);
  set("m", "1", PARAM_MINE);
  store.DeleteParam("m", PARAM_MASK_ALL);
  EXPECT_EQ(store.deleted.back(), "m");
  EXPECT_EQ(store.GetParam("m", PARAM_CACHE), pVoidParam);
}

TEST_F(Params, ANewIdentifierKeepsValuesListenersFollowersAndPendingWrites) {
  TAppParam* old = store.SetParam("n", "1", PARAM_MINE, "c", "", true);
  old->SetReadOnly(true);
  set("n", "0", PARAM_GLOBAL);
  set("n", "2", PARAM_MINE);
  set("a", "3", PARAM_MINE);
  TAppParam* follower = set("follower", "x", PARAM_GLOBAL);
  follower->Bind(old);
  int told = 0;
  old->AddListener([&](TAppParam*, int) { ++told; }, 0);
  store.id = "bar_1";
  store.UpdateClientID("bar_1", "hall_7");
  TAppParam* renamed = store.GetParamFromCache("n", PARAM_MINE, false);
  ASSERT_NE(renamed, pVoidParam);
  EXPECT_EQ(renamed->GetRawDomain(), "bar_1");
  EXPECT_EQ(renamed->Value() + renamed->Caption(), "2c");
  EXPECT_TRUE(renamed->ReadOnly());
  EXPECT_EQ(follower->GetSourceRawDomain(), "bar_1");
  EXPECT_EQ(store.GetExactParamFromCache("hall_7", "n", PARAM_MINE, false), pVoidParam);
  EXPECT_EQ(store.GetParamFromCache("n", PARAM_GLOBAL, false)->Value(), "0");
  told = 0;
  renamed->SetValue("9");
  EXPECT_EQ(told, 1);
  EXPECT_EQ(follower->Value(), "9");
  store.Poll();
  EXPECT_EQ(store.storeRounds,
            std::vector<std::string>{"bar_1/n=9;GLOBAL/n=0;bar_1/n=9;bar_1/a=3;GLOBAL/follower=9;"});
  store.UpdateClientID("bar_1", "bar_1");
  EXPECT_EQ(store.GetParamFromCache("n", PARAM_MINE, false), renamed);
}

TEST_F(Params, ANewIdentifiersEntryGoesOnFollowingItsSource) {
  TAppParam* global = set("n", "1", PARAM_GLOBAL);
  store.GetOrSetParam("n", "x", "", "", PARAM_READ_MINE_OR_GROUP_OR_GLOBAL_WRITE_MINE, true);
  store.id = "bar_1";
  store.UpdateClientID("bar_1", "hall_7");
  TAppParam* renamed = store.GetParam("n", PARAM_MINE | PARAM_CACHE);
  EXPECT_TRUE(renamed->IsBound());
  EXPECT_EQ(renamed->GetSourceRawDomain(), "GLOBAL");
  EXPECT_TRUE(renamed->QuietSave);
  EXPECT_EQ(renamed->GetPreferedSaveLocation(), PARAM_MINE);
  EXPECT_EQ(renamed->GetSaveForAllLocation(), PARAM_MINE);
  global->SetValue("2");
  EXPECT_EQ(renamed->Value(), "2");
  store.DropParamFromCache(global);
  EXPECT_FALSE(renamed->IsBound()) << "and it is known as a follower";
}

TEST_F(Params, FollowersAmongTheRenamedFollowTheRenamed) {
  TAppParam* source = set("b", "1", PARAM_MINE);
  for (const char* name : {"a", "c"}) set(name, "x", PARAM_MINE)->Bind(source);
  store.id = "bar_1";
  store.UpdateClientID("bar_1", "hall_7");
  TAppParam* renamed = store.GetParam("b", PARAM_CACHE);
  for (const char* name : {"a", "c"}) {
    TAppParam* follower = store.GetParam(name, PARAM_CACHE);
    EXPECT_TRUE(follower->IsBound()) << name;
    EXPECT_EQ(follower->GetSourceRawDomain(), "bar_1") << name;
  }
  renamed->SetValue("2");
  EXPECT_EQ(store.GetParam("a", PARAM_CACHE)->Value() + store.GetParam("c", PARAM_CACHE)->Value(), "22");
  store.DropParamFromCache(renamed);
  for (const char* name : {"a", "c"}) EXPECT_FALSE(store.GetParam(name, PARAM_CACHE)->IsBound()) << name;
}

}  // namespace
