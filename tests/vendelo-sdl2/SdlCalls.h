#pragma once

#include <SDL.h>
#include <SDL_image.h>
#include <dlfcn.h>
#include <map>
#include <string>
#include <vector>

// Linked in front of SDL's: what the GUI module asks of the window, the renderer and the displays is written down
// as text. The window is a fake one, so that no video system is needed; what belongs to the renderer reaches SDL.
// Include it in one file of a test program only.
namespace sdlcalls {

inline std::vector<std::string>* log = nullptr;  // where to; null for nowhere
inline std::map<void*, std::string> names;       // of textures and surfaces; what has none is "?"

// What the fakes answer.
inline bool windowFails = false, rendererFails = false, textureFails = false;
inline SDL_Surface* windowPixels = nullptr;   // what the renderer paints into
inline SDL_Surface* windowSurface = nullptr;  // SDL_GetWindowSurface
inline Uint32 windowFormat = SDL_PIXELFORMAT_ABGR8888;
inline int windowW = 0, windowH = 0;    // SDL_GetWindowSize
inline std::vector<SDL_Rect> displays;  // one of width -1 cannot be read
inline char fakeWindow = 0;
inline SDL_Window* const window = reinterpret_cast<SDL_Window*>(&fakeWindow);

inline void note(const std::string& call) {
  if (log) log->push_back(call);
}
inline std::string nameOf(void* thing) {
  if (!thing) return "null";
  const auto found = names.find(thing);
  return found == names.end() ? "?" : found->second;
}
inline std::string text(const SDL_Rect* r) {
  if (!r) return "all";
  return std::to_string(r->x) + "," + std::to_string(r->y) + "," + std::to_string(r->w) + "," +
         std::to_string(r->h);
}
inline std::string number(long value) { return " " + std::to_string(value); }
template <class F>
F real(const char* name) {
  return reinterpret_cast<F>(dlsym(RTLD_NEXT, name));
}

}  // namespace sdlcalls

