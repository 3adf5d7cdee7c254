// Fonts that a seeded hand has broken, the description and at times the picture beside it: the program reads or
// refuses each, draws with what it has got, and takes little memory and few lines for it.
#include "tools/skin/FontPack.h"

#include "BrokenFileWatch.h"
#include "SkinFiles.h"
#include "ToolRun.h"
#include "common/TBitmapFont.h"
#include "components/TControlCyphers3.h"
#include "components/TGlyphLabel.h"
#include "tests/support/LogLines.h"
#include "tests/support/TestPaths.h"
#include "tests/support/WidgetHarness.h"

using namespace vendelo_sdl2;

namespace {

const std::string kTexts[] = {"AVTo 0123456789.,%\"&\xe2\x82\xac\xc3\x84", "A\nVA\n\nT 5", "\xff\xe2\x82", "0"};

class BrokenFonts : public testing::Test {
 protected:
  BrokenFonts() {
    const Typeface face(fontfile::kCondensedBold, 20);
    FontPack pack({parsedWhite(), {}, 1, 1, 0}, 30, 22);
    pack.add(face, decode(kTexts[0]));
    pack.save(folder + "own", "own", 128);
    bases.push_back(folder + "own");
    const std::string data = std::string(testpaths::source) + "/tests/data/fonts/";
    for (const char* name : {"sdf", "pages", "msdf", "text"}) bases.push_back(data + name);
  }
  static Ramp parsedWhite() { return {{0, {1, 1, 1, 1}}, {1, {1, 1, 0, 1}}}; }

  // The folder has the pictures of all fonts; the one of the mutant is put where the description looks for it.
  void write(unsigned seed) {
    const std::string& base = bases[seed % bases.size()];
    std::string picture = base + (base.ends_with("pages") ? ".0.png" : ".png");
    if (base.ends_with("text")) picture = bases[0] + ".png";
    const std::string name = picture.substr(picture.rfind('/') + 1);
    const std::string pixels = skinfiles::readFile(picture);
    testfile(name, seed % 7 == 3 ? Mutator(seed).broken(pixels, Mutator::PNG) : pixels);
    testfile("mutant.fnt", Mutator(seed).broken(skinfiles::readFile(base + ".fnt"), Mutator::XML));
  }
  void testfile(const std::string& name, const std::string& bytes) {
    std::ofstream(folder + "run/" + name, std::ios::binary) << bytes;
  }

  void draw(const TBitmapFont& font, unsigned seed) {
    SDL_Renderer* renderer = harness.renderer();
    for (const std::string& text : kTexts) {
      int w = -1, h = -1;
      const auto align = static_cast<TAlignment>(seed % 9);
      SDL_Texture* texture = font.RenderText(renderer, text, &w, &h, align);
      if (!texture) continue;
      int textureW = 0, textureH = 0;
      SDL_QueryTexture(texture, nullptr, nullptr, &textureW, &textureH);
      EXPECT_EQ(w, textureW);
      EXPECT_EQ(std::max(h, 1), textureH);
      const SDL_Rect place{0, 0, 200, 100};
      SDL_RenderCopy(renderer, texture, nullptr, &place);
      SDL_DestroyTexture(texture);
    }
  }

  const ScratchFolder folder{"brokenfonts"};
  LogLines log;
  WidgetHarness harness{200, 100};
  std::vector<std::string> bases;
};

}  // namespace

TEST_F(BrokenFonts, AreReadOrRefusedAndDrawn) {
  std::filesystem::create_directories(folder + "run");
  int read = 0, refused = 0;
  const std::string base = folder + "run/mutant";
  for (int seed = 0; seed < brokenFiles(3400); ++seed) {
    SCOPED_TRACE(seed);
    write(static_cast<unsigned>(seed));
    const size_t lines = log.size();
    const BrokenFileWatch watch(24);
    auto* font = new TBitmapFont(harness.renderer(), base, base + ".fnt");
    EXPECT_LE(log.size(), lines + 2) << "one for the font, one for its picture";
    const bool registered = TBitmapFont::FindBitmapFont(base) == font;
    ++(registered ? read : refused);
    draw(*font, static_cast<unsigned>(seed));
    if (registered) {
      auto* label = new TGlyphLabel(harness.renderer(), 0, 0, 80, 20, kTexts[1], base, "label");
      EXPECT_EQ(font, label->Font());
      harness.add(label);
      label->SetResizeOnlyDown(true);
      harness.frame();
      label->SetAutosize(true, true);
      label->SetText(kTexts[0]);
      harness.frame();
      harness.module().RemoveComponent(label, true);
      auto* digits = harness.add(new TControlCyphers3(harness.renderer(), 0, 0, 200, 30, 6, "digits"));
      digits->SetFont(font);
      digits->SetFinalValue(1234567890);
      digits->ResetAnimation();
      harness.frame();
      harness.module().RemoveComponent(digits, true);
      TBitmapFont::CleanupBitmapFonts();
    } else {
      delete font;
    }
    if (HasFailure()) break;  // the file lies where it was written
  }
  if (brokenFiles(3400) >= 1000) {
    EXPECT_GT(read, refused / 10);
    EXPECT_GT(refused, read / 10);
  }
  std::printf("%d read, %d refused\n", read, refused);
}
