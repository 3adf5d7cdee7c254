#pragma once

#include <SDL_image.h>
#include <errno.h>
#include <string>

#include "components/TSpriteAnimation.h"
#include "tests/components/WidgetFixture.h"
#include "tests/support/TestFont.h"

struct Sprites : TSpriteAnimation {
  Sprites(int x, int y, int w, int h, const std::string& file, TAnimationMode mode)
    : TSpriteAnimation(nullptr, x, y, w, h, file, mode, "sprites") {}

  // A frame as it was read.
  const TSprite& frame(size_t i) const { return *mSprites.at(i); }
  // Waits for the loader and leaves the counters alone.
  Sprites& loaded() {
    CopyData(nullptr);
    return *this;
  }
};

// Colour of frame i.
inline SDL_Color colourOf(int i) {
  return SDL_Color{static_cast<Uint8>(40 + 20 * (i % 10)), static_cast<Uint8>(250 - 20 * (i % 10)),
                   static_cast<Uint8>(i), 255};
}
inline Uint32 rgbOf(int i) {
  const SDL_Color c = colourOf(i);
  return static_cast<Uint32>(c.r) << 16 | static_cast<Uint32>(c.g) << 8 | c.b;
}

class SpriteAnimation : public WidgetTest {
 protected:
  // A folder for each program: they run side by side.
  SpriteAnimation() : folder(testfont::freshFolder(program_invocation_short_name)) {}

  // An image of `frames` cells side by side.
  void writeCells(const std::string& file, int frames, int w, int h) {
    SDL_Surface* surface = SDL_CreateRGBSurfaceWithFormat(0, frames * w, h, 32, SDL_PIXELFORMAT_RGBA32);
    for (int i = 0; i < frames; ++i) {
      const SDL_Color c = colourOf(i);
      const SDL_Rect cell{i * w, 0, w, h};
      SDL_FillRect(surface, &cell, SDL_MapRGBA(surface->format, c.r, c.g, c.b, c.a));
    }
    ASSERT_EQ(0, IMG_SavePNG(surface, (folder + file).c_str()));
    SDL_FreeSurface(surface);
  }
  // An atlas "<name>.xml" of untrimmed cells.
  std::string atlas(const std::string& name, int frames, int w, int h) {
    writeCells(name + "_atlas.png", frames, w, h);
    std::string xml = "<TextureAtlas imagePath=\"" + name + "_atlas.png\">";
    for (int i = 0; i < frames; ++i)
      xml += "<sprite n=\"f" + std::to_string(i) + ".png\" x=\"" + std::to_string(i * w) + "\" y=\"0\" w=\"" +
             std::to_string(w) + "\" h=\"" + std::to_string(h) + "\"/>";
    testfont::writeText(folder + name + ".xml", xml + "</TextureAtlas>");
    return folder + name;
  }
  std::string write(const std::string& name, const std::string& xml) {
    testfont::writeText(folder + name + ".xml", xml);
    return folder + name;
  }
  // Draws on black at a tick; the frame that stands at the animation's left upper corner, -1 for none.
  int drawn(Sprites& sprites, Uint32 tick) {
    clock.set(tick);
    clear(0, 0, 0);
    sprites.draw();
    const Uint32 seen = pixel(sprites.getX() + 1, sprites.getY() + 1);
    for (int i = 0; i < sprites.GetNumFrames(); ++i)
      if (seen == rgbOf(i)) return i;
    return -1;
  }
  const std::string folder;
};
