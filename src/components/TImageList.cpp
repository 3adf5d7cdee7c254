#include "components/TImageList.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "components/SlideSupport.h"
#include "vendelo-sdl2/Drawing.h"
#include "vendelo-sdl2/MyUtils.h"
#include "vendelo-sdl2/TApplication.h"
#include "vendelo-sdl2/TTaskMan.h"

using namespace vendelo_sdl2;

TImageList::TImageList(SDL_Renderer* pRenderer, int x, int y, int w, int h, std::string ComponentName)
  : TGuiComponent(pRenderer, x, y, w, h, std::move(ComponentName)),
    current_image_index(-1),
    mTimeUntilHide(0),
    mDirection(LEFT),
    pAniTask(nullptr),
    mAnimationEnabled(false),
    mIsShowing(false),
    mAnimationDestRect{0, 0, 0, 0},
    mAnimationStartRect{0, 0, 0, 0},
    mpDataTexture(nullptr),
    mDataOffsetX(0),
    mDataOffsetY(0),
    mResizeFactorX(1.0f),
    mResizeFactorY(1.0f),
    pImages(&Images),
    mAlignment(ALEFT),
    mFitProportionally(false) {}

TImageList::~TImageList() {
  if (pApp) pApp->RemoveTimedTasksOf(this);
}

void TImageList::LoadImage(std::string imageName) {
  SDL_Renderer* renderer = GetRenderer();
  if (!renderer)
    std::printf("Component %s: The renderer was not yes set!!!\n", mName.c_str());
  else if (imageName.empty())
    std::printf("The image name is empy\n");
  else
    pImages->push_back(MyUtils::LoadTexture(renderer, imageName));
}

void TImageList::pushImage(SDL_Texture* image) { pImages->push_back(image); }

void TImageList::setImages(std::vector<SDL_Texture*>* images) { pImages = images ? images : &Images; }

std::vector<SDL_Texture*>* TImageList::getImages() const { return pImages; }

int TImageList::getCurrentImageIndex() const { return current_image_index; }

void TImageList::DisplayImage(int imageNumber, Uint32 time) {
  checkDrawThread();
  select(imageNumber, time, false, nullptr, 0, 0);
}

void TImageList::DisplayImage(int imageNumber, Uint32 time, SDL_Texture* data, int offset_x, int offset_y) {
  select(imageNumber, time, true, data, offset_x, offset_y);
}

void TImageList::select(int imageNumber, Uint32 time, bool withData, SDL_Texture* data, int offset_x,
                        int offset_y) {
  const int count = static_cast<int>(pImages->size());
  // An index equal to the count is let through: it clears the image.
  if (imageNumber > count || imageNumber == current_image_index) return;
  current_image_index = imageNumber;
  const bool found = imageNumber >= 0 && imageNumber < count;
  if (withData) {
    mpDataTexture = found ? data : nullptr;
    mDataOffsetX = found ? offset_x : 0;
    mDataOffsetY = found ? offset_y : 0;
  }
  if (!found) {
    mpTargetTexture = nullptr;
    return;
  }

  mpTargetTexture = (*pImages)[static_cast<size_t>(imageNumber)];
  mSrcRect.w = mSrcRect.h = 0;
  SDL_QueryTexture(mpTargetTexture, nullptr, nullptr, &mSrcRect.w, &mSrcRect.h);

  if (mAnimationEnabled && time > 0 && !(pAniTask && pAniTask->IsEnabled())) {
    mTimeUntilHide = time;
    mOrigPosX = mAnimationStartRect.x;
    mOrigPosY = mAnimationStartRect.y;
    mIsShowing = true;
    startAniTask();
  }
}

void TImageList::SetFitProportionally(bool fit, TImageList::TAlignment alignment) {
  mFitProportionally = fit;
  mAlignment = alignment;
}

void TImageList::SetAnimation(TAnimationDirection direction) {
  mAnimationEnabled = true;
  mDirection = direction;
  mAnimationDestRect = mDestRect;
  mAnimationStartRect = slide::startOf(static_cast<slide::Direction>(direction), mDestRect);
}

void TImageList::Hide() {
  if (!mAnimationEnabled) {
    TGuiComponent::Hide();
    return;
  }
  if (mDirection == LEFT || mDirection == RIGHT)
    mOrigPosX = mAnimationDestRect.x;
  else
    mOrigPosY = mAnimationDestRect.y;
  mIsShowing = false;
  startAniTask();
}

