#include "vendelo-sdl2/TParamMan.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <functional>
#include <locale>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/LogLines.h"
#include "vendelo-sdl2/TActionMan.h"

namespace vendelo_sdl2 {
namespace {

// A store with an identifier of its own, a persistent side in a map and a record of what it was asked for.
class Store : public TParamMan, public TActionMan {
 public:
  using TParamMan::AddParamToCache;
  using TParamMan::CacheEnd;
  using TParamMan::ParametersThatTriggerAction;

  Parameter OnRequestValue(const std::string& address, const std::string& name) override {
    requests.push_back(address + "/" + name);
    if (throwOnRequest) throw 1;
    return answer;
  }
  void OnStoreValue(TAppParam* param, int mode) override {
    stored.push_back(param->Name() + ":" + std::to_string(mode));
  }
  void OnDeleteValue(const TAppParam* param) override { deleted.push_back(param->Name()); }
  void OnStoreValues(const std::list<TAppParam*>& params) override {
    std::string names;
    for (const auto* param : params)
      names += param->GetRawDomain() + "/" + param->Name() + "=" + param->Value() + ";";
    storeRounds.push_back(names);
  }
  void OnRebootRequired() override { ++reboots; }

  // What would be a global value of the persistent side.
  void answerWith(const std::string& domain, const std::string& value) {
    answer = Parameter();
    answer = Parameter(domain);
    answer.SetValue(value);
  }

  std::string id = "hall_7";
  std::vector<std::string> requests;
  std::vector<std::string> stored;
  std::vector<std::string> deleted;
  std::vector<std::string> storeRounds;
  int reboots = 0;
  bool throwOnRequest = false;
  Parameter answer;

