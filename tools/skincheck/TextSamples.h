#pragma once

#include <string>
#include <vector>

// Where the texts of one font of a skin stand.
struct TextRoom {
  const char* font;   // its name in the inventory
  int width, height;  // pixels; a width of 0 for a text that runs through its place
  bool shrunk;        // whether the program makes a text smaller that does not fit
  int below;          // pixels that a text may hang out below, before it lies over something else
  const char* place;  // for people
};

// A text as long as they come.
struct TextSample {
  const char* font;
  bool always;  // of the program itself, or what a platform sends as a rule; others depend on language and country
  const char* text;
};

// Null for a font whose places only the platform knows.
const TextRoom* roomOf(const std::string& font);
const std::vector<TextSample>& textSamples();
// Characters that a font needs beside those of its samples. An empty name means the font of a game's prizes.
const std::vector<TextSample>& neededCharacters();
