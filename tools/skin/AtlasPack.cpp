#include "AtlasPack.h"

#include <algorithm>
#include <cstring>
#include <fstream>
#include <numeric>
#include <sstream>
#include <stdexcept>

namespace {
constexpr int kGap = 1;  // the frames are cut out before they are scaled; the gap is for people who look at it

// The upper edge of what is packed so far: spans of one height, from left to right.
class Skyline {
 public:
  explicit Skyline(int width) : mWidth(width), mSpans{{0, 0, width}} {}

  // Puts a rectangle as low as possible, then as far left as possible. False when it is wider than the atlas.
  bool place(int w, int h, int& x, int& y) {
    size_t best = mSpans.size();
    int bestY = 0;
    for (size_t i = 0; i < mSpans.size(); ++i) {
      const int top = heightAt(i, w);
      if (top >= 0 && (best == mSpans.size() || top < bestY)) {
        best = i;
        bestY = top;
      }
    }
    if (best == mSpans.size()) return false;
    x = mSpans[best].x;
    y = bestY;
    raise(x, w, bestY + h);
    mHeight = std::max(mHeight, bestY + h);
    return true;
  }
  int height() const { return mHeight; }

 private:
  struct Span {
    int x, y, w;
  };

  // Where a rectangle of that width would come to lie at the i-th span; -1 beyond the right edge.
  int heightAt(size_t i, int w) const {
    if (mSpans[i].x + w > mWidth) return -1;
    int top = 0;
    for (int left = w; left > 0; left -= mSpans[i].w, ++i) top = std::max(top, mSpans[i].y);
    return top;
  }

  void raise(int x, int w, int y) {
    std::vector<Span> next;
    for (const Span& span : mSpans) {
      const int before = std::min(span.x + span.w, x) - span.x;
      const int after = span.x + span.w - std::max(span.x, x + w);
      if (before > 0) next.push_back({span.x, span.y, before});
      if (span.x <= x && x < span.x + span.w) next.push_back({x, y, w});
      if (after > 0) next.push_back({span.x + span.w - after, span.y, after});
    }
    mSpans = std::move(next);
  }

  int mWidth;
  int mHeight = 0;
  std::vector<Span> mSpans;
};

std::string escaped(const std::string& text) {
  std::string out;
  for (const char c : text)
    if (c == '&')
      out += "&amp;";
    else if (c == '<')
      out += "&lt;";
    else if (c == '"')
      out += "&quot;";
    else
      out += c;
  return out;
}
}  // namespace

AtlasPack::AtlasPack(std::string blendMode, int maxSize) : mBlendMode(std::move(blendMode)), mMaxSize(maxSize) {
  for (const char* known : {"BLEND", "ADD", "MOD", "NONE"})
    if (mBlendMode == known) return;
  throw std::runtime_error("the blend mode " + mBlendMode + " is none of BLEND, ADD, MOD and NONE");
}

void AtlasPack::add(const std::string& name, const Canvas& frame) {
  addPart(name, frame, 0, 0, frame.width(), frame.height());
}

void AtlasPack::addPart(const std::string& name, const Canvas& part, int x, int y, int width, int height) {
  if (name.empty()) throw std::runtime_error("a frame has no name");
  if (mFrames.empty()) {
    mWidth = width;
    mHeight = height;
  }
  if (width != mWidth || height != mHeight)
    throw std::runtime_error("frame " + name + " is " + std::to_string(width) + " by " + std::to_string(height) +
                             ", the first one " + std::to_string(mWidth) + " by " + std::to_string(mHeight));
  int left = part.width(), right = 0, top = part.height(), bottom = 0;
  for (int row = 0; row < part.height(); ++row) {
    const unsigned char* data = part.row(row);
    for (int column = 0; column < part.width(); ++column) {
      if (data[4 * column + 3] == 0) continue;
      left = std::min(left, column);
      right = std::max(right, column + 1);
      top = std::min(top, row);
      bottom = row + 1;
    }
  }
  if (right == 0) {
    left = top = 0;
    right = bottom = 1;
  }
  if (x + left < 0 || y + top < 0 || x + right > width || y + bottom > height)
    throw std::runtime_error("frame " + name + " reaches out of its " + std::to_string(width) + " by " +
                             std::to_string(height) + " pixels");
  Picture picture;
  picture.width = right - left;
  picture.height = bottom - top;
  const auto bytes = static_cast<size_t>(picture.width) * 4;
  picture.pixels.resize(bytes * static_cast<size_t>(picture.height));
  for (int row = 0; row < picture.height; ++row)
    std::memcpy(&picture.pixels[bytes * static_cast<size_t>(row)], part.row(top + row) + ptrdiff_t{4} * left,
                bytes);
  const size_t index = store(std::move(picture));
  mFrames.push_back({name, index, x + left, y + top});
}

