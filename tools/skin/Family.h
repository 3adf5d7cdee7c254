#pragma once

#include <functional>
#include <string>

class Canvas;

// Where the pictures go: a working directory as the program expects it, with the skin folder inside.
//
// The root ends in a slash. Folders are made as needed; a file that cannot be written throws `std::runtime_error`.
class Output {
 public:
  explicit Output(std::string root) : mRoot(std::move(root)) {}

  // Full path of a file below the root (`Games/...` too), its folder made.
  std::string path(const std::string& name) const;
  // Full path of a file below the skin folder, its folder made.
  std::string skinPath(const std::string& name) const;
  void image(const std::string& name, const Canvas& canvas) const;
  // Copies an installed file below the root.
  void copy(const std::string& from, const std::string& name) const;

 private:
  std::string mRoot;
};

// One family of pictures, drawn by one source file; `kFamilies` in main.cpp lists them.
struct Family {
  const char* name;
  void (*draw)(const Output& output);
};

void drawBackgrounds(const Output& output);
void drawTitles(const Output& output);
void drawFrames(const Output& output);
void drawInfoBar(const Output& output);
void drawLoader(const Output& output);
void drawFonts(const Output& output);
void drawAnimations(const Output& output);
void drawButtons(const Output& output);
void drawGames(const Output& output);
