#pragma once

#include <string>
#include <vector>

// A rectangle of the screen of 1920 by 1080, in pixels.
struct Area {
  int x, y, w, h;
};

enum class SkinFileKind { Picture, BitmapFont, Animation, TrueTypeFont };

// How a picture and its place go together.
enum class Fit {
  Exact,      // drawn in the size of the place: any other is wrong
  Stretched,  // made as large as its place; the size is the largest that makes sense
  OwnSize,    // drawn in its own size; the size is the largest that has room
};

// The screens that a designer thinks in, one picture of the places each.
enum class Scene { Every, Jackpots, Win, Paytable, Instructions, Loader };

// One file that the program asks for.
struct SkinFile {
  SkinFileKind kind;
  std::string name;  // from the skin's folder on; fonts and animations without the extension, pictures with it
  Fit fit;
  int width, height;         // of the picture or of the animation's whole frame; of a font: its room, 0 for none
  Scene scene;               // where a picture of the places shows it
  std::vector<Area> places;  // on the screen, where it stands at rest; empty where it wanders
  std::string shows;         // what it is and when it is shown, for people
};

// All files of a skin's folder, each once, in the order of the designers' page.
const std::vector<SkinFile>& skinFiles();

// The same for `Games/<name>/Icons/`: what one game may bring. Pages and prize fonts, whose names the platform or
// the language decide, are not in it, and are looked for by the check itself.
const std::vector<SkinFile>& gameFiles();
