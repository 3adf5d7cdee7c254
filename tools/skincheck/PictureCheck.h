#pragma once

#include <string>

#include "Findings.h"
#include "Inventory.h"

// Checks a picture of the inventory below `folder` as MyUtils::LoadTexture finds it: there, readable, of the size
// that its place needs, opaque where the program draws it so. `missing` is how much a missing one matters.
void checkPicture(const SkinFile& file, const std::string& folder, Severity missing, Findings& findings);

// Checks a picture that the program opens under this name and no other; it is there. Its size must fit as told.
void checkPictureAt(const std::string& path, Fit fit, int width, int height, Findings& findings);

// Checks a TrueType or OpenType font: it opens, and has the characters of `text`. A text that would be wider than
// `width` pixels at 34 points is told; 0 for no such limit.
void checkOutlines(const std::string& path, const std::string& text, int width, Findings& findings);
