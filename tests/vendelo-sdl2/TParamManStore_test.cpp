// The parameter store with a real persistent side: what another instance of the program finds again, which domain
// each mode reads and writes, and what follows what.
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/LogLines.h"
#include "tests/support/ParameterFile.h"

namespace vendelo_sdl2 {
namespace {

namespace fs = std::filesystem;

std::string Captured(const std::function<void()>& action) {
  testing::internal::CaptureStdout();
  action();
  return testing::internal::GetCapturedStdout();
}

class ParamStore : public testing::Test {
 protected:
  void SetUp() override {
    folder = fs::temp_directory_path() / ("paramstore." + std::to_string(getpid()));
    fs::remove_all(folder);
    fs::create_directories(folder);
    restart();
  }
  void TearDown() override {
    store.reset();
    fs::remove_all(folder);
  }
  // Ends the program and starts it again.
  void restart(const std::string& id = "hall_7") {
    store.reset();
    store = std::make_unique<FileParamMan>(folder / "params", id);
  }
  TAppParam* set(const std::string& name, const std::string& value, ParameterDomain domain) {
    return store->SetParam(name, value, domain, "", "", false);
  }
  // What the file holds; "-" for nothing.
  std::string stored(const std::string& domain, const std::string& name) const {
    const auto record = ParameterFile(folder / "params").get(domain, name);
    return record ? record->value : "-";
  }
  // Another terminal writes.
  void elsewhere(const std::string& domain, const std::string& name, const std::string& value) {
    ParameterFile(folder / "params").put(domain, name, {value, "", "", "", 0});
  }

