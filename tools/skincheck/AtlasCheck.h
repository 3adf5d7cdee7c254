#pragma once

#include <string>

#include "Findings.h"

// Checks the animation `path` (an `.xml`): description, picture found and readable, rectangles inside it, the
// whole frame's size (`width` by `height`, of the first frame and of the others alike).
void checkAtlas(const std::string& path, int width, int height, Findings& findings);
