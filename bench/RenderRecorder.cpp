#include "bench/RenderRecorder.h"

#include <dlfcn.h>
#include <algorithm>
#include <cstring>
#include <set>

namespace {

enum Kind {
  COPY,
  COPY_EX,
  COPY_F,
  COPY_EX_F,
  TARGET,
  CLEAR,
  FILL,
  COLOR,
  DRAW_BLEND,
  ALPHA,
  MOD,
  BLEND,
  PRESENT,
  CREATE,
  DESTROY
};

struct Call {
  Kind kind;
  SDL_Renderer* renderer;
  SDL_Texture* texture;
  SDL_Surface* surface;
  bool hasSource, hasDestination;
  SDL_Rect source, destination;
  SDL_FRect destinationF;
  double angle;
  SDL_RendererFlip flip;
  Uint8 r, g, b, a;
  SDL_BlendMode mode;
};

std::vector<Call> calls;
std::vector<size_t> ends;
bool recording = false;
long copyCount = 0;

// Textures made while recording, and at the replay those that stand for them and for those of the program.
struct Substitute {
  SDL_Texture* recorded;
  SDL_Texture* own;
};
std::vector<Substitute> substitutes;
std::set<SDL_Texture*> made;       // while recording
std::vector<SDL_Texture*> parked;  // that the program has destroyed while recording

Substitute* substituteOf(SDL_Texture* texture) {
  for (size_t i = substitutes.size(); i-- > 0;)
    if (substitutes[i].recorded == texture) return &substitutes[i];
  return nullptr;
}

template <class F>
F real(const char* name) {
  return reinterpret_cast<F>(dlsym(RTLD_NEXT, name));
}

#define REAL(name) static const auto sdl = real<decltype(&name)>(#name)

Call make(Kind kind, SDL_Renderer* renderer, SDL_Texture* texture) {
  Call call{};
  call.kind = kind;
  call.renderer = renderer;
  call.texture = texture;
  return call;
}

void note(const Call& call) {
  calls.push_back(call);
  if (call.kind <= COPY_EX_F) ++copyCount;
}

Call copy(Kind kind, SDL_Renderer* renderer, SDL_Texture* texture, const SDL_Rect* source) {
  Call call = make(kind, renderer, texture);
  call.hasSource = source;
  if (source) call.source = *source;
  return call;
}

bool isSoftware(SDL_Renderer* renderer) {
  SDL_RendererInfo info{};
  return SDL_GetRendererInfo(renderer, &info) == 0 && std::strcmp(info.name, "software") == 0;
}

// Whether the texture, which is the target, lets nothing shine through.
bool targetIsOpaque(SDL_Renderer* renderer, int w, int h) {
  std::vector<Uint32> pixels(static_cast<size_t>(w) * static_cast<size_t>(h));
  return SDL_RenderReadPixels(renderer, nullptr, SDL_PIXELFORMAT_ARGB8888, pixels.data(), w * 4) == 0 &&
         std::all_of(pixels.begin(), pixels.end(), [](Uint32 pixel) { return pixel >> 24 == 255; });
}

// A texture of the format with the pixels of another, to be drawn as that one is.
SDL_Texture* copyOf(SDL_Renderer* renderer, SDL_Texture* texture, Uint32 format, int w, int h) {
  SDL_Texture* const copy = SDL_CreateTexture(renderer, format, SDL_TEXTUREACCESS_TARGET, w, h);
  Uint8 r = 0, g = 0, b = 0, a = 0;
  SDL_BlendMode mode = SDL_BLENDMODE_NONE;
  SDL_GetTextureColorMod(texture, &r, &g, &b);
  SDL_GetTextureAlphaMod(texture, &a);
  SDL_GetTextureBlendMode(texture, &mode);
  SDL_SetTextureColorMod(texture, 255, 255, 255);
  SDL_SetTextureAlphaMod(texture, 255);
  SDL_SetTextureBlendMode(texture, SDL_BLENDMODE_NONE);
  SDL_SetRenderTarget(renderer, copy);
  SDL_RenderCopy(renderer, texture, nullptr, nullptr);
  for (SDL_Texture* const one : {texture, copy}) {
    SDL_SetTextureColorMod(one, r, g, b);
    SDL_SetTextureAlphaMod(one, a);
    SDL_SetTextureBlendMode(one, mode);
  }
  return copy;
}

// What the program draws with all the time, in the driver's fast formats.
void makeFast(SDL_Renderer* renderer) {
  SDL_Texture* const target = SDL_GetRenderTarget(renderer);
  std::vector<SDL_Texture*> drawnInto;
  for (const Call& c : calls)
    if (c.kind == TARGET) drawnInto.push_back(c.texture);
  for (const Call& c : calls) {
    Uint32 format = 0;
    int w = 0, h = 0;
    const bool copied = c.kind == COPY || c.kind == COPY_EX || c.kind == COPY_F || c.kind == COPY_EX_F;
    if (!copied || !c.texture || c.texture == target || substituteOf(c.texture) || made.count(c.texture)) continue;
    if (SDL_QueryTexture(c.texture, &format, nullptr, &w, &h) != 0 || !SDL_ISPIXELFORMAT_ALPHA(format)) continue;
    SDL_Texture* copy = copyOf(renderer, c.texture, SDL_PIXELFORMAT_ABGR8888, w, h);
    const bool isStill = std::find(drawnInto.begin(), drawnInto.end(), c.texture) == drawnInto.end();
    Uint8 a = 0;
    SDL_GetTextureAlphaMod(copy, &a);
    if (isStill && a == 255 && targetIsOpaque(renderer, w, h)) {
      SDL_DestroyTexture(copy);
      copy = copyOf(renderer, c.texture, SDL_PIXELFORMAT_RGB888, w, h);
      SDL_SetTextureBlendMode(copy, SDL_BLENDMODE_NONE);
    }
    substitutes.push_back({c.texture, copy});
  }
  SDL_SetRenderTarget(renderer, target);
}

void issue(Call c) {
  if (c.kind == CREATE) {
    substitutes.push_back({c.texture, SDL_CreateTextureFromSurface(c.renderer, c.surface)});
    return;
  }
  Substitute* const substitute = c.texture ? substituteOf(c.texture) : nullptr;
  if (substitute) c.texture = substitute->own;
  const SDL_Rect* source = c.hasSource ? &c.source : nullptr;
  const SDL_Rect* destination = c.hasDestination ? &c.destination : nullptr;
  const SDL_FRect* destinationF = c.hasDestination ? &c.destinationF : nullptr;
  switch (c.kind) {
    case COPY:
      SDL_RenderCopy(c.renderer, c.texture, source, destination);
      break;
    case COPY_EX:
      SDL_RenderCopyEx(c.renderer, c.texture, source, destination, c.angle, nullptr, c.flip);
      break;
    case COPY_F:
      SDL_RenderCopyF(c.renderer, c.texture, source, destinationF);
      break;
    case COPY_EX_F:
      SDL_RenderCopyExF(c.renderer, c.texture, source, destinationF, c.angle, nullptr, c.flip);
      break;
    case TARGET:
      SDL_SetRenderTarget(c.renderer, c.texture);
      break;
    case CLEAR:
      SDL_RenderClear(c.renderer);
      break;
    case FILL:
      SDL_RenderFillRect(c.renderer, destination);
      break;
    case COLOR:
      SDL_SetRenderDrawColor(c.renderer, c.r, c.g, c.b, c.a);
      break;
    case DRAW_BLEND:
      SDL_SetRenderDrawBlendMode(c.renderer, c.mode);
      break;
    case ALPHA:
      SDL_SetTextureAlphaMod(c.texture, c.a);
      break;
    case MOD:
      SDL_SetTextureColorMod(c.texture, c.r, c.g, c.b);
      break;
    case BLEND:
      SDL_SetTextureBlendMode(c.texture, c.mode);
      break;
    case PRESENT:
      SDL_RenderPresent(c.renderer);
      break;
    case CREATE:
      break;
    case DESTROY:
      SDL_DestroyTexture(c.texture);
      if (substitute) substitutes.erase(substitutes.begin() + (substitute - substitutes.data()));
      break;
  }
}

}  // namespace

