#pragma once

#include <SDL.h>
#include <string>

// Golden pictures: what a test drew, compared pixel by pixel (RGB; SDL's blending leaves the alpha channel of an
// opaque target at 253) with tests/golden/<name>.png. When they differ, <name>.actual.png and <name>.diff.png are
// left in the build folder under golden/. "--update" on the test's command line, or UPDATE_GOLDEN=1, records anew.
namespace golden {

void setUpdate(bool update);

// Compares what stands on the renderer's current target. An empty text means equal; anything else is the reason.
std::string compare(SDL_Renderer* renderer, const std::string& name);

// The same for a surface of any format.
std::string compare(SDL_Surface* picture, const std::string& name);

}  // namespace golden

#define EXPECT_GOLDEN(target, name) EXPECT_EQ("", golden::compare(target, name))
