#include "kslplatform/TPlatformLoader.h"

#include <SDL_image.h>
#include <SDL_ttf.h>
#include <dlfcn.h>
#include <algorithm>
#include <cmath>
#include <filesystem>
#include <vector>

#include "components/Tlabel.h"
#include "tests/components/AllocationCount.h"
#include "tests/components/WidgetFixture.h"
#include "tests/support/LogLines.h"
#include "tests/support/TestFont.h"
#include "vendelo-sdl2/MyUtils.h"
#include "vendelo-sdl2/TLogManager.h"

using namespace vendelo_sdl2;

namespace {

std::vector<TTF_Font*> closed;
bool fontsAreGone = false;

template <class F>
F next(const char* name) {
  return reinterpret_cast<F>(dlsym(RTLD_NEXT, name));
}

}  // namespace

// In front of the library's own.
extern "C" void TTF_CloseFont(TTF_Font* font) {
  closed.push_back(font);
  next<void (*)(TTF_Font*)>("TTF_CloseFont")(font);
}
extern "C" int TTF_WasInit(void) { return fontsAreGone ? 0 : next<int (*)()>("TTF_WasInit")(); }

namespace {

// What has no setter, and the two figures that the clock makes.
struct Loader : TPlatformLoader {
  Loader(SDL_Renderer* renderer, int w, int h) : TPlatformLoader(renderer, 0, 0, w, h, "loader") {}
  using TPlatformLoader::bShowLogo;
  using TPlatformLoader::bUseShadow;
  using TPlatformLoader::mAngle;
  using TPlatformLoader::mRadius;

  Tlabel* label() { return static_cast<Tlabel*>(FindComponentByName("statusLabelKSLLoader")); }
};

// What a new panel holds.
struct Inside : Loader {
  using Loader::Loader;
  using TPlatformLoader::dotShadowSize;
  using TPlatformLoader::dotSize;
  using TPlatformLoader::mBehaviorMode;
  using TPlatformLoader::mDotShadowTexture;
  using TPlatformLoader::mDotTexture;
  using TPlatformLoader::mLogoTexture;
  using TPlatformLoader::mStatusLabel;
};

// The image directory holds a dot of 12 by 12, a shadow of 20 by 20, a logo of 90 by 30 and the font.
class PlatformLoader : public WidgetTest {
 protected:
  PlatformLoader() : folder(testfont::freshFolder("loader")) {
    TTF_Init();
    testfont::writePicture(folder + "dot.png", 12, 12, SDL_Color{255, 255, 0, 255});
    testfont::writePicture(folder + "dot_shadow.png", 20, 20, SDL_Color{0, 90, 90, 255});
    testfont::writePicture(folder + "splashLogo.png", 90, 30, SDL_Color{200, 0, 60, 255});
    std::filesystem::copy_file("/usr/share/fonts/truetype/dejavu/DejaVuSans-Bold.ttf", folder + "AppFont.ttf");
    MyUtils::SetImageDir(folder);
  }
  ~PlatformLoader() override {
    for (TTF_Font* font : fonts) TTF_CloseFont(font);
    TTF_Quit();
  }
  template <class T = Loader>
  T* make(int w, int h) {
    auto* loader = app.add(new T(renderer, w, h));
    if (TTF_Font* font = loader->label()->GetFont()) fonts.push_back(font);  // the panel does not close it
    return loader;
  }
  void drawAt(Loader& loader, Uint32 tick) {
    clock.set(tick);
    clear(10, 20, 40);
    loader.drawLogic();
    loader.draw();
  }
  const std::string folder;
  std::vector<TTF_Font*> fonts;
};

}  // namespace

