// What the graphics device has lost comes back: the back buffer, and what labels and digits have rendered for
// themselves. The loss is played by painting over the textures.
#include <SDL_ttf.h>
#include <algorithm>

#include "common/TBitmapFont.h"
#include "components/TControlCyphers3.h"
#include "components/TGlyphLabel.h"
#include "components/Tlabel.h"
#include "tests/support/TestFont.h"
#include "tests/vendelo-sdl2/TAppGuiModuleFixture.h"
#include "vendelo-sdl2/TRenderGuard.h"

using namespace guitest;

namespace {

constexpr int kWidth = 200, kHeight = 80;
constexpr SDL_Color kLost{255, 0, 255, 255};

class Digits : public TControlCyphers3 {
 public:
  using TControlCyphers3::mpComma;
  using TControlCyphers3::mpCyphers;
  using TControlCyphers3::mpDot;
  using TControlCyphers3::TControlCyphers3;
};

const std::vector<Uint32> kSpoilt(kWidth* kHeight, 0xff00ffffu);

class Rebuild : public AppGuiModule {
 protected:
  Rebuild() : AppGuiModule(kWidth, kHeight) {
    SDL_InitSubSystem(SDL_INIT_EVENTS);
    TTF_Init();
    font = TTF_OpenFont("/usr/share/fonts/truetype/dejavu/DejaVuSans-Bold.ttf", 14);
  }
  ~Rebuild() override {
    app.destroyGui();
    TTF_CloseFont(font);
    TTF_Quit();
    SDL_QuitSubSystem(SDL_INIT_EVENTS);
  }
  void SetUp() override {
    module->makeBackBuffer(kWidth, kHeight);
    app.setStatus(TApplication::APP_RUNNING);
    const std::string dots = testfont::write(testfont::freshFolder("Rebuild"), "dots", 2);
    auto* panel = new TGuiComponent(nullptr, 4, 4, 150, 60, "panel");
    module->AddComponent(panel);
    glyphs = new TGlyphLabel(nullptr, 0, 0, 90, 16, "GLYPHS", dots, "glyphs");
    panel->AddComponent(glyphs);
    line = new Tlabel(nullptr, 100, 0, 90, 16, "a line", font, {255, 255, 255, 255}, "line");
    panel->AddComponent(line);
    lines = new Tlabel(nullptr, 100, 20, 90, 50, "two lines", font, {255, 255, 255, 255}, "lines");
    lines->SplitText(true);
    panel->AddComponent(lines);
    digits = new Digits(nullptr, 0, 30, 90, 14, 10, "digits");
    digits->SetFont(TBitmapFont::FindBitmapFont(dots));
    digits->SetLocale(TControlCyphers3::COMMA_DECIMAL_DOT_THOUSANDS);
    digits->SetDecimalPlaces(2);
    digits->SetFinalValue(1234567);
    digits->ResetAnimation();
    panel->AddComponent(digits);
  }
  // What the window shows after a frame.
  std::vector<Uint32> shown() {
    module->draw();
    SDL_SetRenderTarget(renderer, nullptr);
    std::vector<Uint32> pixels(kWidth * kHeight);
    SDL_RenderReadPixels(renderer, nullptr, SDL_PIXELFORMAT_RGBA8888, pixels.data(), kWidth * 4);
    SDL_SetRenderTarget(renderer, module->mpBackBuffer.get());
    return pixels;
  }
  // The same once the digits have left their colour for the ground of the next frame.
  std::vector<Uint32> settled() {
    shown();
    return shown();
  }
  // Leaves the colour that the digits have left for the ground: with another one the next picture would be another.
  void spoilWindow() {
    TRenderGuard guard(renderer);
    guard.colour(0, 0, 0, 0);
    fill(nullptr, {0, 0, kWidth, kHeight}, {255, 0, 255, 255});
  }
  void lose(SDL_Texture* texture) {
    int access = 0, w = 0, h = 0;
    ASSERT_EQ(0, SDL_QueryTexture(texture, nullptr, &access, &w, &h));
    TRenderGuard guard(renderer);
    guard.colour(0, 0, 0, 0);
    if (access == SDL_TEXTUREACCESS_TARGET) {
      fill(texture, {0, 0, w, h}, kLost);
    } else {
      const std::vector<Uint32> pixels(static_cast<size_t>(w) * static_cast<size_t>(h), 0xffff00ff);
      ASSERT_EQ(0, SDL_UpdateTexture(texture, nullptr, pixels.data(), w * 4));
      contentChanged(texture);
    }
  }
  void loseEverything() {
    SDL_SetTextureUserData(module->mpBackBuffer.get(), this);
    for (TGuiComponent* label : {static_cast<TGuiComponent*>(glyphs), static_cast<TGuiComponent*>(line),
                                 static_cast<TGuiComponent*>(lines)})
      lose(label->GetTargetTexture());
    lose(digits->mpCyphers.get());
    lose(digits->mpDot.get());
    lose(digits->mpComma.get());
  }
  void report(Uint32 type) {
    SDL_Event event{};
    event.type = type;
    SDL_PushEvent(&event);
    while (app.ProcessNextEvent() != 0) {
    }
  }
  bool backBufferIsNew() const { return SDL_GetTextureUserData(module->mpBackBuffer.get()) == nullptr; }

