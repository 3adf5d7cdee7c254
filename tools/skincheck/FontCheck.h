#pragma once

#include <string>

#include "Findings.h"

// Checks the bitmap font `path` (a `.fnt`) as the program's reader would take it: description, required
// attributes, atlas found and readable, glyphs inside it, and that every character of the place's texts is there;
// then that the longest sample of each text fits its room. `name` is the font's name in the inventory
// ("Fonts/currency"), or empty for a font of a game, which has only digits and separators to bring.
void checkFont(const std::string& path, const std::string& name, Findings& findings);
