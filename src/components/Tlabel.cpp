#include "components/Tlabel.h"

#include <algorithm>
#include <utility>

#include "components/SlideSupport.h"
#include "vendelo-sdl2/Drawing.h"
#include "vendelo-sdl2/PictureFormat.h"
#include "vendelo-sdl2/TAppGuiModule.h"
#include "vendelo-sdl2/TApplication.h"
#include "vendelo-sdl2/TTaskMan.h"

using namespace vendelo_sdl2;

Tlabel::Tlabel(SDL_Renderer* pRenderer, int x, int y, int width, int height, std::string defaultText,
               TTF_Font* pFont, SDL_Color fontColor, std::string ComponentName)
  : TGuiComponent(pRenderer, x, y, width, height, std::move(ComponentName)),
    mText(defaultText),
    mNewText(std::move(defaultText)),
    mLabelRect{x, y, width, height},
    mpFont(pFont),
    mColor(fontColor),
    mpSurface(nullptr),
    mpSurface2(nullptr),
    mpLabelChangedListener(nullptr),
    mDrawShadow(false),
    mShadowOffset(2),
    mShadowColor{64, 64, 64, 255},
    mSplitText(false),
    mSomethingChanged(false),
    mAnimationEnabled(false),
    mIsShowing(false),
    mAnimationDestRect{0, 0, 0, 0},
    mAnimationStartRect{0, 0, 0, 0},
    mAlign(LEFT_CENTER),
    mTimeUntilHide(0),
    mDirection(LEFT),
    pAniTask(nullptr),
    mAlive(std::make_shared<bool>(true)) {
  SetShadow(mDrawShadow, mShadowOffset, mShadowColor);
}

Tlabel::~Tlabel() {
  if (pApp) pApp->RemoveTimedTasksOf(this);
  // By design the text's own texture stays: somebody may still show it. It goes with the renderer.
  static_cast<void>(mpTextTexture.release());
  SDL_FreeSurface(mpSurface);
}

void Tlabel::SetText(const std::string& text) { mNewText = text; }

const std::string& Tlabel::GetText() const { return mNewText; }

void Tlabel::SetColor(SDL_Color color) {
  mColor = color;
  mSomethingChanged = true;
}

void Tlabel::SetFont(TTF_Font* font) {
  mpFont = font;
  mSomethingChanged = true;
}

TTF_Font* Tlabel::GetFont() const { return mpFont; }

void Tlabel::SetShadow(bool shadow, int offset, SDL_Color color) {
  mDrawShadow = shadow;
  mShadowOffset = offset;
  mShadowColor = color;
  mSomethingChanged = true;
}

void Tlabel::SplitText(bool split) { mSplitText = split; }

void Tlabel::SetLabelChangedListener(LabelChangedListener* listener) { mpLabelChangedListener = listener; }

void Tlabel::SetAlignment(TAlignment alignment) {
  const auto start = [](TPart part, int begin, int room, int size) {
    if (part == TPart::MIDDLE) return begin + room / 2 - size / 2;
    return part == TPart::LAST ? begin + room - size : begin;
  };
  const int x = start(horizontalPart(alignment), mLabelRect.x, mLabelRect.w, mSrcRect.w);
  const int y = start(verticalPart(alignment), mLabelRect.y, mLabelRect.h, mSrcRect.h);
  setX(x);
  setY(y);
  if (alignment != mAlign) mSomethingChanged = true;
  mAlign = alignment;
}

void Tlabel::updateCachedTextures() {
  if (!mSomethingChanged && mText == mNewText) return;
  mText = mNewText;
  mSomethingChanged = false;
  if (!mpFont) return;
  SDL_FreeSurface(mpSurface);
  mpSurface = nullptr;
  if (mText.empty()) {
    clearTextures();
    if (mpLabelChangedListener) mpLabelChangedListener->LabelChanged(mpTargetTexture);
    return;
  }
  if (mSplitText && mText.find(' ') != std::string::npos)
    buildTwoLines();
  else
    buildOneLine();
}

void Tlabel::OnTexturesLost() {
  mSomethingChanged = true;
  TGuiComponent::OnTexturesLost();
}

void Tlabel::clearTextures() {
  TakeTexture();
  mpShadowTexture.reset();
}

TTexturePtr Tlabel::TakeTexture() {
  mpTargetTexture = nullptr;
  return std::move(mpTextTexture);
}

void Tlabel::showText(TTexturePtr texture) {
  mpTextTexture = std::move(texture);
  mpTargetTexture = mpTextTexture.get();
}

TTexturePtr Tlabel::renderLine(const std::string& line, SDL_Color color, SDL_Surface*& surface, SDL_Rect& size) {
  surface = TTF_RenderUTF8_Blended(mpFont, line.c_str(), color);
  if (!surface) return nullptr;
  size.w = surface->w;
  size.h = surface->h;
  TTexturePtr texture = MyUtils::TextureOf(GetRenderer(), surface);
  SDL_FreeSurface(surface);
  surface = nullptr;
  if (texture) SDL_SetTextureAlphaMod(texture.get(), static_cast<Uint8>(mAlpha));
  return texture;
}

void Tlabel::buildOneLine() {
  SDL_Rect size{};
  clearTextures();
  showText(renderLine(mText, mColor, mpSurface, size));
  if (mpTargetTexture) {
    mSrcRect.w = mDestRect.w = size.w;
    mSrcRect.h = mDestRect.h = size.h;
    mpShadowTexture = renderLine(mText, mShadowColor, mpSurface, size);
  }
  SetAlignment(mAlign);
  if (mAnimationEnabled) SetAnimation(mDirection);
  // SetAnimation asks for a rebuild, which this was; left standing, it would put the label back every frame.
  mSomethingChanged = false;
}

