// What the component base draws, case by case: one golden picture each.
#include <gtest/gtest.h>
#include <functional>
#include <string>

#include "tests/support/FakeClock.h"
#include "tests/support/Golden.h"
#include "tests/support/WidgetHarness.h"
#include "vendelo-sdl2/TGuiComponent.h"

using namespace vendelo_sdl2;

namespace {

constexpr int kWidth = 96, kHeight = 64;

// A stage with bright and dark stripes behind whatever a case puts on it.
class Stage {
 public:
  Stage() {
    for (int i = 0; i < kWidth / 16; ++i)
      box(nullptr, {i * 16, 0, 8, kHeight},
          {static_cast<Uint8>(30 + 30 * i), 60, static_cast<Uint8>(200 - 30 * i), 255});
  }

  TGuiComponent* box(TGuiComponent* parent, SDL_Rect place, SDL_Color colour) {
    auto* c = new TGuiComponent(nullptr, place.x, place.y, place.w, place.h, "");
    if (colour.a) c->SetTargetTexture(harness.makeTexture(place.w, place.h, colour));
    c->setBlendMode(1);
    return put(parent, c);
  }

  // A picture of 16 by 16 with nothing symmetric about it: four colours, the last one half transparent, and a white
  // corner.
  TGuiComponent* card(TGuiComponent* parent, SDL_Rect place) {
    SDL_Surface* surface = SDL_CreateRGBSurfaceWithFormat(0, 16, 16, 32, SDL_PIXELFORMAT_RGBA32);
    const struct {
      SDL_Rect rect;
      SDL_Color c;
    } parts[] = {{{0, 0, 8, 8}, {220, 40, 40, 255}},
                 {{8, 0, 8, 8}, {40, 200, 60, 255}},
                 {{0, 8, 8, 8}, {240, 200, 40, 255}},
                 {{8, 8, 8, 8}, {255, 255, 255, 128}},
                 {{0, 0, 3, 3}, {255, 255, 255, 255}}};
    for (const auto& part : parts)
      SDL_FillRect(surface, &part.rect, SDL_MapRGBA(surface->format, part.c.r, part.c.g, part.c.b, part.c.a));
    auto* c = new TGuiComponent(nullptr, place.x, place.y, place.w, place.h, "");
    c->setSrcRect({0, 0, 16, 16});
    c->SetTargetTexture(SDL_CreateTextureFromSurface(harness.renderer(), surface));
    SDL_FreeSurface(surface);
    c->setBlendMode(1);
    return put(parent, c);
  }

  // Frames up to this many milliseconds after the first one.
  void play(Uint32 milliseconds) {
    for (const Uint32 end = clock.now() + milliseconds; clock.now() < end; clock.advance(10)) harness.frame();
  }

  WidgetHarness harness{kWidth, kHeight};
  FakeClock clock{1000};

