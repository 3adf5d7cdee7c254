#pragma once

#include <SDL_stdinc.h>
#include <cstdint>
#include <optional>
#include <string>

#include "common/LinkFigures.h"

// How the top screen is, as those want to know who are far away. Counts are of the whole run.
struct TopScreenFacts {
  const char* panel = "loader";           // what is on the screen; "stopped" where the last picture stays
  int id = -1;                            // by which the service knows the program; -1 without a registration
  std::optional<Uint32> sinceGoodAnswer;  // milliseconds
  unsigned long frames = 0, lateFrames = 0;
  unsigned long logLines = 0;
  // Of these, what did not reach the console and the file, and what the limit of the day kept from the file.
  unsigned long linesLostByConsole = 0, linesLostByFile = 0, linesBeyondLimit = 0;
  int missingFiles = 0;
  long textures = 0;
  int64_t textureBytes = 0;
  LinkFigures link;
};
