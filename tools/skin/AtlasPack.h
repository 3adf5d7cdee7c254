#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Canvas.h"

// What became of the frames of one atlas.
struct AtlasReport {
  int frames = 0;    // rows of the description
  int distinct = 0;  // pictures in the atlas: equal frames share one
  int width = 0, height = 0;
  int64_t used = 0;  // pixels of the distinct pictures

  int64_t pixels() const { return int64_t{width} * height; }
  // Part of the atlas that shows nothing, 0 to 1.
  double waste() const { return 1 - static_cast<double>(used) / static_cast<double>(pixels()); }
};

// Packs the frames of an animation into one picture and describes it in the XML form of the sprite reader.
//
// A frame is cut down to what is not transparent; equal cuts are stored once. Frames are never turned, since the
// program draws them as they lie in the atlas. A frame of nothing keeps one clear pixel, so that it has a size.
//
// One thread. Pixels throughout. The frames are copied on `add`. Whatever the reader could not take throws
// `std::runtime_error` with the reason: no frame, frames of different sizes, a blend mode that it does not know, a
// name with ".png" in it (that would be read as a strip), one that is empty, hidden or ends in ".xml", an atlas
// larger than `maxSize`.
class AtlasPack {
 public:
  // `blendMode` is "BLEND", "ADD", "MOD" or "NONE".
  explicit AtlasPack(std::string blendMode, int maxSize = 8192);

  // Adds the next frame in playing order.
  void add(const std::string& name, const Canvas& frame);
  // Adds a frame of `width` by `height` of which only `part` with its top left corner at (x, y) is drawn.
  void addPart(const std::string& name, const Canvas& part, int x, int y, int width, int height);

  // Writes `basePath` + ".png" and ".xml".
  AtlasReport save(const std::string& basePath);

 private:
  struct Picture {
    int width = 0, height = 0, x = 0, y = 0;
    std::vector<unsigned char> pixels;  // four bytes each, premultiplied
  };
  struct Frame {
    std::string name;
    size_t picture;
    int xOffset, yOffset;
  };

  size_t store(Picture picture);
  void pack(AtlasReport& report);
  void writeDescription(const std::string& path, const std::string& image, const AtlasReport& report) const;

  std::string mBlendMode;
  int mMaxSize;
  int mWidth = 0, mHeight = 0;
  std::vector<Frame> mFrames;
  std::vector<Picture> mPictures;
};
