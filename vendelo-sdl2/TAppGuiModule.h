#pragma once

#include <SDL.h>
#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "vendelo-sdl2/TAppModule.h"
#include "vendelo-sdl2/TComponentList.h"
#include "vendelo-sdl2/TFrameWatch.h"
#include "vendelo-sdl2/TTexturePtr.h"

namespace vendelo_sdl2 {

class TDirtyRects;
class TFramePicture;
class TGuiComponent;

// The application's one window: it owns the window, the renderer and the back buffer into which every picture is
// composed, holds the root components and the loader, chooses the display and runs one frame per draw(). Its image
// helpers are static and work on a static copy of the renderer.
// Threads: the window, the renderer, the helpers, draw() and Destroy() belong to the draw thread; draw() holds the
// application's draw mutex over all drawing. mainLogic() runs on the main thread with that mutex held, and so does
// any change of the root list from elsewhere. Fields that other threads read or write without it are atomic.
// Units: pixels of the back buffer; milliseconds of the tick clock.
// Bad input: image helpers answer null, CreateWindow a code; nothing is thrown.
class TAppGuiModule : public TAppModule {
 public:
  // The video system must be up: the displays are read here (once per process), and the cursor is hidden.
  TAppGuiModule();
  ~TAppGuiModule() override;

  // Chooses the display by the parameter "SCREEN_INDEX" and puts the window there; 0, or -1 without a display. The
  // main thread waits for it and serves parameters and log only: a Defer from here does not wait, and what it
  // queues runs when the load is over.
  int Load(void* hInitData) override;
  // Frees everything, components and images first, then the window, and deletes this module.
  int Destroy() override;

  virtual void OnShow();
  virtual void OnHide();
  virtual void Show();
  virtual void Hide();
  // The window's size is read again at the next frame.
  virtual void RefreshSize();
  // The device has lost what was drawn into textures: before the next picture the back buffer is made anew, and
  // every component is told to render its own again. Pictures from files stay as they are: only renderers of other
  // systems lose these too, and report it with SDL_RENDER_DEVICE_RESET. Any thread.
  void TexturesLost() { mbTexturesLost = true; }
  // What is on the window may be other than what was put there: the next frame draws and shows all of it. Any
  // thread.
  void RedrawAll() { mbRedrawAll = true; }
  // One frame: 0 done, 1 the application terminates, 2 there is no renderer.
  virtual int draw();
  // The logic of every root component, visible or not.
  virtual void mainLogic();
  virtual void BeforeDrawComponents();
  virtual void AfterDrawComponents();

  // 0, or -2 without a window, -3 without a renderer, -4 without a back buffer. AtIndex is not used.
  int CreateWindow(std::string WindowTitle, int x, int y, int w, int h, Uint32 CreateWindowFlags,
                   int DriverIndex4Renderer, Uint32 CreateRendererFlags, int AtIndex);
  void DestroyWindow();
  void WindowToFullscreen();

  // The bounds of the chosen display, whose 0-based index is stored through the pointer if given. Without displays
  // a zero rectangle, and the index is left alone.
  SDL_Rect GetScreenBounds(int* screen_index) const;
  // Sums of all widths and of all heights, however the displays are arranged.
  SDL_Rect GetCombinedScreenBounds() const;

  int IsVisible() const { return Visible; }
  // Without rendering the deferred work, actions and tasks of the frame go on, and sleeping holds the rate.
  void StopRendering() { mDrawEnabled = false; }
  void StartRendering() {
    RedrawAll();
    mDrawEnabled = true;
  }
  bool IsRendering() const { return mDrawEnabled; }
  // The average with presentation; the one without goes through the pointer if it is not null.
  float getFPS(float* noVsync) const;
  void SetTargetFPS(int fps) { mTargetFPS = fps; }  // never below 1
  void RotateScreen(bool rotate) {
    RedrawAll();
    ScreenRotate = rotate;
  }
  bool IsScreenRotated() const { return ScreenRotate; }
  void updateLastDrawTime();
  // Who counts the frames, and gives a picture of one. Any thread.
  TFrameWatch& FrameWatch() { return mFrameWatch; }

  SDL_Renderer* GetRenderer() const { return mpGUIRenderer; }
  void SetRenderer(SDL_Renderer* pRenderer) { mpGUIRenderer = pRenderer; }
  SDL_Window* getWindow() const { return mpWindow; }
  // Drawn instead of the roots while the application is not running; owned. It is never loaded.
  void SetLoader(TGuiComponent* pComponent) { pLoader = pComponent; }
  TGuiComponent* Loader() const { return pLoader; }
  static void SetRendererStatic(SDL_Renderer* pRenderer) { mpGUIRendererStatic = pRenderer; }
  static void SetWindowStatic(SDL_Window* pWindow) { mpWindowStatic = pWindow; }
  static void SetGlobalPixelFormat(SDL_PixelFormat* pFormat) { mGlobalPixelFormat = *pFormat; }

  // As in TGuiComponent, for root components, whose parent is null.
  TGuiComponent* AddComponent(TGuiComponent* pNewComponent);
  bool RemoveComponent(TGuiComponent* pComponent, bool deleteInstance);
  bool RemoveComponent(std::string sComponent, bool deleteInstance);
  TGuiComponent* FindComponentByName(std::string name) const;
  bool FindComponent(TGuiComponent* pComponent) const;
  bool BringComponentToFront(TGuiComponent* pComponent);
  bool SendComponentToBack(TGuiComponent* pComponent);

  // One static rectangle each: the next call overwrites it.
  static SDL_Rect* CreateRect(int x, int y, int w, int h);
  static SDL_Rect* CreateRect2(int x, int y, int w, int h);

