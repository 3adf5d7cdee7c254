#pragma once

#include <SDL_image.h>
#include <SDL_ttf.h>
#include <errno.h>
#include <functional>
#include <memory>
#include <string>

#include "common/TBitmapFont.h"
#include "components/TImageList.h"
#include "components/TSpriteAnimation.h"
#include "components/Tlabel.h"
#include "tests/components/WidgetFixture.h"
#include "tests/support/TestFont.h"

constexpr SDL_Color kWhite{255, 255, 255, 255}, kGold{255, 210, 60, 255};

// A component of no picture that holds others.
struct Panel : vendelo_sdl2::TGuiComponent {
  Panel(int x, int y) : TGuiComponent(nullptr, x, y, 400, 200, "panel") {}
};

// What the widgets look like: one picture for each named case, on a backdrop of two colours that shows how it
// blends. The single widgets' tests say what every number must be.
class WidgetPictures : public WidgetTest {
 protected:
  // A folder for each program: they run side by side.
  WidgetPictures() : folder(testfont::freshFolder(program_invocation_short_name)) {
    vendelo_sdl2::pApp->SetParam<int>("ScreenW", 400, vendelo_sdl2::PARAM_CACHE, "", "", false);
    vendelo_sdl2::pApp->SetParam<int>("ScreenH", 200, vendelo_sdl2::PARAM_CACHE, "", "", false);
  }
  ~WidgetPictures() override {
    TBitmapFont::CleanupBitmapFonts();
    TTF_CloseFont(font);
    TTF_Quit();
  }

  struct Case {
    const char* name;
    std::function<void()> paint;
  };
  void expect(std::initializer_list<Case> cases) {
    for (const Case& one : cases) {
      SCOPED_TRACE(one.name);
      clear(40, 60, 90);
      SDL_SetRenderDrawColor(renderer, 150, 120, 60, 255);
      const SDL_Rect right{200, 0, 200, 200};
      SDL_RenderFillRect(renderer, &right);
      one.paint();
      EXPECT_GOLDEN(renderer, std::string("components/") + one.name);
    }
  }
  void outline(int x, int y, int w, int h) {
    const SDL_Rect box{x, y, w, h};
    SDL_SetRenderDrawColor(renderer, 0, 0, 0, 255);
    SDL_RenderDrawRect(renderer, &box);
  }
  // Three quarters of their own colours, the fourth half transparent: which way up it lies is plain.
  SDL_Surface* quarters(int w, int h) {
    SDL_Surface* surface = SDL_CreateRGBSurfaceWithFormat(0, w, h, 32, SDL_PIXELFORMAT_RGBA32);
    const SDL_Color colours[] = {{230, 40, 40, 255}, {40, 200, 60, 255}, {60, 90, 240, 255}, {250, 240, 120, 128}};
    for (int i = 0; i < 4; ++i) {
      const SDL_Rect part{i % 2 * (w / 2), i / 2 * (h / 2), w - w / 2, h - h / 2};
      const SDL_Color& c = colours[i];
      SDL_FillRect(surface, &part, SDL_MapRGBA(surface->format, c.r, c.g, c.b, c.a));
    }
    return surface;
  }
  SDL_Texture* picture(int w, int h) {
    SDL_Surface* surface = quarters(w, h);
    SDL_Texture* texture = SDL_CreateTextureFromSurface(renderer, surface);
    SDL_FreeSurface(surface);
    SDL_SetTextureBlendMode(texture, SDL_BLENDMODE_BLEND);
    textures.push_back(texture);
    return texture;
  }
  std::string pictureFile(const char* name, int w, int h) {
    SDL_Surface* surface = quarters(w, h);
    IMG_SavePNG(surface, (folder + name).c_str());
    SDL_FreeSurface(surface);
    return folder + name;
  }
  // An atlas of three trimmed frames; the attributes are those of its root.
  std::string atlas(const char* attributes) {
    pictureFile("atlas.png", 60, 40);
    testfont::writeText(folder + "atlas.xml", std::string("<TextureAtlas imagePath=\"atlas.png\" ") + attributes +
                                                R"(>
      <sprite n="a" x="0" y="0" w="60" h="40" oX="0" oY="0" oW="80" oH="60"/>
      <sprite n="b" x="10" y="10" w="40" h="20" oX="40" oY="0" oW="80" oH="60"/>
      <sprite n="c" x="20" y="0" w="20" h="40" oX="30" oY="20" oW="80" oH="60"/></TextureAtlas>)");
    return folder + "atlas";
  }
  Tlabel* addLabel(vendelo_sdl2::TGuiComponent& parent, int x, int y, int w, int h, const char* text) {
    auto* label = new Tlabel(nullptr, x, y, w, h, text, font, kGold,
                             std::string(text) + std::to_string(x) + "," + std::to_string(y));
    parent.AddComponent(label);
    return label;
  }
  TImageList* addImage(vendelo_sdl2::TGuiComponent& parent, int x, int y, int w, int h, int imageW, int imageH) {
    auto* list = new TImageList(nullptr, x, y, w, h, "list" + std::to_string(x) + "," + std::to_string(y));
    parent.AddComponent(list);
    list->pushImage(picture(imageW, imageH));
    return list;
  }
  TSpriteAnimation* addSprites(vendelo_sdl2::TGuiComponent& parent, int x, int y, const std::string& file) {
    auto* sprites = new TSpriteAnimation(nullptr, x, y, 80, 60, file, TSpriteAnimation::NONE,
                                         "sprites" + std::to_string(x) + "," + std::to_string(y));
    parent.AddComponent(sprites);
    sprites->SetFrame(0, false);  // waits for the loader
    return sprites;
  }
  // So many steps of the slides, one every 31 ms.
  void slide(int steps) {
    for (int i = 0; i < steps; ++i) {
      clock.advance(31);
      vendelo_sdl2::pApp->ProcessTasks(vendelo_sdl2::TASK_NORMAL);
      vendelo_sdl2::pApp->ProcessTasks(vendelo_sdl2::TASK_DRAW);
    }
  }

  const std::string folder;
  const int initialised = TTF_Init();
  TTF_Font* const font = TTF_OpenFont("/usr/share/fonts/truetype/dejavu/DejaVuSans-Bold.ttf", 20);
};
