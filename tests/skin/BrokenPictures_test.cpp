// Pictures that a seeded hand has broken: each is loaded or refused, as a surface and as a texture, with few lines
// and without memory for pixels that the file cannot hold.
#include <numeric>
#include "BrokenFileWatch.h"

#include "SkinFiles.h"
#include "ToolRun.h"
#include "tests/support/TestPaths.h"
#include "tests/support/WidgetHarness.h"
#include "tools/skin/Canvas.h"
#include "vendelo-sdl2/MyUtils.h"

namespace {

class BrokenPictures : public testing::Test {
 protected:
  BrokenPictures() {
    const Canvas canvas(70, 50);
    setGradient(canvas.cr(), 0, 0, 70, 50, {{0, {1, 0, 0, 1}}, {1, {0, 0, 1, 0.2}}});
    cairo_paint(canvas.cr());
    canvas.save(folder + "own.png");
    canvas.saveJpeg(folder + "own.jpg", 80);
    const std::string data = std::string(testpaths::source) + "/tests/data/";
    for (const std::string& path :
         {folder + "own.jpg", folder + "own.png", data + "fonts/msdf.png", data + "atlas/trimmed.png"})
      bases.push_back(path);
  }

  // Whether the broken picture was loaded.
  bool load(unsigned seed) {
    const std::string& base = bases[seed % bases.size()];
    const bool jpeg = base.ends_with(".jpg");
    const std::string path = folder + (jpeg ? "mutant.jpg" : "mutant.png");
    std::ofstream(path, std::ios::binary)
      << Mutator(seed).broken(skinfiles::readFile(base), jpeg ? Mutator::JPEG : Mutator::PNG);
    const BrokenFileWatch watch(48);  // libpng tells each field of a header, at each of four loads
    SDL_Surface* surface = MyUtils::LoadSurface(path);
    if (surface) {
      EXPECT_GT(surface->w, 0);
      EXPECT_GT(surface->h, 0);
      // Every byte of it is there.
      const auto* row = static_cast<const Uint8*>(surface->pixels);
      const int width = surface->w * surface->format->BytesPerPixel;
      for (int y = 0; y < surface->h; ++y, row += surface->pitch) sum += std::accumulate(row, row + width, 0);
    }
    SDL_Texture* texture = MyUtils::LoadTexture(harness.renderer(), path);
    if (texture) {
      SDL_RenderCopy(harness.renderer(), texture, nullptr, nullptr);
      SDL_DestroyTexture(texture);
    }
    SDL_FreeSurface(surface);
    std::filesystem::remove(path);  // the other kind must not be found in its place
    return surface != nullptr;
  }

  const ScratchFolder folder{"brokenpictures"};
  WidgetHarness harness{100, 100};
  std::vector<std::string> bases;
  long sum = 0;
};

}  // namespace

TEST_F(BrokenPictures, AreLoadedOrRefused) {
  int read = 0, refused = 0;
  for (int seed = 0; seed < brokenFiles(1000); ++seed) {
    SCOPED_TRACE(seed);
    ++(load(static_cast<unsigned>(seed)) ? read : refused);
    if (HasFailure()) break;
  }
  if (brokenFiles(1000) >= 1000) {
    EXPECT_GT(read, refused / 10);
    EXPECT_GT(refused, read / 10);
  }
  std::printf("%d read, %d refused\n", read, refused);
}
