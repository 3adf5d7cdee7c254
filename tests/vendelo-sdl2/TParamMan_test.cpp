#include "tests/vendelo-sdl2/TParamManFixture.h"

#include <limits>
#include <locale>
#include <thread>

using namespace paramtest;

namespace {

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
  } cases[] = {{0, 0, 0},
               {1, 1, 1},
               {15, 8, 1},
               {14, 8, 2},
               {6, 4, 2},
               {12, 8, 4},
               {1 << 30, 1 << 30, 1 << 30},
               {-1, std::numeric_limits<int>::min(), 1},
               {-8, std::numeric_limits<int>::min(), 8}};
  for (const auto& c : cases) {
    EXPECT_EQ(highestOrderBit(c.mask), c.high);
    EXPECT_EQ(lowestOrderBit(c.mask), c.low);
  }
}

// The sentinel.

class Sentinel : public Params {
 protected:
  void readsAsEmpty() {
    EXPECT_EQ(none->Name(), "NULL");
    EXPECT_TRUE(none->IsNull());
    EXPECT_TRUE(none->Parameter::IsNull());
    EXPECT_EQ(none->Value(), "");
    EXPECT_EQ(none->Changes(), 0);
    EXPECT_FALSE(none->ReadOnly());
    EXPECT_EQ(none->GetPreferedSaveLocation(), PARAM_CACHE);
    EXPECT_EQ(none->GetSaveForAllLocation(), PARAM_GROUP);
  }
  LogLines log;
  TAppParam* none = store.GetParamFromCache("missing", PARAM_MASK_ALL, true);
};

TEST_F(Sentinel, StandsForAMissingParameterAndReadsAsEmpty) {
  EXPECT_EQ(none, pVoidParam);
  readsAsEmpty();
  EXPECT_EQ(log.size(), 0u);
}

TEST_F(Sentinel, IgnoresEveryWriterAndSaysSo) {
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
  std::vector<std::string> refused;
  for (const char* operation :
       {"SetValue", "SetValue", "SetValue", "Load", "Bind", "Update", "Delete", "SetReadOnly",
        "SetPreferedSaveLocation", "SetSaveForAllLocation", "AddListener", "AddListenersOf"})
    refused.push_back(std::string("4 PARAMS ERROR: ") + operation + " on the missing parameter is ignored");
  EXPECT_EQ(log.lines(), refused);
  readsAsEmpty();
}

TEST_F(Sentinel, IgnoresTheRestInSilence) {
  Parameter other("GLOBAL");
  other.SetValue("x");
  none->SetData(std::make_shared<ParameterData>());
  none->StealFrom(other);
  none->CopyFrom(other);
  none->Instantiate();
  none->BeginEdit();
  none->EndEdit();
  none->SetCaption("c");
  readsAsEmpty();
  EXPECT_EQ(log.size(), 0u);
}

TEST_F(Sentinel, ToDeleteItDeletesNothingAndIsNoMistake) {
  EXPECT_EQ(store.DropParamFromCache(none), -1);
  EXPECT_EQ(store.DropParamFromCache(nullptr), -1);
  store.DeleteParam(none);
  store.DeleteParam(nullptr);
  store.DeleteParam("missing", PARAM_CACHE);
  EXPECT_EQ(store.deleted.size(), 0u);
  EXPECT_EQ(log.size(), 0u);
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
  EXPECT_EQ(store.GetGroupDomain("_x"), "") << "the part before the underscore, empty or not";
  EXPECT_EQ(TAppParam::GetAddressOf(PARAM_GROUP, "_x"), "");
  EXPECT_EQ(store.GetGroupDomain("x_"), "x");
  EXPECT_EQ(store.GetGroupDomain(""), "hall");
  store.id = "solo";
  EXPECT_EQ(store.GetGroupDomain("plain"), "solo");
  EXPECT_EQ(TAppParam("n", PARAM_GROUP).GetRawDomain(), "solo");
  EXPECT_EQ(TAppParam("n", PARAM_MINE).GetRawDomain(), "solo");
}

TEST(ParamsWithoutApplication, AGroupIsReadOffTheAddressWithoutAStoreToo) {
  EXPECT_EQ(TAppParam::GetAddressOf(PARAM_GROUP, "a_b"), "a");
  EXPECT_EQ(TAppParam::GetAddressOf(PARAM_GROUP, "a_b_c"), "a");
  EXPECT_EQ(TAppParam::GetAddressOf(PARAM_GROUP, "_b"), "");
  EXPECT_EQ(TAppParam::GetAddressOf(PARAM_GROUP, "plain"), "") << "nobody's group is known";
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
  TAppParam* group = set("other", "4", PARAM_GROUP);
  EXPECT_EQ(group->GetPreferedSaveLocation(), PARAM_MINE) << "for its own address it is the owner";
  EXPECT_EQ(group->GetSaveForAllLocation(), PARAM_GROUP);
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
  EXPECT_EQ(Captured([&] { EXPECT_EQ(store.AddParamToCache(nowhere), store.ParamList.end()); }),
            "application::Parameter \"name\" domain cannot be CACHE.\n");
  delete nowhere;
  set("name", "1", PARAM_GLOBAL);
  TAppParam* second = new TAppParam("name", std::string("GLOBAL"));
  EXPECT_EQ(Captured([&] { EXPECT_EQ(store.AddParamToCache(second), store.ParamList.end()); }),
            "application::Parameter \"name\" of ID GLOBAL already exists in this application.\n");
  delete second;
  EXPECT_EQ(Captured([&] {
              EXPECT_EQ(store.AddParamToCache(nullptr), store.ParamList.end());
              EXPECT_EQ(store.AddParamToCache(const_cast<TAppParam*>(pVoidParam)), store.ParamList.end());
            }),
            "");
  EXPECT_EQ(Captured([&] { EXPECT_EQ(store.SetExactParam("", "x", "v", false, "", "", false), pVoidParam); }),
            "application::Parameter \"x\" domain cannot be CACHE.\n");
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
  constexpr int kPerThread = 200;
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i)
    threads.emplace_back([&, i] {
      const std::string own = "own" + std::to_string(i);
      for (int n = 0; n < kPerThread; ++n) {
        TAppParam* param = store.SetParam(own, n, PARAM_MINE, "", "", false);
        EXPECT_EQ(param->AsInteger(-1), n);
        EXPECT_EQ(store.GetParamFromCache(own, PARAM_MASK_ALL, true), param);
        if (n % 10 == 9) {
          EXPECT_EQ(store.DropParamFromCache(param), 0);
        }
      }
    });
  for (int n = 0; n < kPerThread; ++n) EXPECT_EQ(store.GetParam("own0", 0), pVoidParam);
  for (auto& thread : threads) thread.join();
  for (int i = 0; i < 4; ++i)
    EXPECT_EQ(store.GetParamFromCache("own" + std::to_string(i), PARAM_MINE, false), pVoidParam);
  store.Poll();
  EXPECT_TRUE(store.storeRounds.empty()) << "pending writes of dropped parameters are gone";
}

}  // namespace
