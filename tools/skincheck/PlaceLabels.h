#pragma once

#include <string>
#include <vector>

#include "Inventory.h"

// What a picture of the places is about.
struct View {
  const char* name = nullptr;        // on the command line
  const char* screenshot = nullptr;  // the station of the demo that shows it
  Scene scene = Scene::Every;        // whose files are drawn
  bool levels = true;                // those that stand beside levels, or those that take their place
  bool skin = true, games = false;   // those of the skin, those of a game
  // Files that only the demo's games name; or null.
  const std::vector<SkinFile>& (*more)() = nullptr;
  // A file of the scene: its first place alone, enlarged, with what lies in it; or null.
  const char* inside = nullptr;
  int width = 1280, height = 720;  // of the picture that is made
};

// All views, in the order of the designers' page.
const std::vector<View>& views();

// Files that share their places, and so one outline and one label. Numbers count from 1 through `skinFiles()`
// and on through `gameFiles()`; what only the demo's games name has letters.
struct Mark {
  std::vector<std::string> numbers;
  std::vector<const SkinFile*> files;  // as many as numbers
  std::vector<Area> screen;            // places on the screen, those of the first file
  std::vector<Area> places;            // the same in pixels of the picture that is made, cut at its edge
  std::vector<Area> badges;            // where the numbers stand, one for each place, on its upper edge
  bool everywhere = false;             // covers most of the picture: labels may lie in it
};

// The part of the screen that the view shows.
Area cropOf(const View& view);
// The marks of a view. Of an animation only the first place is drawn, and what lies inside a file that has a
// view of its own is drawn there alone.
std::vector<Mark> marksOf(const View& view);

// A label: `mark` says whose, `place` to which of its places the line leads.
struct Label {
  size_t mark = 0, place = 0;
  int w = 0, h = 0;  // as large as its text
  Area box{};        // set by `placeLabels`
};

// Finds each label the nearest free place: in the picture, over no other label, no badge and no place but one that
// fills the picture. A label without such a place throws `std::runtime_error`.
void placeLabels(const View& view, const std::vector<Mark>& marks, std::vector<Label>& labels);

bool overlap(const Area& a, const Area& b);
