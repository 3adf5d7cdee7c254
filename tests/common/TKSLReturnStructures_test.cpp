#include "common/TKSLReturnStructures.h"

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <xmlrpc-c/girerr.hpp>

#include "LinkTestSupport.h"

using linktest::arrayXml;
using linktest::parseValue;

namespace {

using Members = std::map<std::string, std::string>;

std::string structXml(const Members& members) {
  std::string xml = "<struct>";
  for (const auto& member : members) xml += linktest::memberXml(member.first, member.second);
  return xml + "</struct>";
}

Members without(Members members, const std::string& key) {
  members.erase(key);
  return members;
}

Members with(Members members, const std::string& key, const std::string& value) {
  members[key] = value;
  return members;
}

const Members Level = {
  {"Name", "<string>Gold</string>"},
  {"Id", "<int>3</int>"},
  {"Status", "<string>WIN</string>"},
  {"Mode", "<int>2</int>"},
  {"CurrentPot", "<i8>5000000001</i8>"},
  {"MinPot", "<i8>5000000002</i8>"},
  {"MaxPot", "<i8>5000000003</i8>"},
  {"MinBet", "<i8>5000000004</i8>"},
  {"MaxBet", "<i8>5000000005</i8>"},
  {"DecimalPlaces", "<int>4</int>"},
  {"ShowCurrencySign", "<boolean>1</boolean>"},
  {"Currency", "<string>EUR</string>"},
  {"NumWins", "<int>6</int>"},
  {"LastWinData", "<string>last</string>"},
  {"TimeFrom", "<string>08:00</string>"},
  {"TimeTo", "<string>22:00</string>"},
};

const Members Game = {
  {"ID", "<int>42</int>"}, {"Name", "<string>Fruit &amp; Co</string>"}, {"Type", "<int>4</int>"}};

const Members State = {
  {"IntegrityCheckData", "<string>sum</string>"},
  {"ActiveGame", structXml(Game)},
  {"IsLoading", "<boolean>0</boolean>"},
  {"ShowingPaytable", "<int>2</int>"},
  {"LanguageMessages", arrayXml({"<string>one</string>", "<string>two</string>"})},
  {"DemoMode", "<boolean>1</boolean>"},
  {"Instructions", arrayXml({"<string>press</string>"})},
  {"CurrentBet", "<i8>11</i8>"},
  {"MinBet", "<i8>12</i8>"},
  {"MaxBet", "<i8>6000000000</i8>"},
  {"ExtraData", structXml({{"key", "<int>1</int>"}})},
  {"JackpotData", arrayXml({structXml(Level)})},
  {"JackpotErrorString", "<string>a &amp;lt; b</string>"},
};

bool parses(const Members& members) {
  PlatformState state;
  try {
    state.parse(parseValue(structXml(members)));
  } catch (const girerr::error&) {
    return false;
  }
  return true;
}

}  // namespace

TEST(PlatformState, StartsAsABusyPlatformWithoutAGame) {
  const PlatformState state;
  EXPECT_EQ(GAME_NULL, state.ActiveGame);
  EXPECT_TRUE(state.IsLoading);
  EXPECT_EQ(0, state.ShowingPaytable);
  EXPECT_FALSE(state.DemoMode);
  EXPECT_EQ(0, state.CurrentBet);
  EXPECT_EQ(0, state.MinBet);
  EXPECT_EQ(0, state.MaxBet);
  EXPECT_TRUE(state.ExtraData.empty() && state.JackpotData.empty() && state.Instructions.empty());
  EXPECT_TRUE(state.LanguageMessages.empty() && state.IntegrityCheckData.empty());
  EXPECT_TRUE(state.JackpotErrorString.empty());
}