TEST_F(PlatformLoader, StartsAsDocumented) {
  const LogLines log;
  auto* loader = make<Inside>(400, 201);
  EXPECT_FALSE(loader->bUseShadow);
  EXPECT_TRUE(loader->bShowLogo);
  EXPECT_EQ(0.0f, loader->mAngle);
  EXPECT_EQ(50.0f, loader->mRadius);
  EXPECT_EQ(12, loader->dotSize);
  EXPECT_EQ(20, loader->dotShadowSize) << "the shadow is loaded although it is not drawn";
  EXPECT_EQ(MyUtils::GetTexture(renderer, "dot.png"), loader->mDotTexture);
  EXPECT_EQ(MyUtils::GetTexture(renderer, "dot_shadow.png"), loader->mDotShadowTexture);
  EXPECT_EQ(MyUtils::GetTexture(renderer, "splashLogo.png"), loader->mLogoTexture);
  EXPECT_EQ(TPlatformLoader::FIXED, loader->mBehaviorMode);
  EXPECT_EQ(0, TPlatformLoader::FIXED);
  EXPECT_EQ(1, TPlatformLoader::TAKE_LAST_LOG);

  ASSERT_EQ(loader->mStatusLabel, loader->FindComponentByName("statusLabelKSLLoader"));
  EXPECT_EQ((SDL_Rect{0, 100, 400, 100}), loader->mStatusLabel->getDestRect());
  EXPECT_EQ("", loader->mStatusLabel->GetText());
  TTF_Font* font = loader->mStatusLabel->GetFont();
  ASSERT_NE(nullptr, font);
  TTF_Font* same = TTF_OpenFont((folder + "AppFont.ttf").c_str(), 34);
  EXPECT_EQ(TTF_FontHeight(same), TTF_FontHeight(font));
  EXPECT_EQ(0U, log.size());
  TTF_CloseFont(same);
}

TEST_F(PlatformLoader, AFontThatCannotBeOpenedIsToldInTheLog) {
  const LogLines log;
  std::filesystem::remove(folder + "AppFont.ttf");
  Loader* loader = make(400, 200);
  drawAt(*loader, 0);
  ASSERT_EQ(1U, log.size()) << "one line, however often it is drawn";
  EXPECT_EQ(0U, log.lines()[0].rfind("4 Font " + folder + "/AppFont.ttf is not usable: ", 0)) << log.lines()[0];
}

TEST_F(PlatformLoader, ItsFontIsClosedWithItUnlessTheLibraryOfFontsWentBefore) {
  for (const bool gone : {false, true}) {
    Loader* loader = app.add(new Loader(renderer, 400, 200));
    TTF_Font* font = loader->label()->GetFont();
    ASSERT_NE(nullptr, font);
    closed.clear();
    fontsAreGone = gone;
    app.module().RemoveComponent(loader, true);
    fontsAreGone = false;
    EXPECT_EQ(gone ? 0 : 1, std::count(closed.begin(), closed.end(), font));
    if (gone) TTF_CloseFont(font);
  }
}

TEST_F(PlatformLoader, TheRingBreathesAndTurnsByTheClock) {
  const double pi = 3.141592653589793;
  const struct {
    Uint32 tick;
    double phase;
  } rows[] = {{0, 0}, {375, pi / 2}, {750, pi}, {1125, pi * 1.5}, {1500, pi * 2}, {15000, pi * 20}};
  Loader* loader = make(400, 200);
  for (const auto& row : rows) {
    clock.set(row.tick);
    loader->drawLogic();
    EXPECT_NEAR(50.0 + 50.0 * (1.0 + std::cos(row.phase)) * 0.5, loader->mRadius, 1e-3) << row.tick;
    EXPECT_NEAR((1.4 * row.phase - std::sin(row.phase)) / 11.2, loader->mAngle, 1e-5) << row.tick;
  }
}

TEST_F(PlatformLoader, SevenDotsFromTheRightInTheDirectionOfGrowingAngle) {
  Loader* loader = make(400, 200);
  loader->bShowLogo = false;
  loader->mAngle = 0.0f;
  loader->mRadius = 70.0f;
  clear(0, 0, 0);
  loader->draw();
  const double pi = 3.141592653589793;
  for (int i = 0; i < 7; ++i) {
    const double a = 2.0 * pi * i / 7.0;
    const int x = static_cast<int>(std::round(194 + 70 * std::cos(a)));
    const int y = static_cast<int>(std::round(94 + 70 * std::sin(a)));
    EXPECT_EQ(0xffff00u, pixel(x, y)) << i;
    EXPECT_EQ(0xffff00u, pixel(x + 11, y + 11)) << i;
    EXPECT_EQ(0u, pixel(x - 1, y)) << i;
    EXPECT_EQ(0u, pixel(x, y + 12)) << i;
  }
  EXPECT_EQ(264, inked(0).x + inked(0).w - 12) << "the first dot stands on the right of the middle";
  EXPECT_EQ(0xffff00u, pixel(200 + 44, 100 + 55)) << "and the next one below it: clockwise";
}

TEST_F(PlatformLoader, InPictures) {
  Loader* loader = make(400, 200);
  loader->SetDisplayMessage("Waiting for KSL connection...");
  drawAt(*loader, 0);
  EXPECT_GOLDEN(renderer, "kslplatform/loader_0");
  drawAt(*loader, 500);
  EXPECT_GOLDEN(renderer, "kslplatform/loader_500");
  drawAt(*loader, 1000);
  EXPECT_GOLDEN(renderer, "kslplatform/loader_1000");
  loader->bUseShadow = true;
  drawAt(*loader, 1000);
  EXPECT_GOLDEN(renderer, "kslplatform/loader_shadow");
}

