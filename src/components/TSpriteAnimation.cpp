#include "components/TSpriteAnimation.h"

#include <algorithm>
#include <cmath>

#include "vendelo-sdl2/Drawing.h"
#include "vendelo-sdl2/PictureFormat.h"
#include "vendelo-sdl2/Saturate.h"
#include "vendelo-sdl2/TAppGuiModule.h"
#include "vendelo-sdl2/TRenderGuard.h"
#include "vendelo-sdl2/Ticks.h"

using namespace vendelo_sdl2;

namespace {

bool isFullScreen(const TSprite& sprite) { return sprite.width == 1920 && sprite.height == 1080; }

SDL_BlendMode blendModeOf(const std::string& name) {
  if (name == "BLEND") return SDL_BLENDMODE_BLEND;
  if (name == "ADD") return SDL_BLENDMODE_ADD;
  if (name == "MOD") return SDL_BLENDMODE_MOD;
  return SDL_BLENDMODE_NONE;
}

void freeSurface(TSprite& sprite) { SDL_FreeSurface(sprite.surface.exchange(nullptr, std::memory_order_acq_rel)); }

// No count of frames goes farther.
constexpr int kFarFrame = 1000000000;

int rounded(double value) { return MyUtils::toPixels(roundf(static_cast<float>(value))); }

}  // namespace

TSprite::~TSprite() { freeSurface(*this); }

TSpriteAnimation::TSpriteAnimation(SDL_Renderer* pRenderer, int x, int y, int width, int height,
                                   const std::string& spriteFilename, TAnimationMode mode,
                                   std::string ComponentName)
  : TGuiComponent(pRenderer, x, y, width, height, std::move(ComponentName)),
    mRect{x, y, width, height},
    mAnimationMode(mode),
    mBlendMode("BLEND"),
    mDrawXOfset(0),
    mDrawYOfset(0),
    mRotPivot{-1, -1},
    mResizeFactorX(1.0),
    mResizeFactorY(1.0),
    mResize(false),
    mPlayed(false),
    mHideAfterEnd(false),
    mLastRefresh(0),
    mRefreshRate(23.809525f),
    mBuffer(0),
    mCurrentFrame(0),
    mDestinationFrame(0),
    mLoopStartFrame(0),
    mLoopStopFrame(0),
    mOriginalWidth(0),
    mOriginalHeight(0),
    mBackgroundColor{0, 0, 0, 255},
    mLoadThread(nullptr),
    mLoadFinished(SDL_CreateSemaphore(0)) {
  if (!spriteFilename.empty()) {
    if (spriteFilename.find(".png") != std::string::npos)
      parsePNG(spriteFilename);
    else
      parseXML(spriteFilename + ".xml");
  }
  mLoopStartFrame = 0;
  mLoopStopFrame = GetNumFrames() - 1;
  mDestinationFrame = 0;
}

TSpriteAnimation::~TSpriteAnimation() {
  joinLoader();
  showFullScreen(nullptr);
  SDL_DestroySemaphore(mLoadFinished);
  mSprites.clear();
}

void TSpriteAnimation::joinLoader() {
  if (mLoadThread) SDL_WaitThread(mLoadThread, nullptr);
  mLoadThread = nullptr;
}

void TSpriteAnimation::CopyData(TSpriteAnimation* source) {
  joinLoader();
  if (!source) return;
  showFullScreen(nullptr);
  mSprites = source->mSprites;
  mOriginalWidth = source->mOriginalWidth;
  mOriginalHeight = source->mOriginalHeight;
  mLoopStartFrame = source->mLoopStartFrame;
  mLoopStopFrame = source->mLoopStopFrame;
  mBlendMode = source->mBlendMode;
}

bool TSpriteAnimation::validFrame(int frame) const { return frame >= 0 && frame < GetNumFrames(); }

void TSpriteAnimation::SetFrame(int frame, bool animate) {
  joinLoader();
  frame = std::max(0, std::min(frame, GetNumFrames() - 1));
  mDestinationFrame = frame;
  if (!animate) mCurrentFrame = frame;
}

void TSpriteAnimation::SetFrame(float percentOfAnimation, bool animate) {
  joinLoader();
  SetFrame(rounded(percentOfAnimation * static_cast<float>(GetNumFrames() - 1)), animate);
}

void TSpriteAnimation::ResetAnimation() { ResetAnimation(0); }

