#include "components/TScrollingComponent.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>

#include "vendelo-sdl2/Drawing.h"
#include "vendelo-sdl2/Saturate.h"
#include "vendelo-sdl2/TAppGuiModule.h"
#include "vendelo-sdl2/TDirtyRects.h"
#include "vendelo-sdl2/TRenderGuard.h"
#include "vendelo-sdl2/Ticks.h"

using namespace vendelo_sdl2;

namespace {
float defaultMovementFunction(float t, float) { return t; }

// Milliseconds, within what can be multiplied by a width and added up: some thirty years.
long duration(float milliseconds) {
  constexpr float longest = 1e12f;
  return MyUtils::saturated<long>(std::clamp(roundf(milliseconds), -longest, longest));
}
}  // namespace

TScrollingComponent::TScrollingComponent(SDL_Renderer* pRenderer, int x, int y, int width, int height,
                                         std::string ComponentName)
  : TGuiComponent(pRenderer, x, y, width, height, std::move(ComponentName)),
    mSpacing(100.0f),
    mIsRelativeSpacing(false),
    mPadding(0),
    mScrollDuration(1000),
    mWaitDuration(0),
    mWaitChange(0),
    mWaitChangeAt(0),
    mFirstDraw(0),
    fMovementFunction(defaultMovementFunction),
    mpStrip(TAppGuiModule::CreateLayer(nullptr, width, height, 0, 0, 0, 0, 32)) {
  mpTargetTexture = mpStrip.get();
}

TScrollingComponent::~TScrollingComponent() = default;

void TScrollingComponent::AddContent(TGuiComponent* content, int index, ContentAlign alignment) {
  if (!AddComponent(content)) return;
  content->setParent(nullptr);
  const Content entry{content, alignment};
  if (index >= 0 && index < NumberOfChildren())
    mpContent.insert(mpContent.begin() + index, entry);
  else
    mpContent.push_back(entry);
}

void TScrollingComponent::RemoveAllContents() {
  for (const Content& content : mpContent) RemoveComponent(content.component, true);
  mpContent.clear();
  mSlides.clear();
}

TGuiComponent* TScrollingComponent::ContentAt(int index) const {
  return index >= 0 && index < NumberOfChildren() ? mpContent[static_cast<size_t>(index)].component : nullptr;
}

int TScrollingComponent::NumberOfChildren() const { return static_cast<int>(mpContent.size()); }

void TScrollingComponent::SetScrollSpeedRelative(float speed) {
  const float milliseconds = 100000.0f / speed;
  mScrollDuration = std::isfinite(milliseconds) ? duration(milliseconds) : 0;
}

void TScrollingComponent::SetScrollSpeedFixed(float speed) {
  SetScrollSpeedRelative(100.0f * speed / static_cast<float>(mDestRect.w));
}

void TScrollingComponent::SetSpacingFixed(float spacing) {
  mSpacing = spacing;
  mIsRelativeSpacing = false;
}

void TScrollingComponent::SetSpacingRelative(float spacing) {
  mSpacing = spacing;
  mIsRelativeSpacing = true;
}

void TScrollingComponent::SetPadding(int padding) { mPadding = padding; }

void TScrollingComponent::SetMovementFunction(float (*function)(float, float)) {
  fMovementFunction = function ? function : defaultMovementFunction;
}

void TScrollingComponent::SetVisible(bool visible) {
  for (const Content& content : mpContent) content.component->_setVisible(visible);
  _setVisible(visible);
}

void TScrollingComponent::SetWaitDuration(float seconds) {
  const long milliseconds = duration(1000.0f * seconds);
  if (mpContent.empty()) {
    mWaitDuration = milliseconds;
    mWaitChange = -1;
    mWaitChangeAt = 0;
    return;
  }
  const long wanted = seconds < 0.0f ? -1 : milliseconds;
  if (mFirstDraw == 0) {
    mWaitDuration = wanted;
    return;
  }
  // The loop's length here: without the spacing and in whole numbers, unlike in draw. Required as it is.
  long total = 0;
  for (const Content& content : mpContent) {
    total += mWaitDuration;
    if (mDestRect.w != 0) total += content.component->getWidth() * std::labs(mScrollDuration) / mDestRect.w;
  }
  const Uint32 now = SDL_GetTicks();
  if (total <= 0) {
    mWaitDuration = wanted;
    mWaitChange = 0;
    mWaitChangeAt = 0;
    mFirstDraw = MyUtils::startTick(now);
    return;
  }
  const uint64_t loop = static_cast<uint64_t>(total);
  const uint64_t iteration = elapsedAt(now) / loop;
  mWaitChangeAt = MyUtils::startTick(mFirstDraw + static_cast<Uint32>((iteration + 1) * loop));
  mWaitChange = wanted;
}

