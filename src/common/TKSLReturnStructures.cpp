#include "common/TKSLReturnStructures.h"

#include <cstdio>
#include <map>

namespace {

// A missing key reads as an empty value, and its conversion throws.
xmlrpc_c::value member(const xmlrpc_c::cstruct& members, const char* key) {
  const auto found = members.find(key);
  return found == members.end() ? xmlrpc_c::value() : found->second;
}

template <class T>
void read(T& target, const xmlrpc_c::cstruct& members, const char* key) {
  xmlrpc_c::fromValue(target, member(members, key));
}

int64_t readI8(const xmlrpc_c::cstruct& members, const char* key) {
  return xmlrpc_c::value_i8(member(members, key)).cvalue();
}

std::vector<std::string> readTexts(const xmlrpc_c::cstruct& members, const char* key) {
  std::vector<std::string> texts;
  for (const xmlrpc_c::value& item : xmlrpc_c::value_array(member(members, key)).vectorValueValue())
    texts.push_back(xmlrpc_c::value_string(item));
  return texts;
}

xmlrpc_c::value_struct gameToXml(const GameRegistryEntry& game) {
  xmlrpc_c::cstruct members;
  members["ID"] = xmlrpc_c::value_int(game.ID);
  members["Name"] = xmlrpc_c::value_string(game.name);
  members["Type"] = xmlrpc_c::value_int(game.type);
  return xmlrpc_c::value_struct(members);
}

}  // namespace

PopResponseData::PopResponseData() : events(nullptr), numEvents(0) {}

PopResponseData::~PopResponseData() { delete[] events; }

GetParamResponseData::GetParamResponseData(const xmlrpc_c::value& value) : parameterValue(value) {}

void JackpotsData::fromXml(const xmlrpc_c::value& v) {
  const xmlrpc_c::cstruct members = xmlrpc_c::value_struct(v);
  read(name, members, "Name");
  read(id, members, "Id");
  read(mode, members, "Mode");
  read(status, members, "Status");
  potValue = readI8(members, "CurrentPot");
  minPot = readI8(members, "MinPot");
  maxPot = readI8(members, "MaxPot");
  minBet = readI8(members, "MinBet");
  maxBet = readI8(members, "MaxBet");
  read(currency, members, "Currency");
  read(decimalPlaces, members, "DecimalPlaces");
  read(showCurrencySign, members, "ShowCurrencySign");
  read(NumWins, members, "NumWins");
  read(LastWinData, members, "LastWinData");
  read(TimeFrom, members, "TimeFrom");
  read(TimeTo, members, "TimeTo");
}

xmlrpc_c::value_struct JackpotsData::toXml() const {
  xmlrpc_c::cstruct members;
  members["Name"] = xmlrpc_c::value_string(name);
  members["Id"] = xmlrpc_c::value_int(id);
  members["Status"] = xmlrpc_c::value_string(status);
  members["Mode"] = xmlrpc_c::value_int(mode);
  members["CurrentPot"] = xmlrpc_c::value_i8(potValue);
  members["MinPot"] = xmlrpc_c::value_i8(minPot);
  members["MaxPot"] = xmlrpc_c::value_i8(maxPot);
  members["MinBet"] = xmlrpc_c::value_i8(minBet);
  members["MaxBet"] = xmlrpc_c::value_i8(maxBet);
  members["DecimalPlaces"] = xmlrpc_c::value_int(decimalPlaces);
  members["ShowCurrencySign"] = xmlrpc_c::value_boolean(showCurrencySign);
  members["Currency"] = xmlrpc_c::value_string(currency);
  members["NumWins"] = xmlrpc_c::value_int(NumWins);
  members["LastWinData"] = xmlrpc_c::value_string(LastWinData);
  members["TimeFrom"] = xmlrpc_c::value_string(TimeFrom);
  members["TimeTo"] = xmlrpc_c::value_string(TimeTo);
  return xmlrpc_c::value_struct(members);
}