  // Image helpers. Textures and surfaces that they return belong to the caller. They put back the render target
  // and the draw colour. Parameters without a name are not used.
  // The file as it is named, with the loader's list of other extensions; each call keeps one more texture until
  // the renderer goes. Null for an empty name or (printed) a file that cannot be loaded.
  static SDL_Texture* LoadImage(const char* file, int alphablend, int TransparentColor, int tR, int tG, int tB);
  static SDL_Surface* LoadSurface(const char* file, int alphablend, int TransparentColor, int tR, int tG, int tB);
  // A copy of a part, with its alpha as it stands. Null gives null.
  static SDL_Texture* SubImage(SDL_Texture* pSrc, int x, int y, int w, int h);
  static SDL_Surface* SubSurface(SDL_Surface* pSrc, int x, int y, int w, int h);
  // An empty, transparent render target; null when it is longer than MyUtils::kLongestSide or has more
  // than 2 to the power of 26 pixels.
  static SDL_Texture* CreateLayer(SDL_Texture* pFormatReference, int width, int height, int transparent, int tR,
                                  int tG, int tB, int BitDepth);
  // The same in memory, in MyUtils::kDrawnFormat, for what is put together once with MyUtils::BlendInto
  // and becomes a texture with MyUtils::LayerOf.
  static SDL_Surface* CreateLayerSurface(int width, int height, int tR, int tG, int tB);
  static SDL_Surface* CreateSurface(SDL_Surface* pFormatReference, int width, int height, int transparent, int tR,
                                    int tG, int tB, int BitDepth);
  // A copy of one frame of a vertical or horizontal strip; null beyond its end.
  static SDL_Texture* GetSlideFromImage(SDL_Texture* pSourceImage, int SlideWidth, int SlideHeight, int SlideIndex);
  // 8-bit RGB without alpha. pPngMetadata: null or MetadataCount records of png_text. 0, or -2 memory, -3 file,
  // -4 the library failed, -5 no writer, -6 no file name, -7 no image.
  static int SavePNG(SDL_Surface* pImage, const char* FileName, void* pPngMetadata, int MetadataCount);
  // Copies the text chunks into the caller's png_text records, whose key and text buffers must be large enough;
  // *pMetadataCount is their number and is lowered to the file's. 0, or -1 for a null or an unreadable file.
  static int GetPNGInfo(std::string Filename, void* pPngMetadata, int* pMetadataCount);

 protected:
  int Visible = 0;
  static SDL_PixelFormat mGlobalPixelFormat;
  TComponentList GuiComponentList;   // roots, rear-most first
  TGuiComponent* pLoader = nullptr;  // owned
  std::atomic<bool> mbRefreshSize{false};
  TTexturePtr mpBackBuffer;
  SDL_Rect WindowNativeSize{0, 0, 0, 0};   // at creation; source of the final copy
  SDL_Rect WindowCurrentSize{0, 0, 0, 0};  // destination of the final copy
  int selected_screen = -1;                // counts from 1; negative: none chosen yet
  bool ScreenRotate = false;
  SDL_Window* mpWindow = nullptr;
  SDL_Renderer* mpGUIRenderer = nullptr;
  std::atomic<float> mFPS{0.0f};
  std::atomic<float> mFPS_noVsync{0.0f};
  unsigned long mNumFrames = 0;
  Uint32 mLastDrawTime;
  int64_t mSleepDiff = 0;  // by how much the last sleep overshot
  int mTargetFPS = 60;
  std::atomic<bool> mDrawEnabled{true};
  bool mVsync = true;
  TGuiComponent* mLoadingScreen = nullptr;
  static SDL_Renderer* mpGUIRendererStatic;
  static SDL_Window* mpWindowStatic;
  static std::vector<SDL_Rect>& Displays;  // written once at start-up, in SDL's order

  // What a frame is between the clearing of its picture and the picture's way to the window, in this order:
  // deferred work, draw actions and draw tasks; the logic of all visible roots; their drawing; leave for the next
  // mainLogic(). Without `running` only the loader is served and drawn, without `rendering` nothing is drawn and no
  // draw logic runs. Draw thread, with the draw mutex held. What the tests' harnesses draw, they draw by this too.
  void serveAndDraw(bool running, bool rendering);

  // TOPSCREEN_REDRAW: only what changes; everything in every frame; as the first, with what has changed outlined.
  enum class Redraw { CHANGES, ALL, SHOW };
  Redraw mRedraw = Redraw::CHANGES;

 private:
  static SDL_Rect GlobalRect;
  static SDL_Rect GlobalRect2;
  std::atomic<bool> mbTexturesLost{false};
  std::atomic<bool> mbRedrawAll{false};
  bool mbOnWindow = false;  // the last picture was drawn there and not into the back buffer
  TFrameWatch mFrameWatch;

  // How a frame gets onto the window: it is there already; some rectangles; the whole of it.
  enum class Way { NOTHING, PARTS, WHOLE };
  std::unique_ptr<TFramePicture> mpPicture;
  Uint32 mDrawnWholeAt = 0;

  void readRedraw();
  void drawPicture(bool running);
  void beginPicture();
  Way finishPicture(Uint32 now);
  void copyWhole();
  bool windowKeepsPicture() const;
  void outline(const TDirtyRects& changed);
  void present(Way way);
  void rebuildTextures();
  void applyWindowSize();
  Uint32 pace(bool waitsForWindow);
  void countFrame(Uint32 beforePresent);
};

}  // namespace vendelo_sdl2