  fs::path folder;
  std::unique_ptr<FileParamMan> store;
};

TEST_F(ParamStore, ValuesSurviveASecondInstance) {
  store->SetParam("Volume", 80, PARAM_MINE, "Loudness", "of\tthe\nspeakers \\ horn", false);
  set("Language", "de", PARAM_GROUP);
  set("Currency", "EUR", PARAM_GLOBAL);
  set("Session", "only here", PARAM_CACHE);
  store->GetParam("Volume", PARAM_MASK_ALL)->SetLimits(">=0|<=100");
  store->GetParam("Volume", PARAM_MASK_ALL)->SetRestrictions(RESTRICTION_HIDDEN);
  EXPECT_EQ(stored("hall_7", "Volume"), "-") << "nothing is written before the next poll";
  store->Poll();
  EXPECT_EQ(store->file.size(), 3u);

  restart();
  TAppParam* volume = store->GetParam("Volume", PARAM_MASK_ALL);
  EXPECT_EQ(volume->AsInteger(0), 80);
  EXPECT_EQ(volume->Caption(), "Loudness");
  EXPECT_EQ(volume->Description(), "of\tthe\nspeakers \\ horn");
  EXPECT_EQ(volume->Restrictions(), RESTRICTION_HIDDEN);
  EXPECT_FALSE(volume->Modified());
  volume->SetValue("101");
  EXPECT_EQ(volume->Value(), "80") << "its limits came back with it";
  EXPECT_EQ(store->GetParam("Language", PARAM_MASK_ALL)->GetSourceRawDomain(), "hall");
  EXPECT_EQ(store->GetParam("Currency", PARAM_MASK_ALL)->GetSourceRawDomain(), "GLOBAL");
  EXPECT_EQ(Captured([&] { EXPECT_EQ(store->GetParam("Session", PARAM_MASK_ALL), pVoidParam); }),
            "PARAM: No parameter named 'Session' for ID 'hall_7' exists!\n");

  // The neighbour shares what is the group's, a terminal elsewhere only what is everybody's.
  restart("hall_8");
  EXPECT_EQ(store->GetParam("Language", PARAM_MASK_ALL)->Value(), "de");
  restart("bar_1");
  EXPECT_EQ(store->GetParam("Currency", PARAM_MASK_ALL)->Value(), "EUR");
  Captured([&] { EXPECT_EQ(store->GetParam("Language", PARAM_MASK_ALL), pVoidParam); });
}

TEST_F(ParamStore, TheLastOfSeveralWritesBetweenTwoPollsIsKept) {
  for (const char* value : {"1", "2", "3"}) set("n", value, PARAM_GROUP);
  store->Poll();
  EXPECT_EQ(stored("hall", "n"), "3");
  EXPECT_FALSE(store->GetParam("n", PARAM_GROUP | PARAM_CACHE)->Modified());
  elsewhere("hall", "n", "4");
  store->Poll();
  EXPECT_EQ(stored("hall", "n"), "4") << "the queue is empty after a poll";
}

// Every mode, with every combination of domains that hold the value already.

struct ModeCase {
  const char* name;
  ParameterReadWriteMode mode;
  const char* reads;  // of M, G, B (global), and C for the cache
  char writes;
};

class ReadWriteModes : public testing::TestWithParam<ModeCase> {};

std::string AddressOf(char domain) { return domain == 'B' ? "GLOBAL" : domain == 'G' ? "hall" : "hall_7"; }

TEST_P(ReadWriteModes, ReadTheMostSpecificValueOrWriteTheDefault) {
  const std::string reads = GetParam().reads;
  const bool fromCache = reads.find('C') != std::string::npos;
  const std::string asked = reads.substr(0, reads.find('C'));  // most specific first
  const fs::path path = fs::temp_directory_path() / ("parammodes." + std::to_string(getpid()));
  for (int held = 0; held < 8; ++held) {
    fs::remove(path);
    ParameterFile file(path);
    std::string holders;
    for (const char domain : {'M', 'G', 'B'})
      if ((held & (domain == 'M' ? 1 : domain == 'G' ? 2 : 4)) != 0) {
        holders += domain;
        file.put(AddressOf(domain), "n", {std::string("of ") + domain, "", "", "", 0});
      }
    const std::string where = std::string(GetParam().name) + " with values of " + holders;
    // The store answers with the first holder from the asked address upwards; outside the mode that is no answer.
    const size_t first = asked.empty()
                           ? std::string::npos
                           : holders.find_first_of(std::string("MGB").substr(std::string("MGB").find(asked[0])));
    const char source =
      first == std::string::npos || asked.find(holders[first]) == std::string::npos ? '\0' : holders[first];
    FileParamMan store(path, "hall_7");
    TAppParam* param = nullptr;
    EXPECT_EQ(Captured([&] { param = store.GetOrSetParam("n", "default", "", "", GetParam().mode, true); }), "");
    store.Poll();
    const char owner = source != '\0' ? source : GetParam().writes;
    // The read address, unless what was written is more specific.
    const std::string address = owner == 'C' || asked.empty() ? "hall_7" : AddressOf(asked[0]);
    EXPECT_EQ(param->GetRawDomain(), address) << where;
    EXPECT_EQ(param->GetSourceRawDomain(), AddressOf(owner)) << where;
    EXPECT_EQ(param->IsBound(), address != AddressOf(owner)) << where;
    EXPECT_EQ(param->Value(), source != '\0' ? std::string("of ") + source : "default") << where;
    EXPECT_TRUE(param->QuietSave) << where;
    for (const char domain : {'M', 'G', 'B'}) {
      const auto record = file.get(AddressOf(domain), "n");
      const std::string expected = source == '\0' && domain == GetParam().writes ? "default"
                                   : holders.find(domain) != std::string::npos   ? std::string("of ") + domain
                                                                                 : "-";
      EXPECT_EQ(record ? record->value : "-", expected) << where << ", file of " << domain;
    }
    // A second call: from the cache where the mode reads it, else from the file again; the same parameter.
    const int requests = store.requests;
    EXPECT_EQ(requests, asked.empty() ? 0 : 1) << where;
    EXPECT_EQ(Captured([&] {
                EXPECT_EQ(store.GetOrSetParam("n", "default", "", "", GetParam().mode, true), param) << where;
              }),
              "");
    EXPECT_EQ(store.requests - requests, fromCache ? 0 : 1) << where;
    EXPECT_EQ(param->GetSaveForAllLocation(), GetParam().mode >> 4) << where;
    EXPECT_EQ(param->GetPreferedSaveLocation(), param->Domain("hall_7")) << where;
    // And a read by name with the same mode, the part to write dropped.
    EXPECT_EQ(store.GetParam("n", GetParam().mode), param) << where;
  }
  fs::remove(path);
}

#define MODE(name, reads, writes) \
  ModeCase { #name, name, reads, writes }
INSTANTIATE_TEST_SUITE_P(All, ReadWriteModes,
                         testing::Values(MODE(PARAM_READ_CACHE_WRITE_CACHE, "C", 'C'),
                                         MODE(PARAM_READ_NOCACHE_MINE_OR_GROUP_OR_GLOBAL_WRITE_GLOBAL, "MGB", 'B'),
                                         MODE(PARAM_READ_NOCACHE_MINE_OR_GROUP_OR_GLOBAL_WRITE_GROUP, "MGB", 'G'),
                                         MODE(PARAM_READ_NOCACHE_MINE_OR_GROUP_OR_GLOBAL_WRITE_MINE, "MGB", 'M'),
                                         MODE(PARAM_READ_NOCACHE_GROUP_OR_GLOBAL_WRITE_GLOBAL, "GB", 'B'),
                                         MODE(PARAM_READ_NOCACHE_GROUP_OR_GLOBAL_WRITE_GROUP, "GB", 'G'),
                                         MODE(PARAM_READ_NOCACHE_MINE_OR_GROUP_WRITE_GROUP, "MG", 'G'),
                                         MODE(PARAM_READ_NOCACHE_MINE_OR_GROUP_WRITE_MINE, "MG", 'M'),
                                         MODE(PARAM_READ_NOCACHE_GLOBAL_WRITE_GLOBAL, "B", 'B'),
                                         MODE(PARAM_READ_NOCACHE_GROUP_WRITE_GROUP, "G", 'G'),
                                         MODE(PARAM_READ_NOCACHE_MINE_WRITE_MINE, "M", 'M'),
                                         MODE(PARAM_READ_MINE_OR_GROUP_OR_GLOBAL_WRITE_GLOBAL, "MGBC", 'B'),
                                         MODE(PARAM_READ_MINE_OR_GROUP_OR_GLOBAL_WRITE_GROUP, "MGBC", 'G'),
                                         MODE(PARAM_READ_MINE_OR_GROUP_OR_GLOBAL_WRITE_MINE, "MGBC", 'M'),
                                         MODE(PARAM_READ_MINE_OR_GROUP_OR_GLOBAL_WRITE_CACHE, "MGBC", 'C'),
                                         MODE(PARAM_READ_GROUP_OR_GLOBAL_WRITE_GLOBAL, "GBC", 'B'),
                                         MODE(PARAM_READ_GROUP_OR_GLOBAL_WRITE_GROUP, "GBC", 'G'),
                                         MODE(PARAM_READ_MINE_OR_GROUP_WRITE_GROUP, "MGC", 'G'),
                                         MODE(PARAM_READ_MINE_OR_GROUP_WRITE_MINE, "MGC", 'M'),
                                         MODE(PARAM_READ_GLOBAL_WRITE_GLOBAL, "BC", 'B'),
                                         MODE(PARAM_READ_GROUP_WRITE_GROUP, "GC", 'G'),
                                         MODE(PARAM_READ_MINE_WRITE_MINE, "MC", 'M')),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(ReadWriteModeValues, AreAsListed) {
  EXPECT_EQ(PARAM_READ_CACHE_WRITE_CACHE, 17);
  EXPECT_EQ(PARAM_READ_NOCACHE_MINE_OR_GROUP_OR_GLOBAL_WRITE_GLOBAL, 46);
  EXPECT_EQ(PARAM_READ_NOCACHE_MINE_OR_GROUP_OR_GLOBAL_WRITE_GROUP, 78);
  EXPECT_EQ(PARAM_READ_NOCACHE_MINE_OR_GROUP_OR_GLOBAL_WRITE_MINE, 142);
  EXPECT_EQ(PARAM_READ_NOCACHE_GROUP_OR_GLOBAL_WRITE_GLOBAL, 38);
  EXPECT_EQ(PARAM_READ_NOCACHE_GROUP_OR_GLOBAL_WRITE_GROUP, 70);
  EXPECT_EQ(PARAM_READ_NOCACHE_MINE_OR_GROUP_WRITE_GROUP, 76);
  EXPECT_EQ(PARAM_READ_NOCACHE_MINE_OR_GROUP_WRITE_MINE, 140);
  EXPECT_EQ(PARAM_READ_NOCACHE_GLOBAL_WRITE_GLOBAL, 34);
  EXPECT_EQ(PARAM_READ_NOCACHE_GROUP_WRITE_GROUP, 68);
  EXPECT_EQ(PARAM_READ_NOCACHE_MINE_WRITE_MINE, 136);
  EXPECT_EQ(PARAM_READ_MINE_OR_GROUP_OR_GLOBAL_WRITE_GLOBAL, 47);
  EXPECT_EQ(PARAM_READ_MINE_OR_GROUP_OR_GLOBAL_WRITE_GROUP, 79);
  EXPECT_EQ(PARAM_READ_MINE_OR_GROUP_OR_GLOBAL_WRITE_MINE, 143);
  EXPECT_EQ(PARAM_READ_MINE_OR_GROUP_OR_GLOBAL_WRITE_CACHE, 31);
  EXPECT_EQ(PARAM_READ_GROUP_OR_GLOBAL_WRITE_GLOBAL, 39);
  EXPECT_EQ(PARAM_READ_GROUP_OR_GLOBAL_WRITE_GROUP, 71);
  EXPECT_EQ(PARAM_READ_MINE_OR_GROUP_WRITE_GROUP, 77);
  EXPECT_EQ(PARAM_READ_MINE_OR_GROUP_WRITE_MINE, 141);
  EXPECT_EQ(PARAM_READ_GLOBAL_WRITE_GLOBAL, 35);
  EXPECT_EQ(PARAM_READ_GROUP_WRITE_GROUP, 69);
  EXPECT_EQ(PARAM_READ_MINE_WRITE_MINE, 137);
}

// The cache and the file.

TEST_F(ParamStore, TheCacheHidesWhatOthersWriteUntilItIsLeftOut) {
  elsewhere("GLOBAL", "n", "1");
  TAppParam* param = store->GetParam("n", PARAM_MASK_ALL);
  elsewhere("GLOBAL", "n", "2");
  EXPECT_EQ(store->GetParam("n", PARAM_MASK_ALL)->Value(), "1");
  EXPECT_EQ(store->GetParam("n", PARAM_MASK_NO_CACHE), param);
  EXPECT_EQ(param->Value(), "2");
  // A more specific value appears: the chain is hung on it.
  elsewhere("hall", "n", "3");
  EXPECT_EQ(store->GetParam("n", PARAM_MASK_NO_CACHE), param);
  EXPECT_EQ(param->Value(), "3");
  EXPECT_EQ(store->GetParam("n", PARAM_GROUP | PARAM_CACHE)->Value(), "3");
  set("n", "4", PARAM_GLOBAL);
  EXPECT_EQ(param->Value(), "3") << "and off the global one";
}

TEST_F(ParamStore, AChainOfBindingsTellsTheListenersOfEveryLinkByTheirOwnPriorities) {
  elsewhere("GLOBAL", "n", "1");
  TAppParam* mine = store->GetParam("n", PARAM_MASK_ALL);
  TAppParam* group = store->GetParam("n", PARAM_GROUP | PARAM_CACHE);
  TAppParam* global = store->GetParam("n", PARAM_GLOBAL | PARAM_CACHE);
  ASSERT_TRUE(mine->IsBound() && group->IsBound() && !global->IsBound());
  std::string heard;
  const auto mark = [&heard](const char* text) {
    return [&heard, text](TAppParam* param, int flag) {
      heard += text + param->GetRawDomain() + std::to_string(flag) + " ";
    };
  };
  mine->AddListener(mark("low:"), 1);
  mine->AddConsumingListener([&](TAppParam*, int) { return heard += "eaten ", true; }, 2);
  mine->AddListener(mark("high:"), 3);
  group->AddListener(mark(""), 0);
  set("n", "2", PARAM_GLOBAL);
  // A consumed change is consumed for that link only.
  for (const char* part : {"high:hall_7", "eaten ", "hall1 "})
    EXPECT_NE(heard.find(part), std::string::npos) << heard;
  EXPECT_EQ(heard.find("low:"), std::string::npos) << heard;
  EXPECT_LT(heard.find("high:"), heard.find("eaten"));
  EXPECT_EQ(mine->Value() + group->Value() + global->Value(), "222");
  // Written through the end of the chain, the value is everybody's.
  mine->SetValue("3");
  EXPECT_EQ(global->Value(), "3");
}

TEST_F(ParamStore, ADeletedValueIsGoneForTheNextInstance) {
  set("n", "1", PARAM_MINE);
  set("n", "2", PARAM_GLOBAL);
  store->Poll();
  store->DeleteParam("n", PARAM_MINE | PARAM_CACHE);
  EXPECT_EQ(stored("hall_7", "n") + stored("GLOBAL", "n"), "-2");
  restart();
  EXPECT_EQ(store->GetParam("n", PARAM_MASK_ALL)->Value(), "2");
}

TEST_F(ParamStore, ADroppedParameterIsReadAgain) {
  set("n", "1", PARAM_MINE);
  store->Poll();
  EXPECT_EQ(store->DropParamFromCache("n", PARAM_MINE), 0);
  elsewhere("hall_7", "n", "2");
  EXPECT_EQ(store->GetParam("n", PARAM_MASK_ALL)->Value(), "2");
}

TEST_F(ParamStore, UpdateFetchesWhatTheFileHoldsNow) {
  TAppParam* param = set("n", "1", PARAM_MINE);
  store->Poll();
  std::vector<int> heard;
  param->AddListener([&](TAppParam*, int flag) { heard.push_back(flag); }, 0);
  elsewhere("hall_7", "n", "2");
  param->Update();
  EXPECT_EQ(param->Value() + param->OldValue(), "22");
  EXPECT_EQ(heard, std::vector<int>{TAppParam::VALUE | TAppParam::OLD_VALUE});
  param->Update();
  EXPECT_EQ(heard.back(), 0) << "told all the same";
  store->file.erase("hall_7", "n");
  param->Update();
  EXPECT_TRUE(param->IsNull());
}

TEST_F(ParamStore, SavingWritesForTheOwnerThatTheModeNames) {
  TAppParam* param = store->GetOrSetParam("n", "1", "", "", PARAM_READ_MINE_OR_GROUP_WRITE_MINE, false);
  store->Poll();
  param = store->GetOrSetParam("n", "x", "", "", PARAM_READ_MINE_OR_GROUP_WRITE_GROUP, false);
  param->SetValue("2");
  EXPECT_TRUE(param->Modified());
  param->Save(param->GetPreferedSaveLocation());
  EXPECT_EQ(stored("hall_7", "n") + stored("hall", "n"), "2-");
  EXPECT_FALSE(param->Modified());
  param->Save(param->GetSaveForAllLocation());
  EXPECT_EQ(stored("hall", "n"), "2");
}

TEST_F(ParamStore, ARebootIsAskedForWhenASavedValueChanged) {
  store->RebootOnParam("Denomination");
  elsewhere("hall_7", "Denomination", "1");
  TAppParam* param = store->GetParam("Denomination", PARAM_MASK_ALL);
  const int appeared = store->reboots;
  store->SetParam("Denomination", "1", PARAM_MINE, "", "", false);
  store->Poll();
  EXPECT_EQ(store->reboots, appeared) << "the same value was saved";
  param->SetValue("5");
  EXPECT_EQ(store->reboots, appeared) << "changed, not saved";
  store->AddToStoreQueue(param);
  store->Poll();
  EXPECT_EQ(store->reboots, appeared + 1);
}

TEST_F(ParamStore, ANewIdentifierTakesPendingWritesAlong) {
  set("n", "1", PARAM_MINE);
  set("m", "2", PARAM_GLOBAL);
  store->UpdateClientID("bar_1", "hall_7");
  store->id = "bar_1";
  store->Poll();
  EXPECT_EQ(stored("bar_1", "n") + stored("hall_7", "n") + stored("GLOBAL", "m"), "1-2");
  restart("bar_1");
  EXPECT_EQ(store->GetParam("n", PARAM_MASK_ALL)->Value(), "1");
}

TEST_F(ParamStore, AStoreThatFailsIsAStoreWithoutAValue) {
  fs::create_directories(folder / "params");
  EXPECT_EQ(Captured([&] { EXPECT_EQ(store->GetParam("n", PARAM_MASK_ALL), pVoidParam); }),
            "PARAM: No parameter named 'n' for ID 'hall_7' exists!\n");
  TAppParam* param = nullptr;
  EXPECT_EQ(Captured([&] {
              param = store->GetOrSetParam("n", "1", "", "", PARAM_READ_MINE_OR_GROUP_OR_GLOBAL_WRITE_MINE, false);
            }),
            "");
  EXPECT_EQ(param->Value(), "1");
}

TEST_F(ParamStore, ANumberOutOfRangeFromTheFileLeavesTheParameterAsItWas) {
  TAppParam* param = set("n", "5", PARAM_MINE);
  param->SetLimits(">=1");
  elsewhere("hall_7", "n", std::string(400, '9'));
  EXPECT_THROW(store->GetOrSetParam("n", "1", "", "", PARAM_READ_NOCACHE_MINE_WRITE_MINE, false),
               std::out_of_range);
  EXPECT_THROW(param->Update(), std::out_of_range);
  EXPECT_THROW(set("n", std::string(400, '9'), PARAM_MINE), std::out_of_range);
  EXPECT_EQ(param->Value(), "5");
  std::vector<int> heard;
  param->AddListener([&](TAppParam*, int flag) { heard.push_back(flag); }, 0);
  param->SetValue("6");
  EXPECT_EQ(heard, std::vector<int>{TAppParam::VALUE}) << "no edit was left open";
  EXPECT_NE(Captured([&] { store->GetParam("missing", PARAM_MASK_ALL); }), "") << "and misses are printed again";
}

TEST_F(ParamStore, AReadWithoutTheCacheThatWritesTwiceKeepsOneBoundEntry) {
  fs::create_directories(folder / "params");  // a store that never answers
  const auto mode = PARAM_READ_NOCACHE_MINE_OR_GROUP_OR_GLOBAL_WRITE_GLOBAL;
  TAppParam* param = store->GetOrSetParam("n", "1", "", "", mode, false);
  EXPECT_EQ(param->GetRawDomain(), "hall_7");
  EXPECT_EQ(Captured([&] { EXPECT_EQ(store->GetOrSetParam("n", "2", "", "", mode, false), param); }),
            "application::Parameter \"n\" of ID hall_7 already exists in this application.\n");
  EXPECT_EQ(param->Value(), "2") << "the default was written again";
}

TEST_F(ParamStore, ABoundEntryOfALookupIsNotQuietByItself) {
  store->SetParam("n", "1", PARAM_GLOBAL, "", "", true);
  EXPECT_FALSE(store->GetParam("n", PARAM_MASK_ALL)->QuietSave);
  EXPECT_TRUE(store->GetParam("n", PARAM_GLOBAL | PARAM_CACHE)->QuietSave);
}

// Letter by letter.
TEST_F(ParamStore, ThePrintedTable) {
  const int others = ParameterData::GetNumInstances();
  store->SetParam("Volume", "80", PARAM_MINE, "Loudness", "of the speakers", false)
    ->SetRestrictions(RESTRICTION_ALL);
  set("Title", "0123456789012345678901234567890123456789", PARAM_GROUP);
  set("Title", "01234567890123456789012345678901234567890", PARAM_GLOBAL);
  store->SetParam("Volume", "", PARAM_GLOBAL, "", "", false);
  const std::string blanks(200, ' ');
  const auto pad = [&](size_t count) { return blanks.substr(0, count); };
  EXPECT_EQ(Captured([&] { store->PrintParamList(); }),
            " #  : Name" + pad(36) + " | Domain" + pad(9) + " | Restr. | Value" + pad(37) + " | Caption" + pad(33) +
              " | Description\n" +
              "===================================================================================================="
              "========="
              "========================================\n" +
              "0   : Title" + pad(35) + " | GLOBAL" + pad(9) +
              " | 0      | \"0123456789012345678901234567890123456...\"" + " | " + pad(40) + " | \n" +
              "1   : Title" + pad(35) + " | hall" + pad(11) +
              " | 0      | \"0123456789012345678901234567890123456789\"" + " | " + pad(40) + " | \n" +
              "2   : Volume" + pad(34) + " | GLOBAL" + pad(9) + " | 0      | \"\"" + pad(40) + " | " + pad(40) +
              " | \n" + "3   : Volume" + pad(34) + " | hall_7" + pad(9) + " | 1031   | \"80\"" + pad(38) +
              " | Loudness" + pad(32) + " | of the speakers\n" +
              "===================================================================================================="
              "========="
              "========================================\n" +
              "# od data instances: " + std::to_string(others + 4) + "\n" +
              "===================================================================================================="
              "========="
              "========================================\n");
}

}  // namespace
}  // namespace vendelo_sdl2
