// The static image helpers of the GUI module.
#include <SDL_image.h>
#include <dlfcn.h>

#include "tests/support/TestFont.h"
#include "tests/vendelo-sdl2/TAppGuiModuleFixture.h"
#include "vendelo-sdl2/MyUtils.h"

using namespace guitest;

namespace {
std::vector<SDL_Texture*> loaded;
}  // namespace

// Linked in front of the library's, to know what it gave. The blend mode is none that the helpers leave.
extern "C" SDL_Texture* SDL_CreateTextureFromSurface(SDL_Renderer* renderer, SDL_Surface* picture) {
  static const auto sdl =
    reinterpret_cast<decltype(&SDL_CreateTextureFromSurface)>(dlsym(RTLD_NEXT, "SDL_CreateTextureFromSurface"));
  loaded.push_back(sdl(renderer, picture));
  if (loaded.back()) SDL_SetTextureBlendMode(loaded.back(), SDL_BLENDMODE_ADD);
  return loaded.back();
}
extern "C" SDL_Surface* IMG_Load(const char* file) {
  static const auto img = reinterpret_cast<decltype(&IMG_Load)>(dlsym(RTLD_NEXT, "IMG_Load"));
  SDL_Surface* surface = img(file);
  if (surface) SDL_SetSurfaceBlendMode(surface, SDL_BLENDMODE_ADD);
  return surface;
}

namespace {

TEST_F(AppGuiModule, RectanglesAreStatic) {
  SDL_Rect* one = TAppGuiModule::CreateRect(1, 2, 3, 4);
  SDL_Rect* two = TAppGuiModule::CreateRect2(5, 6, 7, 8);
  EXPECT_NE(one, two);
  EXPECT_EQ(4, one->h);
  EXPECT_EQ(5, two->x);
  EXPECT_EQ(one, TAppGuiModule::CreateRect(9, 0, 0, 0));
  EXPECT_EQ(9, one->x);
  EXPECT_EQ(8, two->h);
}

TEST_F(AppGuiModule, LayersTakeTheirColourFromTheFlavour) {
  const struct {
    TFlavour flavour;
    bool keepsColour;
  } rows[] = {
    {UNKNOWN_FLAVOUR, false}, {RONDELL_FLAVOUR, false}, {TAVE_FLAVOUR, false}, {TAVE2_FLAVOUR, false},
    {PELIX_FLAVOUR, false},   {UDO_FLAVOUR, false},     {LOMA_FLAVOUR, false}, {QUIRA_FLAVOUR, true},
    {ZOD_FLAVOUR, true},      {VESPERA_FLAVOUR, true},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.flavour);
    TerminalFlavour = row.flavour;
    SDL_Texture* layer = TAppGuiModule::CreateLayer(nullptr, 3, 2, 1, 10, 20, 30, 32);
    EXPECT_EQ(row.keepsColour ? 0x0a141e00u : 0u, at(layer, 1, 1));
    SDL_DestroyTexture(layer);
  }
}

TEST_F(AppGuiModule, ALayerLeavesTargetAndColourAsTheyWere) {
  SDL_Texture* target = texture(renderer, 4, 4, {1, 2, 3, 255});
  SDL_SetRenderTarget(renderer, target);
  SDL_SetRenderDrawColor(renderer, 9, 8, 7, 6);
  SDL_Texture* layer = TAppGuiModule::CreateLayer(target, 7, 5, 0, 0, 0, 0, 16);
  EXPECT_EQ(target, SDL_GetRenderTarget(renderer));
  Uint8 r, g, b, a;
  SDL_GetRenderDrawColor(renderer, &r, &g, &b, &a);
  EXPECT_EQ(0x09080706, r << 24 | g << 16 | b << 8 | a);
  Uint32 format = 0;
  int access = 0, w = 0, h = 0;
  SDL_BlendMode mode = SDL_BLENDMODE_NONE;
  SDL_QueryTexture(layer, &format, &access, &w, &h);
  SDL_GetTextureBlendMode(layer, &mode);
  EXPECT_EQ(static_cast<Uint32>(SDL_PIXELFORMAT_ABGR8888), format) << "of the software driver";
  EXPECT_EQ(SDL_TEXTUREACCESS_TARGET, access);
  EXPECT_EQ(7, w);
  EXPECT_EQ(5, h);
  EXPECT_EQ(SDL_BLENDMODE_BLEND, mode);
  SDL_SetRenderTarget(renderer, nullptr);
  EXPECT_EQ(nullptr, TAppGuiModule::CreateLayer(nullptr, 0, 5, 0, 0, 0, 0, 16));
  // As large as no screen is, and as no memory is.
  EXPECT_EQ(nullptr, TAppGuiModule::CreateLayer(nullptr, 8193, 8192, 0, 0, 0, 0, 16));
  EXPECT_EQ(nullptr, TAppGuiModule::CreateLayer(nullptr, 32768, 1, 0, 0, 0, 0, 16)) << "not to be scaled safely";
  EXPECT_EQ(nullptr, TAppGuiModule::CreateLayer(nullptr, 1, 32768, 0, 0, 0, 0, 16));
  EXPECT_EQ(nullptr, TAppGuiModule::CreateLayer(nullptr, 2147483647, 2147483647, 0, 0, 0, 0, 16));
}