  TTF_Font* font = nullptr;
  TGlyphLabel* glyphs = nullptr;
  Tlabel *line = nullptr, *lines = nullptr;
  Digits* digits = nullptr;
};

TEST_F(Rebuild, EverythingComesBackAfterTheRenderTargetsWereReset) {
  for (const Uint32 type : {SDL_RENDER_TARGETS_RESET, SDL_RENDER_DEVICE_RESET}) {
    const std::vector<Uint32> whole = settled();
    EXPECT_EQ(whole, shown());
    loseEverything();
    EXPECT_NE(whole, shown());
    EXPECT_FALSE(backBufferIsNew());
    report(type);
    EXPECT_FALSE(backBufferIsNew());  // the renderer is left to the draw thread
    EXPECT_EQ(whole, shown());
    EXPECT_TRUE(backBufferIsNew());
    int w = 0, h = 0;
    SDL_QueryTexture(module->mpBackBuffer.get(), nullptr, nullptr, &w, &h);
    EXPECT_EQ(kWidth, w);
    EXPECT_EQ(kHeight, h);
    EXPECT_EQ(module->mpBackBuffer.get(), SDL_GetRenderTarget(renderer));
  }
}

TEST_F(Rebuild, EachReportIsOneLineInTheLog) {
  const char* const targets = "4 The graphics device has lost its render targets, drawing texts and digits again.";
  const char* const textures = "4 The graphics device has lost its textures, drawing texts and digits again.";
  report(SDL_RENDER_TARGETS_RESET);
  shown();
  shown();
  EXPECT_EQ(1, std::count(app.lines.begin(), app.lines.end(), targets));
  report(SDL_RENDER_DEVICE_RESET);
  EXPECT_EQ(1, std::count(app.lines.begin(), app.lines.end(), textures));
}

TEST_F(Rebuild, OtherEventsRebuildNothing) {
  shown();
  SDL_SetTextureUserData(module->mpBackBuffer.get(), this);
  SDL_SetTextureUserData(glyphs->GetTargetTexture(), this);
  report(SDL_USEREVENT);
  report(SDL_WINDOWEVENT);
  shown();
  EXPECT_FALSE(backBufferIsNew());
  EXPECT_EQ(this, SDL_GetTextureUserData(glyphs->GetTargetTexture()));
}

TEST_F(Rebuild, AnyEventOfTheWindowBringsItsPictureBack) {
  settled();
  const std::vector<Uint32> whole = shown();
  spoilWindow();
  EXPECT_EQ(kSpoilt, shown()) << "nothing changes, nothing is drawn";
  report(SDL_WINDOWEVENT);
  EXPECT_EQ(whole, shown());
}

TEST_F(Rebuild, WhatOthersSpoiltIsWholeAfterAFewSeconds) {
  settled();
  const std::vector<Uint32> whole = shown();
  spoilWindow();
  clock.advance(7000);
  EXPECT_EQ(kSpoilt, shown());
  clock.advance(1100);
  EXPECT_EQ(whole, shown());
}

TEST_F(Rebuild, WhatIsHiddenIsWholeWhenItIsShown) {
  const std::vector<Uint32> whole = settled();
  loseEverything();
  TGuiComponent* panel = module->FindComponentByName("panel");
  panel->Hide();
  report(SDL_RENDER_TARGETS_RESET);
  EXPECT_NE(whole, shown());
  panel->Show();
  EXPECT_EQ(whole, settled());
}

TEST_F(Rebuild, TheLoaderIsToldToo) {
  auto* loader = new TGlyphLabel(nullptr, 0, 0, 90, 16, "LOADER", glyphs->Font()->Name(), "loader");
  module->SetLoader(loader);
  app.setStatus(TApplication::APP_SHUTTING_DOWN);
  const std::vector<Uint32> whole = settled();
  lose(loader->GetTargetTexture());
  EXPECT_NE(whole, shown());
  report(SDL_RENDER_TARGETS_RESET);
  EXPECT_EQ(whole, shown());
}

TEST_F(Rebuild, WithoutRenderingItWaits) {
  const std::vector<Uint32> whole = settled();
  loseEverything();
  module->StopRendering();
  report(SDL_RENDER_TARGETS_RESET);
  module->draw();
  EXPECT_FALSE(backBufferIsNew());
  module->StartRendering();
  EXPECT_EQ(whole, settled());
  EXPECT_TRUE(backBufferIsNew());
}

TEST_F(Rebuild, DigitsWithoutTheirFontKeepWhatTheyHave) {
  shown();
  TBitmapFont::CleanupBitmapFonts();
  SDL_Texture* strip = digits->mpCyphers.get();
  digits->OnTexturesLost();
  EXPECT_EQ(strip, digits->mpCyphers.get());
}

TEST_F(Rebuild, WithoutAGuiModuleTheReportIsHarmless) {
  app.destroyGui();
  report(SDL_RENDER_TARGETS_RESET);
}

}  // namespace