size_t AtlasPack::store(Picture picture) {
  for (size_t i = 0; i < mPictures.size(); ++i)
    if (mPictures[i].width == picture.width && mPictures[i].pixels == picture.pixels) return i;
  mPictures.push_back(std::move(picture));
  return mPictures.size() - 1;
}

void AtlasPack::pack(AtlasReport& report) {
  std::vector<size_t> order(mPictures.size());
  std::iota(order.begin(), order.end(), size_t{0});
  std::stable_sort(order.begin(), order.end(), [this](size_t a, size_t b) {
    const Picture &first = mPictures[a], &second = mPictures[b];
    return first.height != second.height ? first.height > second.height : first.width > second.width;
  });
  int widest = 0;
  for (const Picture& picture : mPictures) widest = std::max(widest, picture.width + kGap);
  // Several widths are tried. The smallest atlas wins, a few pixels given for one that is nearer to a square.
  int64_t best = 0;
  for (int width = widest; width <= mMaxSize; width += std::max(16, width / 12)) {
    Skyline skyline(width);
    std::vector<std::pair<int, int>> places(mPictures.size());
    for (const size_t i : order)
      skyline.place(mPictures[i].width + kGap, mPictures[i].height + kGap, places[i].first, places[i].second);
    const int height = skyline.height();
    if (height > mMaxSize) continue;
    const int64_t longer = std::max(width, height), shorter = std::min(width, height);
    const int64_t cost = int64_t{width} * height * (100 + longer / shorter);
    if (best != 0 && cost >= best) continue;
    best = cost;
    report.width = width;
    report.height = height;
    for (size_t i = 0; i < places.size(); ++i) {
      mPictures[i].x = places[i].first;
      mPictures[i].y = places[i].second;
    }
  }
  if (best == 0)
    throw std::runtime_error("the frames do not fit into " + std::to_string(mMaxSize) + " by " +
                             std::to_string(mMaxSize) + " pixels");
}

void AtlasPack::writeDescription(const std::string& path, const std::string& image,
                                 const AtlasReport& report) const {
  std::ostringstream xml;
  xml.imbue(std::locale::classic());
  xml << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<TextureAtlas imagePath=\"" << escaped(image)
      << "\" blendMode=\"" << mBlendMode << "\" width=\"" << report.width << "\" height=\"" << report.height
      << "\">\n";
  for (const Frame& frame : mFrames) {
    const Picture& picture = mPictures[frame.picture];
    xml << "  <sprite n=\"" << escaped(frame.name) << "\" x=\"" << picture.x << "\" y=\"" << picture.y << "\" w=\""
        << picture.width << "\" h=\"" << picture.height << "\" oX=\"" << frame.xOffset << "\" oY=\""
        << frame.yOffset << "\" oW=\"" << mWidth << "\" oH=\"" << mHeight << "\"/>\n";
  }
  xml << "</TextureAtlas>\n";
  std::ofstream file(path, std::ios::binary);
  file << xml.str();
  if (!file.flush()) throw std::runtime_error(path + ": cannot be written");
}

AtlasReport AtlasPack::save(const std::string& basePath) {
  if (mFrames.empty()) throw std::runtime_error(basePath + ": an atlas needs at least one frame");
  if (basePath.find(".png") != std::string::npos)
    throw std::runtime_error(basePath + ": \".png\" in the name would make the program look for a strip");
  const std::string name = basePath.substr(basePath.rfind('/') + 1);
  if (name.empty() || name[0] == '.' || name.ends_with(".xml"))
    throw std::runtime_error("\"" + basePath + "\" is no name for an atlas: a path without extension is");
  AtlasReport report;
  pack(report);
  report.frames = static_cast<int>(mFrames.size());
  report.distinct = static_cast<int>(mPictures.size());
  const Canvas atlas(report.width, report.height);
  for (const Picture& picture : mPictures) {
    report.used += int64_t{picture.width} * picture.height;
    const auto bytes = static_cast<size_t>(picture.width) * 4;
    for (int row = 0; row < picture.height; ++row)
      std::memcpy(atlas.row(picture.y + row) + ptrdiff_t{4} * picture.x,
                  &picture.pixels[bytes * static_cast<size_t>(row)], bytes);
  }
  atlas.changed();
  atlas.save(basePath + ".png");
  writeDescription(basePath + ".xml", name + ".png", report);
  return report;
}
