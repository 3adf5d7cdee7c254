#pragma once

#include "vesperatopscreen/TJackpotsPanel.h"

// What the levels of one creation share: the places, the digits' font, and the sprites that all levels show. The
// first level's side decides the idle frames of all.
struct TJackpotsPanel::TBuild {
  explicit TBuild(int numJackpots) : layout(numJackpots) {}

  TJackpotLayout layout;
  TBitmapFont* font = nullptr;
  TSpriteAnimation* idleCopy = nullptr;
  TSpriteAnimation* particleCopy = nullptr;
};
