#include "components/TProgressBar.h"

#include <algorithm>
#include <limits>

#include "vendelo-sdl2/Drawing.h"
#include "vendelo-sdl2/MyUtils.h"

using namespace vendelo_sdl2;

namespace {
const int unset = std::numeric_limits<int>::min();
const int runToLeft = 1;
const int runToRight = 2;
}  // namespace

struct TProgressBar::Part {
  SDL_Texture* texture;
  SDL_Rect& source;
  SDL_Rect& output;
};

TProgressBar::TProgressBar(SDL_Renderer* Render, int x, int y, int width, int height, std::string ComponentName)
  : TGuiComponent(Render, x, y, width, height, std::move(ComponentName)),
    blinkTreshold(0),
    AnimateFullUp(true),
    widthON(0),
    blikTimestamp(0),
    _blinkParameter(true),
    mStep(0),
    mCurrentPos(0),
    mTargetPos(100),
    Orientation(runToRight),
    mTextureBarW(0),
    mTextureBarH(0),
    SourceRectEmpty{0, 0, 0, 0},
    OutputRectEmpty{x, y, width, height},
    SourceRectFull{0, 0, 0, 0},
    OutputRectFull{x, y, width, height},
    mPrevX(unset),
    mPrevY(unset) {}

TProgressBar::~TProgressBar() = default;

void TProgressBar::SetEmptyImage(std::string file) {
  mpEmptyImage.reset(MyUtils::LoadTexture(GetRenderer(), file));
}

void TProgressBar::SetFullImage(std::string file) { SetFullImage(MyUtils::LoadTexture(GetRenderer(), file)); }

void TProgressBar::SetFullImage(SDL_Texture* texture) {
  if (mpFullImage.get() != texture) mpFullImage.reset(texture);
  SDL_QueryTexture(texture, nullptr, nullptr, &mTextureBarW, &mTextureBarH);
}

void TProgressBar::SetPosition(int iPosition, bool Animate) {
  if (!Animate) {
    // The target stays: the next frames run back to it.
    mCurrentPos = iPosition;
    return;
  }
  mTargetPos = std::clamp(iPosition, 0, 100);
  if (!AnimateFullUp && mCurrentPos == 0.0) mCurrentPos = mTargetPos;
}

void TProgressBar::SetMax(int) {}

void TProgressBar::SetRunToLeft() { Orientation = runToLeft; }

void TProgressBar::SetRunToRight() { Orientation = runToRight; }

void TProgressBar::AnimateTask() {
  mStep = (mTargetPos - mCurrentPos) / 25.0;
  const Uint32 now = SDL_GetTicks();
  if (blinkTreshold != 0 && mTargetPos <= blinkTreshold && now - blikTimestamp >= 10) {
    _blinkParameter = !_blinkParameter;
    blikTimestamp = now;
  } else {
    _blinkParameter = true;
  }
  mCurrentPos += mStep;  // a part of the way: it does not overshoot
}

void TProgressBar::draw() {
  AnimateTask();
  widthON = mTextureBarW;
  if (mCurrentPos <= 99.0)
    widthON = std::clamp(static_cast<int>(mCurrentPos * mTextureBarW / 100.0), 0, mTextureBarW);

  TGuiComponent* const place = mpParent ? mpParent : this;
  const int x = place->getX(), y = place->getY();
  if (mPrevX == unset) {
    mPrevX = x;
    mPrevY = y;
  }
  if (mpEmptyImage || mpFullImage) {
    const Part empty{mpEmptyImage.get(), SourceRectEmpty, OutputRectEmpty};
    const Part full{mpFullImage.get(), SourceRectFull, OutputRectFull};
    if (Orientation == runToRight) drawParts(empty, full, x - mPrevX, y - mPrevY);
    if (Orientation == runToLeft) drawParts(full, empty, x - mPrevX, y - mPrevY);
  }
  mPrevX = x;
  mPrevY = y;
}

void TProgressBar::drawParts(const Part& leading, const Part& following, int shiftX, int shiftY) {
  SDL_Renderer* renderer = GetRenderer();
  const int r = static_cast<int>(mTextureBarW * (100.0 - mCurrentPos) / 100.0);
  leading.source = SDL_Rect{0, 0, r, mTextureBarH};
  leading.output = SDL_Rect{leading.output.x + shiftX, leading.output.y + shiftY, r, mTextureBarH};
  following.source = SDL_Rect{r, 0, mTextureBarW - r, mTextureBarH};
  following.output =
    SDL_Rect{leading.output.x + leading.output.w, leading.output.y, mTextureBarW - r, mTextureBarH};
  for (const Part* part : {&leading, &following}) {
    if (!part->texture) continue;
    SDL_SetTextureAlphaMod(part->texture, static_cast<Uint8>(mAlpha));
    drawing::Copy(renderer, part->texture, &part->source, &part->output);
  }
}
