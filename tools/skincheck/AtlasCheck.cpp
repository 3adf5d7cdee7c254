#include "AtlasCheck.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string_view>

#include "PictureFile.h"
#include "XmlFile.h"

namespace {

using Node = XmlFile::Node;
using Attribute = XmlFile::Attribute;

// A game's overlay is repeated from its 31st frame on.
constexpr size_t kOverlayLoop = 30;
// Names of frames are numbered with five figures at most.
constexpr size_t kMostFrames = 99999;
// The program takes no larger number.
constexpr int kLargest = 1000000;

std::string sizeText(int width, int height) { return std::to_string(width) + " x " + std::to_string(height); }

struct Frame {
  int x = 0, y = 0, w = 0, h = 0, oX = 0, oY = 0, oW = 0, oH = 0;
  std::string name;
  TextPlace place;
};

// The name without what follows its last number, taken apart; `number` is empty without one.
struct NumberedName {
  std::string stem, number;

  explicit NumberedName(const std::string& name) {
    const size_t dot = name.find('.');
    const std::string whole = name.substr(0, dot);
    const size_t end = whole.find_last_of("0123456789");
    if (end == std::string::npos) {
      stem = whole;
      return;
    }
    const size_t before = whole.find_last_not_of("0123456789", end);
    const size_t begin = before == std::string::npos ? 0 : before + 1;
    stem = whole.substr(0, begin) + "#" + whole.substr(end + 1);
    number = whole.substr(begin, end + 1 - begin);
    number.erase(0, std::min(number.find_first_not_of('0'), number.size() - 1));
  }

