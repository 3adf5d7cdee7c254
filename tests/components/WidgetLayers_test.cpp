// The layers that widgets compose their pictures on: nothing shows where nothing was drawn, on any terminal.
#include <SDL_ttf.h>

#include "components/TScrollingComponent.h"
#include "components/Tlabel.h"
#include "tests/components/CyphersFixture.h"

using namespace cypherstest;

namespace {

struct DigitLayers : Digits {
  using Digits::Digits;
  using TControlCyphers3::mpComma;
  using TControlCyphers3::mpCyphers;
  using TControlCyphers3::mpDot;
};

// On some terminals a layer begins in the colour that it was asked for, on the others in black.
class Layers : public Cyphers, public testing::WithParamInterface<TFlavour> {
 protected:
  Layers() {
    TerminalFlavour = GetParam();
    TTF_Init();
    ttf = TTF_OpenFont("/usr/share/fonts/truetype/dejavu/DejaVuSans-Bold.ttf", 40);
  }
  ~Layers() override {
    TTF_CloseFont(ttf);
    TTF_Quit();
    TerminalFlavour = UNKNOWN_FLAVOUR;
  }
  // Some of its pixels are transparent, and none of those has a colour.
  void expectClear(SDL_Texture* layer) {
    int w = 0, h = 0;
    SDL_QueryTexture(layer, nullptr, nullptr, &w, &h);
    std::vector<Uint32> pixels(static_cast<size_t>(w) * static_cast<size_t>(h), 0xffffffffu);
    SDL_Texture* const target = SDL_GetRenderTarget(renderer);
    SDL_SetRenderTarget(renderer, layer);
    EXPECT_EQ(0, SDL_RenderReadPixels(renderer, nullptr, SDL_PIXELFORMAT_ARGB8888, pixels.data(), w * 4));
    SDL_SetRenderTarget(renderer, target);
    int transparent = 0;
    for (const Uint32 pixel : pixels) {
      if (pixel >> 24 != 0) continue;
      ++transparent;
      ASSERT_EQ(0u, pixel);
    }
    EXPECT_GT(transparent, 0);
  }

  TTF_Font* ttf = nullptr;
};

}  // namespace

TEST_P(Layers, OfTheDigitsHaveNoColourWhereNoGlyphIs) {
  auto digits = make<DigitLayers>(2);
  expectClear(digits->mpCyphers.get());
  expectClear(digits->mpDot.get());  // the comma, which does not fill its cell
  digits->SetFont(ttf, SDL_Color{255, 255, 255, 255});
  for (SDL_Texture* layer : {digits->mpCyphers.get(), digits->mpDot.get(), digits->mpComma.get()})
    expectClear(layer);
}

TEST_P(Layers, OfTwoLinesHaveNoColourWhereNoLetterIs) {
  Tlabel label(nullptr, 0, 0, 300, 100, "two lines", ttf, SDL_Color{255, 255, 255, 255}, "label");
  label.SplitText(true);
  label.draw();
  expectClear(label.GetTargetTexture());
  SDL_DestroyTexture(label.GetTargetTexture());
}

TEST_P(Layers, OfATickerHaveNoColourBesideItsText) {
  TScrollingComponent ticker(nullptr, 0, 0, 300, 100, "ticker");
  ticker.AddContent(new TGuiComponent(nullptr, 0, 0, 10, 10, "child"), -1, TScrollingComponent::TOP);
  ticker.draw();
  expectClear(ticker.GetTargetTexture());
}

INSTANTIATE_TEST_SUITE_P(Flavours, Layers, testing::Values(UNKNOWN_FLAVOUR, VESPERA_FLAVOUR));