TEST(PlatformState, ReadsEveryField) {
  PlatformState state;
  state.parse(parseValue(structXml(State)));
  EXPECT_EQ("sum", state.IntegrityCheckData);
  EXPECT_EQ(GameRegistryEntry(42, "Fruit & Co", GAMETYPE_VESPERA_SLOTGAME), state.ActiveGame);
  EXPECT_FALSE(state.IsLoading);
  EXPECT_EQ(2, state.ShowingPaytable);
  EXPECT_EQ((std::vector<std::string>{"one", "two"}), state.LanguageMessages);
  EXPECT_TRUE(state.DemoMode);
  EXPECT_EQ((std::vector<std::string>{"press"}), state.Instructions);
  EXPECT_EQ(11, state.CurrentBet);
  EXPECT_EQ(12, state.MinBet);
  EXPECT_EQ(6000000000, state.MaxBet);
  ASSERT_EQ(1U, state.ExtraData.size());
  EXPECT_EQ(1, static_cast<int>(xmlrpc_c::value_int(state.ExtraData["key"])));
  ASSERT_EQ(1U, state.JackpotData.size());
  EXPECT_EQ("a &lt; b", state.JackpotErrorString);  // not unescaped a second time

  const JackpotsData& level = state.JackpotData[0];
  EXPECT_EQ("Gold", level.name);
  EXPECT_EQ(3, level.id);
  EXPECT_EQ("WIN", level.status);
  EXPECT_EQ(2, level.mode);
  EXPECT_EQ(5000000001, level.potValue);
  EXPECT_EQ(5000000002, level.minPot);
  EXPECT_EQ(5000000003, level.maxPot);
  EXPECT_EQ(5000000004, level.minBet);
  EXPECT_EQ(5000000005, level.maxBet);
  EXPECT_EQ(4, level.decimalPlaces);
  EXPECT_TRUE(level.showCurrencySign);
  EXPECT_EQ("EUR", level.currency);
  EXPECT_EQ(6, level.NumWins);
  EXPECT_EQ("last", level.LastWinData);
  EXPECT_EQ("08:00", level.TimeFrom);
  EXPECT_EQ("22:00", level.TimeTo);
}

TEST(PlatformState, EveryKeyButExtraDataIsRequired) {
  for (const auto& member : State)
    EXPECT_EQ(member.first == "ExtraData", parses(without(State, member.first))) << member.first;
}

TEST(PlatformState, EveryFieldWantsItsExactType) {
  for (const auto& member : State) {
    if (member.first == "ExtraData") continue;
    EXPECT_FALSE(parses(with(State, member.first, "<double>1.0</double>"))) << member.first;
    EXPECT_FALSE(parses(with(State, member.first, "<nil/>"))) << member.first;
  }
  EXPECT_FALSE(parses(with(State, "CurrentBet", "<int>5</int>")));
  EXPECT_FALSE(parses(with(State, "ShowingPaytable", "<i8>5</i8>")));
  EXPECT_FALSE(parses(with(State, "IsLoading", "<int>1</int>")));
  EXPECT_FALSE(parses(with(State, "Instructions", arrayXml({"<int>1</int>"}))));
}

TEST(PlatformState, ExtraDataThatIsNoStructLeavesTheOldOne) {
  for (const char* extra : {"<nil/>", "<int>1</int>", "<array><data/></array>"}) {
    PlatformState state;
    state.parse(parseValue(structXml(with(State, "ExtraData", extra))));
    EXPECT_TRUE(state.ExtraData.empty()) << extra;
    state.ExtraData["kept"] = xmlrpc_c::value_int(1);
    state.parse(parseValue(structXml(with(State, "ExtraData", extra))));
    EXPECT_EQ(1U, state.ExtraData.count("kept")) << extra;
  }
  PlatformState state;
  state.parse(parseValue(structXml(with(State, "ExtraData", "<struct></struct>"))));
  EXPECT_TRUE(state.ExtraData.empty());
}

TEST(PlatformState, OnlyAStructIsAReply) {
  PlatformState state;
  try {
    state.parse(parseValue("<int>1</int>"));
    FAIL() << "not thrown";
  } catch (const char* text) {
    EXPECT_STREQ("Result is not struct!", text);
  }
}

