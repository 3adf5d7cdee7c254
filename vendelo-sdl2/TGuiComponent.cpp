#include "vendelo-sdl2/TGuiComponent.h"

#include <cstdio>
#include <utility>

#include "vendelo-sdl2/Drawing.h"
#include "vendelo-sdl2/TAppGuiModule.h"
#include "vendelo-sdl2/TApplication.h"
#include "vendelo-sdl2/TLogManager.h"

namespace vendelo_sdl2 {
namespace {

constexpr long kFadeMs = 500;

// By the toolkit's number of a blend mode.
constexpr SDL_BlendMode kBlendModes[] = {SDL_BLENDMODE_NONE, SDL_BLENDMODE_BLEND, SDL_BLENDMODE_ADD,
                                         SDL_BLENDMODE_MOD};
constexpr int kBlendModeCount = 4;

}  // namespace

// A child's own alpha, kept while its parent draws it with the multiplied one. The child may leave its parent in
// its draw, or die: only then nothing is put back.
struct TGuiComponent::OwnAlpha {
  explicit OwnAlpha(TGuiComponent* child) : mpChild(child), mValue(child->alpha()), mpOuter(child->mpOwnAlpha) {
    child->mpOwnAlpha = this;
  }
  ~OwnAlpha() {
    if (mpChild) mpChild->mpOwnAlpha = mpOuter;
  }
  OwnAlpha(const OwnAlpha&) = delete;
  OwnAlpha& operator=(const OwnAlpha&) = delete;

  void putBack() {
    if (mpChild) mpChild->setAlpha(mValue);
  }

