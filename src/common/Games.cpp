#include "common/Games.h"

namespace {

constexpr int kMaxGameID = 1000;

}  // namespace

// None of these is ever destroyed, so that no thread finds them gone while the process ends.
const GameRegistryEntry& GAME_NULL = *new const GameRegistryEntry(-1, "", GAMETYPE_NULL_TYPE);
const GameRegistryEntry& GAME_MENU = *new const GameRegistryEntry(0, "", GAMETYPE_MENU);
const GameRegistryEntry& GAME_TOPSCREEN = *new const GameRegistryEntry(1, "TopScreen", GAMETYPE_TOPSCREEN);
std::array<GameRegistryEntry, 1001>& AllGames = *new std::array<GameRegistryEntry, 1001>;
GameMap& AllGamesMap = *new GameMap;
const std::map<std::string, GameTypes>& GameTypeStrings =
  *new const std::map<std::string, GameTypes>{{"MENU", GAMETYPE_MENU},
                                              {"TOPSCREEN", GAMETYPE_TOPSCREEN},
                                              {"ROULETTE", GAMETYPE_ROULETTE},
                                              {"VESPERA_SLOTGAME", GAMETYPE_VESPERA_SLOTGAME}};

GameRegistryEntry::GameRegistryEntry() : ID(-1), type(GAMETYPE_NULL_TYPE) {}

GameRegistryEntry::GameRegistryEntry(int ID, const std::string& name, GameTypes type)
  : ID(ID), name(name), type(type) {}

bool GameRegistryEntry::operator==(const GameRegistryEntry& other) const {
  return type == other.type && ID == other.ID && name == other.name;
}

bool GameRegistryEntry::operator!=(const GameRegistryEntry& other) const { return !(*this == other); }

void GameRegistryEntry::Init() {
  AllGames.fill(GameRegistryEntry());
  AllGamesMap.clear();
  for (const GameRegistryEntry& known : {GAME_MENU, GAME_TOPSCREEN}) {
    GameRegistryEntry& slot = AllGames[static_cast<size_t>(known.ID)];
    slot = known;
    AllGamesMap[known.name] = &slot;
  }
}

bool GameRegistryEntry::RegisterGame(int ID, const std::string& name, const std::string& type) {
  if (ID < 0 || ID > kMaxGameID) return false;
  GameRegistryEntry& slot = AllGames[static_cast<size_t>(ID)];
  const GameTypes parsedType = parseGameType(type);
  if (slot.type != GAMETYPE_NULL_TYPE || parsedType == GAMETYPE_NULL_TYPE) return false;
  slot = GameRegistryEntry(ID, name, parsedType);
  AllGamesMap[name] = &slot;
  return true;
}

const GameRegistryEntry& GameRegistryEntry::findGameByName(const std::string& name) {
  const auto found = AllGamesMap.find(name);
  return found == AllGamesMap.end() ? GAME_NULL : *found->second;
}

const GameRegistryEntry& GameRegistryEntry::findGameByID(int ID) {
  for (const auto& named : AllGamesMap)
    if (named.second->ID == ID) return *named.second;
  return GAME_NULL;
}

void GameRegistryEntry::forEachGame(const std::function<bool(const GameRegistryEntry&)>& callback) {
  for (const auto& named : AllGamesMap)
    if (named.second->type >= GAMETYPE_ROULETTE && !callback(*named.second)) return;
}

GameTypes parseGameType(const std::string& name) {
  const auto found = GameTypeStrings.find(name);
  return found == GameTypeStrings.end() ? GAMETYPE_NULL_TYPE : found->second;
}

std::string getTypeName(GameTypes type) {
  for (const auto& named : GameTypeStrings)
    if (named.second == type) return named.first;
  return "";
}