TEST(PlatformState, AnUnknownGameTypeIsKept) {
  PlatformState state;
  state.parse(parseValue(structXml(with(State, "ActiveGame", structXml(with(Game, "Type", "<int>77</int>"))))));
  EXPECT_EQ(77, static_cast<int>(state.ActiveGame.type));
}

TEST(PlatformState, TheGameNeedsItsThreeKeys) {
  for (const auto& member : Game)
    EXPECT_FALSE(parses(with(State, "ActiveGame", structXml(without(Game, member.first))))) << member.first;
  EXPECT_FALSE(parses(with(State, "ActiveGame", structXml(with(without(Game, "ID"), "Id", "<int>1</int>")))));
}

TEST(PlatformState, EveryKeyAndTypeOfALevelIsRequired) {
  for (const auto& member : Level) {
    EXPECT_FALSE(parses(with(State, "JackpotData", arrayXml({structXml(without(Level, member.first))}))))
      << member.first;
    EXPECT_FALSE(parses(with(State, "JackpotData", arrayXml({structXml(with(Level, member.first, "<nil/>"))}))))
      << member.first;
  }
  for (const char* amount : {"CurrentPot", "MinPot", "MaxPot", "MinBet", "MaxBet"}) {
    EXPECT_FALSE(parses(with(State, "JackpotData", arrayXml({structXml(with(Level, amount, "<int>1</int>"))}))))
      << amount;
  }
}

TEST(PlatformState, NoLevelsAreNoError) {
  PlatformState state;
  state.JackpotData.resize(3);
  state.parseJackpotData(parseValue(arrayXml({})));
  EXPECT_TRUE(state.JackpotData.empty());
}

TEST(PlatformState, LevelsKeepTheOrderOfTheService) {
  PlatformState state;
  state.parseJackpotData(
    parseValue(arrayXml({structXml(with(Level, "Id", "<int>9</int>")), structXml(with(Level, "Id", "<int>1</int>")),
                         structXml(with(Level, "Id", "<int>9</int>"))})));
  ASSERT_EQ(3U, state.JackpotData.size());
  EXPECT_EQ(9, state.JackpotData[0].id);
  EXPECT_EQ(1, state.JackpotData[1].id);
  EXPECT_EQ(9, state.JackpotData[2].id);
}

TEST(PlatformState, ABrokenThirdLevelLeavesTheTwoBeforeIt) {
  PlatformState state;
  state.JackpotData.resize(5);
  EXPECT_THROW(state.parseJackpotData(parseValue(arrayXml(
                 {structXml(with(Level, "Id", "<int>1</int>")), structXml(with(Level, "Id", "<int>2</int>")),
                  structXml(without(Level, "TimeTo")), structXml(Level)}))),
               girerr::error);
  ASSERT_EQ(2U, state.JackpotData.size());
  EXPECT_EQ(1, state.JackpotData[0].id);
  EXPECT_EQ(2, state.JackpotData[1].id);
}

TEST(PlatformState, WhatItWritesItReads) {
  PlatformState written;
  written.parse(parseValue(structXml(State)));
  PlatformState read;
  read.parse(written.toXml());
  EXPECT_EQ(written.ActiveGame, read.ActiveGame);
  EXPECT_EQ(written.IntegrityCheckData, read.IntegrityCheckData);
  EXPECT_EQ(written.MaxBet, read.MaxBet);
  EXPECT_EQ(written.Instructions, read.Instructions);
  EXPECT_EQ(written.LanguageMessages, read.LanguageMessages);
  EXPECT_EQ(written.IsLoading, read.IsLoading);
  EXPECT_EQ(1U, read.ExtraData.count("key"));
  ASSERT_EQ(1U, read.JackpotData.size());
  EXPECT_EQ(written.JackpotData[0].potValue, read.JackpotData[0].potValue);
  EXPECT_EQ(written.JackpotData[0].TimeTo, read.JackpotData[0].TimeTo);
}