namespace recorder {

void start() {
  for (const Substitute& each : substitutes) SDL_DestroyTexture(each.own);
  for (SDL_Texture* texture : parked) SDL_DestroyTexture(texture);
  for (const Call& c : calls)
    if (c.kind == CREATE) SDL_FreeSurface(c.surface);
  calls.clear();
  ends.clear();
  copyCount = 0;
  substitutes.clear();
  made.clear();
  parked.clear();
  recording = true;
}
void mark() { ends.push_back(calls.size()); }
void stop() {
  recording = false;
  substitutes.clear();
  const auto drawn = std::find_if(calls.begin(), calls.end(), [](const Call& c) { return c.renderer; });
  if (drawn != calls.end() && isSoftware(drawn->renderer)) makeFast(drawn->renderer);
  substitutes.reserve(substitutes.size() + 64);
}
int frames() { return static_cast<int>(ends.size()); }
long copies() { return copyCount; }

void replay(int frame) {
  for (size_t i = frame ? ends[frame - 1] : 0; i < ends[frame]; ++i) issue(calls[i]);
}

}  // namespace recorder

extern "C" {

int SDL_RenderCopy(SDL_Renderer* renderer, SDL_Texture* texture, const SDL_Rect* source,
                   const SDL_Rect* destination) {
  REAL(SDL_RenderCopy);
  if (recording) {
    Call call = copy(COPY, renderer, texture, source);
    call.hasDestination = destination;
    if (destination) call.destination = *destination;
    note(call);
  }
  return sdl(renderer, texture, source, destination);
}

int SDL_RenderCopyEx(SDL_Renderer* renderer, SDL_Texture* texture, const SDL_Rect* source,
                     const SDL_Rect* destination, const double angle, const SDL_Point* center,
                     const SDL_RendererFlip flip) {
  REAL(SDL_RenderCopyEx);
  if (recording) {
    Call call = copy(COPY_EX, renderer, texture, source);
    call.hasDestination = destination;
    if (destination) call.destination = *destination;
    call.angle = angle;
    call.flip = flip;
    note(call);
  }
  return sdl(renderer, texture, source, destination, angle, center, flip);
}

int SDL_RenderCopyF(SDL_Renderer* renderer, SDL_Texture* texture, const SDL_Rect* source,
                    const SDL_FRect* destination) {
  REAL(SDL_RenderCopyF);
  if (recording) {
    Call call = copy(COPY_F, renderer, texture, source);
    call.hasDestination = destination;
    if (destination) call.destinationF = *destination;
    note(call);
  }
  return sdl(renderer, texture, source, destination);
}

int SDL_RenderCopyExF(SDL_Renderer* renderer, SDL_Texture* texture, const SDL_Rect* source,
                      const SDL_FRect* destination, const double angle, const SDL_FPoint* center,
                      const SDL_RendererFlip flip) {
  REAL(SDL_RenderCopyExF);
  if (recording) {
    Call call = copy(COPY_EX_F, renderer, texture, source);
    call.hasDestination = destination;
    if (destination) call.destinationF = *destination;
    call.angle = angle;
    call.flip = flip;
    note(call);
  }
  return sdl(renderer, texture, source, destination, angle, center, flip);
}

int SDL_SetRenderTarget(SDL_Renderer* renderer, SDL_Texture* texture) {
  REAL(SDL_SetRenderTarget);
  if (recording) note(make(TARGET, renderer, texture));
  return sdl(renderer, texture);
}

int SDL_RenderClear(SDL_Renderer* renderer) {
  REAL(SDL_RenderClear);
  if (recording) note(make(CLEAR, renderer, nullptr));
  return sdl(renderer);
}

int SDL_RenderFillRect(SDL_Renderer* renderer, const SDL_Rect* rect) {
  REAL(SDL_RenderFillRect);
  if (recording) {
    Call call = make(FILL, renderer, nullptr);
    call.hasDestination = rect;
    if (rect) call.destination = *rect;
    note(call);
  }
  return sdl(renderer, rect);
}

int SDL_SetRenderDrawColor(SDL_Renderer* renderer, Uint8 r, Uint8 g, Uint8 b, Uint8 a) {
  REAL(SDL_SetRenderDrawColor);
  if (recording) {
    Call call = make(COLOR, renderer, nullptr);
    call.r = r, call.g = g, call.b = b, call.a = a;
    note(call);
  }
  return sdl(renderer, r, g, b, a);
}

int SDL_SetRenderDrawBlendMode(SDL_Renderer* renderer, SDL_BlendMode mode) {
  REAL(SDL_SetRenderDrawBlendMode);
  if (recording) {
    Call call = make(DRAW_BLEND, renderer, nullptr);
    call.mode = mode;
    note(call);
  }
  return sdl(renderer, mode);
}

int SDL_SetTextureAlphaMod(SDL_Texture* texture, Uint8 alpha) {
  REAL(SDL_SetTextureAlphaMod);
  Uint8 before = 0;
  if (recording && SDL_GetTextureAlphaMod(texture, &before) == 0 && before != alpha) {
    Call call = make(ALPHA, nullptr, texture);
    call.a = alpha;
    note(call);
  }
  return sdl(texture, alpha);
}

int SDL_SetTextureColorMod(SDL_Texture* texture, Uint8 r, Uint8 g, Uint8 b) {
  REAL(SDL_SetTextureColorMod);
  Uint8 red = 0, green = 0, blue = 0;
  if (recording && SDL_GetTextureColorMod(texture, &red, &green, &blue) == 0 &&
      (red != r || green != g || blue != b)) {
    Call call = make(MOD, nullptr, texture);
    call.r = r, call.g = g, call.b = b;
    note(call);
  }
  return sdl(texture, r, g, b);
}

int SDL_SetTextureBlendMode(SDL_Texture* texture, SDL_BlendMode mode) {
  REAL(SDL_SetTextureBlendMode);
  SDL_BlendMode before = SDL_BLENDMODE_NONE;
  if (recording && SDL_GetTextureBlendMode(texture, &before) == 0 && before != mode) {
    Call call = make(BLEND, nullptr, texture);
    call.mode = mode;
    note(call);
  }
  return sdl(texture, mode);
}

// While calls are noted nobody draws past them into the window's memory.
SDL_Surface* SDL_GetWindowSurface(SDL_Window* window) {
  REAL(SDL_GetWindowSurface);
  return recording ? nullptr : sdl(window);
}

SDL_Texture* SDL_CreateTextureFromSurface(SDL_Renderer* renderer, SDL_Surface* surface) {
  REAL(SDL_CreateTextureFromSurface);
  SDL_Texture* const texture = sdl(renderer, surface);
  if (recording) {
    Call call = make(CREATE, renderer, texture);
    call.surface = surface;
    ++surface->refcount;  // whoever frees it leaves it to the replay
    note(call);
    substitutes.push_back({texture, nullptr});
    made.insert(texture);
  }
  return texture;
}

void SDL_DestroyTexture(SDL_Texture* texture) {
  REAL(SDL_DestroyTexture);
  if (Substitute* const known = recording ? substituteOf(texture) : nullptr) {
    note(make(DESTROY, nullptr, texture));
    substitutes.erase(substitutes.begin() + (known - substitutes.data()));
  } else if (recording && texture) {
    parked.push_back(texture);  // from before the recording: it may have been drawn, and will be in the replay
    return;
  }
  sdl(texture);
}

void SDL_RenderPresent(SDL_Renderer* renderer) {
  REAL(SDL_RenderPresent);
  if (recording) note(make(PRESENT, renderer, nullptr));
  sdl(renderer);
}

}  // extern "C"