void TSpriteAnimation::ResetAnimation(Uint32 lastRefresh) {
  mCurrentFrame = 0;
  mLastRefresh = lastRefresh;
  mResizeFactorX = 1.0;
  mResizeFactorY = 1.0;
  mPlayed = false;
  mBuffer = 0;
}

bool TSpriteAnimation::FinishPlaying() const { return mPlayed && mAnimationMode != LOOP; }

void TSpriteAnimation::SetOffset(int x, int y) {
  mDrawXOfset = x;
  mDrawYOfset = y;
}
void TSpriteAnimation::SetResizeFactor(double x, double y) {
  mResizeFactorX = x;
  mResizeFactorY = y;
}
void TSpriteAnimation::SetRefreshRate(float rate) { mRefreshRate = rate; }
void TSpriteAnimation::SetLoopStartFrame(int frame) { mLoopStartFrame = frame; }
void TSpriteAnimation::SetLoopStopFrame(int frame) { mLoopStopFrame = frame; }
void TSpriteAnimation::HideAfterEnd() { mHideAfterEnd = true; }
bool TSpriteAnimation::IsVisible() const { return mVisible; }
int TSpriteAnimation::GetNumFrames() const { return static_cast<int>(mSprites.size()); }
int TSpriteAnimation::GetCurrentFrame() const { return mCurrentFrame; }
int TSpriteAnimation::GetOriginalWidth() const { return mOriginalWidth; }
int TSpriteAnimation::GetOriginalHeight() const { return mOriginalHeight; }
void TSpriteAnimation::SetPos(int x, int y) {
  setX(x);
  setY(y);
}
void TSpriteAnimation::ReverseOrder() {
  joinLoader();
  std::reverse(mSprites.begin(), mSprites.end());
}

void TSpriteAnimation::stepFrames(Uint32 now) {
  const float millisecondsElapsed = static_cast<float>(now - mLastRefresh);
  const float framesElapsed = millisecondsElapsed / 1000.0f * mRefreshRate + mBuffer;
  const float wholeFrames = std::floor(framesElapsed);
  mBuffer = framesElapsed - wholeFrames;
  mLastRefresh = MyUtils::startTick(now);
  if (!(wholeFrames > 0.0f)) return;
  const int wholeFramesElapsed = static_cast<int>(std::min(wholeFrames, static_cast<float>(kFarFrame)));

  if (mAnimationMode == NONE) {
    const int way = std::clamp(mDestinationFrame - mCurrentFrame, -wholeFramesElapsed, wholeFramesElapsed);
    mCurrentFrame += way;
    return;
  }
  // Marks that leave the loop no frame let it count on and on.
  mCurrentFrame = std::min(mCurrentFrame, kFarFrame) + wholeFramesElapsed;
  if (mCurrentFrame > GetNumFrames() - 1 && !mPlayed) {
    mPlayed = true;
    if (mAnimationMode == LOOP) mCurrentFrame = mCurrentFrame - GetNumFrames() + mLoopStopFrame;
  }
  const int span = mLoopStopFrame - mLoopStartFrame + 1;
  if (mAnimationMode == LOOP && mPlayed && span > 0)
    mCurrentFrame = mLoopStartFrame + (mCurrentFrame - mLoopStartFrame) % span;
}

SDL_Texture* TSpriteAnimation::textureOf(TSprite& sprite, bool keepsSurface) const {
  TSprite& holder = sprite.same ? *sprite.same : sprite;
  SDL_Surface* const surface = holder.surface.load(std::memory_order_acquire);
  if (!holder.texture && surface) {
    holder.texture = MyUtils::TextureOf(GetRenderer(), surface);
    if (holder.texture) SDL_SetTextureBlendMode(holder.texture.get(), blendModeOf(mBlendMode));
  }
  if (holder.texture && !keepsSurface) freeSurface(holder);
  return holder.texture.get();
}

void TSpriteAnimation::showFullScreen(const std::shared_ptr<TSprite>& sprite) {
  if (mpFullScreen == sprite) return;
  if (mpFullScreen && mpFullScreen->surface.load(std::memory_order_acquire)) mpFullScreen->texture.reset();
  mpFullScreen = sprite;
}