TEST(PlatformState, WritesTheKeysAndTypesThatItReads) {
  PlatformState state;
  xmlrpc_c::cstruct members = state.toXml();
  ASSERT_EQ(State.size(), members.size());
  EXPECT_EQ(xmlrpc_c::value::TYPE_NIL, members["ExtraData"].type());
  EXPECT_EQ(xmlrpc_c::value::TYPE_I8, members["CurrentBet"].type());
  EXPECT_EQ(xmlrpc_c::value::TYPE_BOOLEAN, members["IsLoading"].type());
  xmlrpc_c::cstruct game = xmlrpc_c::value_struct(members["ActiveGame"]);
  EXPECT_EQ(-1, static_cast<int>(xmlrpc_c::value_int(game["ID"])));
  xmlrpc_c::cstruct level = JackpotsData().toXml();
  ASSERT_EQ(Level.size(), level.size());
  for (const auto& member : Level) EXPECT_EQ(1U, level.count(member.first)) << member.first;
  EXPECT_EQ(xmlrpc_c::value::TYPE_I8, level["CurrentPot"].type());
  PlatformState read;
  read.parse(state.toXml());
  EXPECT_TRUE(read.ExtraData.empty());
}

TEST(PlatformState, PrintsItself) {
  PlatformState state;
  state.ActiveGame = GameRegistryEntry(42, "Fruit", GAMETYPE_VESPERA_SLOTGAME);
  testing::internal::CaptureStdout();
  state.printMe();
  state.IsLoading = false;
  state.ShowingPaytable = 3;
  state.printMe();
  std::fflush(stdout);
  EXPECT_EQ(
    "Active game: Fruit (ID: 42, Type: 4)\nIs loading: true\nShowing paytable: 0\n"
    "Active game: Fruit (ID: 42, Type: 4)\nIs loading: false\nShowing paytable: 3\n",
    testing::internal::GetCapturedStdout());
}

namespace {

// Each member of the struct as the library writes it.
Members written(const xmlrpc_c::value_struct& value) {
  Members members;
  for (const auto& member : static_cast<xmlrpc_c::cstruct>(value))
    members[member.first] = linktest::textOf(member.second);
  return members;
}

Members asWritten(const Members& members) {
  Members texts;
  for (const auto& member : members) texts[member.first] = linktest::textOf(parseValue(member.second));
  return texts;
}

// Reads into a fresh record with one key after the other left out: in this order, what stands in front of it has
// been read, it and what stands behind has not.
template <class Record>
void expectOrder(const std::vector<std::string>& order, const Members& full,
                 const std::function<void(Record&, const xmlrpc_c::value&)>& read) {
  ASSERT_EQ(full.size(), order.size());
  const Members after = asWritten(full);
  const Members before = written(Record().toXml());
  for (size_t broken = 0; broken < order.size(); ++broken) {
    Record record;
    EXPECT_THROW(read(record, parseValue(structXml(without(full, order[broken])))), girerr::error);
    const Members left = written(record.toXml());
    for (size_t n = 0; n < order.size(); ++n) {
      EXPECT_EQ((n < broken ? after : before).at(order[n]), left.at(order[n]))
        << order[n] << " without " << order[broken];
    }
  }
}

}  // namespace

TEST(PlatformState, EverythingIsWrittenAsItWasRead) {
  PlatformState state;
  state.parse(parseValue(structXml(State)));
  EXPECT_EQ(asWritten(State), written(state.toXml()));
  JackpotsData level;
  level.fromXml(parseValue(structXml(Level)));
  EXPECT_EQ(asWritten(Level), written(level.toXml()));
}

TEST(PlatformState, AReplyIsReadInThisOrder) {
  expectOrder<PlatformState>(
    {"ActiveGame", "IsLoading", "CurrentBet", "MinBet", "MaxBet", "JackpotErrorString", "JackpotData",
     "ShowingPaytable", "Instructions", "DemoMode", "IntegrityCheckData", "LanguageMessages"},
    without(State, "ExtraData"), [](PlatformState& state, const xmlrpc_c::value& value) { state.parse(value); });
}