TEST_F(AppGuiModule, SubImageCopiesAlphaAsItStands) {
  EXPECT_EQ(nullptr, TAppGuiModule::SubImage(nullptr, 0, 0, 1, 1));
  SDL_Texture* source = texture(renderer, 8, 8, {10, 20, 30, 40});
  fill(source, {4, 4, 4, 4}, {200, 100, 50, 128});
  SDL_SetTextureBlendMode(source, SDL_BLENDMODE_ADD);
  SDL_Texture* target = texture(renderer, 4, 4, {0, 0, 0, 0});
  SDL_SetRenderTarget(renderer, target);
  SDL_Texture* part = TAppGuiModule::SubImage(source, 2, 2, 4, 4);
  EXPECT_EQ(target, SDL_GetRenderTarget(renderer));
  EXPECT_EQ(0x0a141e28u, at(part, 1, 1));
  EXPECT_EQ(0xc8643280u, at(part, 2, 2));
  SDL_BlendMode mode = SDL_BLENDMODE_NONE;
  SDL_GetTextureBlendMode(source, &mode);
  EXPECT_EQ(SDL_BLENDMODE_ADD, mode);
  SDL_SetRenderTarget(renderer, nullptr);
}

TEST_F(AppGuiModule, SlidesOfAStrip) {
  const struct {
    const char* name;
    int w, h, slideW, slideH, index;
    int x, y;  // -1: none
  } rows[] = {
    {"vertical first", 10, 30, 10, 10, 0, 0, 0},
    {"vertical last", 10, 30, 10, 10, 2, 0, 20},
    {"vertical beyond", 10, 30, 10, 10, 3, -1, -1},
    {"horizontal last", 40, 10, 10, 10, 3, 30, 0},
    {"horizontal beyond", 40, 10, 10, 10, 4, -1, -1},
    {"one slide", 100, 100, 100, 100, 0, 0, 0},
    {"one slide, second", 100, 100, 100, 100, 1, -1, -1},
    {"no strip", 40, 40, 10, 10, 0, -1, -1},
    {"negative index", 10, 30, 10, 10, -1, -1, -1},
    {"remainder is no slide", 10, 35, 10, 10, 3, -1, -1},
    {"width 0", 10, 30, 0, 30, 0, -1, -1},
    {"height 0", 10, 30, 10, 0, 0, -1, -1},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    SDL_Texture* strip = texture(renderer, row.w, row.h, {1, 1, 1, 255});
    if (row.x >= 0) fill(strip, {row.x, row.y, 1, 1}, {255, 0, 0, 255});
    SDL_Texture* slide = TAppGuiModule::GetSlideFromImage(strip, row.slideW, row.slideH, row.index);
    EXPECT_EQ(row.x >= 0, slide != nullptr);
    if (slide) {
      int w = 0, h = 0;
      SDL_QueryTexture(slide, nullptr, nullptr, &w, &h);
      EXPECT_EQ(row.slideW, w);
      EXPECT_EQ(row.slideH, h);
      EXPECT_EQ(0xff0000ffu, at(slide, 0, 0));
    }
  }
  EXPECT_EQ(nullptr, TAppGuiModule::GetSlideFromImage(nullptr, 1, 1, 0));
}

TEST_F(AppGuiModule, LoadImageGivesACopyThatTheCallerOwns) {
  const std::string folder = testfont::freshFolder("AppGuiModule_LoadImage");
  testfont::writePicture(folder + "a.png", 6, 4, {10, 20, 30, 128});
  SDL_Texture* image = TAppGuiModule::LoadImage((folder + "a.png").c_str(), 0, 0, 0, 0, 0);
  ASSERT_NE(nullptr, image);
  int access = 0, w = 0, h = 0;
  SDL_QueryTexture(image, nullptr, &access, &w, &h);
  EXPECT_EQ(SDL_TEXTUREACCESS_TARGET, access);
  EXPECT_EQ(6, w);
  EXPECT_EQ(4, h);
  EXPECT_EQ(0x0a141e80u, at(image, 0, 0));
  EXPECT_EQ("", printed([] {
              EXPECT_EQ(nullptr, TAppGuiModule::LoadImage("", 0, 0, 0, 0, 0));
              EXPECT_EQ(nullptr, TAppGuiModule::LoadSurface("", 0, 0, 0, 0, 0));
            }));
  const std::string missing = folder + "missing.png";
  const std::string message = printed([&] { TAppGuiModule::LoadImage(missing.c_str(), 0, 0, 0, 0, 0); });
  EXPECT_NE(std::string::npos, message.find("\n*******************TAppGuiModule::LoadImage: Unable to load image "
                                            "file: " +
                                            missing + "\n\n"));
}

