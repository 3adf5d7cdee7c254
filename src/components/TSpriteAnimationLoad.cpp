// The part of the sprite animation that reads its files and cuts their frames.
#include <malloc.h>
#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>

#include "common/SkinXml.h"
#include "components/TSpriteAnimation.h"
#include "vendelo-sdl2/FaultyFiles.h"
#include "vendelo-sdl2/MyUtils.h"
#include "vendelo-sdl2/PictureFormat.h"
#include "vendelo-sdl2/PixelLimits.h"
#include "vendelo-sdl2/Saturate.h"
#include "vendelo-sdl2/TAppGuiModule.h"
#include "vendelo-sdl2/TApplication.h"
#include "vendelo-sdl2/TRenderGuard.h"

using namespace vendelo_sdl2;

namespace {

using Node = rapidxml::xml_node<char>;

// What is wrong with a file, told in one line however much it is.
class Faults {
 public:
  explicit Faults(const std::string& file) : mFile(file), mCount(0) {}
  void add(const std::string& text) {
    if (mCount++ == 0) mFirst = text;
  }
  void tell() const {
    if (mCount > 0)
      MyUtils::TellFaultyFile("Animation " + mFile + ": " + mFirst +
                              (mCount > 1 ? ", and " + std::to_string(mCount - 1) + " more faults" : ""));
    if (mCount == 1) std::printf("Animation %s: %s\n", mFile.c_str(), mFirst.c_str());
    if (mCount > 1)
      std::printf("Animation %s: %s, and %d more faults\n", mFile.c_str(), mFirst.c_str(), mCount - 1);
  }

 private:
  const std::string& mFile;
  std::string mFirst;
  int mCount;
};

const char* textOf(const Node& node, const char* name) {
  const rapidxml::xml_attribute<char>* attribute = node.first_attribute(name);
  return attribute ? attribute->value() : nullptr;
}

// A place or a size.
int pixelsOf(const Node& node, const char* name, int fallback) {
  const char* text = textOf(node, name);
  return text ? MyUtils::withinReach(MyUtils::leadingNumber(text)) : fallback;
}

double floatOf(const Node& node, const char* name, double fallback) {
  const char* text = textOf(node, name);
  return text ? std::atof(text) : fallback;
}

std::shared_ptr<TSprite> readSprite(const Node& node, int id, Faults& faults) {
  for (const char* name : {"n", "x", "y", "w", "h"})
    if (!textOf(node, name)) faults.add("sprite " + std::to_string(id) + " has no attribute " + name);
  auto sprite = std::make_shared<TSprite>();
  sprite->id = id;
  sprite->x = pixelsOf(node, "x", 0);
  sprite->y = pixelsOf(node, "y", 0);
  sprite->width = pixelsOf(node, "w", 0);
  sprite->height = pixelsOf(node, "h", 0);
  sprite->rotate = textOf(node, "r") != nullptr;
  sprite->xoffset = pixelsOf(node, "oX", 0);
  sprite->yoffset = pixelsOf(node, "oY", 0);
  sprite->xpivot = floatOf(node, "pX", 0.5);
  sprite->ypivot = floatOf(node, "pY", 0.5);
  sprite->original_width = pixelsOf(node, "oW", sprite->width);
  sprite->original_height = pixelsOf(node, "oH", sprite->height);
  return sprite;
}

void readColor(const char* text, SDL_Color& color, Faults& faults) {
  const std::vector<std::string> parts = MyUtils::string2vector(text, ",", false);
  if (parts.size() < 4) {
    faults.add("the background colour needs r, g, b and a");
    return;
  }
  Uint8* const channels[] = {&color.r, &color.g, &color.b, &color.a};
  for (size_t i = 0; i < 4; ++i) *channels[i] = static_cast<Uint8>(std::strtol(parts[i].c_str(), nullptr, 10));
}

// Whether there is something of the frame in the image. Of a rectangle that stands out of it, the part inside is
// taken.
bool isIn(const SDL_Surface* image, const TSprite& sprite, Faults& faults) {
  if (sprite.width <= 0 || sprite.height <= 0) return false;
  const SDL_Rect whole{0, 0, image->w, image->h}, place{sprite.x, sprite.y, sprite.width, sprite.height};
  SDL_Rect inside{};
  const bool any = SDL_IntersectRect(&whole, &place, &inside) == SDL_TRUE;
  if (!SDL_RectEquals(&inside, &place))
    faults.add("sprite " + std::to_string(sprite.id) + " stands out of the image of " + std::to_string(image->w) +
               " by " + std::to_string(image->h));
  // Larger than the image cannot be meant, and may be larger than the memory.
  if (!any || sprite.width > image->w || sprite.height > image->h) return false;
  if (std::max(sprite.width, sprite.height) > MyUtils::kLongestSide) {
    faults.add("sprite " + std::to_string(sprite.id) + " is longer than " + std::to_string(MyUtils::kLongestSide) +
               " pixels");
    return false;
  }
  return true;
}

// A surface of its own with one rectangle of the image.
SDL_Surface* cut(SDL_Surface* image, const TSprite& sprite) {
  const SDL_PixelFormat& f = *image->format;
  SDL_Surface* surface =
    SDL_CreateRGBSurface(0, sprite.width, sprite.height, f.BitsPerPixel, f.Rmask, f.Gmask, f.Bmask, f.Amask);
  if (!surface) return nullptr;
  SDL_Rect source{sprite.x, sprite.y, sprite.width, sprite.height};
  SDL_BlitSurface(image, &source, surface, nullptr);
  SDL_SetSurfaceBlendMode(surface, SDL_BLENDMODE_NONE);
  return surface;
}

}  // namespace