void Tlabel::buildTwoLines() {
  clearTextures();
  const size_t space = mText.find(' ');
  const auto render = [this](const std::string& line) {
    return MyUtils::InDrawnFormat(MyUtils::TSurfacePtr(TTF_RenderUTF8_Blended(mpFont, line.c_str(), mColor)));
  };
  const MyUtils::TSurfacePtr line1 = render(mText.substr(0, space)), line2 = render(mText.substr(space + 1));
  if (!line1 || !line2) return;
  const SDL_Rect rect1{0, 0, line1->w, line1->h}, rect2{0, 0, line2->w, line2->h};
  const int mw = std::max(rect1.w, rect2.w);
  const MyUtils::TSurfacePtr both(TAppGuiModule::CreateLayerSurface(mw, rect1.h + rect2.h, 0, 0, 0));
  if (both) {
    const TPart side = horizontalPart(mAlign);
    int x = 0;
    const auto place = [&](const SDL_Rect& line) {
      if (side != TPart::FIRST && line.w != mw) x = side == TPart::MIDDLE ? (mw - line.w) / 2 : mw - line.w;
    };
    // Here the label's alpha counts once, and when the texture is drawn once more: as designed.
    const auto alpha = static_cast<Uint8>(mAlpha);
    place(rect1);
    MyUtils::BlendInto(both.get(), x, 0, line1.get(), rect1, alpha);
    // x is not set back between the lines: a wider second line keeps the place of the first, as designed.
    place(rect2);
    MyUtils::BlendInto(both.get(), x, rect1.h, line2.get(), rect2, alpha);
    showText(MyUtils::LayerOf(GetRenderer(), both.get()));
  }
  if (mpTargetTexture) {
    SDL_SetTextureAlphaMod(mpTargetTexture, static_cast<Uint8>(mAlpha));
    mSrcRect = SDL_Rect{0, 0, mw, rect1.h + rect2.h};
    mDestRect.w = mw;
    mDestRect.h = rect1.h + rect2.h;
    SetAlignment(mAlign);
  }
}

void Tlabel::draw() {
  updateCachedTextures();
  if (mDrawShadow && mpShadowTexture) drawShadow();
  TGuiComponent::draw();
}

void Tlabel::drawShadow() {
  SDL_Rect dst = mDestRect;
  if (mpParent) {
    dst.x = mOrigPosX + mpParent->getX();
    dst.y = mOrigPosY + mpParent->getY();
  }
  dst.x += mShadowOffset;
  // Downwards in either case, to the left only for a negative offset.
  dst.y += mShadowOffset < 0 ? -mShadowOffset : mShadowOffset;
  SDL_SetTextureAlphaMod(mpShadowTexture.get(), static_cast<Uint8>(mAlpha & 255));
  if (0.0 > mAngle)
    drawing::Copy(GetRenderer(), mpShadowTexture.get(), &mSrcRect, &dst);
  else
    drawing::CopyEx(GetRenderer(), mpShadowTexture.get(), &mSrcRect, &dst, mAngle, nullptr, SDL_FLIP_NONE);
}

void Tlabel::SetAnimation(TAnimationDirection direction) {
  mAnimationEnabled = true;
  mDirection = direction;
  mAnimationDestRect = mDestRect;
  mAnimationStartRect = slide::startOf(static_cast<slide::Direction>(direction), mDestRect);
  mOrigPosX = mAnimationStartRect.x;
  mOrigPosY = mAnimationStartRect.y;
  mSomethingChanged = true;
}

void Tlabel::ShowFor(int time) {
  if (mVisible) return;
  if (pApp)
    pApp->DeferToDraw(
      [this, alive = std::weak_ptr<bool>(mAlive)] {
        if (!alive.expired()) onShow();
      },
      false);
  mVisible = true;
  if (mAnimationEnabled && time >= 1) {
    mTimeUntilHide = static_cast<Uint32>(time);
    mOrigPosX = mAnimationStartRect.x;
    mOrigPosY = mAnimationStartRect.y;
    mIsShowing = true;
    startAniTask();
  }
}

void Tlabel::Hide() {
  if (!mVisible) return;
  onHide();
  if (!mAnimationEnabled) {
    mVisible = false;
    return;
  }
  mOrigPosX = mAnimationDestRect.x;
  mOrigPosY = mAnimationDestRect.y;
  mIsShowing = false;
  startAniTask();
}

void Tlabel::startAniTask() {
  if (pAniTask) {
    pAniTask->Enable();
  } else if (pApp) {
    pAniTask =
      pApp->AddTimedTask(new TtthMember<Tlabel, void>(this, &Tlabel::AnimateTask, 30, TTimedTaskHandler::ENDLESS,
                                                      "Tlabel::AnimateTask, 30"),
                         TASK_NORMAL);
  }
}

void Tlabel::AnimateTask() {
  static const int num_pix = 2;
  const SDL_Rect& goal = mIsShowing ? mAnimationDestRect : mAnimationStartRect;
  if (!slide::step(static_cast<slide::Direction>(mDirection), mIsShowing, num_pix, {goal.x, goal.y}, mOrigPosX,
                   mOrigPosY))
    return;
  if (pAniTask) pAniTask->Disable();
  if (!mIsShowing) {
    mVisible = false;
  } else if (pApp) {
    pApp->AddTimedTask(
      new TtthMember<Tlabel, void>(this, &Tlabel::Hide, mTimeUntilHide, TTimedTaskHandler::EXECUTE_ONCE,
                                   "Tlabel::Hide, mTimeUntilHide"),
      TASK_NORMAL);
  }
}