 protected:
  std::string LookUpClientID() const override { return id; }
};

class Params : public testing::Test {
 protected:
  TAppParam* set(const std::string& name, const std::string& value, ParameterDomain domain) {
    return store.SetParam(name, value, domain, "", "", false);
  }
  Store store;
};

std::string Captured(const std::function<void()>& action) {
  testing::internal::CaptureStdout();
  action();
  return testing::internal::GetCapturedStdout();
}

TEST(ReadModes, AreTheDomainsBits) {
  EXPECT_EQ(PARAM_MASK_ALL, 15);
  EXPECT_EQ(PARAM_MASK_NO_CACHE, 14);
  const int C = PARAM_CACHE, B = PARAM_GLOBAL, G = PARAM_GROUP, M = PARAM_MINE;
  const struct {
    int mode, read, write;
  } modes[] = {{PARAM_READ_CACHE_WRITE_CACHE, C, C},
               {PARAM_READ_NOCACHE_MINE_OR_GROUP_OR_GLOBAL_WRITE_GLOBAL, M | G | B, B},
               {PARAM_READ_NOCACHE_MINE_OR_GROUP_OR_GLOBAL_WRITE_GROUP, M | G | B, G},
               {PARAM_READ_NOCACHE_MINE_OR_GROUP_OR_GLOBAL_WRITE_MINE, M | G | B, M},
               {PARAM_READ_NOCACHE_GROUP_OR_GLOBAL_WRITE_GLOBAL, G | B, B},
               {PARAM_READ_NOCACHE_GROUP_OR_GLOBAL_WRITE_GROUP, G | B, G},
               {PARAM_READ_NOCACHE_MINE_OR_GROUP_WRITE_GROUP, M | G, G},
               {PARAM_READ_NOCACHE_MINE_OR_GROUP_WRITE_MINE, M | G, M},
               {PARAM_READ_NOCACHE_GLOBAL_WRITE_GLOBAL, B, B},
               {PARAM_READ_NOCACHE_GROUP_WRITE_GROUP, G, G},
               {PARAM_READ_NOCACHE_MINE_WRITE_MINE, M, M},
               {PARAM_READ_MINE_OR_GROUP_OR_GLOBAL_WRITE_GLOBAL, C | M | G | B, B},
               {PARAM_READ_MINE_OR_GROUP_OR_GLOBAL_WRITE_GROUP, C | M | G | B, G},
               {PARAM_READ_MINE_OR_GROUP_OR_GLOBAL_WRITE_MINE, C | M | G | B, M},
               {PARAM_READ_MINE_OR_GROUP_OR_GLOBAL_WRITE_CACHE, C | M | G | B, C},
               {PARAM_READ_GROUP_OR_GLOBAL_WRITE_GLOBAL, C | G | B, B},
               {PARAM_READ_GROUP_OR_GLOBAL_WRITE_GROUP, C | G | B, G},
               {PARAM_READ_MINE_OR_GROUP_WRITE_GROUP, C | M | G, G},
               {PARAM_READ_MINE_OR_GROUP_WRITE_MINE, C | M | G, M},
               {PARAM_READ_GLOBAL_WRITE_GLOBAL, C | B, B},
               {PARAM_READ_GROUP_WRITE_GROUP, C | G, G},
               {PARAM_READ_MINE_WRITE_MINE, C | M, M}};
  for (const auto& m : modes) EXPECT_EQ(m.mode, m.write * 16 + m.read);
}

TEST(OrderBits, AreTheHighestAndTheLowestAsValues) {
  const struct {
    int mask, high, low;
  } cases[] = {{0, 0, 0}, {1, 1, 1}, {15, 8, 1}, {14, 8, 2}, {6, 4, 2}, {12, 8, 4}};
  for (const auto& c : cases) {
    EXPECT_EQ(highestOrderBit(c.mask), c.high);
    EXPECT_EQ(lowestOrderBit(c.mask), c.low);
  }
}

// The sentinel.

TEST_F(Params, TheSentinelReadsAsEmptyAndIgnoresEveryWriter) {
  LogLines log;
  auto* none = store.GetParamFromCache("missing", PARAM_MASK_ALL, true);
  ASSERT_EQ(none, pVoidParam);
  EXPECT_EQ(none->Name(), "NULL");
  EXPECT_TRUE(none->IsNull());
  Parameter other("GLOBAL");
  other.SetValue("x");
  auto* source = set("real", "x", PARAM_MINE);
  none->SetValue("x");
  none->SetValue(5L);
  none->SetValue(1.5);
  none->Load(other);
  none->Bind(source);
  none->Update();
  none->Delete();
  none->SetReadOnly(true);
  none->SetPreferedSaveLocation(PARAM_GLOBAL);
  none->SetSaveForAllLocation(PARAM_GLOBAL);
  EXPECT_EQ(none->AddListener([](TAppParam*, int) {}, 1), 0u);
  none->AddListenersOf(source);
  EXPECT_EQ(log.lines().size(), 12u);
  EXPECT_EQ(log.lines().front(), "4 PARAMS ERROR: SetValue on the missing parameter is ignored");
  none->SetData(std::make_shared<ParameterData>());
  none->StealFrom(other);
  none->CopyFrom(other);
  none->Instantiate();
  none->BeginEdit();
  none->EndEdit();
  none->SetCaption("c");
  EXPECT_TRUE(none->Parameter::IsNull());
  EXPECT_EQ(none->Value(), "");
  EXPECT_EQ(none->Changes(), 0);
  EXPECT_FALSE(none->ReadOnly());
  EXPECT_EQ(none->GetPreferedSaveLocation(), PARAM_CACHE);
  EXPECT_EQ(none->GetSaveForAllLocation(), PARAM_GROUP);
  EXPECT_EQ(store.DropParamFromCache(none), -1);
  EXPECT_EQ(store.DropParamFromCache(nullptr), -1);
  store.DeleteParam(none);
  store.DeleteParam("missing", PARAM_CACHE);
  EXPECT_EQ(store.deleted.size(), 0u);
}

// Addresses.

TEST_F(Params, AddressesFollowTheIdentifier) {
  EXPECT_EQ(TAppParam::GetAddressOf(PARAM_CACHE, "a_b"), "a_b");
  EXPECT_EQ(TAppParam::GetAddressOf(PARAM_MINE, "a_b"), "a_b");
  EXPECT_EQ(TAppParam::GetAddressOf(PARAM_OTHER, "a_b"), "a_b");
  EXPECT_EQ(TAppParam::GetAddressOf(PARAM_GLOBAL, "a_b"), "GLOBAL");
  EXPECT_EQ(TAppParam::GetAddressOf(PARAM_GROUP, "a_b"), "a");
  EXPECT_EQ(TAppParam::GetAddressOf(static_cast<ParameterDomain>(0), "a_b"), "");
  EXPECT_EQ(TAppParam::GetAddressOf(static_cast<ParameterDomain>(12), "a_b"), "");
  EXPECT_EQ(store.GetGlobalDomain(), "GLOBAL");
  EXPECT_EQ(store.GetGroupDomain("x_y_z"), "x");
  EXPECT_EQ(store.GetGroupDomain("plain"), "hall") << "the application's own group";
  store.id = "solo";
  EXPECT_EQ(store.GetGroupDomain("plain"), "solo");
  EXPECT_EQ(TAppParam("n", PARAM_GROUP).GetRawDomain(), "solo");
  EXPECT_EQ(TAppParam("n", PARAM_MINE).GetRawDomain(), "solo");
}

TEST(ParamsWithoutApplication, TheIdentifierIsEmptyAndTheClientsOwnDomain) {
  TParamMan plain;
  EXPECT_EQ(plain.GetGroupDomain("a"), "");
  const std::string out = Captured([&] {
    TAppParam* param = plain.SetParam("name", "v", PARAM_MINE, "", "", false);
    ASSERT_NE(param, pVoidParam);
    EXPECT_EQ(param->GetRawDomain(), "");
    EXPECT_EQ(plain.GetParam("name", PARAM_CACHE), param);
    plain.SetRestriction(RESTRICTION_RAM_CLEAR, true);
    plain.Poll();
  });
  EXPECT_EQ(out, "") << "an empty identifier keeps everything in the cache";
}

TEST(ParamsDefaults, TheStoresOwnOperationsOnlyPrint) {
  TParamMan plain;
  EXPECT_EQ(Captured([&] { EXPECT_TRUE(plain.OnRequestValue("addr", "name").IsNull()); }),
            "Requested value for parameter name of addr\n");
  TAppParam param("name", std::string("GLOBAL"));
  param.SetValue("v");
  param.SetCaption("c");
  param.SetDescription("d");
  EXPECT_EQ(Captured([&] { plain.OnStoreValue(&param, 0); }),
            "Requested store for parameter\nname = 'v' with\ncaption = 'c'\ndescription = 'd'\n");
  EXPECT_EQ(Captured([&] { plain.OnDeleteValue(&param); }), "Requested delete for parameter name\n");
  EXPECT_EQ(Captured([&] {
              plain.OnStoreValues({&param, &param});
            }),
            "Requested store of param list (2). Will do nothing!\n");
  EXPECT_EQ(Captured([&] { plain.OnRebootRequired(); }), "");
}

// Writing.

TEST_F(Params, ACacheWriteIsTheClientsOwnAndNeverReachesTheStore) {
  TAppParam* param = set("name", "v", PARAM_CACHE);
  EXPECT_EQ(param->GetRawDomain(), "hall_7");
  EXPECT_EQ(param->Value(), "v");
  EXPECT_EQ(param->GetPreferedSaveLocation(), PARAM_CACHE);
  EXPECT_EQ(store.Poll(), 0);
  EXPECT_TRUE(store.storeRounds.empty());
  EXPECT_EQ(set("name", "w", PARAM_CACHE), param);
  EXPECT_EQ(param->Value(), "w");
  store.Poll();
  EXPECT_TRUE(store.storeRounds.empty());
}

TEST_F(Params, OtherWritesAreQueuedOncePerWriteInOrder) {
  TAppParam* mine = set("name", "1", PARAM_MINE);
  EXPECT_EQ(mine->GetPreferedSaveLocation(), PARAM_MINE);
  TAppParam* global = set("name", "2", PARAM_GLOBAL);
  EXPECT_EQ(global->GetPreferedSaveLocation(), PARAM_GLOBAL);
  set("name", "3", PARAM_MINE);
  set("other", "4", PARAM_GROUP);
  store.Poll();
  EXPECT_EQ(store.storeRounds, std::vector<std::string>{"hall_7/name=3;GLOBAL/name=2;hall_7/name=3;hall/other=4;"});
  store.Poll();
  EXPECT_EQ(store.storeRounds.size(), 1u);
}

TEST_F(Params, TextsOverwriteOnlyWhenGivenAndAnEditReportsOnce) {
  TAppParam* param = store.SetParam("name", "1", PARAM_MINE, "cap", "desc", true);
  EXPECT_TRUE(param->QuietSave);
  std::vector<int> changes;
  param->AddListener([&](TAppParam*, int flag) { changes.push_back(flag); }, 0);
  store.SetParam("name", "2", PARAM_MINE, "", "", false);
  EXPECT_EQ(param->Caption() + param->Description(), "capdesc");
  EXPECT_FALSE(param->QuietSave);
  store.SetParam("name", "3", PARAM_MINE, "CAP", "DESC", false);
  EXPECT_EQ(param->Caption() + param->Description(), "CAPDESC");
  EXPECT_EQ(changes,
            (std::vector<int>{TAppParam::VALUE, TAppParam::VALUE | TAppParam::CAPTION | TAppParam::DESCRIPTION}));
}

struct GroupedDigits : std::numpunct<char> {
  char do_decimal_point() const override { return ','; }
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
};

TEST_F(Params, NumbersAreWrittenTheSameInEveryLanguage) {
  const std::locale before = std::locale::global(std::locale(std::locale::classic(), new GroupedDigits));
  EXPECT_EQ(store.SetParam("w", 1920, PARAM_MINE, "", "", false)->Value(), "1920");
  EXPECT_EQ(store.SetParam("d", 1234.5, PARAM_MINE, "", "", false)->Value(), "1234.5");
  EXPECT_EQ(store.SetParam("t", "text", PARAM_MINE, "", "", false)->Value(), "text");
  TAppParam* param = store.GetParamFromCache("w", PARAM_MINE, false);
  param->SetValue(1080000L);
  EXPECT_EQ(param->Value(), "1080000");
  param->SetValue(2500.25);
  EXPECT_EQ(param->Value(), "2500.25");
  EXPECT_EQ(store.GetOrSetParam("n", 12345, "", "", PARAM_READ_MINE_WRITE_MINE, false)->Value(), "12345");
  std::locale::global(before);
}

TEST_F(Params, TheCacheRefusesADomainOfTheCacheAndASecondEntry) {
  TAppParam* nowhere = new TAppParam("name", std::string());
  EXPECT_EQ(Captured([&] { EXPECT_EQ(store.AddParamToCache(nowhere), store.CacheEnd()); }),
            "application::Parameter \"name\" domain cannot be CACHE.\n");
  delete nowhere;
  set("name", "1", PARAM_GLOBAL);
  TAppParam* second = new TAppParam("name", std::string("GLOBAL"));
  EXPECT_EQ(Captured([&] { EXPECT_EQ(store.AddParamToCache(second), store.CacheEnd()); }),
            "application::Parameter \"name\" of ID GLOBAL already exists in this application.\n");
  delete second;
  EXPECT_EQ(Captured([&] {
              EXPECT_EQ(store.AddParamToCache(nullptr), store.CacheEnd());
              EXPECT_EQ(store.AddParamToCache(const_cast<TAppParam*>(pVoidParam)), store.CacheEnd());
            }),
            "");
  EXPECT_EQ(Captured([&] { EXPECT_EQ(store.SetExactParam("", "x", "v", false, "", "", false), pVoidParam); }),
            "application::Parameter \"x\" domain cannot be CACHE.\n");
}

// Reading.

TEST_F(Params, AMissingNameIsPrintedWithTheMostSpecificAddress) {
  EXPECT_EQ(Captured([&] { EXPECT_EQ(store.GetParam("gone", PARAM_MASK_ALL), pVoidParam); }),
            "PARAM: No parameter named 'gone' for ID 'hall_7' exists!\n");
  EXPECT_EQ(Captured([&] { store.GetParam("gone", PARAM_GROUP | PARAM_GLOBAL); }),
            "PARAM: No parameter named 'gone' for ID 'hall' exists!\n");
  EXPECT_EQ(Captured([&] { store.GetExactParam("", "gone", PARAM_MINE); }),
            "PARAM: No parameter named 'gone' for ID '' exists!\n");
  EXPECT_EQ(store.requests, (std::vector<std::string>{"hall_7/gone", "hall/gone", "/gone"}));
}

TEST_F(Params, SomeReadsEndBeforeTheStore) {
  EXPECT_EQ(Captured([&] {
              EXPECT_EQ(store.GetParam("", PARAM_MASK_ALL), pVoidParam);
              EXPECT_EQ(store.GetParam("n", 0), pVoidParam);
              EXPECT_EQ(store.GetParam("n", 32), pVoidParam);
              EXPECT_EQ(store.GetParam("n", -3), pVoidParam);
              EXPECT_EQ(store.GetParam("n", PARAM_CACHE), pVoidParam);
              EXPECT_EQ(store.GetParamFromCache("", PARAM_MASK_ALL, true), pVoidParam);
            }),
            "");
  EXPECT_TRUE(store.requests.empty());
  TAppParam* mine = set("n", "1", PARAM_MINE);
  EXPECT_EQ(store.GetParam("n", PARAM_CACHE), mine);
  EXPECT_EQ(store.GetParam("n", PARAM_READ_MINE_WRITE_MINE), mine) << "the part to write is dropped";
  EXPECT_TRUE(store.requests.empty());
}

TEST_F(Params, AGlobalValueIsFollowedByABoundEntryOfTheClient) {
  TAppParam* global = set("n", "1", PARAM_GLOBAL);
  TAppParam* mine = store.GetParam("n", PARAM_MASK_ALL);
  ASSERT_NE(mine, pVoidParam);
  EXPECT_NE(mine, global);
  EXPECT_EQ(mine->GetRawDomain(), "hall_7");
  EXPECT_TRUE(mine->IsBound());
  EXPECT_EQ(mine->GetSourceRawDomain(), "GLOBAL");
  EXPECT_EQ(mine->GetSourceDomain("hall_7"), PARAM_GLOBAL);
  EXPECT_EQ(mine->Value(), "1");
  int told = 0;
  mine->AddListener([&](TAppParam*, int) { ++told; }, 0);
  set("n", "2", PARAM_GLOBAL);
  EXPECT_EQ(mine->Value(), "2");
  EXPECT_EQ(told, 1);
  EXPECT_EQ(store.GetParam("n", PARAM_MASK_ALL), mine) << "found the next time";
  mine->Unbind();
  EXPECT_TRUE(mine->IsNull());
  EXPECT_FALSE(mine->IsBound());
  mine->Unbind();
}

TEST_F(Params, TheMostSpecificDomainWinsAndTheModeChoosesTheDomains) {
  set("n", "global", PARAM_GLOBAL);
  TAppParam* group = set("n", "group", PARAM_GROUP);
  EXPECT_EQ(store.GetParamFromCache("n", PARAM_MASK_ALL, false), group);
  TAppParam* mine = set("n", "mine", PARAM_MINE);
  EXPECT_EQ(store.GetParamFromCache("n", PARAM_MASK_ALL, false), mine);
  EXPECT_EQ(store.GetParamFromCache("n", PARAM_GROUP | PARAM_GLOBAL, true), group);
  EXPECT_EQ(store.GetParamFromCache("n", PARAM_GLOBAL, true)->Value(), "global");
  EXPECT_EQ(store.GetParamFromCache("n", PARAM_CACHE, true), mine) << "the cache alone is the client's own";
  EXPECT_EQ(store.GetExactParamFromCache("hall_8", "n", PARAM_MINE, true), pVoidParam);
  EXPECT_EQ(store.GetExactParamFromCache("hall_8", "n", PARAM_MINE | PARAM_GROUP, false), group);
  EXPECT_EQ(store.GetExactParamFromCache("hall_8", "n", PARAM_MINE | PARAM_GROUP, true)->GetRawDomain(), "hall_8");
  EXPECT_EQ(store.GetExactParamFromCache("plain", "n", PARAM_GROUP, false), group)
    << "without an underscore the application's own group counts";
}

TEST_F(Params, TheStoresAnswerIsLoadedWithBindingsDownToTheClient) {
  store.answerWith("GLOBAL", "far");
  TAppParam* mine = store.GetParam("n", PARAM_MASK_ALL);
  ASSERT_NE(mine, pVoidParam);
  EXPECT_EQ(store.requests, std::vector<std::string>{"hall_7/n"});
  EXPECT_EQ(mine->GetRawDomain(), "hall_7");
  EXPECT_EQ(mine->Value(), "far");
  TAppParam* group = store.GetParamFromCache("n", PARAM_GROUP, false);
  TAppParam* global = store.GetParamFromCache("n", PARAM_GLOBAL, false);
  EXPECT_TRUE(group->IsBound());
  EXPECT_FALSE(global->IsBound());
  EXPECT_EQ(mine->GetSourceRawDomain(), "GLOBAL");
  global->SetValue("new");
  EXPECT_EQ(mine->Value() + group->Value(), "newnew");
  store.GetParam("n", PARAM_MASK_ALL);
  EXPECT_EQ(store.requests.size(), 1u) << "the cache answers now";
  store.answerWith("GLOBAL", "again");
  EXPECT_EQ(store.GetParam("n", PARAM_MASK_NO_CACHE), mine);
  EXPECT_EQ(store.requests.size(), 2u) << "without the cache bit the store is asked";
  EXPECT_EQ(mine->Value(), "again");
}

TEST_F(Params, AnAnswerForTheAskedAddressIsLoadedIntoTheCachedParameter) {
  TAppParam* mine = store.SetParam("n", "1", PARAM_MINE, "", "", true);
  store.answerWith("hall_7", "2");
  EXPECT_EQ(store.GetParam("n", PARAM_MINE), mine);
  EXPECT_EQ(mine->Value(), "2");
  store.answer.SetValue("3");
  EXPECT_EQ(mine->Value(), "2") << "the same domain copies the content";
}

TEST_F(Params, AnAnswerOutsideTheModeOrAnExceptionIsNoAnswer) {
  store.answerWith("hall_8", "foreign");
  EXPECT_EQ(Captured([&] { EXPECT_EQ(store.GetParam("n", PARAM_MASK_ALL), pVoidParam); }),
            "PARAM: No parameter named 'n' for ID 'hall_7' exists!\n");
  store.answerWith("GLOBAL", "1");
  EXPECT_EQ(Captured([&] { EXPECT_EQ(store.GetParam("n", PARAM_GROUP), pVoidParam); }),
            "PARAM: No parameter named 'n' for ID 'hall' exists!\n");
  store.throwOnRequest = true;
  EXPECT_EQ(Captured([&] { EXPECT_EQ(store.GetParam("n", PARAM_MASK_ALL), pVoidParam); }),
            "PARAM: No parameter named 'n' for ID 'hall_7' exists!\n");
}

TEST_F(Params, AnEmptyClientReadsTheGlobalDomainOnly) {
  store.answerWith("GLOBAL", "1");
  EXPECT_EQ(store.GetExactParam("", "n", PARAM_MASK_NO_CACHE)->GetRawDomain(), "GLOBAL");
  EXPECT_EQ(store.requests, std::vector<std::string>{"GLOBAL/n"});
}

// GetOrSet.

TEST_F(Params, GetOrSetMakesWhatIsMissingWithoutAMessage) {
  EXPECT_EQ(Captured([&] {
              TAppParam* param = store.GetOrSetParam("n", "1", "c", "d", PARAM_READ_MINE_WRITE_MINE, true);
              EXPECT_EQ(param->GetRawDomain(), "hall_7");
              EXPECT_EQ(param->Value() + param->Caption() + param->Description(), "1cd");
              EXPECT_TRUE(param->QuietSave);
              EXPECT_EQ(param->GetPreferedSaveLocation(), PARAM_MINE);
              EXPECT_EQ(param->GetSaveForAllLocation(), PARAM_MINE);
            }),
            "");
  store.Poll();
  EXPECT_EQ(store.storeRounds, std::vector<std::string>{"hall_7/n=1;"});
}

TEST_F(Params, GetOrSetOfAKnownOneOnlyTouchesItsSaving) {
  TAppParam* known = set("n", "1", PARAM_MINE);
  TAppParam* param = store.GetOrSetParam("n", "2", "c", "d", PARAM_READ_MINE_OR_GROUP_OR_GLOBAL_WRITE_GLOBAL, true);
  EXPECT_EQ(param, known);
  EXPECT_EQ(param->Value() + param->Caption(), "1");
  EXPECT_TRUE(param->QuietSave);
  EXPECT_EQ(param->GetPreferedSaveLocation(), PARAM_MINE);
  EXPECT_EQ(param->GetSaveForAllLocation(), PARAM_GLOBAL);
}

TEST_F(Params, GetOrSetThatWritesMoreGenerallyThanItReadsAddsABoundEntry) {
  TAppParam* param = store.GetOrSetParam("n", "1", "", "", PARAM_READ_MINE_OR_GROUP_OR_GLOBAL_WRITE_GLOBAL, true);
  EXPECT_EQ(param->GetRawDomain(), "hall_7");
  EXPECT_TRUE(param->IsBound());
  EXPECT_TRUE(param->QuietSave);
  EXPECT_EQ(param->GetSourceRawDomain(), "GLOBAL");
  store.Poll();
  EXPECT_EQ(store.storeRounds, std::vector<std::string>{"GLOBAL/n=1;"});
}

TEST_F(Params, GetOrSetIntoTheCacheIsNotStored) {
  TAppParam* param = store.GetOrSetParam("n", "1", "", "", PARAM_READ_MINE_OR_GROUP_OR_GLOBAL_WRITE_CACHE, false);
  EXPECT_EQ(param->GetRawDomain(), "hall_7");
  EXPECT_EQ(param->GetPreferedSaveLocation(), PARAM_CACHE);
  store.Poll();
  EXPECT_TRUE(store.storeRounds.empty());
}

TEST_F(Params, WeirdModesAreLoggedAndRefused) {
  LogLines log;
  const auto mode = [](int read, int write) { return static_cast<ParameterReadWriteMode>(write * 16 + read); };
  EXPECT_EQ(store.GetOrSetParam("n", "1", "", "", mode(PARAM_GLOBAL, PARAM_MINE), false), pVoidParam);
  EXPECT_EQ(store.GetOrSetParam("n", "1", "", "", mode(PARAM_CACHE | PARAM_MINE, PARAM_GLOBAL), false), pVoidParam);
  EXPECT_EQ(log.lines(), (std::vector<std::string>{
                           "0 PARAMS ERROR: Weird GetOrSet for param 'n'-> writing mine but reading something else",
                           "0 PARAMS ERROR: Weird GetOrSet for param 'n'-> reading only mine but writing global"}));
}

TEST_F(Params, GetOrSetForAnotherClientUsesItsAddresses) {
  TAppParam* param =
    store.GetOrSetExactParam("bar_1", "n", "1", "", "", PARAM_READ_MINE_OR_GROUP_WRITE_GROUP, false);
  EXPECT_EQ(param->GetRawDomain(), "bar_1");
  EXPECT_EQ(param->GetSourceRawDomain(), "bar");
}

// The environment.

TEST_F(Params, TheEnvironmentIsReadTrimmed) {
  setenv("PARAM_TEST", "  /data/skin  ", 1);
  EXPECT_EQ(Captured([&] { EXPECT_EQ(store.LoadParamFromEnvironment("PARAM_TEST", "Dir", false), 0); }), "");
  EXPECT_EQ(store.GetParam("Dir", PARAM_CACHE)->Value(), "/data/skin");
  store.Poll();
  EXPECT_TRUE(store.storeRounds.empty());
}

TEST_F(Params, ABlankVariableIsAnErrorAndStoresNothingness) {
  setenv("PARAM_TEST", "   ", 1);
  EXPECT_EQ(Captured([&] { EXPECT_EQ(store.LoadParamFromEnvironment("PARAM_TEST", "Dir", false), 0); }),
            "PARAMS ERROR: Error reading environment variable 'PARAM_TEST' \n");
  TAppParam* param = store.GetParam("Dir", PARAM_CACHE);
  ASSERT_NE(param, pVoidParam);
  EXPECT_FALSE(param->IsNull());
  EXPECT_EQ(param->Value(), "");
}

TEST_F(Params, AMissingVariableIsAnErrorUnlessOptional) {
  unsetenv("PARAM_TEST");
  EXPECT_EQ(Captured([&] { EXPECT_EQ(store.LoadParamFromEnvironment("PARAM_TEST", "Dir", true), 0); }), "");
  EXPECT_EQ(Captured([&] { EXPECT_EQ(store.LoadParamFromEnvironment("PARAM_TEST", "Dir", false), -1); }),
            "PARAMS ERROR: Please set 'PARAM_TEST' environment variable\n");
  EXPECT_EQ(store.GetParam("Dir", PARAM_CACHE), pVoidParam);
}

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

// Removal.

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

// Restrictions.

TEST_F(Params, RestrictionsTellListenersAndRaiseTheAction) {
  EXPECT_EQ(store.GetRestrictionState(), 1025);
  std::vector<long> states;
  store.AddRestrictionListener([&](long state) { states.push_back(state); }, true);
  store.AddRestrictionListener([&](long state) { states.push_back(-state); }, false);
  EXPECT_EQ(states, std::vector<long>{1025});
  int raised = 0;
  store.AddActionListener(
    "OnRestrictionsChange",
    new TahLambda([&](std::string, void* data) { raised += !data; }, TActionHandler::ahtExecuteEndless),
    ACTION_NORMAL);
  store.SetRestriction(RESTRICTION_LOGIC_DOOR, true);
  store.SetRestriction(RESTRICTION_LOGIC_DOOR, true);
  store.SetRestriction(RESTRICTION_RAM_CLEAR, false);
  EXPECT_EQ(store.GetRestrictionState(), 1029);
  store.SetRestriction(RESTRICTION_HIDDEN, false);
  EXPECT_EQ(store.GetRestrictionState(), 5);
  EXPECT_EQ(states, (std::vector<long>{1025, 1029, -1029, 5, -5}));
  store.ProcessActions();
  store.ExecuteActions(ACTION_NORMAL);
  EXPECT_EQ(raised, 2);
  store.SetRestriction(RESTRICTION_ALL, false);
  EXPECT_EQ(store.GetRestrictionState(), 5 - 1031) << "the value is subtracted when any of its bits is set";
}

// The printed table.

TEST_F(Params, TheTableShowsEveryEntryInItsOrder) {
  const int before = ParameterData::GetNumInstances();
  store.SetParam("b", "v", PARAM_GLOBAL, "cap", "desc", false)->SetRestrictions(5);
  store.SetParam("a", std::string(40, 'x'), PARAM_MINE, "", "", false);
  store.SetParam("a", std::string(41, 'y'), PARAM_GLOBAL, "", "", false);
  const auto row = [](const std::string& a, const std::string& b, const std::string& c, const std::string& d,
                      const std::string& e, const std::string& f) {
    char line[400];
    std::snprintf(line, sizeof line, "%-40s | %-15s | %-6s | %-42s | %-40s | %s\n", a.c_str(), b.c_str(), c.c_str(),
                  d.c_str(), e.c_str(), f.c_str());
    return std::string(line);
  };
  const std::string line = std::string(149, '=') + "\n";
  EXPECT_EQ(Captured([&] { store.PrintParamList(); }),
            " #  : " + row("Name", "Domain", "Restr.", "Value", "Caption", "Description") + line +
              "0   : " + row("a", "GLOBAL", "0", "\"" + std::string(37, 'y') + "...\"", "", "") +
              "1   : " + row("a", "hall_7", "0", "\"" + std::string(40, 'x') + "\"", "", "") +
              "2   : " + row("b", "GLOBAL", "5", "\"v\"", "cap", "desc") + line +
              "# od data instances: " + std::to_string(before + 3) + "\n" + line);
}

TEST_F(Params, ThreadsReadWriteAndDropAtOnce) {
  constexpr int PER_THREAD = 200;
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i)
    threads.emplace_back([&, i] {
      const std::string own = "own" + std::to_string(i);
      for (int n = 0; n < PER_THREAD; ++n) {
        TAppParam* param = store.SetParam(own, n, PARAM_MINE, "", "", false);
        EXPECT_EQ(param->AsInteger(-1), n);
        EXPECT_EQ(store.GetParamFromCache(own, PARAM_MASK_ALL, true), param);
        if (n % 10 == 9) {
          EXPECT_EQ(store.DropParamFromCache(param), 0);
        }
      }
    });
  for (int n = 0; n < PER_THREAD; ++n) EXPECT_EQ(store.GetParam("own0", 0), pVoidParam);
  for (auto& thread : threads) thread.join();
  for (int i = 0; i < 4; ++i)
    EXPECT_EQ(store.GetParamFromCache("own" + std::to_string(i), PARAM_MINE, false), pVoidParam);
  store.Poll();
  EXPECT_TRUE(store.storeRounds.empty()) << "pending writes of dropped parameters are gone";
}

}  // namespace
}  // namespace vendelo_sdl2
