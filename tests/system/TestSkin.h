#pragma once

#include "tests/system/Picture.h"

namespace systest {

// A skin of plain colours: what is on the screen can be told from single pixels. Its one bitmap font has a block of
// another colour for each digit, so that the rolling digits can be read.
struct TestSkin {
  static constexpr Colour BACKGROUND{20, 40, 60};
  static constexpr Colour DEMO{90, 0, 90};
  static constexpr Colour DOT{250, 250, 0};
  static constexpr Colour SPLASH{0, 250, 250};
  static constexpr Colour LOGO{200, 100, 0};
  static constexpr Colour TITLE{0, 200, 100};
  static constexpr Colour FRAMES[4] = {
    {120, 110, 30}, {120, 120, 120}, {130, 70, 40}, {20, 120, 50}};  // by level id
  static constexpr int DIGIT_WIDTH = 40, DIGIT_HEIGHT = 60;

  static Colour digit(int number) { return {10 + 27 * number, 253 - 27 * number, 200}; }

  // Writes all files below the working directory of the program. False when one cannot be written.
  static bool write(const std::string& workingDir);
};

}  // namespace systest
