#pragma once

#include <SDL.h>
#include <string>

#include "vendelo-sdl2/TAnimation.h"
#include "vendelo-sdl2/TComponentList.h"

namespace vendelo_sdl2 {

// The base of everything on the screen: a rectangle with an optional texture, children, visibility, alpha, a
// rotation, a fade and a remembered destination.
// Threads: draw() and drawLogic() on the draw thread, mainLogic() on the main thread, all with the draw mutex held;
// any other change needs that mutex or one of the application's deferred queues. What reaches the renderer belongs
// to the draw thread.
// Space: pixels; a child's position is relative to its parent, and getX(), getY() are absolute only after a draw.
// A root's position is absolute. Getters are cut to 16 bits.
// Ownership: children are owned and deleted with their parent. The target texture is left alone by this class.
// Bad input is printed and answered with null or false, never thrown.
// Blend modes are numbers here: 0 none, 1 blend, 2 add, 3 modulate.
class TGuiComponent {
 public:
  // The renderer is not kept: GetRenderer() is asked when one is needed.
  TGuiComponent(SDL_Renderer* pRenderer, int x, int y, int w, int h, std::string ComponentName);
  TGuiComponent(const TGuiComponent&) = delete;
  TGuiComponent& operator=(const TGuiComponent&) = delete;

  virtual ~TGuiComponent();
  // Called once, when the component has been added; anything but 0 is a failure, which is printed.
  virtual int load();
  // Draws the own texture, then the visible children, rear to front, each with its alpha multiplied by this one's.
  // An exception out of a child ends this component's draw in silence.
  virtual void draw();
  // Once per frame, before anything is drawn: runs the fade, then the visible children's logic.
  virtual void drawLogic();
  virtual void mainLogic();
  virtual void setX(int x);
  virtual void setY(int y);
  virtual void setWidth(int width);
  virtual void setHeight(int height);
  virtual void setAngle(double angle);
  virtual void setAlpha(int alpha);
  virtual short getX();
  virtual short getY();
  virtual short getWidth();
  virtual short getHeight();
  virtual double getAngle();
  virtual SDL_Rect getSrcRect();
  virtual void setSrcRect(SDL_Rect rect);
  virtual SDL_Rect getDestRect();
  virtual void setDestRect(SDL_Rect rect);
  virtual void setDestPos(int dx, int dy);
  virtual void onShow();
  virtual void onHide();
  virtual void OnFadeOutStart();
  virtual void OnFadeOutEnd();
  virtual void OnFadeInStart();
  virtual void OnFadeInEnd();
  // What had been drawn into textures is gone: the component marks what it has rendered for itself to be made again
  // at its next draw, and tells its children, visible or not. Draw thread.
  virtual void OnTexturesLost();

  // Whether the next draw() changes no pixel outside of the component's rectangle, as far as is known before it.
  virtual bool staysInside() const { return false; }

  // The logic of every child, visible or not.
  void mainLogicChildren();
  // The draw logic of the children that are visible when their turn comes.
  void drawLogicChildren();

  int alpha() const { return mAlpha; }
  bool isVisible() const { return mVisible; }
  // From fadeOut to its end or to fadeIn.
  bool isFadingOut() const { return mFadingOut; }
  std::string getName() const { return mName; }
  TGuiComponent* getParent() const { return mpParent; }
  void setParent(TGuiComponent* parent) { mpParent = parent; }
  SDL_Texture* GetTargetTexture() const { return mpTargetTexture; }
  void SetTargetTexture(SDL_Texture* texture) { mpTargetTexture = texture; }

  // The hooks run before the flag changes, and only when it does.
  void Show();
  void Hide();
  // Stores the flag without hooks.
  void _setVisible(bool visible) { mVisible = visible; }

  // Nothing while the same fade is under way. Against the opposite one it takes over where that one stands. A
  // finished fade-out leaves the component hidden with alpha 0.
  void fadeIn();
  void fadeOut();

  // Numbers other than 0 to 3 do nothing.
  void setBlendMode(int mode);
  // 0 without a texture, -1 for a mode outside the four.
  int getBlendMode() const;

  // The GUI module's renderer; null without an application or a module.
  static SDL_Renderer* GetRenderer();

  // Adds a child in front of the others and loads it; owned from then on. Null (and not owned) for null, for this
  // component itself and for a name that another child has.
  TGuiComponent* AddComponent(TGuiComponent* pNewComponent);
  bool RemoveComponent(TGuiComponent* pComponent, bool deleteInstance);
  bool RemoveComponent(std::string sComponent, bool deleteInstance);
  // Direct children only.
  TGuiComponent* FindComponentByName(std::string name) const;
  bool FindComponent(TGuiComponent* pComponent) const;
  bool BringComponentToFront(TGuiComponent* pComponent);
  // False also for the child that is rear-most already.
  bool SendComponentToBack(TGuiComponent* pComponent);

  // One pixel on each axis: towards the destination of setDestPos, where it ends, or the other way, without end.
  void moveToDestPos();
  void moveFromDestPos();

 protected:
  bool mFadingOut = false;
  bool mFadingIn = false;
  int mOrigPosX;  // relative to the parent
  int mOrigPosY;
  TGuiComponent* mpParent = nullptr;  // not owned
  TComponentList GuiComponentList;    // children, rear-most first
  TAnimation mFadeAnimation;          // 0 to 255
  SDL_Texture* mpTargetTexture = nullptr;
  int mTargetTextureBlendMode = 1;  // saved over a fade
  SDL_Rect mSrcRect;
  SDL_Rect mDestRect;  // absolute after a draw
  double mAngle = 0.0;
  bool mVisible = true;
  int mAlpha = 255;
  int mDestPosX;
  int mDestPosY;
  bool mIncreaseX = false;  // the destination lies to the right
  bool mIncreaseY = false;  // the destination lies below
  std::string mName;

 private:
  friend class TComponentList;
  struct OwnAlpha;

  int relativeX() const;
  int relativeY() const;
  void startFade(bool reverse);

  TComponentList::TPassMark mPassMark;
  OwnAlpha* mpOwnAlpha = nullptr;  // while its parent draws it
};

}  // namespace vendelo_sdl2