 private:
  TGuiComponent* put(TGuiComponent* parent, TGuiComponent* c) {
    if (parent) return parent->AddComponent(c);
    return harness.add(c);
  }
};

struct Case {
  const char* name;
  std::function<void(Stage&)> make;
};

void PrintTo(const Case& c, std::ostream* out) { *out << c.name; }

// A card in a panel in a panel.
void nested(Stage& s, int outer, int inner, int card) {
  TGuiComponent* one = s.box(nullptr, {8, 8, 80, 48}, {0, 0, 0, 255});
  TGuiComponent* two = s.box(one, {8, 8, 64, 32}, {90, 90, 90, 255});
  one->setAlpha(outer);
  two->setAlpha(inner);
  s.card(two, {8, 4, 16, 16})->setAlpha(card);
  s.card(two, {36, 8, 16, 16});
}

Case angle(const char* name, double degrees) {
  return {name, [degrees](Stage& s) { s.card(nullptr, {32, 16, 32, 32})->setAngle(degrees); }};
}

Case blend(const char* name, int mode) {
  return {name, [mode](Stage& s) {
            s.card(nullptr, {8, 16, 32, 32})->setBlendMode(mode);
            TGuiComponent* faded = s.card(nullptr, {56, 16, 32, 32});
            faded->setBlendMode(mode);
            faded->setAlpha(96);
          }};
}

// A panel that fades, with a card in it, at this time of the fade.
Case fade(const char* name, bool in, Uint32 at) {
  return {name, [in, at](Stage& s) {
            TGuiComponent* panel = s.box(nullptr, {16, 8, 64, 48}, {200, 120, 0, 255});
            s.card(panel, {24, 16, 16, 16});
            if (in) panel->_setVisible(false);
            in ? panel->fadeIn() : panel->fadeOut();
            s.clock.advance(at);
          }};
}

Case steps(const char* name, int dx, int dy, int there, int back) {
  return {name, [=](Stage& s) {
            TGuiComponent* panel = s.box(nullptr, {8, 8, 80, 48}, {0, 0, 0, 160});
            TGuiComponent* card = s.card(panel, {16, 16, 16, 16});
            card->setDestPos(dx, dy);
            for (int i = 0; i < there; ++i) card->moveToDestPos();
            for (int i = 0; i < back; ++i) card->moveFromDestPos();
          }};
}

const Case kCases[] = {
  {"Alpha_Full", [](Stage& s) { nested(s, 255, 255, 255); }},
  {"Alpha_OuterHalf", [](Stage& s) { nested(s, 128, 255, 255); }},
  {"Alpha_BothHalf", [](Stage& s) { nested(s, 128, 128, 255); }},
  {"Alpha_AllThreeHalf", [](Stage& s) { nested(s, 128, 128, 128); }},
  {"Alpha_OuterNothing", [](Stage& s) { nested(s, 0, 255, 255); }},
  {"Alpha_InnerNothing", [](Stage& s) { nested(s, 255, 0, 255); }},
  {"Alpha_WrapsAt256",
   [](Stage& s) {
     s.card(nullptr, {32, 16, 32, 32})->setAlpha(256 + 64);
   }},
  angle("Angle_0", 0.0),
  angle("Angle_30", 30.0),
  angle("Angle_90", 90.0),
  angle("Angle_180", 180.0),
  angle("Angle_270", 270.0),
  angle("Angle_450", 450.0),
  angle("Angle_Minus30", -30.0),
  {"Angle_OfAParentStaysItsOwn",
   [](Stage& s) {
     TGuiComponent* panel = s.box(nullptr, {24, 16, 48, 32}, {0, 0, 0, 255});
     panel->setAngle(20.0);
     s.card(panel, {16, 8, 16, 16});
   }},
  {"Size_Natural",
   [](Stage& s) {
     s.card(nullptr, {40, 24, 16, 16});
   }},
  {"Size_Doubled",
   [](Stage& s) {
     s.card(nullptr, {32, 16, 32, 32});
   }},
  {"Size_Stretched",
   [](Stage& s) {
     s.card(nullptr, {4, 26, 88, 12});
   }},
  {"Size_Halved",
   [](Stage& s) {
     s.card(nullptr, {44, 28, 8, 8});
   }},
  {"Size_Zero",
   [](Stage& s) {
     s.card(nullptr, {44, 28, 0, 16});
   }},
  {"Size_ByDestRect",
   [](Stage& s) {
     TGuiComponent* panel = s.box(nullptr, {8, 8, 80, 48}, {0, 0, 0, 160});
     s.card(panel, {0, 0, 16, 16})->setDestRect({20, 4, 40, 40});
   }},
  {"Source_Quarter",
   [](Stage& s) {
     s.card(nullptr, {32, 16, 32, 32})->setSrcRect({8, 0, 8, 8});
   }},
  {"Source_BeyondTheEdge",
   [](Stage& s) {
     s.card(nullptr, {32, 16, 32, 32})->setSrcRect({8, 8, 16, 16});
   }},
  {"Source_Outside",
   [](Stage& s) {
     s.card(nullptr, {32, 16, 32, 32})->setSrcRect({20, 20, 8, 8});
   }},
  blend("Blend_None", 0),
  blend("Blend_Blend", 1),
  blend("Blend_Add", 2),
  blend("Blend_Mod", 3),
  {"Place_OverTheEdges",
   [](Stage& s) {
     s.card(nullptr, {-16, -16, 32, 32});
     s.card(nullptr, {80, 48, 32, 32});
     s.card(nullptr, {2000, 10, 32, 32});
   }},
  {"Order_AsAdded",
   [](Stage& s) {
     s.box(nullptr, {20, 10, 30, 30}, {200, 0, 0, 255});
     s.box(nullptr, {30, 18, 30, 30}, {0, 200, 0, 255});
     s.box(nullptr, {40, 26, 30, 30}, {0, 0, 200, 255});
   }},
  {"Order_FirstToTheFront",
   [](Stage& s) {
     TGuiComponent* first = s.box(nullptr, {20, 10, 30, 30}, {200, 0, 0, 255});
     s.box(nullptr, {30, 18, 30, 30}, {0, 200, 0, 255});
     s.box(nullptr, {40, 26, 30, 30}, {0, 0, 200, 255});
     s.harness.module().BringComponentToFront(first);
   }},
  {"Order_LastToTheBack",
   [](Stage& s) {
     TGuiComponent* panel = s.box(nullptr, {4, 4, 88, 56}, {0, 0, 0, 160});
     s.box(panel, {20, 6, 30, 30}, {200, 0, 0, 255});
     s.box(panel, {30, 14, 30, 30}, {0, 200, 0, 255});
     panel->SendComponentToBack(s.box(panel, {40, 22, 30, 30}, {0, 0, 200, 255}));
   }},
  {"Hidden_ParentHidesItsChildren",
   [](Stage& s) {
     TGuiComponent* panel = s.box(nullptr, {8, 8, 40, 48}, {0, 0, 0, 255});
     s.card(panel, {8, 8, 16, 16});
     panel->Hide();
     s.card(nullptr, {60, 24, 16, 16});
   }},
  {"NoTexture_ChildrenAreDrawn",
   [](Stage& s) {
     TGuiComponent* frame = s.box(nullptr, {24, 16, 48, 32}, {0, 0, 0, 0});
     frame->setAlpha(128);
     s.card(frame, {0, 0, 16, 16});
     s.card(frame, {32, 16, 16, 16});
   }},
  fade("FadeIn_0", true, 0),
  fade("FadeIn_125", true, 125),
  fade("FadeIn_250", true, 250),
  fade("FadeIn_499", true, 499),
  fade("FadeIn_501", true, 501),
  fade("FadeOut_0", false, 0),
  fade("FadeOut_125", false, 125),
  fade("FadeOut_250", false, 250),
  fade("FadeOut_499", false, 499),
  fade("FadeOut_501", false, 501),
  {"Fade_TurnsHalfWay",
   [](Stage& s) {
     TGuiComponent* panel = s.box(nullptr, {16, 8, 64, 48}, {200, 120, 0, 255});
     panel->fadeIn();
     s.play(200);
     panel->fadeOut();
     s.play(50);  // from 102 down to 76
   }},
  {"Fade_OfAnAddingPicture",
   [](Stage& s) {
     TGuiComponent* card = s.card(nullptr, {32, 16, 32, 32});
     card->setBlendMode(2);
     card->fadeIn();
     s.clock.advance(250);
   }},
  steps("Steps_None", 50, 8, 0, 0),
  steps("Steps_OnTheWay", 50, 8, 5, 0),
  steps("Steps_Arrived", 50, 8, 100, 0),
  steps("Steps_OutAgain", 50, 8, 100, 20),
};

class Pictures : public testing::TestWithParam<Case> {};

TEST_P(Pictures, AreTheGoldenOnes) {
  Stage stage;
  GetParam().make(stage);
  stage.harness.frame();
  EXPECT_GOLDEN(stage.harness.renderer(), std::string("vendelo-sdl2/component/") + GetParam().name);
}

INSTANTIATE_TEST_SUITE_P(GuiComponent, Pictures, testing::ValuesIn(kCases),
                         [](const testing::TestParamInfo<Case>& info) { return std::string(info.param.name); });

}  // namespace
