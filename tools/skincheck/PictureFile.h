#pragma once

#include <SDL.h>

#include <memory>
#include <string>

#include "Findings.h"

// A picture as the program finds it. `width` is 0 when there is none that can be read.
struct PictureFile {
  std::string file;         // what was opened; the path asked for when nothing was
  bool there = false;       // whether the path asked for is a file
  std::string similar;      // when there is none: a file whose name differs in capitals only
  bool byFallback = false;  // found under another extension than asked for
  int width = 0, height = 0;
  std::shared_ptr<SDL_Surface> surface;  // null also when the picture was decoded by an earlier check
};

// The picture of that file, or null for one that the program refuses: it is damaged, or too large for any texture.
std::shared_ptr<SDL_Surface> decodePicture(const std::string& path);

// Reports a picture that can be read and is of another format than its ending says ("format"): as a rule it was
// renamed in the place of being saved anew, and what was clear before is no longer.
void checkFormat(const std::string& path, Findings& findings);

// Looks for the picture `path` as the program does, which tries other extensions when it cannot read it, and
// decodes it. The file goes to `used` and its size to `decoded`; a picture that stands there already is decoded
// again only when `pixels` are wanted. Reports nothing but what `checkFormat` does, once for each file.
PictureFile readPicture(const std::string& path, bool pixels, Findings& findings);

// Why a picture without a size has none, for a sentence: " cannot be read", " is missing".
std::string whyNot(const PictureFile& picture);
