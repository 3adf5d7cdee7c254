#include "vendelo-sdl2/TFramePicture.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

#include "vendelo-sdl2/Drawing.h"
#include "vendelo-sdl2/PictureFormat.h"
#include "vendelo-sdl2/TTexturePixels.h"
#include "vendelo-sdl2/TextureContent.h"
#include "vendelo-sdl2/WindowDrawing.h"

namespace vendelo_sdl2 {
namespace {

constexpr size_t kUsualCommands = 1024;
// How many commands may have come in or gone at one place before what follows counts as changed too.
constexpr size_t kReach = 12;

SDL_Rect sizeOf(SDL_Texture* texture) {
  SDL_Rect size{0, 0, 0, 0};
  SDL_QueryTexture(texture, nullptr, nullptr, &size.w, &size.h);
  return size;
}

bool refersTo(const std::vector<TDrawCommand>& commands, const SDL_Texture* texture) {
  return std::any_of(commands.begin(), commands.end(), [texture](const auto& c) { return c.texture == texture; });
}

// As SDL's software driver does for a copy. False, and nothing done, where one of them has no pixels.
bool stretch(SDL_Texture* from, const SDL_Rect& part, SDL_Texture* to, const SDL_Rect& size) {
  const auto surfaceOf = [](const TTexturePixels& pixels, const SDL_Rect& of) {
    return MyUtils::TSurfacePtr(
      SDL_CreateRGBSurfaceWithFormatFrom(pixels.pixels(), of.w, of.h, 32, pixels.pitch(), pixels.format()));
  };
  const TTexturePixels source(from, part), target(to, size);
  if (!source || !target) return false;
  const MyUtils::TSurfacePtr picture = surfaceOf(source, part), stretched = surfaceOf(target, size);
  const SDL_Rect whole{0, 0, part.w, part.h};
  return picture && stretched && SDL_SoftStretchLinear(picture.get(), &whole, stretched.get(), &size) == 0;
}

uint64_t mixed(uint64_t hash, uint64_t value) {
  hash ^= value + 0x9e3779b97f4a7c15u + (hash << 6) + (hash >> 2);
  hash ^= hash >> 30;
  hash *= 0xbf58476d1ce4e5b9u;
  hash ^= hash >> 27;
  hash *= 0x94d049bb133111ebu;
  return hash ^ (hash >> 31);
}

uint64_t pair(int a, int b) {
  return static_cast<uint64_t>(static_cast<uint32_t>(a)) << 32 | static_cast<uint32_t>(b);
}

uint64_t mixed(uint64_t hash, const TDrawCommand& c) {
  uint64_t angle = 0;
  std::memcpy(&angle, &c.angle, sizeof angle);
  const auto colour = static_cast<uint64_t>(c.colour.r) << 24 | static_cast<uint64_t>(c.colour.g) << 16 |
                      static_cast<uint64_t>(c.colour.b) << 8 | c.colour.a;
  for (const uint64_t value :
       {c.content, pair(c.source.x, c.source.y), pair(c.source.w, c.source.h),
        pair(c.destination.x, c.destination.y), pair(c.destination.w, c.destination.h), angle,
        pair(c.centre.x, c.centre.y), pair(static_cast<int>(c.flip), static_cast<int>(c.blend)), colour,
        uint64_t{c.hasCentre}})
    hash = mixed(hash, value);
  return hash;
}

}  // namespace

TFramePicture::TFramePicture() {
  for (TCommands* commands : {&mFrame, &mLastFrame, &mLayer}) commands->reserve(kUsualCommands);
  mDying.reserve(kUsualCommands);
  for (std::vector<uint64_t>* unseen : {&mUnseen, &mLastUnseen}) unseen->reserve(kUsualCommands);
}

TFramePicture::~TFramePicture() {
  if (mpRenderer) drawing::Record(nullptr);
}

void TFramePicture::begin(SDL_Renderer* renderer, SDL_Texture* picture, bool asItComes) {
  if (mpRenderer) end();
  if (picture != mpPicture) forget();
  SDL_RendererInfo info{};
  SDL_GetRendererInfo(renderer, &info);
  // SDL's software driver takes other pixels of the source where a scaled copy is cut.
  mScalesByParts = !info.name || std::strcmp(info.name, "software") != 0;
  mpRenderer = renderer;
  mpPicture = picture;
  mpTarget = picture;
  if (picture) {
    mSize = sizeOf(picture);
  } else {
    SDL_SetRenderTarget(renderer, nullptr);
    SDL_GetRendererOutputSize(renderer, &mSize.w, &mSize.h);
  }
  mTargetSize = mSize;
  mCarriedOut = asItComes;
  mClearDue = false;
  drawing::Record(this);
  clear();
}

const TDirtyRects& TFramePicture::finish(bool whole) {
  finishLayer();
  clearIfSeen(nullptr);
  drawing::Record(nullptr);
  SDL_SetRenderTarget(mpRenderer, mpPicture);
  mChanged.reset(mSize);
  if (whole || !mKnown || mCarriedOut)
    mChanged.addWhole();
  else
    findChanges();
  if (!mCarriedOut)
    for (const SDL_Rect& rect : mChanged.rects()) draw(rect);
  mKnown = !mCarriedOut;
  mFrame.swap(mLastFrame);
  mFrame.clear();
  mUnseen.swap(mLastUnseen);
  mUnseen.clear();
  destroyDying();
  constexpr int aWhile = 300;
  for (TScaled& scaled : mScaled) {
    // It stops counting there: of years of frames an int would run over.
    scaled.framesUnused = scaled.isUsed ? 0 : std::min(scaled.framesUnused + 1, aWhile);
    scaled.isUsed = false;
    if (scaled.framesUnused == aWhile) scaled.texture.reset();
  }
  mpRenderer = nullptr;
  return mChanged;
}

void TFramePicture::forget() {
  mKnown = false;
  for (TScaled& scaled : mScaled) scaled = {};
}

void TFramePicture::end() {
  drawing::Record(nullptr);
  mFrame.clear();
  mLayer.clear();
  mUnseen.clear();
  destroyDying();
  mpRenderer = nullptr;
  forget();
}

void TFramePicture::setTarget(SDL_Texture* texture) {
  if (texture == mpTarget) return;
  finishLayer();
  mpTarget = texture;
  mTargetSize = texture ? sizeOf(texture) : mSize;
}

void TFramePicture::clear() {
  TDrawCommand command;
  SDL_GetRenderDrawColor(mpRenderer, &command.colour.r, &command.colour.g, &command.colour.b, &command.colour.a);
  command.destination = mTargetSize;
  record(command);
}

void TFramePicture::copy(SDL_Texture* texture, const SDL_Rect* source, const SDL_Rect* destination, double angle,
                         const SDL_Point* centre, SDL_RendererFlip flip) {
  if (!texture) return;
  TDrawCommand command;
  command.texture = texture;
  command.content = contentOf(texture);
  // As SDL does: what is left of the source fills the whole destination.
  command.source = source ? common(*source, sizeOf(texture)) : sizeOf(texture);
  command.destination = destination ? *destination : mTargetSize;
  if (isEmpty(command.source) || isEmpty(command.destination)) return;
  if (flip != SDL_FLIP_NONE || std::fmod(angle, 360.0) != 0.0) {
    command.angle = angle;
    command.flip = flip;
    command.hasCentre = centre != nullptr;
    if (centre) command.centre = *centre;
  }
  SDL_GetTextureColorMod(texture, &command.colour.r, &command.colour.g, &command.colour.b);
  SDL_GetTextureAlphaMod(texture, &command.colour.a);
  SDL_GetTextureBlendMode(texture, &command.blend);
  const bool unseen = command.changesNothing();
  if (unseen && !isNewlyUnseen(command)) return;
  TScaled* const scaled = mpTarget == mpPicture ? scaleBefore(command) : nullptr;
  if (!command.isTurned() && !keepInk(command.texture, command.source, command.destination)) return;
  if (unseen) return;
  if (scaled) scaled->isUsed = true;
  record(command);
}

// What fades in begins with a frame in which nothing is seen of it: there is time in it for what the next ones
// need.
bool TFramePicture::isNewlyUnseen(const TDrawCommand& c) {
  if (mScalesByParts || mpTarget != mpPicture) return false;
  const uint64_t number = mixed(0, c);
  if (mUnseen.size() < kUsualCommands) mUnseen.push_back(number);
  return std::find(mLastUnseen.begin(), mLastUnseen.end(), number) == mLastUnseen.end();
}

// Only where the result is the same, pixel for pixel. The result is where it has been scaled to, or null.
TFramePicture::TScaled* TFramePicture::scaleBefore(TDrawCommand& c) {
  constexpr int64_t large = 1 << 15;
  constexpr SDL_BlendMode blends = SDL_BLENDMODE_BLEND;
  const SDL_Rect& to = c.destination;
  SDL_ScaleMode mode = SDL_ScaleModeNearest;
  SDL_GetTextureScaleMode(c.texture, &mode);
  if (mScalesByParts || c.isTurned() || !c.isScaled() || c.blend != blends || mode == SDL_ScaleModeNearest ||
      int64_t{to.w} * to.h < large || !contains(mSize, to))
    return nullptr;
  Uint32 format = 0, ownFormat = 0;
  int access = 0, ownAccess = 0;
  SDL_QueryTexture(c.texture, &format, &access, nullptr, nullptr);
  // What has no pixels is scaled by SDL.
  if (access != SDL_TEXTUREACCESS_STREAMING) access = SDL_TEXTUREACCESS_TARGET;
  TScaled& taken = mScaled[SDL_ISPIXELFORMAT_ALPHA(format) ? 1 : 0];
  if (taken.isUsed) return nullptr;
  TTexturePtr& scaled = taken.texture;
  SDL_Rect size{0, 0, 0, 0};
  if (scaled) SDL_QueryTexture(scaled.get(), &ownFormat, &ownAccess, &size.w, &size.h);
  if (ownFormat != format || ownAccess != access || size.w != to.w || size.h != to.h) {
    scaled.reset(drawing::Create(mpRenderer, format, access, to.w, to.h));
    if (!scaled) return nullptr;
    SDL_SetTextureBlendMode(scaled.get(), blends);
  }
  TDrawCommand scaling = c;
  scaling.destination = {0, 0, to.w, to.h};
  scaling.colour = {255, 255, 255, 255};
  scaling.blend = SDL_BLENDMODE_NONE;
  const SDL_Rect ink = inkOfCopy(c.content, sizeOf(c.texture).h, c.source, scaling.destination);
  // Where a format has no alpha there are no soft edges either.
  const uint64_t content = (mixed(format, scaling) & ~kFactBits) |
                           (SDL_ISPIXELFORMAT_ALPHA(format) ? inkBits({ink.y, ink.y + ink.h}, to.h) : kOpaqueBit);
  if (contentOf(scaled.get()) != content) {
    if (!stretch(c.texture, c.source, scaled.get(), scaling.destination)) {
      if (access != SDL_TEXTUREACCESS_TARGET) return nullptr;
      SDL_SetRenderTarget(mpRenderer, scaled.get());
      issueCopy(mpRenderer, scaling);
    }
    setContent(scaled.get(), content);
    taken.framesUnused = 0;
  }
  c.texture = scaled.get();
  c.content = content;
  c.source = scaling.destination;
  return &taken;
}

bool TFramePicture::keeps(SDL_Texture* texture) {
  if (refersTo(mLayer, texture)) finishLayer();
  if (texture == mpTarget) setTarget(mpPicture);
  if (mCarriedOut || !refersTo(mFrame, texture)) return false;
  mDying.push_back(texture);
  return true;
}

void TFramePicture::record(const TDrawCommand& command) {
  if (mpTarget == mpPicture && !mCarriedOut) {
    mFrame.push_back(command);
  } else if (mpTarget && mpTarget != mpPicture) {
    mLayer.push_back(command);
  } else if (mpTarget == mpPicture && command.isClear()) {
    mClear = command;
    mClearDue = true;
  } else {
    clearIfSeen(&command);
    SDL_SetRenderTarget(mpRenderer, mpTarget);
    issue(command);
  }
}

// Clears the picture of a frame that is drawn as it comes, unless what comes next hides all of it.
void TFramePicture::clearIfSeen(const TDrawCommand* next) {
  if (!mClearDue) return;
  mClearDue = false;
  if (next && mpTarget == mpPicture && next->hides(mSize)) return;
  SDL_Color colour{};
  SDL_GetRenderDrawColor(mpRenderer, &colour.r, &colour.g, &colour.b, &colour.a);
  SDL_SetRenderTarget(mpRenderer, mpPicture);
  issue(mClear);
  SDL_SetRenderDrawColor(mpRenderer, colour.r, colour.g, colour.b, colour.a);
}

// A layer's content is told by what has been drawn into it since it was cleared; where it was not, by what it was
// before, too. So a layer that becomes what it is already is found by its number.
void TFramePicture::finishLayer() {
  if (mLayer.empty()) return;
  const bool cleared = mLayer.front().isClear();
  Uint32 format = 0;
  SDL_QueryTexture(mpTarget, &format, nullptr, nullptr, nullptr);
  uint64_t content = cleared ? mixed(format, pair(mTargetSize.w, mTargetSize.h)) : contentOf(mpTarget);
  for (const TDrawCommand& command : mLayer) content = mixed(content, command);
  content = (content & ~kFactBits) | layersInk();
  const bool opaque = std::any_of(mLayer.begin(), mLayer.end(), [this](const TDrawCommand& c) {
    return !c.isClear() && c.showsNothingBehind() && c.hides(mTargetSize);
  });
  if (opaque && mLayer.size() <= 2) content |= kOpaqueBit;
  if (content != contentOf(mpTarget)) {
    if (refersTo(mFrame, mpTarget)) carryOut();
    issueAll(mLayer, mpTarget);
    setContent(mpTarget, content);
  }
  mLayer.clear();
}

// The rows that have ink then, as facts of a content.
uint64_t TFramePicture::layersInk() const {
  TInk ink = inkOf(contentOf(mpTarget), mTargetSize.h);
  const auto add = [&ink, this](const SDL_Rect& rect) {
    const SDL_Rect rows = common(rect, mTargetSize);
    if (isEmpty(rows)) return;
    ink = ink.isNone() ? TInk{rows.y, rows.y + rows.h}
                       : TInk{std::min(ink.top, rows.y), std::max(ink.end, rows.y + rows.h)};
  };
  for (const TDrawCommand& c : mLayer)
    if (c.isClear())
      ink = c.colour.a == 0 ? TInk{0, 0} : TInk{0, mTargetSize.h};
    else
      add(c.isTurned() ? c.bounds() : inkOfCopy(c.content, sizeOf(c.texture).h, c.source, c.destination));
  return inkBits(ink, mTargetSize.h);
}

// What is drawn from here on sees textures that are no longer what they were.
void TFramePicture::carryOut() {
  if (mCarriedOut) return;
  mCarriedOut = true;
  issueAll(mFrame, mpPicture);
  mFrame.clear();
  destroyDying();
}

// Pairs the commands of both frames in their order. What is left over on either side is what has changed: outside
// of its bounds the same is drawn in the same order.
void TFramePicture::findChanges() {
  size_t oldEnd = mLastFrame.size(), newEnd = mFrame.size();
  while (oldEnd > 0 && newEnd > 0 && mLastFrame[oldEnd - 1].same(mFrame[newEnd - 1])) --oldEnd, --newEnd;
  size_t i = 0, j = 0;
  while (i < oldEnd || j < newEnd) {
    if (i < oldEnd && j < newEnd && mLastFrame[i].same(mFrame[j])) {
      ++i, ++j;
      continue;
    }
    size_t goneHere = std::min<size_t>(1, oldEnd - i), newHere = std::min<size_t>(1, newEnd - j);
    const auto meet = [&](size_t gone, size_t fresh) {
      return i + gone < oldEnd && j + fresh < newEnd && mLastFrame[i + gone].same(mFrame[j + fresh]);
    };
    bool met = false;
    for (size_t away = 1; away <= kReach && !met; ++away)
      for (size_t gone = 0; gone <= away && !met; ++gone)
        if (meet(gone, away - gone)) {
          met = true;
          goneHere = gone;
          newHere = away - gone;
        }
    for (; goneHere > 0; --goneHere) mChanged.add(mLastFrame[i++].bounds());
    for (; newHere > 0; --newHere) mChanged.add(mFrame[j++].bounds());
  }
  keepScaledWhole();
}

void TFramePicture::keepScaledWhole() {
  const auto cannotBeCut = [this](const TDrawCommand& c) {
    return !mScalesByParts && !c.isClear() && (c.isTurned() || c.isScaled());
  };
  for (bool again = true; again && !mChanged.isWhole();) {
    again = false;
    for (const TDrawCommand& command : mFrame) {
      const SDL_Rect bounds = common(command.bounds(), mSize);
      if (isEmpty(bounds)) continue;
      const auto cuts = [&bounds](const SDL_Rect& r) {
        return !isEmpty(common(r, bounds)) && !contains(r, bounds);
      };
      if (std::none_of(mChanged.rects().begin(), mChanged.rects().end(), cuts) || !cannotBeCut(command)) continue;
      mChanged.addUncut(bounds);
      again = true;
    }
  }
}

void TFramePicture::draw(const SDL_Rect& rect) {
  size_t first = mFrame.size();
  while (first > 0 && !mFrame[first - 1].hides(rect)) --first;
  if (first > 0) --first;
  const bool cut = !contains(rect, mSize);
  SDL_Color colour{};
  SDL_GetRenderDrawColor(mpRenderer, &colour.r, &colour.g, &colour.b, &colour.a);
  if (cut) SDL_RenderSetClipRect(mpRenderer, &rect);
  for (size_t i = first; i < mFrame.size(); ++i)
    if (!isEmpty(common(mFrame[i].bounds(), rect))) issue(mFrame[i]);
  if (cut) SDL_RenderSetClipRect(mpRenderer, nullptr);
  SDL_SetRenderDrawColor(mpRenderer, colour.r, colour.g, colour.b, colour.a);
}

// Leaves the texture as it was.
void TFramePicture::issue(const TDrawCommand& c) const {
  if (c.isClear()) {
    SDL_SetRenderDrawColor(mpRenderer, c.colour.r, c.colour.g, c.colour.b, c.colour.a);
    if (!SDL_RenderIsClipEnabled(mpRenderer)) {
      SDL_RenderClear(mpRenderer);
      return;
    }
    // SDL clears beyond the clip.
    SDL_BlendMode blend = SDL_BLENDMODE_NONE;
    SDL_GetRenderDrawBlendMode(mpRenderer, &blend);
    SDL_SetRenderDrawBlendMode(mpRenderer, SDL_BLENDMODE_NONE);
    SDL_RenderFillRect(mpRenderer, nullptr);
    SDL_SetRenderDrawBlendMode(mpRenderer, blend);
    return;
  }
  if (!drawOntoWindow(mpRenderer, c)) issueCopy(mpRenderer, c);
}

void TFramePicture::issueAll(const TCommands& commands, SDL_Texture* target) const {
  SDL_Color colour{};
  SDL_GetRenderDrawColor(mpRenderer, &colour.r, &colour.g, &colour.b, &colour.a);
  SDL_SetRenderTarget(mpRenderer, target);
  for (const TDrawCommand& command : commands) issue(command);
  SDL_SetRenderDrawColor(mpRenderer, colour.r, colour.g, colour.b, colour.a);
}

void TFramePicture::destroyDying() {
  for (SDL_Texture* texture : mDying) drawing::DestroyNow(texture);
  mDying.clear();
}

}  // namespace vendelo_sdl2