void TImageList::SetAnimationInterval(int interval) { mTimeUntilHide = static_cast<Uint32>(std::max(interval, 0)); }

void TImageList::SetResizeFactor(double x, double y) {
  mResizeFactorX = static_cast<float>(x);
  mResizeFactorY = static_cast<float>(y);
}

void TImageList::startAniTask() {
  if (pAniTask) {
    pAniTask->Enable();
  } else if (pApp) {
    pAniTask = pApp->AddTimedTask(
      new TtthMember<TImageList, void>(this, &TImageList::AnimateTask, 30, TTimedTaskHandler::ENDLESS,
                                       "TImageList::AnimateTask, 30"),
      TASK_DRAW);
  }
}

void TImageList::AnimateTask() {
  checkDrawThread();
  static const int num_pix = 5;
  SDL_Point goal{mAnimationDestRect.x, mAnimationDestRect.y};
  if (!mIsShowing) {
    // The data texture hangs out of the image, so a horizontal slide must go further for all of it to leave.
    int dataWidth = 0;
    SDL_QueryTexture(mpDataTexture, nullptr, nullptr, &dataWidth, nullptr);
    goal = {mAnimationStartRect.x - mDataOffsetX - (mDirection == RIGHT ? dataWidth : 0), mAnimationStartRect.y};
  }
  if (!slide::step(static_cast<slide::Direction>(mDirection), mIsShowing, num_pix, goal, mOrigPosX, mOrigPosY))
    return;
  if (pAniTask) pAniTask->Disable();
  if (!mIsShowing) {
    DisplayImage(-1, 0, nullptr, 0, 0);
  } else if (pApp) {
    pApp->AddTimedTask(
      new TtthMember<TImageList, void>(this, &TImageList::Hide, mTimeUntilHide, TTimedTaskHandler::EXECUTE_ONCE,
                                       "TImageList::Hide, mTimeUntilHide"),
      TASK_NORMAL);
  }
}

void TImageList::draw() {
  try {
    drawImage();
  } catch (...) {
  }
}

void TImageList::drawImage() {
  if (mpParent) {
    // The place takes the X factor in both directions: as designed.
    mDestRect.x = static_cast<int>(static_cast<float>(mOrigPosX) * mResizeFactorX + mpParent->getX());
    mDestRect.y = static_cast<int>(static_cast<float>(mOrigPosY) * mResizeFactorX + mpParent->getY());
  }
  SDL_Rect destRect = mDestRect;
  if (mFitProportionally) {
    const int lw = mDestRect.w, lh = mDestRect.h;
    float w = static_cast<float>(mSrcRect.w), h = static_cast<float>(mSrcRect.h);
    float scale = 1.0f;
    if (w > 0) scale = std::min(scale, static_cast<float>(lw) / w);
    if (h > 0) scale = std::min(scale, static_cast<float>(lh) / h);
    destRect.w = static_cast<int>(roundf(w * scale));
    destRect.h = static_cast<int>(roundf(h * scale));
    if (mAlignment == ARIGHT) destRect.x += lw - destRect.w;
    if (mAlignment == ADOWN) destRect.y += lh - destRect.h;
  }
  destRect.w = static_cast<int>(roundf(static_cast<float>(destRect.w) * mResizeFactorX));
  destRect.h = static_cast<int>(roundf(static_cast<float>(destRect.h) * mResizeFactorY));

  SDL_Renderer* renderer = GetRenderer();
  const Uint8 alpha = static_cast<Uint8>(mAlpha);
  if (mpDataTexture) {
    SDL_SetTextureAlphaMod(mpDataTexture, alpha);
    SDL_Rect dataDestRect{destRect.x + mDataOffsetX, destRect.y + mDataOffsetY, 0, 0};
    SDL_QueryTexture(mpDataTexture, nullptr, nullptr, &dataDestRect.w, &dataDestRect.h);
    drawing::Copy(renderer, mpDataTexture, nullptr, &dataDestRect);
  }
  if (mpTargetTexture) {
    SDL_SetTextureAlphaMod(mpTargetTexture, alpha);
    if (0.0 >= mAngle)
      drawing::Copy(renderer, mpTargetTexture, &mSrcRect, &destRect);
    else
      drawing::CopyEx(renderer, mpTargetTexture, &mSrcRect, &destRect, mAngle, nullptr, SDL_FLIP_NONE);
  }
}