extern "C" {

SDL_bool SDL_SetHint(const char* name, const char* value) {
  sdlcalls::note(std::string("hint ") + name + " " + value);
  static const auto sdl = sdlcalls::real<decltype(&SDL_SetHint)>("SDL_SetHint");
  return sdl(name, value);
}

SDL_Window* SDL_CreateWindow(const char* title, int x, int y, int w, int h, Uint32 flags) {
  const SDL_Rect place{x, y, w, h};
  sdlcalls::note(std::string("window ") + title + " " + sdlcalls::text(&place) + sdlcalls::number(flags));
  return sdlcalls::windowFails ? nullptr : sdlcalls::window;
}

void SDL_DestroyWindow(SDL_Window*) { sdlcalls::note("destroy window"); }

SDL_Renderer* SDL_CreateRenderer(SDL_Window*, int index, Uint32 flags) {
  sdlcalls::note("renderer" + sdlcalls::number(index) + sdlcalls::number(flags));
  return sdlcalls::rendererFails ? nullptr : SDL_CreateSoftwareRenderer(sdlcalls::windowPixels);
}

void SDL_DestroyRenderer(SDL_Renderer* renderer) {
  sdlcalls::note("destroy renderer");
  static const auto sdl = sdlcalls::real<decltype(&SDL_DestroyRenderer)>("SDL_DestroyRenderer");
  sdl(renderer);
}

int SDL_SetRenderDrawBlendMode(SDL_Renderer* renderer, SDL_BlendMode mode) {
  sdlcalls::note("blend" + sdlcalls::number(mode));
  static const auto sdl = sdlcalls::real<decltype(&SDL_SetRenderDrawBlendMode)>("SDL_SetRenderDrawBlendMode");
  return sdl(renderer, mode);
}

int SDL_SetRenderDrawColor(SDL_Renderer* renderer, Uint8 r, Uint8 g, Uint8 b, Uint8 a) {
  using sdlcalls::number;
  sdlcalls::note("colour" + number(r) + number(g) + number(b) + number(a));
  static const auto sdl = sdlcalls::real<decltype(&SDL_SetRenderDrawColor)>("SDL_SetRenderDrawColor");
  return sdl(renderer, r, g, b, a);
}

Uint32 SDL_GetWindowPixelFormat(SDL_Window*) { return sdlcalls::windowFormat; }

SDL_Surface* SDL_GetWindowSurface(SDL_Window*) {
  sdlcalls::note("window surface");
  return sdlcalls::windowSurface;
}

SDL_Texture* SDL_CreateTexture(SDL_Renderer* renderer, Uint32 format, int access, int w, int h) {
  sdlcalls::note(std::string("texture ") + SDL_GetPixelFormatName(format) + sdlcalls::number(access) +
                 sdlcalls::number(w) + sdlcalls::number(h));
  static const auto sdl = sdlcalls::real<decltype(&SDL_CreateTexture)>("SDL_CreateTexture");
  return sdlcalls::textureFails ? nullptr : sdl(renderer, format, access, w, h);
}

void SDL_DestroyTexture(SDL_Texture* texture) {
  sdlcalls::note("destroy " + sdlcalls::nameOf(texture));
  static const auto sdl = sdlcalls::real<decltype(&SDL_DestroyTexture)>("SDL_DestroyTexture");
  sdl(texture);
}

void SDL_FreeSurface(SDL_Surface* surface) {
  sdlcalls::note("free " + sdlcalls::nameOf(surface));
  static const auto sdl = sdlcalls::real<decltype(&SDL_FreeSurface)>("SDL_FreeSurface");
  sdl(surface);
}

int SDL_SetRenderTarget(SDL_Renderer* renderer, SDL_Texture* texture) {
  sdlcalls::note("target " + (texture ? sdlcalls::nameOf(texture) : std::string("window")));
  static const auto sdl = sdlcalls::real<decltype(&SDL_SetRenderTarget)>("SDL_SetRenderTarget");
  return sdl(renderer, texture);
}

int SDL_RenderSetViewport(SDL_Renderer* renderer, const SDL_Rect* rect) {
  sdlcalls::note("viewport " + sdlcalls::text(rect));
  static const auto sdl = sdlcalls::real<decltype(&SDL_RenderSetViewport)>("SDL_RenderSetViewport");
  return sdl(renderer, rect);
}

int SDL_RenderClear(SDL_Renderer* renderer) {
  sdlcalls::note("clear");
  static const auto sdl = sdlcalls::real<decltype(&SDL_RenderClear)>("SDL_RenderClear");
  return sdl(renderer);
}

int SDL_RenderCopyEx(SDL_Renderer* renderer, SDL_Texture* texture, const SDL_Rect* from, const SDL_Rect* to,
                     const double angle, const SDL_Point* centre, const SDL_RendererFlip flip) {
  sdlcalls::note("copy " + sdlcalls::nameOf(texture) + " " + sdlcalls::text(from) + " to " + sdlcalls::text(to) +
                 sdlcalls::number(static_cast<long>(angle)) + (centre ? " centre" : "") + sdlcalls::number(flip));
  static const auto sdl = sdlcalls::real<decltype(&SDL_RenderCopyEx)>("SDL_RenderCopyEx");
  return sdl(renderer, texture, from, to, angle, centre, flip);
}

void SDL_RenderPresent(SDL_Renderer* renderer) {
  sdlcalls::note("present");
  static const auto sdl = sdlcalls::real<decltype(&SDL_RenderPresent)>("SDL_RenderPresent");
  sdl(renderer);
}

void SDL_GetWindowSize(SDL_Window*, int* w, int* h) {
  sdlcalls::note("window size");
  *w = sdlcalls::windowW;
  *h = sdlcalls::windowH;
}

void SDL_SetWindowPosition(SDL_Window*, int x, int y) {
  sdlcalls::note("place" + sdlcalls::number(x) + sdlcalls::number(y));
}

void SDL_SetWindowSize(SDL_Window*, int w, int h) {
  sdlcalls::note("size" + sdlcalls::number(w) + sdlcalls::number(h));
}

int SDL_GetNumVideoDisplays(void) { return static_cast<int>(sdlcalls::displays.size()); }

int SDL_GetDisplayBounds(int index, SDL_Rect* bounds) {
  sdlcalls::note("display" + sdlcalls::number(index));
  const SDL_Rect& display = sdlcalls::displays.at(static_cast<size_t>(index));
  if (display.w < 0) return -1;
  *bounds = display;
  return 0;
}

int SDL_ShowCursor(int toggle) {
  sdlcalls::note("cursor" + sdlcalls::number(toggle));
  return 0;
}

int IMG_Init(int flags) {
  sdlcalls::note("pictures" + sdlcalls::number(flags));
  static const auto img = sdlcalls::real<decltype(&IMG_Init)>("IMG_Init");
  return img(flags);
}

}  // extern "C"