  bool isBehind(const NumberedName& other) const {
    if (stem != other.stem || number.empty() || other.number.empty()) return false;
    if (number.size() != other.number.size()) return number.size() > other.number.size();
    return number > other.number;
  }
};

Frame readFrame(XmlFile& file, const Node& node) {
  Frame frame;
  frame.place = file.placeOf(node);
  const auto read = [&](const char* name, std::optional<int> fallback) {
    return std::clamp(file.number(node, name, "atlas-attribute", fallback), -kLargest, kLargest);
  };
  if (const Attribute* name = file.attribute(node, "n", "atlas-attribute")) frame.name = name->value();
  frame.x = read("x", std::nullopt);
  frame.y = read("y", std::nullopt);
  frame.w = read("w", std::nullopt);
  frame.h = read("h", std::nullopt);
  frame.oX = read("oX", 0);
  frame.oY = read("oY", 0);
  frame.oW = read("oW", frame.w);
  frame.oH = read("oH", frame.h);
  if (const Attribute* turned = node.first_attribute("r"))
    file.error("atlas-rotated",
               "the frame is stored turned, the program shows it as it lies: pack without rotation",
               file.placeOf(*turned));
  return frame;
}

void checkRoot(XmlFile& file, const Node& root) {
  if (const Attribute* blend = root.first_attribute("blendMode")) {
    static constexpr std::array<std::string_view, 4> kModes = {"BLEND", "ADD", "MOD", "NONE"};
    if (std::find(kModes.begin(), kModes.end(), blend->value()) == kModes.end())
      file.error("atlas-blend",
                 "the blend mode \"" + std::string(blend->value()).substr(0, 40) +
                   "\" is not known and the frames are drawn as opaque rectangles: BLEND, ADD, MOD and NONE are",
                 file.placeOf(*blend));
  }
  if (const Attribute* colour = root.first_attribute("backgroundColor")) {
    const std::string text = colour->value();
    if (std::count(text.begin(), text.end(), ',') < 3)
      file.warn("atlas-background",
                "\"backgroundColor\" needs red, green, blue and alpha: the program leaves it out",
                file.placeOf(*colour));
  }
}

PictureFile readImage(XmlFile& file, const Node& root, Findings& findings) {
  PictureFile picture;
  const Attribute* image = file.attribute(root, "imagePath", "atlas-picture");
  if (!image) return picture;
  const std::string path = file.path().substr(0, file.path().rfind('/') + 1) + image->value();
  const TextPlace place = file.placeOf(*image);
  picture = readPicture(path, false, findings);
  if (picture.width == 0)
    file.error("atlas-picture", "the picture " + path + whyNot(picture) + ": the frames show nothing", place);
  else if (picture.byFallback)
    file.warn("fallback", "the picture " + path + " cannot be read, the program takes " + picture.file, place);
  return picture;
}

void checkFrame(XmlFile& file, const Frame& frame, const PictureFile& picture) {
  if (frame.w < 1 || frame.h < 1) {
    file.error("atlas-rect", "the frame measures " + sizeText(frame.w, frame.h) + " and shows nothing",
               frame.place);
    return;
  }
  if (picture.width > 0 &&
      (frame.x < 0 || frame.y < 0 || frame.x + frame.w > picture.width || frame.y + frame.h > picture.height))
    file.error("atlas-rect", "the frame lies outside the picture of " + sizeText(picture.width, picture.height),
               frame.place);
  if (frame.w > frame.oW || frame.h > frame.oH)
    file.error("atlas-frame",
               "the frame measures " + sizeText(frame.w, frame.h) + " and is larger than its whole of " +
                 sizeText(frame.oW, frame.oH),
               frame.place);
  else if (frame.oX < 0 || frame.oY < 0 || frame.oX + frame.w > frame.oW || frame.oY + frame.h > frame.oH)
    file.warn("atlas-frame",
              "the frame stands out of its whole of " + sizeText(frame.oW, frame.oH) + " at its place " +
                std::to_string(frame.oX) + ", " + std::to_string(frame.oY),
              frame.place);
}

void checkSizes(XmlFile& file, const std::vector<Frame>& frames, int width, int height) {
  for (const Frame& frame : frames) {
    if (frame.oW == width && frame.oH == height) continue;
    const std::string text = "the whole frame is " + sizeText(frame.oW, frame.oH) + ", the place " +
                             sizeText(width, height) + ": a larger one is shifted, a smaller one stays left and up";
    if (&frame == &frames.front())
      file.error("atlas-size", text, frame.place);
    else if (frame.oW != frames.front().oW || frame.oH != frames.front().oH)
      file.warn("atlas-size", text, frame.place);
  }
}

void checkOrder(XmlFile& file, const std::vector<Frame>& frames) {
  for (size_t i = 1; i < frames.size(); ++i)
    if (NumberedName(frames[i - 1].name).isBehind(NumberedName(frames[i].name))) {
      file.warn("atlas-order",
                "the frame \"" + frames[i].name.substr(0, 40) + "\" comes behind \"" +
                  frames[i - 1].name.substr(0, 40) + "\": frames are played in the file's order, pack by name",
                frames[i].place);
      return;
    }
}

void noFrames(XmlFile& file, const Node& root) {
  if (const Node* other = root.first_node("SubTexture"))
    file.error(
      "atlas-form",
      "the frames are elements \"SubTexture\", which the program does not read: choose the form with \"sprite\"",
      file.placeOf(*other));
  else
    file.error("atlas-form", "there is no element \"sprite\": the animation shows nothing", file.placeOf(root));
}

std::string stemOf(const std::string& path) {
  const std::string name = path.substr(path.rfind('/') + 1);
  return name.substr(0, name.rfind('.'));
}

}  // namespace

void checkAtlas(const std::string& path, int width, int height, Findings& findings) {
  XmlFile file(path, findings);
  if (!file.parsed()) return;
  const Node* root = file.root("TextureAtlas");
  if (!root) {
    const Node* other = file.anyRoot();
    file.error("atlas-form", "there is no element \"TextureAtlas\": the animation shows nothing",
               other ? file.placeOf(*other) : TextPlace{});
    return;
  }
  checkRoot(file, *root);
  const PictureFile picture = readImage(file, *root, findings);
  std::vector<Frame> frames;
  for (const Node* node = root->first_node("sprite"); node; node = node->next_sibling("sprite")) {
    frames.push_back(readFrame(file, *node));
    checkFrame(file, frames.back(), picture);
  }
  if (frames.empty()) {
    noFrames(file, *root);
    return;
  }
  checkSizes(file, frames, width, height);
  checkOrder(file, frames);
  if (frames.size() > kMostFrames)
    file.warn("atlas-count", "there are " + std::to_string(frames.size()) + " frames, which is no animation",
              file.placeOf(*root));
  if (stemOf(path) == "overlay" && frames.size() <= kOverlayLoop)
    file.warn("atlas-loop",
              "there are " + std::to_string(frames.size()) +
                " frames: an overlay is repeated from its frame 31 on and goes blank without one",
              file.placeOf(*root));
}
