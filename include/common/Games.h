#pragma once

#include <array>
#include <functional>
#include <map>
#include <string>

enum GameTypes : int {
  GAMETYPE_NULL_TYPE = 0,
  GAMETYPE_MENU = 1,
  GAMETYPE_TOPSCREEN = 2,
  GAMETYPE_ROULETTE = 3,
  GAMETYPE_VESPERA_SLOTGAME = 4
};

// The identity of a game as the platform service names it; a plain value. The type is kept as it came and may be
// no enumerator. The static operations keep a registry of known games: main thread only, no lock.
class GameRegistryEntry {
 public:
  int ID;
  std::string name;
  GameTypes type;

  // ID -1, no name, GAMETYPE_NULL_TYPE.
  GameRegistryEntry();
  GameRegistryEntry(int ID, const std::string& name, GameTypes type);

  bool operator==(const GameRegistryEntry& other) const;
  bool operator!=(const GameRegistryEntry& other) const;

  // Empties the registry and enters the menu and the top screen.
  static void Init();

  // False when the ID lies outside 0 to 1000 or is taken, or when the type's name is unknown.
  static bool RegisterGame(int ID, const std::string& name, const std::string& type);

  // The entry, or GAME_NULL.
  static const GameRegistryEntry& findGameByName(const std::string& name);
  static const GameRegistryEntry& findGameByID(int ID);

  // Visits the games proper (neither menu nor top screen) in the order of their names until the callback
  // returns false.
  static void forEachGame(const std::function<bool(const GameRegistryEntry&)>& callback);
};

using GameMap = std::map<std::string, GameRegistryEntry*>;

extern const GameRegistryEntry& GAME_NULL;
extern const GameRegistryEntry& GAME_MENU;
extern const GameRegistryEntry& GAME_TOPSCREEN;

// The registry's slots, indexed by ID, and the way from a name to its slot.
extern std::array<GameRegistryEntry, 1001>& AllGames;
extern GameMap& AllGamesMap;
extern const std::map<std::string, GameTypes>& GameTypeStrings;

// The type of that name, or GAMETYPE_NULL_TYPE.
GameTypes parseGameType(const std::string& name);

// The type's name, or an empty text.
std::string getTypeName(GameTypes type);