TEST_F(AppGuiModule, LoadSurfaceBlends) {
  const std::string folder = testfont::freshFolder("AppGuiModule_LoadSurface");
  testfont::writePicture(folder + "a.png", 6, 4, {10, 20, 30, 128});
  SDL_Surface* surface = TAppGuiModule::LoadSurface((folder + "a.png").c_str(), 0, 0, 0, 0, 0);
  ASSERT_NE(nullptr, surface);
  SDL_BlendMode mode = SDL_BLENDMODE_NONE;
  SDL_GetSurfaceBlendMode(surface, &mode);
  EXPECT_EQ(SDL_BLENDMODE_BLEND, mode);
  EXPECT_EQ(6, surface->w);
  SDL_FreeSurface(surface);
  const std::string missing = folder + "missing.png";
  const std::string message =
    printed([&] { EXPECT_EQ(nullptr, TAppGuiModule::LoadSurface(missing.c_str(), 0, 0, 0, 0, 0)); });
  const std::string expected = "Error loading: " + missing;
  ASSERT_GE(message.size(), expected.size());
  EXPECT_EQ(expected, message.substr(message.size() - expected.size()));
}

TEST_F(AppGuiModule, SurfacesAreKeyedAndFilled) {
  SDL_Surface* surface = TAppGuiModule::CreateSurface(nullptr, 5, 3, 0, 255, 0, 255, 8);
  ASSERT_NE(nullptr, surface);
  EXPECT_EQ(32, surface->format->BitsPerPixel);
  EXPECT_EQ(0xff0000u, surface->format->Rmask);
  EXPECT_EQ(0u, surface->format->Amask);
  Uint32 key = 0;
  SDL_BlendMode mode = SDL_BLENDMODE_NONE;
  EXPECT_EQ(0, SDL_GetColorKey(surface, &key));
  SDL_GetSurfaceBlendMode(surface, &mode);
  EXPECT_EQ(0xff00ffu, key);
  EXPECT_EQ(SDL_BLENDMODE_BLEND, mode);
  EXPECT_EQ(0xff00ffu, *static_cast<Uint32*>(surface->pixels));
  SDL_FreeSurface(surface);

  EXPECT_EQ(nullptr, TAppGuiModule::SubSurface(nullptr, 0, 0, 1, 1));
  SDL_Surface* source = SDL_CreateRGBSurfaceWithFormat(0, 8, 8, 32, SDL_PIXELFORMAT_RGB888);
  const SDL_Rect square{4, 4, 4, 4};
  SDL_FillRect(source, &square, 0x00ff00);
  SDL_Surface* part = TAppGuiModule::SubSurface(source, 3, 4, 2, 2);
  ASSERT_NE(nullptr, part);
  EXPECT_EQ(2, part->w);
  EXPECT_EQ(0x000000u, static_cast<Uint32*>(part->pixels)[0]);
  EXPECT_EQ(0x00ff00u, static_cast<Uint32*>(part->pixels)[1]);
  SDL_FreeSurface(part);
  SDL_FreeSurface(source);
}

TEST_F(AppGuiModule, AnImpossibleSizeIsNoSurface) {
  for (const auto& [w, h] : {std::pair{-1, 3}, {3, -1}}) {
    EXPECT_EQ(nullptr, TAppGuiModule::CreateSurface(nullptr, w, h, 0, 255, 0, 255, 8));
    SDL_Surface* source = TAppGuiModule::CreateSurface(nullptr, 8, 8, 0, 0, 0, 0, 8);
    ASSERT_NE(nullptr, source);
    EXPECT_EQ(nullptr, TAppGuiModule::SubSurface(source, 0, 0, w, h));
    SDL_FreeSurface(source);
  }
}