void TSpriteAnimation::draw() {
  if (mLoadThread) {
    if (SDL_SemTryWait(mLoadFinished) != 0) return;
    joinLoader();
  }
  const Uint32 now = SDL_GetTicks();
  if (mLastRefresh == 0) mLastRefresh = now;
  SDL_Rect destRect = mDestRect;
  if (mpParent) {
    destRect.x = MyUtils::toPixels(mOrigPosX * mResizeFactorX + mpParent->getX());
    destRect.y = MyUtils::toPixels(mOrigPosY * mResizeFactorY + mpParent->getY());
  }
  if (FinishPlaying() || mSprites.empty()) return showFullScreen(nullptr);
  stepFrames(now);

  if (validFrame(mCurrentFrame) && mSprites[static_cast<size_t>(mCurrentFrame)]) {
    const std::shared_ptr<TSprite>& sprite = mSprites[static_cast<size_t>(mCurrentFrame)];
    const bool keepsSurface = isFullScreen(*sprite) && MyUtils::HasTextureMemory(GetRenderer());
    showFullScreen(keepsSurface ? (sprite->same ? sprite->same : sprite) : nullptr);
    if (SDL_Texture* texture = textureOf(*sprite, keepsSurface)) drawSprite(*sprite, texture, destRect);
  }
  if (mAnimationMode == ONCE && mCurrentFrame + 1 > GetNumFrames() - 1) mPlayed = true;
  if (!mHideAfterEnd || !FinishPlaying()) return;
  mVisible = false;
  showFullScreen(nullptr);
}

void TSpriteAnimation::drawSprite(const TSprite& sprite, SDL_Texture* texture, SDL_Rect destRect) {
  if (mDestRect.w < sprite.original_width) destRect.x -= (sprite.original_width - mDestRect.w) / 2;
  if (mDestRect.h < sprite.original_height) destRect.y -= (sprite.original_height - mDestRect.h) / 2;
  if (mpParent) {
    destRect.x += rounded(sprite.xoffset * mResizeFactorX) + mDrawXOfset;
    destRect.y += rounded(sprite.yoffset * mResizeFactorY) + mDrawYOfset;
  } else {
    destRect.x = rounded((destRect.x + sprite.xoffset) * mResizeFactorX) + mDrawXOfset;
    destRect.y = rounded((destRect.y + sprite.yoffset) * mResizeFactorY) + mDrawYOfset;
  }
  destRect.w = rounded(sprite.width * mResizeFactorX);
  destRect.h = rounded(sprite.height * mResizeFactorY);
  if (mBlendMode != "NONE") SDL_SetTextureAlphaMod(texture, static_cast<Uint8>(mAlpha));
  SDL_Renderer* renderer = GetRenderer();
  if (mAngle > 0.0) {
    mRotPivot = SDL_Point{destRect.w / 2, destRect.h};
    const bool pivot = mRotPivot.x >= 0 && mRotPivot.y >= 0;
    drawing::CopyEx(renderer, texture, nullptr, &destRect, mAngle, pivot ? &mRotPivot : nullptr, SDL_FLIP_NONE);
  } else {
    drawing::Copy(renderer, texture, nullptr, &destRect);
  }
}

void TSpriteAnimation::drawFrame(int frame_id, SDL_Rect destRect) {
  if (!mVisible) return;
  joinLoader();
  if (!validFrame(frame_id)) return;
  TSprite& sprite = *mSprites[static_cast<size_t>(frame_id)];
  if (SDL_Texture* texture = textureOf(sprite, false)) drawSprite(sprite, texture, destRect);
}

SDL_Texture* TSpriteAnimation::GetFrame(int frame_id) {
  joinLoader();
  SDL_Renderer* renderer = GetRenderer();
  if (!validFrame(frame_id) || !renderer) return nullptr;
  TSprite& sprite = *mSprites[static_cast<size_t>(frame_id)];
  const SDL_Color& back = mBackgroundColor;
  SDL_Texture* layer = TAppGuiModule::CreateLayer(nullptr, sprite.original_width, sprite.original_height, 0, back.r,
                                                  back.g, back.b, 16);
  if (!layer) return nullptr;
  TRenderGuard guard(renderer);
  guard.target(layer);
  guard.clear(back.r, back.g, back.b, 0);  // transparent whatever colour the frame drawn so far has left

  if (SDL_Texture* texture = textureOf(sprite, false)) {
    const SDL_Rect place{sprite.xoffset, sprite.yoffset, sprite.width, sprite.height};
    if (sprite.rotate)
      drawing::CopyEx(renderer, texture, nullptr, &place, 90.0, nullptr, SDL_FLIP_NONE);
    else
      drawing::Copy(renderer, texture, nullptr, &place);
  }
  return layer;
}