PlatformState::PlatformState()
  : ActiveGame(GAME_NULL),
    IsLoading(true),
    ShowingPaytable(0),
    DemoMode(false),
    CurrentBet(0),
    MinBet(0),
    MaxBet(0) {}

void PlatformState::parse(const xmlrpc_c::value& v) {
  if (v.type() != xmlrpc_c::value::TYPE_STRUCT) throw "Result is not struct!";
  const xmlrpc_c::cstruct members = xmlrpc_c::value_struct(v);
  ActiveGame = gameFromXml(member(members, "ActiveGame"));
  read(IsLoading, members, "IsLoading");
  CurrentBet = readI8(members, "CurrentBet");
  MinBet = readI8(members, "MinBet");
  MaxBet = readI8(members, "MaxBet");
  read(JackpotErrorString, members, "JackpotErrorString");
  parseJackpotData(member(members, "JackpotData"));
  read(ShowingPaytable, members, "ShowingPaytable");
  Instructions = readTexts(members, "Instructions");
  read(DemoMode, members, "DemoMode");
  read(IntegrityCheckData, members, "IntegrityCheckData");
  LanguageMessages = readTexts(members, "LanguageMessages");

  const auto extra = members.find("ExtraData");
  if (extra != members.end() && extra->second.type() == xmlrpc_c::value::TYPE_STRUCT)
    ExtraData = xmlrpc_c::value_struct(extra->second);
}

void PlatformState::parseJackpotData(const xmlrpc_c::value& v) {
  const xmlrpc_c::carray levels = xmlrpc_c::value_array(v).vectorValueValue();
  JackpotData.clear();
  for (const xmlrpc_c::value& item : levels) {
    JackpotsData level;
    level.fromXml(item);
    JackpotData.push_back(level);
  }
}

xmlrpc_c::value_struct PlatformState::toXml() const {
  xmlrpc_c::carray levels;
  for (const JackpotsData& level : JackpotData) levels.push_back(level.toXml());
  xmlrpc_c::cstruct members;
  members["IntegrityCheckData"] = xmlrpc_c::value_string(IntegrityCheckData);
  members["ActiveGame"] = gameToXml(ActiveGame);
  members["IsLoading"] = xmlrpc_c::value_boolean(IsLoading);
  members["ShowingPaytable"] = xmlrpc_c::value_int(ShowingPaytable);
  members["LanguageMessages"] = xmlrpc_c::toValue(LanguageMessages);
  members["DemoMode"] = xmlrpc_c::value_boolean(DemoMode);
  members["Instructions"] = xmlrpc_c::toValue(Instructions);
  members["CurrentBet"] = xmlrpc_c::value_i8(CurrentBet);
  members["MinBet"] = xmlrpc_c::value_i8(MinBet);
  members["MaxBet"] = xmlrpc_c::value_i8(MaxBet);
  if (ExtraData.empty())
    members["ExtraData"] = xmlrpc_c::value_nil();
  else
    members["ExtraData"] = xmlrpc_c::value_struct(ExtraData);
  members["JackpotData"] = xmlrpc_c::value_array(levels);
  members["JackpotErrorString"] = xmlrpc_c::value_string(JackpotErrorString);
  return xmlrpc_c::value_struct(members);
}

void PlatformState::printMe() const {
  std::printf("Active game: %s (ID: %d, Type: %d)\nIs loading: %s\nShowing paytable: %d\n", ActiveGame.name.c_str(),
              ActiveGame.ID, ActiveGame.type, IsLoading ? "true" : "false", ShowingPaytable);
}

GameRegistryEntry gameFromXml(const xmlrpc_c::value& xml) {
  const xmlrpc_c::cstruct members = xmlrpc_c::value_struct(xml);
  int id = 0;
  std::string name;
  int type = 0;
  read(id, members, "ID");
  read(name, members, "Name");
  read(type, members, "Type");
  return GameRegistryEntry(id, name, static_cast<GameTypes>(type));
}