TEST_F(PlatformLoader, TheLogoStandsInTheMiddleOfTheTopThird) {
  Loader* loader = make(401, 200);
  loader->mRadius = 0;
  clear(0, 0, 0);
  loader->draw();
  // x (401 - 90) / 2, y (200 / 3 - 30) / 2
  EXPECT_EQ(0xc8003cu, pixel(155, 18));
  EXPECT_EQ(0xc8003cu, pixel(244, 47));
  EXPECT_EQ(0u, pixel(154, 18));
  EXPECT_EQ(0u, pixel(155, 17));
  EXPECT_EQ(0u, pixel(245, 47));
  EXPECT_EQ(0u, pixel(244, 48));
  loader->bShowLogo = false;
  clear(0, 0, 0);
  loader->draw();
  EXPECT_EQ(0u, pixel(200, 30));
}

TEST_F(PlatformLoader, TheShadowIsDrawnOnlyWhenAskedFor) {
  Loader* loader = make(400, 200);
  loader->bShowLogo = false;
  loader->mRadius = 70.0f;
  const Uint32 shadow = 0x005a5a;
  clear(0, 0, 0);
  loader->draw();
  EXPECT_EQ(0u, pixel(270 - 10 + 1, 91));
  loader->bUseShadow = true;
  clear(0, 0, 0);
  loader->draw();
  EXPECT_EQ(shadow, pixel(270 - 10 + 1, 91)) << "round a dot, under it";
  EXPECT_EQ(0xffff00u, pixel(270, 100));
}

TEST_F(PlatformLoader, MissingImagesAreNotDrawn) {
  MyUtils::DestroyImages();
  std::filesystem::remove(folder + "dot.png");
  std::filesystem::remove(folder + "dot_shadow.png");
  std::filesystem::remove(folder + "splashLogo.png");
  std::filesystem::remove(folder + "AppFont.ttf");
  testing::internal::CaptureStdout();
  auto* loader = make<Inside>(400, 200);
  testing::internal::GetCapturedStdout();
  EXPECT_EQ(0, loader->dotSize);
  EXPECT_EQ(0, loader->dotShadowSize);
  EXPECT_EQ(nullptr, loader->mDotTexture);
  loader->bUseShadow = true;
  loader->SetDisplayMessage("nobody reads this without a font");
  drawAt(*loader, 700);
  EXPECT_EQ(0, inked(0x0a1428).w);
}

TEST_F(PlatformLoader, TheStatusLineFollowsTheLogWhenToldTo) {
  Loader* loader = make(400, 200);
  loader->SetDisplayMessage("fixed");
  loader->drawLogic();
  EXPECT_EQ("fixed", loader->label()->GetText());
  loader->SetBehavior(TPlatformLoader::TAKE_LAST_LOG);
  EXPECT_EQ("fixed", loader->label()->GetText());
  pApp->TLogManager::Init(folder + "test.log", nullptr, nullptr, false);
  pApp->WriteLog(3, 0, "%s", "a line of the log");
  ASSERT_NE(std::string::npos, logman::GetLastLog().find("a line of the log"));
  loader->drawLogic();
  EXPECT_EQ(logman::GetLastLog(), loader->label()->GetText());
  loader->SetDisplayMessage("overwritten by the next frame");
  loader->drawLogic();
  EXPECT_EQ(logman::GetLastLog(), loader->label()->GetText());
  pApp->TLogManager::Destroy();
}

TEST_F(PlatformLoader, TheBasesLogicDoesNotRun) {
  Loader* loader = make(400, 200);
  loader->fadeIn();
  EXPECT_EQ(0, loader->alpha());
  clock.advance(5000);
  loader->drawLogic();
  EXPECT_EQ(0, loader->alpha()) << "no fade reaches this panel";
}

TEST_F(PlatformLoader, AFrameTakesNothingFromTheHeap) {
  Loader* loader = make(400, 200);
  loader->SetDisplayMessage("Waiting for KSL connection...");
  drawAt(*loader, 0);
  const long before = allocations::count;
  for (int i = 0; i < 60; ++i) {
    clock.advance(16);
    loader->drawLogic();
    loader->draw();
  }
  EXPECT_EQ(before, allocations::count);
}
