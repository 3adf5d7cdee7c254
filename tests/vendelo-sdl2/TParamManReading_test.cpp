#include "tests/vendelo-sdl2/TParamManFixture.h"

#include <cstdlib>
#include <limits>

using namespace paramtest;

namespace {

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

TEST_F(Params, AnAnswerOfNobodyIsPrintedAndNoAnswer) {
  store.answerWith("", "value");
  TAppParam* got = nullptr;
  EXPECT_EQ(Captured([&] { got = store.GetParam("n", PARAM_MASK_ALL); }),
            "application::Parameter \"n\" domain cannot be CACHE.\n");
  EXPECT_EQ(got, pVoidParam);
  EXPECT_EQ(store.GetParamFromCache("n", PARAM_MASK_ALL, false), pVoidParam);
}

TEST_F(Params, AnEmptyClientReadsTheGlobalDomainOnly) {
  store.answerWith("GLOBAL", "1");
  EXPECT_EQ(store.GetExactParam("", "n", PARAM_MASK_NO_CACHE)->GetRawDomain(), "GLOBAL");
  EXPECT_EQ(store.requests, std::vector<std::string>{"GLOBAL/n"});
}

TEST_F(Params, AGroupReadThatFindsTheGlobalValueGetsABoundEntryOfTheGroup) {
  TAppParam* global = set("n", "1", PARAM_GLOBAL);
  EXPECT_EQ(store.GetParamFromCache("n", PARAM_GROUP | PARAM_GLOBAL, false), global) << "only when it is wished";
  EXPECT_EQ(store.GetParamFromCache("n", PARAM_GROUP, true), pVoidParam);
  TAppParam* group = store.GetParam("n", PARAM_GROUP | PARAM_GLOBAL | PARAM_CACHE);
  EXPECT_NE(group, global);
  EXPECT_EQ(group->GetRawDomain(), "hall");
  EXPECT_TRUE(group->IsBound());
  EXPECT_EQ(group->GetSourceRawDomain(), "GLOBAL");
  set("n", "2", PARAM_GLOBAL);
  EXPECT_EQ(group->Value(), "2");
  EXPECT_EQ(store.GetParamFromCache("n", PARAM_GROUP, true), group);
  EXPECT_EQ(store.GetParamFromCache("n", PARAM_MINE, true), pVoidParam) << "and the client nothing";
  EXPECT_TRUE(store.requests.empty());
}

TEST_F(Params, AGlobalReadMakesNoOtherEntry) {
  TAppParam* global = set("n", "1", PARAM_GLOBAL);
  EXPECT_EQ(store.GetParam("n", PARAM_GLOBAL | PARAM_CACHE), global);
  EXPECT_EQ(store.GetParamFromCache("n", PARAM_GROUP, false), pVoidParam);
}

TEST_F(Params, AnAnswersEntryHandsItsQuietnessDownTheChain) {
  for (const bool quiet : {true, false}) {
    const std::string name = quiet ? "quiet" : "loud";
    store.SetParam(name, "1", PARAM_GLOBAL, "", "", quiet);
    store.answerWith("GLOBAL", "2");
    EXPECT_EQ(store.GetParam(name, PARAM_GLOBAL | PARAM_GROUP | PARAM_MINE)->QuietSave, false)
      << "the client's own entry was made by the lookup";
    EXPECT_EQ(store.GetParamFromCache(name, PARAM_GROUP, false)->QuietSave, quiet);
  }
}

TEST_F(Params, ANewAnswersEntryTakesTheQuietnessOfWhatWasCached) {
  for (const bool quiet : {true, false}) {
    const std::string name = quiet ? "quiet" : "loud";
    store.SetParam(name, "1", PARAM_MINE, "", "", quiet);
    store.answerWith("GLOBAL", "2");
    TAppParam* mine = store.GetParam(name, PARAM_MASK_NO_CACHE);
    EXPECT_EQ(mine->Value(), "2");
    EXPECT_EQ(mine->QuietSave, quiet);
    EXPECT_EQ(store.GetParamFromCache(name, PARAM_GLOBAL, false)->QuietSave, quiet);
    EXPECT_EQ(store.GetParamFromCache(name, PARAM_GROUP, false)->QuietSave, quiet);
  }
}

TEST_F(Params, ANewAnswersEntryWithoutAPredecessorIsNotQuiet) {
  store.answerWith("GLOBAL", "2");
  EXPECT_FALSE(store.GetParam("n", PARAM_MASK_ALL)->QuietSave);
  EXPECT_FALSE(store.GetParamFromCache("n", PARAM_GLOBAL, false)->QuietSave);
}

TEST_F(Params, AGroupAnswerIsFollowedByTheClientOnly) {
  store.answerWith("hall", "2");
  TAppParam* mine = store.GetParam("n", PARAM_MASK_ALL);
  EXPECT_EQ(mine->GetRawDomain(), "hall_7");
  EXPECT_EQ(mine->GetSourceRawDomain(), "hall");
  EXPECT_EQ(mine->GetSourceDomain("hall_7"), PARAM_GROUP);
  EXPECT_EQ(store.GetParamFromCache("n", PARAM_GLOBAL, false), pVoidParam);
  store.answerWith("hall_7", "3");
  EXPECT_EQ(store.GetParam("m", PARAM_MASK_ALL)->GetSourceRawDomain(), "hall_7");
  EXPECT_EQ(store.GetParamFromCache("m", PARAM_GROUP, false), pVoidParam);
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

TEST_F(Params, TheCacheIsNoDomainToReadAClientsOwnWriteFrom) {
  LogLines log;
  const auto mode = static_cast<ParameterReadWriteMode>(PARAM_MINE * 16 + PARAM_CACHE);
  EXPECT_EQ(store.GetOrSetParam("n", "1", "", "", mode, false), pVoidParam);
  EXPECT_EQ(log.lines(),
            std::vector<std::string>{
              "0 PARAMS ERROR: Weird GetOrSet for param 'n'-> writing mine but reading something else"});
  EXPECT_EQ(store.GetParam("n", PARAM_CACHE), pVoidParam);
  TAppParam* known = set("n", "1", PARAM_MINE);
  EXPECT_EQ(store.GetOrSetParam("n", "2", "", "", mode, true), known) << "what is there is found all the same";
  EXPECT_EQ(known->Value(), "1");
}

TEST_F(Params, OnlyMineAndGlobalDoNotGoTogether) {
  LogLines log;
  const auto mode = [](int read, int write) { return static_cast<ParameterReadWriteMode>(write * 16 + read); };
  EXPECT_EQ(store.GetOrSetParam("a", "1", "", "", mode(PARAM_MINE, PARAM_GLOBAL), false), pVoidParam);
  EXPECT_EQ(log.size(), 1u);
  EXPECT_NE(store.GetOrSetParam("b", "1", "", "", mode(PARAM_MINE, PARAM_GROUP), false), pVoidParam);
  EXPECT_NE(store.GetOrSetParam("c", "1", "", "", mode(PARAM_MINE | PARAM_GLOBAL, PARAM_GLOBAL), false),
            pVoidParam);
  EXPECT_NE(store.GetOrSetParam("d", "1", "", "", mode(PARAM_MINE | PARAM_GROUP, PARAM_GLOBAL), false), pVoidParam);
  EXPECT_NE(store.GetOrSetParam("e", "1", "", "", mode(PARAM_GLOBAL, PARAM_GROUP), false), pVoidParam);
  EXPECT_EQ(log.size(), 1u);
}

TEST_F(Params, AWrittenDefaultIsSavedWhereItWasWritten) {
  TAppParam* bound = store.GetOrSetParam("n", "1", "", "", PARAM_READ_MINE_OR_GROUP_WRITE_GROUP, false);
  EXPECT_TRUE(bound->IsBound());
  EXPECT_EQ(bound->GetPreferedSaveLocation(), PARAM_CACHE) << "a bound entry has the start values";
  EXPECT_EQ(bound->GetSaveForAllLocation(), PARAM_GROUP);
  TAppParam* group = store.GetParamFromCache("n", PARAM_GROUP, false);
  EXPECT_EQ(group->GetPreferedSaveLocation(), PARAM_GROUP);
  EXPECT_EQ(group->GetSaveForAllLocation(), PARAM_GROUP);
}

TEST_F(Params, GetOrSetForAnotherClientUsesItsAddresses) {
  TAppParam* param =
    store.GetOrSetExactParam("bar_1", "n", "1", "", "", PARAM_READ_MINE_OR_GROUP_WRITE_GROUP, false);
  EXPECT_EQ(param->GetRawDomain(), "bar_1");
  EXPECT_EQ(param->GetSourceRawDomain(), "bar");
}

TEST_F(Params, EveryNumberIsBorneAsAMode) {
  LogLines log;
  Captured([&] {
    for (const int mode : {std::numeric_limits<int>::min(), -17, -16, -1, std::numeric_limits<int>::min() + 5})
      EXPECT_EQ(store.GetParam("n", mode), pVoidParam) << mode;
    EXPECT_TRUE(store.requests.empty()) << "a negative mode reads nothing";
    for (int mode = 0; mode < 256; ++mode) {
      const std::string name = "n" + std::to_string(mode);
      for (int turn = 0; turn < 2; ++turn) {
        TAppParam* param =
          store.GetOrSetParam(name, mode, "", "", static_cast<ParameterReadWriteMode>(mode), false);
        ASSERT_NE(param, nullptr);
        if (param == pVoidParam) continue;
        EXPECT_EQ(param->Name() + "=" + param->Value(), name + "=" + std::to_string(mode));
      }
    }
    set("n", "1", PARAM_MINE);
    EXPECT_EQ(store.GetParam("n", std::numeric_limits<int>::max())->Value(), "1")
      << "its low four bits are all set";
  });
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

}  // namespace