  TGuiComponent* mpChild;  // null once it is gone
  int mValue;
  OwnAlpha* mpOuter;
};

TGuiComponent::TGuiComponent(SDL_Renderer*, int x, int y, int w, int h, std::string ComponentName)
  : mOrigPosX(x),
    mOrigPosY(y),
    mFadeAnimation(0.0f, 255.0f, kFadeMs, AT_LINEAR),
    mSrcRect{0, 0, w, h},
    mDestRect{x, y, w, h},
    mDestPosX(x),
    mDestPosY(y),
    mName(std::move(ComponentName)) {}

TGuiComponent::~TGuiComponent() {
  for (OwnAlpha* own = mpOwnAlpha; own; own = own->mpOuter) own->mpChild = nullptr;
  GuiComponentList.clear();
}

int TGuiComponent::load() { return 0; }

void TGuiComponent::draw() {
  try {
    if (mpParent) {
      mDestRect.x = mOrigPosX + mpParent->getX();
      mDestRect.y = mOrigPosY + mpParent->getY();
    }
    SDL_SetTextureAlphaMod(mpTargetTexture, static_cast<Uint8>(mAlpha));
    if (mpTargetTexture) {
      // Only angles above 0 turn the picture; a negative one draws it upright.
      if (0.0 >= mAngle)
        drawing::Copy(GetRenderer(), mpTargetTexture, &mSrcRect, &mDestRect);
      else
        drawing::CopyEx(GetRenderer(), mpTargetTexture, &mSrcRect, &mDestRect, mAngle, nullptr, SDL_FLIP_NONE);
    }
    for (TComponentList::Walk walk(GuiComponentList); TGuiComponent* child = walk.next();) {
      if (!child->isVisible()) continue;
      OwnAlpha own(child);
      try {
        child->setAlpha(static_cast<int>(static_cast<float>(mAlpha) / 255.0f * static_cast<float>(own.mValue)));
        child->draw();
      } catch (...) {
        own.putBack();
        throw;
      }
      own.putBack();
    }
  } catch (...) {
    // A broken component costs its own picture, not the frame.
  }
}

void TGuiComponent::drawLogic() {
  const Uint32 now = SDL_GetTicks();
  mFadeAnimation.goOnAfterWrap(now);
  if (mFadeAnimation.state(now) == ASTATE_RUNNING) setAlpha(static_cast<int>(mFadeAnimation.value(now)));
  if (mFadeAnimation.state(now) == ASTATE_COMPLETED) {
    if (mFadeAnimation.reverse())
      OnFadeOutEnd();
    else
      OnFadeInEnd();
    mFadeAnimation.reset();
  }
  drawLogicChildren();
}

void TGuiComponent::mainLogic() { mainLogicChildren(); }

void TGuiComponent::mainLogicChildren() {
  for (TComponentList::Walk walk(GuiComponentList); TGuiComponent* child = walk.next();) child->mainLogic();
}

void TGuiComponent::drawLogicChildren() {
  for (TComponentList::Walk walk(GuiComponentList); TGuiComponent* child = walk.next();)
    if (child->isVisible()) child->drawLogic();
}

void TGuiComponent::setX(int x) {
  mDestRect.x = x;
  if (mpParent) mOrigPosX = x;
}

void TGuiComponent::setY(int y) {
  mDestRect.y = y;
  if (mpParent) mOrigPosY = y;
}

void TGuiComponent::setWidth(int width) { mDestRect.w = width; }
void TGuiComponent::setHeight(int height) { mDestRect.h = height; }
void TGuiComponent::setAngle(double angle) { mAngle = angle; }
void TGuiComponent::setAlpha(int alpha) { mAlpha = alpha; }
short TGuiComponent::getX() { return static_cast<short>(mDestRect.x); }
short TGuiComponent::getY() { return static_cast<short>(mDestRect.y); }
short TGuiComponent::getWidth() { return static_cast<short>(mDestRect.w); }
short TGuiComponent::getHeight() { return static_cast<short>(mDestRect.h); }
double TGuiComponent::getAngle() { return mAngle; }
SDL_Rect TGuiComponent::getSrcRect() { return mSrcRect; }
void TGuiComponent::setSrcRect(SDL_Rect rect) { mSrcRect = rect; }
SDL_Rect TGuiComponent::getDestRect() { return mDestRect; }

void TGuiComponent::setDestRect(SDL_Rect rect) {
  setX(rect.x);
  setY(rect.y);
  setWidth(rect.w);
  setHeight(rect.h);
}

void TGuiComponent::setDestPos(int dx, int dy) {
  mDestPosX = dx;
  mDestPosY = dy;
  mIncreaseX = dx > getX();
  mIncreaseY = dy > getY();
}

int TGuiComponent::relativeX() const { return mpParent ? mOrigPosX : mDestRect.x; }
int TGuiComponent::relativeY() const { return mpParent ? mOrigPosY : mDestRect.y; }

void TGuiComponent::moveToDestPos() {
  if (relativeX() != mDestPosX) setX(relativeX() + (mIncreaseX ? 1 : -1));
  if (relativeY() != mDestPosY) setY(relativeY() + (mIncreaseY ? 1 : -1));
}

void TGuiComponent::moveFromDestPos() {
  setX(relativeX() - (mIncreaseX ? 1 : -1));
  setY(relativeY() - (mIncreaseY ? 1 : -1));
}

void TGuiComponent::onShow() {}
void TGuiComponent::onHide() {}

void TGuiComponent::OnFadeInStart() {
  mTargetTextureBlendMode = getBlendMode();
  setBlendMode(1);
  setAlpha(0);
  Show();
  mFadingIn = true;
  mFadingOut = false;
}

void TGuiComponent::OnFadeInEnd() {
  setBlendMode(mTargetTextureBlendMode);
  setAlpha(255);
  mFadingIn = false;
}

// Runs before the direction turns: the value is still that of the animation's state so far.
void TGuiComponent::OnFadeOutStart() {
  mTargetTextureBlendMode = getBlendMode();
  setBlendMode(1);
  setAlpha(static_cast<int>(mFadeAnimation.value()));
  mFadingOut = true;
  mFadingIn = false;
}

void TGuiComponent::OnFadeOutEnd() {
  Hide();
  setBlendMode(mTargetTextureBlendMode);
  setAlpha(static_cast<int>(mFadeAnimation.value()));
  mFadingOut = false;
  mFadingIn = false;
}

void TGuiComponent::OnTexturesLost() {
  for (TComponentList::Walk walk(GuiComponentList); TGuiComponent* child = walk.next();) child->OnTexturesLost();
}

void TGuiComponent::Show() {
  if (!mVisible) onShow();
  mVisible = true;
}

void TGuiComponent::Hide() {
  if (mVisible) onHide();
  mVisible = false;
}

void TGuiComponent::fadeIn() {
  if (mFadingIn) return;
  OnFadeInStart();
  startFade(false);
}

void TGuiComponent::fadeOut() {
  if (mFadingOut) return;
  OnFadeOutStart();
  startFade(true);
}

void TGuiComponent::startFade(bool reverse) {
  const Uint32 now = SDL_GetTicks();
  mFadeAnimation.goOnAfterWrap(now);
  mFadeAnimation.setReverse(reverse);
  long begin = now;
  if (mFadeAnimation.state(now) == ASTATE_RUNNING)
    begin -= mFadeAnimation.duration() - mFadeAnimation.intervalElapsedMs(now);
  mFadeAnimation.start(begin);
}

void TGuiComponent::setBlendMode(int mode) {
  if (mode >= 0 && mode < kBlendModeCount) SDL_SetTextureBlendMode(mpTargetTexture, kBlendModes[mode]);
}

int TGuiComponent::getBlendMode() const {
  if (!mpTargetTexture) return 0;
  SDL_BlendMode mode = SDL_BLENDMODE_INVALID;
  SDL_GetTextureBlendMode(mpTargetTexture, &mode);
  for (int i = 0; i < kBlendModeCount; ++i)
    if (kBlendModes[i] == mode) return i;
  return -1;
}

SDL_Renderer* TGuiComponent::GetRenderer() {
  TAppGuiModule* gui = pApp ? pApp->GUI() : nullptr;
  return gui ? gui->GetRenderer() : nullptr;
}

TGuiComponent* TGuiComponent::AddComponent(TGuiComponent* pNewComponent) {
  if (pNewComponent == this) {
    std::printf("application::Component \"%s\" cannot be added to itself.", mName.c_str());
    logman::WriteLog(4, 0, "Component \"%s\" cannot be added to itself.", mName.c_str());
    return nullptr;
  }
  return GuiComponentList.add(pNewComponent, this, mName);
}

bool TGuiComponent::RemoveComponent(TGuiComponent* pComponent, bool deleteInstance) {
  return GuiComponentList.remove(pComponent, deleteInstance, mName);
}

bool TGuiComponent::RemoveComponent(std::string sComponent, bool deleteInstance) {
  return GuiComponentList.remove(GuiComponentList.findByName(sComponent), deleteInstance, mName);
}

TGuiComponent* TGuiComponent::FindComponentByName(std::string name) const {
  return GuiComponentList.findByName(name);
}

bool TGuiComponent::FindComponent(TGuiComponent* pComponent) const { return GuiComponentList.contains(pComponent); }

bool TGuiComponent::BringComponentToFront(TGuiComponent* pComponent) {
  return GuiComponentList.bringToFront(pComponent);
}

bool TGuiComponent::SendComponentToBack(TGuiComponent* pComponent) {
  return GuiComponentList.sendToBack(pComponent);
}

}  // namespace vendelo_sdl2