TEST_F(AppGuiModule, LoadImageKeepsTheLoadedTextureAndMakesAnotherEachTime) {
  const std::string folder = testfont::freshFolder("AppGuiModule_LoadImageTwice");
  testfont::writePicture(folder + "a.png", 6, 4, {10, 20, 30, 128});
  MyUtils::SetImageDir("/nowhere/");  // the path counts as it is given
  loaded.clear();
  SDL_Texture* one = TAppGuiModule::LoadImage((folder + "a.png").c_str(), 0, 1, 9, 9, 9);
  SDL_Texture* two = TAppGuiModule::LoadImage((folder + "a.png").c_str(), 1, 0, 0, 0, 0);
  SDL_Surface* first = TAppGuiModule::LoadSurface((folder + "a.png").c_str(), 0, 1, 10, 20, 30);
  SDL_Surface* second = TAppGuiModule::LoadSurface((folder + "a.png").c_str(), 1, 0, 0, 0, 0);
  MyUtils::SetImageDir("");
  ASSERT_EQ(2u, loaded.size());
  for (SDL_Texture* texture : loaded) {
    SDL_BlendMode mode = SDL_BLENDMODE_NONE;
    ASSERT_EQ(0, SDL_GetTextureBlendMode(texture, &mode)) << "it lives with the renderer";
    EXPECT_EQ(SDL_BLENDMODE_BLEND, mode);
    EXPECT_NE(one, texture);
    EXPECT_NE(two, texture);
  }
  EXPECT_NE(loaded[0], loaded[1]);
  EXPECT_NE(one, two);
  EXPECT_EQ(at(one, 5, 3), at(two, 5, 3));
  ASSERT_NE(nullptr, first);
  EXPECT_NE(first, second);
  EXPECT_EQ(SDL_FALSE, SDL_HasColorKey(first));
  SDL_FreeSurface(first);
  SDL_FreeSurface(second);
}

TEST_F(AppGuiModule, ALayerIsClearedWhateverItsMemoryHeld) {
  SDL_SetRenderDrawColor(renderer, 200, 100, 50, 255);
  SDL_Texture* layer = TAppGuiModule::CreateLayer(nullptr, 5, 3, 1, 1, 2, 3, 8);
  EXPECT_EQ(0u, at(layer, 0, 0));
  EXPECT_EQ(0u, at(layer, 4, 2));
  TerminalFlavour = VESPERA_FLAVOUR;
  SDL_Texture* part = TAppGuiModule::SubImage(layer, 0, 0, 2, 2);
  EXPECT_EQ(0u, at(part, 1, 1));
}

TEST_F(AppGuiModule, SurfacesHaveTheirSizeMasksAndKey) {
  SDL_Surface* surface = TAppGuiModule::CreateSurface(nullptr, 5, 3, 0, 10, 20, 30, 8);
  ASSERT_NE(nullptr, surface);
  EXPECT_EQ(5, surface->w);
  EXPECT_EQ(3, surface->h);
  EXPECT_EQ(0xff0000u, surface->format->Rmask);
  EXPECT_EQ(0xff00u, surface->format->Gmask);
  EXPECT_EQ(0xffu, surface->format->Bmask);
  EXPECT_EQ(0u, surface->format->Amask);
  Uint32 key = 0;
  EXPECT_EQ(SDL_TRUE, SDL_HasColorKey(surface));
  SDL_GetColorKey(surface, &key);
  EXPECT_EQ(0x0a141eu, key);
  const auto* last = reinterpret_cast<const Uint32*>(static_cast<Uint8*>(surface->pixels) + 2 * surface->pitch) + 4;
  EXPECT_EQ(0x0a141eu, *last);
  SDL_FreeSurface(surface);
}

TEST_F(AppGuiModule, APartOfASurfaceIsKeyedInMagenta) {
  SDL_Surface* source = SDL_CreateRGBSurfaceWithFormat(0, 8, 8, 32, SDL_PIXELFORMAT_ARGB8888);
  SDL_FillRect(source, nullptr, 0x00000000);
  const SDL_Rect square{4, 4, 1, 1};
  SDL_FillRect(source, &square, 0xff00ff00);
  SDL_Surface* part = TAppGuiModule::SubSurface(source, 3, 4, 3, 2);
  ASSERT_NE(nullptr, part);
  EXPECT_EQ(3, part->w);
  EXPECT_EQ(2, part->h);
  Uint32 key = 0;
  ASSERT_EQ(0, SDL_GetColorKey(part, &key));
  EXPECT_EQ(0xff00ffu, key);
  const auto* pixels = static_cast<const Uint32*>(part->pixels);
  EXPECT_EQ(0xff00ffu, pixels[0] & 0xffffff);  // what is transparent in the source shows the key
  EXPECT_EQ(0x00ff00u, pixels[1] & 0xffffff);
  EXPECT_EQ(0xff00ffu, pixels[2] & 0xffffff);
  EXPECT_EQ(0xff00ffu, pixels[part->pitch / 4 + 1] & 0xffffff);
  SDL_FreeSurface(part);
  SDL_FreeSurface(source);
}

}  // namespace