double TScrollingComponent::currentSpacing() const {
  return mIsRelativeSpacing ? mSpacing * static_cast<double>(mDestRect.w) * 0.01 : static_cast<double>(mSpacing);
}

uint64_t TScrollingComponent::elapsedAt(Uint32 now) const {
  const Uint32 step = now - mSeenAt;
  const bool goesOn = mSeenFirstDraw == mFirstDraw && static_cast<Sint32>(step) >= 0;
  return goesOn ? mSeenElapsed + step : now - mFirstDraw;
}

double TScrollingComponent::slideOffset(Uint32 now) const {
  if (mWaitDuration < 0) return 0.0;
  const double width = mDestRect.w;
  const double spacing = currentSpacing();
  const double duration = static_cast<double>(std::labs(mScrollDuration));
  const double wait = static_cast<double>(mWaitDuration);
  if (width <= 0.0 || duration <= 0.0) return 0.0;

  double totalLoopDuration = 0.0;
  for (const Content& content : mpContent)
    totalLoopDuration += wait + (content.component->getWidth() + spacing) * duration / width;
  if (!(totalLoopDuration > 0.0)) return 0.0;

  const double elapsed = std::fmod(static_cast<double>(elapsedAt(now)), totalLoopDuration);
  double offset = 0.0;
  int64_t mWaitStart = 0;
  for (const Content& content : mpContent) {
    const double thisElementWidth = content.component->getWidth() + spacing;
    const double thisElementScrollDuration = duration * thisElementWidth / width;
    const double inElement = elapsed - static_cast<double>(mWaitStart);
    if (wait + thisElementScrollDuration > inElement) {
      if (inElement > wait) {
        const double t = (inElement - wait) / thisElementScrollDuration;
        offset +=
          thisElementWidth *
          fMovementFunction(static_cast<float>(t), static_cast<float>(std::abs(0.001 * thisElementScrollDuration)));
      }
      break;
    }
    offset += thisElementWidth;
    mWaitStart = MyUtils::saturated<int64_t>(static_cast<double>(mWaitStart) + wait + thisElementScrollDuration);
  }
  return mScrollDuration < 0 ? -offset : offset;
}

void TScrollingComponent::draw() {
  if (mpContent.empty()) return;
  SDL_Rect destRect = mDestRect;
  if (mpParent) {
    destRect.x = mOrigPosX + mpParent->getX();
    destRect.y = mOrigPosY + mpParent->getY();
  }
  const Uint32 now = SDL_GetTicks();
  if (mFirstDraw == 0) mFirstDraw = MyUtils::startTick(now);
  if (mWaitChangeAt != 0 && static_cast<Sint32>(now - mWaitChangeAt) >= 0) {
    mFirstDraw = mWaitChangeAt;
    mWaitDuration = mWaitChange;
    mWaitChange = 0;
    mWaitChangeAt = 0;
  }
  mSeenElapsed = elapsedAt(now);
  mSeenFirstDraw = mFirstDraw;
  mSeenAt = now;
  const double slid = slideOffset(now);
  const double offset = (std::isfinite(slid) ? slid : 0.0) + mPadding;

  if (!GetRenderer() || !mpTargetTexture) return;
  if (hasSlides())
    drawSlides(offset, destRect);
  else
    drawStrip(offset, destRect);
}

void TScrollingComponent::OnTexturesLost() {
  mSlides.clear();
  TGuiComponent::OnTexturesLost();
}