void TSpriteAnimation::parseXML(const std::string& spriteFilenameXML) {
  const SkinXml file(spriteFilenameXML);
  Faults faults(spriteFilenameXML);
  if (file.fault() != SkinXml::Fault::NONE) {
    faults.add(file.problem());
    faults.tell();
    return;
  }
  const Node* root = file.document().first_node("TextureAtlas");
  if (!root) {
    faults.add("there is no element TextureAtlas");
    faults.tell();
    return;
  }

  if (const char* color = textOf(*root, "backgroundColor")) readColor(color, mBackgroundColor, faults);
  if (const char* imagePath = textOf(*root, "imagePath"))
    mFileName = spriteFilenameXML.substr(0, spriteFilenameXML.rfind('/') + 1) + imagePath;
  else
    faults.add("the element TextureAtlas has no attribute imagePath");
  if (const char* blendMode = textOf(*root, "blendMode")) {
    mBlendMode = blendMode;
    if (mBlendMode != "BLEND" && mBlendMode != "ADD" && mBlendMode != "MOD" && mBlendMode != "NONE")
      faults.add("the blend mode \"" + mBlendMode + "\" is none of BLEND, ADD, MOD and NONE");
  }

  // An animation that goes to and fro, or shows a thing at several places, tells the same place of the image again.
  std::map<std::array<int, 4>, std::shared_ptr<TSprite>> places;
  for (const Node* node = root->first_node("sprite"); node; node = node->next_sibling("sprite")) {
    mSprites.push_back(readSprite(*node, static_cast<int>(mSprites.size()), faults));
    const TSprite& sprite = *mSprites.back();
    const auto [first, isNew] =
      places.emplace(std::array{sprite.x, sprite.y, sprite.width, sprite.height}, mSprites.back());
    if (!isNew) mSprites.back()->same = first->second;
    if (mOriginalWidth == 0) mOriginalWidth = mSprites.back()->original_width;
    if (mOriginalHeight == 0) mOriginalHeight = mSprites.back()->original_height;
  }
  if (mSprites.empty()) faults.add("there is no element sprite");
  faults.tell();
  mLoadThread = SDL_CreateThread(loadSpirtesThread, "loadSpirtes", this);
}

int TSpriteAnimation::loadSpirtesThread(void* ptr) {
  auto* animation = static_cast<TSpriteAnimation*>(ptr);
  Faults faults(animation->mFileName);
  SDL_Surface* image = animation->mFileName.empty() ? nullptr : MyUtils::LoadSurface(animation->mFileName);
  if (image && image->format->palette) {
    // Cut frames carry no palette of their own.
    SDL_Surface* colours = SDL_ConvertSurfaceFormat(image, SDL_PIXELFORMAT_ARGB8888, 0);
    SDL_FreeSurface(image);
    image = colours;
  }
  if (image) {
    SDL_SetSurfaceBlendMode(image, SDL_BLENDMODE_NONE);
    // Released one by one when they are complete: copies of this animation may draw them already.
    for (const std::shared_ptr<TSprite>& sprite : animation->mSprites)
      if (isIn(image, *sprite, faults) && !sprite->same)
        sprite->surface.store(MyUtils::InFastFormat(animation->GetRenderer(), cut(image, *sprite)),
                              std::memory_order_release);
    SDL_FreeSurface(image);
    malloc_trim(0);  // the decoders' and the image's memory, which nobody asks for again
    faults.tell();
  }
  SDL_SemPost(animation->mLoadFinished);
  return 0;
}

void TSpriteAnimation::parsePNG(const std::string& spriteFilenamePNG) {
  SDL_Renderer* renderer = GetRenderer();
  if (!renderer || mRect.w <= 0 || mRect.h <= 0) return;
  const bool white = TerminalFlavour == RONDELL_FLAVOUR || TerminalFlavour == TAVE2_FLAVOUR;
  mBackgroundColor = white ? SDL_Color{255, 255, 255, 255} : SDL_Color{0, 0, 0, 255};
  TRenderGuard guard(renderer);
  guard.colour(mBackgroundColor.r, mBackgroundColor.g, mBackgroundColor.b, mBackgroundColor.a);

  // The frames are copies.
  const TTexturePtr spriteTexture(MyUtils::LoadTexture(renderer, spriteFilenamePNG));
  mBlendMode = "BLEND";
  int FrameCount = 0, x = 0;
  while (SDL_Texture* pSlide =
           TAppGuiModule::GetSlideFromImage(spriteTexture.get(), mRect.w, mRect.h, FrameCount)) {
    ++FrameCount;
    auto sprite = std::make_shared<TSprite>();
    sprite->id = FrameCount;
    sprite->x = x;
    sprite->width = sprite->original_width = mOriginalWidth = mRect.w;
    sprite->height = sprite->original_height = mOriginalHeight = mRect.h;
    sprite->texture.reset(pSlide);
    mSprites.push_back(std::move(sprite));
    x += mRect.w;
  }
}