TEST(PlatformState, ExtraDataAreReadLast) {
  PlatformState state;
  EXPECT_THROW(state.parse(parseValue(structXml(without(State, "LanguageMessages")))), girerr::error);
  EXPECT_TRUE(state.ExtraData.empty());
}

TEST(PlatformState, ALevelIsReadInThisOrder) {
  expectOrder<JackpotsData>(
    {"Name", "Id", "Mode", "Status", "CurrentPot", "MinPot", "MaxPot", "MinBet", "MaxBet", "Currency",
     "DecimalPlaces", "ShowCurrencySign", "NumWins", "LastWinData", "TimeFrom", "TimeTo"},
    Level, [](JackpotsData& level, const xmlrpc_c::value& value) { level.fromXml(value); });
}

TEST(PlatformState, AFreshLevelIsZeroed) {
  const Members fresh = written(JackpotsData().toXml());
  for (const auto& member : Level) {
    const std::string type = member.second.substr(1, member.second.find('>') - 1);
    EXPECT_EQ(linktest::textOf(parseValue("<" + type + ">" + (type == "string" ? "" : "0") + "</" + type + ">")),
              fresh.at(member.first))
      << member.first;
  }
}

TEST(PlatformState, LevelsThatAreNoArrayLeaveTheOldOnes) {
  PlatformState state;
  state.JackpotData.resize(3);
  for (const char* xml : {"<nil/>", "<int>1</int>", "<string>x</string>", "<struct></struct>"}) {
    EXPECT_THROW(state.parseJackpotData(parseValue(xml)), girerr::error) << xml;
    EXPECT_EQ(3U, state.JackpotData.size()) << xml;
  }
}

TEST(PlatformState, NumbersOfOneWidthAreNotTakenForTheOther) {
  for (const auto& member : Level) {
    if (member.second.rfind("<int>", 0) != 0) continue;
    EXPECT_FALSE(parses(with(State, "JackpotData", arrayXml({structXml(with(Level, member.first, "<i8>1</i8>"))}))))
      << member.first;
  }
  EXPECT_FALSE(
    parses(with(State, "JackpotData", arrayXml({structXml(with(Level, "ShowCurrencySign", "<int>1</int>"))}))));
  for (const char* key : {"ID", "Type"})
    EXPECT_FALSE(parses(with(State, "ActiveGame", structXml(with(Game, key, "<i8>1</i8>"))))) << key;
  for (const char* key : {"CurrentBet", "MinBet", "MaxBet"})
    EXPECT_FALSE(parses(with(State, key, "<int>1</int>"))) << key;
}

TEST(PlatformState, NumbersAtTheEndsOfTheirRangesAreKept) {
  for (const std::string number : {"-2147483648", "-1", "0", "2147483647"}) {
    const std::string xml = "<int>" + number + "</int>";
    Members level = Level;
    for (const char* key : {"Id", "Mode", "DecimalPlaces", "NumWins"}) level[key] = xml;
    Members state = with(State, "JackpotData", arrayXml({structXml(level)}));
    state["ShowingPaytable"] = xml;
    state["ActiveGame"] = structXml(with(with(Game, "ID", xml), "Type", xml));
    PlatformState record;
    record.parse(parseValue(structXml(state)));
    EXPECT_EQ(asWritten(state), written(record.toXml())) << number;
    record.printMe();
  }
  for (const std::string number : {"-9223372036854775808", "-1", "0", "9223372036854775807"}) {
    const std::string xml = "<i8>" + number + "</i8>";
    Members level = Level;
    for (const char* key : {"CurrentPot", "MinPot", "MaxPot", "MinBet", "MaxBet"}) level[key] = xml;
    Members state = with(State, "JackpotData", arrayXml({structXml(level)}));
    for (const char* key : {"CurrentBet", "MinBet", "MaxBet"}) state[key] = xml;
    PlatformState record;
    record.parse(parseValue(structXml(state)));
    EXPECT_EQ(asWritten(state), written(record.toXml())) << number;
  }
}
