// Atlases that a seeded hand has broken, the description and at times the picture beside it: the program reads or
// refuses each, plays and draws every frame that is left, and takes little memory and few lines for it.
#include "tools/skin/AtlasPack.h"

#include "BrokenFileWatch.h"
#include "SkinFiles.h"
#include "ToolRun.h"
#include "components/TSpriteAnimation.h"
#include "tests/support/FakeClock.h"
#include "tests/support/TestPaths.h"
#include "tests/support/WidgetHarness.h"

namespace {

class BrokenAtlases : public testing::Test {
 protected:
  BrokenAtlases() {
    std::filesystem::create_directories(folder + "run");
    AtlasPack pack("ADD");
    for (int i = 0; i < 6; ++i) {
      const Canvas part(10 + 3 * i, 20 - 2 * i);
      part.setColour({0.1 * i, 0.5, 1, 1});
      cairo_paint(part.cr());
      pack.addPart("frame" + std::to_string(i), part, 3 * i, 2, 60, 40);
    }
    pack.save(folder + "own");
    bases.push_back(folder + "own");
    const std::string data = std::string(testpaths::source) + "/tests/data/atlas/";
    for (const char* name : {"trimmed", "whole", "rotated", "subtexture"}) bases.push_back(data + name);
  }

  void write(unsigned seed) {
    const std::string& base = bases[seed % bases.size()];
    const std::string pixels = skinfiles::readFile(base + ".png");
    testfile(base.substr(base.rfind('/') + 1) + ".png",
             seed % 7 == 3 ? Mutator(seed).broken(pixels, Mutator::PNG) : pixels);
    testfile("mutant.xml", Mutator(seed).broken(skinfiles::readFile(base + ".xml"), Mutator::XML));
  }
  void testfile(const std::string& name, const std::string& bytes) {
    std::ofstream(folder + "run/" + name, std::ios::binary) << bytes;
  }

  // The frames that were read.
  int play(unsigned seed) {
    SDL_Renderer* renderer = harness.renderer();
    const auto mode = static_cast<TSpriteAnimation::TAnimationMode>(seed % 3);
    TSpriteAnimation sprites(renderer, 0, 0, 60, 40, folder + "run/mutant", mode, "sprites");
    TSpriteAnimation copy(renderer, 0, 0, 60, 40, "", TSpriteAnimation::LOOP, "copy");
    copy.CopyData(&sprites);
    if (seed % 2) copy.draw();  // beside the loader
    sprites.SetFrame(0, false);
    const int frames = sprites.GetNumFrames();
    for (int i = 0; i < frames; ++i) {
      if (i % 3 == 0) sprites.drawFrame(i, {5, 5, 30, 30});
      sprites.SetFrame(i, false);
      sprites.ResetAnimation();
      sprites.draw();
      sprites.SetFrame(i, false);
      sprites.draw();
      if (i < 4) {
        if (SDL_Texture* frame = sprites.GetFrame(i)) SDL_DestroyTexture(frame);
      }
    }
    copy.SetRefreshRate(25);
    for (int i = 0; i < 8; ++i, clock.advance(130)) copy.draw();
    return frames;
  }

  const ScratchFolder folder{"brokenatlases"};
  WidgetHarness harness{200, 100};
  FakeClock clock{1000};
  std::vector<std::string> bases;
};

}  // namespace

TEST_F(BrokenAtlases, AreReadOrRefusedAndPlayed) {
  int read = 0, refused = 0;
  for (int seed = 0; seed < brokenFiles(3300); ++seed) {
    SCOPED_TRACE(seed);
    write(static_cast<unsigned>(seed));
    const BrokenFileWatch watch(24);
    ++(play(static_cast<unsigned>(seed)) > 0 ? read : refused);
    if (HasFailure()) break;  // the file lies where it was written
  }
  if (brokenFiles(3300) >= 1000) {
    EXPECT_GT(read, refused / 10);
    EXPECT_GT(refused, read / 10);
  }
  std::printf("%d read, %d refused\n", read, refused);
}
