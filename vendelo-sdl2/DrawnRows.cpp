#include "vendelo-sdl2/DrawnRows.h"

#include <bit>
#include <cstdint>
#include <cstring>

namespace vendelo_sdl2 {
namespace {

// Four pixels, and the channels of two.
using TPixels = Uint8 __attribute__((vector_size(16)));
using TChannels = Uint16 __attribute__((vector_size(16)));
constexpr int kStep = 4;
// Pixels to fetch in advance: a window and a full-screen picture do not fit into a processor's cache.
constexpr int kAhead = 256;

inline TPixels read(const Uint32* pixels) {
  TPixels four;
  std::memcpy(&four, pixels, sizeof four);
  return four;
}

inline TChannels firstTwo(TPixels four) {
  constexpr TPixels none{};
  return std::bit_cast<TChannels>(
    __builtin_shufflevector(four, none, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23));
}

inline TChannels lastTwo(TPixels four) {
  constexpr TPixels none{};
  return std::bit_cast<TChannels>(
    __builtin_shufflevector(four, none, 8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31));
}

// The lower byte of each channel.
inline TPixels joined(TChannels first, TChannels last) {
  return __builtin_shufflevector(std::bit_cast<TPixels>(first), std::bit_cast<TPixels>(last), 0, 2, 4, 6, 8, 10, 12,
                                 14, 16, 18, 20, 22, 24, 26, 28, 30);
}

// Exact below 65535.
inline TChannels by255(TChannels value) { return (value + 1 + (value >> 8)) >> 8; }

inline TChannels ownAlpha(TChannels two) { return __builtin_shufflevector(two, two, 3, 3, 3, 3, 7, 7, 7, 7); }

inline TChannels swapped(TChannels two) { return __builtin_shufflevector(two, two, 2, 1, 0, 3, 6, 5, 4, 7); }

inline TChannels faded(TChannels below, TChannels above, TChannels alpha) {
  return by255(above * alpha) + by255((255 - alpha) * below);
}

// In 256ths of the difference, which runs over.
inline TChannels blended(TChannels below, TChannels above, TChannels alpha) {
  return below + ((above - below) * alpha >> 8);
}

inline bool isTransparent(const Uint32* pixels) {
  uint64_t pairs[2];
  std::memcpy(pairs, pixels, sizeof pairs);
  return ((pairs[0] | pairs[1]) & 0xff000000ff000000u) == 0;
}

template <class F>
void eachFour(Uint32* to, const Uint32* from, int count, const F& change) {
  int x = 0;
  for (; x <= count - kStep; x += kStep) {
    __builtin_prefetch(from + x + kAhead);
    __builtin_prefetch(to + x + kAhead, 1);
    change(to + x, from + x);
  }
  if (x == count) return;
  const auto bytes = static_cast<size_t>(count - x) * sizeof(Uint32);
  Uint32 above[kStep] = {}, below[kStep] = {};
  std::memcpy(above, from + x, bytes);
  std::memcpy(below, to + x, bytes);
  change(below, above);
  std::memcpy(to + x, below, bytes);
}

template <class F>
void mix(Uint32* below, const Uint32* above, const F& mixed) {
  const TPixels b = read(below), a = read(above);
  const TPixels result = joined(mixed(firstTwo(b), firstTwo(a)), mixed(lastTwo(b), lastTwo(a)));
  std::memcpy(below, &result, sizeof result);
}

template <class F>
void eachVisibleFour(Uint32* to, const Uint32* from, int count, const F& mixed) {
  eachFour(to, from, count, [&mixed](Uint32* below, const Uint32* above) {
    if (!isTransparent(above)) mix(below, above, mixed);
  });
}

}  // namespace

void copiedRow(Uint32* to, const Uint32* from, int count, Uint8) {
  std::memcpy(to, from, static_cast<size_t>(count) * sizeof *to);
}

void blendedSwappedRow(Uint32* to, const Uint32* from, int count, Uint8) {
  eachVisibleFour(to, from, count, [](TChannels below, TChannels above) {
    const TChannels alpha = ownAlpha(above);
    const auto isAll = std::bit_cast<TChannels>(alpha == 255);
    return blended(below, swapped(above), alpha + (isAll & 1));
  });
}

void fadedRow(Uint32* to, const Uint32* from, int count, Uint8 alpha) {
  eachVisibleFour(to, from, count, [alpha](TChannels below, TChannels above) {
    return faded(below, above, by255(ownAlpha(above) * alpha));
  });
}

void fadedSwappedRow(Uint32* to, const Uint32* from, int count, Uint8 alpha) {
  eachVisibleFour(to, from, count, [alpha](TChannels below, TChannels above) {
    return faded(below, swapped(above), by255(ownAlpha(above) * alpha));
  });
}

void fadedOpaqueRow(Uint32* to, const Uint32* from, int count, Uint8 alpha) {
  constexpr TChannels one = {1, 1, 1, 1, 1, 1, 1, 1};
  eachFour(to, from, count, [of = one * alpha](Uint32* below, const Uint32* above) {
    mix(below, above, [&of](TChannels b, TChannels a) { return blended(b, a, of); });
  });
}

}  // namespace vendelo_sdl2
