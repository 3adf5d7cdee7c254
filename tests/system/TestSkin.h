#pragma once

#include "tests/system/Picture.h"

namespace systest {

// A skin of plain colours: what is on the screen can be told from single pixels. Its one bitmap font has a block of
// another colour for each digit, so that the rolling digits can be read.
struct TestSkin {
  static constexpr Colour kBackground{20, 40, 60};
  static constexpr Colour kDemo{90, 0, 90};
  static constexpr Colour kDot{250, 250, 0};
  static constexpr Colour kSplash{0, 250, 250};
  static constexpr Colour kLogo{200, 100, 0};
  static constexpr Colour kTitle{0, 200, 100};
  static constexpr Colour kFrames[4] = {
    {120, 110, 30}, {120, 120, 120}, {130, 70, 40}, {20, 120, 50}};  // by level id
  static constexpr Colour kButton{160, 30, 30}, kButtonOff{70, 20, 20};
  static constexpr int kDigitWidth = 40, kDigitHeight = 60;

  // The games "A" and "B": an overlay, the paper behind their paytables, and two pages of 800 by 600. B's pages are
  // there in the language "SI" too, in other colours.
  static constexpr Colour kOverlays[2] = {{60, 0, 0}, {0, 60, 0}};
  static constexpr Colour kPapers[2] = {{180, 170, 120}, {120, 170, 180}};
  static constexpr Colour kPages[2][2] = {{{100, 20, 60}, {60, 20, 100}}, {{20, 100, 60}, {20, 60, 100}}};
  static constexpr Colour kPagesSi[2] = {{100, 100, 20}, {20, 100, 100}};

  static Colour digit(int number) { return {10 + 27 * number, 253 - 27 * number, 200}; }

  // Writes all files below the working directory of the program. False when one cannot be written.
  static bool write(const std::string& workingDir);

  // Adds the buttons and their fonts, and the games below "Games" of the same directory.
  static bool writeGames(const std::string& workingDir);
};

}  // namespace systest