template <class Visit>
void TScrollingComponent::walkStrip(double offset, Visit visit) {
  const int width = mDestRect.w, height = mDestRect.h;
  const double spacing = currentSpacing();
  size_t childI = 0;
  int posX = MyUtils::toPixels(roundf(static_cast<float>(offset)));
  int roundStart = posX;
  while (posX < width) {
    const Content& content = mpContent[childI];
    TGuiComponent* child = content.component;
    const int elementWidth = child->getWidth();
    if (posX + elementWidth > 0) {
      child->setX(posX);
      int posY = 0;
      if (content.alignment == CENTER) posY = (height - child->getHeight()) / 2;
      if (content.alignment == BOTTOM) posY = height - child->getHeight();
      child->setY(posY);
      visit(child, SDL_Rect{posX, posY, elementWidth, child->getHeight()});
    }
    posX = MyUtils::toPixels(posX + elementWidth + spacing);
    childI = (childI + 1) % mpContent.size();
    if (childI != 0) continue;
    if (posX <= roundStart) return;  // a whole round that does not advance would never reach the end
    roundStart = posX;
  }
}

void TScrollingComponent::drawStrip(double offset, const SDL_Rect& destRect) {
  SDL_Renderer* renderer = GetRenderer();
  {
    TRenderGuard guard(renderer);
    guard.target(mpTargetTexture);
    guard.clear(0, 0, 0, 0);
    walkStrip(offset, [](TGuiComponent* child, const SDL_Rect&) { child->draw(); });
  }
  SDL_SetTextureAlphaMod(mpTargetTexture, static_cast<Uint8>(mAlpha & 255));
  drawing::Copy(renderer, mpTargetTexture, nullptr, &destRect);
}

void TScrollingComponent::drawSlides(double offset, const SDL_Rect& destRect) {
  SDL_Renderer* renderer = GetRenderer();
  const SDL_Rect window{0, 0, mDestRect.w, mDestRect.h};
  walkStrip(offset, [&](TGuiComponent* child, const SDL_Rect& place) {
    SDL_Texture* slide = slideOf(child);
    {
      TRenderGuard guard(renderer);
      guard.target(slide);
      guard.clear(0, 0, 0, 0);
      guard.origin(-place.x, -place.y);
      child->draw();
    }
    SDL_SetTextureAlphaMod(slide, static_cast<Uint8>(mAlpha & 255));
    const SDL_Rect seen = common(place, window);
    const SDL_Rect source{seen.x - place.x, seen.y - place.y, seen.w, seen.h};
    const SDL_Rect to{destRect.x + seen.x, destRect.y + seen.y, seen.w, seen.h};
    if (!isEmpty(seen)) drawing::Copy(renderer, slide, &source, &to);
  });
}

bool TScrollingComponent::hasSlides() {
  constexpr int widest = 8192;  // textures of more are not for every driver
  SDL_BlendMode blend = SDL_BLENDMODE_INVALID;
  int w = 0, h = 0;
  SDL_GetTextureBlendMode(mpTargetTexture, &blend);
  SDL_QueryTexture(mpTargetTexture, nullptr, nullptr, &w, &h);
  const bool isOwnStrip = mpTargetTexture == mpStrip.get() && w == mDestRect.w && h == mDestRect.h;
  if (!isOwnStrip || blend != SDL_BLENDMODE_BLEND || currentSpacing() < 0.0) return false;
  return std::all_of(mpContent.begin(), mpContent.end(), [this](const Content& content) {
    TGuiComponent& child = *content.component;
    const bool hasSize = child.getWidth() > 0 && child.getWidth() <= widest && child.getHeight() > 0;
    return hasSize && child.staysInside() && slideOf(&child);
  });
}

SDL_Texture* TScrollingComponent::slideOf(TGuiComponent* child) {
  const SDL_Point size{child->getWidth(), child->getHeight()};
  auto slide = std::find_if(mSlides.begin(), mSlides.end(), [child](const Slide& s) { return s.child == child; });
  if (slide == mSlides.end()) slide = mSlides.insert(slide, Slide{child, {0, 0}, nullptr});
  if (!slide->layer || slide->size.x != size.x || slide->size.y != size.y) {
    slide->layer.reset(TAppGuiModule::CreateLayer(nullptr, size.x, size.y, 0, 0, 0, 0, 32));
    slide->size = size;
  }
  return slide->layer.get();
}
